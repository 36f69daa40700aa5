#include "NSBezierPath+XExtensions.h"

#include <kit/base/Geometry.h>

#include <algorithm>

namespace {

BezierPath roundedOnOneSide(QRectF rect, double radius, bool left)
{
    BezierPath path;
    const double r = std::min(radius, std::min(rect.width(), rect.height()) / 2.0);
    if (!(r > 0)) {
        path.appendRect(rect);
        return path;
    }
    const double minX = rect.left();
    const double maxX = rect.right();
    const double minY = rect.top(); // the lower edge in page space (y up)
    const double maxY = rect.bottom();
    if (left) {
        path.moveTo(QPointF(maxX, minY));
        path.lineTo(QPointF(maxX, maxY));
        path.appendArcFromPoint(QPointF(minX, maxY), QPointF(minX, minY), r);
        path.appendArcFromPoint(QPointF(minX, minY), QPointF(maxX, minY), r);
    } else {
        path.moveTo(QPointF(minX, maxY));
        path.lineTo(QPointF(minX, minY));
        path.appendArcFromPoint(QPointF(maxX, minY), QPointF(maxX, maxY), r);
        path.appendArcFromPoint(QPointF(maxX, maxY), QPointF(minX, maxY), r);
    }
    path.closePath();
    return path;
}

} // namespace

BezierPath bezierPathWithLeftRoundedRect(QRectF rect, double radius)
{
    return roundedOnOneSide(rect, radius, true);
}

BezierPath bezierPathWithRightRoundedRect(QRectF rect, double radius)
{
    return roundedOnOneSide(rect, radius, false);
}

QList<double> dashPattern(const BezierPath &path)
{
    return path.lineDash();
}

void setDashPattern(BezierPath &path, const QList<double> &pattern)
{
    path.setLineDash(pattern, 0.0);
}

QPointF associatedPointForElementAtIndex(const BezierPath &path, int index)
{
    QPointF points[3];
    switch (path.elementAt(index, points)) {
    case BezierPath::CurveTo:
        return points[2];
    case BezierPath::MoveTo:
    case BezierPath::LineTo:
        return points[0];
    case BezierPath::ClosePath:
        break;
    }
    return QPointF();
}

QRectF nonEmptyBounds(const BezierPath &path)
{
    const QRectF bounds = path.bounds();
    if (!Geometry::isEmptyRect(bounds) || path.isEmpty())
        return bounds;
    // A close has no point of its own: it returns to its subpath's start, which is counted.
    bool any = false;
    double minX = 0, maxX = 0, minY = 0, maxY = 0;
    for (int i = 0; i < path.elementCount(); ++i) {
        if (path.elementAt(i) == BezierPath::ClosePath)
            continue;
        const QPointF p = associatedPointForElementAtIndex(path, i);
        minX = any ? std::min(minX, p.x()) : p.x();
        maxX = any ? std::max(maxX, p.x()) : p.x();
        minY = any ? std::min(minY, p.y()) : p.y();
        maxY = any ? std::max(maxY, p.y()) : p.y();
        any = true;
    }
    if (!any)
        return bounds;
    return QRectF(minX - 0.1, minY - 0.1, maxX - minX + 0.2, maxY - minY + 0.2);
}
