#include "FDVerticalTabBar.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QPainter>
#include <QPainterPath>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int pictureEdge = 20;

// The pictures of the four tabs: pages, an indented list, a note, a ribbon.
void drawPicture(QPainter &painter, int tag, const QColor &colour)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    switch (tag) {
    case 0:
        painter.drawRect(QRectF(4.5, 2.5, 9, 11));
        painter.drawRect(QRectF(7.5, 6.5, 9, 11));
        break;
    case 1:
        for (int line = 0; line < 4; ++line) {
            const double y = 4.5 + line * 4;
            const double indent = line == 1 || line == 2 ? 7 : 3;
            painter.drawLine(QPointF(indent, y), QPointF(17, y));
        }
        break;
    case 2: {
        QPainterPath bubble;
        bubble.addRoundedRect(QRectF(3, 3.5, 14, 10), 2, 2);
        painter.drawPath(bubble);
        painter.drawLine(QPointF(7, 13.5), QPointF(6, 17));
        painter.drawLine(QPointF(6, 17), QPointF(10, 13.5));
        break;
    }
    default: {
        QPainterPath ribbon;
        ribbon.moveTo(6, 2.5);
        ribbon.lineTo(14, 2.5);
        ribbon.lineTo(14, 17.5);
        ribbon.lineTo(10, 13.5);
        ribbon.lineTo(6, 17.5);
        ribbon.closeSubpath();
        painter.drawPath(ribbon);
        break;
    }
    }
}

QIcon pictureFor(int tag)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QIcon icon;
    const auto pixmapIn = [tag](const QColor &colour) {
        QPixmap pixmap(pictureEdge * 2, pictureEdge * 2);
        pixmap.setDevicePixelRatio(2.0);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawPicture(painter, tag, colour);
        return pixmap;
    };
    icon.addPixmap(pixmapIn(theme->color(FDTheme::secondaryLabelColor)), QIcon::Normal, QIcon::Off);
    icon.addPixmap(pixmapIn(theme->color(FDTheme::primaryColor)), QIcon::Normal, QIcon::On);
    return icon;
}

} // namespace

FDVerticalTabBar::FDVerticalTabBar(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("tabBar"));
    setFixedWidth(barWidth);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 6, 2, 6);
    layout->setSpacing(4);
    layout->addStretch(1);
}

QToolButton *FDVerticalTabBar::addTabButton(int tag, const QString &toolTip)
{
    auto *const button = new QToolButton(this);
    button->setProperty("tag", tag);
    button->setObjectName(QStringLiteral("tabButton%1").arg(tag));
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(barWidth - 4, barWidth - 4);
    button->setIconSize(QSize(pictureEdge, pictureEdge));
    button->setIcon(pictureFor(tag));
    auto *const layout = static_cast<QVBoxLayout *>(this->layout());
    layout->insertWidget(layout->count() - 1, button);
    return button;
}

QList<QAbstractButton *> FDVerticalTabBar::buttons() const
{
    return findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly);
}

void FDVerticalTabBar::repaintButtons()
{
    for (QAbstractButton *const button : buttons())
        button->setIcon(pictureFor(button->property("tag").toInt()));
    update();
}

void FDVerticalTabBar::paintEvent(QPaintEvent *)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPainter painter(this);
    painter.fillRect(rect(), theme->color(FDTheme::toolbarBackgroundColor));
    painter.setPen(QPen(theme->color(FDTheme::borderColor), 0));
    painter.drawLine(QPointF(width() - 0.5, 0), QPointF(width() - 0.5, height()));
}
