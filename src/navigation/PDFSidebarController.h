#pragma once

// Runs a document tab's sidebar: the column of tab buttons, the title line with the marker of
// the split view it follows, and the area that shows the tab in front. A tab is made when it is
// first shown or asked for, and from then on follows the tab's selected view while hidden. The
// tab in front changes only through the tab's "PDFContents_SidebarModeDidChange", a click
// included. Main thread only.

#include "PDFSidebarTabContentsDelegate.h"

#include <app/PDFContents.h>
#include <appearance/PDFContentsBar.h>

#include <QHash>
#include <QPointer>

#include <functional>

class FDVerticalTabBar;
class PDFSidebarTabContents;
class QAbstractButton;
class QLabel;
class QStackedWidget;

class PDFSidebarController : public PDFContentsBar, public PDFSidebarTabContentsDelegate
{
    Q_OBJECT

public:
    using TabContentsMaker = std::function<PDFSidebarTabContents *()>;

    explicit PDFSidebarController(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFSidebarController() override;

    // The maker of a mode's tab for the sidebars made from now on; a later maker replaces an
    // earlier one. Without one, a mode gets a tab that shows nothing but its title.
    static void setTabContentsMaker(PDFSidebarMode mode, TabContentsMaker maker);

    FDVerticalTabBar *tabBar() const { return m_tabBar; }
    QLabel *titleTextField() const { return m_titleTextField; }
    QLabel *indicatorIconView() const { return m_indicatorIconView; }
    QAbstractButton *tabButton(PDFSidebarMode mode) const { return m_tabButtons.value(mode); }
    // A mode's tab, made now if it was not yet.
    PDFSidebarTabContents *controller(PDFSidebarMode mode);
    // A mode's tab if it was made; null while it has never been shown or asked for.
    PDFSidebarTabContents *madeController(PDFSidebarMode mode) const
    {
        return m_controllers.value(mode);
    }
    // The tab of the tab's mode, made now if it was not yet.
    PDFSidebarTabContents *currentController();

    void updateSidebarTitleWithController(PDFSidebarTabContents *controller) override;

protected:
    // The tab buttons' pictures, the marker and the colours, at each theme change.
    void refreshIcons() override;
    void paintEvent(QPaintEvent *event) override;
    // The tab in front and the pictures are made at the first showing.
    void showEvent(QShowEvent *event) override;

private:
    void showCurrentController();
    void onTabBarButtonClickedWithButton(QAbstractButton *button);
    void onSidebarModeChanged();
    void updateIndicator();

    FDVerticalTabBar *m_tabBar = nullptr;
    QLabel *m_titleTextField = nullptr;
    QLabel *m_indicatorIconView = nullptr;
    QStackedWidget *m_tabContentsArea = nullptr;
    QHash<PDFSidebarMode, QAbstractButton *> m_tabButtons;
    QHash<PDFSidebarMode, PDFSidebarTabContents *> m_controllers;
    QPointer<QAbstractButton> m_selectedTabButton;
    bool m_iconsDrawn = false;
};
