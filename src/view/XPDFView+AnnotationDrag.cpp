// XPDFView: moving and resizing the selected annotation with the pointer, and nudging it with
// keys. Every step is computed from the values at the press, so that no rounding accumulates.

#include "XPDFView.h"
#include "XPDFViewGesture.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <kit/base/Geometry.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <algorithm>
#include <cmath>

namespace {

// No side of an annotation becomes shorter than this by a resize.
constexpr double MinimumSide = 8;

} // namespace

void XPDFView::setSelectedAnnBounds(const QRectF &bounds)
{
    if (const auto annotation = selectedAnn())
        annotation->setBounds(bounds);
}

void XPDFView::startDragAnnotation()
{
    XPDFViewGesture &g = *m_gesture;
    const auto annotation = selectedAnn();
    const auto page = pageForPoint(g.pressViewPoint, true);
    if (!annotation || !page) {
        startSwallowing(false);
        return;
    }
    g.kind = XPDFViewGesture::Kind::DraggingAnnotation;
    g.annotation = annotation;
    g.oldBounds = annotation->bounds();
    g.isLine = isLine(*annotation);
    g.pressPagePoint = convertPointToPage(g.pressViewPoint, page);
    g.previousDragViewPoint = g.pressViewPoint;
    g.handle = resizeHandleForPoint(*annotation, g.pressPagePoint, scaleFactor());
    if (g.handle != AnnotationResizeHandleNone)
        setNeedsDisplayForAnnotation(annotation);
    g.offset = g.pressPagePoint - g.oldBounds.topLeft();
    if (g.isLine) {
        const auto &line = static_cast<const PDFAnnotationLine &>(*annotation);
        const QPointF origin = g.oldBounds.topLeft();
        const QPointF start = origin + line.startPoint();
        const QPointF end = origin + line.endPoint();
        g.oldStart = QPointF(std::round(start.x()), std::round(start.y()));
        g.oldEnd = QPointF(std::round(end.x()), std::round(end.y()));
    }
    if (g.handle == AnnotationResizeHandleNone) {
        pushCursor(cursorNamed(DesignCursor::ClosedHand));
        g.cursorPushed = true;
    } else if (const auto cursor = cursorForResizeHandle(g.handle, page->rotation())) {
        pushCursor(*cursor);
        g.cursorPushed = true;
    }
    // The whole drag, a change of page included, is one undo step.
    if (m_undoManager && !g.undoGroupOpen) {
        m_undoManager->beginUndoGrouping();
        g.undoGroupOpen = true;
    }
    disconnect(&m_gestureTicks, nullptr, this, nullptr);
    connect(&m_gestureTicks, &QTimer::timeout, this, [this] {
        if (m_gesture && m_gesture->kind == XPDFViewGesture::Kind::DraggingAnnotation)
            dragAnnotationStep(false);
        else
            m_gestureTicks.stop();
    });
    m_gestureTicks.start();
}

// A timer step or a late event may find the annotation deleted, undone away or its page gone.
bool XPDFView::dragAnnotationStillValid() const
{
    const auto annotation = m_gesture->annotation.lock();
    if (!annotation || annotation != selectedAnn() || !document())
        return false;
    const auto page = annotation->page();
    return page && document()->indexForPage(page) >= 0;
}

void XPDFView::dragAnnotationStep(bool fromPointer)
{
    if (!dragAnnotationStillValid()) {
        endGesture();
        return;
    }
    XPDFViewGesture &g = *m_gesture;
    const auto annotation = g.annotation.lock();
    if (g.handle == AnnotationResizeHandleNone) {
        if (isInk(*annotation) && Geometry::isEmptyRect(annotation->bounds())) {
            // Such an ink has no box to place: its strokes move by the pointer's travel.
            if (fromPointer) {
                const QPointF travel = g.lastViewPoint - g.previousDragViewPoint;
                moveByOffset(
                    static_cast<PDFAnnotationInk &>(*annotation), QSizeF(travel.x(), -travel.y()));
                annotationsChangedOnPage(annotation->page());
            }
        } else {
            doMoveAnnotation(g.lastViewPoint, g.offset);
        }
    } else if (g.isLine) {
        doResizeLineAnnotation(g.lastViewPoint, g.pressPagePoint, g.oldStart, g.oldEnd, g.handle);
    } else {
        doResizeAnnotation(g.lastViewPoint, g.pressPagePoint, g.oldBounds, g.handle);
    }
    if (fromPointer && m_gesture)
        m_gesture->previousDragViewPoint = m_gesture->lastViewPoint;
}

void XPDFView::doMoveAnnotation(QPointF viewPoint, QPointF offset)
{
    documentView().autoscroll(viewPoint);
    const auto annotation = selectedAnn();
    const auto page = pageForPoint(viewPoint, true);
    if (!annotation || !page)
        return;
    // The annotation changes page during the drag.
    if (page != annotation->page())
        moveAnnotation(annotation, page);
    const QPointF p = convertPointToPage(viewPoint, page);
    const QRectF pageRect = page->boundsForBox(displayBox());
    QRectF rect(std::round(p.x() - offset.x()), std::round(p.y() - offset.y()),
        std::min(annotation->bounds().width(), pageRect.width()),
        std::min(annotation->bounds().height(), pageRect.height()));
    rect.moveLeft(
        std::clamp(rect.x(), pageRect.x(), pageRect.x() + pageRect.width() - rect.width()));
    rect.moveTop(
        std::clamp(rect.y(), pageRect.y(), pageRect.y() + pageRect.height() - rect.height()));
    if (isLine(*annotation)) {
        // The points are relative to the bounds and stay so.
        auto &line = static_cast<PDFAnnotationLine &>(*annotation);
        const QPointF start = line.startPoint();
        const QPointF end = line.endPoint();
        setSelectedAnnBounds(rect);
        line.setStartPoint(start);
        line.setEndPoint(end);
    } else {
        setSelectedAnnBounds(rect);
    }
}

void XPDFView::doResizeAnnotation(
    QPointF viewPoint, QPointF pressPoint, QRectF oldBounds, int handle)
{
    const auto annotation = selectedAnn();
    const auto page = annotation ? annotation->page() : nullptr;
    if (!page)
        return;
    const QRectF pageRect = page->boundsForBox(displayBox());
    const double left = pageRect.x(), right = pageRect.x() + pageRect.width();
    const double bottom = pageRect.y(), top = pageRect.y() + pageRect.height();
    const QPointF p = convertPointToPage(viewPoint, page);
    const double dx = p.x() - pressPoint.x();
    const double dy = p.y() - pressPoint.y();
    double x = oldBounds.x(), y = oldBounds.y();
    double w = oldBounds.width(), h = oldBounds.height();
    if (w == 0 && h == 0) {
        // A newborn annotation grows the way the pointer goes.
        handle &= ~0xF;
        handle |= dx >= 0 ? AnnotationResizeHandleRight : AnnotationResizeHandleLeft;
        handle |= dy > 0 ? AnnotationResizeHandleTop : AnnotationResizeHandleBottom;
    } else {
        if ((handle & AnnotationResizeHandleLeft) && (handle & AnnotationResizeHandleRight))
            handle &= dx >= 0 ? ~AnnotationResizeHandleLeft : ~AnnotationResizeHandleRight;
        if ((handle & AnnotationResizeHandleTop) && (handle & AnnotationResizeHandleBottom))
            handle &= dy <= 0 ? ~AnnotationResizeHandleTop : ~AnnotationResizeHandleBottom;
    }
    // The sides never swap: a side stops at the minimum instead, the opposite one stays put.
    if (handle & AnnotationResizeHandleRight) {
        w += dx;
        if (x + w > right)
            w = right - x;
        w = std::max(w, MinimumSide);
    } else if (handle & AnnotationResizeHandleLeft) {
        x += dx;
        w -= dx;
        if (x < left) {
            w = x + w - left;
            x = left;
        }
        if (w < MinimumSide) {
            x = x + w - MinimumSide;
            w = MinimumSide;
        }
    }
    if (handle & AnnotationResizeHandleTop) {
        h += dy;
        if (y + h > top)
            h = top - y;
        h = std::max(h, MinimumSide);
    } else if (handle & AnnotationResizeHandleBottom) {
        y += dy;
        h -= dy;
        if (y < bottom) {
            h = y + h - bottom;
            y = bottom;
        }
        if (h < MinimumSide) {
            y = y + h - MinimumSide;
            h = MinimumSide;
        }
    }
    setSelectedAnnBounds(Geometry::integralRect(QRectF(x, y, w, h)));
}

void XPDFView::doResizeLineAnnotation(
    QPointF viewPoint, QPointF pressPoint, QPointF oldStart, QPointF oldEnd, int handle)
{
    const auto annotation = selectedAnn();
    const auto page = annotation ? annotation->page() : nullptr;
    if (!page || !isLine(*annotation))
        return;
    auto &line = static_cast<PDFAnnotationLine &>(*annotation);
    const QRectF pageRect = page->boundsForBox(displayBox());
    const QPointF p = convertPointToPage(viewPoint, page);
    QPointF start = oldStart;
    QPointF end = oldEnd;
    QPointF &moved = (handle & AnnotationResizeHandleLeft) ? start : end;
    moved += p - pressPoint;
    moved.setX(std::floor(std::clamp(moved.x(), pageRect.x(), pageRect.x() + pageRect.width())));
    moved.setY(std::floor(std::clamp(moved.y(), pageRect.y(), pageRect.y() + pageRect.height())));
    double x0 = std::floor(std::min(start.x(), end.x()));
    double y0 = std::floor(std::min(start.y(), end.y()));
    double w = std::ceil(std::max(start.x(), end.x()) - x0);
    double h = std::ceil(std::max(start.y(), end.y()) - y0);
    // A short or flat line keeps a box it can be held by, centred on it.
    if (w < MinimumSide) {
        w = MinimumSide;
        x0 = std::floor((start.x() + end.x() - MinimumSide) / 2);
    }
    if (h < MinimumSide) {
        h = MinimumSide;
        y0 = std::floor((start.y() + end.y() - MinimumSide) / 2);
    }
    line.setStartPoint(start - QPointF(x0, y0));
    line.setEndPoint(end - QPointF(x0, y0));
    setSelectedAnnBounds(QRectF(x0, y0, w, h));
}

void XPDFView::moveSelectedAnnotationForKey(int key, double amount)
{
    const auto annotation = selectedAnn();
    const auto page = annotation ? annotation->page() : nullptr;
    if (!page)
        return;
    const int rotation = ((page->rotation() % 360) + 360) % 360;
    // Up, down, left, right on the screen, as page-space steps for each rotation.
    QPointF step;
    const double a = amount;
    switch (key) {
    case Qt::Key_Up:
        step = rotation == 0  ? QPointF(0, a)
            : rotation == 90  ? QPointF(-a, 0)
            : rotation == 180 ? QPointF(0, -a)
                              : QPointF(a, 0);
        break;
    case Qt::Key_Down:
        step = rotation == 0  ? QPointF(0, -a)
            : rotation == 90  ? QPointF(a, 0)
            : rotation == 180 ? QPointF(0, a)
                              : QPointF(-a, 0);
        break;
    case Qt::Key_Left:
        step = rotation == 0  ? QPointF(-a, 0)
            : rotation == 90  ? QPointF(0, -a)
            : rotation == 180 ? QPointF(a, 0)
                              : QPointF(0, a);
        break;
    case Qt::Key_Right:
        step = rotation == 0  ? QPointF(a, 0)
            : rotation == 90  ? QPointF(0, a)
            : rotation == 180 ? QPointF(-a, 0)
                              : QPointF(0, -a);
        break;
    default:
        return;
    }
    const QRectF bounds = annotation->bounds();
    const QRectF limit = page->boundsForBox(displayBox());
    QRectF moved = bounds.translated(step);
    if (!Geometry::containsRect(limit, moved)) {
        // Unturned, a step goes as far as the edge; on a turned page it is not taken.
        if (rotation != 0)
            return;
        moved.moveLeft(std::clamp(
            moved.x(), limit.x(), std::max(limit.x(), limit.x() + limit.width() - moved.width())));
        moved.moveTop(std::clamp(moved.y(), limit.y(),
            std::max(limit.y(), limit.y() + limit.height() - moved.height())));
    }
    if (moved != bounds)
        annotation->setBounds(moved);
}
