// PDFView: asking the scheduler for tiles, taking them in as they arrive, knowing when the screen
// is complete, and giving back what the engine kept.

#include "PDFRenderScheduler.h"
#include "PDFView.h"

#include <kit/base/Log.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int T = PDFTileKey::TileSize;

} // namespace

void PDFView::requestTilesNow()
{
    m_renderTimer.stop();
    m_visibleComplete = false;
    updateRenderRequests();
}

void PDFView::scheduleRendering()
{
    // Every change that needs tiles announces the next time the view is sharp again.
    m_visibleComplete = false;
    if (!m_renderTimer.isActive())
        m_renderTimer.start();
}

void PDFView::updateRenderRequests()
{
    std::vector<PDFTileRequest> requests;
    if (m_pages.empty() || m_scale <= 0) {
        m_scheduler->setRequests(std::move(requests));
        return;
    }
    const double dpr = viewport()->devicePixelRatioF();
    const double scale = devicePixelsPerPoint();
    const QRectF visible = m_documentView.visibleRect();
    // The visible area first, nearest the middle first; then a screen above and below.
    const QRectF ahead = visible.adjusted(
        -visible.width() / 2, -visible.height(), visible.width() / 2, visible.height());
    const QPointF middle = visible.center();
    std::vector<std::pair<double, PDFTileRequest>> ranked;
    std::vector<const PDFPage *> nearby;
    std::vector<const void *> shownPages;
    qint64 wantedPixels = 0;
    const QRectF aheadLayout(ahead.topLeft() / m_scale, ahead.size() / m_scale);
    for (const int index : m_layout.pagesInRect(aheadLayout)) {
        const auto page = pageAt(index);
        nearby.push_back(page.get());
        // Until a new document's first screen is drawn, only its pages are loaded: a page
        // out of view is loaded on the main thread, under the document's lock, which the
        // workers drawing the first screen take too.
        if (m_firstScreenPending && !pageRectInDocument(index).intersects(visible)
            && !m_renderStates.count(page.get())) {
            m_pagesAheadWaiting = true;
            continue;
        }
        RenderState &state = renderState(page);
        const quint64 revision = tileRevision(page.get());
        if (!state.source || (state.failed && state.failedRevision == revision))
            continue;
        const QRectF pageRect = pageRectInDocument(index);
        if (pageRect.intersects(visible))
            shownPages.push_back(page.get());
        const QSize pixels = pagePixels(index, scale);
        const QRectF wanted = pageRect.intersected(ahead);
        if (wanted.isEmpty())
            continue;
        const QRectF local = wanted.translated(-pageRect.topLeft());
        const int firstColumn = std::max(0, int(local.left() * dpr) / T);
        const int lastColumn = std::min((pixels.width() - 1) / T, int(local.right() * dpr) / T);
        const int firstRow = std::max(0, int(local.top() * dpr) / T);
        const int lastRow = std::min((pixels.height() - 1) / T, int(local.bottom() * dpr) / T);
        for (int row = firstRow; row <= lastRow; ++row) {
            for (int column = firstColumn; column <= lastColumn; ++column) {
                const PDFTileKey key { page.get(), revision, PDFTileKey::scaleKey(scale), column,
                    row };
                const QRect tile = key.pixelRect(pixels);
                wantedPixels += qint64(tile.width()) * tile.height();
                const QImage *cached = m_tiles.peek(key);
                if (cached && cached->height() >= tile.height())
                    continue;
                const QRectF inDocument(
                    pageRect.topLeft() + QPointF(tile.topLeft()) / dpr, QSizeF(tile.size()) / dpr);
                const bool shown = inDocument.intersects(visible);
                const QPointF offset = inDocument.center() - middle;
                const double rank = (shown ? 0 : 1e9) + std::hypot(offset.x(), offset.y());
                // A tile the screen's bottom edge cuts hands over its rows on screen first.
                const int shownRows = shown && inDocument.top() >= visible.top()
                        && inDocument.bottom() > visible.bottom()
                    ? int(std::ceil((visible.bottom() - inDocument.top()) * dpr))
                    : 0;
                ranked.push_back(
                    { rank, PDFTileRequest { key, pixels, state.source, shown, shownRows } });
            }
        }
    }
    // Room for every tile wanted and as much again, so that the cache never drops a wanted
    // tile for another, and the tiles of the previous scale stand in while a zoom renders.
    m_tiles.setPixelBudget(std::max(m_screenTileBudget, 2 * wantedPixels));
    std::stable_sort(ranked.begin(), ranked.end(),
        [](const auto &a, const auto &b) { return a.first < b.first; });
    requests.reserve(ranked.size());
    for (auto &entry : ranked)
        requests.push_back(std::move(entry.second));
    m_scheduler->setRequests(std::move(requests));
    m_scheduler->keepListsOf(shownPages);
    // Sources of pages far away hold loaded pages: keep only those nearby, and failures.
    m_pagesLeftBehind += int(std::erase_if(m_renderStates, [&](const auto &item) {
        return !item.second.failed
            && std::find(nearby.begin(), nearby.end(), item.first) == nearby.end();
    }));
    loadPagesAhead(visible);
    releaseIfGrown();
    noteRenderProgress();
}

void PDFView::loadPagesAhead(const QRectF &visible)
{
    // Loading a page parses its resources, which on some pages takes most of a frame: done on
    // a background thread for the pages a few screens on, drawing them later does not wait.
    if (m_firstScreenPending || !m_document)
        return;
    constexpr double Screens = 3;
    const QRectF further = visible.adjusted(-visible.width(), -Screens * visible.height(),
        visible.width(), Screens * visible.height());
    const QPointF middle = visible.center();
    std::vector<std::pair<double, std::shared_ptr<PDFPage>>> ranked;
    for (const int index : m_layout.pagesInRect(
             QRectF(further.topLeft() / m_scale, further.size() / m_scale))) {
        auto page = pageAt(index);
        if (!page || m_renderStates.count(page.get()))
            continue;
        const QPointF offset = pageRectInDocument(index).center() - middle;
        ranked.emplace_back(std::hypot(offset.x(), offset.y()), std::move(page));
    }
    std::stable_sort(ranked.begin(), ranked.end(),
        [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<const PDFPage *> wanted;
    std::vector<std::shared_ptr<PDFPage>> pages;
    for (auto &entry : ranked) {
        wanted.push_back(entry.second.get());
        pages.push_back(std::move(entry.second));
    }
    if (wanted == m_pagesLoadingAhead)
        return;
    m_pagesLoadingAhead = std::move(wanted);
    m_document->loadPagesAhead(pages);
}

void PDFView::releaseIfGrown()
{
    // What the engine kept of the pages passed is given back once the reader has moved on by
    // a good stretch, or as soon as it grew by a bound, so that memory stays near what the
    // pages in view need however fast the reader scrolls. The bound holds before any page is
    // left behind too, once the screen is drawn: the pages next to the view, drawn ahead, grow
    // it as much, but a screen still drawing needs what its workers loaded. Growth is looked at
    // as tiles arrive too: the workers grow it between two scrolls.
    if (m_releaseTimer.isActive() || (m_pagesLeftBehind <= 0 && !m_visibleComplete))
        return;
    if (m_pagesLeftBehind >= ReleaseAfterPages
        || PDFDocument::cachedContentGrowth() > ReleaseAfterBytes)
        releaseCachedContent();
}

void PDFView::releaseCachedContent()
{
    if (!m_document)
        return;
    // The last release still runs: try again shortly rather than wait for it.
    if (!m_document->releaseCachedContent()) {
        m_releaseTimer.start();
        return;
    }
    m_pagesLeftBehind = 0;
}

bool PDFView::visibleTilesComplete(std::vector<const PDFPage *> *completePages) const
{
    bool result = true;
    const double dpr = viewport()->devicePixelRatioF();
    const double scale = devicePixelsPerPoint();
    const QRectF visible = m_documentView.visibleRect();
    for (const auto &page : visiblePages()) {
        const int index = indexOfPage(page.get());
        const quint64 revision = tileRevision(page.get());
        const auto state = m_renderStates.find(page.get());
        if (state != m_renderStates.end() && state->second.failed
            && state->second.failedRevision == revision)
            continue;
        const QRectF pageRect = pageRectInDocument(index);
        const QSize pixels = pagePixels(index, scale);
        const QRectF local = pageRect.intersected(visible).translated(-pageRect.topLeft());
        const int lastColumn = std::min((pixels.width() - 1) / T, int(local.right() * dpr) / T);
        const int lastRow = std::min((pixels.height() - 1) / T, int(local.bottom() * dpr) / T);
        // The rows of the last row of tiles on screen: a tile holding its top rows only
        // completes the screen when they reach its bottom edge.
        const int lastRowShown = int(std::ceil(local.bottom() * dpr)) - lastRow * T;
        bool pageComplete = true;
        for (int row = std::max(0, int(local.top() * dpr) / T); row <= lastRow; ++row) {
            for (int column = std::max(0, int(local.left() * dpr) / T); column <= lastColumn;
                 ++column) {
                const PDFTileKey key { page.get(), revision, PDFTileKey::scaleKey(scale), column,
                    row };
                const QImage *image = m_tiles.peek(key);
                const int height = key.pixelRect(pixels).height();
                if (!image
                    || image->height() < (row < lastRow ? height : std::min(lastRowShown, height)))
                    pageComplete = false;
            }
        }
        if (pageComplete && completePages)
            completePages->push_back(page.get());
        result = result && pageComplete;
    }
    return result;
}

void PDFView::noteRenderProgress()
{
    std::vector<const PDFPage *> complete;
    const bool result = visibleTilesComplete(&complete);
    // Once a page shows only current tiles, older revisions of it are of no more use.
    for (const PDFPage *page : complete)
        m_tiles.removeOtherRevisions(page, tileRevision(page));
    const bool becameComplete = result && !m_visibleComplete;
    m_visibleComplete = result;
    if (result && m_firstScreenPending) {
        m_firstScreenPending = false;
        if (std::exchange(m_pagesAheadWaiting, false) && !m_renderTimer.isActive())
            m_renderTimer.start();
    }
    if (becameComplete && m_sizesWaitForPaint) {
        m_sizesWaitForPaint = false;
        m_sizeTimer.start(0);
    }
    if (becameComplete)
        emit visibleAreaRendered();
}

bool PDFView::isVisibleAreaRendered() const
{
    return visibleTilesComplete();
}

void PDFView::tileFinished(const PDFTileKey &key, const QImage &image)
{
    // A tile of a page removed or moved since it was asked for arrives late: the page is no
    // longer where the view found it.
    const int index = fetchedIndexOfPage(key.page);
    const auto page = pageAt(index);
    if (!page || page.get() != key.page)
        return;
    m_tiles.insert(key, image);
    releaseIfGrown();
    if (key.revision == tileRevision(page.get())
        && key.scale == PDFTileKey::scaleKey(devicePixelsPerPoint())) {
        const double dpr = viewport()->devicePixelRatioF();
        const QRect tile = key.pixelRect(pagePixels(index, key.devicePixelsPerPoint()));
        const QRect rect = pageRectInView(index);
        viewport()->update(QRectF(
            QPointF(rect.topLeft()) + QPointF(tile.topLeft()) / dpr, QSizeF(tile.size()) / dpr)
                               .toAlignedRect());
    }
    noteRenderProgress();
}

void PDFView::tileTopDrawn(const PDFTileKey &key, const QImage &image)
{
    // The whole tile may have come first.
    const QImage *cached = m_tiles.peek(key);
    if (!cached || cached->height() < image.height())
        tileFinished(key, image);
}

void PDFView::pageFailed(const void *page, quint64 revision)
{
    const int index = fetchedIndexOfPage(page);
    const auto shown = pageAt(index);
    if (!shown || shown.get() != page || revision != tileRevision(shown.get()))
        return;
    RenderState &state = m_renderStates[static_cast<const PDFPage *>(page)];
    if (state.failed && state.failedRevision == revision)
        return;
    state.failed = true;
    state.failedRevision = revision;
    Log::warn(QStringLiteral("Page %1 could not be rendered; it shows blank").arg(index + 1));
    viewport()->update(pageRectInView(index));
    noteRenderProgress();
}
