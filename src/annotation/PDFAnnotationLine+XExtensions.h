#pragma once

// The geometry of a line and of any stroke made of segments: where it can be hit and held, and
// how much of the page it dirties. Pure functions of their arguments; main thread for annotations.

#include "AnnotationResizeHandle.h"

#include <QPointF>
#include <QRectF>

class PDFAnnotationLine;

// Whether p lies within d of the segment from a to b: a box test first, then the strict
// distance test without a square root. A segment of length 0 is never hit.
bool distanceHit(QPointF p, QPointF a, QPointF b, double d);

// Within the larger of 4 and half the border width of the stroke, in page units at any zoom.
bool lineHitTest(const PDFAnnotationLine &line, QPointF point);
// Left for the start point, right for the end point (the start wins where they overlap), in
// squares of 8 / scaleFactor; none elsewhere.
AnnotationResizeHandle lineResizeHandleForPoint(
    const PDFAnnotationLine &line, QPointF point, double scaleFactor);
// The bounds grown to hold the line's ends, with more room across a nearly flat line.
QRectF lineDisplayRectForBounds(QRectF bounds, double lineWidth);
