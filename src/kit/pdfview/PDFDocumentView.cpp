#include "PDFDocumentView.h"
#include "PDFView.h"

#include <QScrollBar>

#include <cmath>

QRectF PDFDocumentView::bounds() const
{
    const QSizeF size = m_view.m_layout.documentSize() * m_view.m_scale;
    return QRectF(QPointF(0, 0), QSizeF(std::ceil(size.width()), std::ceil(size.height())));
}

QRectF PDFDocumentView::visibleRect() const
{
    return QRectF(-QPointF(m_view.documentOrigin()), QSizeF(m_view.viewport()->size()))
        .intersected(bounds());
}

bool PDFDocumentView::scrollRectToVisible(const QRectF &rect)
{
    const QRectF visible(-QPointF(m_view.documentOrigin()), QSizeF(m_view.viewport()->size()));
    double x = visible.left();
    double y = visible.top();
    if (rect.left() < visible.left() || rect.width() > visible.width())
        x = rect.left();
    else if (rect.right() > visible.right())
        x = rect.right() - visible.width();
    if (rect.top() < visible.top() || rect.height() > visible.height())
        y = rect.top();
    else if (rect.bottom() > visible.bottom())
        y = rect.bottom() - visible.height();
    const int oldX = m_view.horizontalScrollBar()->value();
    const int oldY = m_view.verticalScrollBar()->value();
    m_view.scrollDocumentTo(QPointF(x, y) + QPointF(m_view.documentOrigin()) + QPointF(oldX, oldY));
    return oldX != m_view.horizontalScrollBar()->value()
        || oldY != m_view.verticalScrollBar()->value();
}

bool PDFDocumentView::autoscroll(const QPointF &viewPoint)
{
    const QRectF view(QPointF(0, 0), QSizeF(m_view.viewport()->size()));
    const double dx = viewPoint.x() < view.left() ? viewPoint.x() - view.left()
        : viewPoint.x() > view.right()            ? viewPoint.x() - view.right()
                                                  : 0;
    const double dy = viewPoint.y() < view.top() ? viewPoint.y() - view.top()
        : viewPoint.y() > view.bottom()          ? viewPoint.y() - view.bottom()
                                                 : 0;
    if (dx == 0 && dy == 0)
        return false;
    return scrollRectToVisible(visibleRect().translated(dx, dy));
}

QPointF PDFDocumentView::convertPointFromView(const QPointF &point) const
{
    return point - QPointF(m_view.documentOrigin());
}

QPointF PDFDocumentView::convertPointToView(const QPointF &point) const
{
    return point + QPointF(m_view.documentOrigin());
}

QRectF PDFDocumentView::convertRectFromView(const QRectF &rect) const
{
    return rect.translated(-QPointF(m_view.documentOrigin()));
}

QRectF PDFDocumentView::convertRectToView(const QRectF &rect) const
{
    return rect.translated(QPointF(m_view.documentOrigin()));
}
