#pragma once

// What screen readers see of a TabStripView: a page tab list whose children are the tabs (page
// tabs named by their titles, selectable) with their close buttons, and the new-tab button.
// Made by Qt's accessibility factory only while an assistive technology listens.

#include <QAccessibleWidget>

class TabStripView;

class TabStripAccessible : public QAccessibleWidget
{
public:
    explicit TabStripAccessible(TabStripView *strip);
    ~TabStripAccessible() override;

    // Installs the factory once; TabStripView calls it as it is made.
    static void registerFactory();

    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;

private:
    TabStripView *strip() const;
    // The child for a tab, made once and kept by Qt's registry until the strip goes.
    QAccessibleInterface *tabInterface(int index) const;

    mutable QHash<const QObject *, QAccessible::Id> m_tabIds;
    mutable QAccessible::Id m_newTabId = 0;
};
