#include "support/AppFixtures.h"
#include "support/AppWindow.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDFilePanel.h>
#include <app/FDRecentDocuments.h>
#include <app/NewTabContents.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <app/PDFWindowMenus.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeButton.h>
#include <appearance/FDThemePicker.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/tabs/TabStripModel.h>
#include <kit/tabs/TabStripView.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTemporaryDir>
#include <QtTest>

class PDFWindowControllerTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        m_window = AppWindow::makeWindow();
    }

    void cleanup()
    {
        FDFilePanel::setHandlerForTesting({});
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void documentCommandsAreOffWithoutADocument()
    {
        // The start tab is no document tab: every document command is off, the rest on.
        for (QMenu *menu : m_window->menuBar()->findChildren<QMenu *>())
            m_window->menus()->validateMenu(menu);
        int documentCommands = 0;
        for (QAction *item : m_window->menus()->allActions()) {
            const bool isDocumentCommand = item->objectName().startsWith(QLatin1String("PDF_"));
            documentCommands += isDocumentCommand;
            // With no recent document there is nothing to clear; on a start tab there is nothing
            // to undo, copy or delete.
            const bool clearsRecents = item->objectName() == QLatin1String("clearRecentDocuments:");
            const bool edits = PDFWindowController::editCommands().contains(item->objectName());
            QCOMPARE(item->isEnabled(), !isDocumentCommand && !clearsRecents && !edits);
            QVERIFY(!item->isChecked() || item->objectName() == QLatin1String("onChangeTheme:"));
        }
        // A submenu of document commands only is greyed out with them, as is the empty Open Recent;
        // the theme submenu is not.
        int submenus = 0;
        for (QMenu *menu : m_window->menuBar()->findChildren<QMenu *>()) {
            if (!qobject_cast<QMenu *>(menu->parent()))
                continue;
            ++submenus;
            const bool themes
                = menu->actions().first()->objectName() == QLatin1String("onChangeTheme:");
            QCOMPARE(menu->menuAction()->isEnabled(), themes);
        }
        QCOMPARE(submenus, 4);
        QVERIFY(documentCommands > 0);
        QVERIFY(action(QStringLiteral("PDF_reloadDocument:"), 0)
                    ->shortcuts()
                    .contains(QKeySequence(Qt::Key_F5)));

        // Open asks for PDF files; cancelled, it leaves the start tab.
        QList<FilePanelRequest> asked;
        FDFilePanel::setHandlerForTesting([&](const FilePanelRequest &request) {
            asked << request;
            return QUrl();
        });
        action(QStringLiteral("openDocument:"))->trigger();
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first().kind, FilePanelRequest::Open);
        QCOMPARE(asked.first().allowedFileTypes, (QStringList { "pdf", "PDF" }));
        QCOMPARE(m_window->tabStripModel()->count(), 1);
        QVERIFY(
            qobject_cast<NewTabContents *>(m_window->tabStripModel()->getSelectedTabContents()));
    }

    void themeItemsShowAndSetTheCurrentTheme()
    {
        FDThemeProvider::setCurrent(FDThemeProvider::green());
        for (int id = 0; id < 5; ++id) {
            QAction *item = action(QStringLiteral("onChangeTheme:"), id);
            QVERIFY(m_window->validateMenuItem(item));
            QCOMPARE(item->isChecked(), id == FDTheme::green);
        }
        action(QStringLiteral("onChangeTheme:"), FDTheme::night)->trigger();
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::night());
        // The toolbar's theme button opens the picker right below itself.
        QWidget *button = m_window->tabStripView();
        m_window->onThemeButtonClickedWithButton(button);
        FDThemePicker &picker = FDThemePicker::shared();
        QVERIFY(picker.isVisible());
        QVERIFY(picker.geometry().top() >= button->mapToGlobal(QPoint(0, button->height())).y());
        QTest::mouseClick(picker.sunsetButton(), Qt::LeftButton);
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::sunset());
        picker.hide();
        FDThemeProvider::setCurrent(FDThemeProvider::blue());
    }

    void tabCommandsAndClosingTheLastTabOrTheWindowCloseIt_data()
    {
        QTest::addColumn<bool>("byWindow");
        QTest::newRow("the last tab") << false;
        QTest::newRow("the window, with every tab") << true;
    }

    void tabCommandsAndClosingTheLastTabOrTheWindowCloseIt()
    {
        QFETCH(bool, byWindow);
        TabStripModel *const model = m_window->tabStripModel();
        action(QStringLiteral("newDocument:"))->trigger();
        QCOMPARE(model->count(), 2);
        QCOMPARE(model->selectedIndex(), 1);
        QVERIFY(qobject_cast<NewTabContents *>(model->getSelectedTabContents()));
        action(QStringLiteral("performSelectPreviousTabAction:"))->trigger();
        QCOMPARE(model->selectedIndex(), 0);
        m_window->openCompressTab(); // takes the place of the selected start tab
        QCOMPARE(model->count(), 2);
        QCOMPARE(model->getTabContentsAtIndex(0)->title(), QStringLiteral("Compress"));
        if (!byWindow) {
            action(QStringLiteral("performCloseTabAction:"))->trigger();
            QCOMPARE(model->count(), 1);
        }

        // The window is told once; by its last tab's closing, while that tab is still there.
        QPointer<PDFWindowController> window(m_window);
        QList<int> tabsWhenAsked;
        NotificationCenter::defaultCenter().addObserver(this,
            PDFWindowController::ShouldCloseNotification, m_window,
            [&](const Notification &) { tabsWhenAsked << window->tabStripModel()->count(); });
        if (byWindow) {
            QVERIFY(m_window->windowShouldClose(nullptr));
            QVERIFY(m_window->isClosingTabByUser());
        } else {
            action(QStringLiteral("performCloseTabAction:"))->trigger();
        }
        NotificationCenter::defaultCenter().removeObserver(this);
        QCOMPARE(tabsWhenAsked, QList<int> { byWindow ? 0 : 1 });
        QVERIFY(!TabWindowController::allControllers().contains(window.data()));
        QTRY_VERIFY(window.isNull());
    }

    // A document tab moved to another window is the same document there, with that window's undo.
    void aMovedTabKeepsItsDocumentAndTakesTheNewWindowsUndo()
    {
        const QString path = AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("moved.pdf")));
        m_window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true);
        m_window->openNewTab();
        TabStripModel *const from = m_window->tabStripModel();
        auto *const contents = qobject_cast<PDFContents *>(from->getTabContentsAtIndex(0));
        QVERIFY(contents);
        from->selectTabContentsAt(0, true);
        QTRY_VERIFY(contents->primaryPDFView()->fdDocument());
        const auto document = contents->primaryPDFView()->fdDocument();
        document->setNumberOfAnnotationChanges(1);

        QPointer<PDFWindowController> to = AppWindow::makeWindow();
        to->adoptTabContents(from->detachTabContentsAt(0), 0);
        QCOMPARE(to->tabStripModel()->getTabContentsAtIndex(0), contents);
        QCOMPARE(contents->primaryPDFView()->fdDocument(), document);
        QVERIFY(document->numberOfChanges() > 0);
        QCOMPARE(contents->undoManager(), to->undoManager());
        QVERIFY(to->isAncestorOf(contents->primaryPDFView()));
        QCOMPARE(from->count(), 1);
        QVERIFY(AppWindow::closeWindow(to));
    }

    void aDroppedDocumentReplacesTheStartTabAndItsCommandsFollow()
    {
        const QString path = AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("paper.pdf")));
        // Dropped on the start tab, the file takes its place.
        QMimeData data;
        data.setUrls({ QUrl::fromLocalFile(path) });
        const QPoint at = m_window->rect().center();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_window, &drop);
        QCOMPARE(m_window->tabStripModel()->count(), 1);
        auto *document
            = qobject_cast<PDFContents *>(m_window->tabStripModel()->getSelectedTabContents());
        QVERIFY(document);
        QCOMPARE(document->url(), QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
        QTRY_VERIFY(m_window->selectedPDFView() && m_window->selectedPDFView()->document());
        const auto validated = [this](const QString &command, int tag = -1) {
            QAction *item = action(command, tag);
            return m_window->validateMenuItem(item);
        };
        // Never saved and unchanged: nothing to save; named: save as and reveal are on.
        QVERIFY(!validated(QStringLiteral("PDF_saveDocument:")));
        QVERIFY(validated(QStringLiteral("PDF_saveDocumentAs:")));
        QVERIFY(validated(QStringLiteral("PDF_onGoToNextPage:")));
        action(QStringLiteral("PDF_onChangeSplitMode:"), 2)->trigger();
        QVERIFY(validated(QStringLiteral("PDF_onChangeSplitMode:"), 2));
        QVERIFY(action(QStringLiteral("PDF_onChangeSplitMode:"), 2)->isChecked());
        // In the pages editor every document command is off but the editor's own item, which
        // leads out again.
        action(QStringLiteral("PDF_onShowPagesEditor:"))->trigger();
        for (QAction *item : m_window->menus()->allActions()) {
            if (item->objectName() == QLatin1String("PDF_onShowPagesEditor:"))
                QVERIFY(m_window->validateMenuItem(item));
            else if (item->objectName().startsWith(QLatin1String("PDF_")))
                QVERIFY2(!m_window->validateMenuItem(item), qPrintable(item->objectName()));
        }
    }

    void aFileOpenInAnotherWindowIsBroughtForward()
    {
        const QString path = AppFixtures::whitePDF(m_dir.filePath(QStringLiteral("once.pdf")));
        m_window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true);
        QPointer<PDFWindowController> other = TabWindowController::create<PDFWindowController>();
        other->openNewTab();
        // The same file under another spelling of its path.
        other->openPDFDocumentWithURL(
            QUrl::fromLocalFile(m_dir.path() + QStringLiteral("/./once.pdf"))
                .adjusted(QUrl::NormalizePathSegments),
            true, true);
        QCOMPARE(other->tabStripModel()->count(), 1);
        QVERIFY(qobject_cast<NewTabContents *>(other->tabStripModel()->getSelectedTabContents()));
        QCOMPARE(m_window->tabStripModel()->count(), 1);
        delete other.data();
    }

    void closingAWindowAsksForTheChangedTabFirst_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("tabsLeft");
        QTest::newRow("Cancel keeps all three") << int(Alert::SecondButtonReturn) << 3;
        QTest::newRow("Don't Save closes all") << int(Alert::ThirdButtonReturn) << 0;
    }

    void closingAWindowAsksForTheChangedTabFirst()
    {
        QFETCH(int, answer);
        QFETCH(int, tabsLeft);
        UserDefaults::standard().setInteger(1, FDDefaults::SavingPrompt);
        QTemporaryDir folder; // the tabs' names, for each row
        QList<PDFContents *> tabs;
        for (const char *name : { "first.pdf", "middle.pdf", "last.pdf" }) {
            const QString path = AppFixtures::whitePDF(folder.filePath(QLatin1String(name)));
            tabs << qobject_cast<PDFContents *>(
                m_window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true));
            QVERIFY(tabs.last());
            QTRY_VERIFY(tabs.last()->primaryPDFView()->fdDocument());
        }
        tabs[1]->primaryPDFView()->fdDocument()->setNumberOfOtherChanges(1);
        m_window->tabStripModel()->selectTabContentsAt(2, true);

        QList<std::pair<QString, int>> prompts; // message, selected tab while asking
        Alert::setHandlerForTesting([&](const AlertRequest &request) {
            prompts.append({ request.messageText, m_window->tabStripModel()->selectedIndex() });
            return answer;
        });
        const bool closed = m_window->windowShouldClose(nullptr);
        AppWindow::answerAlertsWithTheSecondButton();
        QCOMPARE(closed, tabsLeft == 0);
        QCOMPARE(prompts.size(), 1);
        QVERIFY(prompts.first().first.contains(QStringLiteral("\"middle\"")));
        QCOMPARE(prompts.first().second, 1);
        if (tabsLeft)
            QCOMPARE(m_window->tabStripModel()->count(), tabsLeft);
        else
            QTRY_VERIFY(m_window.isNull());
        if (tabsLeft)
            tabs[1]->primaryPDFView()->fdDocument()->setNumberOfOtherChanges(0);
    }

    void openRecentListsAndOpensTheRecentDocuments()
    {
        QTemporaryDir folder;
        const QString older = AppFixtures::whitePDF(folder.filePath(QStringLiteral("older.pdf")));
        const QString newer
            = AppFixtures::whitePDF(folder.filePath(QStringLiteral("R&D notes.pdf")));
        for (const QString &path : { older, newer })
            FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(path));
        QMenu *recent = m_window->menus()->recentMenu();
        const auto titles = [recent] {
            QStringList shown;
            for (QAction *item : recent->actions())
                shown << (item->isSeparator() ? QStringLiteral("-") : item->iconText());
            return shown;
        };
        const auto validateFileMenu = [this, recent] {
            m_window->menus()->validateMenu(qobject_cast<QMenu *>(recent->parent()));
        };

        // Newest first, each with its folder; a "&" in a name shows as itself.
        validateFileMenu();
        const QString where = QDir::toNativeSeparators(folder.path());
        QCOMPARE(titles(),
            (QStringList { QStringLiteral("R&D notes.pdf — ") + where,
                QStringLiteral("older.pdf — ") + where, QStringLiteral("-"),
                QStringLiteral("Clear") }));
        QVERIFY(recent->menuAction()->isEnabled());
        QVERIFY(recent->actions().constLast()->isEnabled());

        // The item opens its document in place of the start tab, and the list follows.
        recent->actions().at(1)->trigger();
        TabStripModel *model = m_window->tabStripModel();
        QCOMPARE(model->count(), 1);
        QCOMPARE(model->getSelectedTabContents()->url(), QUrl::fromLocalFile(older).toString());

        recent->actions().constLast()->trigger();
        QVERIFY(FDRecentDocuments::recentDocumentURLs().isEmpty());
        validateFileMenu();
        QCOMPARE(titles(), QStringList { QStringLiteral("Clear") });
        QVERIFY(!recent->menuAction()->isEnabled());
    }

    void fullScreenKeyAndItemToggleFullScreen()
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        QAction *item = action(QStringLiteral("toggleFullScreen:"));
        for (bool expected : { true, false }) {
            QTest::keyClick(m_window, Qt::Key_F11);
            QTRY_COMPARE(m_window->isFullScreen(), expected);
            QVERIFY(m_window->validateMenuItem(item));
            QCOMPARE(item->isChecked(), expected);
        }
        item->trigger();
        QTRY_VERIFY(m_window->isFullScreen());
        item->trigger();
        QTRY_VERIFY(!m_window->isFullScreen());
    }

private:
    QAction *action(const QString &command, int tag = -1)
    {
        return m_window->menus()->actionForCommand(command, tag);
    }
    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
};

FOLIDOC_APP_TEST_MAIN(PDFWindowControllerTest)

#include "PDFWindowControllerTest.moc"
