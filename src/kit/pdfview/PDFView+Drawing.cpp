// PDFView: painting from tiles, asking the scheduler for them, and the page views.

#include "PDFPageView.h"
#include "PDFRenderScheduler.h"
#include "PDFView.h"
#include "PDFViewDelegate.h"

#include <kit/base/Log.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFSelection.h>

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int T = PDFTileKey::TileSize;

} // namespace

double PDFView::devicePixelsPerPoint() const
{
    return m_scale * viewport()->devicePixelRatioF();
}

PDFView::RenderState &PDFView::renderState(const std::shared_ptr<PDFPage> &page)
{
    RenderState &state = m_renderStates[page.get()];
    const quint64 revision = page->revision();
    if (!state.source || state.pageRevision != revision) {
        state.source = page->renderSource(m_displayBox);
        state.pageRevision = revision;
        if (!state.source && !(state.failed && state.failedRevision == tileRevision(page.get())))
            pageFailed(page.get(), tileRevision(page.get()));
    }
    return state;
}

quint64 PDFView::tileRevision(const PDFPage *page) const
{
    // The epoch keeps a late tile of a page that is gone from matching a new page that happens
    // to live at the same address.
    return (m_epoch << 44) + page->revision();
}

QSize PDFView::pagePixels(int index, double devicePixelsPerPoint) const
{
    const QSizeF size = m_geometries[size_t(index)].viewSize(devicePixelsPerPoint);
    return QSize(int(std::ceil(size.width() - 1e-6)), int(std::ceil(size.height() - 1e-6)));
}

void PDFView::paintEvent(QPaintEvent *event)
{
    // Tiles asked for in this turn go to the workers before the view paints, so that they
    // render meanwhile rather than after.
    if (m_renderTimer.isActive()) {
        m_renderTimer.stop();
        updateRenderRequests();
    }
    QPainter painter(viewport());
    const QRegion damaged = event->region();
    std::vector<int> pages;
    if (!m_pages.empty() && m_scale > 0) {
        // Pages and their shadows, found a margin beyond the damage.
        const QRectF document = m_documentView.convertRectFromView(QRectF(event->rect()));
        const double margin = m_layout.margin() + 1;
        pages = m_layout.pagesInRect(QRectF(document.topLeft() / m_scale, document.size() / m_scale)
                                         .adjusted(-margin, -margin, margin, margin));
    }
    // Every pixel is painted once: the background around the pages, the pages over it.
    QRegion background = damaged;
    for (const int index : pages)
        background -= pageRectInView(index);
    for (const QRect &rect : background)
        painter.fillRect(rect, m_backgroundColor);
    for (const int index : pages) {
        const QRect rect = pageRectInView(index);
        if (m_layout.displaysPageBreaks())
            drawPageFrame(painter, rect);
        const QRegion area = damaged.intersected(rect);
        if (area.isEmpty())
            continue;
        const auto page = pageAt(index);
        painter.save();
        painter.setClipRegion(area);
        drawPage(page, painter);
        painter.restore();
        painter.save();
        painter.setClipRegion(area);
        drawSelection(index, painter);
        const auto state = m_renderStates.find(page.get());
        if (state != m_renderStates.end() && state->second.failed
            && state->second.failedRevision == tileRevision(page.get()))
            drawErrorMark(painter, rect);
        painter.restore();
    }
}

void PDFView::drawPageFrame(QPainter &painter, const QRect &rect) const
{
    // A hairline edge and a soft shadow below and to the right, inside the page-break margin:
    // thin strips only, so that a frame costs next to nothing. They lie on the background
    // painted just before, so each is its shade of black over the background, painted opaque:
    // a fill that blends goes through Qt's global thread pool for every 64 rows, and the main
    // thread would wait for its threads behind the render workers.
    const auto over = [this](int alpha) {
        const QColor back = m_backgroundColor.toRgb();
        const auto mix = [alpha](int value) { return (value * (255 - alpha) + 127) / 255; };
        return QColor(mix(back.red()), mix(back.green()), mix(back.blue()), back.alpha());
    };
    const QColor edge = over(70);
    painter.fillRect(QRect(rect.left() - 1, rect.top() - 1, rect.width() + 2, 1), edge);
    painter.fillRect(QRect(rect.left() - 1, rect.top(), 1, rect.height()), edge);
    painter.fillRect(QRect(rect.right() + 1, rect.top(), 1, rect.height()), edge);
    painter.fillRect(QRect(rect.left() - 1, rect.bottom() + 1, rect.width() + 2, 1), edge);
    const int depth = std::clamp(int(m_layout.margin() * m_scale * 0.75), 1, 4);
    for (int i = 2; i <= depth + 1; ++i) {
        const QColor shade = over(110 * (depth + 2 - i) / (depth + 1));
        painter.fillRect(QRect(rect.left() + i, rect.bottom() + i, rect.width(), 1), shade);
        painter.fillRect(QRect(rect.right() + i, rect.top() + i, 1, rect.height() - 1), shade);
    }
}

void PDFView::drawPage(const std::shared_ptr<PDFPage> &page, QPainter &painter)
{
    const int index = page ? indexOfPage(page.get()) : -1;
    if (index >= 0)
        drawTiles(index, painter);
}

void PDFView::drawTiles(int index, QPainter &painter)
{
    const auto page = pageAt(index);
    const QRect rect = pageRectInView(index);
    const double dpr = viewport()->devicePixelRatioF();
    const double scale = devicePixelsPerPoint();
    const QSize pixels = pagePixels(index, scale);
    const QRect clip = painter.clipBoundingRect().toAlignedRect().intersected(rect);
    if (clip.isEmpty() || pixels.isEmpty())
        return;
    PDFTileKey key { page.get(), tileRevision(page.get()), PDFTileKey::scaleKey(scale), 0, 0 };
    // The clip in the page's device pixels gives the tiles to draw.
    const QRect devicePart(
        QPoint(int((clip.left() - rect.left()) * dpr), int((clip.top() - rect.top()) * dpr)),
        QPoint(int(std::ceil((clip.right() + 1 - rect.left()) * dpr)) - 1,
            int(std::ceil((clip.bottom() + 1 - rect.top()) * dpr)) - 1));
    const QRect needed = devicePart.intersected(QRect(QPoint(0, 0), pixels));
    QRegion missing;
    std::vector<std::pair<QRect, const QImage *>> exact;
    for (int row = needed.top() / T; row <= needed.bottom() / T; ++row) {
        for (int column = needed.left() / T; column <= needed.right() / T; ++column) {
            key.column = column;
            key.row = row;
            QRect tile = key.pixelRect(pixels);
            if (const QImage *image = m_tiles.find(key)) {
                exact.emplace_back(tile, image);
                // A tile of its top rows only: the rest is still drawing.
                tile.setTop(tile.top() + image->height());
            }
            if (!tile.isEmpty()) {
                missing += QRectF(QPointF(rect.topLeft()) + QPointF(tile.topLeft()) / dpr,
                    QSizeF(tile.size()) / dpr)
                               .toAlignedRect();
            }
        }
    }
    // Tiles go onto whole device pixels, whatever the ratio: the page's origin is rounded to
    // the device grid once, and each tile is copied 1:1 from there.
    const QTransform world = painter.transform();
    painter.save();
    if (world.type() <= QTransform::TxTranslate) {
        const QPoint origin
            = ((QPointF(rect.topLeft()) + QPointF(world.dx(), world.dy())) * dpr).toPoint();
        painter.setTransform(QTransform::fromScale(1 / dpr, 1 / dpr));
        for (const auto &[tile, image] : exact)
            painter.drawImage(origin + tile.topLeft(), *image);
    } else {
        for (const auto &[tile, image] : exact) {
            painter.drawImage(QRectF(QPointF(rect.topLeft()) + QPointF(tile.topLeft()) / dpr,
                                  QSizeF(tile.size()) / dpr),
                *image);
        }
    }
    painter.restore();
    if (missing.isEmpty())
        return;
    // Stand-ins: tiles of another scale or an older revision, stretched, worst first, over
    // white paper.
    painter.save();
    painter.setClipRegion(missing, Qt::IntersectClip);
    painter.fillRect(missing.boundingRect(), Qt::white);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (const auto &candidate : m_tiles.standIns(page.get(), key.revision, key.scale)) {
        const double ratio = scale / candidate.key.devicePixelsPerPoint() / dpr;
        const QRectF source(QPointF(candidate.key.column * T, candidate.key.row * T),
            QSizeF(candidate.image->size()));
        const QRectF target(
            QPointF(rect.topLeft()) + source.topLeft() * ratio, source.size() * ratio);
        if (missing.intersects(target.toAlignedRect()))
            painter.drawImage(target, *candidate.image);
    }
    painter.restore();
    scheduleRendering();
}

void PDFView::drawSelection(int index, QPainter &painter) const
{
    if (!m_selection)
        return;
    const auto page = pageAt(index);
    const auto lines = m_selection->lineRectsForPage(page);
    if (lines.empty())
        return;
    painter.save();
    QColor highlight = palette().color(QPalette::Active, QPalette::Highlight);
    // Multiplying keeps the text readable under the colour.
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    highlight.setAlpha(255);
    QPainterPath path;
    for (const QRectF &line : lines)
        path.addRect(convertRectFromPage(line, page));
    painter.fillPath(path.simplified(), highlight.lighter(130));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (m_selectionEmphasis > 0) {
        QColor ring = highlight;
        ring.setAlphaF(m_selectionEmphasis);
        painter.setPen(QPen(ring, 1 + 3 * m_selectionEmphasis));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(path.simplified());
    }
    painter.restore();
}

void PDFView::drawErrorMark(QPainter &painter, const QRect &pageRect) const
{
    const QRectF mark(pageRect.left() + 6, pageRect.top() + 6, 14, 14);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(200, 40, 40));
    painter.drawEllipse(mark);
    painter.setPen(QPen(Qt::white, 2));
    painter.drawLine(mark.center() + QPointF(-3, -3), mark.center() + QPointF(3, 3));
    painter.drawLine(mark.center() + QPointF(3, -3), mark.center() + QPointF(-3, 3));
    painter.restore();
}

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
    releaseIfGrown();
    noteRenderProgress();
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
        m_sizeTimer.start();
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

void PDFView::annotationsChangedOnPage(const std::shared_ptr<PDFPage> &page)
{
    if (!page || indexOfPage(page.get()) < 0)
        return;
    // A drag reports a change at every step: the pages are looked at once per turn.
    if (std::find(m_changedPages.begin(), m_changedPages.end(), page) == m_changedPages.end())
        m_changedPages.push_back(page);
    if (!m_changedPagesTimer.isActive())
        m_changedPagesTimer.start();
}

void PDFView::flushChangedPages()
{
    const std::vector<std::shared_ptr<PDFPage>> pages = std::exchange(m_changedPages, {});
    bool relayout = false;
    for (const auto &page : pages) {
        const int index = indexOfPage(page.get());
        if (index < 0)
            continue;
        // A rotation or box edit changes the page's size: lay out again.
        const PageGeometry geometry(page->boundsForBox(m_displayBox), page->rotation());
        const PageGeometry &shown = m_geometries[size_t(index)];
        if (index < m_sizesKnown
            && (geometry.box() != shown.box() || geometry.rotation() != shown.rotation()))
            relayout = true;
        // Tiles are keyed by the page's revision, which rises only when something the engine
        // draws changed: an annotation the application draws itself costs no render.
        const auto state = m_renderStates.find(page.get());
        if (state == m_renderStates.end() || state->second.pageRevision == page->revision())
            continue;
        state->second.source.reset();
        state->second.failed = false;
        m_scheduler->invalidatePage(page.get());
        viewport()->update(pageRectInView(index));
        scheduleRendering();
    }
    if (relayout)
        layoutDocumentView();
}

QWidget *PDFView::pageViewForPage(const std::shared_ptr<PDFPage> &page) const
{
    const int index = page ? indexOfPage(page.get()) : -1;
    const auto found = m_pageViews.find(index);
    return found == m_pageViews.end() ? nullptr : found->second.data();
}

void PDFView::updatePageViews()
{
    const QRectF visible = m_documentView.visibleRect();
    // At least the area tiles are rendered ahead for (updateRenderRequests), so that a page
    // has its view, and what the owner sets up in it, before its first render.
    const QRectF keep = visible.adjusted(
        -visible.width() / 2, -visible.height(), visible.width() / 2, visible.height());
    const QRectF drop = visible.adjusted(0, -3 * visible.height(), 0, 3 * visible.height());
    // Far out of view, or no longer laid out: the view goes.
    for (auto it = m_pageViews.begin(); it != m_pageViews.end();) {
        const QRectF rect = pageRectInDocument(it->first);
        if (!it->second || rect.isEmpty() || !rect.intersects(drop)
            || it->second->page() != pageAt(it->first)) {
            if (it->second) {
                willRemovePageView(it->second, it->second->page(), it->first);
                it->second->hide();
                it->second->deleteLater();
            }
            it = m_pageViews.erase(it);
        } else {
            ++it;
        }
    }
    if (m_scale > 0) {
        const QRectF keepLayout(keep.topLeft() / m_scale, keep.size() / m_scale);
        for (const int index : m_layout.pagesInRect(keepLayout)) {
            if (m_pageViews.count(index))
                continue;
            auto *view = new PDFPageView(pageAt(index), viewport());
            m_pageViews[index] = view;
            view->setGeometry(pageRectInView(index));
            view->show();
            didAddPageView(view, pageAt(index), index);
        }
    }
    for (const auto &[index, view] : m_pageViews) {
        if (view)
            view->setGeometry(pageRectInView(index));
    }
}

void PDFView::didAddPageView(QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index)
{
    if (m_delegate)
        m_delegate->pdfViewDidAddView(this, pageView, page, index);
}

void PDFView::willRemovePageView(QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index)
{
    if (m_delegate)
        m_delegate->pdfViewWillRemoveView(this, pageView, page, index);
}

void PDFView::removeAllPageViews()
{
    for (const auto &[index, view] : m_pageViews) {
        if (!view)
            continue;
        willRemovePageView(view, view->page(), index);
        view->hide();
        view->deleteLater();
    }
    m_pageViews.clear();
}
