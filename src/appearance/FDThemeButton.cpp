#include "FDThemeButton.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <QPainter>

FDThemeButton::FDThemeButton(const FDTheme *theme, const QString &name, QWidget *parent)
    : QAbstractButton(parent)
    , m_theme(theme)
{
    setToolTip(name);
    setAccessibleName(name);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

QColor FDThemeButton::swatchColor() const
{
    // Night's primary colour is the day blue; its swatch shows the dark page instead.
    if (m_theme->isDark())
        return m_theme->color(FDTheme::pageBackgroundColor);
    return m_theme->color(FDTheme::primaryColor);
}

QSize FDThemeButton::sizeHint() const
{
    return { 28, 28 };
}

void FDThemeButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const FDTheme *const current = FDThemeProvider::current();
    const QRectF frame = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    const double side = qMin(frame.width(), frame.height());
    const QRectF ring(frame.center() - QPointF(side, side) / 2, QSizeF(side, side));
    // The system theme's two variants share one id and one button.
    const bool chosen = current->id() == m_theme->id();
    if (chosen || m_hovered || hasFocus()) {
        QColor ringColor = current->color(FDTheme::labelColor);
        ringColor.setAlphaF(chosen ? 0.85f : 0.35f);
        painter.setPen(QPen(ringColor, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(ring);
    }
    const QRectF swatch = ring.adjusted(4, 4, -4, -4);
    if (m_theme->id() == FDTheme::system) {
        // Half light, half dark: it follows the desktop.
        painter.setPen(QPen(FDTheme::white(0.6), 1.0));
        painter.setBrush(FDTheme::white(0.97));
        painter.drawEllipse(swatch);
        painter.setBrush(FDTheme::white(0.13));
        painter.drawPie(swatch, 90 * 16, 180 * 16);
        return;
    }
    // A dark swatch gets a light edge, so that it stands out on a dark window too.
    const QColor fill = swatchColor();
    painter.setPen(QPen(fill.lightnessF() < 0.25 ? FDTheme::white(0.6) : fill.darker(115), 1.0));
    painter.setBrush(fill);
    painter.drawEllipse(swatch);
}

void FDThemeButton::enterEvent(QEnterEvent *event)
{
    m_hovered = true;
    update();
    QAbstractButton::enterEvent(event);
}

void FDThemeButton::leaveEvent(QEvent *event)
{
    m_hovered = false;
    update();
    QAbstractButton::leaveEvent(event);
}
