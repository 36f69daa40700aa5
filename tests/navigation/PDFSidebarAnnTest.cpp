// The annotations tab over a real window: dates in the design's week-year pattern, rows that
// follow additions and removals with headers in page order, selection both ways, and Delete.

#include "app/support/AppTestEnvironment.h"
#include "support/SidebarFixture.h"

#include <annotation/FDAnnotationText.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <navigation/PDFAnnotationListModel.h>
#include <navigation/PDFSidebarAnnContents.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QListView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace SidebarFixture;

class PDFSidebarAnnTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        PDFContents::registerAsDocumentContents();
    }
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
        m_window = makeWindow();
    }
    void cleanup()
    {
        m_tab = nullptr;
        closeWindow(m_window);
    }

    void datesUseTheWeekYear_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("text");
        QTest::newRow("mid year") << QDate(2024, 6, 15) << "06/15/24";
        QTest::newRow("new year's eve in the next week-year") << QDate(2024, 12, 30) << "12/30/25";
        QTest::newRow("new year's day in the last week-year") << QDate(2021, 1, 1) << "01/01/20";
        QTest::newRow("first Monday of its own year") << QDate(2024, 1, 1) << "01/01/24";
        QTest::newRow("week 53 reaching into January") << QDate(2016, 1, 3) << "01/03/15";
        QTest::newRow("Thursday keeps its year") << QDate(2026, 1, 1) << "01/01/26";
    }
    void datesUseTheWeekYear()
    {
        QFETCH(QDate, date);
        QFETCH(QString, text);
        QCOMPARE(PDFAnnotationListModel::formatDate(QDateTime(date, QTime(12, 0))), text);
    }

    void rowsFollowAddsAndRemoves()
    {
        QVERIFY(open());
        PDFAnnotationListModel *const model = m_list->model();
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(m_list->title(), QStringLiteral("Annotations ( 0 )"));
        FDPDFView *const view = m_tab->primaryPDFView();
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        // Pages 3, then 1, then 2: headers land in page order.
        const auto onThree = addNote(2, QStringLiteral("three"));
        const auto onOne = addNote(0, QStringLiteral("one"));
        const auto onTwo = addNote(1, QString());
        QCOMPARE(rows(), QStringList({ "#1", "one", "#2", "(empty)", "#3", "three" }));
        QCOMPARE(inserted.size(), 3);
        QCOMPARE(inserted.at(1).at(1).toInt(), 0);
        QCOMPARE(inserted.at(1).at(2).toInt(), 1);
        // A second one on a listed page leads its group.
        const auto second = addNote(0, QStringLiteral("one again"));
        QCOMPARE(rows(), QStringList({ "#1", "one again", "one", "#2", "(empty)", "#3", "three" }));
        QCOMPARE(m_list->title(), QStringLiteral("Annotations ( 4 )"));
        QCOMPARE(m_list->listView()->currentIndex().row(), 1);
        QCOMPARE(model->index(1).data(PDFAnnotationListModel::AuthorRole).toString(),
            second->userName().isEmpty() ? QStringLiteral("Anonymous") : second->userName());
        // The last row of a group takes its header; the last group works at the end.
        view->removeAnnotation(onTwo);
        QCOMPARE(rows(), QStringList({ "#1", "one again", "one", "#3", "three" }));
        QCOMPARE(removed.last().at(1).toInt(), 3);
        QCOMPARE(removed.last().at(2).toInt(), 4);
        m_list->deleteAnn(4);
        QCOMPARE(rows(), QStringList({ "#1", "one again", "one" }));
        view->removeAnnotation(onOne);
        QCOMPARE(rows(), QStringList({ "#1", "one again" }));
        QCOMPARE(m_list->title(), QStringLiteral("Annotations ( 1 )"));
        Q_UNUSED(onThree);
    }

    void aHiddenListIsMadeWhenFirstShown_data()
    {
        QTest::addColumn<bool>("sidebarHidden");
        QTest::newRow("another tab of the sidebar") << false;
        QTest::newRow("the sidebar closed") << true;
    }
    void aHiddenListIsMadeWhenFirstShown()
    {
        QFETCH(bool, sidebarHidden);
        QVERIFY(open(PDFSidebarMode::thumbnails));
        m_tab->setIsSidebarHidden(sidebarHidden);
        addNote(1, QStringLiteral("made unseen"));
        // Out of sight, the list reads no page; its rows come with the showing.
        QVERIFY(!m_list->isVisible());
        QCOMPARE(m_list->model()->rowCount(), 0);
        m_tab->setIsSidebarHidden(false);
        m_tab->setSidebarMode(PDFSidebarMode::annotations);
        QTRY_VERIFY(m_list->isVisible());
        QCOMPARE(rows(), QStringList({ "#2", "made unseen" }));
        QCOMPARE(m_list->title(), QStringLiteral("Annotations ( 1 )"));
        // Shown, it follows changes row by row again.
        addNote(0, QStringLiteral("made in sight"));
        QCOMPARE(rows(), QStringList({ "#1", "made in sight", "#2", "made unseen" }));
    }

    void selectionGoesBothWays()
    {
        QVERIFY(open());
        FDPDFView *const view = m_tab->primaryPDFView();
        const auto first = addNote(0, QStringLiteral("first"));
        const auto last = addNote(2, QStringLiteral("last"));
        view->setSelectedAnn(first);
        QCOMPARE(m_list->listView()->currentIndex().row(), 1);
        const QRect rowRect = m_list->listView()->visualRect(m_list->model()->index(3));
        QTest::mouseClick(m_list->listView()->viewport(), Qt::LeftButton, {}, rowRect.center());
        QCOMPARE(view->selectedAnn(), last);
        // Delete acts on the selected row; the view's removal is what takes the row away.
        m_list->deleteSelected();
        QCOMPARE(m_list->model()->rowCount(), 2);
        QCOMPARE(m_document->pageAtIndex(2)->annotations().size(), size_t(0));
    }

private:
    bool open(PDFSidebarMode mode = PDFSidebarMode::annotations)
    {
        const QString path = m_dir.filePath(QStringLiteral("ann.pdf"));
        if (!QFile::exists(path) && !PdfFixtures::write(PdfFixtures::textPages(3, 10, 0), path))
            return false;
        m_tab = openTab(m_window, QUrl::fromLocalFile(path));
        if (!m_tab)
            return false;
        m_document = m_tab->primaryPDFView()->fdDocument();
        m_tab->setIsSidebarHidden(false);
        m_tab->setSidebarMode(mode);
        m_list = qobject_cast<PDFSidebarAnnContents *>(
            m_tab->sidebarContainer()->controller()->controller(PDFSidebarMode::annotations));
        return m_document && m_list;
    }
    std::shared_ptr<PDFAnnotation> addNote(int pageIndex, const QString &text)
    {
        const auto page = m_document->pageAtIndex(pageIndex);
        auto note = std::make_shared<FDAnnotationText>();
        note->initWithBounds(QRectF(100, 100 + 20 * pageIndex, 20, 20));
        note->setContents(text);
        m_tab->primaryPDFView()->addAnnotation(note, page);
        return note;
    }
    // Headers as "#page", annotations by their text.
    QStringList rows() const
    {
        QStringList made;
        PDFAnnotationListModel *const model = m_list->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row);
            made.append(index.data(PDFAnnotationListModel::IsGroupRole).toBool()
                    ? QStringLiteral("#%1").arg(
                        index.data(PDFAnnotationListModel::PageNumberRole).toInt())
                    : index.data().toString());
        }
        return made;
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    PDFSidebarAnnContents *m_list = nullptr;
    std::shared_ptr<FDDocument> m_document;
};

QTEST_MAIN(PDFSidebarAnnTest)
#include "PDFSidebarAnnTest.moc"
