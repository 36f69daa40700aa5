#pragma once

// Rectangles and points as the annotation lists sort and show them: reading order and text forms.
// Page space, y upward. Pure functions, any thread.

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

// Reading order, top to bottom and then left to right: -1 when rect comes first (its top,
// y + height, is higher, or the tops are equal and it lies more to the left), 1 when other
// does, 0 when neither. A missing other rect is the zero rect, the default.
int boundsCompare(QRectF rect, QRectF other = QRectF());
// boundsCompare as a strict weak order, for std::sort.
inline bool boundsLessThan(QRectF a, QRectF b)
{
    return boundsCompare(a, b) < 0;
}

// The text forms "{{x, y}, {w, h}}", "{x, y}" and "{w, h}".
QString rectString(QRectF rect);
QString pointString(QPointF point);
QString sizeString(QSizeF size);
QString originString(QRectF rect);
QString sizeString(QRectF rect);
// The centre of the rect as a point text.
QString midPointString(QRectF rect);

inline double rectX(QRectF rect)
{
    return rect.x();
}
inline double rectY(QRectF rect)
{
    return rect.y();
}
inline double rectWidth(QRectF rect)
{
    return rect.width();
}
inline double rectHeight(QRectF rect)
{
    return rect.height();
}
inline double pointX(QPointF point)
{
    return point.x();
}
inline double pointY(QPointF point)
{
    return point.y();
}
