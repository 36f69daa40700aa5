#include "PDFView.h"
#include "PDFPageView.h"
#include "PDFRenderScheduler.h"
#include "PDFScrollBar.h"
#include "PDFViewAccessible.h"
#include "PDFViewDelegate.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

const QString PDFView::DocumentChangedNotification
    = QStringLiteral("PDFViewDocumentChangedNotification");
const QString PDFView::PageChangedNotification = QStringLiteral("PDFViewPageChangedNotification");
const QString PDFView::ScaleChangedNotification = QStringLiteral("PDFViewScaleChangedNotification");
const QString PDFView::DisplayModeChangedNotification
    = QStringLiteral("PDFViewDisplayModeChangedNotification");
const QString PDFView::DisplayBoxChangedNotification
    = QStringLiteral("PDFViewDisplayBoxChangedNotification");
const QString PDFView::ChangedHistoryNotification
    = QStringLiteral("PDFViewChangedHistoryNotification");
const QString PDFView::SelectionChangedNotification
    = QStringLiteral("PDFViewSelectionChangedNotification");

PDFView::PDFView(QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_scheduler(new PDFRenderScheduler(this))
    , m_documentObserver(new QObject(this))
{
    PDFViewAccessible::registerFactory();
    setVerticalScrollBar(new PDFScrollBar(Qt::Vertical, this));
    setHorizontalScrollBar(new PDFScrollBar(Qt::Horizontal, this));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAttribute(Qt::WA_AcceptTouchEvents);
    horizontalScrollBar()->setSingleStep(40);
    verticalScrollBar()->setSingleStep(40);
    m_renderTimer.setSingleShot(true);
    m_renderTimer.setInterval(0);
    connect(&m_renderTimer, &QTimer::timeout, this, &PDFView::updateRenderRequests);
    m_releaseTimer.setSingleShot(true);
    m_releaseTimer.setInterval(100);
    connect(&m_releaseTimer, &QTimer::timeout, this, &PDFView::releaseIfGrown);
    m_changedPagesTimer.setSingleShot(true);
    m_changedPagesTimer.setInterval(0);
    connect(&m_changedPagesTimer, &QTimer::timeout, this, &PDFView::flushChangedPages);
    m_sizeTimer.setSingleShot(true);
    m_sizeTimer.setInterval(0);
    connect(&m_sizeTimer, &QTimer::timeout, this, &PDFView::loadMorePageSizes);
    m_autoscrollTimer.setInterval(50);
    connect(&m_autoscrollTimer, &QTimer::timeout, this, &PDFView::continueAutoscroll);
    connect(m_scheduler, &PDFRenderScheduler::tileFinished, this, &PDFView::tileFinished);
    connect(m_scheduler, &PDFRenderScheduler::tileTopDrawn, this, &PDFView::tileTopDrawn);
    connect(m_scheduler, &PDFRenderScheduler::pageFailed, this, &PDFView::pageFailed);
}

PDFView::~PDFView()
{
    m_scheduler->cancelAll();
}

void PDFView::setDocument(const std::shared_ptr<PDFDocument> &document)
{
    ++m_epoch;
    m_scheduler->cancelAll();
    removeAllPageViews();
    m_tiles.clear();
    m_renderStates.clear();
    m_history.clear();
    m_selection.reset();
    m_selectionAnchorPage.reset();
    m_pressedLink.reset();
    m_selecting = false;
    m_document = document;
    NotificationCenter::defaultCenter().removeObserver(m_documentObserver);
    if (document) {
        NotificationCenter::defaultCenter().addObserver(m_documentObserver,
            PDFDocument::PagesDidChangeNotification, document.get(),
            [this](const Notification &) { documentPagesDidChange(); });
    }
    m_pagesLeftBehind = 0;
    m_releaseTimer.stop();
    m_firstScreenPending = document != nullptr;
    m_pagesAheadWaiting = false;
    m_pagesLoadingAhead.clear();
    m_layout.setAnchorPage(0);
    reloadPageSizes();
    m_layout.setAnchorPage(0);
    relayout();
    horizontalScrollBar()->setValue(0);
    verticalScrollBar()->setValue(0);
    m_postedPage = -1;
    updatePasswordPanel();
    NotificationCenter::defaultCenter().post(DocumentChangedNotification, this);
    noteViewChanged();
}

int PDFView::indexOfPage(const PDFPage *page) const
{
    if (!page)
        return -1;
    if (m_pagesStale) {
        const auto shared = std::const_pointer_cast<PDFPage>(page->shared_from_this());
        const int index = m_document ? m_document->indexForPage(shared) : -1;
        return index < int(m_pages.size()) ? index : -1;
    }
    const auto found = m_pageIndexes.find(page);
    if (found != m_pageIndexes.end())
        return found->second;
    // A page the view has not fetched yet, if it is one of the document's.
    if (!m_document || m_pageIndexes.size() == m_pages.size())
        return -1;
    const auto shared = std::const_pointer_cast<PDFPage>(page->shared_from_this());
    const int index = m_document->indexForPage(shared);
    if (index < 0 || index >= int(m_pages.size()))
        return -1;
    return pageAt(index).get() == page ? index : -1;
}

int PDFView::fetchedIndexOfPage(const void *page) const
{
    const auto found = m_pageIndexes.find(static_cast<const PDFPage *>(page));
    return found == m_pageIndexes.end() ? -1 : found->second;
}

std::shared_ptr<PDFPage> PDFView::pageAt(int index) const
{
    if (index < 0 || index >= int(m_pages.size()))
        return nullptr;
    if (m_pagesStale)
        return m_document ? m_document->pageAtIndex(index) : nullptr;
    auto &page = m_pages[size_t(index)];
    if (!page && m_document) {
        page = m_document->pageAtIndex(index);
        if (page)
            m_pageIndexes[page.get()] = index;
        // A page tree found unsound while it was walked is rebuilt from the pages it really
        // holds, which may be more than it claimed: the layout follows on the next turn.
        if (m_document->pageCount() != int(m_pages.size()) && !m_relayoutQueued) {
            m_relayoutQueued = true;
            QMetaObject::invokeMethod(
                const_cast<PDFView *>(this),
                [this] {
                    auto *self = const_cast<PDFView *>(this);
                    self->m_relayoutQueued = false;
                    self->layoutDocumentView();
                },
                Qt::QueuedConnection);
        }
    }
    return page;
}

void PDFView::documentPagesDidChange()
{
    m_pagesStale = true;
    if (m_relayoutQueued)
        return;
    m_relayoutQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_relayoutQueued = false;
            if (m_pagesStale)
                layoutDocumentView();
        },
        Qt::QueuedConnection);
}

void PDFView::layoutDocumentView()
{
    const auto current = currentPage();
    reloadPageSizes();
    const int index = current ? indexOfPage(current.get()) : -1;
    m_layout.setAnchorPage(std::max(index, 0));
    relayout();
    if (index >= 0)
        goToPageIndex(index);
    noteViewChanged();
}

void PDFView::relayout()
{
    m_layout.update();
    updateScrollBars();
    viewport()->update();
    updatePageViews();
    scheduleRendering();
}

void PDFView::updateScrollBars()
{
    const QSize view = viewport()->size();
    const QSizeF document = m_documentView.bounds().size();
    horizontalScrollBar()->setRange(
        0, std::max(0, int(std::ceil(document.width())) - view.width()));
    verticalScrollBar()->setRange(
        0, std::max(0, int(std::ceil(document.height())) - view.height()));
    horizontalScrollBar()->setPageStep(view.width());
    verticalScrollBar()->setPageStep(view.height());
    // The cache holds a few screens of tiles at the current density; the tiles the view asks
    // for may need more (see updateRenderRequests).
    const double dpr = devicePixelRatioF();
    const qint64 screen = qint64(view.width() * dpr) * qint64(view.height() * dpr);
    m_screenTileBudget = std::max<qint64>(MinimumTileBudget, TileBudgetScreens * screen);
    m_tiles.setPixelBudget(std::max(m_screenTileBudget, m_tiles.pixelBudget()));
}

QPoint PDFView::documentOrigin() const
{
    const QSize view = viewport()->size();
    const QSizeF document = m_documentView.bounds().size();
    const int offsetX = std::max(0, int(view.width() - std::ceil(document.width())) / 2);
    const int offsetY = std::max(0, int(view.height() - std::ceil(document.height())) / 2);
    return QPoint(offsetX - horizontalScrollBar()->value(), offsetY - verticalScrollBar()->value());
}

QRectF PDFView::pageRectInDocument(int index) const
{
    const QRectF rect = m_layout.pageRect(index);
    if (rect.isEmpty())
        return {};
    // Whole pixels, so that tiles land on the pixel grid.
    return QRectF(QPointF(std::round(rect.left() * m_scale), std::round(rect.top() * m_scale)),
        QPointF(std::round(rect.right() * m_scale), std::round(rect.bottom() * m_scale)));
}

QRect PDFView::pageRectInView(int index) const
{
    return pageRectInDocument(index).translated(documentOrigin()).toRect();
}

QPointF PDFView::pagePointForView(int index, const QPointF &viewPoint) const
{
    const QRect rect = pageRectInView(index);
    if (rect.isEmpty())
        return {};
    return m_geometries[size_t(index)].pagePoint(viewPoint - QPointF(rect.topLeft()), m_scale);
}

QPointF PDFView::viewPointForPage(int index, const QPointF &pagePoint) const
{
    const QRect rect = pageRectInView(index);
    if (rect.isEmpty())
        return {};
    return m_geometries[size_t(index)].viewPoint(pagePoint, m_scale) + QPointF(rect.topLeft());
}

QPointF PDFView::convertPointToPage(
    const QPointF &point, const std::shared_ptr<PDFPage> &page) const
{
    return pagePointForView(page ? indexOfPage(page.get()) : -1, point);
}

QPointF PDFView::convertPointFromPage(
    const QPointF &point, const std::shared_ptr<PDFPage> &page) const
{
    return viewPointForPage(page ? indexOfPage(page.get()) : -1, point);
}

QRectF PDFView::convertRectToPage(const QRectF &rect, const std::shared_ptr<PDFPage> &page) const
{
    const int index = page ? indexOfPage(page.get()) : -1;
    const QRect pageRect = pageRectInView(index);
    if (pageRect.isEmpty())
        return {};
    return m_geometries[size_t(index)].pageRect(rect.translated(-pageRect.topLeft()), m_scale);
}

QRectF PDFView::convertRectFromPage(const QRectF &rect, const std::shared_ptr<PDFPage> &page) const
{
    const int index = page ? indexOfPage(page.get()) : -1;
    const QRect pageRect = pageRectInView(index);
    if (pageRect.isEmpty())
        return {};
    return m_geometries[size_t(index)].viewRect(rect, m_scale).translated(pageRect.topLeft());
}

void PDFView::transformContextForPage(const std::shared_ptr<PDFPage> &page, QPainter &painter) const
{
    const int index = page ? indexOfPage(page.get()) : -1;
    const QRect rect = pageRectInView(index);
    if (rect.isEmpty())
        return;
    painter.setTransform(m_geometries[size_t(index)].pageToView(m_scale)
            * QTransform::fromTranslate(rect.left(), rect.top()),
        true);
}

std::shared_ptr<PDFPage> PDFView::pageForPoint(const QPointF &point, bool nearest) const
{
    if (m_scale <= 0)
        return nullptr;
    const QPointF layoutPoint = (point - QPointF(documentOrigin())) / m_scale;
    const int index = m_layout.pageAtPoint(layoutPoint);
    if (index >= 0 || !nearest)
        return pageAt(index);
    return pageAt(m_layout.nearestPage(layoutPoint));
}

std::vector<std::shared_ptr<PDFPage>> PDFView::visiblePages() const
{
    std::vector<std::shared_ptr<PDFPage>> pages;
    const QRectF visible = m_documentView.visibleRect();
    if (m_scale <= 0)
        return pages;
    const QRectF layoutRect(visible.topLeft() / m_scale, visible.size() / m_scale);
    for (const int index : m_layout.pagesInRect(layoutRect))
        pages.push_back(pageAt(index));
    return pages;
}

std::shared_ptr<PDFPage> PDFView::currentPage() const
{
    const QRect view = viewport()->rect();
    int best = -1;
    qint64 bestArea = -1;
    for (const auto &page : visiblePages()) {
        const int index = indexOfPage(page.get());
        const QRect shown = pageRectInView(index).intersected(view);
        const qint64 area = qint64(shown.width()) * shown.height();
        // On a tie (the two pages of a spread) the page already current stays current.
        if (area > bestArea || (area == bestArea && index == m_currentHint)) {
            bestArea = area;
            best = index;
        }
    }
    if (best < 0 && !m_pages.empty()) {
        const QPointF center = QPointF(view.center());
        const auto nearest = pageForPoint(center, true);
        return nearest ? nearest : pageAt(0);
    }
    return pageAt(best);
}

std::shared_ptr<PDFDestination> PDFView::currentDestination() const
{
    const auto page = currentPage();
    if (!page)
        return nullptr;
    const int index = indexOfPage(page.get());
    const QRectF box = m_geometries[size_t(index)].box();
    QPointF point = pagePointForView(index, QPointF(0, 0));
    point.setX(std::clamp(point.x(), box.left(), box.right()));
    point.setY(std::clamp(point.y(), box.top(), box.bottom()));
    auto destination = std::make_shared<PDFDestination>(page, point);
    destination->setZoom(m_scale);
    return destination;
}

void PDFView::noteViewChanged()
{
    const auto page = currentPage();
    const int index = page ? indexOfPage(page.get()) : -1;
    m_currentHint = index;
    if (index == m_postedPage)
        return;
    m_postedPage = index;
    NotificationCenter::defaultCenter().post(PageChangedNotification, this);
}

void PDFView::setDisplayMode(int mode)
{
    mode = std::clamp(mode, int(SinglePage), int(TwoUpContinuous));
    if (mode == displayMode())
        return;
    const auto current = currentPage();
    m_layout.setDisplayMode(mode);
    const int index = current ? indexOfPage(current.get()) : 0;
    m_layout.setAnchorPage(index);
    relayout();
    if (current)
        goToPageIndex(index);
    NotificationCenter::defaultCenter().post(DisplayModeChangedNotification, this);
    noteViewChanged();
}

void PDFView::setDisplaysPageBreaks(bool breaks)
{
    if (breaks == displaysPageBreaks())
        return;
    const auto current = currentPage();
    m_layout.setDisplaysPageBreaks(breaks);
    relayout();
    if (current)
        goToPageIndex(indexOfPage(current.get()));
}

void PDFView::setDisplaysAsBook(bool asBook)
{
    if (asBook == displaysAsBook())
        return;
    const auto current = currentPage();
    m_layout.setDisplaysAsBook(asBook);
    if (current)
        m_layout.setAnchorPage(indexOfPage(current.get()));
    relayout();
    if (current)
        goToPageIndex(indexOfPage(current.get()));
    noteViewChanged();
}

void PDFView::setDisplayBox(PDFDisplayBox box)
{
    if (box == m_displayBox)
        return;
    const auto current = currentPage();
    m_displayBox = box;
    ++m_epoch;
    m_scheduler->cancelAll();
    m_tiles.clear();
    m_renderStates.clear();
    removeAllPageViews();
    reloadPageSizes();
    if (current)
        m_layout.setAnchorPage(indexOfPage(current.get()));
    relayout();
    if (current)
        goToPageIndex(indexOfPage(current.get()));
    NotificationCenter::defaultCenter().post(DisplayBoxChangedNotification, this);
    noteViewChanged();
}

void PDFView::setBackgroundColor(const QColor &color)
{
    m_backgroundColor = color;
    viewport()->update();
}

void PDFView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (m_autoScales)
        applyAutoScale();
    updateScrollBars();
    ensureVisiblePageSizes();
    updatePageViews();
    scheduleRendering();
    noteViewChanged();
}

void PDFView::scrollContentsBy(int dx, int dy)
{
    if (m_revertingScroll)
        return;
    if (dx != 0 && vetoesHorizontalScroll()) {
        // Undo the bar's move; the nested call this causes is ignored above.
        m_revertingScroll = true;
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() + dx);
        m_revertingScroll = false;
        dx = 0;
    }
    if (dx == 0 && dy == 0)
        return;
    viewport()->scroll(dx, dy);
    ensureVisiblePageSizes();
    updatePageViews();
    scheduleRendering();
    noteViewChanged();
}
