// Search over generated documents in a real window: hits arrive in batches of thirty rows under
// page headers, the first batch shows its first hit, the buttons and keys step over headers,
// a new or repeated query restarts, blanks and stop cancel, and a split tab keeps two lists.

#include "support/SidebarFixture.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <navigation/PDFSearchResultModel.h>
#include <navigation/PDFSearchResultView.h>
#include <navigation/PDFSearchSidebarContainer.h>
#include <navigation/PDFSearchSidebarContents.h>
#include <navigation/PDFViewSearcher.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace SidebarFixture;

namespace {

// What a searcher posts, as "begin", "batch first-last", "end", "cancel".
class SearchRecorder
{
public:
    explicit SearchRecorder(FDPDFView *view)
    {
        NotificationCenter &qk = NotificationCenter::qkCenter();
        qk.addObserver(this, PDFViewSearcher::SearchDidBeginNotification, view,
            [this](const Notification &) { events.append(QStringLiteral("begin")); });
        qk.addObserver(this, PDFViewSearcher::SearchDidFindMatchesNotification, view,
            [this](const Notification &n) {
                const auto rows
                    = n.userInfo.value(PDFViewSearcher::IndexSetKey).value<QList<int>>();
                events.append(QStringLiteral("batch %1-%2").arg(rows.front()).arg(rows.back()));
            });
        qk.addObserver(this, PDFViewSearcher::SearchDidEndNotification, view,
            [this](const Notification &) { events.append(QStringLiteral("end")); });
        qk.addObserver(this, PDFViewSearcher::SearchDidCancelNotification, view,
            [this](const Notification &) { events.append(QStringLiteral("cancel")); });
    }
    ~SearchRecorder() { NotificationCenter::qkCenter().removeObserver(this); }
    QStringList events;
};

} // namespace

class PDFSearchSidebarTest : public QObject
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
        m_tab = nullptr;
        closeWindow(m_window);
    }

    void hitsArriveInBatchesUnderPageHeaders_data()
    {
        QTest::addColumn<int>("pages");
        QTest::addColumn<QStringList>("events");
        // One hit a page makes two rows a page; the 30th row sends a batch.
        QTest::newRow("two batches and the rest")
            << 40 << QStringList { "begin", "batch 0-29", "batch 30-59", "batch 60-79", "end" };
        QTest::newRow("only the end flushes") << 3 << QStringList { "begin", "batch 0-5", "end" };
        QTest::newRow("exactly one batch") << 15 << QStringList { "begin", "batch 0-29", "end" };
    }
    void hitsArriveInBatchesUnderPageHeaders()
    {
        QFETCH(int, pages);
        QFETCH(QStringList, events);
        QVERIFY(open(pages));
        SearchRecorder recorder(m_tab->primaryPDFView());
        m_tab->setQueryString(QStringLiteral("NEEDLE"));
        QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("end"), 30000);
        QCOMPARE(recorder.events, events);
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        QVERIFY(sidebar->isVisible());
        QCOMPARE(sidebar->model()->rowCount(), pages * 2);
        for (int row = 0; row < pages * 2; row += 2) {
            QVERIFY(sidebar->model()->isGroupRow(row));
            QCOMPARE(
                sidebar->model()->index(row).data(PDFSearchResultModel::PageNumberRole).toInt(),
                row / 2 + 1);
        }
        QTRY_COMPARE(sidebar->title(), QStringLiteral("Found: %1").arg(pages));
        // The first hit is selected and shown in the view.
        QCOMPARE(sidebar->selectedRow(), 1);
        FDPDFView *const view = m_tab->primaryPDFView();
        QVERIFY(view->currentSelection());
        QCOMPARE(view->currentSelection()->string(), QStringLiteral("needle"));
        QCOMPARE(m_document->indexForPage(view->currentSelection()->pages().front()), 0);
    }

    // Hundreds of rows come in as appended batches; only the rows shown (and the last screen of
    // the list, which sets the scroll range) are measured and given a snippet, not every hit,
    // and the rows below stay reachable by scrolling.
    void batchesAppendWithoutWorkForHiddenRows()
    {
        QVERIFY(open(300));
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        SearchRecorder recorder(m_tab->primaryPDFView());
        QSignalSpy resets(sidebar->model(), &QAbstractItemModel::modelReset);
        QSignalSpy inserts(sidebar->model(), &QAbstractItemModel::rowsInserted);
        m_tab->setQueryString(QStringLiteral("needle"));
        QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("end"), 30000);
        QCOMPARE(resets.size(), 1); // the begin
        QCOMPARE(inserts.size(), recorder.events.filter(QStringLiteral("batch")).size());
        QCOMPARE(sidebar->model()->rowCount(), 600);
        QTest::qWait(50);
        QVERIFY2(sidebar->model()->snippetCount() < 200,
            qPrintable(QString::number(sidebar->model()->snippetCount())));
        sidebar->listView()->scrollToBottom();
        const auto *const list = sidebar->listView();
        QTRY_VERIFY(
            list->viewport()->rect().intersects(list->visualRect(sidebar->model()->index(599))));
        QVERIFY(sidebar->model()->snippetCount() < 220);
    }

    void snippetsAndStepsOverHeaders()
    {
        QVERIFY(open(4));
        SearchRecorder recorder(m_tab->primaryPDFView());
        m_tab->setQueryString(QStringLiteral("  needle\n")); // the blanks round it are dropped
        QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("end"), 30000);
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        FDPDFView *const view = m_tab->primaryPDFView();

        // A snippet has the keyword marked, with context: the hit is in the middle of a line, so a
        // full 50 characters before it, and after it the next line, trimmed.
        const QModelIndex hit = sidebar->model()->index(1);
        const QString text = hit.data().toString();
        const int start = hit.data(PDFSearchResultModel::KeywordStartRole).toInt();
        QCOMPARE(start, 50);
        QCOMPARE(text.mid(start, hit.data(PDFSearchResultModel::KeywordLengthRole).toInt()),
            QStringLiteral("needle"));
        QVERIFY(text.size() - start - 6 <= 50);
        QVERIFY(!text.back().isSpace());
        QVERIFY2(text.contains(QStringLiteral("needle\nPage 1 line 4")), qPrintable(text));

        // The buttons and F3 step over the headers and take the view along.
        QCOMPARE(sidebar->selectedRow(), 1);
        QVERIFY(!sidebar->prevButton()->isEnabled());
        QVERIFY(sidebar->nextButton()->isEnabled());
        QTest::keyClick(view, Qt::Key_F3);
        QCOMPARE(sidebar->selectedRow(), 3);
        QCOMPARE(m_document->indexForPage(view->currentSelection()->pages().front()), 1);
        QTRY_COMPARE(view->currentPage(), m_document->pageAtIndex(1));
        sidebar->nextButton()->click();
        sidebar->nextButton()->click();
        QCOMPARE(sidebar->selectedRow(), 7);
        QVERIFY(!sidebar->nextButton()->isEnabled());
        sidebar->nextButton()->click();
        QCOMPARE(sidebar->selectedRow(), 7);
        QTest::keyClick(view, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(sidebar->selectedRow(), 5);
        QCOMPARE(m_document->indexForPage(view->currentSelection()->pages().front()), 2);
        // A header cannot be selected.
        QVERIFY(!(sidebar->model()->flags(sidebar->model()->index(4)) & Qt::ItemIsSelectable));
    }

    void queriesRestartAndCancel_data()
    {
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<bool>("shown");
        QTest::newRow("same query restarts")
            << "needle" << QStringList { "cancel", "begin", "batch 0-3", "end" } << true;
        QTest::newRow("blanks cancel") << "  \n " << QStringList { "cancel" } << false;
        QTest::newRow("no hit") << "haystack" << QStringList { "cancel", "begin", "end" } << true;
    }
    void queriesRestartAndCancel()
    {
        QFETCH(QString, second);
        QFETCH(QStringList, events);
        QFETCH(bool, shown);
        QVERIFY(open(2));
        SearchRecorder recorder(m_tab->primaryPDFView());
        m_tab->setQueryString(QStringLiteral("needle"));
        QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("end"), 30000);
        recorder.events.clear();
        m_tab->setQueryString(second);
        if (shown)
            QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("end"), 30000);
        QCOMPARE(recorder.events, events);
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        QCOMPARE(m_tab->searchSidebarContainer()->isVisibleTo(m_window->window()), shown);
        QCOMPARE(sidebar->model()->rowCount(), events.contains("batch 0-3") ? 4 : 0);
        if (shown)
            QTRY_COMPARE(sidebar->title(),
                QStringLiteral("Found: %1").arg(events.contains("batch 0-3") ? 2 : 0));
    }

    void stopClearsTheQuery()
    {
        QVERIFY(open(200));
        SearchRecorder recorder(m_tab->primaryPDFView());
        m_tab->setQueryString(QStringLiteral("needle"));
        QTRY_VERIFY_WITH_TIMEOUT(recorder.events.contains("batch 0-29"), 30000);
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        QVERIFY(sidebar->stopButton()->isVisible());
        sidebar->stopButton()->click();
        QVERIFY(!m_tab->queryString());
        QVERIFY(!m_tab->primarySearcher()->isSearching());
        QCOMPARE(sidebar->model()->rowCount(), 0);
        QVERIFY(!m_tab->searchSidebarContainer()->isVisible());
        QVERIFY(recorder.events.contains("cancel"));
        QVERIFY(!recorder.events.contains("end"));
    }

    void splitTabKeepsAListPerView()
    {
        QVERIFY(open(6));
        m_tab->setSplitMode(PDFSplitViewMode::vertical);
        FDPDFView *const primary = m_tab->primaryPDFView();
        FDPDFView *const secondary = m_tab->secondaryPDFView();
        secondary->loadDocument(QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("search6.pdf"))));
        QTRY_VERIFY(secondary->document() && !secondary->isLoading());
        SearchRecorder first(primary);
        SearchRecorder second(secondary);
        m_tab->setQueryString(QStringLiteral("needle"));
        QTRY_VERIFY_WITH_TIMEOUT(
            first.events.contains("end") && second.events.contains("end"), 30000);
        PDFSearchSidebarContents *const sidebar = searchSidebar();
        QCOMPARE(sidebar->searcher(), m_tab->primarySearcher());
        sidebar->nextButton()->click();
        sidebar->nextButton()->click();
        QCOMPARE(sidebar->selectedRow(), 5);
        const auto primaryPage = primary->currentPage();
        // The other view: its own list, at its own row (none chosen there yet), moving nothing.
        m_tab->PDFViewDidBecomeFirstResponder(secondary);
        QCOMPARE(sidebar->searcher(), m_tab->secondarySearcher());
        QCOMPARE(sidebar->model()->rowCount(), 12);
        QCOMPARE(sidebar->selectedRow(), -1);
        const auto secondaryPage = secondary->currentPage();
        m_tab->PDFViewDidBecomeFirstResponder(primary);
        QCOMPARE(sidebar->selectedRow(), 5);
        QCOMPARE(primary->currentPage(), primaryPage);
        QCOMPARE(secondary->currentPage(), secondaryPage);
    }

    void titleCountsHits_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("finding");
        QTest::addColumn<QString>("title");
        QTest::newRow("finding") << 12 << true << "Found: 12...";
        QTest::newRow("done") << 0 << false << "Found: 0";
        QTest::newRow("largest with prefix") << 9999 << false << "Found: 9999";
        QTest::newRow("too many for the prefix") << 10000 << false << "10000";
    }
    void titleCountsHits()
    {
        QFETCH(int, count);
        QFETCH(bool, finding);
        QFETCH(QString, title);
        QCOMPARE(PDFSearchSidebarContents::titleFor(count, finding), title);
    }

private:
    bool open(int pages)
    {
        const QString path = m_dir.filePath(QStringLiteral("search%1.pdf").arg(pages));
        if (!QFile::exists(path) && !PdfFixtures::write(PdfFixtures::textPages(pages, 40, 1), path))
            return false;
        m_tab = openTab(m_window, QUrl::fromLocalFile(path));
        if (!m_tab)
            return false;
        m_document = m_tab->primaryPDFView()->fdDocument();
        return m_document != nullptr;
    }
    PDFSearchSidebarContents *searchSidebar() const
    {
        return m_tab->searchSidebarContainer()->controller();
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    std::shared_ptr<FDDocument> m_document;
};

FOLIDOC_APP_TEST_MAIN(PDFSearchSidebarTest)
#include "PDFSearchSidebarTest.moc"
