#include "NSValue+XExtensions.h"

#include <kit/base/Geometry.h>

int boundsCompare(QRectF rect, QRectF other)
{
    const double top = rect.y() + rect.height();
    const double otherTop = other.y() + other.height();
    if (top > otherTop)
        return -1;
    if (otherTop > top)
        return 1;
    if (other.x() > rect.x())
        return -1;
    if (rect.x() > other.x())
        return 1;
    return 0;
}

QString rectString(QRectF rect)
{
    return Geometry::stringFromRect(rect);
}

QString pointString(QPointF point)
{
    return Geometry::stringFromPoint(point);
}

QString sizeString(QSizeF size)
{
    return Geometry::stringFromSize(size);
}

QString originString(QRectF rect)
{
    return Geometry::stringFromPoint(QPointF(rect.x(), rect.y()));
}

QString sizeString(QRectF rect)
{
    return Geometry::stringFromSize(rect.size());
}

QString midPointString(QRectF rect)
{
    return Geometry::stringFromPoint(
        QPointF(rect.x() + rect.width() / 2.0, rect.y() + rect.height() / 2.0));
}
