#pragma once

// The application service: receives the launch and the files to open, decides what the first
// window shows, saves and restores the open windows and tabs, and arbitrates quitting with the
// background saving of documents. Exactly one exists, made by main. Main thread only.

#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>

class FDSingleInstance;
class QTimer;
struct Notification;

class GlobalService : public QObject
{
    Q_OBJECT

public:
    enum TerminateReply { TerminateCancel, TerminateNow };

    static inline const QString kLOW_IsNewTab = QStringLiteral("IsNewTab");
    static inline const QString kLOW_SplitMode = QStringLiteral("SplitMode");
    static inline const QString kLOW_URLs = QStringLiteral("URLs");
    static inline const QString kLOW_Tabs = QStringLiteral("Tabs");
    static inline const QString kLOW_SelectedIndex = QStringLiteral("SelectedIndex");
    static inline const QString kLOW_Frame = QStringLiteral("Frame");

    // Period of the save of the window list, in seconds.
    static constexpr double savingInterval = 5.0;
    // Delay between the repeats of the termination question while saves run, in seconds.
    static constexpr double terminationPollInterval = 0.2;
    // Longest wait for the first screen before the window icon is looked up, in milliseconds.
    static constexpr int windowIconLatestDelay = 1500;

    // paths: the files named on the command line.
    explicit GlobalService(const QStringList &paths = {}, QObject *parent = nullptr);
    // The launch's files go to a new window of the running Folidoc (--new-window).
    void setLaunchInNewWindow(bool newWindow) { m_launchInNewWindow = newWindow; }
    ~GlobalService() override;

    // The one service, or null before main made it.
    static GlobalService *shared();
    // Raises the window-list flag of the service, if there is one.
    static void noteOpenedWindowsChanged();

    // Hands the paths to a running Folidoc and answers 0, or becomes the running one and runs the
    // event loop to its end.
    int run();
    // The first half of run(): true when a running Folidoc took the paths; otherwise this
    // process now receives the paths of later launches, and keeps its own for the launch. A path
    // that can't be opened is named on standard error, with the reason, and still handed on, so
    // that the window shows its alert.
    bool handOverOrListen();

    void applicationDidFinishLaunching();
    bool openFile(const QString &path);
    void openFiles(const QStringList &paths);
    // A new window with a tab for each path (a start tab when none could be made).
    void openFilesInNewWindow(const QStringList &paths);
    TerminateReply applicationShouldTerminate();
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    // Asks the termination question and quits the event loop on "now".
    void terminate();
    // Replaces the quitting of the event loop, so that a test sees the process decide to end.
    void setQuitHandlerForTesting(std::function<void()> handler);

    void saveLastOpenedWindows();
    void saveLastOpenedWindowsPeriodically();
    bool restoreLastOpenedWindows();
    void onWindowShouldClose(const Notification &notification);
    // A window is about to close its tabs and itself. When it is the last one and the person
    // closes it (not Quit, which stored the list already), that is how people quit here: the
    // list is stored now, while its tabs are still there, as Quit stores it.
    void windowWillCloseByUser(const QObject *window);

    void onNew();
    void onShowPrefWindow();
    void showAboutDialog();
    // The application's menu commands ("onNew:", "onShowPrefWindow:", "showAboutDialog:",
    // "terminate:").
    void performCommand(const QString &command);

    bool openedWindowsChanged() const { return m_openedWindowsChanged; }
    // Dropped while terminating or restoring.
    void setOpenedWindowsChanged(bool changed);
    bool isTerminating() const { return m_isTerminating; }
    bool isClosingWindowByUser() const { return m_isClosingWindowByUser; }
    bool restoringLastOpenedWindows() const { return m_restoringLastOpenedWindows; }
    QStringList pendingOpenFileNames() const { return m_pendingOpenFileNames; }
    QTimer *lastOpenedWindowsSavingTimer() const { return m_lastOpenedWindowsSavingTimer; }
    bool didFinishLaunching() const { return m_didFinishLaunching; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static void complainAbout(const QString &path, const QString &problem);
    void createFirstContent();
    void setWindowIconAfterFirstScreen();
    void restoreWindow(const QVariantMap &record);
    void watchForLastWindow();

    QTimer *m_lastOpenedWindowsSavingTimer = nullptr;
    bool m_openedWindowsChanged = false;
    bool m_restoringLastOpenedWindows = false;
    bool m_isTerminating = false;
    bool m_isClosingWindowByUser = true;
    bool m_didFinishLaunching = false;
    QStringList m_pendingOpenFileNames;
    QStringList m_launchPaths;
    // Launch files the system could read; a terminal hears why one of them fails to open.
    QList<QUrl> m_launchURLsToDiagnose;
    bool m_launchInNewWindow = false;
    FDSingleInstance *m_singleInstance = nullptr;
    std::function<void()> m_quitHandler;
};
