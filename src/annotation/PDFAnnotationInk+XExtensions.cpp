#include "PDFAnnotationInk+XExtensions.h"

#include "PDFAnnotationLine+XExtensions.h"
#include "values/NSBezierPath+XExtensions.h"

#include <kit/base/Geometry.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFBorder.h>

#include <QTransform>

#include <algorithm>
#include <cmath>

namespace {

double dot(QPointF a, QPointF b)
{
    return a.x() * b.x() + a.y() * b.y();
}

// The box the paths need, made integral and with room for the stroke: a null path counts as
// the zero rect, so no paths at all give 16 by 16 round the zero point.
QRectF boundsForPaths(const QList<std::shared_ptr<BezierPath>> &paths)
{
    QRectF united;
    for (const auto &path : paths)
        united = Geometry::unionRect(united, path ? nonEmptyBounds(*path) : QRectF());
    return Geometry::insetRect(Geometry::integralRect(united), -8.0, -8.0);
}

double hitDistance(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    return std::max(4.0, (border ? border->lineWidth() : 0.0) / 2.0);
}

QRectF grown(QRectF rect, double d)
{
    return Geometry::insetRect(rect, -d, -d);
}

// The curve from c is flattened only when q lies near its control box.
bool curveHit(QPointF q, QPointF c, const QPointF points[3], double d, QPointF &end)
{
    const double minX = std::min({ c.x(), points[0].x(), points[1].x(), points[2].x() });
    const double maxX = std::max({ c.x(), points[0].x(), points[1].x(), points[2].x() });
    const double minY = std::min({ c.y(), points[0].y(), points[1].y(), points[2].y() });
    const double maxY = std::max({ c.y(), points[0].y(), points[1].y(), points[2].y() });
    end = points[2];
    if (!Geometry::pointInRect(q, grown(QRectF(minX, minY, maxX - minX, maxY - minY), d)))
        return false;
    BezierPath curve;
    curve.moveTo(c);
    curve.curveTo(points[2], points[0], points[1]);
    const BezierPath flat = curve.flattened();
    QPointF from = c;
    for (int i = 1; i < flat.elementCount(); ++i) {
        const QPointF to = associatedPointForElementAtIndex(flat, i);
        if (distanceHit(q, from, to, d))
            return true;
        from = to;
    }
    end = from;
    return false;
}

bool pathHit(const BezierPath &path, QPointF q, double d)
{
    QPointF current;
    QPointF subpathStart;
    for (int i = 0; i < path.elementCount(); ++i) {
        QPointF points[3];
        const BezierPath::ElementType type = path.elementAt(i, points);
        switch (type) {
        case BezierPath::MoveTo:
            current = subpathStart = points[0];
            break;
        case BezierPath::LineTo:
        case BezierPath::ClosePath: {
            // A close runs back to where its subpath began.
            const QPointF to = type == BezierPath::LineTo ? points[0] : subpathStart;
            if (distanceHit(q, current, to, d))
                return true;
            current = to;
            break;
        }
        case BezierPath::CurveTo:
            if (curveHit(q, current, points, d, current))
                return true;
            break;
        }
    }
    return false;
}

} // namespace

void addPointToPath(QPointF p, BezierPath &path)
{
    const int n = path.elementCount();
    if (n == 0) {
        path.moveTo(p);
        return;
    }
    if (n == 1) {
        path.lineTo(p);
        return;
    }
    const QPointF p0 = associatedPointForElementAtIndex(path, n - 2);
    const QPointF p1 = associatedPointForElementAtIndex(path, n - 1);
    // The tangent at P1 runs along the chord over it, shared out by the spans' lengths along
    // the chord so that a short span next to a long one does not overshoot.
    const QPointF chord = p - p0;
    const double a = std::abs(dot(chord, p1 - p0));
    const double b = std::abs(dot(chord, p - p1));
    const double k = a + b > 0 ? 1.0 / (3.0 * (a + b)) : 0.0;
    const QPointF back = p1 - a * k * chord;
    QPointF points[3];
    if (path.elementAt(n - 1, points) == BezierPath::CurveTo) {
        points[1] = back;
        path.setAssociatedPoints(points, n - 1);
    } else if (n == 2) {
        path.removeAllPoints();
        path.moveTo(p0);
        path.curveTo(p1, p0, back);
    }
    path.curveTo(p, p1 + b * k * chord, p);
}

bool initWithPaths(PDFAnnotationInk &ink, const QList<std::shared_ptr<BezierPath>> &paths)
{
    const QRectF bounds = boundsForPaths(paths);
    if (!ink.initWithBounds(bounds))
        return false;
    const QTransform toBounds = QTransform::fromTranslate(-bounds.x(), -bounds.y());
    for (const auto &path : paths) {
        if (!path)
            continue;
        path->transform(toBounds);
        ink.addBezierPath(path);
    }
    return true;
}

QRectF inkEnclosedBounds(const PDFAnnotationInk &ink)
{
    const QRectF bounds = ink.bounds();
    return Geometry::isEmptyRect(bounds) ? boundsForPaths(ink.paths()) : bounds;
}

bool inkHitTest(const PDFAnnotationInk &ink, QPointF point)
{
    if (!Geometry::pointInRect(point, inkEnclosedBounds(ink)))
        return false;
    const double d = hitDistance(ink);
    const QPointF q = point - ink.bounds().topLeft();
    for (const auto &path : ink.paths()) {
        if (!path || path->isEmpty() || !Geometry::pointInRect(q, grown(nonEmptyBounds(*path), d)))
            continue;
        if (pathHit(*path, q, d))
            return true;
    }
    return false;
}

QRectF inkDisplayRectForBounds(const PDFAnnotationInk &ink, QRectF bounds, double lineWidth)
{
    const double w = std::max(1.0, lineWidth);
    QRectF strokes;
    for (const auto &path : ink.paths())
        strokes = Geometry::unionRect(strokes, grown(path ? nonEmptyBounds(*path) : QRectF(), w));
    strokes.translate(bounds.topLeft());
    return Geometry::unionRect(bounds, Geometry::integralRect(strokes));
}

void moveByOffset(PDFAnnotationInk &ink, QSizeF offset)
{
    const QTransform shift = QTransform::fromTranslate(offset.width(), offset.height());
    // Taken off and put back, so that the moved geometry reaches the file in the same order.
    const QList<std::shared_ptr<BezierPath>> paths = ink.paths();
    for (const auto &path : paths) {
        if (path)
            path->transform(shift);
        ink.removeBezierPath(path);
    }
    for (const auto &path : paths)
        ink.addBezierPath(path);
}

QList<BezierPath> pagePaths(const PDFAnnotationInk &ink)
{
    const QPointF origin = ink.bounds().topLeft();
    const QTransform toPage = QTransform::fromTranslate(origin.x(), origin.y());
    QList<BezierPath> copies;
    for (const auto &path : ink.paths()) {
        BezierPath copy = path ? *path : BezierPath();
        copy.transform(toPage);
        copies.append(copy);
    }
    return copies;
}

QList<QList<QPointF>> pointLists(const PDFAnnotationInk &ink)
{
    QList<QList<QPointF>> lists;
    for (const auto &path : ink.paths()) {
        QList<QPointF> points;
        const int count = path ? path->elementCount() : 0;
        points.reserve(count);
        for (int i = 0; i < count; ++i)
            points.append(associatedPointForElementAtIndex(*path, i));
        lists.append(points);
    }
    return lists;
}
