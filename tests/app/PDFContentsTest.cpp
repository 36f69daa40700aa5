#include "support/AppWindow.h"

#include <annotation/FDAnnotationSquare.h>
#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <app/PDFContentsConainer.h>
#include <app/PDFWindowController.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFPage.h>
#include <kit/tabs/TabStripModel.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

class PDFContentsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_alerts.clear();
        Alert::setHandlerForTesting([this](const AlertRequest &request) {
            m_alerts << request.messageText;
            return int(Alert::SecondButtonReturn);
        });
        m_window = AppWindow::makeWindow();
    }

    void cleanup()
    {
        // An alert that a test left on a timer must never open a real, blocking dialog.
        Alert::setHandlerForTesting([](const AlertRequest &request) {
            qWarning("alert after its test: %s", qPrintable(request.messageText));
            return int(Alert::SecondButtonReturn);
        });
        FDFilePanel::setHandlerForTesting({});
        FDThemeProvider::setCurrent(FDThemeProvider::blue());
        // Whatever a test left changed is dropped, so no prompt or save outlives it.
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void oneTabPerFileWhoseTitleMarksChangesUntilTheSaveIsQueued()
    {
        const QUrl url = fixture(QStringLiteral("Marked.pdf"));
        PDFContents *const tab = openTab(url);
        QVERIFY(tab);
        // The start tab was replaced, and a second opening selects the same tab.
        TabStripModel *const model = m_window->tabStripModel();
        QCOMPARE(model->count(), 1);
        QCOMPARE(
            m_window->openPDFDocumentWithURL(url, true, true), static_cast<TabContents *>(tab));
        QCOMPARE(model->count(), 1);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Marked"));
        QVERIFY(!tab->isPagesEditingMode());
        const auto document = tab->primaryPDFView()->fdDocument();
        QCOMPARE(tab->title(), QStringLiteral("Marked"));
        auto square = std::make_shared<FDAnnotationSquare>();
        QVERIFY(square->initWithBounds(QRectF(100, 100, 50, 50)));
        tab->primaryPDFView()->addAnnotation(square, document->pageAtIndex(0));
        QCOMPARE(tab->title(), QStringLiteral("* Marked"));
        addPage(document);
        QCOMPARE(tab->title(), QStringLiteral("* Marked"));

        document->save();
        // The mark goes as the save is queued, before the file has been written.
        QVERIFY(PDFSavingService::shared().numberOfTasks() > 0);
        QCOMPARE(tab->title(), QStringLiteral("Marked"));
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        QCoreApplication::processEvents();
        // Undoing is a change of its own: the document differs from the file again.
        QVERIFY(m_window->undoManager()->canUndo());
        m_window->undoManager()->undo();
        QVERIFY(!square->page());
        QCOMPARE(tab->title(), QStringLiteral("* Marked"));
    }

    void namedChangedFileClosesSilentlyAndIsWritten()
    {
        UserDefaults::standard().setInteger(0, FDDefaults::SavingPrompt);
        const QUrl url = fixture(QStringLiteral("Silent.pdf"));
        PDFContents *const tab = openTab(url);
        QVERIFY(tab);
        addPage(tab->primaryPDFView()->fdDocument());
        QVERIFY(!tab->hasChangesToPromptUser());

        TabStripModel *const model = m_window->tabStripModel();
        model->appendTabContents(m_window->createBlankTabContents(), false);
        QVERIFY(model->closeTabContentsAtIndex(
            model->getIndexOfTabContents(tab), TabStripModel::CloseUserGesture));
        QVERIFY(m_alerts.isEmpty());
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);

        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithURL(url));
        QCOMPARE(reread->pageCount(), 4);
    }

    void untitledChangedDocumentPrompts_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<bool>("chooseFile");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<int>("changesAfter");
        QTest::newRow("Don't Save") << int(Alert::ThirdButtonReturn) << false << true << 0;
        QTest::newRow("Cancel") << int(Alert::SecondButtonReturn) << false << false << 1;
        QTest::newRow("Save, panel cancelled")
            << int(Alert::FirstButtonReturn) << false << false << 1;
        QTest::newRow("Save to a chosen file")
            << int(Alert::FirstButtonReturn) << true << true << 1;
    }

    void untitledChangedDocumentPrompts()
    {
        QFETCH(int, button);
        QFETCH(bool, chooseFile);
        QFETCH(bool, closes);
        QFETCH(int, changesAfter);
        UserDefaults::standard().setInteger(0, FDDefaults::SavingPrompt);
        const QUrl target = QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("Chosen.pdf")));
        QFile::remove(target.toLocalFile());
        Alert::setHandlerForTesting([&](const AlertRequest &request) {
            m_alerts << request.messageText + QLatin1Char('|') + request.informativeText
                    + QLatin1Char('|') + request.buttons.join(QLatin1Char(','));
            return button;
        });
        int panels = 0;
        FDFilePanel::setHandlerForTesting([&](const FilePanelRequest &request) {
            ++panels;
            return request.kind == FilePanelRequest::Save && chooseFile ? target : QUrl();
        });

        PDFContents *const tab = openTab(QUrl());
        QVERIFY(tab);
        // A new document opens in the pages editor.
        QVERIFY(tab->isPagesEditingMode());
        QVERIFY(tab->container()->pagesEditor()->isVisible());
        const auto document = tab->primaryPDFView()->fdDocument();
        addPage(document);
        QCOMPARE(tab->title(), QStringLiteral("* Untitled"));
        QVERIFY(tab->hasChangesToPromptUser());

        TabStripModel *const model = m_window->tabStripModel();
        const bool closed = model->closeTabContentsAtIndex(
            model->getIndexOfTabContents(tab), TabStripModel::CloseUserGesture);
        QCOMPARE(closed, closes);
        QCOMPARE(m_alerts,
            QStringList {
                QStringLiteral("Do you want to save the changes made to the document "
                               "\"Untitled\"?|Your changes will be lost if you don't save "
                               "them!|Save,Cancel,Don't Save") });
        QCOMPARE(panels, button == Alert::FirstButtonReturn ? 1 : 0);
        QCOMPARE(document->numberOfChanges() > 0 ? 1 : 0, closed && chooseFile ? 0 : changesAfter);
        if (!closes) {
            QCOMPARE(model->getIndexOfTabContents(tab) >= 0, true);
            return;
        }
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        QCOMPARE(QFileInfo::exists(target.toLocalFile()), chooseFile);
        // A new file in a writable folder is no file without permission, even before it is written
        // (the check answers after a delay).
        QTest::qWait(900);
        QCOMPARE(m_alerts.size(), 1);
    }

    void splitHidesTheSidebarAndTheFocusPicksTheView()
    {
        PDFContents *const tab = openTab(fixture(QStringLiteral("Split.pdf")));
        QVERIFY(tab);
        PDFContentsConainer *const root = tab->container();
        tab->setIsSidebarHidden(false);
        QVERIFY(root->sidebarContainer()->isVisible());
        // Where each mode puts the views is the view containers' test; here the split's effects.
        tab->setSplitMode(PDFSplitViewMode::horizontal);
        QVERIFY(tab->isSidebarHidden());
        QVERIFY(!root->sidebarContainer()->isVisible());

        // The view that takes the focus is the one the commands act on, wherever a swap puts it.
        QApplication::setActiveWindow(m_window);
        tab->primaryPDFView()->setFocus();
        QTRY_COMPARE(tab->selectedPDFView(), tab->primaryPDFView());
        tab->swapPDFViews();
        QCoreApplication::processEvents();
        QCOMPARE(tab->selectedPDFView(), tab->primaryPDFView());
        int selections = 0;
        NotificationCenter::defaultCenter().addObserver(this,
            PDFContents::SelectedPDFViewDidChangeNotification, tab,
            [&](const Notification &) { ++selections; });
        QApplication::setActiveWindow(m_window);
        tab->secondaryPDFView()->setFocus();
        QTRY_COMPARE(tab->selectedPDFView(), tab->secondaryPDFView());
        QCOMPARE(selections, 1);
        NotificationCenter::defaultCenter().removeObserver(this);
    }

    void blankSearchTextHidesTheSearchArea()
    {
        PDFContents *const tab = openTab(fixture(QStringLiteral("Search.pdf")));
        QVERIFY(tab);
        int posts = 0;
        NotificationCenter::defaultCenter().addObserver(this,
            PDFContents::QueryStringDidChangeNotification, tab,
            [&](const Notification &) { ++posts; });
        tab->setQueryString(QStringLiteral("  fox\n"));
        QCOMPARE(tab->queryString().value_or(QString()), QStringLiteral("fox"));
        QVERIFY(tab->container()->searchResultsContainer()->isVisible());
        QVERIFY(tab->searchSplitView()->handle(1)->isVisible());
        tab->setQueryString(QStringLiteral(" \t\n "));
        QVERIFY(!tab->queryString());
        QVERIFY(!tab->container()->searchResultsContainer()->isVisible());
        QVERIFY(!tab->searchSplitView()->handle(1)->isVisible());
        tab->setQueryString(QString());
        QCOMPARE(posts, 3);
        NotificationCenter::defaultCenter().removeObserver(this);
    }

    void linkIntoAnotherFileOpensItsPageInANewTab()
    {
        PDFContents *const tab = openTab(fixture(QStringLiteral("From.pdf")));
        QVERIFY(tab);
        const QUrl target = fixture(QStringLiteral("To.pdf"));
        QDir(m_dir.path()).mkdir(QStringLiteral("sub"));
        QVERIFY(QFile::link(target.toLocalFile(), m_dir.filePath(QStringLiteral("Link.pdf"))));
        TabStripModel *const model = m_window->tabStripModel();
        tab->primaryPDFView()->performAction(
            std::make_shared<PDFActionRemoteGoTo>(2, QPointF(0, 0), target));
        QCOMPARE(model->count(), 2);
        auto *const opened = qobject_cast<PDFContents *>(model->getSelectedTabContents());
        QVERIFY(opened && opened != tab);
        FDPDFView *const view = opened->primaryPDFView();
        QTRY_VERIFY(view->document() && !view->isLoading());
        QCOMPARE(view->fileURL(), target);
        QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), 2);

        // Following a link into the same file again, under any spelling of its path, finds the
        // open tab and lands on the link's page there: two tabs on one file would save over each
        // other.
        int page = 2;
        for (const char *spelling : { "To.pdf", "sub/../To.pdf", "Link.pdf" }) {
            model->selectTabContentsAt(0, true);
            page = page == 2 ? 0 : 2;
            tab->primaryPDFView()->performAction(std::make_shared<PDFActionRemoteGoTo>(
                page, QPointF(0, 0), QUrl::fromLocalFile(m_dir.filePath(QLatin1String(spelling)))));
            QCOMPARE(model->count(), 2);
            QCOMPARE(model->getSelectedTabContents(), opened);
            QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), page);
        }
    }

    void nightThemeTintsThePage_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<QColor>("paper");
        QTest::addColumn<QColor>("ink");
        QTest::newRow("blue") << 2 << QColor(255, 255, 255) << QColor(0, 0, 0);
        QTest::newRow("night") << 4 << QColor(41, 41, 41) << QColor(214, 214, 214);
        QTest::newRow("sunset") << 3 << QColor(242, 236, 212) << QColor(13, 19, 43);
    }

    void nightThemeTintsThePage()
    {
        QFETCH(int, theme);
        QFETCH(QColor, paper);
        QFETCH(QColor, ink);
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(theme));
        // Black on the left half, text on the right; an outline, so the sidebar shows too.
        // A file of its own per row: a file read before reopens where it was left.
        const QString path = m_dir.filePath(QStringLiteral("Halves-%1.pdf").arg(theme));
        PdfFixtures::Document halves = PdfFixtures::textPages(3, 30, 0);
        halves.pages[0].fills.append({ QRectF(0, 0, 306, 792), 0, 0, 0 });
        halves.pages[0].textStart = QPointF(330, 720);
        halves.outline = { { QStringLiteral("Halves"), 0, {}, 0, true, {} },
            { QStringLiteral("Text"), 1, {}, 0, true, {} } };
        QVERIFY(PdfFixtures::write(halves, path));
        PDFContents *const tab = openTab(QUrl::fromLocalFile(path));
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        QTRY_VERIFY(view->isVisibleAreaRendered());

        const QImage image = tab->view()->grab().toImage();
        const auto pixelAt = [&](const QPointF &pagePoint) {
            const QPointF inView = view->convertPointFromPage(pagePoint, view->currentPage());
            const QPoint where = view->viewport()->mapTo(tab->view(), inView.toPoint());
            return image.pixelColor(where * image.devicePixelRatio());
        };
        const auto near = [](const QColor &a, const QColor &b) {
            return qAbs(a.red() - b.red()) <= 3 && qAbs(a.green() - b.green()) <= 3
                && qAbs(a.blue() - b.blue()) <= 3;
        };
        const QColor seenPaper = pixelAt(QPointF(450, 220));
        const QColor seenInk = pixelAt(QPointF(150, 400));
        QVERIFY2(near(seenPaper, paper), qPrintable(seenPaper.name()));
        QVERIFY2(near(seenInk, ink), qPrintable(seenInk.name()));
    }

private:
    QUrl fixture(const QString &name);
    PDFContents *openTab(const QUrl &url);
    static void addPage(const std::shared_ptr<FDDocument> &document)
    {
        auto page = std::make_shared<PDFPage>();
        QVERIFY(page->init());
        document->insertPage(page, document->pageCount());
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    QStringList m_alerts;
};

QUrl PDFContentsTest::fixture(const QString &name)
{
    const QString path = m_dir.filePath(name);
    PdfFixtures::write(PdfFixtures::textPages(3, 30, 0), path);
    return QUrl::fromLocalFile(path);
}

PDFContents *PDFContentsTest::openTab(const QUrl &url)
{
    return AppWindow::openTab(m_window, url);
}

FOLIDOC_APP_TEST_MAIN(PDFContentsTest)

#include "PDFContentsTest.moc"
