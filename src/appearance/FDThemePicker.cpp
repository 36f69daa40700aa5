#include "FDThemePicker.h"

#include "FDTheme.h"
#include "FDThemeButton.h"
#include "FDThemeProvider.h"

#include <kit/base/NotificationCenter.h>

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

FDThemePicker::FDThemePicker(QWidget *parent)
    : QWidget(parent)
{
    auto *const layout = new QHBoxLayout(this);
    layout->setSpacing(6);
    const auto add = [&](const FDTheme *theme, const QString &name) {
        auto *const button = new FDThemeButton(theme, name, this);
        connect(button, &QAbstractButton::clicked, this,
            [theme] { FDThemeProvider::setCurrent(theme); });
        layout->addWidget(button);
        return button;
    };
    m_systemButton = add(FDThemeProvider::system(), tr("System"));
    m_redButton = add(FDThemeProvider::red(), tr("Red"));
    m_greenButton = add(FDThemeProvider::green(), tr("Green"));
    m_blueButton = add(FDThemeProvider::blue(), tr("Blue"));
    m_sunsetButton = add(FDThemeProvider::sunset(), tr("Sunset"));
    m_nightButton = add(FDThemeProvider::night(), tr("Night"));
    if (!parent) {
        setWindowFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
        setAttribute(Qt::WA_TranslucentBackground);
        layout->setContentsMargins(12, 10, 12, 10);
    } else {
        layout->setContentsMargins(0, 0, 0, 0);
    }
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
}

FDThemePicker &FDThemePicker::shared()
{
    static FDThemePicker *const picker = new FDThemePicker(nullptr);
    return *picker;
}

void FDThemePicker::showRelativeTo(QWidget *anchor)
{
    adjustSize();
    const QPoint below = anchor->mapToGlobal(QPoint(anchor->width() / 2, anchor->height()));
    move(below.x() - width() / 2, below.y() + 4);
    show();
}

void FDThemePicker::onThemeChanged()
{
    update();
    for (FDThemeButton *button :
        { m_systemButton, m_redButton, m_greenButton, m_blueButton, m_sunsetButton, m_nightButton })
        button->update();
}

void FDThemePicker::paintEvent(QPaintEvent *)
{
    if (parentWidget())
        return;
    // The popup draws its own rounded panel, dark under a dark theme.
    const FDTheme *const theme = FDThemeProvider::current();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath panel;
    panel.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    painter.fillPath(panel, theme->isDark() ? FDTheme::white(0.16) : FDTheme::white(0.98));
    painter.setPen(QPen(theme->isDark() ? FDTheme::white(0.3) : FDTheme::white(0.78), 1.0));
    painter.drawPath(panel);
}
