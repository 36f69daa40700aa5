#include "PDFSidebarOutlineContents.h"

#include "FDOutlineView.h"
#include "PDFOutlineModel.h"

#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFOutline.h>

#include <algorithm>
#include <utility>

// Moving items by drag and drop: where a drop may go and how the dragged items land there.

void PDFSidebarOutlineContents::draggingWillBegin(
    const std::vector<std::shared_ptr<PDFOutline>> &items)
{
    m_itemsBeingDragged = items;
}

void PDFSidebarOutlineContents::draggingDidEnd()
{
    m_itemsBeingDragged.clear();
}

bool PDFSidebarOutlineContents::validateDrop(const QModelIndex &target, int) const
{
    if (m_itemsBeingDragged.empty())
        return false;
    // No item goes into itself or below itself.
    for (auto up = m_model->itemForIndex(target.siblingAtColumn(0)); up; up = up->parent()) {
        if (std::find(m_itemsBeingDragged.begin(), m_itemsBeingDragged.end(), up)
            != m_itemsBeingDragged.end())
            return false;
    }
    return true;
}

void PDFSidebarOutlineContents::moveItem(const std::shared_ptr<PDFOutline> &item,
    const std::shared_ptr<PDFOutline> &target, int position)
{
    const bool wasByProgram = std::exchange(m_isSelectingByProgram, true);
    m_model->moveItem(item, target, position);
    m_isSelectingByProgram = wasByProgram;
}

bool PDFSidebarOutlineContents::acceptDrop(const QModelIndex &targetIndex, int childIndex)
{
    const auto current = document();
    const auto root = current ? current->outlineRoot() : nullptr;
    if (!root || m_itemsBeingDragged.empty())
        return false;
    const auto named = m_model->itemForIndex(targetIndex.siblingAtColumn(0));
    const auto target = named ? named : root;
    const std::vector<std::shared_ptr<PDFOutline>> dragged = m_itemsBeingDragged;
    std::vector<std::shared_ptr<PDFOutline>> oldParents;
    for (const auto &item : dragged) {
        const auto parent = item->parent();
        if (parent && parent != root)
            oldParents.push_back(parent);
    }

    if (childIndex < 0) {
        const int count = target->numberOfChildren();
        for (size_t k = 0; k < dragged.size(); ++k)
            moveItem(dragged[k], target, count + int(k));
    } else {
        std::vector<std::shared_ptr<PDFOutline>> siblings;
        std::vector<std::shared_ptr<PDFOutline>> strangers;
        for (const auto &item : dragged)
            (item->parent() == target ? siblings : strangers).push_back(item);
        std::stable_sort(siblings.begin(), siblings.end(),
            [](const auto &a, const auto &b) { return a->index() < b->index(); });
        // Forward: siblings after the place come up to it in their order.
        int p = childIndex;
        for (const auto &item : siblings) {
            if (item->index() > p) {
                moveItem(item, target, p);
                ++p;
            }
        }
        // Backward: siblings before the place go down to just before it.
        int q = childIndex - 1;
        for (auto at = siblings.rbegin(); at != siblings.rend(); ++at) {
            if ((*at)->index() < q) {
                moveItem(*at, target, q);
                --q;
            }
        }
        for (size_t k = 0; k < strangers.size(); ++k)
            moveItem(strangers[k], target, p + int(k));
    }

    if (named)
        m_outlineView->expand(m_model->indexForItem(named));
    m_isSelectingByProgram = true;
    m_outlineView->clearSelection();
    for (const auto &item : dragged) {
        const QModelIndex index = m_model->indexForItem(item);
        if (index.isValid())
            m_outlineView->selectionModel()->select(
                index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    m_isSelectingByProgram = false;
    for (const auto &parent : oldParents)
        m_model->itemChanged(parent);
    // The page-following map stays as it was until the next add, delete or edit.
    if (current) {
        current->setNumberOfOtherChanges(current->numberOfOtherChanges() + 1);
        NotificationCenter::defaultCenter().post(OutlineDidChangeNotification, selectedPDFView());
    }
    return true;
}
