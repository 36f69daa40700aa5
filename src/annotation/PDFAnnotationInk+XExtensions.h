#pragma once

// Free-hand strokes for the application: the smoothing of pointer samples into cubic curves, the
// making of an ink from page-space paths, hit tests against the strokes (not their box), and
// moving the geometry. Main thread only, except addPointToPath (any thread, one path at a time).

#include <kit/base/BezierPath.h>

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <memory>

class PDFAnnotationInk;

// Appends a pointer sample to the path, bending the end of the previous curve so that the joint
// is smooth. Touches only the last two elements: constant time in the path's length.
void addPointToPath(QPointF point, BezierPath &path);

// Initialises ink (through its initWithBounds, so the application's defaults apply) with bounds
// that hold the page-space paths, then moves the paths, in place, to be relative to the bounds
// and adds them. False, with the paths untouched, when initWithBounds fails.
bool initWithPaths(PDFAnnotationInk &ink, const QList<std::shared_ptr<BezierPath>> &paths);

// The bounds; for empty bounds, the box the paths need (in the paths' own coordinates).
QRectF inkEnclosedBounds(const PDFAnnotationInk &ink);
// On a stroke, within the larger of 4 and half the border width; curves are flattened only when
// their box is near the point.
bool inkHitTest(const PDFAnnotationInk &ink, QPointF point);
QRectF inkDisplayRectForBounds(const PDFAnnotationInk &ink, QRectF bounds, double lineWidth);
// Moves every path by the offset against the bounds, which stay.
void moveByOffset(PDFAnnotationInk &ink, QSizeF offset);
// Copies of the paths in page space.
QList<BezierPath> pagePaths(const PDFAnnotationInk &ink);
// For each path, each element's end point.
QList<QList<QPointF>> pointLists(const PDFAnnotationInk &ink);
