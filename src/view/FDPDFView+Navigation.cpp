#include "FDPDFView.h"

#include <app/PDFWindowController.h>

#include <kit/base/MainQueue.h>
#include <kit/base/Workspace.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>

#include <QFileInfo>
#include <QScrollBar>

// Jumps to pages, destinations and actions, and the outline item for a page.

void FDPDFView::navigate(const std::function<void()> &jump)
{
    if (!pageTintColor().isValid()) {
        jump();
        return;
    }
    // The pause hides the frames in which the new place shows before it is painted.
    ++m_updatePauses;
    viewport()->setUpdatesEnabled(false);
    jump();
    MainQueue::asyncAfter(navigationPause, this, [this] {
        if (--m_updatePauses > 0)
            return;
        viewport()->setUpdatesEnabled(true);
        viewport()->update();
    });
}

void FDPDFView::goToPage(const std::shared_ptr<PDFPage> &page)
{
    navigate([this, &page] { XPDFView::goToPage(page); });
}

void FDPDFView::goToRect(const QRectF &rect, const std::shared_ptr<PDFPage> &onPage)
{
    navigate([this, &rect, &onPage] { XPDFView::goToRect(rect, onPage); });
}

void FDPDFView::goToDestination(const std::shared_ptr<PDFDestination> &destination)
{
    navigate([this, &destination] { XPDFView::goToDestination(destination); });
}

void FDPDFView::goToSelection(const std::shared_ptr<PDFSelection> &selection)
{
    navigate([this, &selection] { XPDFView::goToSelection(selection); });
}

void FDPDFView::performAction(const std::shared_ptr<PDFAction> &action)
{
    const auto remote = std::dynamic_pointer_cast<PDFActionRemoteGoTo>(action);
    if (!remote) {
        XPDFView::performAction(action);
        return;
    }
    const QUrl url = remote->URL();
    const QString path = url.toLocalFile();
    auto *const controller = qobject_cast<PDFWindowController *>(window());
    if (!url.isLocalFile() || !Workspace::isPDF(path) || !QFileInfo(path).isReadable()
        || !controller) {
        Workspace::openURL(url);
        return;
    }
    // The fragment names the page for the new tab's load.
    QUrl withPage = url;
    withPage.setFragment(QString::number(remote->pageIndex()));
    controller->openPDFDocumentWithURL(withPage, false, true);
}

std::shared_ptr<PDFOutline> FDPDFView::closestOutlineItemFor(const std::shared_ptr<PDFPage> &page)
{
    const auto current = document();
    if (!current)
        return nullptr;
    if (!m_mapPagesToOutlines) {
        m_mapPagesToOutlines.emplace();
        // Parent before children, children in order: the first item of a page wins.
        const std::function<void(const std::shared_ptr<PDFOutline> &)> walk
            = [&](const std::shared_ptr<PDFOutline> &item) {
                  const auto destination = item->destination();
                  const int index = destination && destination->page()
                      ? current->indexForPage(destination->page())
                      : -1;
                  if (index >= 0)
                      m_mapPagesToOutlines->emplace(index, item);
                  for (int child = 0; child < item->numberOfChildren(); ++child)
                      walk(item->childAtIndex(child));
              };
        if (const auto root = current->outlineRoot())
            walk(root);
    }
    const int pageIndex = page ? current->indexForPage(page) : -1;
    // The last item at or before the page, but none past every key.
    const auto next = m_mapPagesToOutlines->upper_bound(pageIndex);
    if (next == m_mapPagesToOutlines->begin() || next == m_mapPagesToOutlines->end())
        return nullptr;
    return std::prev(next)->second;
}
