#pragma once

// A widget with a view life cycle: onViewInit once before it is first shown (or when asked),
// onViewWillShow and onViewWillHide as it is shown and hidden, and onThemeChanged whenever the
// frame theme changes (followed by a repaint). Main thread only.

#include <QWidget>

struct Notification;

class QKView : public QWidget
{
    Q_OBJECT

public:
    explicit QKView(QWidget *parent = nullptr);

    // Runs onViewInit now if it has not run yet.
    void ensureViewInit();

protected:
    virtual void onViewInit() { }
    virtual void onViewWillShow() { }
    virtual void onViewWillHide() { }
    virtual void onThemeChanged(const Notification &notification);

    bool event(QEvent *event) override;

private:
    bool m_didViewInit = false;
};
