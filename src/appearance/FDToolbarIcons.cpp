#include "FDToolbarIcons.h"

#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSvgRenderer>

#include <functional>

// The images are compiled into the application's static library; tests and the program alike
// register them here before the first use. Outside any namespace, as the registration is.
static void initialiseToolbarResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(folidoc);
        return true;
    }();
    Q_UNUSED(done);
}

namespace {

constexpr int Side = 18;

QIcon drawn(const std::function<void(QPainter &)> &draw)
{
    return FDToolbarIcons::drawnIcon(QSizeF(Side, Side), draw);
}

QPen pen(const QColor &color, double width = 1.4)
{
    return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

} // namespace

QIcon FDToolbarIcons::icon(Kind kind, const QColor &color)
{
    return drawn([kind, color](QPainter &painter) {
        painter.setPen(pen(color));
        painter.setBrush(Qt::NoBrush);
        switch (kind) {
        case Sidebar:
            painter.drawRoundedRect(QRectF(1.5, 3.5, 15, 11), 1.5, 1.5);
            painter.drawLine(QPointF(6.5, 3.5), QPointF(6.5, 14.5));
            painter.setPen(pen(color, 1.0));
            for (const double y : { 6.5, 8.5, 10.5 })
                painter.drawLine(QPointF(3, y), QPointF(5, y));
            break;
        case AnnotationBar: {
            // A pen over a stroke.
            QPainterPath pencil;
            pencil.moveTo(4, 14);
            pencil.lineTo(5, 10.5);
            pencil.lineTo(12.5, 3);
            pencil.lineTo(15, 5.5);
            pencil.lineTo(7.5, 13);
            pencil.closeSubpath();
            painter.drawPath(pencil);
            painter.drawLine(QPointF(11, 4.5), QPointF(13.5, 7));
            painter.drawLine(QPointF(2, 16.5), QPointF(16, 16.5));
            break;
        }
        case Layout:
            painter.drawRect(QRectF(1.5, 3.5, 6.5, 11));
            painter.drawRect(QRectF(10, 3.5, 6.5, 11));
            break;
        case Zoom:
            painter.drawEllipse(QPointF(7.5, 7.5), 5, 5);
            painter.setPen(pen(color, 2.0));
            painter.drawLine(QPointF(11.2, 11.2), QPointF(15.5, 15.5));
            break;
        case Theme: {
            painter.drawEllipse(QPointF(9, 9), 7, 7);
            QPainterPath half;
            half.moveTo(9, 2);
            half.arcTo(QRectF(2, 2, 14, 14), 90, 180);
            half.closeSubpath();
            painter.fillPath(half, color);
            break;
        }
        case PagesEditor:
            for (const double x : { 2.5, 10.0 }) {
                for (const double y : { 1.5, 10.0 })
                    painter.drawRect(QRectF(x, y, 5.5, 6.5));
            }
            break;
        case TextSelection:
            painter.drawLine(QPointF(9, 3), QPointF(9, 15));
            painter.drawLine(QPointF(6, 2.5), QPointF(8, 3));
            painter.drawLine(QPointF(12, 2.5), QPointF(10, 3));
            painter.drawLine(QPointF(6, 15.5), QPointF(8, 15));
            painter.drawLine(QPointF(12, 15.5), QPointF(10, 15));
            break;
        case Font: {
            QFont font = painter.font();
            font.setPixelSize(13);
            font.setBold(true);
            painter.setFont(font);
            painter.drawText(QRectF(0, 0, Side, Side), Qt::AlignCenter, QStringLiteral("Aa"));
            break;
        }
        case LineAspect:
            painter.setPen(pen(color, 1.0));
            painter.drawLine(QPointF(2, 4), QPointF(16, 4));
            painter.setPen(pen(color, 2.0));
            painter.drawLine(QPointF(2, 9), QPointF(16, 9));
            painter.setPen(pen(color, 3.0));
            painter.drawLine(QPointF(2, 14.5), QPointF(16, 14.5));
            break;
        }
    });
}

QIcon FDToolbarIcons::annotationIcon(const QString &type, const QColor &color)
{
    initialiseToolbarResources();
    const QString path = QStringLiteral(":/images/Ann_%1_18pt.svg").arg(type);
    if (!QFile::exists(path))
        return {};
    QSvgRenderer renderer(path);
    return drawn([&renderer, color](QPainter &painter) {
        renderer.render(&painter, QRectF(0, 0, Side, Side));
        // Only the picture's coverage is kept; the colour is the bar's.
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(QRectF(0, 0, Side, Side), color);
    });
}

QIcon FDToolbarIcons::colorIcon(const QColor &fill, const QColor &color)
{
    return drawn([fill, color](QPainter &painter) {
        const QRectF oval(2.5, 2.5, 13, 13);
        if (!fill.isValid() || fill.alpha() == 0) {
            painter.setPen(pen(color, 1.0));
            painter.drawEllipse(oval);
            painter.drawLine(QPointF(5, 4), QPointF(13, 14));
            return;
        }
        painter.setPen(pen(color, 1.0));
        painter.setBrush(fill);
        painter.drawEllipse(oval);
    });
}

QIcon FDToolbarIcons::drawnIcon(const QSizeF &size, const std::function<void(QPainter &)> &draw)
{
    QIcon icon;
    for (const double ratio : { 1.0, 2.0 }) {
        QPixmap pixmap(qRound(size.width() * ratio), qRound(size.height() * ratio));
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        draw(painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}
