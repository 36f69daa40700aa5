// The annotations tab over a real window: dates in the design's week-year pattern, rows that
// follow additions and removals with headers in page order, selection both ways, and Delete.

#include "app/support/AppWindow.h"
#include "support/SidebarFixture.h"

#include <annotation/FDAnnotationText.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFAnnotation.h>
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
#include <functional>

using namespace SidebarFixture;

namespace {

// A header as "#page", an annotation by its text.
QString rowText(const QAbstractItemModel *model, int row)
{
    const QModelIndex index = model->index(row, 0);
    return index.data(PDFAnnotationListModel::IsGroupRole).toBool()
        ? QStringLiteral("#%1").arg(index.data(PDFAnnotationListModel::PageNumberRole).toInt())
        : index.data().toString();
}

} // namespace

class PDFSidebarAnnTest : public QObject
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
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        QCOMPARE(PDFAnnotationListModel::formatDate(QDateTime(date, QTime(12, 0)), english), text);
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
        addNote(2, QStringLiteral("three"));
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
        QVERIFY(open(QStringLiteral("ann"), PDFSidebarMode::thumbnails));
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

    // Page operations as the pages editor makes them; after each the rows, and the rows a
    // recording of the model's signals arrives at, are those of the document as it now is.
    void rowsFollowPageChanges_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("first and last exchanged")
            << "exchange 0 2" << QStringList({ "#1", "three", "#3", "one b", "one a" });
        QTest::newRow("annotated page removed") << "remove 0" << QStringList({ "#2", "three" });
        QTest::newRow("plain page removed")
            << "remove 1" << QStringList({ "#1", "one b", "one a", "#2", "three" });
        QTest::newRow("page inserted before all")
            << "insert 0" << QStringList({ "#2", "one b", "one a", "#4", "three" });
        QTest::newRow("added right after a move")
            << "exchange 1 2, add 1"
            << QStringList({ "#1", "one b", "one a", "#2", "new", "three" });
    }
    void rowsFollowPageChanges()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, expected);
        // Page changes are saved with the file: each row starts from its own.
        QVERIFY(open(QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-')));
        // Built from the document: notes on pages 1 and 3, page 2 plain.
        m_tab->primaryPDFView()->setSelectedAnn(nullptr);
        addNote(0, QStringLiteral("one b"));
        addNote(0, QStringLiteral("one a"));
        addNote(2, QStringLiteral("three"));
        PDFAnnotationListModel *const model = m_list->model();
        RowRecording recording(model, [this] { return rows(); });
        for (const QString &step : operation.split(QStringLiteral(", "))) {
            const QStringList words = step.split(QLatin1Char(' '));
            const int index = words.at(1).toInt();
            if (words.front() == QLatin1String("exchange"))
                m_document->exchangePageAtIndex(index, words.at(2).toInt());
            else if (words.front() == QLatin1String("remove"))
                m_document->removePageAtIndex(index);
            else if (words.front() == QLatin1String("insert"))
                m_document->insertPage(m_document->pageAtIndex(1)->copy(), index);
            else if (words.front() == QLatin1String("add"))
                addNote(index, QStringLiteral("new"));
        }
        QTRY_COMPARE(rows(), expected);
        QCOMPARE(recording.rows, expected);
        QCOMPARE(m_list->title(), QStringLiteral("Annotations ( %1 )").arg(model->annCount()));
        // The rows stand as a rebuild from the document would make them, but that a new
        // annotation leads its group until the next rebuild.
        m_list->model()->rebuild(m_document);
        if (operation.endsWith(QLatin1String("add 1")))
            expected.move(expected.indexOf(QStringLiteral("new")), expected.size() - 1);
        QCOMPARE(rows(), expected);
    }

    // A row is as tall as its text at the list's width: longer text or a narrower list grows
    // that row alone, and the rows below move with it, neither overlapping nor leaving a gap.
    void rowsFitTheirTextAndTheListWidth()
    {
        QVERIFY(open());
        const auto first
            = addNote(0, QStringLiteral("a note long enough to wrap once the list is narrow"));
        addNote(1, QStringLiteral("next"));
        QListView *const list = m_list->listView();
        const auto rectOf = [&](int row) { return list->visualRect(m_list->model()->index(row)); };
        list->resize(600, list->height());
        QTRY_COMPARE(rectOf(2).top(), rectOf(1).bottom() + 1);
        const int wide = rectOf(1).height();
        list->resize(140, list->height());
        QTRY_VERIFY(rectOf(1).height() > wide);
        QCOMPARE(rectOf(2).top(), rectOf(1).bottom() + 1);
        const int narrow = rectOf(1).height();
        const int otherBefore = rectOf(3).height();
        first->setContents(QString(QStringLiteral("a longer note that wraps ")).repeated(12));
        QTRY_VERIFY(rectOf(1).height() > narrow);
        QCOMPARE(rows().at(1), first->contents());
        QCOMPARE(rectOf(3).height(), otherBefore);
        QCOMPARE(rectOf(2).top(), rectOf(1).bottom() + 1);
    }

private:
    // Follows the model's signals alone, reading only the rows they name.
    struct RowRecording
    {
        RowRecording(QAbstractItemModel *model, std::function<QStringList()> all)
        {
            rows = all();
            QObject::connect(model, &QAbstractItemModel::rowsInserted, &guard,
                [this, model](const QModelIndex &, int first, int last) {
                    for (int row = first; row <= last; ++row)
                        rows.insert(row, rowText(model, row));
                });
            QObject::connect(model, &QAbstractItemModel::rowsRemoved, &guard,
                [this](const QModelIndex &, int first, int last) {
                    rows.remove(first, last - first + 1);
                });
            QObject::connect(model, &QAbstractItemModel::dataChanged, &guard,
                [this, model](const QModelIndex &from, const QModelIndex &to) {
                    for (int row = from.row(); row <= to.row(); ++row)
                        rows[row] = rowText(model, row);
                });
            QObject::connect(
                model, &QAbstractItemModel::modelReset, &guard, [this, all] { rows = all(); });
        }
        QStringList rows;
        QObject guard;
    };

    bool open(const QString &name = QStringLiteral("ann"),
        PDFSidebarMode mode = PDFSidebarMode::annotations)
    {
        const QString path = m_dir.filePath(name + QStringLiteral(".pdf"));
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
    QStringList rows() const
    {
        QStringList made;
        for (int row = 0; row < m_list->model()->rowCount(); ++row)
            made.append(rowText(m_list->model(), row));
        return made;
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    PDFSidebarAnnContents *m_list = nullptr;
    std::shared_ptr<FDDocument> m_document;
};

FOLIDOC_APP_TEST_MAIN(PDFSidebarAnnTest)
#include "PDFSidebarAnnTest.moc"
