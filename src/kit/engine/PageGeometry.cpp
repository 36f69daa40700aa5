#include "PageGeometry.h"

#include <cmath>

PageGeometry::PageGeometry(const QRectF &box, int rotation)
    : m_box(box.normalized())
    , m_rotation(normalizedRotation(rotation))
{ }

int PageGeometry::normalizedRotation(int degrees)
{
    const int quarter = static_cast<int>(std::lround(degrees / 90.0));
    return ((quarter % 4) + 4) % 4 * 90;
}

QSizeF PageGeometry::viewSize(double scale) const
{
    const QSizeF size = m_box.size() * scale;
    return m_rotation % 180 ? size.transposed() : size;
}

QTransform PageGeometry::pageToView(double scale) const
{
    const double w = m_box.width();
    const double h = m_box.height();
    // Flip y about the box's top edge and move the box's top left to the origin.
    const QTransform unrotated(1, 0, 0, -1, -m_box.left(), m_box.top() + m_box.height());
    // Turn clockwise in y-down space, keeping the rotated box at the origin.
    QTransform turn;
    switch (m_rotation) {
    case 90:
        turn = QTransform(0, 1, -1, 0, h, 0);
        break;
    case 180:
        turn = QTransform(-1, 0, 0, -1, w, h);
        break;
    case 270:
        turn = QTransform(0, -1, 1, 0, 0, w);
        break;
    default:
        break;
    }
    return unrotated * turn * QTransform::fromScale(scale, scale);
}

QTransform PageGeometry::viewToPage(double scale) const
{
    return pageToView(scale).inverted();
}

QPointF PageGeometry::viewPoint(const QPointF &pagePoint, double scale) const
{
    return pageToView(scale).map(pagePoint);
}

QPointF PageGeometry::pagePoint(const QPointF &viewPoint, double scale) const
{
    return viewToPage(scale).map(viewPoint);
}

QRectF PageGeometry::viewRect(const QRectF &pageRect, double scale) const
{
    return pageToView(scale).mapRect(pageRect);
}

QRectF PageGeometry::pageRect(const QRectF &viewRect, double scale) const
{
    return viewToPage(scale).mapRect(viewRect);
}
