#include "PDFContentsBar.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>

#include <QPainter>
#include <QToolButton>

PDFContentsBar::PDFContentsBar(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
{
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { applyTheme(); });
}

PDFContentsBar::~PDFContentsBar()
{
    NotificationCenter::qkCenter().removeObserver(this);
    NotificationCenter::defaultCenter().removeObserver(this);
}

QString PDFContentsBar::titleWithKey(const QString &title, const QKeySequence &key)
{
    if (key.isEmpty())
        return title;
    return QStringLiteral("%1 (%2)").arg(title, key.toString(QKeySequence::NativeText));
}

QColor PDFContentsBar::iconColor()
{
    const FDTheme *const theme = FDThemeProvider::current();
    return theme->isDark() ? FDTheme::white(0.88) : FDTheme::white(0.3);
}

QToolButton *PDFContentsBar::makeButton(
    const QString &title, const QKeySequence &key, bool checkable)
{
    auto *const button = new QToolButton(this);
    const QString name = titleWithKey(title, key);
    button->setToolTip(name);
    button->setAccessibleName(name);
    button->setAutoRaise(true);
    button->setCheckable(checkable);
    button->setIconSize(QSize(18, 18));
    button->setFixedSize(30, 28);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void PDFContentsBar::applyTheme()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QColor checked = theme->color(FDTheme::selectedBackgroundTintColor);
    checked.setAlphaF(theme->isDark() ? 0.45f : 0.25f);
    QColor hover = theme->isDark() ? FDTheme::white(1.0, 0.12) : FDTheme::white(0.0, 0.08);
    setStyleSheet(QStringLiteral("QToolButton { border: none; border-radius: 5px; padding: 2px; }"
                                 "QToolButton:hover { background: %1; }"
                                 "QToolButton:checked { background: %2; }"
                                 "QToolButton:disabled { background: transparent; }")
                      .arg(hover.name(QColor::HexArgb), checked.name(QColor::HexArgb)));
    refreshIcons();
    update();
}

void PDFContentsBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), FDThemeProvider::current()->color(FDTheme::toolbarBackgroundColor));
}
