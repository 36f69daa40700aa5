#include "QKOverlayView.h"

#include "FDPDFView.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PageGeometry.h>

#include <QEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// Room around an annotation's display rect for its ring and handles, in pixels.
constexpr int RingMargin = 8;

// The page-space bounds of a path's elements from index first on.
QRectF elementBounds(const BezierPath &path, int first)
{
    QRectF bounds;
    bool any = false;
    for (int index = std::max(0, first); index < path.elementCount(); ++index) {
        QPointF points[3];
        const auto type = path.elementAt(index, points);
        const int count = type == BezierPath::CurveTo ? 3 : type == BezierPath::ClosePath ? 0 : 1;
        for (int i = 0; i < count; ++i) {
            const QRectF dot(points[i], QSizeF(0, 0));
            bounds = any ? bounds.united(dot) : dot;
            any = true;
        }
    }
    return bounds;
}

} // namespace

QKOverlayView::QKOverlayView(
    const std::shared_ptr<PDFPage> &page, FDPDFView *pdfView, QWidget *pageView)
    : QWidget(pageView)
    , m_page(page)
    , m_pdfView(pdfView)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(QRect(QPoint(0, 0), pageView->size()));
    pageView->installEventFilter(this);
    // Every annotation, valid or not: the kinds drawn here leave engine drawing.
    for (const auto &annotation : page->annotations())
        setDisplayFlag(*annotation);

    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, XPDFView::AnnotationDidAddNotification, pdfView,
        [this](const Notification &notification) { onAnnotationCUD(notification, true); });
    for (const QString &name :
        { XPDFView::AnnotationDidRemoveNotification, XPDFView::AnnotationDidChangeNotification }) {
        center.addObserver(this, name, pdfView,
            [this](const Notification &notification) { onAnnotationCUD(notification, false); });
    }
    center.addObserver(this, XPDFView::SelectedAnnotationDidChangeNotification, pdfView,
        [this](const Notification &notification) { onSelectedAnnotationChanged(notification); });
    center.addObserver(this, XPDFView::PendingAnnInkDidChangeNotification, pdfView,
        [this](const Notification &notification) { onPendingAnnInkChanged(notification); });
    // A document posts its bookmark changes with its view as sender.
    for (const QString &name :
        { FDDocument::BookmarkDidAddNotification, FDDocument::BookmarkDidRemoveNotification }) {
        center.addObserver(this, name, pdfView,
            [this](const Notification &notification) { onBookmarkChanged(notification); });
    }
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { update(); });
    // The ribbon's hover follows the view's own mouse moves: this layer takes no events.
    m_viewport = pdfView->viewport();
    m_viewportObject = m_viewport.data();
    m_viewport->installEventFilter(this);
    show();
}

QKOverlayView::~QKOverlayView()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

void QKOverlayView::setDisplayFlag(PDFAnnotation &annotation)
{
    const bool engineDraws = !shouldDisplayOnOverlay(annotation) && annotation.type() != "Popup";
    if (annotation.shouldDisplay() != engineDraws)
        annotation.setShouldDisplay(engineDraws);
}

QTransform QKOverlayView::pageTransform() const
{
    const auto shown = page();
    if (!shown || !m_pdfView)
        return {};
    const PageGeometry geometry(shown->boundsForBox(m_pdfView->displayBox()), shown->rotation());
    const QSizeF size = geometry.viewSize();
    if (size.isEmpty())
        return {};
    return geometry.pageToView()
        * QTransform::fromScale(width() / size.width(), height() / size.height());
}

double QKOverlayView::onePixel() const
{
    return m_pdfView && m_pdfView->scaleFactor() > 0 ? 1.0 / m_pdfView->scaleFactor() : 1.0;
}

bool QKOverlayView::isThisPage(const QVariant &value) const
{
    const auto shown = page();
    return shown && value.value<std::shared_ptr<PDFPage>>() == shown;
}

QRect QKOverlayView::areaForAnnotation(const PDFAnnotation &annotation) const
{
    QRectF rect = displayRect(annotation);
    if (isText(annotation) && m_pdfView) {
        // Notes are drawn where the pointer finds them: moved from the media box.
        rect.translate(XPDFView::offsetBasedOnMediaBoxInPage(page(), m_pdfView->displayBox()));
        rect.adjust(-5, -5, 5, 5);
    }
    return pageTransform().mapRect(rect).toAlignedRect().adjusted(
        -RingMargin, -RingMargin, RingMargin, RingMargin);
}

void QKOverlayView::onAnnotationCUD(const Notification &notification, bool added)
{
    if (!isThisPage(notification.userInfo.value(QStringLiteral("Page"))))
        return;
    const auto annotation = notification.userInfo.value(QStringLiteral("Annotation"))
                                .value<std::shared_ptr<PDFAnnotation>>();
    if (!annotation)
        return;
    if (added)
        setDisplayFlag(*annotation);
    // Its old place and its new one; nothing else on the page changed.
    QRect area = areaForAnnotation(*annotation);
    if (const auto drawn = m_drawnAreas.find(annotation.get()); drawn != m_drawnAreas.end())
        area = area.united(drawn->second);
    m_drawnAreas[annotation.get()] = areaForAnnotation(*annotation);
    update(area);
}

void QKOverlayView::onSelectedAnnotationChanged(const Notification &notification)
{
    if (isThisPage(notification.userInfo.value(QStringLiteral("OldPage")))
        || isThisPage(notification.userInfo.value(QStringLiteral("Page"))))
        update();
}

void QKOverlayView::onPendingAnnInkChanged(const Notification &notification)
{
    if (!isThisPage(notification.userInfo.value(QStringLiteral("Page"))) || !m_pdfView)
        return;
    const auto path = m_pdfView->pendingInkPath();
    if (!path || path->elementCount() < m_inkElementsShown) {
        // A stroke ended or began anew: what was shown goes.
        update();
        m_inkElementsShown = path ? path->elementCount() : 0;
        return;
    }
    // Only the new segments, from the last point shown on.
    const QRectF segment = elementBounds(*path, m_inkElementsShown - 1);
    m_inkElementsShown = path->elementCount();
    if (segment.isNull() && segment.topLeft().isNull())
        return;
    const double reach = path->lineWidth() / 2 * (m_pdfView->scaleFactor()) + 2;
    update(pageTransform().mapRect(segment).toAlignedRect().adjusted(-int(std::ceil(reach)),
        -int(std::ceil(reach)), int(std::ceil(reach)), int(std::ceil(reach))));
}

void QKOverlayView::onBookmarkChanged(const Notification &notification)
{
    const auto bookmark = notification.userInfo.value(QStringLiteral("Bookmark"))
                              .value<std::shared_ptr<FDBookmark>>();
    if (bookmark && bookmark->page() == page())
        update(hotAreaInWidget().toAlignedRect().adjusted(-2, -2, 2, 2));
}

QRectF QKOverlayView::hotAreaInWidget() const
{
    const auto shown = page();
    if (!shown || !m_pdfView)
        return {};
    const QRectF box = shown->boundsForBox(m_pdfView->displayBox());
    const QRectF hot = FDPage::bookmarkIndicatorHotAreaWithScale(1.0, box.size());
    return pageTransform().mapRect(hot.translated(box.topLeft()));
}

void QKOverlayView::updateHotArea(const QPointF &viewportPoint)
{
    const QPointF point = mapFrom(m_viewport.data(), viewportPoint);
    const bool inside = rect().contains(point.toPoint()) && hotAreaInWidget().contains(point);
    if (inside == m_isMouseInBookmarkIndicatorHotArea)
        return;
    m_isMouseInBookmarkIndicatorHotArea = inside;
    update(hotAreaInWidget().toAlignedRect().adjusted(-2, -2, 2, 2));
}

bool QKOverlayView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parent() && event->type() == QEvent::Resize) {
        setGeometry(QRect(QPoint(0, 0), parentWidget()->size()));
    } else if (watched == m_viewportObject && !m_pdfView.isNull()
        && (event->type() == QEvent::MouseMove || event->type() == QEvent::Leave)) {
        if (event->type() == QEvent::MouseMove)
            updateHotArea(static_cast<QMouseEvent *>(event)->position());
        else
            updateHotArea(QPointF(-1e9, -1e9));
    }
    return QWidget::eventFilter(watched, event);
}

void QKOverlayView::paintEvent(QPaintEvent *event)
{
    const auto shown = page();
    if (!shown || !m_pdfView)
        return;
    QPainter painter(this);
    const QRect dirty = event->rect();
    const auto selected = m_pdfView->selectedAnn();
    std::unordered_map<const PDFAnnotation *, QRect> drawn;
    // Lowest first; a ring comes right after its annotation, so later ones may cover it.
    for (const auto &annotation : shown->annotations()) {
        if (!isValid(*annotation))
            continue;
        const QRect area = areaForAnnotation(*annotation);
        drawn.emplace(annotation.get(), area);
        if (!area.intersects(dirty))
            continue;
        if (shouldDisplayOnOverlay(*annotation)) {
            painter.save();
            drawAnnotation(painter, *annotation);
            painter.restore();
        }
        if (annotation == selected) {
            painter.save();
            drawFocusRing(painter, *annotation);
            painter.restore();
        }
    }
    m_drawnAreas = std::move(drawn);
    const auto path = m_pdfView->pendingInkPath();
    if (!path)
        m_inkElementsShown = 0;
    painter.save();
    drawPendingInk(painter);
    painter.restore();
    painter.save();
    drawBookmarkIndicator(painter);
    painter.restore();
    painter.save();
    drawAreaSelection(painter);
    painter.restore();
}
