#include "support/AppFixtures.h"
#include "support/AppWindow.h"

#include <app/Alert.h>
#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/tabs/TabStripModel.h>
#include <pages/PDFCollectionView.h>
#include <pages/PDFEditBar.h>
#include <pages/PDFPagesEditor.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QClipboard>
#include <QMimeData>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

// Files to add, by name: "*.png", "*.gif", "*.jpg" real pictures of 200 by 100 pixels, "bad.png"
// bytes of no image, "two.pdf" pages "Page 71" and "Page 72", "empty.pdf" a PDF without pages,
// "broken.pdf" no PDF at all, "notes.txt" plain text.
QUrl fileToAdd(const QDir &dir, const QString &name)
{
    const QString path = dir.filePath(name);
    const QString suffix = QFileInfo(name).suffix();
    if (name == QLatin1String("two.pdf")) {
        PdfFixtures::Document document;
        document.pages = { PdfFixtures::Page(), PdfFixtures::Page() };
        document.pages[0].lines = QStringList { "Page 71" };
        document.pages[1].lines = QStringList { "Page 72" };
        PdfFixtures::write(document, path);
    } else if (name == QLatin1String("empty.pdf")) {
        PdfFixtures::write(PdfFixtures::Document(), path);
    } else if (name == QLatin1String("bad.png") || name == QLatin1String("broken.pdf")
        || suffix == QLatin1String("txt")) {
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("%PDF-1.4 nothing that can be read\n");
    } else if (suffix == QLatin1String("gif")) {
        // Qt reads GIF but does not write it: a 200 by 100 one-colour picture, by hand.
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(
            QByteArray::fromHex("474946383961c80064008000000000ffffffff2c00000000c80064000002"
                                "028c01003b"));
    } else {
        QImage image(200, 100, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        image.save(path);
    }
    return QUrl::fromLocalFile(path);
}

using Rows = QList<int>;

} // namespace

class PagesEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_alerts.clear();
        m_answer = Alert::SecondButtonReturn;
        Alert::setHandlerForTesting([this](const AlertRequest &request) {
            m_alerts << request.messageText + QLatin1Char('|') + request.informativeText
                    + QLatin1Char('|') + request.buttons.join(QLatin1Char(','));
            return m_answer;
        });
        m_window = AppWindow::makeWindow();
    }

    void cleanup()
    {
        FDFilePanel::setHandlerForTesting({});
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void insertionPlaceAndExtractName()
    {
        // Pasted and added pages go after the highest selected page, else at the end.
        QCOMPARE(PDFPagesEditor::insertionIndex({}, 7), 7);
        QCOMPARE(PDFPagesEditor::insertionIndex({ 4, 0, 2 }, 7), 5);
        QCOMPARE(PDFPagesEditor::insertionIndex({ 6 }, 7), 7);
        QCOMPARE(PDFPagesEditor::insertionIndex({}, 0), 0);
        // Extracted files are named by the zero-based indexes, sorted; a UUID without both.
        QCOMPARE(PDFPagesEditor::proposedExtractName(
                     QUrl::fromLocalFile(QStringLiteral("/x/Report.v2.pdf")), { 9, 3 }),
            QStringLiteral("Report.v2-3,9.pdf"));
        QCOMPARE(PDFPagesEditor::proposedExtractName(QUrl::fromLocalFile("/x/a.pdf"), { 4 }),
            QStringLiteral("a-4.pdf"));
        for (const QString &name : { PDFPagesEditor::proposedExtractName(QUrl(), { 1 }),
                 PDFPagesEditor::proposedExtractName(QUrl::fromLocalFile("/x/a.pdf"), {}) })
            QVERIFY2(!QUuid::fromString(name).isNull(), qPrintable(name));
    }

    // The editor's key opens it, Escape or the key again leaves; keys and clicks select pages, and
    // the edit bar follows the selection.
    void theEditorIsOpenedAndItsPagesSelected()
    {
        PDFContents *const tab = openTab(QStringLiteral("Keys.pdf"));
        QVERIFY(tab);
        PDFCollectionView *const grid = editorOf(tab)->collectionView();
        const QKeySequence editorKey(Qt::CTRL | Qt::ALT | Qt::Key_P);
        for (const QKeySequence &leave :
            { QKeySequence(Qt::Key_Escape), editorKey, QKeySequence() }) {
            QVERIFY(!tab->isPagesEditingMode());
            QTest::keySequence(m_window, editorKey);
            QVERIFY(tab->isPagesEditingMode());
            QTRY_VERIFY(grid->isVisible());
            QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(grid));
            QCOMPARE(grid->model()->rowCount(), 5);
            if (leave.isEmpty())
                break;
            QTest::keySequence(grid, leave);
            QVERIFY(!tab->isPagesEditingMode());
            QVERIFY(!grid->isVisible());
            QVERIFY(tab->primaryPDFView()->isVisible());
        }
        PDFEditBar *const bar = m_window->findChild<PDFEditBar *>();
        QVERIFY(bar);
        QTRY_VERIFY(bar->isVisible());
        // Delete asks even with nothing selected; the others need pages.
        QVERIFY(!bar->rotateLeftButton()->isEnabled());
        QVERIFY(!bar->extractButton()->isEnabled());
        QVERIFY(bar->removeButton()->isEnabled());

        // Each step: "k:<key>" presses a key, "c:<row>" clicks, with "C" or "S" for Ctrl or Shift;
        // every line starts with a plain click, which resets the selection.
        const QList<std::pair<QStringList, QList<int>>> cases {
            { { "c:2" }, { 2 } },
            { { "c:0", "Cc:3" }, { 0, 3 } },
            { { "c:0", "Cc:3", "Cc:0" }, { 3 } },
            { { "c:1", "Sc:3" }, { 1, 2, 3 } },
            { { "c:1", "k:Right" }, { 2 } },
            { { "c:1", "Sk:Right", "Sk:Right" }, { 1, 2, 3 } },
            { { "c:1", "k:End" }, { 4 } },
            { { "c:3", "k:Home" }, { 0 } },
            { { "c:3", "Ck:A" }, { 0, 1, 2, 3, 4 } },
        };
        const QHash<QString, Qt::Key> keys { { "Right", Qt::Key_Right }, { "End", Qt::Key_End },
            { "Home", Qt::Key_Home }, { "A", Qt::Key_A } };
        for (const auto &[steps, expected] : cases) {
            for (const QString &step : steps) {
                const QString kind = step.section(QLatin1Char(':'), 0, 0);
                const QString what = step.section(QLatin1Char(':'), 1);
                const Qt::KeyboardModifiers modifiers = kind.startsWith(QLatin1Char('C'))
                    ? Qt::ControlModifier
                    : kind.startsWith(QLatin1Char('S')) ? Qt::ShiftModifier
                                                        : Qt::NoModifier;
                if (kind.endsWith(QLatin1Char('c')))
                    QTest::mouseClick(grid->viewport(), Qt::LeftButton, modifiers,
                        centreOfRow(grid, what.toInt()));
                else
                    QTest::keyClick(QApplication::focusWidget(), keys.value(what), modifiers);
            }
            QVERIFY2(grid->selectedRows() == expected, qPrintable(steps.join(QLatin1Char(' '))));
        }

        // A right click acts on one item, or on none in the empty space below the last row.
        grid->selectRows({ 0, 1, 2 });
        QTest::mousePress(grid->viewport(), Qt::RightButton, {}, centreOfRow(grid, 1));
        QCOMPARE(grid->selectedRows(), QList<int>({ 1 }));
        QTest::mousePress(grid->viewport(), Qt::RightButton, {},
            QPoint(grid->viewport()->width() - 5, grid->viewport()->height() - 5));
        QCOMPARE(grid->selectedRows(), QList<int>());

        grid->selectRows({ 0, 3 });
        QVERIFY(bar->rotateLeftButton()->isEnabled());
        QVERIFY(bar->extractButton()->isEnabled());
        QTest::mouseClick(bar->rotateLeftButton(), Qt::LeftButton);
        const auto document = tab->primaryPDFView()->fdDocument();
        QCOMPARE(document->pageAtIndex(0)->rotation(), 270);
        QCOMPARE(document->pageAtIndex(3)->rotation(), 270);
        QCOMPARE(document->pageAtIndex(1)->rotation(), 0);
        QTest::mouseClick(bar->doneButton(), Qt::LeftButton);
        QVERIFY(!tab->isPagesEditingMode());
        QTRY_VERIFY(!bar->isVisible());
    }

    void operationsAreSavedIntoTheFile_data()
    {
        QTest::addColumn<QList<int>>("selected");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QStringList>("expected");
        const QStringList untouched { "p1", "p2", "p3", "p4", "p5" };
        QTest::newRow("rotate right")
            << Rows { 1 } << "right" << 0 << QStringList { "p1", "p2/90", "p3", "p4", "p5" };
        QTest::newRow("rotate left twice over") << Rows { 0,
            4 } << "left,left" << 0 << QStringList { "p1/180", "p2", "p3", "p4", "p5/180" };
        QTest::newRow("delete confirmed")
            << Rows { 0, 2 } << "delete" << int(Alert::FirstButtonReturn)
            << QStringList { "p2", "p4", "p5" };
        QTest::newRow("delete by key") << Rows { 4, 3 } << "key" << int(Alert::FirstButtonReturn)
                                       << QStringList { "p1", "p2", "p3" };
        QTest::newRow("delete cancelled")
            << Rows { 0, 2 } << "delete" << int(Alert::SecondButtonReturn) << untouched;
        QTest::newRow("delete with nothing selected")
            << QList<int>() << "key" << int(Alert::FirstButtonReturn) << untouched;
    }

    void operationsAreSavedIntoTheFile()
    {
        QFETCH(QList<int>, selected);
        QFETCH(QString, operation);
        QFETCH(int, answer);
        QFETCH(QStringList, expected);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PDFContents *const tab = openEditing(QStringLiteral("Operations.pdf"));
        QVERIFY(tab);
        const QString path = tab->primaryPDFView()->fdDocument()->fileURL().toLocalFile();
        PDFPagesEditor *const editor = editorOf(tab);
        PDFCollectionView *const grid = editor->collectionView();
        grid->selectRows(selected);
        m_answer = answer;
        for (const QString &step : operation.split(QLatin1Char(','))) {
            if (step == QLatin1String("right"))
                editor->rotateSelection(90);
            else if (step == QLatin1String("left"))
                editor->rotateSelection(-90);
            else if (step == QLatin1String("delete"))
                editor->deleteSelection();
            else
                QTest::keyClick(grid, Qt::Key_Delete);
        }
        if (operation.contains(QLatin1String("delete")) || operation == QLatin1String("key")) {
            QCOMPARE(m_alerts,
                QStringList { "Are you sure you want to delete selected pages?|You can't undo this "
                              "action!|Delete,Cancel" });
        }
        QVERIFY(everythingSaved());
        QCOMPARE(grid->model()->rowCount(), expected.size());
        QCOMPARE(AppFixtures::pageTags(path), expected);
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
        QVERIFY2(check.exitCode == 0, check.out.constData());
    }

    void extractWritesTheSelectedPages()
    {
        PDFContents *const tab = openEditing(QStringLiteral("Source.pdf"));
        QVERIFY(tab);
        PDFPagesEditor *const editor = editorOf(tab);
        editor->collectionView()->selectRows({ 3, 1 });
        QString proposed;
        const QString target = m_dir.filePath(QStringLiteral("Extracted.pdf"));
        FDFilePanel::setHandlerForTesting([&](const FilePanelRequest &request) {
            proposed = request.nameFieldStringValue;
            return QUrl::fromLocalFile(target);
        });
        editor->extractSelection();
        QCOMPARE(proposed, QStringLiteral("Source-1,3.pdf"));
        QCOMPARE(AppFixtures::pageTags(target), (QStringList { "p2", "p4" }));
        // The source is left as it was.
        QCOMPARE(tab->primaryPDFView()->fdDocument()->pageCount(), 5);
        QCOMPARE(tab->primaryPDFView()->fdDocument()->numberOfChanges(), 0);
    }

    void addedFilesGoInAtARunningIndex_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QList<int>>("selected");
        QTest::addColumn<int>("index"); // -1: through the edit bar's button and the open panel
        QTest::addColumn<QStringList>("added"); // at the insertion point, in this order
        QTest::newRow("images and a PDF at the end")
            << QStringList { "a.png", "two.pdf", "c.gif", "d.jpg" } << QList<int>() << -1
            << QStringList { "image 2:1", "Page 71", "Page 72", "image 2:1", "image 2:1" };
        QTest::newRow("after the highest selected page")
            << QStringList { "two.pdf" } << Rows { 3, 0 } << -1
            << QStringList { "Page 71", "Page 72" };
        QTest::newRow("unreadable files keep the place")
            << QStringList { "bad.png", "broken.pdf", "c.gif", "notes.txt", "empty.pdf", "two.pdf" }
            << Rows { 1 } << -1 << QStringList { "image 2:1", "Page 71", "Page 72" };
        QTest::newRow("at the front")
            << QStringList { "a.png" } << QList<int>() << 0 << QStringList { "image 2:1" };
        QTest::newRow("nothing readable")
            << QStringList { "bad.png", "notes.txt" } << Rows { 2 } << -1 << QStringList();
        QTest::newRow("an index past the end")
            << QStringList { "a.png" } << QList<int>() << 6 << QStringList();
        QTest::newRow("a negative index")
            << QStringList { "a.png" } << QList<int>() << -2 << QStringList();
    }

    void addedFilesGoInAtARunningIndex()
    {
        QFETCH(QStringList, files);
        QFETCH(QList<int>, selected);
        QFETCH(int, index);
        QFETCH(QStringList, added);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PDFContents *const tab = openEditing(QStringLiteral("Add.pdf"));
        QVERIFY(tab);
        const QString path = tab->primaryPDFView()->fdDocument()->fileURL().toLocalFile();
        PDFPagesEditor *const editor = editorOf(tab);
        PDFCollectionView *const grid = editor->collectionView();
        grid->selectRows(selected);
        QDir folder(m_dir.filePath(QStringLiteral("add")));
        QVERIFY(folder.mkpath(QStringLiteral(".")));
        QList<QUrl> urls;
        for (const QString &name : files)
            urls << fileToAdd(folder, name);

        const int at = index == -1 ? PDFPagesEditor::insertionIndex(selected, 5) : index;
        if (index == -1) {
            FilePanelRequest asked;
            FDFilePanel::setURLsHandlerForTesting([&](const FilePanelRequest &request) {
                asked = request;
                return urls;
            });
            PDFEditBar *const bar = m_window->findChild<PDFEditBar *>();
            QVERIFY(bar);
            QTest::mouseClick(bar->addPDFButton(), Qt::LeftButton);
            FDFilePanel::setURLsHandlerForTesting({});
            QVERIFY(asked.allowsMultipleSelection);
            QCOMPARE(asked.allowedFileTypes.first(), QStringLiteral("pdf"));
        } else {
            QCOMPARE(editor->insertURLs(urls, index), int(added.size()));
        }

        QStringList expected { "p1", "p2", "p3", "p4", "p5" };
        QList<int> inserted;
        for (int k = 0; k < added.size(); ++k) {
            expected.insert(at + k, added[k]);
            inserted << at + k;
        }
        QCOMPARE(grid->model()->rowCount(), expected.size());
        if (!added.isEmpty())
            QCOMPARE(grid->selectedRows(), inserted);
        QVERIFY(everythingSaved());
        QCOMPARE(AppFixtures::pageTags(path), expected);
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
        QVERIFY2(check.exitCode == 0, check.out.constData());
    }

    void aDeletedPageTakesItsBookmark()
    {
        PDFContents *const tab = openTab(QStringLiteral("Marks.pdf"));
        QVERIFY(tab);
        const auto document = tab->primaryPDFView()->fdDocument();
        const QUrl url = document->fileURL();
        for (const int index : { 1, 3 }) {
            QVERIFY(document->addBookmarkWith(
                std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(index)),
                QStringLiteral("Mark %1").arg(index + 1)));
        }
        tab->setIsPagesEditingMode(true);
        PDFPagesEditor *const editor = editorOf(tab);
        QTRY_VERIFY(editor->collectionView()->isVisible());
        editor->collectionView()->selectRows({ 0, 1 });
        m_answer = Alert::FirstButtonReturn;
        editor->deleteSelection();
        QCOMPARE(document->bookmarks().size(), 1);
        QVERIFY(everythingSaved());
        QCOMPARE(document->numberOfChanges(), 0);

        // The file's hidden branch holds the one left, on its page's new place.
        const auto reopened = std::make_shared<FDDocument>();
        QVERIFY(reopened->initWithURL(url, nullptr));
        QCOMPARE(reopened->pageCount(), 3);
        QCOMPARE(reopened->bookmarks().size(), 1);
        QCOMPARE(reopened->bookmarks().at(0)->title(), QStringLiteral("Mark 4"));
        QCOMPARE(reopened->indexForPage(reopened->bookmarks().at(0)->page()), 1);
    }

    void aSplitTabShowsTwoPanesThatActAlone()
    {
        PDFContents *const tab = openTab(QStringLiteral("Left.pdf"));
        QVERIFY(tab);
        const QString right = m_dir.filePath(QStringLiteral("Right.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3, 3, 0), right));
        tab->setSplitMode(PDFSplitViewMode::horizontal);
        FDPDFView *const secondary = tab->secondaryPDFView();
        secondary->loadDocument(QUrl::fromLocalFile(right));
        QTRY_VERIFY(secondary->fdDocument() && !secondary->isLoading());
        tab->setIsPagesEditingMode(true);
        PDFPagesEditor *const editor = editorOf(tab);
        PDFCollectionView *const left = editor->primaryCollectionView();
        PDFCollectionView *const other = editor->secondaryCollectionView();
        QTRY_VERIFY(left->isVisible() && other->isVisible());
        QCOMPARE(left->model()->rowCount(), 5);
        QCOMPARE(other->model()->rowCount(), 3);
        QVERIFY(left->geometry().right() < other->geometry().left());

        // A click in a pane selects its view, and the operations go to that pane alone.
        QTest::mouseClick(other->viewport(), Qt::LeftButton, {}, centreOfRow(other, 1));
        QTRY_COMPARE(tab->selectedPDFView(), secondary);
        QCOMPARE(editor->selectedCollectionView(), other);
        QTest::keySequence(other, QKeySequence(Qt::CTRL | Qt::Key_R));
        QCOMPARE(secondary->fdDocument()->pageAtIndex(1)->rotation(), 90);
        QCOMPARE(tab->primaryPDFView()->fdDocument()->pageAtIndex(1)->rotation(), 0);
        QTest::keySequence(other, QKeySequence::Copy);
        QTest::mouseClick(left->viewport(), Qt::LeftButton, {}, centreOfRow(left, 0));
        QTRY_COMPARE(tab->selectedPDFView(), tab->primaryPDFView());
        QCOMPARE(editor->selectedCollectionView(), left);
        QCOMPARE(other->selectedRows(), Rows { 1 });

        // No paste while either pane runs a batch of item changes.
        QVERIFY(editor->canPaste());
        bool couldPaste = true;
        other->performBatchUpdates([&] { couldPaste = editor->canPaste(); });
        QVERIFY(!couldPaste);
        QTest::keySequence(left, QKeySequence::Paste);
        QCOMPARE(left->model()->rowCount(), 6);
        QCOMPARE(left->selectedRows(), Rows { 1 });
        QCOMPARE(other->model()->rowCount(), 3);
        QVERIFY(everythingSaved());
        QCOMPARE(AppFixtures::pageTags(tab->primaryPDFView()->fdDocument()->fileURL().toLocalFile())
                     .at(1),
            QStringLiteral("Page 2/90"));
        QCOMPARE(AppFixtures::pageTags(right).at(1), QStringLiteral("Page 2/90"));

        // Back to one pane: the primary one.
        tab->setSplitMode(PDFSplitViewMode::none);
        QVERIFY(!other->isVisible());
        QCOMPARE(editor->selectedCollectionView(), left);
    }

private:
    PDFContents *openTab(const QString &name);
    // openTab in page editing, once the grid has the focus.
    PDFContents *openEditing(const QString &name);
    PDFPagesEditor *editorOf(PDFContents *tab) const;
    QPoint centreOfRow(PDFCollectionView *view, int row) const;
    // Waits for the editor's save of every changed document of the window to be written.
    bool everythingSaved() const;

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    QStringList m_alerts;
    int m_answer = Alert::SecondButtonReturn;
};

PDFContents *PagesEditorTest::openTab(const QString &name)
{
    const QString path = m_dir.filePath(name);
    QFile::remove(path);
    if (!PdfFixtures::write(AppFixtures::taggedPages("p", 5), path))
        return nullptr;
    return AppWindow::openTab(m_window, QUrl::fromLocalFile(path));
}

PDFContents *PagesEditorTest::openEditing(const QString &name)
{
    PDFContents *const tab = openTab(name);
    if (!tab)
        return nullptr;
    tab->setIsPagesEditingMode(true);
    QWidget *const grid = editorOf(tab)->collectionView();
    return QTest::qWaitFor([grid] { return QApplication::focusWidget() == grid; }) ? tab : nullptr;
}

PDFPagesEditor *PagesEditorTest::editorOf(PDFContents *tab) const
{
    return tab->container()->pagesEditorController();
}

bool PagesEditorTest::everythingSaved() const
{
    return QTest::qWaitFor([this] {
        TabStripModel *const model = m_window->tabStripModel();
        for (int index = 0; index < model->count(); ++index) {
            auto *const tab = qobject_cast<PDFContents *>(model->getTabContentsAtIndex(index));
            for (FDPDFView *const view : { tab ? tab->primaryPDFView() : nullptr,
                     tab ? tab->secondaryPDFView() : nullptr }) {
                if (view && view->fdDocument() && view->fdDocument()->numberOfChanges() > 0)
                    return false;
            }
        }
        return PDFSavingService::shared().numberOfTasks() == 0;
    });
}

QPoint PagesEditorTest::centreOfRow(PDFCollectionView *view, int row) const
{
    return view->visualRect(view->model()->index(row, 0)).center();
}

FOLIDOC_APP_TEST_MAIN(PagesEditorTest)

#include "PagesEditorTest.moc"
