#pragma once

// The one popup window every popover of the application shows in: it hangs below the button it
// was opened from, holds one content widget at a time, and closes on Escape, on a click outside
// or when another popover opens, running the close hook of the content each time. Main thread
// only.

#include <QPointer>
#include <QWidget>

#include <functional>

class FDPopoverController : public QWidget
{
    Q_OBJECT

public:
    // What the popover shows and when: onWillShow reads the present state before the content is
    // laid out; onClose runs once, however the popover goes away.
    struct Content
    {
        QWidget *widget = nullptr; // kept alive by its owner; reparented while shown
        std::function<void()> onWillShow;
        std::function<void()> onClose;
    };

    static FDPopoverController &shared();

    // Closes what is open, then shows content below the anchor, centred on it, kept on the
    // anchor's screen.
    void showContent(const Content &content, QWidget *anchor);
    // The content shown now; null when closed.
    QWidget *contentWidget() const { return m_content.widget; }
    QWidget *anchor() const { return m_anchor; }
    // Grows or shrinks the popup to the content's size hint, keeping its top centre.
    void fitToContent();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    FDPopoverController();
    void place();
    void finish();
    void applyThemePalette();

    Content m_content;
    QPointer<QWidget> m_contentGuard;
    QPointer<QWidget> m_anchor;
};
