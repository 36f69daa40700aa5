// The places of a tab's two views: the places and information bars of each split mode, the A and B
// markers, a second document in view B, the page indicator and the page field it turns into.

#include "support/AppWindow.h"

#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <app/PDFContentsConainer.h>
#include <app/PDFWindowController.h>
#include <app/containers/PDFPageIndicator.h>
#include <app/containers/PDFViewContainer.h>
#include <app/containers/PDFViewInfoBarContainer.h>
#include <app/containers/PageNavigatorController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <navigation/FDCommonImageProvider.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class ViewContainersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = AppWindow::makeWindow({ 1000, 800 });
        QApplication::setActiveWindow(m_window);
        // A file of its own each time: a file read before reopens where it was left.
        static int files = 0;
        const QString name = QStringLiteral("First%1.pdf").arg(++files);
        m_tab = AppWindow::openTab(m_window, fixture(name, 5));
        QVERIFY(m_tab);
    }

    void cleanup()
    {
        FDFilePanel::setHandlerForTesting({});
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void placesAndBarsFollowTheSplitMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("rightShows");
        QTest::addColumn<bool>("bottomShows");
        QTest::newRow("no split") << 0 << false << false;
        QTest::newRow("side by side") << 1 << true << false;
        QTest::newRow("one above the other") << 2 << false << true;
    }

    void placesAndBarsFollowTheSplitMode()
    {
        QFETCH(int, mode);
        QFETCH(bool, rightShows);
        QFETCH(bool, bottomShows);
        PDFContentsConainer *const root = m_tab->container();
        // Through another mode first, so that every place has changed once.
        m_tab->setSplitMode(mode == 1 ? PDFSplitViewMode::vertical : PDFSplitViewMode::horizontal);
        m_tab->setSplitMode(PDFSplitViewMode(mode));
        QTest::qWait(10);
        const int bar = PDFViewInfoBarContainer::barHeight;
        QCOMPARE(root->topLeftContainer()->infoBarContainer()->height(), mode == 0 ? 0 : bar);
        QCOMPARE(root->rightContainer()->isVisible(), rightShows);
        QCOMPARE(root->bottomContainer()->isVisible(), bottomShows);
        if (rightShows)
            QCOMPARE(root->rightContainer()->infoBarContainer()->height(), bar);
        if (bottomShows)
            QCOMPARE(root->bottomContainer()->infoBarContainer()->height(), bar);
        QCOMPARE(root->topLeftContainer()->pdfView(), m_tab->primaryPDFView());
        QVERIFY(root->topLeftContainer()->pageIndicator()->isVisibleTo(root->topLeftContainer()));
    }

    void markersFollowTheSelectedViewAndTheSwap()
    {
        PDFContentsConainer *const root = m_tab->container();
        PDFViewInfoBarContainer *const left = root->topLeftContainer()->infoBarContainer();
        const auto marker = [](const QLabel *label) {
            return label->pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
        };
        const auto expected = [](const QIcon &icon) {
            const int edge = FDCommonImageProvider::iconSize;
            return icon.pixmap(QSize(edge, edge), 1.0)
                .toImage()
                .convertToFormat(QImage::Format_ARGB32);
        };
        FDCommonImageProvider &images = FDCommonImageProvider::shared();
        // Folded away outside a split, the bar has drawn no marker yet.
        QVERIFY(left->indicatorImgView()->pixmap().isNull());
        m_tab->setSplitMode(PDFSplitViewMode::horizontal);
        PDFViewInfoBarContainer *const right = root->rightContainer()->infoBarContainer();
        QCOMPARE(left->pdfView(), m_tab->primaryPDFView());
        QCOMPARE(right->pdfView(), m_tab->secondaryPDFView());
        QVERIFY(left->isIndicatorOn());
        QVERIFY(!right->isIndicatorOn());
        QVERIFY(left->titleTextField()->text().startsWith(QStringLiteral("First")));
        QTRY_COMPARE(
            marker(left->indicatorImgView()), expected(images.primaryIndicatorOnStateIcon()));
        QTRY_COMPARE(
            marker(right->indicatorImgView()), expected(images.secondaryIndicatorOffStateIcon()));

        m_tab->secondaryPDFView()->setFocus();
        QTRY_COMPARE(m_tab->selectedPDFView(), m_tab->secondaryPDFView());
        QVERIFY(!left->isIndicatorOn());
        QVERIFY(right->isIndicatorOn());
        QCOMPARE(marker(left->indicatorImgView()), expected(images.primaryIndicatorOffStateIcon()));
        QCOMPARE(
            marker(right->indicatorImgView()), expected(images.secondaryIndicatorOnStateIcon()));

        // After a swap each bar speaks of the view now below it: the left one of B.
        m_tab->swapPDFViews();
        QCOMPARE(left->pdfView(), m_tab->secondaryPDFView());
        QCOMPARE(right->pdfView(), m_tab->primaryPDFView());
        QCOMPARE(left->isIndicatorOn(), m_tab->selectedPDFView() == m_tab->secondaryPDFView());
        QCOMPARE(root->rightContainer()->pageIndicator()->pdfView(), m_tab->primaryPDFView());
    }

    void secondDocumentOpensInViewB_data()
    {
        QTest::addColumn<bool>("byDrop");
        QTest::newRow("the change button") << false;
        QTest::newRow("a drop on the bar") << true;
    }

    void secondDocumentOpensInViewB()
    {
        QFETCH(bool, byDrop);
        const QUrl second = fixture(QStringLiteral("Second.pdf"), 2);
        m_tab->setSplitMode(PDFSplitViewMode::horizontal);
        PDFViewInfoBarContainer *const bar
            = m_tab->container()->rightContainer()->infoBarContainer();
        if (byDrop) {
            QMimeData data;
            data.setUrls({ second });
            QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
            QApplication::sendEvent(bar, &enter);
            QVERIFY(enter.isAccepted());
            QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
            QApplication::sendEvent(bar, &drop);
        } else {
            QList<FilePanelRequest::Kind> asked;
            FDFilePanel::setHandlerForTesting([&](const FilePanelRequest &request) {
                asked << request.kind;
                return second;
            });
            bar->changeButton()->click();
            QCOMPARE(asked, QList<FilePanelRequest::Kind> { FilePanelRequest::Open });
        }
        FDPDFView *const viewB = m_tab->secondaryPDFView();
        QTRY_VERIFY(viewB->fdDocument() && !viewB->isLoading());
        QCOMPARE(viewB->fdDocument()->fileURL(), second);
        QCOMPARE(viewB->document()->pageCount(), 2);
        QCOMPARE(bar->titleTextField()->text(), QStringLiteral("Second"));
        // View A keeps its document.
        QCOMPARE(m_tab->primaryPDFView()->document()->pageCount(), 5);
    }

    void pageFieldJumpsOnReturnOnly()
    {
        PDFViewContainer *const place = m_tab->container()->topLeftContainer();
        FDPDFView *const view = m_tab->primaryPDFView();
        // Typed text, the key that ends it, and the page shown after, from the first page.
        const QList<std::tuple<QString, Qt::Key, int>> cases { { "3", Qt::Key_Return, 2 },
            { "x4y", Qt::Key_Return, 3 }, // letters are refused
            { "0", Qt::Key_Return, 0 }, { "99", Qt::Key_Enter, 0 }, { "4", Qt::Key_Escape, 0 } };
        for (const auto &[typed, key, pageAfter] : cases) {
            view->goToPage(view->document()->pageAtIndex(0));
            QCOMPARE(view->document()->indexForPage(view->currentPage()), 0);
            // A click on the indicator turns it into the field, holding the current page.
            QTest::mouseClick(place->pageIndicator(), Qt::LeftButton);
            PageNavigatorController *const navigator = place->pageNavController();
            QVERIFY(navigator);
            QVERIFY(!view->isPageNavigatorHidden());
            QCOMPARE(navigator->pageField()->text(), QStringLiteral("1"));
            QCOMPARE(navigator->totalLabel()->text(), QStringLiteral("/ 5"));
            navigator->pageField()->clear();
            QTest::keyClicks(navigator->pageField(), typed);
            QTest::keyClick(navigator->pageField(), key);
            QTRY_VERIFY(!place->pageNavController());
            QVERIFY(view->isPageNavigatorHidden());
            QVERIFY2(view->document()->indexForPage(view->currentPage()) == pageAfter,
                qPrintable(typed));
            // The indicator works again afterwards.
            QVERIFY(place->pageIndicator()->isVisibleTo(place));
        }
    }

    void indicatorShowsThePageAndFades()
    {
        PDFPageIndicator *const indicator = m_tab->container()->topLeftContainer()->pageIndicator();
        FDPDFView *const view = m_tab->primaryPDFView();
        QTRY_COMPARE(indicator->alphaValue(), 0.0);
        view->goToPage(view->document()->pageAtIndex(3));
        QCOMPARE(indicator->text(), QStringLiteral("4 / 5"));
        QTRY_COMPARE(indicator->alphaValue(), 1.0);
        QVERIFY(indicator->isTimerActive());
        // Gone 3 seconds and a fade of 1 second later.
        QTRY_COMPARE_WITH_TIMEOUT(indicator->alphaValue(), 0.0, 6000);
    }

private:
    QUrl fixture(const QString &name, int pages);

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    QPointer<PDFContents> m_tab;
};

QUrl ViewContainersTest::fixture(const QString &name, int pages)
{
    const QString path = m_dir.filePath(name);
    PdfFixtures::write(PdfFixtures::textPages(pages, 10, 0), path);
    return QUrl::fromLocalFile(path);
}

FOLIDOC_APP_TEST_MAIN(ViewContainersTest)
#include "ViewContainersTest.moc"
