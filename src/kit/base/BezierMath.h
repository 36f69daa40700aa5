#pragma once

// The curve arithmetic behind BezierPath: points on cubics, their extrema, flattening, arcs as
// cubics and polygon winding. Pure functions, any thread.

#include <QPointF>

#include <functional>
#include <vector>

namespace BezierMath {

struct Cubic
{
    QPointF control1;
    QPointF control2;
    QPointF end;
};

QPointF cubicAt(QPointF p0, QPointF c1, QPointF c2, QPointF p3, double t);

// The parameters in (0, 1) where one coordinate of a cubic has a zero derivative: its extrema.
int extremaParameters(double p0, double c1, double c2, double p3, double roots[2]);

// Calls lineTo with the end points of line segments that stay within flatness of the cubic
// (the last one is p3). Subdivision depth is bounded, so any flatness terminates.
void flattenCubic(QPointF p0, QPointF c1, QPointF c2, QPointF p3, double flatness,
    const std::function<void(QPointF)> &lineTo);

// Cubics approximating the arc of a circle from startRadians, sweeping sweepRadians (positive
// is counter-clockwise in y-up space), in pieces of at most a quarter turn.
std::vector<Cubic> arcCubics(
    QPointF center, double radius, double startRadians, double sweepRadians);

// The winding number of a closed polygon around p (edges crossed upwards count +1, downwards
// -1).
int polygonWinding(const std::vector<QPointF> &polygon, QPointF p);

} // namespace BezierMath
