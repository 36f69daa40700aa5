// PDFView: painting from tiles, and the page views.

#include "PDFPageView.h"
#include "PDFRenderScheduler.h"
#include "PDFView.h"
#include "PDFViewDelegate.h"

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
