// XPDFView: which cursor the pointer shows, from the tool, what lies under it and the keys held;
// and the view's own stack of gesture cursors.

#include "XPDFView.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <appearance/FDCursors.h>
#include <kit/base/Geometry.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QGuiApplication>
#include <QMouseEvent>

namespace {

// The rule of the press: text within this reach of the pointer means a press selects text.
constexpr double TextReach = 40;

} // namespace

// The one place where the design's cursors become pointer shapes: the application's drawn ones
// where it has them (once its images exist), the desktop's otherwise.
QCursor XPDFView::cursorNamed(DesignCursor name)
{
    const char *drawn = nullptr;
    switch (name) {
    case DesignCursor::ResizeDiagonal45:
        drawn = "resizeDiagonal45Cursor";
        break;
    case DesignCursor::ResizeDiagonal135:
        drawn = "resizeDiagonal135Cursor";
        break;
    case DesignCursor::ZoomIn:
        drawn = "zoomInCursor";
        break;
    case DesignCursor::ZoomOut:
        drawn = "zoomOutCursor";
        break;
    default:
        break;
    }
    if (drawn) {
        if (const auto cursor = FDCursors::cursorNamed(QLatin1String(drawn)))
            return *cursor;
    }
    switch (name) {
    case DesignCursor::Arrow:
        return QCursor(Qt::ArrowCursor);
    case DesignCursor::IBeam:
        return QCursor(Qt::IBeamCursor);
    case DesignCursor::PointingHand:
        return QCursor(Qt::PointingHandCursor);
    case DesignCursor::OpenHand:
        return QCursor(Qt::OpenHandCursor);
    case DesignCursor::ClosedHand:
        return QCursor(Qt::ClosedHandCursor);
    case DesignCursor::Crosshair:
        return QCursor(Qt::CrossCursor);
    case DesignCursor::ResizeLeftRight:
        return QCursor(Qt::SizeHorCursor);
    case DesignCursor::ResizeUpDown:
        return QCursor(Qt::SizeVerCursor);
    case DesignCursor::ResizeDiagonal45:
        return QCursor(Qt::SizeBDiagCursor);
    case DesignCursor::ResizeDiagonal135:
        return QCursor(Qt::SizeFDiagCursor);
    case DesignCursor::ZoomIn:
    case DesignCursor::ZoomOut:
        // The desktop has no magnifier shape; the drawn one is missing only before start-up.
        return QCursor(Qt::CrossCursor);
    }
    return QCursor(Qt::ArrowCursor);
}

std::optional<QCursor> XPDFView::cursorForResizeHandle(int handle, int rotation)
{
    // A quarter turn swaps the axes on the screen.
    const bool turned = ((rotation % 180) + 180) % 180 != 0;
    switch (handle) {
    case AnnotationResizeHandleLeft:
    case AnnotationResizeHandleRight:
        return cursorNamed(turned ? DesignCursor::ResizeUpDown : DesignCursor::ResizeLeftRight);
    case AnnotationResizeHandleBottom:
    case AnnotationResizeHandleTop:
        return cursorNamed(turned ? DesignCursor::ResizeLeftRight : DesignCursor::ResizeUpDown);
    case AnnotationResizeHandleBottomLeft:
    case AnnotationResizeHandleTopRight:
        return cursorNamed(
            turned ? DesignCursor::ResizeDiagonal135 : DesignCursor::ResizeDiagonal45);
    case AnnotationResizeHandleBottomRight:
    case AnnotationResizeHandleTopLeft:
        return cursorNamed(
            turned ? DesignCursor::ResizeDiagonal45 : DesignCursor::ResizeDiagonal135);
    default:
        return std::nullopt;
    }
}

QCursor XPDFView::cursorForToolMode(int mode) const
{
    Q_UNUSED(mode);
    qFatal("XPDFView::cursorForToolMode: NOT IMPLEMENTED!");
}

std::optional<QCursor> XPDFView::getCursorForEvent(
    QPointF viewPoint, Qt::KeyboardModifiers modifiers)
{
    const auto current = document();
    if (!current || current->isLocked())
        return std::nullopt;
    const int area = areaOfInterestForPoint(viewPoint);
    if (m_viewMode == 2)
        return cursorNamed(area & LinkArea ? DesignCursor::PointingHand : DesignCursor::Arrow);
    modifiers &= ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    if (modifiers & Qt::ControlModifier)
        return cursorNamed(DesignCursor::Arrow);
    const auto page = pageForPoint(viewPoint, true);
    if (!page)
        return std::nullopt;
    const QPointF p = convertPointToPage(viewPoint, page);
    const int tool = toolMode();
    if (tool == PDFToolModeTextSelection || isAnnToolMode(tool)) {
        const auto selected = selectedAnn();
        if (selected && selected->page() == page) {
            const int handle = isResizable(*selected)
                ? resizeHandleForPoint(*selected, p, scaleFactor())
                : AnnotationResizeHandleNone;
            if (handle != AnnotationResizeHandleNone)
                return cursorForResizeHandle(handle, page->rotation());
            const QPointF at
                = isText(*selected) ? p - offsetBasedOnMediaBoxInPage(page, displayBox()) : p;
            if (isMovable(*selected) && hitTest(*selected, at))
                return cursorNamed(DesignCursor::OpenHand);
        }
        if (area == NoArea)
            return cursorNamed(DesignCursor::OpenHand);
        if ((tool == PDFToolModeTextSelection || isAnnMarkupToolMode(tool))
            && (area & (PageArea | LinkArea)) == PageArea && modifiers == Qt::NoModifier) {
            const QRectF square(
                p - QPointF(TextReach, TextReach), QSizeF(2 * TextReach, 2 * TextReach));
            const auto selection = page->selectionForRect(square);
            if (!selection || selection->string().isEmpty())
                return cursorNamed(DesignCursor::OpenHand);
        }
        if (isAnnToolMode(tool))
            return cursorForToolMode(tool);
        return std::nullopt;
    }
    switch (tool) {
    case PDFToolModeHand:
        return cursorNamed(area & LinkArea ? DesignCursor::PointingHand : DesignCursor::OpenHand);
    case PDFToolModeAreaSelection: {
        if (area == NoArea)
            return cursorNamed(DesignCursor::OpenHand);
        const double margin = scaleFactor() > 0 ? 4 / scaleFactor() : 4;
        if (m_selectionPageIndex == NotFound || current->indexForPage(page) != m_selectionPageIndex
            || Geometry::isEmptyRect(m_selectionRect))
            return cursorNamed(DesignCursor::Crosshair);
        const QRectF rect = m_selectionRect;
        if (const int handle = handleForRectAtPoint(rect, p, margin))
            return cursorForResizeHandle(handle, page->rotation());
        return cursorNamed(
            Geometry::pointInRect(p, rect) ? DesignCursor::OpenHand : DesignCursor::Crosshair);
    }
    case PDFToolModeZoom:
        if (area == NoArea)
            return cursorNamed(DesignCursor::OpenHand);
        return cursorNamed(
            modifiers & Qt::ShiftModifier ? DesignCursor::ZoomOut : DesignCursor::ZoomIn);
    default:
        return std::nullopt;
    }
}

void XPDFView::doUpdateCursor()
{
    if (!m_cursorStack.empty())
        return;
    const QPointF point = viewport()->mapFromGlobal(QCursor::pos());
    const auto cursor = getCursorForEvent(point, QGuiApplication::keyboardModifiers());
    if (cursor) {
        viewport()->setCursor(*cursor);
        return;
    }
    // The kit's own choice: I-beam over text, pointing hand over links, arrow elsewhere.
    QMouseEvent moved(QEvent::MouseMove, point, viewport()->mapToGlobal(point), Qt::NoButton,
        Qt::NoButton, QGuiApplication::keyboardModifiers());
    PDFView::mouseMoveEvent(&moved);
}

void XPDFView::pushCursor(const QCursor &cursor)
{
    m_cursorStack.push_back(cursor);
    viewport()->setCursor(cursor);
}

void XPDFView::popCursor()
{
    if (m_cursorStack.empty())
        return;
    m_cursorStack.pop_back();
    if (!m_cursorStack.empty())
        viewport()->setCursor(m_cursorStack.back());
}
