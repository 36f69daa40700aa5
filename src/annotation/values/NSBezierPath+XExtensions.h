#pragma once

// What the annotation kinds ask of a bezier path beyond the kit's element model. Pure functions,
// any thread.

#include <kit/base/BezierPath.h>

#include <QList>
#include <QPointF>
#include <QRectF>

// A rectangle with only its left (or right) corners rounded; the radius is capped at half the
// smaller side, and one that is not positive gives the plain rectangle.
BezierPath bezierPathWithLeftRoundedRect(QRectF rect, double radius);
BezierPath bezierPathWithRightRoundedRect(QRectF rect, double radius);

// The path's dash lengths, and setting them with phase 0.
QList<double> dashPattern(const BezierPath &path);
void setDashPattern(BezierPath &path, const QList<double> &pattern);

// An element's end point: the third point of a curve-to, otherwise the first (a close has none
// and answers the zero point).
QPointF associatedPointForElementAtIndex(const BezierPath &path, int index);

// The path's bounds, unless they are empty while the path has elements: then the box of the
// elements' end points (a close adds none) grown by 0.1 on each side, so that a straight horizontal
// or vertical stroke, or a single point, still has an area.
QRectF nonEmptyBounds(const BezierPath &path);
