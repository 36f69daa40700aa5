#pragma once

// The table-of-contents tab, and an editor of the outline tree: it follows the page in view,
// jumps on a selection, and adds, retitles, re-targets, deletes and (by drag) re-levels and
// reorders items, writing every edit straight into the document's tree. Edits count as changes
// of the document, so they are saved into the file; a deletion is one undo step.
// Main thread only.

#include "PDFSidebarTabContents.h"

#include <QPersistentModelIndex>

#include <map>
#include <memory>
#include <optional>
#include <vector>

class FDOutlineView;
class PDFOutline;
class PDFOutlineModel;
class QMenu;
class QToolButton;

class PDFSidebarOutlineContents : public PDFSidebarTabContents
{
    Q_OBJECT

public:
    // Posted with the view as sender after an edit of its document's outline.
    static const QString OutlineDidChangeNotification; // "PDFView_DocumentOutlineDidChange"
    // A new item's label from the page's text is cut to this many characters.
    static constexpr int maxLabelLength = 40;

    explicit PDFSidebarOutlineContents(QWidget *parent = nullptr);
    ~PDFSidebarOutlineContents() override;

    FDOutlineView *outlineView() const { return m_outlineView; }
    PDFOutlineModel *model() const { return m_model; }
    QToolButton *addButton() const { return m_addButton; }
    QToolButton *editButton() const { return m_editButton; }
    QToolButton *delButton() const { return m_delButton; }
    double pageColumnWidth() const { return m_pageColumnWidth; }

    // Adds an item for the current place of the selected view: a child of a selected item
    // with children, else the next sibling of a selected item, else the last top-level item.
    void onAddItem();
    // Deletes the selected items, the lowest row first; from a context menu on a row outside
    // the selection (clicked), only that row.
    void deleteItems(const QModelIndex &clicked = QModelIndex());
    // Opens the destination editor for the row (the current one when invalid).
    void onEditItem(const QModelIndex &row = QModelIndex());
    // Expands the item's ancestors, selects it and scrolls to it; null clears the selection.
    void selectOutlineWithItem(const std::shared_ptr<PDFOutline> &item);
    // The selected items as the rows run.
    std::vector<std::shared_ptr<PDFOutline>> selectedItems() const;

    // Drag and drop by the design's rules; an invalid target is the top level. The tests call
    // these as the view does.
    void draggingWillBegin(const std::vector<std::shared_ptr<PDFOutline>> &items);
    void draggingDidEnd();
    bool validateDrop(const QModelIndex &target, int childIndex) const;
    bool acceptDrop(const QModelIndex &target, int childIndex);

    // The item page following selects for a page: the last item in reading order that starts
    // on the nearest outlined page at or before it (a later item on a page replaces an earlier
    // one); none before the first and from the last outlined page on.
    std::shared_ptr<PDFOutline> outlineItemForPage(int pageIndex);
    // Goes on building the table of pages to items for about the time given; true once whole.
    bool buildPageMap(int milliseconds);

protected:
    void onPDFViewChanged() override;
    void onResetObservers() override;
    void onThemeChanged() override;
    void showEvent(QShowEvent *event) override;

private:
    static constexpr int PageMapMillisecondsPerTurn = 5;
    void reload();
    void updatePageColumn();
    void schedulePageFollowing();
    void followPage();
    void onSelectionChanged();
    void onItemClicked(const QModelIndex &index);
    void onItemDoubleClicked(const QModelIndex &index);
    void showContextMenu(const QPoint &point);
    void noteOutlineEdited();
    void moveItem(const std::shared_ptr<PDFOutline> &item,
        const std::shared_ptr<PDFOutline> &target, int position);
    // Puts deleted items back at their places, and registers the deletion again for redo.
    struct Removal
    {
        std::shared_ptr<PDFOutline> item;
        std::shared_ptr<PDFOutline> parent;
        int index = 0;
    };
    void restoreItems(const std::vector<Removal> &removed);
    void removeItems(const std::vector<Removal> &removals);

    FDOutlineView *m_outlineView = nullptr;
    PDFOutlineModel *m_model = nullptr;
    QToolButton *m_addButton = nullptr;
    QToolButton *m_editButton = nullptr;
    QToolButton *m_delButton = nullptr;
    double m_pageColumnWidth = 24.0;
    QPersistentModelIndex m_lastClickedRow;
    bool m_isSelectingByProgram = false;
    bool m_isPageFollowingScheduled = false;
    bool m_isRelayoutScheduled = false;
    std::vector<std::shared_ptr<PDFOutline>> m_itemsBeingDragged;
    // Page index to the item page following selects; rebuilt after add, delete and edit, but a
    // drop keeps it as it was.
    std::optional<std::map<int, std::shared_ptr<PDFOutline>>> m_mapPagesToOutlines;
    const void *m_mapDocument = nullptr;
    // The items still to be looked at while the table is built, next last.
    std::vector<std::shared_ptr<PDFOutline>> m_mapPending;
};
