#include "QKDrawing.h"

#include <kit/base/BezierPath.h>

#include <QPainter>
#include <QPainterPath>
#include <QWidget>
#include <QWindow>

double qk_lineWidth(const QWidget *widget)
{
    if (!widget)
        return 1.0;
    const QWidget *const top = widget->window();
    if (!top || !top->windowHandle())
        return 1.0;
    const double ratio = top->windowHandle()->devicePixelRatio();
    return ratio > 0 ? 1.0 / ratio : 1.0;
}

void qk_stroke(QPainter &painter, const QPainterPath &path, const QWidget *widget)
{
    QPen pen = painter.pen();
    pen.setWidthF(qk_lineWidth(widget));
    painter.save();
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
    painter.restore();
}

void qk_stroke(QPainter &painter, const BezierPath &path, const QWidget *widget)
{
    qk_stroke(painter, path.toPainterPath(), widget);
}

void qk_strokeHoriLine(QPainter &painter, double x0, double x1, double y, double lineWidth)
{
    QPen pen = painter.pen();
    pen.setWidthF(lineWidth);
    pen.setCapStyle(Qt::FlatCap);
    painter.save();
    painter.setPen(pen);
    painter.drawLine(QPointF(x0, y), QPointF(x1, y));
    painter.restore();
}
