#include "PDFView.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QScrollBar>

#include <algorithm>
#include <cmath>

void PDFView::reloadPageSizes()
{
    m_pagesStale = false;
    m_sizeTimer.stop();
    m_sizesWaitForPaint = false;
    m_pages.clear();
    m_pageIndexes.clear();
    m_geometries.clear();
    m_sizesKnown = 0;
    const int count = m_document && !m_document->isLocked() ? m_document->pageCount() : 0;
    m_pages.resize(size_t(count));
    // The first screen is laid out with the sizes of its own pages; the others are read once it
    // is drawn (loadMorePageSizes), each page's tree node and boxes a read of the file.
    loadPageSizes(firstScreenPageCount());
}

int PDFView::firstScreenPageCount() const
{
    const int most = std::min(InitialPageSizes, int(m_pages.size()));
    if (m_scale <= 0)
        return most;
    const double reach = 2.0 * std::max(1, viewport()->height()) / m_scale;
    double height = 0;
    int count = 0;
    while (count < most && height < reach) {
        const auto page = pageAt(count);
        height
            += PageGeometry(page->boundsForBox(m_displayBox), page->rotation()).viewSize().height()
            + 2 * m_layout.margin();
        ++count;
    }
    // Two pages share a row.
    return std::min(most, count * m_layout.pagesAcross());
}

void PDFView::loadPageSizes(int count, int atLeast, QDeadlineTimer deadline)
{
    const int total = int(m_pages.size());
    count = std::min(count, total);
    if (count <= m_sizesKnown && !m_geometries.empty())
        return;
    m_geometries.reserve(size_t(total));
    for (int i = m_sizesKnown; i < count; ++i) {
        if (i >= atLeast && i > m_sizesKnown && deadline.hasExpired()) {
            count = i;
            break;
        }
        const auto page = pageAt(i);
        PageGeometry geometry(page->boundsForBox(m_displayBox), page->rotation());
        if (size_t(i) < m_geometries.size())
            m_geometries[size_t(i)] = geometry;
        else
            m_geometries.push_back(geometry);
    }
    m_sizesKnown = count;
    // Pages not read yet are taken to be like the last page read, until the timer reads them.
    m_geometries.resize(size_t(count), PageGeometry(QRectF(0, 0, 612, 792), 0));
    std::vector<QSizeF> sizes;
    sizes.reserve(size_t(total));
    for (const PageGeometry &geometry : m_geometries)
        sizes.push_back(geometry.viewSize());
    for (int i = count; i < total; ++i) {
        m_geometries.push_back(m_geometries[size_t(count - 1)]);
        sizes.push_back(sizes.back());
    }
    m_layout.setPageSizes(std::move(sizes));
    if (m_sizesKnown < total)
        m_sizeTimer.start(0);
}

void PDFView::loadMorePageSizes()
{
    // The first screen comes first: the rest of the sizes wait until it is sharp.
    if (!m_visibleComplete && !m_pages.empty()) {
        m_sizesWaitForPaint = true;
        return;
    }
    if (!m_document)
        return;
    m_document->readPageTreeAhead();
    // These sizes can wait: a turn takes the pages that are ready without waiting for a worker
    // inside the document or parsing the file here, and else comes back a little later.
    const QDeadlineTimer deadline(PageSizeMillisecondsPerTurn);
    const int ready
        = m_document->readyPages(m_sizesKnown, m_sizesKnown + PageSizesPerTurn - 1, deadline);
    if (ready <= m_sizesKnown) {
        m_sizeTimer.start(PageSizeRetryMilliseconds);
        return;
    }
    refinePageSizes(ready, 0, deadline);
    updatePageViews();
    // Reading every page's node parsed much of the file, which no screen may need again.
    if (m_sizesKnown >= int(m_pages.size()))
        releaseIfGrown();
}

void PDFView::refinePageSizes(int count, int atLeast, QDeadlineTimer deadline)
{
    // The page at the top of the view keeps its place on screen while sizes of pages above it
    // and of itself turn from estimates into real ones; a view at the end stays at the end.
    QScrollBar *bar = verticalScrollBar();
    const bool atEnd = bar->maximum() > 0 && bar->value() >= bar->maximum();
    const QRectF visible = m_documentView.visibleRect();
    int anchor = -1;
    double fraction = 0;
    if (m_scale > 0 && !atEnd) {
        const QPointF top(visible.center().x() / m_scale, visible.top() / m_scale);
        anchor = m_layout.nearestPage(top);
        const QRectF rect = pageRectInDocument(anchor);
        if (!rect.isEmpty())
            fraction = (visible.top() - rect.top()) / rect.height();
        else
            anchor = -1;
    }
    loadPageSizes(count, atLeast, deadline);
    m_layout.update();
    updateScrollBars();
    if (atEnd) {
        bar->setValue(bar->maximum());
    } else if (anchor >= 0) {
        const QRectF rect = pageRectInDocument(anchor);
        bar->setValue(int(std::round(rect.top() + fraction * rect.height())));
    }
}

void PDFView::ensurePageSizes(int index)
{
    if (index < m_sizesKnown || index >= int(m_pages.size()))
        return;
    // Before the first screen is drawn, only as far as it may reach; after, some pages beyond,
    // as time allows.
    refinePageSizes(index + (m_firstScreenPending ? InitialPageSizes : PageSizesPerTurn), index + 1,
        QDeadlineTimer(PageSizeMillisecondsPerTurn));
    viewport()->update();
}

void PDFView::ensureVisiblePageSizes()
{
    if (m_sizesKnown >= int(m_pages.size()) || m_scale <= 0)
        return;
    const QRectF visible = m_documentView.visibleRect();
    const QRectF ahead = visible.adjusted(0, -visible.height(), 0, visible.height());
    const auto pages
        = m_layout.pagesInRect(QRectF(ahead.topLeft() / m_scale, ahead.size() / m_scale));
    if (!pages.empty())
        ensurePageSizes(pages.back());
}
