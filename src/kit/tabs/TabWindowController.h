#pragma once

// A tabbed main window: a tab strip above a toolbar area above the selected tab's view. It owns
// the TabStripModel, keeps the window in step with it (the view shown, the title, closing with
// the last tab), and keeps the list of open windows. Subclasses override the hooks. Make
// controllers with create<T>(), which runs commonInit at once; one made with new runs it at its
// first show, first tab or first use of its toolbar controller. Main thread only.

#include "TabStripModelDelegate.h"
#include "TabStripModelObserver.h"

#include <QList>
#include <QMainWindow>

#include <memory>

class ContentsToolbarController;
class QAction;
class QStackedWidget;
class QTimer;
class TabContents;
class TabStripModel;
class TabStripView;
class UndoManager;

class TabWindowController : public QMainWindow,
                            protected TabStripModelObserver,
                            private TabStripModelDelegate
{
    Q_OBJECT

public:
    // The window deletes itself once closed.
    explicit TabWindowController(QWidget *parent = nullptr);
    ~TabWindowController() override;

    // Constructs a controller and runs its commonInit.
    template <class T, class... Args> static T *create(Args &&...args)
    {
        auto *controller = new T(std::forward<Args>(args)...);
        controller->ensureCommonInit();
        return controller;
    }

    // Open windows, in the order they were made; a closed window leaves the list.
    static QList<TabWindowController *> allControllers();
    // The open window activated most recently (or, before any activation, shown most recently).
    static TabWindowController *main();
    // The controller whose window holds view, or whose tab has view as its view.
    static TabWindowController *fromView(const QWidget *view);
    // The undo manager of the window that holds view, or null for a view in no window.
    static UndoManager *undoManagerForView(const QWidget *view);

    TabStripModel *tabStripModel();
    TabStripView *tabStripView();
    ContentsToolbarController *contentsToolbarController();
    // The one undo manager of the window, shared by the views of all its tabs; it lives as
    // long as the window.
    UndoManager *undoManager();
    // The window's key bindings for tab switching (Ctrl+Tab, Ctrl+PgDown; Ctrl+Shift+Tab,
    // Ctrl+PgUp). A menu shows these actions rather than binding the same keys a second time,
    // which would make both bindings ambiguous and dead.
    QAction *selectNextTabAction();
    QAction *selectPreviousTabAction();
    QMainWindow *window() const { return const_cast<TabWindowController *>(this); }

    // Remembers the window frame in the user defaults under "TabWindowFrame " + name, and moves
    // the window to the frame remembered there, if any.
    void setWindowFrameAutosaveName(const QString &name);
    QString windowFrameAutosaveName() const { return m_frameAutosaveName; }

    // Runs commonInit if it has not run yet.
    void ensureCommonInit();

    // Overridable operations.
    // Asked at every close of the window except the one that follows its last tab's close: by
    // default each tab's shouldClose, in order, stopping at the first refusal. The tabs still
    // open afterwards close without asking.
    virtual bool windowShouldClose(QWidget *sender);
    // Asked before the tab at index closes: by default its shouldClose.
    virtual bool shouldCloseContentsAt(int index);
    // After the selected tab changed; the base shows the new tab's toolbar.
    virtual void tabSelectedWithContents(
        TabContents *newContents, TabContents *previousContents, int index, bool userGesture);
    // After contents took the place of the tab at index; the base refreshes the toolbar when the
    // tab is the selected one.
    virtual void tabReplacedWithContents(TabContents *contents, int index);
    // The tab the new-tab button and the keyboard open; null (the default) opens nothing.
    virtual std::unique_ptr<TabContents> createBlankTabContents();
    // Makes the toolbar controller, once, during commonInit.
    virtual std::unique_ptr<ContentsToolbarController> createToolbarController();
    // A new empty window for a tab dragged out of this one; null (the default) keeps the tab.
    virtual TabWindowController *createWindowForDetachedTab();

    // Takes a tab from another window at index (clamped), selected, and brings the window up.
    void adoptTabContents(std::unique_ptr<TabContents> contents, int index);
    // A tab let go at globalPos away from the strip: into the window under it, else into a new
    // window there. A window's only tab moves its window instead.
    void moveTabOut(TabContents *contents, QPoint globalPos);

protected:
    // Builds the toolbar area and the key bindings. An override calls the base first.
    virtual void commonInit();

    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

    // TabStripModelObserver
    void tabInsertedAt(TabContents *contents, int index, bool foreground) override;
    void tabDetachedAt(TabContents *contents, int index) override;
    void tabSelectedAt(
        TabContents *oldContents, TabContents *newContents, int index, bool userGesture) override;
    void tabChangedAt(TabContents *contents, int index, TabChangeType change) override;
    void tabReplacedAt(TabContents *oldContents, TabContents *newContents, int index) override;
    void tabStripEmpty() override;

private:
    // TabStripModelDelegate
    bool canCloseContentsAt(int index) override;

    void openBlankTab();
    void updateWindowTitle();
    void updateColors();
    void scheduleFrameSave();
    void saveFrame();
    void forgetWindow();

    std::unique_ptr<TabStripModel> m_model;
    TabStripView *m_stripView = nullptr;
    QWidget *m_toolbarSlot = nullptr;
    QStackedWidget *m_contentsArea = nullptr;
    // Shown in the contents area while no tab is selected.
    QWidget *m_noSelectionView = nullptr;
    ContentsToolbarController *m_toolbarController = nullptr;
    UndoManager *m_undoManager = nullptr;
    QTimer *m_frameSaveTimer = nullptr;
    QAction *m_selectNextTabAction = nullptr;
    QAction *m_selectPreviousTabAction = nullptr;
    QString m_frameAutosaveName;
    bool m_didCommonInit = false;
    // True from the moment the window starts closing; an emptied strip then closes nothing.
    bool m_isClosing = false;
    bool m_closesWithoutAsking = false;
    bool m_isRestoringFrame = false;
};
