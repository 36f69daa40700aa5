#include "PDFAnnotationCircle+XExtensions.h"

#include <kit/base/Geometry.h>
#include <kit/engine/PDFAnnotationCircle.h>

bool circleHitTest(const PDFAnnotationCircle &circle, QPointF point)
{
    const QRectF bounds = circle.bounds();
    // The box test also keeps an empty circle from dividing by its zero size.
    if (!Geometry::pointInRect(point, bounds))
        return false;
    const QPointF q = point - bounds.center();
    const double x = 2.0 * q.x() / bounds.width();
    const double y = 2.0 * q.y() / bounds.height();
    return x * x + y * y <= 1.0;
}
