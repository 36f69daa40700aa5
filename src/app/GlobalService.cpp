#include "GlobalService.h"

#include "Alert.h"
#include "FDCommandLine.h"
#include "FDContents.h"
#include "FDDefaults.h"
#include "FDFileDiagnosis.h"
#include "FDSingleInstance.h"
#include "PDFContents.h"
#include "PDFWindowController.h"
#include "PrefWindowController.h"

#include <appearance/NSImage+XExtensions.h>
#include <document/Common.h>
#include <document/PDFSavingService.h>
#include <kit/base/Geometry.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFEngineInfo.h>
#include <kit/tabs/TabStripModel.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QIcon>
#include <QPointer>
#include <QTimer>

namespace {

GlobalService *sharedService = nullptr;

// One file has one URL, however its path was spelt: links and ".." are resolved when it exists.
QUrl fileURLForPath(const QString &path)
{
    const QFileInfo file(path);
    const QString canonical = file.canonicalFilePath();
    return QUrl::fromLocalFile(canonical.isEmpty() ? file.absoluteFilePath() : canonical);
}

QString instanceName()
{
    // A test or a second installation can keep to a socket of its own.
    const QString name = qEnvironmentVariable("FOLIDOC_INSTANCE_NAME");
    return name.isEmpty() ? FDSingleInstance::defaultServerName() : name;
}

} // namespace

GlobalService::GlobalService(const QStringList &paths, QObject *parent)
    : QObject(parent)
    , m_launchPaths(paths)
{
    if (sharedService)
        qFatal("GlobalService exists once per process");
    sharedService = this;
    QApplication::setApplicationName(QStringLiteral("Folidoc"));
    QApplication::setApplicationDisplayName(QStringLiteral("Folidoc"));
    QApplication::setDesktopFileName(QStringLiteral("org.folidoc.Folidoc"));
    // Quitting goes through the termination question, which may have saves to wait for.
    QApplication::setQuitOnLastWindowClosed(false);
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::lastWindowClosed, this, [this] {
        if (applicationShouldTerminateAfterLastWindowClosed() && !m_isTerminating)
            terminate();
    });
}

GlobalService::~GlobalService()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    if (sharedService == this)
        sharedService = nullptr;
}

GlobalService *GlobalService::shared()
{
    return sharedService;
}

void GlobalService::noteOpenedWindowsChanged()
{
    if (sharedService)
        sharedService->setOpenedWindowsChanged(true);
}

void GlobalService::setOpenedWindowsChanged(bool changed)
{
    if (!m_isTerminating && !m_restoringLastOpenedWindows)
        m_openedWindowsChanged = changed;
}

int GlobalService::run()
{
    if (handOverOrListen())
        return 0;
    QTimer::singleShot(0, this, &GlobalService::applicationDidFinishLaunching);
    return QApplication::exec();
}

bool GlobalService::handOverOrListen()
{
    QStringList paths;
    QStringList readable;
    for (const QString &path : std::as_const(m_launchPaths)) {
        paths << QFileInfo(path).absoluteFilePath();
        // The terminal that started the launch hears why, whichever process shows the alert.
        const QString problem = FDFileDiagnosis::problemBeforeReading(paths.last());
        if (problem.isEmpty())
            readable << paths.last();
        else
            complainAbout(paths.last(), problem);
    }
    m_singleInstance = new FDSingleInstance(instanceName(), this);
    if (m_singleInstance->forwardToRunningInstance({ paths, m_launchInNewWindow })) {
        for (const QString &path : std::as_const(readable))
            complainAbout(path, FDFileDiagnosis::problemWithFile(path));
        return true;
    }
    // Here the contents are read once, by the tab that opens the file, and only a failure there
    // is explained: reading a long document twice would hold back its first screen.
    for (const QString &path : std::as_const(readable))
        m_launchURLsToDiagnose << fileURLForPath(path);
    if (!m_launchURLsToDiagnose.isEmpty()) {
        NotificationCenter::defaultCenter().addObserver(this,
            FDPDFView::DocumentDidFailToOpenNotification, nullptr,
            [this](const Notification &notification) {
                const QUrl url = notification.userInfo.value(QStringLiteral("URL")).toUrl();
                if (m_launchURLsToDiagnose.removeAll(url) > 0)
                    complainAbout(
                        url.toLocalFile(), FDFileDiagnosis::problemWithFile(url.toLocalFile()));
            });
    }
    m_singleInstance->listen([this](const FDSingleInstance::Request &request) {
        auto *const main = qobject_cast<PDFWindowController *>(TabWindowController::main());
        if (request.newWindow && m_didFinishLaunching)
            openFilesInNewWindow(request.paths);
        else if (!request.paths.isEmpty())
            openFiles(request.paths);
        else if (main)
            main->makeKeyAndOrderFront();
    });
    openFiles(paths);
    return false;
}

void GlobalService::complainAbout(const QString &path, const QString &problem)
{
    if (!problem.isEmpty())
        FDCommandLine::complain(QStringLiteral("%1: %2").arg(path, problem));
}

void GlobalService::openFilesInNewWindow(const QStringList &paths)
{
    auto *const window = TabWindowController::create<PDFWindowController>();
    for (const QString &path : paths)
        window->openPDFDocumentWithURL(fileURLForPath(path), true, true);
    if (window->tabStripModel()->count() == 0)
        window->openNewTab();
    window->makeKeyAndOrderFront();
}

bool GlobalService::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FileOpen) {
        openFile(static_cast<QFileOpenEvent *>(event)->file());
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void GlobalService::applicationDidFinishLaunching()
{
    if (m_didFinishLaunching)
        return;
    m_didFinishLaunching = true;
    // Cursors and note pictures are asked for from the first window on.
    makeImages();
    NotificationCenter::defaultCenter().addObserver(this,
        PDFWindowController::ShouldCloseNotification, nullptr,
        [this](const Notification &notification) { onWindowShouldClose(notification); });
    PDFSavingService::shared().start();
    FDDefaults::registerDefaults();
    FDDefaults::migrateDefaultsFromOlderVersion();
    createFirstContent();
    setWindowIconAfterFirstScreen();
    m_lastOpenedWindowsSavingTimer = new QTimer(this);
    m_lastOpenedWindowsSavingTimer->setInterval(int(savingInterval * 1000));
    connect(m_lastOpenedWindowsSavingTimer, &QTimer::timeout, this,
        &GlobalService::saveLastOpenedWindowsPeriodically);
    m_lastOpenedWindowsSavingTimer->start();
}

void GlobalService::createFirstContent()
{
    if (!m_pendingOpenFileNames.isEmpty()) {
        auto *const window = TabWindowController::create<PDFWindowController>();
        for (const QString &path : std::as_const(m_pendingOpenFileNames))
            window->openPDFDocumentWithURL(fileURLForPath(path), true, true);
        // A window never stands empty, also when no file could become a tab.
        if (window->tabStripModel()->count() == 0)
            window->openNewTab();
        window->show();
        return;
    }
    if (FDDefaults::launchWith() == FDLaunchWith::lastOpenedWindows && restoreLastOpenedWindows()
        && !TabWindowController::allControllers().isEmpty()
        && TabWindowController::allControllers().first()->tabStripModel()->count() > 0)
        return;
    auto *const window = TabWindowController::create<PDFWindowController>();
    window->show();
    window->openNewTab();
}

void GlobalService::setWindowIconAfterFirstScreen()
{
    // The installed icon of the desktop's theme, else the copy inside the program. Finding it
    // reads the icon themes' indexes, so it waits until the first screen of the first document
    // is drawn, or a moment when there is none.
    const auto setIcon = [] {
        static bool set = false;
        if (std::exchange(set, true))
            return;
        QApplication::setWindowIcon(QIcon::fromTheme(
            QStringLiteral("org.folidoc.Folidoc"), QIcon(QStringLiteral(":/icons/folidoc.svg"))));
    };
    const QList<TabWindowController *> windows = TabWindowController::allControllers();
    TabStripModel *const tabs = windows.isEmpty() ? nullptr : windows.first()->tabStripModel();
    const auto *const contents = tabs && tabs->selectedIndex() >= 0
        ? qobject_cast<PDFContents *>(tabs->getTabContentsAtIndex(tabs->selectedIndex()))
        : nullptr;
    if (FDPDFView *const view = contents ? contents->selectedPDFView() : nullptr) {
        connect(
            view, &PDFView::visibleAreaRendered, this, [setIcon] { MainQueue::async(setIcon); },
            Qt::SingleShotConnection);
    }
    QTimer::singleShot(windowIconLatestDelay, this, setIcon);
}

bool GlobalService::openFile(const QString &path)
{
    if (auto *const main = qobject_cast<PDFWindowController *>(TabWindowController::main()))
        main->openPDFDocumentWithURL(fileURLForPath(path), true, true);
    else
        m_pendingOpenFileNames.append(path);
    return true;
}

void GlobalService::openFiles(const QStringList &paths)
{
    for (const QString &path : paths)
        openFile(path);
}

void GlobalService::saveLastOpenedWindows()
{
    QVariantList others;
    QVariantList mainList;
    TabWindowController *const mainWindow = TabWindowController::main();
    const QList<TabWindowController *> controllers = TabWindowController::allControllers();
    for (TabWindowController *controller : controllers) {
        TabStripModel *const model = controller->tabStripModel();
        QVariantList tabs;
        for (int index = 0; index < model->count(); ++index) {
            const auto *const contents
                = qobject_cast<const FDContents *>(model->getTabContentsAtIndex(index));
            const QVariantMap record
                = contents ? contents->lastOpenedWindowsRecord() : QVariantMap();
            if (!record.isEmpty())
                tabs.append(record);
        }
        const QVariantMap window {
            { kLOW_Tabs, tabs },
            { kLOW_SelectedIndex, qint64(model->selectedIndex()) },
            { kLOW_Frame, Geometry::stringFromRect(QRectF(controller->geometry())) },
        };
        (controller == mainWindow ? mainList : others).append(window);
    }
    others.append(mainList);
    UserDefaults::standard().setObject(others, FDDefaults::LastOpenedWindows);
}

void GlobalService::saveLastOpenedWindowsPeriodically()
{
    if (m_openedWindowsChanged && !m_isTerminating && !m_restoringLastOpenedWindows)
        saveLastOpenedWindows();
}

bool GlobalService::restoreLastOpenedWindows()
{
    m_restoringLastOpenedWindows = true;
    const QVariantList windows
        = UserDefaults::standard().arrayForKey(FDDefaults::LastOpenedWindows);
    const bool wellFormed = !windows.isEmpty()
        && std::all_of(windows.begin(), windows.end(), [](const QVariant &window) {
               return window.metaType().id() == QMetaType::QVariantMap;
           });
    if (wellFormed) {
        for (const QVariant &window : windows)
            restoreWindow(window.toMap());
    }
    m_restoringLastOpenedWindows = false;
    return wellFormed;
}

void GlobalService::restoreWindow(const QVariantMap &record)
{
    auto *const window = TabWindowController::create<PDFWindowController>();
    TabStripModel *const model = window->tabStripModel();
    // Split modes wait for the window's frame: a split laid out in a default frame would keep
    // the wrong proportions.
    QList<std::pair<QPointer<PDFContents>, PDFSplitViewMode>> pendingSplitModes;
    const QVariantList tabs = record.value(kLOW_Tabs).toList();
    for (const QVariant &tabValue : tabs) {
        const QVariantMap tab = tabValue.toMap();
        if (tab.value(kLOW_IsNewTab).toBool()) {
            window->openNewTab();
            continue;
        }
        const QVariant stored = tab.value(kLOW_URLs);
        if (stored.metaType().id() != QMetaType::QVariantList)
            continue;
        const QVariantList datas = stored.toList();
        if (!std::all_of(datas.begin(), datas.end(),
                [](const QVariant &data) { return data.metaType().id() == QMetaType::QByteArray; }))
            continue;
        const QList<QUrl> urls = FDDecodeURLs(stored);
        if (urls.isEmpty() || PDFWindowController::selectContentsBy(urls.first()))
            continue;
        // Opened in the background: the document is read when its tab is first shown.
        auto *const contents = qobject_cast<PDFContents *>(
            window->openPDFDocumentWithURL(urls.first(), false, false));
        if (!contents)
            continue;
        const QVariant splitMode = tab.value(kLOW_SplitMode);
        const qint64 mode = splitMode.toLongLong();
        if (!splitMode.isValid() || mode < 0 || mode >= 3)
            continue;
        pendingSplitModes.append({ contents, PDFSplitViewMode(mode) });
        if (mode != 0 && urls.size() >= 2 && contents->secondaryPDFView())
            contents->secondaryPDFView()->loadDocument(urls.last());
    }

    const qint64 selected = record.value(kLOW_SelectedIndex, -1).toLongLong();
    if (selected >= 0 && selected < model->count())
        model->selectTabContentsAt(int(selected), true);
    if (model->count() == 0)
        window->openNewTab();
    if (model->selectedIndex() < 0)
        model->selectTabContentsAt(0, true);

    const QString frame = record.value(kLOW_Frame).toString();
    if (frame.isEmpty()) {
        window->show();
        return;
    }
    const QRect rect = Geometry::rectFromString(frame).toRect();
    QPointer<PDFWindowController> guarded(window);
    MainQueue::async(window, [guarded, rect, pendingSplitModes] {
        if (!guarded)
            return;
        if (rect.width() > 0 && rect.height() > 0)
            guarded->setGeometry(rect);
        for (const auto &[contents, mode] : pendingSplitModes) {
            if (contents)
                contents->setSplitMode(mode);
        }
        guarded->show();
    });
}

void GlobalService::onWindowShouldClose(const Notification &notification)
{
    if (!m_isClosingWindowByUser || TabWindowController::allControllers().size() > 1)
        return;
    // A window that has closed its tabs on its way out stored the list before they went.
    for (TabWindowController *controller : TabWindowController::allControllers()) {
        if (controller == notification.sender && controller->tabStripModel()->isEmpty())
            return;
    }
    saveLastOpenedWindows();
}

void GlobalService::windowWillCloseByUser(const QObject *window)
{
    const QList<TabWindowController *> controllers = TabWindowController::allControllers();
    if (m_isClosingWindowByUser && !m_isTerminating && controllers.size() == 1
        && controllers.first() == window)
        saveLastOpenedWindows();
}

GlobalService::TerminateReply GlobalService::applicationShouldTerminate()
{
    m_isTerminating = true;
    if (PrefWindowController *const preferences = PrefWindowController::sharedIfMade())
        preferences->performCloseTabAction();

    QList<QPointer<TabWindowController>> controllers;
    for (TabWindowController *controller : TabWindowController::allControllers())
        controllers.append(controller);
    if (!controllers.isEmpty()) {
        saveLastOpenedWindows();
        m_isClosingWindowByUser = false;
        for (const QPointer<TabWindowController> &controller : std::as_const(controllers)) {
            if (controller && !controller->windowShouldClose(nullptr)) {
                m_isTerminating = false;
                m_isClosingWindowByUser = true;
                return TerminateCancel;
            }
        }
        m_isClosingWindowByUser = true;
    }

    if (PDFSavingService::shared().numberOfTasks() > 0) {
        // Asked again five times a second until every save has ended.
        MainQueue::asyncAfter(terminationPollInterval, this, [this] { terminate(); });
        return TerminateCancel;
    }
    return TerminateNow;
}

void GlobalService::terminate()
{
    if (applicationShouldTerminate() != TerminateNow)
        return;
    for (TabWindowController *controller : TabWindowController::allControllers())
        controller->close();
    if (m_quitHandler)
        m_quitHandler();
    else
        QCoreApplication::quit();
}

void GlobalService::setQuitHandlerForTesting(std::function<void()> handler)
{
    m_quitHandler = std::move(handler);
}

void GlobalService::onNew()
{
    if (auto *const main = qobject_cast<PDFWindowController *>(TabWindowController::main()))
        main->openPDFDocumentWithURL(QUrl(), true, true);
}

void GlobalService::onShowPrefWindow()
{
    PrefWindowController::shared().showWindow();
}

void GlobalService::showAboutDialog()
{
    AlertRequest about;
    about.style = AlertRequest::Informational;
    about.messageText = QStringLiteral("Folidoc %1").arg(QStringLiteral(FOLIDOC_VERSION));
    about.informativeText
        = tr("Reads and annotates PDF documents.\n\n"
             "Licence: GNU Affero General Public License, version 3 or later.\n"
             "Qt %1, MuPDF %2")
              .arg(QString::fromLatin1(qVersion()), PDFEngineInfo::libraryVersion());
    Alert::runModal(about);
}

void GlobalService::performCommand(const QString &command)
{
    if (command == QLatin1String("onNew:"))
        onNew();
    else if (command == QLatin1String("onShowPrefWindow:"))
        onShowPrefWindow();
    else if (command == QLatin1String("showAboutDialog:"))
        showAboutDialog();
    else if (command == QLatin1String("terminate:"))
        terminate();
}
