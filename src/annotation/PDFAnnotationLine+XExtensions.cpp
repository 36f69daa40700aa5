#include "PDFAnnotationLine+XExtensions.h"

#include <kit/base/Geometry.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFBorder.h>

#include <algorithm>
#include <cmath>

namespace {

// The stroke's reach on either side: never below 4 page units, so thin lines stay easy to hit.
double hitDistance(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    return std::max(4.0, (border ? border->lineWidth() : 0.0) / 2.0);
}

QRectF squareAround(QPointF centre, double side)
{
    return QRectF(centre.x() - side / 2.0, centre.y() - side / 2.0, side, side);
}

} // namespace

bool distanceHit(QPointF p, QPointF a, QPointF b, double d)
{
    // A point exactly d outside the box passes here; the distance test below decides it.
    if (p.x() < std::min(a.x(), b.x()) - d || p.x() > std::max(a.x(), b.x()) + d
        || p.y() < std::min(a.y(), b.y()) - d || p.y() > std::max(a.y(), b.y()) + d)
        return false;
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    const double c = (p.x() - a.x()) * dy - (p.y() - a.y()) * dx;
    return d * d * (dx * dx + dy * dy) > c * c;
}

bool lineHitTest(const PDFAnnotationLine &line, QPointF point)
{
    const QPointF q = point - line.bounds().topLeft();
    return distanceHit(q, line.startPoint(), line.endPoint(), hitDistance(line));
}

AnnotationResizeHandle lineResizeHandleForPoint(
    const PDFAnnotationLine &line, QPointF point, double scaleFactor)
{
    const double side = 8.0 / scaleFactor;
    const QPointF q = point - line.bounds().topLeft();
    if (Geometry::pointInRect(q, squareAround(line.startPoint(), side)))
        return AnnotationResizeHandleLeft;
    if (Geometry::pointInRect(q, squareAround(line.endPoint(), side)))
        return AnnotationResizeHandleRight;
    return AnnotationResizeHandleNone;
}

QRectF lineDisplayRectForBounds(QRectF bounds, double lineWidth)
{
    const double g = std::ceil(std::max(2.0, 2.0 * lineWidth));
    QRectF rect = Geometry::insetRect(bounds, -g, -g);
    // Arrow heads stick out across a nearly flat or upright line.
    if (3.0 * g > bounds.width())
        rect = Geometry::insetRect(rect, -g, 0.0);
    if (3.0 * g > bounds.height())
        rect = Geometry::insetRect(rect, 0.0, -g);
    return rect;
}
