// The sidebar of a real document tab: split views, tab switching, tabs made when first shown, and
// thumbnails that follow the reader, are drawn for the rows in view only and redrawn one by one.

#include "app/support/AppWindow.h"
#include "support/SidebarFixture.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <navigation/FDBookmarkCommands.h>
#include <navigation/FDCommonImageProvider.h>
#include <navigation/FDPageThumbnailCache.h>
#include <navigation/PDFBookmarkModel.h>
#include <navigation/PDFOutlineModel.h>
#include <navigation/PDFSidebarBookmarkContents.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <navigation/PDFSidebarOutlineContents.h>
#include <navigation/PDFSidebarThumbContents.h>
#include <navigation/PDFThumbnailModel.h>
#include <navigation/PDFThumbnailRenderer.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QAbstractButton>
#include <QLabel>
#include <QListView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace SidebarFixture;

namespace {

QImage pixelsOf(const QPixmap &pixmap)
{
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

QImage marker(bool primary)
{
    FDCommonImageProvider &images = FDCommonImageProvider::shared();
    const QIcon icon
        = primary ? images.primaryIndicatorOnStateIcon() : images.secondaryIndicatorOnStateIcon();
    const int edge = FDCommonImageProvider::iconSize;
    return pixelsOf(icon.pixmap(QSize(edge, edge), 1.0));
}

} // namespace

class PDFSidebarFrameTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = makeWindow();
        FDPageThumbnailCache::shared().clear();
    }

    void cleanup()
    {
        m_tab = nullptr;
        closeWindow(m_window);
    }

    void followsTheSelectedViewOfASplit()
    {
        m_tab = openTab(m_window, write(QStringLiteral("first"), 6, true));
        QVERIFY(m_tab);
        FDPDFView *const primary = m_tab->primaryPDFView();
        FDPDFView *const secondary = m_tab->secondaryPDFView();
        QVERIFY(sidebar()->indicatorIconView()->pixmap().isNull());
        QCOMPARE(outline()->model()->rowCount(), 2);

        m_tab->setSplitMode(PDFSplitViewMode::horizontal);
        secondary->loadDocument(write(QStringLiteral("second"), 10, true));
        QTRY_VERIFY(secondary->document() && !secondary->isLoading());
        QCOMPARE(pixelsOf(sidebar()->indicatorIconView()->pixmap()), marker(true));
        // Still the primary view's document: the secondary one is not selected yet.
        QCOMPARE(thumbnails()->model()->rowCount(), 6);

        m_tab->PDFViewDidBecomeFirstResponder(secondary);
        QCOMPARE(pixelsOf(sidebar()->indicatorIconView()->pixmap()), marker(false));
        QCOMPARE(thumbnails()->model()->rowCount(), 10);
        QCOMPARE(outline()->model()->rowCount(), 4);
        QCOMPARE(outline()->model()->index(0, 0).data().toString(), QStringLiteral("second0"));

        // The observers moved with the selection: a page change of the other view is not followed.
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        QTRY_VERIFY(thumbnails()->isVisible());
        primary->goToPage(primary->document()->pageAtIndex(4));
        QCoreApplication::processEvents();
        QCOMPARE(selectedThumbnail(), 0);
        secondary->goToPage(secondary->document()->pageAtIndex(7));
        QTRY_COMPARE(selectedThumbnail(), 7);

        // A swap keeps the focus where it was; the marker names the view selected after it.
        m_tab->swapPDFViews();
        QCOMPARE(pixelsOf(sidebar()->indicatorIconView()->pixmap()),
            marker(m_tab->selectedPDFView() == primary));
        m_tab->PDFViewDidBecomeFirstResponder(primary);
        QCOMPARE(pixelsOf(sidebar()->indicatorIconView()->pixmap()), marker(true));
        QCOMPARE(thumbnails()->model()->rowCount(), 6);
        m_tab->setSplitMode(PDFSplitViewMode::none);
        QVERIFY(sidebar()->indicatorIconView()->pixmap().isNull());
    }

    void tabsChangeOnlyThroughTheNotification()
    {
        m_tab = openTab(m_window, write(QStringLiteral("modes"), 4, true));
        QVERIFY(m_tab);
        // A document with an outline opens on the outline.
        QVERIFY(!m_tab->isSidebarHidden());
        QCOMPARE(sidebar()->currentController(), outline());
        // Two changes in one turn: the last shows.
        m_tab->setSidebarMode(PDFSidebarMode::bookmarks);
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        QCOMPARE(sidebar()->currentController(), thumbnails());
        QCOMPARE(sidebar()->titleTextField()->text(), QStringLiteral("Thumbnails"));
        // The title line is the front tab's alone: a bookmark retitles only the bookmarks tab.
        FDPDFView *const view = m_tab->primaryPDFView();
        QVERIFY(FDBookmarkCommands::toggleBookmarkOfCurrentPage(*view));
        QCOMPARE(sidebar()->titleTextField()->text(), QStringLiteral("Thumbnails"));
        QCOMPARE(sidebar()->controller(PDFSidebarMode::bookmarks)->title(),
            QStringLiteral("Bookmarks ( 1 )"));
        QVERIFY(sidebar()->tabButton(PDFSidebarMode::thumbnails)->isChecked());
        QVERIFY(!sidebar()->tabButton(PDFSidebarMode::bookmarks)->isChecked());
        // A click asks the tab, and the tab's notification switches.
        sidebar()->tabButton(PDFSidebarMode::toc)->click();
        QCOMPARE(m_tab->sidebarMode(), PDFSidebarMode::toc);
        QCOMPARE(sidebar()->currentController(), outline());
        QVERIFY(sidebar()->tabButton(PDFSidebarMode::toc)->isChecked());
        QVERIFY(!sidebar()->tabButton(PDFSidebarMode::thumbnails)->isChecked());
        // F9's command: hiding keeps the mode.
        m_tab->toggleSidebar();
        QVERIFY(m_tab->isSidebarHidden());
        QVERIFY(!m_tab->sidebarContainer()->isVisible());
        m_tab->toggleSidebar();
        QTRY_VERIFY(m_tab->sidebarContainer()->isVisible());
        QCOMPARE(sidebar()->currentController(), outline());
        m_tab->setSidebarMode(PDFSidebarMode::bookmarks);
        QCOMPARE(sidebar()->titleTextField()->text(), QStringLiteral("Bookmarks ( 1 )"));
        QVERIFY(FDBookmarkCommands::toggleBookmarkOfCurrentPage(*view));
        QCOMPARE(sidebar()->titleTextField()->text(), QStringLiteral("Bookmarks ( 0 )"));
    }

    void tabsAreMadeWhenFirstShown()
    {
        // Without an outline the sidebar starts hidden, and no tab is made for the first screen.
        m_tab = openTab(m_window, write(QStringLiteral("lazy"), 5, false));
        QVERIFY(m_tab);
        QVERIFY(m_tab->isSidebarHidden());
        const PDFSidebarMode modes[] = { PDFSidebarMode::thumbnails, PDFSidebarMode::toc,
            PDFSidebarMode::annotations, PDFSidebarMode::bookmarks };
        for (const PDFSidebarMode mode : modes)
            QVERIFY(!sidebar()->madeController(mode));

        // A bookmark added while no tab exists is listed when the tab first shows.
        FDPDFView *const view = m_tab->primaryPDFView();
        view->goToPage(view->document()->pageAtIndex(2));
        QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), 2);
        QVERIFY(FDBookmarkCommands::toggleBookmarkOfCurrentPage(*view));
        m_tab->setSidebarMode(PDFSidebarMode::bookmarks);
        auto *const bookmarks = qobject_cast<PDFSidebarBookmarkContents *>(
            sidebar()->madeController(PDFSidebarMode::bookmarks));
        QVERIFY(bookmarks);
        QTRY_VERIFY(bookmarks->isVisible());
        QCOMPARE(bookmarks->model()->rowCount(), 1);
        QCOMPARE(sidebar()->titleTextField()->text(), QStringLiteral("Bookmarks ( 1 )"));
        QVERIFY(!sidebar()->madeController(PDFSidebarMode::thumbnails));

        // Thumbnails made late list every page and select the one the reader is on.
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        QTRY_VERIFY(sidebar()->madeController(PDFSidebarMode::thumbnails)
            && sidebar()->madeController(PDFSidebarMode::thumbnails)->isVisible());
        QCOMPARE(thumbnails()->model()->rowCount(), 5);
        QTRY_COMPARE(selectedThumbnail(), 2);

        // A document with an outline, loaded while the outline tab was never made, opens the
        // sidebar on it; a tab never shown is still not made.
        m_tab->setIsSidebarHidden(true);
        view->loadDocument(write(QStringLiteral("outlined"), 7, true));
        QTRY_VERIFY(view->document() && view->document()->pageCount() == 7);
        QTRY_VERIFY(outline() && outline()->isVisible());
        QCOMPARE(outline()->model()->index(0, 0).data().toString(), QStringLiteral("outlined0"));
        QCOMPARE(bookmarks->model()->rowCount(), 0);
        QVERIFY(!sidebar()->madeController(PDFSidebarMode::annotations));
    }

    void thumbnailsFollowTheReaderWhileShown()
    {
        m_tab = openTab(m_window, write(QStringLiteral("follow"), 12, false));
        QVERIFY(m_tab);
        FDPDFView *const view = m_tab->primaryPDFView();
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        QTRY_VERIFY(thumbnails()->isVisible());
        view->goToPage(view->document()->pageAtIndex(3));
        QTRY_COMPARE(selectedThumbnail(), 3);
        m_tab->setSidebarMode(PDFSidebarMode::toc);
        view->goToPage(view->document()->pageAtIndex(9));
        QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), 9);
        QCOMPARE(selectedThumbnail(), 3);
        // The next showing catches up.
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        QTRY_COMPARE(selectedThumbnail(), 9);
        // A row the person selects takes the view there.
        thumbnails()->tableView()->setCurrentIndex(thumbnails()->model()->index(5));
        QTRY_COMPARE(view->document()->indexForPage(view->currentPage()), 5);
    }

    void thumbnailsArriveForRowsInViewOnly()
    {
        m_tab = openTab(m_window, write(QStringLiteral("many"), 60, false));
        QVERIFY(m_tab);
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        PDFSidebarThumbContents *const tab = thumbnails();
        QTRY_VERIFY(tab->isVisible());
        QSignalSpy arrived(tab->model()->renderer(), &PDFThumbnailRenderer::thumbnailDidArrive);
        // Rows shown in the first paint may have arrived before the spy; scroll to draw anew.
        QListView *const list = tab->tableView();
        for (const int place :
            { list->verticalScrollBar()->maximum() / 2, list->verticalScrollBar()->maximum() }) {
            arrived.clear();
            list->verticalScrollBar()->setValue(place);
            QCoreApplication::processEvents();
            const auto [first, last] = tab->visibleRows();
            QVERIFY(last >= first);
            QTRY_COMPARE(arrived.size(), last - first + 1);
            for (const QList<QVariant> &signal : arrived) {
                const int row = signal.at(1).toInt();
                QVERIFY2(row >= first && row <= last,
                    qPrintable(
                        QStringLiteral("row %1 outside %2-%3").arg(row).arg(first).arg(last)));
                QVERIFY(
                    !FDPageThumbnailCache::shared().image(tab->model()->keyForRow(row)).isNull());
            }
            // Nothing more is on its way once the rows in view are in.
            QCOMPARE(tab->model()->pendingCount(), 0);
        }
    }

    void annotationChangeRedrawsOneThumbnail_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("first page") << 0;
        QTest::newRow("third page") << 2;
    }

    void annotationChangeRedrawsOneThumbnail()
    {
        QFETCH(int, page);
        m_tab = openTab(m_window, write(QStringLiteral("annotated"), 4, false));
        QVERIFY(m_tab);
        m_tab->setSidebarMode(PDFSidebarMode::thumbnails);
        PDFSidebarThumbContents *const tab = thumbnails();
        QTRY_VERIFY(tab->isVisible());
        FDPDFView *const view = m_tab->primaryPDFView();
        view->goToPage(view->document()->pageAtIndex(page));
        QTRY_VERIFY(!FDPageThumbnailCache::shared().image(tab->model()->keyForRow(page)).isNull());
        const QImage before = FDPageThumbnailCache::shared().image(tab->model()->keyForRow(page));
        const QString keyBefore = tab->model()->keyForRow(page);
        const QString otherBefore = tab->model()->keyForRow(page == 0 ? 1 : 0);

        QSignalSpy changed(tab->model(), &QAbstractItemModel::dataChanged);
        const auto square = view->addAnnotationWithType(QStringLiteral("Square"),
            view->document()->pageAtIndex(page), QRectF(60, 60, 400, 500));
        QVERIFY(square);
        QVERIFY(changed.size() >= 1);
        for (const QList<QVariant> &signal : changed) {
            QCOMPARE(signal.at(0).toModelIndex().row(), page);
            QCOMPARE(signal.at(1).toModelIndex().row(), page);
        }
        QVERIFY(tab->model()->keyForRow(page) != keyBefore);
        QCOMPARE(tab->model()->keyForRow(page == 0 ? 1 : 0), otherBefore);
        QTRY_VERIFY(!FDPageThumbnailCache::shared().image(tab->model()->keyForRow(page)).isNull());
        const QImage after = FDPageThumbnailCache::shared().image(tab->model()->keyForRow(page));
        QCOMPARE(after.size(), before.size());
        QVERIFY(after != before);
    }

private:
    QUrl write(const QString &name, int pages, bool withOutline);
    PDFSidebarController *sidebar() const { return m_tab->sidebarContainer()->controller(); }
    PDFSidebarThumbContents *thumbnails() const
    {
        return qobject_cast<PDFSidebarThumbContents *>(
            sidebar()->controller(PDFSidebarMode::thumbnails));
    }
    PDFSidebarOutlineContents *outline() const
    {
        return qobject_cast<PDFSidebarOutlineContents *>(
            sidebar()->controller(PDFSidebarMode::toc));
    }
    int selectedThumbnail() const
    {
        const QModelIndexList rows = thumbnails()->tableView()->selectionModel()->selectedIndexes();
        return rows.isEmpty() ? -1 : rows.first().row();
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
};

QUrl PDFSidebarFrameTest::write(const QString &name, int pages, bool withOutline)
{
    PdfFixtures::Document document = PdfFixtures::textPages(pages, 6, 0);
    if (withOutline) {
        for (int page = 0; page < pages; page += 3) {
            PdfFixtures::OutlineItem item;
            item.title = name + QString::number(page);
            item.page = page;
            document.outline.append(item);
        }
    }
    const QString path = m_dir.filePath(name + QStringLiteral(".pdf"));
    PdfFixtures::write(document, path);
    return QUrl::fromLocalFile(path);
}

FOLIDOC_APP_TEST_MAIN(PDFSidebarFrameTest)

#include "PDFSidebarFrameTest.moc"
