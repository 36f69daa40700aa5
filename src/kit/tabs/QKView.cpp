#include "QKView.h"

#include "QKThemeProvider.h"

#include <kit/base/NotificationCenter.h>

#include <QEvent>

QKView::QKView(QWidget *parent)
    : QWidget(parent)
{
    NotificationCenter::qkCenter().addObserver(this, QKThemeProvider::QKThemeDidChangeNotification,
        nullptr, [this](const Notification &notification) {
            onThemeChanged(notification);
            update();
        });
}

void QKView::ensureViewInit()
{
    if (m_didViewInit)
        return;
    m_didViewInit = true;
    onViewInit();
}

void QKView::onThemeChanged(const Notification &notification)
{
    Q_UNUSED(notification);
}

bool QKView::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Polish:
        ensureViewInit();
        break;
    case QEvent::Show:
        ensureViewInit();
        onViewWillShow();
        break;
    case QEvent::Hide:
        onViewWillHide();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}
