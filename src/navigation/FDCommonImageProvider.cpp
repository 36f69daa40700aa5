#include "FDCommonImageProvider.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

#include <QFont>
#include <QPainter>
#include <QPixmap>

namespace {

enum class Style { letterOn, letterOff, markOn, markOff };

QPixmap draw(Style style, QChar letter, qreal ratio)
{
    const FDTheme *const theme = FDThemeProvider::current();
    const int edge = FDCommonImageProvider::iconSize;
    QPixmap pixmap(qRound(edge * ratio), qRound(edge * ratio));
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box(1.0, 1.0, edge - 2.0, edge - 2.0);
    const QColor accent = theme->color(FDTheme::primaryColor);
    const QColor quiet = theme->color(FDTheme::secondaryLabelColor);
    switch (style) {
    case Style::letterOn:
    case Style::letterOff: {
        const bool on = style == Style::letterOn;
        painter.setPen(on ? Qt::NoPen : QPen(quiet, 1.0));
        painter.setBrush(on ? QBrush(accent) : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), 3.0, 3.0);
        QFont font = painter.font();
        font.setPixelSize(edge - 5);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(on ? theme->color(FDTheme::selectedTextColor) : quiet);
        painter.drawText(box, Qt::AlignCenter, QString(letter));
        break;
    }
    case Style::markOn:
        painter.setPen(Qt::NoPen);
        painter.setBrush(accent);
        painter.drawEllipse(box.adjusted(3.0, 3.0, -3.0, -3.0));
        break;
    case Style::markOff:
        painter.setPen(QPen(theme->color(FDTheme::disabledControlColor), 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(box.adjusted(3.5, 3.5, -3.5, -3.5));
        break;
    }
    return pixmap;
}

} // namespace

FDCommonImageProvider &FDCommonImageProvider::shared()
{
    static FDCommonImageProvider provider;
    return provider;
}

FDCommonImageProvider::FDCommonImageProvider()
{
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeWillChangeNotification,
        nullptr, [this](const Notification &) { onThemeWillChange(); });
}

void FDCommonImageProvider::onThemeWillChange()
{
    // Drawn again at the next use, by then in the new theme's colours.
    m_images.fill(QIcon());
}

QIcon FDCommonImageProvider::image(Image which)
{
    QIcon &icon = m_images.at(which);
    if (!icon.isNull())
        return icon;
    static constexpr std::array<Style, ImageCount> styles { Style::letterOn, Style::letterOff,
        Style::letterOn, Style::letterOff, Style::markOn, Style::markOff };
    const QChar letter
        = which == primaryOn || which == primaryOff ? QLatin1Char('A') : QLatin1Char('B');
    // Sharp on ordinary and on doubled screens alike.
    for (const qreal ratio : { 1.0, 2.0 })
        icon.addPixmap(draw(styles.at(which), letter, ratio));
    return icon;
}

QIcon FDCommonImageProvider::primaryIndicatorOnStateIcon()
{
    return image(primaryOn);
}
QIcon FDCommonImageProvider::primaryIndicatorOffStateIcon()
{
    return image(primaryOff);
}
QIcon FDCommonImageProvider::secondaryIndicatorOnStateIcon()
{
    return image(secondaryOn);
}
QIcon FDCommonImageProvider::secondaryIndicatorOffStateIcon()
{
    return image(secondaryOff);
}
QIcon FDCommonImageProvider::enabledMarkIcon()
{
    return image(enabledMark);
}
QIcon FDCommonImageProvider::disabledMarkIcon()
{
    return image(disabledMark);
}
