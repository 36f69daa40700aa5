// PDFView: going to pages, rects, destinations and selections, and the history of jumps.

#include "PDFView.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QScrollBar>

#include <algorithm>

void PDFView::showPageRow(int index)
{
    if (m_layout.isContinuous() || m_layout.isLaidOut(index))
        return;
    m_layout.setAnchorPage(index);
    relayout();
}

void PDFView::goToPageIndex(int index)
{
    if (!pageAt(index))
        return;
    ensurePageSizes(index);
    showPageRow(index);
    const QRectF rect = pageRectInDocument(index);
    const double margin = m_layout.margin() * m_scale;
    const QRectF visible = m_documentView.visibleRect();
    const bool showsX = rect.left() >= visible.left() && rect.right() <= visible.right();
    scrollDocumentTo(QPointF(showsX ? visible.left() : rect.left() - margin, rect.top() - margin));
    m_currentHint = index;
    noteViewChanged();
}

void PDFView::scrollDocumentTo(const QPointF &documentPoint)
{
    // A point far off (a stored position, a link's target) stops at the end of the range; its
    // conversion to int outside that range would be undefined.
    const auto scroll = [](QScrollBar *bar, double value) {
        if (!std::isnan(value))
            bar->setValue(
                int(std::round(std::clamp(value, double(bar->minimum()), double(bar->maximum())))));
    };
    scroll(horizontalScrollBar(), documentPoint.x());
    scroll(verticalScrollBar(), documentPoint.y());
}

void PDFView::goToDocumentPoint(int index, const QPointF &pagePoint, bool keepX, bool keepY)
{
    ensurePageSizes(index);
    showPageRow(index);
    const QPointF document = viewPointForPage(index, pagePoint) - QPointF(documentOrigin());
    const QRectF visible = m_documentView.visibleRect();
    const QRectF page = pageRectInDocument(index);
    scrollDocumentTo(
        QPointF(keepX ? visible.left() : document.x(), keepY ? page.top() : document.y()));
    noteViewChanged();
}

void PDFView::goToPage(const std::shared_ptr<PDFPage> &page)
{
    const int index = page ? indexOfPage(page.get()) : -1;
    if (index < 0)
        return;
    recordJump();
    goToPageIndex(index);
}

void PDFView::goToRect(const QRectF &rect, const std::shared_ptr<PDFPage> &onPage)
{
    const int index = onPage ? indexOfPage(onPage.get()) : -1;
    if (index < 0)
        return;
    recordJump();
    ensurePageSizes(index);
    showPageRow(index);
    const QRectF target = convertRectFromPage(rect, onPage).translated(-QPointF(documentOrigin()));
    const QRectF visible = m_documentView.visibleRect();
    const bool showsX = target.left() >= visible.left() && target.right() <= visible.right();
    const bool showsY = target.top() >= visible.top() && target.bottom() <= visible.bottom();
    scrollDocumentTo(
        QPointF(showsX ? visible.left() : target.left(), showsY ? visible.top() : target.top()));
    noteViewChanged();
}

void PDFView::goToDestination(const std::shared_ptr<PDFDestination> &destination)
{
    const auto page = destination ? destination->page() : nullptr;
    const int index = page ? indexOfPage(page.get()) : -1;
    if (index < 0)
        return;
    recordJump();
    showPageRow(index);
    const double zoom = destination->zoom();
    if (zoom != PDFDestination::UnspecifiedValue && zoom > 0)
        setScaleInternal(zoom, QPointF(0, 0), false);
    const QPointF point = destination->point();
    const bool keepX = point.x() == PDFDestination::UnspecifiedValue;
    const bool keepY = point.y() == PDFDestination::UnspecifiedValue;
    goToDocumentPoint(index, QPointF(keepX ? 0 : point.x(), keepY ? 0 : point.y()), keepX, keepY);
}

void PDFView::goToSelection(const std::shared_ptr<PDFSelection> &selection)
{
    if (!selection || selection->isEmpty())
        return;
    const auto pages = selection->pages();
    goToRect(selection->boundsForPage(pages.front()), pages.front());
}

bool PDFView::canGoToPreviousPage() const
{
    const auto page = currentPage();
    return page && m_layout.previousRowPage(indexOfPage(page.get())) >= 0;
}

bool PDFView::canGoToNextPage() const
{
    const auto page = currentPage();
    return page && m_layout.nextRowPage(indexOfPage(page.get())) >= 0;
}

void PDFView::goToPreviousPage()
{
    const auto page = currentPage();
    if (page)
        goToPageIndex(m_layout.previousRowPage(indexOfPage(page.get())));
}

void PDFView::goToNextPage()
{
    const auto page = currentPage();
    if (page)
        goToPageIndex(m_layout.nextRowPage(indexOfPage(page.get())));
}

void PDFView::goToFirstPage()
{
    goToPage(pageAt(0));
}

void PDFView::goToLastPage()
{
    goToPage(pageAt(int(m_pages.size()) - 1));
}

PDFHistory::Entry PDFView::currentHistoryEntry() const
{
    const auto destination = currentDestination();
    if (!destination)
        return {};
    return PDFHistory::Entry { destination->page(), destination->point(), m_scale };
}

void PDFView::recordJump()
{
    m_history.recordJump(currentHistoryEntry());
    NotificationCenter::defaultCenter().post(ChangedHistoryNotification, this);
}

void PDFView::goToHistoryEntry(const PDFHistory::Entry &entry)
{
    const auto page = entry.page.lock();
    const int index = page ? indexOfPage(page.get()) : -1;
    if (index < 0)
        return;
    showPageRow(index);
    if (entry.scale > 0)
        setScaleInternal(entry.scale, QPointF(0, 0), m_autoScales);
    goToDocumentPoint(index, entry.point, false, false);
    NotificationCenter::defaultCenter().post(ChangedHistoryNotification, this);
}

void PDFView::goBack()
{
    if (canGoBack())
        goToHistoryEntry(m_history.goBack(currentHistoryEntry()));
}

void PDFView::goForward()
{
    if (canGoForward())
        goToHistoryEntry(m_history.goForward(currentHistoryEntry()));
}
