#pragma once

// The base of every tab of Folidoc's windows: it carries the tab's toolbar and tells the
// application service when tabs come, go or are selected, so the list of open windows is saved
// again. Main thread only.

#include <kit/tabs/TabContents.h>

#include <QPointer>
#include <QVariantMap>
#include <QWidget>

class FDContents : public TabContents
{
    Q_OBJECT

public:
    explicit FDContents(QObject *parent = nullptr);
    ~FDContents() override;

    // Shown in the window's toolbar area while the tab is selected; null for none. Owned here.
    QWidget *toolbar() const { return m_toolbar; }
    void setToolbar(std::unique_ptr<QWidget> toolbar);

    // Whether closing the tab would ask the person about unsaved changes; none by default.
    virtual bool hasChangesToPromptUser() const { return false; }
    // The record under which the tab is stored in "LastOpenedWindows"; empty: not stored.
    virtual QVariantMap lastOpenedWindowsRecord() const { return {}; }

    void tabDidBecomeSelected() override;
    void destroy(TabStripModel *model) override;

private:
    QPointer<QWidget> m_toolbar;
};
