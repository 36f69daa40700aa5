#include "TabWindowController.h"

#include "ContentsToolbarController.h"
#include "QKThemeProvider.h"
#include "TabContents.h"
#include "TabStripModel.h"
#include "TabStripView.h"

#include <kit/base/Geometry.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/base/UserDefaults.h>

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace {

// Open windows in the order they were made, and the same windows most recently activated first.
std::vector<TabWindowController *> &creationOrder()
{
    static std::vector<TabWindowController *> list;
    return list;
}

std::vector<TabWindowController *> &activationOrder()
{
    static std::vector<TabWindowController *> list;
    return list;
}

QString frameKey(const QString &name)
{
    return QStringLiteral("TabWindowFrame ") + name;
}

// A remembered frame that no screen shows any more comes back on the primary screen.
QRect onSomeScreen(const QRect &frame)
{
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        if (screen->availableGeometry().intersects(frame))
            return frame;
    }
    const QScreen *primary = QGuiApplication::primaryScreen();
    if (!primary)
        return frame;
    const QRect available = primary->availableGeometry();
    return QRect(available.topLeft(), frame.size().boundedTo(available.size()));
}

constexpr int kFrameSaveDelayMs = 300;

} // namespace

TabWindowController::TabWindowController(QWidget *parent)
    : QMainWindow(parent)
    , m_model(std::make_unique<TabStripModel>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_model->setDelegate(this);
    m_model->addObserver(this);

    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("TabWindowContentArea"));
    auto *column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_stripView = new TabStripView(m_model.get(), central);
    m_contentsArea = new QStackedWidget(central);
    m_contentsArea->setObjectName(QStringLiteral("TabContentsArea"));
    m_noSelectionView = new QWidget(m_contentsArea);
    m_contentsArea->addWidget(m_noSelectionView);
    column->addWidget(m_stripView);
    column->addWidget(m_contentsArea, 1);
    setCentralWidget(central);
    resize(960, 720);

    connect(
        m_stripView, &TabStripView::newTabButtonClicked, this, &TabWindowController::openBlankTab);
    connect(m_stripView, &TabStripView::tabDraggedOut, this, &TabWindowController::moveTabOut);

    m_frameSaveTimer = new QTimer(this);
    m_frameSaveTimer->setSingleShot(true);
    m_frameSaveTimer->setInterval(kFrameSaveDelayMs);
    connect(m_frameSaveTimer, &QTimer::timeout, this, &TabWindowController::saveFrame);

    NotificationCenter::qkCenter().addObserver(this, QKThemeProvider::QKThemeDidChangeNotification,
        nullptr, [this](const Notification &) { updateColors(); });
    updateColors();

    creationOrder().push_back(this);
}

TabWindowController::~TabWindowController()
{
    forgetWindow();
    // Tabs go while the window's widgets still exist, and without telling this half-destroyed
    // object about it.
    m_model->removeObserver(this);
    m_model->setDelegate(nullptr);
    m_model.reset();
}

QList<TabWindowController *> TabWindowController::allControllers()
{
    return QList<TabWindowController *>(creationOrder().begin(), creationOrder().end());
}

TabWindowController *TabWindowController::main()
{
    return activationOrder().empty() ? nullptr : activationOrder().front();
}

TabWindowController *TabWindowController::fromView(const QWidget *view)
{
    if (!view)
        return nullptr;
    for (const QWidget *w = view; w; w = w->parentWidget()) {
        if (auto *controller = qobject_cast<const TabWindowController *>(w))
            return const_cast<TabWindowController *>(controller);
    }
    // A tab's view that is not in its window at the moment.
    for (TabWindowController *controller : creationOrder()) {
        const TabStripModel &model = *controller->m_model;
        for (int i = 0; i < model.count(); ++i) {
            TabContents *contents = model.getTabContentsAtIndex(i);
            if (contents->isViewLoaded()
                && (contents->view() == view || contents->view()->isAncestorOf(view))) {
                return controller;
            }
        }
    }
    return nullptr;
}

UndoManager *TabWindowController::undoManagerForView(const QWidget *view)
{
    TabWindowController *const controller = fromView(view);
    return controller ? controller->undoManager() : nullptr;
}

UndoManager *TabWindowController::undoManager()
{
    if (!m_undoManager)
        m_undoManager = new UndoManager(this);
    return m_undoManager;
}

TabStripModel *TabWindowController::tabStripModel()
{
    return m_model.get();
}

TabStripView *TabWindowController::tabStripView()
{
    return m_stripView;
}

ContentsToolbarController *TabWindowController::contentsToolbarController()
{
    ensureCommonInit();
    return m_toolbarController;
}

void TabWindowController::ensureCommonInit()
{
    if (m_didCommonInit)
        return;
    m_didCommonInit = true;
    commonInit();
}

void TabWindowController::commonInit()
{
    std::unique_ptr<ContentsToolbarController> toolbar = createToolbarController();
    if (!toolbar)
        toolbar = std::make_unique<ContentsToolbarController>();
    toolbar->setParent(this);
    m_toolbarController = toolbar.release();
    if (QWidget *area = m_toolbarController->view()) {
        auto *column = static_cast<QVBoxLayout *>(centralWidget()->layout());
        column->insertWidget(1, area);
    }

    auto makeTabAction = [this](const QList<QKeySequence> &keys, void (TabStripModel::*select)()) {
        auto *action = new QAction(this);
        action->setShortcuts(keys);
        action->setShortcutContext(Qt::WindowShortcut);
        connect(action, &QAction::triggered, this, [this, select] { (m_model.get()->*select)(); });
        addAction(action);
        return action;
    };
    m_selectNextTabAction = makeTabAction(
        { QKeySequence(Qt::CTRL | Qt::Key_Tab), QKeySequence(Qt::CTRL | Qt::Key_PageDown) },
        &TabStripModel::selectNextTab);
    m_selectNextTabAction->setText(tr("Select Next Tab"));
    m_selectPreviousTabAction
        = makeTabAction({ QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab),
                            QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab),
                            QKeySequence(Qt::CTRL | Qt::Key_PageUp) },
            &TabStripModel::selectPreviousTab);
    m_selectPreviousTabAction->setText(tr("Select Previous Tab"));
}

QAction *TabWindowController::selectNextTabAction()
{
    ensureCommonInit();
    return m_selectNextTabAction;
}

QAction *TabWindowController::selectPreviousTabAction()
{
    ensureCommonInit();
    return m_selectPreviousTabAction;
}

std::unique_ptr<ContentsToolbarController> TabWindowController::createToolbarController()
{
    return std::make_unique<ContentsToolbarController>();
}

std::unique_ptr<TabContents> TabWindowController::createBlankTabContents()
{
    return nullptr;
}

void TabWindowController::openBlankTab()
{
    if (std::unique_ptr<TabContents> blank = createBlankTabContents())
        m_model->appendTabContents(std::move(blank), true);
}

bool TabWindowController::windowShouldClose(QWidget *sender)
{
    Q_UNUSED(sender);
    for (int i = 0; i < m_model->count(); ++i) {
        if (!shouldCloseContentsAt(i))
            return false;
    }
    return true;
}

bool TabWindowController::shouldCloseContentsAt(int index)
{
    TabContents *const contents = m_model->getTabContentsAtIndex(index);
    return !contents || contents->shouldClose();
}

bool TabWindowController::canCloseContentsAt(int index)
{
    return shouldCloseContentsAt(index);
}

void TabWindowController::tabSelectedWithContents(
    TabContents *newContents, TabContents *previousContents, int index, bool userGesture)
{
    Q_UNUSED(index);
    Q_UNUSED(userGesture);
    if (m_toolbarController)
        m_toolbarController->updateToolbarWithContents(newContents, previousContents != nullptr);
}

void TabWindowController::tabReplacedWithContents(TabContents *contents, int index)
{
    Q_UNUSED(contents);
    Q_UNUSED(index);
}

void TabWindowController::tabInsertedAt(TabContents *contents, int index, bool foreground)
{
    Q_UNUSED(foreground);
    Q_UNUSED(index);
    ensureCommonInit();
    // The stack's order does not matter: the selected tab's view is made current by identity.
    m_contentsArea->addWidget(contents->view());
    TabContents *const selected = m_model->getSelectedTabContents();
    m_contentsArea->setCurrentWidget(selected ? selected->view() : m_noSelectionView);
}

void TabWindowController::tabDetachedAt(TabContents *contents, int index)
{
    Q_UNUSED(index);
    if (contents->isViewLoaded()) {
        QWidget *view = contents->view();
        m_contentsArea->removeWidget(view);
        view->hide();
        view->setParent(nullptr);
    }
    if (m_model->selectedIndex() < 0)
        m_contentsArea->setCurrentWidget(m_noSelectionView);
    updateWindowTitle();
}

void TabWindowController::tabSelectedAt(
    TabContents *oldContents, TabContents *newContents, int index, bool userGesture)
{
    m_contentsArea->setCurrentWidget(newContents->view());
    updateWindowTitle();
    tabSelectedWithContents(newContents, oldContents, index, userGesture);
}

void TabWindowController::tabChangedAt(TabContents *contents, int index, TabChangeType change)
{
    Q_UNUSED(contents);
    if (change == TabChangeType::Title && index == m_model->selectedIndex())
        updateWindowTitle();
}

void TabWindowController::tabReplacedAt(
    TabContents *oldContents, TabContents *newContents, int index)
{
    m_contentsArea->addWidget(newContents->view());
    if (oldContents->isViewLoaded()) {
        QWidget *view = oldContents->view();
        m_contentsArea->removeWidget(view);
        view->hide();
        view->setParent(nullptr);
    }
    tabReplacedWithContents(newContents, index);
}

void TabWindowController::tabStripEmpty()
{
    if (m_toolbarController)
        m_toolbarController->removeCurrentToolbar();
    updateWindowTitle();
    if (!m_isClosing) {
        m_isClosing = true;
        m_closesWithoutAsking = true;
        close();
    }
}

void TabWindowController::updateWindowTitle()
{
    const TabContents *selected = m_model ? m_model->getSelectedTabContents() : nullptr;
    setWindowTitle(selected ? selected->title() : QString());
}

void TabWindowController::updateColors()
{
    const QKTheme &theme = QKThemeProvider::sharedInstance().current();
    QPalette palette = m_contentsArea->palette();
    palette.setColor(QPalette::Window, theme.windowBackgroundColor());
    palette.setColor(QPalette::WindowText, theme.color(QKTheme::WindowText));
    m_contentsArea->setPalette(palette);
    m_contentsArea->setAutoFillBackground(true);
}

bool TabWindowController::event(QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
        if (event->type() == QEvent::Show)
            ensureCommonInit();
        auto &order = activationOrder();
        if (!m_isClosing && (order.empty() || order.front() != this)) {
            std::erase(order, this);
            order.insert(order.begin(), this);
        }
    }
    return QMainWindow::event(event);
}

void TabWindowController::closeEvent(QCloseEvent *event)
{
    // A window whose last tab just closed goes without asking: there is nobody left to ask.
    if (!m_closesWithoutAsking) {
        const bool wasClosing = m_isClosing;
        m_isClosing = true;
        if (!windowShouldClose(this)) {
            m_isClosing = wasClosing;
            event->ignore();
            return;
        }
    }
    m_isClosing = true;
    if (!m_model->isEmpty())
        m_model->closeAllTabs();
    saveFrame();
    forgetWindow();
    QMainWindow::closeEvent(event);
    event->accept();
}

void TabWindowController::forgetWindow()
{
    std::erase(creationOrder(), this);
    std::erase(activationOrder(), this);
}

void TabWindowController::setWindowFrameAutosaveName(const QString &name)
{
    m_frameAutosaveName = name;
    if (name.isEmpty())
        return;
    const QRect stored
        = Geometry::rectFromString(UserDefaults::standard().stringForKey(frameKey(name))).toRect();
    if (stored.width() > 0 && stored.height() > 0) {
        m_isRestoringFrame = true;
        setGeometry(onSomeScreen(stored));
        m_isRestoringFrame = false;
    } else {
        // Written a moment later like any move: writing the preference file waits for the disk,
        // which the window's first screen must not.
        scheduleFrameSave();
    }
}

void TabWindowController::moveEvent(QMoveEvent *event)
{
    QMainWindow::moveEvent(event);
    scheduleFrameSave();
}

void TabWindowController::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    scheduleFrameSave();
}

void TabWindowController::scheduleFrameSave()
{
    if (!m_frameAutosaveName.isEmpty() && !m_isRestoringFrame)
        m_frameSaveTimer->start();
}

void TabWindowController::saveFrame()
{
    m_frameSaveTimer->stop();
    if (m_frameAutosaveName.isEmpty())
        return;
    // The normal frame, so that a maximised window comes back at its usual size.
    const QRect frame = isMaximized() || isFullScreen() ? normalGeometry() : geometry();
    UserDefaults::standard().setObject(
        Geometry::stringFromRect(QRectF(frame)), frameKey(m_frameAutosaveName));
}

TabWindowController *TabWindowController::createWindowForDetachedTab()
{
    return nullptr;
}

void TabWindowController::adoptTabContents(std::unique_ptr<TabContents> contents, int index)
{
    ensureCommonInit();
    const int at = std::clamp(index, 0, m_model->count());
    m_model->insertTabContentsAt(at, std::move(contents), true);
    raise();
    activateWindow();
}

void TabWindowController::moveTabOut(TabContents *contents, QPoint globalPos)
{
    const int index = m_model->getIndexOfTabContents(contents);
    if (index < 0)
        return;
    // Over another window: the tab joins its strip where it was let go.
    const QList<TabWindowController *> windows = allControllers();
    for (auto it = windows.crbegin(); it != windows.crend(); ++it) {
        TabWindowController *const other = *it;
        if (other == this || !other->isVisible() || !other->frameGeometry().contains(globalPos))
            continue;
        other->ensureCommonInit();
        const int at
            = other->m_stripView->insertionIndexAt(other->m_stripView->mapFromGlobal(globalPos));
        // The same object moves: its document is never opened twice.
        other->adoptTabContents(m_model->detachTabContentsAt(index), at);
        return;
    }
    if (frameGeometry().contains(globalPos))
        return;
    // A window's only tab takes its window along.
    if (m_model->count() == 1) {
        move(globalPos - m_stripView->mapTo(this, QPoint(40, m_stripView->height() / 2)));
        return;
    }
    TabWindowController *const window = createWindowForDetachedTab();
    if (!window)
        return;
    window->ensureCommonInit();
    window->resize(size());
    window->move(globalPos - QPoint(40, m_stripView->height() / 2));
    window->adoptTabContents(m_model->detachTabContentsAt(index), 0);
    window->show();
}
