// The outline tab edits the document's outline in place: adding for the current place,
// retitling and re-targeting in the destination editor, deleting (one undo step) and moving by
// drag with the design's drop rules. Every edit is saved into the file, where qpdf and poppler
// read the same tree back.

#include "app/support/AppWindow.h"
#include "support/SidebarFixture.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/support/RawPdf.h>
#include <navigation/FDOutlineView.h>
#include <navigation/PDFDestinationEditor.h>
#include <navigation/PDFOutlineModel.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <navigation/PDFSidebarOutlineContents.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace SidebarFixture;

namespace {

// A:1 (A1:1, A2:2, A3:2), B:3, C:4 (C1:5), D:5, E:6
const QString initialTree = QStringLiteral("A@1(A1@1,A2@2,A3@2),B@3,C@4(C1@5),D@5,E@6");

PdfFixtures::OutlineItem item(
    const QString &title, int page, const QList<PdfFixtures::OutlineItem> &children = {})
{
    PdfFixtures::OutlineItem made;
    made.title = title;
    made.page = page;
    made.point = QPointF(10, 700);
    made.children = children;
    return made;
}

} // namespace

class PDFSidebarOutlineTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = makeWindow();
    }

    void cleanup()
    {
        PDFDestinationEditor::shared().hide();
        m_document.reset();
        m_outline = nullptr;
        m_tab = nullptr;
        closeWindow(m_window);
    }

    void addPlacesTheNewItem_data()
    {
        QTest::addColumn<QString>("selected"); // a path, or empty for no selection
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("selectedCharacters"); // 0: no text selection
        QTest::addColumn<QString>("newPath");
        QTest::newRow("nothing selected: last top-level item") << QString() << 3 << 0 << "5";
        QTest::newRow("selected item with children: its last child") << "2" << 3 << 0 << "2.1";
        QTest::newRow("selected leaf: its next sibling") << "0.1" << 3 << 0 << "0.2";
        QTest::newRow("selected top-level leaf: its next sibling") << "1" << 3 << 0 << "2";
        QTest::newRow("page text cut to 40 characters") << QString() << 2 << 0 << "5";
        QTest::newRow("selected text taken whole") << QString() << 0 << 100 << "5";
    }

    void addPlacesTheNewItem()
    {
        QFETCH(QString, selected);
        QFETCH(int, page);
        QFETCH(int, selectedCharacters);
        QFETCH(QString, newPath);
        QVERIFY(open(writeFixture(QStringLiteral("add.pdf"))));
        FDPDFView *const view = m_tab->primaryPDFView();
        const auto target = m_document->pageAtIndex(page);
        view->goToPage(target);
        QTRY_COMPARE(view->currentPage(), target);
        QString wanted
            = target->string().size() > 40 ? target->string().left(40) : target->string();
        if (selectedCharacters > 0) {
            const auto selection = target->selectionForRange({ 0, selectedCharacters });
            QVERIFY(selection);
            view->setCurrentSelection(selection);
            wanted = selection->string();
            QCOMPARE(wanted.size(), selectedCharacters);
        }
        wanted = wanted.trimmed();
        // Page following has selected the page's item by now; a row is chosen or none.
        QCoreApplication::processEvents();
        m_outline->selectOutlineWithItem(
            selected.isEmpty() ? nullptr : itemAt(m_document->outlineRoot(), selected));
        // Ctrl+Alt+O goes through the tab's notification to the sidebar.
        m_tab->PDFViewPerformAddOutline(view);

        const auto made = itemAt(m_document->outlineRoot(), newPath);
        QVERIFY(made);
        QCOMPARE(made->label(), wanted);
        QCOMPARE(made->destination()->page(), target);
        QCOMPARE(m_outline->selectedItems(), (std::vector<std::shared_ptr<PDFOutline>> { made }));
        QVERIFY(!m_tab->isSidebarHidden());
        QCOMPARE(m_tab->sidebarMode(), PDFSidebarMode::toc);
        saveAndReadBack(treeOf(m_document->outlineRoot()));
    }

    void addWithoutAnOutlineMakesTheRoot()
    {
        QVERIFY(open(writeFixture(QStringLiteral("bare.pdf"), false)));
        QVERIFY(!m_document->outlineRoot());
        m_outline->onAddItem();
        QVERIFY(m_document->outlineRoot());
        QCOMPARE(m_outline->model()->rowCount(), 1);
        const auto made = itemAt(m_document->outlineRoot(), QStringLiteral("0"));
        QCOMPARE(m_outline->model()->indexForItem(made).row(), 0);
        saveAndReadBack(made->label() + QStringLiteral("@1"));
    }

    void editRetitlesAndRetargets_data()
    {
        QTest::addColumn<QString>("page"); // as typed, with "Bee" as the new title
        QTest::addColumn<QString>("expected");
        const QString bee = QStringLiteral("A@1(A1@1,A2@2,A3@2),Bee@%1,C@4(C1@5),D@5,E@6");
        QTest::newRow("retitle and re-target") << "6" << bee.arg(6);
        QTest::newRow("same page loses nothing but the title") << "3" << bee.arg(3);
        for (const char *page : { "0", "", "7" }) // none, and one past the end
            QTest::addRow("page \"%s\" drops the whole edit", page) << page << initialTree;
    }

    void editRetitlesAndRetargets()
    {
        QFETCH(QString, page);
        QFETCH(QString, expected);
        QVERIFY(open(writeFixture(QStringLiteral("edit.pdf"))));
        const auto b = itemAt(m_document->outlineRoot(), QStringLiteral("1"));
        QCOMPARE(b->destination()->point(), QPointF(10, 700));
        m_outline->onEditItem(m_outline->model()->indexForItem(b));
        PDFDestinationEditor &editor = PDFDestinationEditor::shared();
        QVERIFY(editor.isVisible());
        QCOMPARE(editor.labelField()->text(), QStringLiteral("B"));
        QCOMPARE(editor.pageIndexField()->text(), QStringLiteral("3"));
        QCOMPARE(editor.numberOfPages(), QStringLiteral("of 6"));
        editor.labelField()->setText(QStringLiteral("Bee"));
        editor.pageIndexField()->setText(page);
        // There is no cancel: closing commits, whichever way it closes.
        editor.close();
        QVERIFY(!editor.isVisible());
        QCOMPARE(treeOf(m_document->outlineRoot()), expected);
        if (expected == initialTree) {
            QCOMPARE(m_document->numberOfChanges(), 0);
            return;
        }
        // The finer place within the page is given up.
        QCOMPARE(b->destination()->point(), QPointF(0, 0));
        saveAndReadBack(expected);
    }

    void pageFieldTakesDigitsOnly()
    {
        QVERIFY(open(writeFixture(QStringLiteral("digits.pdf"))));
        m_outline->onEditItem(m_outline->model()->indexForItem(
            itemAt(m_document->outlineRoot(), QStringLiteral("3"))));
        QLineEdit *const field = PDFDestinationEditor::shared().pageIndexField();
        field->clear();
        QTest::keyClicks(field, QStringLiteral("1x2-3 4"));
        QCOMPARE(field->text(), QStringLiteral("1234"));
        QApplication::clipboard()->setText(QStringLiteral("five"));
        field->paste();
        QCOMPARE(field->text(), QStringLiteral("1234"));
        QApplication::clipboard()->setText(QStringLiteral("5"));
        field->paste();
        QCOMPARE(field->text(), QStringLiteral("12345"));
    }

    void deleteRemovesSubtreesAndUndoPutsThemBack()
    {
        QVERIFY(open(writeFixture(QStringLiteral("delete.pdf"))));
        const auto root = m_document->outlineRoot();
        QItemSelectionModel *const selection = m_outline->outlineView()->selectionModel();
        for (const QString &path :
            { QStringLiteral("0"), QStringLiteral("0.1"), QStringLiteral("3") })
            selection->select(m_outline->model()->indexForItem(itemAt(root, path)),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        // A context menu on a row outside the selection deletes that row alone.
        m_outline->deleteItems(m_outline->model()->indexForItem(itemAt(root, QStringLiteral("4"))));
        QCOMPARE(treeOf(root), QStringLiteral("A@1(A1@1,A2@2,A3@2),B@3,C@4(C1@5),D@5"));
        // An undo step ends with the turn of the event loop.
        QCoreApplication::processEvents();
        // The selection goes, a selected child with its selected parent.
        m_outline->deleteItems();
        QCOMPARE(treeOf(root), QStringLiteral("B@3,C@4(C1@5)"));
        QVERIFY(!m_outline->delButton()->isEnabled());
        UndoManager *const undo = m_tab->undoManager();
        QVERIFY(undo);
        QCOMPARE(undo->undoActionName(), QStringLiteral("Delete Outline Items"));
        undo->undo();
        QCOMPARE(treeOf(root), QStringLiteral("A@1(A1@1,A2@2,A3@2),B@3,C@4(C1@5),D@5"));
        undo->redo();
        QCOMPARE(treeOf(root), QStringLiteral("B@3,C@4(C1@5)"));
        saveAndReadBack(QStringLiteral("B@3,C@4(C1@5)"));
    }

    void dropsFollowTheRules_data()
    {
        QTest::addColumn<QStringList>("dragged"); // paths, in drag order
        QTest::addColumn<QString>("target"); // a path; empty for the top level
        QTest::addColumn<int>("childIndex");
        QTest::addColumn<QString>("expected"); // empty: the drop is refused
        QTest::newRow("down among siblings")
            << QStringList { "1" } << QString() << 4 << "A@1(A1@1,A2@2,A3@2),C@4(C1@5),D@5,B@3,E@6";
        QTest::newRow("up among siblings")
            << QStringList { "3" } << QString() << 1 << "A@1(A1@1,A2@2,A3@2),D@5,B@3,C@4(C1@5),E@6";
        QTest::newRow("one up and one down keep their order") << QStringList { "1",
            "4" } << QString() << 3 << "A@1(A1@1,A2@2,A3@2),C@4(C1@5),B@3,E@6,D@5";
        QTest::newRow("on an item appends to its children")
            << QStringList { "1" } << "2" << -1 << "A@1(A1@1,A2@2,A3@2),C@4(C1@5,B@3),D@5,E@6";
        QTest::newRow("on a leaf makes it a parent") << QStringList { "4",
            "3" } << "1" << -1 << "A@1(A1@1,A2@2,A3@2),B@3(E@6,D@5),C@4(C1@5)";
        QTest::newRow("out of a parent") << QStringList { "0.1" } << QString() << 0
                                         << "A2@2,A@1(A1@1,A3@2),B@3,C@4(C1@5),D@5,E@6";
        QTest::newRow("into a parent")
            << QStringList { "3" } << "0" << 1 << "A@1(A1@1,D@5,A2@2,A3@2),B@3,C@4(C1@5),E@6";
        QTest::newRow("siblings and strangers") << QStringList { "0.0", "1" } << QString() << 3
                                                << "A@1(A2@2,A3@2),C@4(C1@5),B@3,A1@1,D@5,E@6";
        QTest::newRow("on the top level appends") << QStringList { "0.2" } << QString() << -1
                                                  << "A@1(A1@1,A2@2),B@3,C@4(C1@5),D@5,E@6,A3@2";
        QTest::newRow("into its own child refused")
            << QStringList { "0" } << "0.1" << -1 << QString();
        QTest::newRow("into itself refused") << QStringList { "2" } << "2" << 0 << QString();
        QTest::newRow("below a dragged parent refused")
            << QStringList { "1", "2" } << "2.0" << -1 << QString();
    }

    void dropsFollowTheRules()
    {
        QFETCH(QStringList, dragged);
        QFETCH(QString, target);
        QFETCH(int, childIndex);
        QFETCH(QString, expected);
        QVERIFY(open(writeFixture(QStringLiteral("drop.pdf"))));
        const auto root = m_document->outlineRoot();
        std::vector<std::shared_ptr<PDFOutline>> items;
        for (const QString &path : dragged)
            items.push_back(itemAt(root, path));
        const QModelIndex targetIndex = target.isEmpty()
            ? QModelIndex()
            : m_outline->model()->indexForItem(itemAt(root, target));
        m_outline->draggingWillBegin(items);
        const bool valid = m_outline->validateDrop(targetIndex, childIndex);
        QCOMPARE(valid, !expected.isEmpty());
        if (!valid) {
            m_outline->draggingDidEnd();
            QCOMPARE(treeOf(root), initialTree);
            return;
        }
        QVERIFY(m_outline->acceptDrop(targetIndex, childIndex));
        m_outline->draggingDidEnd();
        QCOMPARE(treeOf(root), expected);
        // The moved items are selected, and shown by a tree that agrees with the outline.
        std::vector<std::shared_ptr<PDFOutline>> selected = m_outline->selectedItems();
        QCOMPARE(selected.size(), items.size());
        for (const auto &moved : items) {
            const QModelIndex index = m_outline->model()->indexForItem(moved);
            QVERIFY(index.isValid());
            QCOMPARE(m_outline->model()->itemForIndex(index), moved);
            QCOMPARE(
                m_outline->model()->rowCount(index.parent()), moved->parent()->numberOfChildren());
        }
        saveAndReadBack(expected);
    }

    void followsTheReaderWithTheLastItemOfAPage()
    {
        QVERIFY(open(writeFixture(QStringLiteral("follow.pdf"))));
        FDPDFView *const view = m_tab->primaryPDFView();
        const auto root = m_document->outlineRoot();
        const auto selectedOnPage = [&](int page) {
            view->goToPage(m_document->pageAtIndex(page));
            QCoreApplication::processEvents();
            QCoreApplication::processEvents();
            const auto items = m_outline->selectedItems();
            return items.empty() ? QString() : items.front()->label();
        };
        QTRY_COMPARE(selectedOnPage(1), QStringLiteral("A3"));
        QTRY_COMPARE(selectedOnPage(2), QStringLiteral("B"));
        // The last outlined page selects nothing, by design.
        QTRY_COMPARE(selectedOnPage(5), QString());
        // Pages 5 holds C1 and D: the later one is the page's.
        QTRY_COMPARE(selectedOnPage(4), QStringLiteral("D"));
        // A selection that fits the page already stays.
        m_outline->selectOutlineWithItem(itemAt(root, QStringLiteral("0.1")));
        QTRY_COMPARE(selectedOnPage(1), QStringLiteral("A2"));
    }

    void outlineWithALoopShowsOnceAndSavesWithout()
    {
        // "Two" follows "One" and leads back to it, both as its next item and as its child.
        const QByteArray pdf = RawPdf::build({ "<< /Type /Catalog /Pages 2 0 R /Outlines 5 0 R >>",
            "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", RawPdf::page(2, 4),
            RawPdf::textContent("Loop"), "<< /Type /Outlines /First 6 0 R /Last 7 0 R /Count 2 >>",
            "<< /Title (One) /Parent 5 0 R /Next 7 0 R /Dest [3 0 R /XYZ 0 792 0] >>",
            "<< /Title (Two) /Parent 5 0 R /Prev 6 0 R /Next 6 0 R /First 6 0 R /Last 6 0 R "
            "/Count 1 /Dest [3 0 R /Fit] >>" });
        const QString path = m_dir.filePath(QStringLiteral("loop.pdf"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(pdf) == pdf.size());
        file.close();
        QVERIFY(open(path));
        const QString shown = treeOf(m_document->outlineRoot());
        QVERIFY2(
            shown.startsWith(QStringLiteral("One@1")) && shown.count(QStringLiteral("One")) == 1,
            qPrintable(shown));
        m_outline->outlineView()->expandAll();
        QVERIFY(m_outline->model()->rowCount() <= 2);
        m_outline->selectOutlineWithItem(nullptr);
        m_outline->onAddItem();
        saveAndReadBack(treeOf(m_document->outlineRoot()));
    }

private:
    QString writeFixture(const QString &name, bool withOutline = true);
    bool open(const QString &path);
    // Saves the document and checks that both readers see what the tab shows.
    void saveAndReadBack(const QString &expected);

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    PDFSidebarOutlineContents *m_outline = nullptr;
    std::shared_ptr<FDDocument> m_document;
    QString m_path;
};

QString PDFSidebarOutlineTest::writeFixture(const QString &name, bool withOutline)
{
    PdfFixtures::Document document = PdfFixtures::textPages(6, 8, 0);
    // A page whose text runs longer than a label takes.
    document.pages[2].lines = { QStringLiteral("Forty-one characters make this long line: "
                                               "and more words follow it") };
    if (withOutline) {
        document.outline = { item(QStringLiteral("A"), 0,
                                 { item(QStringLiteral("A1"), 0), item(QStringLiteral("A2"), 1),
                                     item(QStringLiteral("A3"), 1) }),
            item(QStringLiteral("B"), 2),
            item(QStringLiteral("C"), 3, { item(QStringLiteral("C1"), 4) }),
            item(QStringLiteral("D"), 4), item(QStringLiteral("E"), 5) };
    }
    const QString path = m_dir.filePath(name);
    PdfFixtures::write(document, path);
    return path;
}

bool PDFSidebarOutlineTest::open(const QString &path)
{
    m_path = path;
    m_tab = openTab(m_window, QUrl::fromLocalFile(path));
    if (!m_tab)
        return false;
    m_document = m_tab->primaryPDFView()->fdDocument();
    m_outline = qobject_cast<PDFSidebarOutlineContents *>(
        m_tab->sidebarContainer()->controller()->controller(PDFSidebarMode::toc));
    m_tab->setSidebarMode(PDFSidebarMode::toc);
    return m_document && m_outline;
}

void PDFSidebarOutlineTest::saveAndReadBack(const QString &expected)
{
    QCOMPARE(treeOf(m_document->outlineRoot()), expected);
    // An edit is a change of the document, so it is saved.
    QVERIFY(m_document->numberOfChanges() > 0);
    m_document->save();
    QVERIFY(waitForSaves());
    // The bookmarks' hidden branch is written first, empty.
    const QString inFile = QStringLiteral("My Bookmarks,") + expected;
    FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
    QCOMPARE(outlineByQpdf(qpdf, m_path), inFile);
    FOLIDOC_REQUIRE_TOOL(pdftohtml, "pdftohtml");
    // Poppler's XML drops the line breaks of a multi-line title.
    QCOMPARE(outlineByPoppler(pdftohtml, m_path), QString(inFile).remove(QLatin1Char('\n')));
}

FOLIDOC_APP_TEST_MAIN(PDFSidebarOutlineTest)

#include "PDFSidebarOutlineTest.moc"
