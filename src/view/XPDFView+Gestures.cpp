// XPDFView: the gestures that are not about one selected annotation: panning, the area
// selection, the eraser and the ink stroke.

#include "XPDFView.h"
#include "XPDFViewGesture.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <document/PDFPage+XExtensions.h>
#include <kit/base/BezierPath.h>
#include <kit/base/Geometry.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

// A stroke with fewer elements than this is a click, not a drawing.
constexpr int MinimumInkElements = 4;

} // namespace

int XPDFView::handleForRectAtPoint(const QRectF &rect, QPointF point, double margin)
{
    return resizeHandleForRect(rect, point, margin);
}

void XPDFView::startDragToScroll()
{
    XPDFViewGesture &g = *m_gesture;
    g.kind = XPDFViewGesture::Kind::Panning;
    g.startVisibleRect = documentView().visibleRect();
    pushCursor(cursorNamed(DesignCursor::ClosedHand));
    g.cursorPushed = true;
}

void XPDFView::dragToScrollTo(QPointF globalPoint)
{
    // Every offset is from the press, not from the previous event.
    const QPointF delta = m_gesture->pressGlobalPoint - globalPoint;
    documentView().scrollRectToVisible(m_gesture->startVisibleRect.translated(delta));
}

void XPDFView::invalidateSelectionRect(const QRectF &rect, const std::shared_ptr<PDFPage> &page)
{
    const double margin = scaleFactor() > 0 ? 4 / scaleFactor() : 4;
    setNeedsDisplayInRect(Geometry::insetRect(rect, -margin, -margin), page);
}

void XPDFView::startSelectArea()
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = pageForPoint(g.pressViewPoint, false);
    if (!page || !document()) {
        startSwallowing(false);
        return;
    }
    g.kind = XPDFViewGesture::Kind::SelectingArea;
    const double margin = scaleFactor() > 0 ? 4 / scaleFactor() : 4;
    const qint64 index = document()->indexForPage(page);
    if (m_selectionPageIndex != NotFound && m_selectionPageIndex != index) {
        invalidateSelectionRect(m_selectionRect, currentSelectionPage());
        invalidateSelectionRect(m_selectionRect, page);
    }
    m_selectionPageIndex = index;
    g.pressPage = page;
    g.pressPagePoint = convertPointToPage(g.pressViewPoint, page);
    const QPointF p = g.pressPagePoint;
    int handle = -1;
    if (!Geometry::isEmptyRect(m_selectionRect)) {
        handle = handleForRectAtPoint(m_selectionRect, p, margin);
        if (handle == 0 && !Geometry::pointInRect(p, m_selectionRect))
            handle = -1;
    }
    if (handle < 0) {
        // A new selection grows from the press.
        m_selectionRect = QRectF(p, QSizeF(0, 0));
        viewport()->update();
        handle = AnnotationResizeHandleBottomRight;
    }
    g.areaHandle = handle;
    g.startRect = m_selectionRect;
    g.startRectEmpty = Geometry::isEmptyRect(m_selectionRect);
    if (handle == 0) {
        pushCursor(cursorNamed(DesignCursor::ClosedHand));
        g.cursorPushed = true;
    } else {
        if (const auto cursor = cursorForResizeHandle(handle, page->rotation())) {
            pushCursor(*cursor);
            g.cursorPushed = true;
        }
        invalidateSelectionRect(m_selectionRect, page);
    }
}

void XPDFView::selectAreaTo(QPointF viewPoint, Qt::KeyboardModifiers modifiers)
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = g.pressPage.lock();
    if (!page || !document() || document()->indexForPage(page) < 0) {
        endGesture();
        return;
    }
    const QRectF pageRect = page->boundsForBox(displayBox());
    const double left = pageRect.x(), right = pageRect.x() + pageRect.width();
    const double bottom = pageRect.y(), top = pageRect.y() + pageRect.height();
    const QPointF p = convertPointToPage(viewPoint, page);
    const double dx = p.x() - g.pressPagePoint.x();
    const double dy = p.y() - g.pressPagePoint.y();
    const int handle = g.areaHandle;
    double x = g.startRect.x(), y = g.startRect.y();
    double w = g.startRect.width(), h = g.startRect.height();
    const bool horizontal = handle & (AnnotationResizeHandleLeft | AnnotationResizeHandleRight);
    const bool vertical = handle & (AnnotationResizeHandleTop | AnnotationResizeHandleBottom);
    if (handle == 0) {
        x += dx;
        y += dy;
    } else if (!(modifiers & Qt::ShiftModifier)) {
        // Unlike an annotation, the selection can be dragged through itself: it flips.
        if (handle & AnnotationResizeHandleRight) {
            w += dx;
        } else if (handle & AnnotationResizeHandleLeft) {
            x += dx;
            w -= dx;
        }
        if (w < 0) {
            x += w;
            w = -w;
        }
        if (handle & AnnotationResizeHandleTop) {
            h += dy;
        } else if (handle & AnnotationResizeHandleBottom) {
            y += dy;
            h -= dy;
        }
        if (h < 0) {
            y += h;
            h = -h;
        }
    } else {
        // A square, whose corner opposite the handle stays put.
        const double newW = (handle & AnnotationResizeHandleRight) ? w + dx
            : (handle & AnnotationResizeHandleLeft)                ? w - dx
                                                                   : w;
        const double newH = (handle & AnnotationResizeHandleTop) ? h + dy
            : (handle & AnnotationResizeHandleBottom)            ? h - dy
                                                                 : h;
        double side = horizontal && vertical ? std::max(std::abs(newW), std::abs(newH))
                                             : std::abs(horizontal ? newW : newH);
        // The fixed corner, and which way the square goes from it.
        const double fixedX = (handle & AnnotationResizeHandleLeft) ? x + w : x;
        const double fixedY = (handle & AnnotationResizeHandleBottom) ? y + h : y;
        const bool growsRight = (handle & AnnotationResizeHandleLeft) ? newW < 0 : newW >= 0;
        const bool growsUp = (handle & AnnotationResizeHandleBottom) ? newH < 0 : newH >= 0;
        side = std::min(side, growsRight ? right - fixedX : fixedX - left);
        side = std::min(side, growsUp ? top - fixedY : fixedY - bottom);
        side = std::max(side, 0.0);
        w = side;
        h = side;
        x = growsRight ? fixedX : fixedX - side;
        y = growsUp ? fixedY : fixedY - side;
    }
    // Clipped to the page, each edge on its own.
    const double x1 = std::clamp(x + w, left, right);
    const double y1 = std::clamp(y + h, bottom, top);
    x = std::clamp(x, left, right);
    y = std::clamp(y, bottom, top);
    const QRectF rect(x, y, x1 - x, y1 - y);
    if (!g.startRectEmpty) {
        const QRectF dirty = Geometry::unionRect(m_selectionRect, rect);
        for (const auto &visible : visiblePages())
            invalidateSelectionRect(dirty, visible);
    } else {
        viewport()->update();
        g.startRectEmpty = false;
    }
    m_selectionRect = rect;
    NotificationCenter::defaultCenter().post(ContentSelectionDidChangeNotification, this);
}

void XPDFView::endSelectArea()
{
    if (Geometry::isEmptyRect(m_selectionRect)) {
        // A click without a drag removes the selection.
        m_selectionRect = QRectF();
        m_selectionPageIndex = NotFound;
        NotificationCenter::defaultCenter().post(ContentSelectionDidChangeNotification, this);
        viewport()->update();
    } else if (m_gesture->areaHandle != 0) {
        invalidateSelectionRect(m_selectionRect, currentSelectionPage());
    }
}

// The newest annotation under the pointer goes first, one per event.
void XPDFView::eraseAt(QPointF viewPoint)
{
    const auto page = pageForPoint(viewPoint, true);
    if (!page)
        return;
    const QPointF p = convertPointToPage(viewPoint, page);
    const auto annotations = validAnnotations(*page);
    for (auto it = annotations.rbegin(); it != annotations.rend(); ++it) {
        if (hitTest(**it, p) && !isEditing(**it)) {
            removeAnnotation(*it);
            if (m_undoManager)
                m_undoManager->setActionName(QCoreApplication::translate(
                    "XPDFView", qUtf8Printable(DeleteAnnotationActionName)));
            return;
        }
    }
}

void XPDFView::newPendingInkPath()
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = g.pressPage.lock();
    g.kind = XPDFViewGesture::Kind::InkStroke;
    m_pendingInkPath = std::make_shared<BezierPath>();
    m_pendingInkPage = page;
    addPointToPath(g.pressPagePoint, *m_pendingInkPath);
    m_pendingInkPath->setLineCap(BezierPath::RoundCap);
    m_pendingInkPath->setLineJoin(BezierPath::RoundJoin);
    setSelectedAnn(nullptr);
    const double width
        = UserDefaults::standard().doubleForKey(AnnotationDefaultsKeys::InkLineWidth);
    m_pendingInkPath->setLineWidth(width > 0 ? width : 1.0);
}

void XPDFView::extendPendingInkPath(QPointF viewPoint)
{
    if (!m_pendingInkPath)
        return;
    // The stroke goes on in the numbers of the page under the pointer, also past its own page.
    const auto page = pageForPoint(viewPoint, true);
    if (!page)
        return;
    const int count = m_pendingInkPath->elementCount();
    const QPointF before = count > 0 ? m_pendingInkPath->currentPoint() : QPointF();
    const QPointF point = convertPointToPage(viewPoint, page);
    addPointToPath(point, *m_pendingInkPath);
    // Only the new segment is drawn again, on the page the stroke is drawn on.
    const double reach = m_pendingInkPath->lineWidth() / 2 + 1;
    const QRectF segment
        = Geometry::insetRect(Geometry::standardizeRect(QRectF(before, point)), -reach, -reach);
    setNeedsDisplayInRect(segment, m_pendingInkPage.lock());
    NotificationCenter::defaultCenter().post(PendingAnnInkDidChangeNotification, this,
        { { QStringLiteral("Page"), QVariant::fromValue(page) } });
}

void XPDFView::endPendingInkPath(QPointF viewPoint)
{
    if (!m_pendingInkPath)
        return;
    // A stroke that ends on the next page is added there.
    if (m_pendingInkPath->elementCount() >= MinimumInkElements) {
        const auto page = pageForPoint(viewPoint, true);
        if (page)
            addAnnotationWithType(QStringLiteral("Ink"), page, QRectF());
    }
    const auto strokePage = m_pendingInkPage.lock();
    m_pendingInkPath.reset();
    m_pendingInkPage.reset();
    viewport()->update();
    // The overlay of the stroke's page lets go of the stroke it drew.
    if (strokePage)
        NotificationCenter::defaultCenter().post(PendingAnnInkDidChangeNotification, this,
            { { QStringLiteral("Page"), QVariant::fromValue(strokePage) } });
}
