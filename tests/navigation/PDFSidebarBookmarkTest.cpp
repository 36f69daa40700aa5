// The bookmarks tab: Ctrl+B adds and removes the current page's bookmark, rows come and go with
// the document's notifications, titles are edited in place, a deletion from the list reaches the
// document, and the list is saved into the file and read back when it opens again.

#include "app/support/AppWindow.h"
#include "support/SidebarFixture.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/engine/PDFPage.h>
#include <navigation/PDFBookmarkModel.h>
#include <navigation/PDFBookmarkTableView.h>
#include <navigation/PDFSidebarBookmarkContents.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QLineEdit>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

using namespace SidebarFixture;

class PDFSidebarBookmarkTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        PdfFixtures::Document document = PdfFixtures::textPages(8, 4, 0);
        // Pages i, ii, then 1, 2...: the list shows labels.
        document.labels = { { 0, 'r', QString(), 1 }, { 2, 'D', QString(), 1 } };
        QVERIFY(PdfFixtures::write(document, m_dir.filePath(QStringLiteral("marks.pdf"))));
    }

    void init()
    {
        AppWindow::reset();
        m_window = makeWindow();
    }

    void cleanup()
    {
        m_tab = nullptr;
        m_list = nullptr;
        closeWindow(m_window);
    }

    void ctrlBTogglesTheCurrentPage()
    {
        QVERIFY(open(m_dir.filePath(QStringLiteral("marks.pdf"))));
        const auto document = m_tab->primaryPDFView()->fdDocument();
        goTo(4);
        trigger(QStringLiteral("PDF_onToggleBookmark:"));
        goTo(1);
        trigger(QStringLiteral("PDF_onToggleBookmark:"));
        // In page order, titled by the start of the page's text, with the pages' labels.
        const auto titleOf
            = [&](int page) { return document->pageAtIndex(page)->string().left(30).trimmed(); };
        QCOMPARE(rows(),
            (QStringList {
                titleOf(1) + QStringLiteral("@ii"), titleOf(4) + QStringLiteral("@3") }));
        QCOMPARE(m_list->title(), QStringLiteral("Bookmarks ( 2 )"));
        // The new row is selected.
        QCOMPARE(m_list->tableView()->selectionModel()->selectedRows().first().row(), 0);
        QVERIFY(std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(1))->isBookmarked());
        trigger(QStringLiteral("PDF_onToggleBookmark:"));
        QCOMPARE(rows(), (QStringList { titleOf(4) + QStringLiteral("@3") }));
        QVERIFY(!std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(1))->isBookmarked());
        QCOMPARE(m_list->title(), QStringLiteral("Bookmarks ( 1 )"));
    }

    void titlesAreEditedInPlaceAndRowsDeleted()
    {
        QVERIFY(open(m_dir.filePath(QStringLiteral("marks.pdf"))));
        const auto document = m_tab->primaryPDFView()->fdDocument();
        for (const int page : { 2, 5, 7 })
            QVERIFY(mark(*document, page));
        QCOMPARE(m_list->model()->rowCount(), 3);
        const QString longTitle
            = QStringLiteral("A title long enough to need a second line in the list");
        m_list->editBookmark(1);
        auto *const editor = m_list->tableView()->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QCOMPARE(editor->text(), QStringLiteral("T"));
        editor->setText(longTitle);
        QTest::keyClick(editor, Qt::Key_Return);
        // The delegate commits on the next turn.
        QTRY_COMPARE(document->bookmarks().at(1)->title(), longTitle);
        QCOMPARE(m_list->model()->index(1, 0).data().toString(), longTitle);
        // A title of two lines makes a taller row; an empty one is as tall as one line.
        QTRY_VERIFY(m_list->tableView()->rowHeight(1) > m_list->tableView()->rowHeight(0));
        m_list->model()->setData(m_list->model()->index(0, 0), QString(), Qt::EditRole);
        QCOMPARE(document->bookmarks().at(0)->title(), QString());
        QTRY_COMPARE(m_list->tableView()->rowHeight(0), m_list->tableView()->rowHeight(2));

        // A context-menu delete takes its row; Delete takes the selected one.
        m_list->deleteBookmark(2);
        QCOMPARE(rows(), (QStringList { QStringLiteral("@1"), longTitle + QStringLiteral("@4") }));
        m_list->tableView()->selectRow(0);
        QVERIFY(m_list->tableView()->validateEditCommand(QStringLiteral("delete:")));
        m_list->tableView()->performEditCommand(QStringLiteral("delete:"));
        QCOMPARE(rows(), (QStringList { longTitle + QStringLiteral("@4") }));
        QCOMPARE(document->bookmarks().size(), 1);
    }

    void bookmarksAreSavedAndReadBack()
    {
        const QString path = m_dir.filePath(QStringLiteral("saved.pdf"));
        QVERIFY(QFile::copy(m_dir.filePath(QStringLiteral("marks.pdf")), path));
        QVERIFY(open(path));
        const auto document = m_tab->primaryPDFView()->fdDocument();
        goTo(3);
        trigger(QStringLiteral("PDF_onToggleBookmark:"));
        goTo(6);
        trigger(QStringLiteral("PDF_onToggleBookmark:"));
        m_list->model()->setData(
            m_list->model()->index(1, 0), QStringLiteral("Renamed"), Qt::EditRole);
        QVERIFY(document->numberOfChanges() > 0);
        document->save();
        QVERIFY(waitForSaves());
        // The file's form is BookmarksTest's; here the list reads back what the tab saved.
        const QString first = document->pageAtIndex(3)->string().left(30).trimmed();

        closeWindow(m_window);
        m_window = makeWindow();
        QVERIFY(open(path));
        QCOMPARE(
            rows(), (QStringList { first + QStringLiteral("@2"), QStringLiteral("Renamed@5") }));
        QCOMPARE(m_list->title(), QStringLiteral("Bookmarks ( 2 )"));
        // A row the person selects takes the view to its page.
        m_list->tableView()->selectRow(1);
        QTRY_COMPARE(m_tab->primaryPDFView()->document()->indexForPage(
                         m_tab->primaryPDFView()->currentPage()),
            6);
    }

    void pageColumnFollowsTheLastBookmark_data()
    {
        QTest::addColumn<QList<int>>("pages");
        QTest::addColumn<double>("width");
        QTest::newRow("none leaves the column") << QList<int> {} << 24.0;
        QTest::newRow("last below 100") << QList<int> { 99 } << 24.0;
        QTest::newRow("last at 100") << QList<int> { 40, 100 } << 32.0;
        QTest::newRow("last at 1000") << QList<int> { 5, 1000 } << 40.0;
        QTest::newRow("an early page after a late one") << QList<int> { 1000, 3 } << 40.0;
    }

    void pageColumnFollowsTheLastBookmark()
    {
        QFETCH(QList<int>, pages);
        QFETCH(double, width);
        const QString path = m_dir.filePath(QStringLiteral("long.pdf"));
        if (!QFile::exists(path))
            QVERIFY(PdfFixtures::write(PdfFixtures::textPages(1001, 1, 0), path));
        QVERIFY(open(path));
        const auto document = m_tab->primaryPDFView()->fdDocument();
        for (const int page : pages)
            QVERIFY(mark(*document, page));
        QCOMPARE(m_list->pageColumnWidth(), width);
        QVERIFY(m_list->tableView()->columnWidth(1) >= int(width));
    }

private:
    bool open(const QString &path);
    void goTo(int page);
    void trigger(const QString &command);
    QStringList rows() const;
    static bool mark(FDDocument &document, int page)
    {
        const auto fdPage = std::dynamic_pointer_cast<FDPage>(document.pageAtIndex(page));
        return document.addBookmarkWith(fdPage, QStringLiteral("T"));
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    PDFSidebarBookmarkContents *m_list = nullptr;
};

bool PDFSidebarBookmarkTest::open(const QString &path)
{
    m_tab = openTab(m_window, QUrl::fromLocalFile(path));
    if (!m_tab)
        return false;
    m_list = qobject_cast<PDFSidebarBookmarkContents *>(
        m_tab->sidebarContainer()->controller()->controller(PDFSidebarMode::bookmarks));
    m_tab->setSidebarMode(PDFSidebarMode::bookmarks);
    return m_list;
}

void PDFSidebarBookmarkTest::goTo(int page)
{
    FDPDFView *const view = m_tab->primaryPDFView();
    view->goToPage(view->document()->pageAtIndex(page));
    QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), page);
}

void PDFSidebarBookmarkTest::trigger(const QString &command)
{
    QAction *const action = m_window->menuBar()->findChild<QAction *>(command);
    QVERIFY(action);
    action->trigger();
}

QStringList PDFSidebarBookmarkTest::rows() const
{
    QStringList shown;
    PDFBookmarkModel *const model = m_list->model();
    for (int row = 0; row < model->rowCount(); ++row)
        shown << model->index(row, 0).data().toString() + QLatin1Char('@')
                + model->index(row, 1).data().toString();
    return shown;
}

FOLIDOC_APP_TEST_MAIN(PDFSidebarBookmarkTest)

#include "PDFSidebarBookmarkTest.moc"
