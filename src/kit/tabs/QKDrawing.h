#pragma once

// Hairlines that stay one device pixel thick at any screen density. Main thread only.

class QPainter;
class QPainterPath;
class QWidget;
class BezierPath;

// One device pixel in the widget's units: 1 / device pixel ratio of its window's screen; 1.0 for
// a null widget or one that is not in a window yet.
double qk_lineWidth(const QWidget *widget);

// Strokes path with the painter's pen (colour, dash, cap) at qk_lineWidth(widget).
void qk_stroke(QPainter &painter, const QPainterPath &path, const QWidget *widget);
void qk_stroke(QPainter &painter, const BezierPath &path, const QWidget *widget);

// Strokes a horizontal line from (x0, y) to (x1, y) with the painter's pen at lineWidth; the line
// is centred on y.
void qk_strokeHoriLine(QPainter &painter, double x0, double x1, double y, double lineWidth);
