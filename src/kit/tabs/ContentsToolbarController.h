#pragma once

// Runs the toolbar area of a tabbed window, between the tab strip and the contents: subclasses
// put the selected tab's toolbar into view(). The area never owns a toolbar it shows; the tab
// that made it does. Main thread only.

#include <QObject>
#include <QPointer>

class QWidget;
class TabContents;

class ContentsToolbarController : public QObject
{
    Q_OBJECT

public:
    explicit ContentsToolbarController(QObject *parent = nullptr);
    // Deletes the area if no window has taken it.
    ~ContentsToolbarController() override;

    // The area, painted in the theme's toolbar background; as tall as the toolbar it shows,
    // and of no height when it shows none.
    QWidget *view() const { return m_view; }

    // Called when contents became the selected tab (shouldRestoreState: another tab was
    // selected before) or took the selected tab's place. Does nothing by default.
    virtual void updateToolbarWithContents(TabContents *contents, bool shouldRestoreState);
    // Takes the current toolbar out of the area.
    virtual void removeCurrentToolbar();

protected:
    // Shows toolbar in the area in place of the current one, which is hidden and handed back to
    // no parent; null leaves the area empty.
    void setCurrentToolbar(QWidget *toolbar);
    QWidget *currentToolbar() const { return m_toolbar; }

private:
    QPointer<QWidget> m_view;
    QPointer<QWidget> m_toolbar;
};
