#include "NewTabDropFileArea.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/tabs/QKDrawing.h>

#include <QPainter>
#include <QPainterPath>

NewTabDropFileArea::NewTabDropFileArea(QWidget *parent)
    : QWidget(parent)
{
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { update(); });
}

void NewTabDropFileArea::paintEvent(QPaintEvent *)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();

    QPainterPath frame;
    frame.addRoundedRect(bounds.adjusted(1, 1, -1, -1), 2, 2);
    QPen dashed(theme->color(FDTheme::borderColor));
    // Dashes are in units of the pen width: 10 on and 4 off in points at any density.
    const double width = qk_lineWidth(this);
    dashed.setDashPattern({ 10 / width, 4 / width });
    dashed.setCapStyle(Qt::FlatCap);
    painter.setPen(dashed);
    qk_stroke(painter, frame, this);

    painter.setClipRect(bounds.adjusted(3, 3, -3, -3));
    const double darken = theme->isDark() ? 0.7 : 0.0;
    const std::pair<double, double> circles[] = { { 600, 0.92 }, { 400, 0.88 }, { 200, 0.85 } };
    painter.setPen(Qt::NoPen);
    for (const auto &[diameter, level] : circles) {
        painter.setBrush(FDTheme::white(level - darken, 0.9));
        painter.drawEllipse(bounds.center(), diameter / 2, diameter / 2);
    }

    QFont font = this->font();
    font.setPixelSize(16);
    painter.setFont(font);
    painter.setPen(theme->color(FDTheme::secondaryLabelColor));
    painter.drawText(bounds, Qt::AlignCenter, tr("Drop PDF here"));
}
