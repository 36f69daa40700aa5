#include "PDFCollectionView.h"
#include "PDFPagePasteboard.h"
#include "PDFPagePromiseMimeData.h"
#include "PDFPagesEditor.h"

#include <document/FDDocument.h>
#include <kit/base/MainQueue.h>
#include <kit/engine/PDFPage.h>

#include <QDir>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>

QPointer<PDFCollectionView> &PDFPagesEditor::dragSource()
{
    static QPointer<PDFCollectionView> source;
    return source;
}

std::optional<QList<int>> &PDFPagesEditor::dragIndexPaths()
{
    static std::optional<QList<int>> rows;
    return rows;
}

void PDFPagesEditor::registerForDragAndDrop(PDFCollectionView *pane)
{
    pane->setDragDelegate(this);
}

PDFPagesEditor *PDFPagesEditor::editorOf(const PDFCollectionView *pane)
{
    for (QObject *object = pane ? pane->parent() : nullptr; object; object = object->parent()) {
        if (auto *const editor = qobject_cast<PDFPagesEditor *>(object))
            return editor;
    }
    return nullptr;
}

int PDFPagesEditor::moveInsertionIndex(const QList<int> &rows, int dropIndex, bool sameDocument)
{
    if (!sameDocument)
        return dropIndex;
    // Taking the dragged pages out first shifts the drop place down by those above it.
    const auto above
        = std::count_if(rows.begin(), rows.end(), [dropIndex](int row) { return row < dropIndex; });
    return dropIndex - static_cast<int>(above);
}

bool PDFPagesEditor::writePagesOf(
    const std::shared_ptr<FDDocument> &document, const QList<int> &rows, const QUrl &url)
{
    if (!document || rows.isEmpty())
        return false;
    const auto pages = std::make_shared<PDFDocument>();
    if (!pages->init())
        return false;
    for (const int row : rows) {
        if (const auto page = document->pageAtIndex(row))
            pages->insertPage(page->copy(), pages->pageCount());
    }
    return pages->pageCount() > 0 && pages->writeToURL(url);
}

QMimeData *PDFPagesEditor::collectionViewWillBeginDrag(
    PDFCollectionView *pane, const QList<int> &rows)
{
    QList<int> dragged = pane->selectedRows();
    if (dragged.isEmpty())
        dragged = rows;
    std::sort(dragged.begin(), dragged.end());
    const auto document = documentOf(pane);
    if (!document || dragged.isEmpty())
        return nullptr;
    dragSource() = pane;
    dragIndexPaths() = dragged;
    // The file is named and written from the pages as they are when a receiver asks, which is
    // while the drag still runs.
    const std::weak_ptr<FDDocument> weak = document;
    return new PDFPagePromiseMimeData([weak, dragged](const QString &folder) -> QString {
        const auto source = weak.lock();
        if (!source)
            return {};
        const QString path = QDir(folder).filePath(proposedExtractName(source->fileURL(), dragged));
        return writePagesOf(source, dragged, QUrl::fromLocalFile(path)) ? path : QString();
    });
}

void PDFPagesEditor::collectionViewDragDidEnd(PDFCollectionView *)
{
    dragSource().clear();
    dragIndexPaths().reset();
}

Qt::DropAction PDFPagesEditor::collectionViewValidateDrop(
    PDFCollectionView *, const QMimeData *mime)
{
    // Pages of this application go anywhere, their own place included; from outside, only PDF
    // files and images.
    if (dragSource())
        return Qt::MoveAction;
    return PDFPagePasteboard::pageFileURLs(mime).isEmpty() ? Qt::IgnoreAction : Qt::CopyAction;
}

bool PDFPagesEditor::collectionViewAcceptDrop(
    PDFCollectionView *pane, const QMimeData *mime, int index)
{
    QTimer::singleShot(0, pane, [target = QPointer<PDFCollectionView>(pane)] {
        if (target)
            target->setFocus(Qt::OtherFocusReason);
    });
    if (dragSource())
        return moveDraggedPages(pane, index);
    const QList<QUrl> urls = PDFPagePasteboard::pageFileURLs(mime);
    if (!urls.isEmpty())
        insertDroppedURLs(pane, urls, index);
    return true;
}

bool PDFPagesEditor::moveDraggedPages(PDFCollectionView *pane, int index)
{
    PDFCollectionView *const source = dragSource();
    const std::optional<QList<int>> rows = dragIndexPaths();
    const auto from = documentOf(source);
    const auto to = documentOf(pane);
    if (!source || !rows || !from || !to || index < 0 || index > to->pageCount())
        return false;
    const int start = moveInsertionIndex(*rows, index, from == to);
    // From the highest row down, so the lower ones stay where they are; the list keeps the
    // pages' order. Each removal is the source document's own, so it counts and tells of it.
    QList<std::shared_ptr<PDFPage>> pages;
    for (auto row = rows->crbegin(); row != rows->crend(); ++row) {
        if (const auto page = from->pageAtIndex(*row)) {
            pages.prepend(page);
            from->removePageAtIndex(*row);
        }
    }
    QList<int> moved;
    for (int k = 0; k < pages.size(); ++k) {
        to->insertPage(pages[k], start + k);
        const int at = to->indexForPage(pages[k]);
        if (at >= 0)
            moved.append(at);
    }
    // Both grids show the documents as they are now, the source without its dragged selection.
    source->clearSelection();
    const int scroll = pane->verticalScrollBar()->value();
    for (PDFPagesEditor *const editor : { editorOf(source), editorOf(pane) }) {
        if (editor)
            editor->reloadData();
    }
    pane->doItemsLayout();
    pane->verticalScrollBar()->setValue(scroll);
    pane->selectRows(moved);
    if (!moved.isEmpty())
        pane->scrollTo(pane->model()->index(moved.first(), 0));
    // Saved a turn later, once the source has let go of the bookmarks of pages that left it.
    MainQueue::async(
        [weakFrom = std::weak_ptr<FDDocument>(from), weakTo = std::weak_ptr<FDDocument>(to)] {
            for (const auto &weak : { weakFrom, weakTo }) {
                const auto document = weak.lock();
                if (document && document->numberOfChanges() > 0 && !document->fileURL().isEmpty())
                    document->save();
            }
        });
    return true;
}

bool PDFPagesEditor::insertDroppedURLs(PDFCollectionView *pane, const QList<QUrl> &urls, int index)
{
    return insertURLs(pane, urls, index) > 0;
}
