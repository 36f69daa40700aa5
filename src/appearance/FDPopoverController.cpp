#include "FDPopoverController.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr int Margin = 8;
constexpr int GapBelowAnchor = 4;

} // namespace

FDPopoverController::FDPopoverController()
    : QWidget(nullptr, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint)
{
    setObjectName(QStringLiteral("FDPopoverController"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

FDPopoverController &FDPopoverController::shared()
{
    static FDPopoverController *const controller = new FDPopoverController;
    return *controller;
}

void FDPopoverController::showContent(const Content &content, QWidget *anchor)
{
    if (isVisible())
        hide();
    finish();
    if (!content.widget || !anchor)
        return;
    m_content = content;
    m_contentGuard = content.widget;
    m_anchor = anchor;
    applyThemePalette();
    if (m_content.onWillShow)
        m_content.onWillShow();
    layout()->addWidget(content.widget);
    content.widget->show();
    place();
    show();
    content.widget->setFocus(Qt::PopupFocusReason);
}

void FDPopoverController::applyThemePalette()
{
    // Labels and buttons of the content read their text colour from here, so they stay legible
    // on the dark panel of the night theme.
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = QGuiApplication::palette();
    const QColor text = theme->isDark() ? FDTheme::white(0.92) : FDTheme::white(0.1);
    for (const QPalette::ColorRole role :
        { QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText })
        palette.setColor(role, role == QPalette::PlaceholderText ? FDTheme::white(0.5) : text);
    if (theme->isDark()) {
        palette.setColor(QPalette::Base, FDTheme::white(0.24));
        palette.setColor(QPalette::Button, FDTheme::white(0.28));
        palette.setColor(QPalette::Window, FDTheme::white(0.16));
    }
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::primaryColor));
    setPalette(palette);
}

void FDPopoverController::fitToContent()
{
    if (!isVisible())
        return;
    layout()->activate();
    place();
}

void FDPopoverController::place()
{
    layout()->activate();
    adjustSize();
    if (!m_anchor)
        return;
    const QPoint below
        = m_anchor->mapToGlobal(QPoint(m_anchor->width() / 2, m_anchor->height() + GapBelowAnchor));
    QPoint topLeft(below.x() - width() / 2, below.y());
    if (const QScreen *const screen = m_anchor->screen()) {
        const QRect area = screen->availableGeometry();
        topLeft.setX(qBound(area.left(), topLeft.x(), qMax(area.left(), area.right() - width())));
    }
    move(topLeft);
}

void FDPopoverController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FDPopoverController::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    finish();
}

void FDPopoverController::finish()
{
    // The hook may open another popover; the state is cleared first.
    const Content closing = m_content;
    const QPointer<QWidget> widget = m_contentGuard;
    m_content = {};
    m_contentGuard.clear();
    m_anchor.clear();
    if (widget) {
        layout()->removeWidget(widget);
        widget->hide();
        widget->setParent(nullptr);
    }
    if (closing.onClose)
        closing.onClose();
}

void FDPopoverController::paintEvent(QPaintEvent *)
{
    const FDTheme *const theme = FDThemeProvider::current();
    // A square panel: without a compositing window manager, round corners would show black.
    QPainter painter(this);
    painter.fillRect(rect(), theme->isDark() ? FDTheme::white(0.16) : FDTheme::white(0.98));
    painter.setPen(QPen(theme->isDark() ? FDTheme::white(0.3) : FDTheme::white(0.7), 1.0));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}
