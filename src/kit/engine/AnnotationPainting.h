#pragma once

// Stroke and fill helpers shared by the annotation kinds' drawWithBox. Page space.

#include <QColor>
#include <QList>
#include <QPointF>

class BezierPath;
class PDFAnnotation;
class QPainter;

namespace AnnotationPainting {

// The border width, 0 without a border.
double lineWidth(const PDFAnnotation &annotation);
// The dash of a dashed border (its pattern, or 3 on 3 off when it has none); empty otherwise.
QList<double> dash(const PDFAnnotation &annotation);
// Strokes the path with the colour, width and dash; nothing for an invalid or clear colour.
void stroke(QPainter &painter, BezierPath path, const QColor &color, double width,
    const QList<double> &dash);
// The path of a line end of the style at point, its x axis along angle (radians), for width w.
BezierPath lineEnd(int style, const QPointF &point, double angle, double w);

} // namespace AnnotationPainting
