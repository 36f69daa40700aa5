#include "AnnotationPainting.h"

#include "PDFAnnotation.h"
#include "PDFBorder.h"

#include <kit/base/BezierPath.h>

#include <QPainter>
#include <QTransform>

namespace AnnotationPainting {

double lineWidth(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    return border ? border->lineWidth() : 0.0;
}

QList<double> dash(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    if (!border || border->style() != PDFBorder::Dashed)
        return {};
    const QList<double> pattern = border->dashPattern();
    return pattern.isEmpty() ? QList<double> { 3.0, 3.0 } : pattern;
}

void stroke(QPainter &painter, BezierPath path, const QColor &color, double width,
    const QList<double> &dash)
{
    if (!color.isValid() || color.alpha() == 0 || path.isEmpty())
        return;
    path.setLineWidth(width);
    path.setLineDash(dash, 0);
    painter.save();
    painter.setPen(color);
    path.stroke(painter);
    painter.restore();
}

BezierPath lineEnd(int style, const QPointF &point, double angle, double w)
{
    BezierPath path;
    const QRectF box(-1.5 * w, -1.5 * w, 3 * w, 3 * w);
    switch (style) {
    case 1:
        path.appendRect(box);
        break;
    case 2:
        path.appendOval(box);
        break;
    case 3:
        path.moveTo({ 1.5 * w, 0 });
        path.lineTo({ 0, 1.5 * w });
        path.lineTo({ -1.5 * w, 0 });
        path.lineTo({ 0, -1.5 * w });
        path.closePath();
        break;
    case 4:
    case 5:
        path.moveTo({ -3 * w, 1.5 * w });
        path.lineTo({ 0, 0 });
        path.lineTo({ -3 * w, -1.5 * w });
        if (style == 5)
            path.closePath();
        break;
    default:
        return path;
    }
    QTransform frame;
    frame.translate(point.x(), point.y());
    frame.rotateRadians(angle);
    path.transform(frame);
    return path;
}

} // namespace AnnotationPainting
