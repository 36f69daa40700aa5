#include "support/AppFixtures.h"
#include "support/AppTestEnvironment.h"

#include <app/FDCommandLine.h>
#include <app/FDDefaults.h>
#include <app/GlobalService.h>
#include <app/NewTabContents.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <app/PDFWindowMenus.h>
#include <document/Common.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/Geometry.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFPage.h>
#include <kit/tabs/TabStripModel.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

class GlobalServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        m_service = std::make_unique<GlobalService>();
    }

    void cleanup()
    {
        for (TabWindowController *window : windows()) {
            window->tabStripModel()->closeAllTabs();
            delete window;
        }
        // A closed document's reading position is still being written in the background.
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        m_service.reset();
    }

    void storedWindowsComeBackInTheirFrames()
    {
        const QString missing = QStringLiteral("/nonexistent/folder/gone.pdf");
        const QVariantMap skippedTab {
            { GlobalService::kLOW_IsNewTab, false }, { GlobalService::kLOW_SplitMode, 0 },
            { GlobalService::kLOW_URLs, FDEncodeURLs(QList<QUrl> { QUrl::fromLocalFile(missing) }) }
        };
        const QRect firstFrame(100, 120, 700, 500), secondFrame(50, 60, 640, 480);
        UserDefaults::standard().setObject(
            // The middle tab is selected: neither the first nor the last one opened.
            QVariantList { windowRecord({ startTabRecord(), startTabRecord(), startTabRecord() }, 1,
                               firstFrame),
                windowRecord({ skippedTab }, 0, secondFrame) },
            FDDefaults::LastOpenedWindows);

        QVERIFY(m_service->restoreLastOpenedWindows());
        QVERIFY(!m_service->restoringLastOpenedWindows());
        QCOMPARE(windows().size(), 2);
        TabStripModel *first = windows().at(0)->tabStripModel();
        QCOMPARE(first->count(), 3);
        QCOMPARE(first->selectedIndex(), 1);
        // Every tab of the second window was skipped: it comes back with a start tab.
        TabStripModel *second = windows().at(1)->tabStripModel();
        QCOMPARE(second->count(), 1);
        QVERIFY(qobject_cast<NewTabContents *>(second->getSelectedTabContents()));
        // The frames are set on the next turn, and the windows shown.
        QTRY_VERIFY(windows().at(1)->isVisible());
        QCOMPARE(windows().at(0)->geometry(), firstFrame);
        QCOMPARE(windows().at(1)->geometry(), secondFrame);
        // Restoring is no change of the window list.
        QVERIFY(!m_service->openedWindowsChanged());
    }

    void aBlankWindowWhenNothingIsRestored_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<bool>("launchWithNone");
        const QVariantMap window = windowRecord({ startTabRecord() }, 0, { 0, 0, 600, 400 });
        QTest::newRow("not a list") << QVariant(QStringLiteral("garbage")) << false;
        QTest::newRow("empty list") << QVariant(QVariantList {}) << false;
        QTest::newRow("a number among the windows")
            << QVariant(QVariantList { window, 7 }) << false;
        QTest::newRow("launch with none ignores the list") << QVariant(QVariantList {
            windowRecord({ startTabRecord(), startTabRecord() }, 0, { 0, 0, 600, 400 }), window })
                                                           << true;
    }

    void aBlankWindowWhenNothingIsRestored()
    {
        QFETCH(QVariant, stored);
        QFETCH(bool, launchWithNone);
        UserDefaults::standard().setObject(stored, FDDefaults::LastOpenedWindows);
        if (launchWithNone)
            UserDefaults::standard().setInteger(0, FDDefaults::LaunchWith);
        else
            QVERIFY(!m_service->restoreLastOpenedWindows());
        QVERIFY(windows().isEmpty());
        m_service->applicationDidFinishLaunching();
        QCOMPARE(windows().size(), 1);
        QCOMPARE(windows().first()->tabStripModel()->count(), 1);
        QVERIFY(qobject_cast<NewTabContents *>(
            windows().first()->tabStripModel()->getSelectedTabContents()));
        if (!launchWithNone) {
            QVERIFY(m_service->lastOpenedWindowsSavingTimer()->isActive());
            QCOMPARE(m_service->lastOpenedWindowsSavingTimer()->interval(), 5000);
        }
    }

    void savedListPutsTheMainWindowLast()
    {
        auto *first = TabWindowController::create<PDFWindowController>();
        first->openNewTab();
        first->openNewTab();
        first->openCompressTab(); // replaces the selected second start tab; it is stored by nobody
        auto *second = TabWindowController::create<PDFWindowController>();
        second->openNewTab();
        second->show();
        first->show(); // the window shown last is the main one
        QCOMPARE(TabWindowController::main(), first);

        m_service->saveLastOpenedWindows();
        const QVariantList stored = storedWindows();
        QCOMPARE(stored.size(), 2);
        const QVariantMap mainRecord = stored.at(1).toMap();
        QCOMPARE(
            mainRecord.value(GlobalService::kLOW_Tabs).toList(), QVariantList { startTabRecord() });
        // The selection counts the tab that wasn't stored: it may point past the stored tabs.
        QCOMPARE(mainRecord.value(GlobalService::kLOW_SelectedIndex).toInt(), 1);
        QCOMPARE(Geometry::rectFromString(mainRecord.value(GlobalService::kLOW_Frame).toString()),
            QRectF(first->geometry()));
        QCOMPARE(stored.at(0).toMap().value(GlobalService::kLOW_Tabs).toList().size(), 1);
    }

    void closingTheOnlyWindowSavesTheList()
    {
        launchWithABlankWindow(); // and the closing observed
        TabWindowController *const blank = windows().first();
        auto *second = TabWindowController::create<PDFWindowController>();
        second->openNewTab();
        second->openNewTab();
        // With two windows, closing one leaves the saving to the timer.
        blank->tabStripModel()->closeSelectedTab();
        QVERIFY(UserDefaults::standard().objectForKey(FDDefaults::LastOpenedWindows).isNull());
        QCOMPARE(windows().size(), 1);
        // Closing the last window saves the list with that window and its tabs in it.
        m_service->setQuitHandlerForTesting([] {});
        second->close();
        QCOMPARE(storedWindows().size(), 1);
        QCOMPARE(storedWindows().first().toMap().value(GlobalService::kLOW_Tabs).toList(),
            (QVariantList { startTabRecord(), startTabRecord() }));
        // Closing its last tab instead saves while that tab is still there.
        auto *third = TabWindowController::create<PDFWindowController>();
        third->openNewTab();
        third->tabStripModel()->closeSelectedTab();
        QCOMPARE(storedWindows().first().toMap().value(GlobalService::kLOW_Tabs).toList(),
            QVariantList { startTabRecord() });
    }

    void closingTheLastWindowLeavesWhatQuitLeaves_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("Quit") << QStringLiteral("quit");
        QTest::newRow("the window's close button") << QStringLiteral("close button");
        QTest::newRow("Close Window") << QStringLiteral("command");
    }

    void closingTheLastWindowLeavesWhatQuitLeaves()
    {
        QFETCH(QString, how);
        const QUrl url = QUrl::fromLocalFile(
            AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("kept-%1.pdf").arg(how))));
        m_service->setQuitHandlerForTesting([] {});
        launchWithABlankWindow();
        auto *const window = qobject_cast<PDFWindowController *>(windows().first());
        auto *const document
            = qobject_cast<PDFContents *>(window->openPDFDocumentWithURL(url, false, true));
        QVERIFY(document);
        QTRY_VERIFY(document->primaryPDFView()->document());

        if (how == QLatin1String("quit"))
            m_service->terminate();
        else if (how == QLatin1String("close button"))
            window->close(); // the close event the window manager sends
        else
            window->menus()
                ->actionForCommand(QStringLiteral("performCloseWindowAction:"))
                ->trigger();
        QTRY_VERIFY(windows().isEmpty());

        // The next launch shows the window as it was: its start tab and the document, selected.
        QVERIFY(m_service->restoreLastOpenedWindows());
        QCOMPARE(windows().size(), 1);
        TabStripModel *const model = windows().first()->tabStripModel();
        QCOMPARE(model->count(), 2);
        QVERIFY(qobject_cast<NewTabContents *>(model->getTabContentsAtIndex(0)));
        QCOMPARE(model->getTabContentsAtIndex(1)->url(), url.toString(QUrl::FullyEncoded));
        QCOMPARE(model->selectedIndex(), 1);
    }

    void terminationSavesClosesAndKeepsTheListOnRepeat()
    {
        for (int count : { 1, 2 }) {
            auto *window = TabWindowController::create<PDFWindowController>();
            for (int tab = 0; tab < count; ++tab)
                window->openNewTab();
            window->show();
        }
        QCOMPARE(m_service->applicationShouldTerminate(), GlobalService::TerminateNow);
        QVERIFY(m_service->isTerminating());
        QVERIFY(m_service->isClosingWindowByUser());
        QVERIFY(windows().isEmpty());
        QCOMPARE(storedWindows().size(), 2);
        // Asking again (as the polling does) finds no window and leaves the list alone.
        QCOMPARE(m_service->applicationShouldTerminate(), GlobalService::TerminateNow);
        QCOMPARE(storedWindows().size(), 2);
    }

    void quitWaitsForAPendingSave()
    {
        const QString path = AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("changed.pdf")));
        const qint64 sizeBefore = QFileInfo(path).size();
        auto document = std::make_shared<FDDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path), nullptr));
        auto extra = std::make_shared<PDFPage>();
        QVERIFY(extra->init());
        document->insertPage(extra, 1);
        document->setNumberOfOtherChanges(1);
        QVERIFY(PDFSavingService::shared().addTask(document));
        document.reset(); // the service keeps it alive until written

        int quits = 0;
        m_service->setQuitHandlerForTesting([&] { ++quits; });
        m_service->terminate();
        QCOMPARE(quits, 0);
        QVERIFY(m_service->isTerminating());
        // The question is asked again five times a second until the save has ended.
        QTRY_COMPARE_WITH_TIMEOUT(quits, 1, 30000);
        QCOMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        QVERIFY(QFileInfo(path).size() != sizeBefore);
    }

    void twoPathsOfOneFileOpenOneTabInPlaceOfTheStartTab()
    {
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("sub")));
        const QString path = AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("one.pdf")));
        const QString link = m_dir.filePath(QStringLiteral("link.pdf"));
        QVERIFY(QFile::link(path, link));
        launchWithABlankWindow();
        m_service->openFiles({ path, m_dir.filePath(QStringLiteral("sub/../one.pdf")), link });
        TabStripModel *model = windows().first()->tabStripModel();
        QCOMPARE(model->count(), 1);
        auto *contents = qobject_cast<PDFContents *>(model->getSelectedTabContents());
        QVERIFY(contents);
        QCOMPARE(contents->url(), QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    }

    void aDocumentStoredTwiceIsRestoredOnceWithItsSplit()
    {
        QList<QUrl> urls;
        for (const char *name : { "x.pdf", "y.pdf", "z.pdf" })
            urls << QUrl::fromLocalFile(AppFixtures::whitePDF(m_dir.filePath(QLatin1String(name))));
        const auto documentTab = [](const QList<QUrl> &tabURLs, int splitMode) {
            return QVariantMap { { GlobalService::kLOW_IsNewTab, false },
                { GlobalService::kLOW_SplitMode, splitMode },
                { GlobalService::kLOW_URLs, FDEncodeURLs(tabURLs) } };
        };
        UserDefaults::standard().setObject(
            QVariantList {
                windowRecord({ documentTab({ urls[0] }, 0) }, 0, { 10, 10, 700, 500 }),
                windowRecord({ documentTab({ urls[0] }, 0), documentTab({ urls[1], urls[2] }, 2) },
                    1, { 30, 30, 800, 600 }),
            },
            FDDefaults::LastOpenedWindows);
        QVERIFY(m_service->restoreLastOpenedWindows());
        QCOMPARE(windows().size(), 2);
        QCOMPARE(windows().at(0)->tabStripModel()->count(), 1);
        TabStripModel *second = windows().at(1)->tabStripModel();
        QCOMPARE(second->count(), 1);
        auto *split = qobject_cast<PDFContents *>(second->getTabContentsAtIndex(0));
        QVERIFY(split);
        QCOMPARE(split->url(), urls[1].toString(QUrl::FullyEncoded));
        // The split comes with the frame, on the next turn, and hides the sidebar.
        QCOMPARE(split->splitMode(), PDFSplitViewMode::none);
        QTRY_COMPARE(split->splitMode(), PDFSplitViewMode::vertical);
        QVERIFY(split->isSidebarHidden());
        QTRY_COMPARE(split->secondaryPDFView()->fileURL(), urls[2]);
    }

    void aSecondLaunchsPathsArriveAsTabs_data()
    {
        QTest::addColumn<bool>("newWindow");
        QTest::newRow("into the main window") << false;
        QTest::newRow("--new-window") << true;
    }

    void aSecondLaunchsPathsArriveAsTabs()
    {
        QFETCH(bool, newWindow);
        QTemporaryDir folder;
        const QString first = AppFixtures::whitePDF(folder.filePath(QStringLiteral("first.pdf")));
        const QString second = AppFixtures::whitePDF(folder.filePath(QStringLiteral("second.pdf")));
        qputenv("FOLIDOC_INSTANCE_NAME", QStringLiteral("folidoc-test-%1").arg(getpid()).toUtf8());
        QVERIFY(!m_service->handOverOrListen());
        launchWithABlankWindow();
        TabWindowController *const mainWindow = windows().first();

        // A real second process, as the desktop starts it, with a path relative to its folder.
        QProcess launch;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("FOLIDOC_TEST_CHILD"), QStringLiteral("launch"));
        launch.setProcessEnvironment(environment);
        launch.setWorkingDirectory(folder.path());
        QSignalSpy finished(&launch, &QProcess::finished);
        QStringList arguments { QStringLiteral("second.pdf"), first };
        if (newWindow)
            arguments.prepend(QStringLiteral("--new-window"));
        launch.start(QCoreApplication::applicationFilePath(), arguments);
        QVERIFY(finished.wait(20000));
        QCOMPARE(launch.exitCode(), 0);
        QTRY_COMPARE(windows().size(), newWindow ? 2 : 1);
        TabStripModel *model = windows().last()->tabStripModel();
        QTRY_COMPARE(model->count(), 2);
        QCOMPARE(model->getTabContentsAtIndex(0)->url(),
            QUrl::fromLocalFile(second).toString(QUrl::FullyEncoded));
        QCOMPARE(model->selectedIndex(), 1);
        // The main window keeps its start tab when the files went elsewhere.
        if (newWindow) {
            QCOMPARE(mainWindow->tabStripModel()->count(), 1);
            QVERIFY(qobject_cast<NewTabContents *>(
                mainWindow->tabStripModel()->getTabContentsAtIndex(0)));
        }
        // The shown tab reads its file once its window is on screen; one that a new window never
        // showed waits until it is shown, which closing the tabs does while the folder still
        // exists.
        auto *const shown = qobject_cast<PDFContents *>(model->getTabContentsAtIndex(1));
        QVERIFY(shown);
        QTRY_VERIFY(shown->primaryPDFView()->document());
        model->closeAllTabs();
        qunsetenv("FOLIDOC_INSTANCE_NAME");
    }

private:
    static QVariantMap windowRecord(const QVariantList &tabs, int selected, const QRect &frame)
    {
        return { { GlobalService::kLOW_Tabs, tabs },
            { GlobalService::kLOW_SelectedIndex, selected },
            { GlobalService::kLOW_Frame, Geometry::stringFromRect(QRectF(frame)) } };
    }
    static QVariantMap startTabRecord() { return { { GlobalService::kLOW_IsNewTab, true } }; }
    static QVariantList storedWindows()
    {
        return UserDefaults::standard().arrayForKey(FDDefaults::LastOpenedWindows);
    }
    static QList<TabWindowController *> windows() { return TabWindowController::allControllers(); }
    // A launch that restores nothing: one window with a start tab.
    void launchWithABlankWindow()
    {
        UserDefaults::standard().setInteger(0, FDDefaults::LaunchWith);
        m_service->applicationDidFinishLaunching();
        QCOMPARE(windows().size(), 1);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<GlobalService> m_service;
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    PDFContents::registerAsDocumentContents();
    if (qEnvironmentVariable("FOLIDOC_TEST_CHILD") == QLatin1String("launch")) {
        const FDCommandLine commandLine(QApplication::arguments(), QDir::currentPath());
        GlobalService service(commandLine.paths());
        service.setLaunchInNewWindow(commandLine.newWindow());
        return service.run();
    }
    GlobalServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "GlobalServiceTest.moc"
