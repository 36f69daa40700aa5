#include "support/AppWindow.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDRecentDocuments.h>
#include <appearance/FDThemeProvider.h>
#include <document/Common.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/Archiver.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>
#include <view/PDFViewDelegate2.h>

#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>

// The tab's part for the view: a tool the test sets.
class ToolOwner : public PDFViewDelegate2
{
public:
    PDFToolMode tool = PDFToolModeTextSelection;
    PDFToolMode toolMode() const override { return tool; }
    void PDFViewESCKeyDown(XPDFView *) override { }
    void PDFViewDidBecomeFirstResponder(XPDFView *) override { }
    void PDFViewPerformAddOutline(XPDFView *) override { }
};

// Red pixels of the page's printed image inside a page-space rectangle, at one pixel per point.
static int redPixelsIn(const std::shared_ptr<PDFPage> &page, const QRectF &area)
{
    const QRectF box = page->boundsForBox(PDFDisplayBox::MediaBox);
    const QImage image = page->imageForBox(PDFDisplayBox::MediaBox, box.size().toSize(), true);
    int red = 0;
    for (int x = int(area.left()); x <= int(area.right()); ++x) {
        for (int y = int(area.top()); y <= int(area.bottom()); ++y) {
            const QColor c = image.pixelColor(x, int(box.height()) - y);
            red += c.red() > 200 && c.green() < 80 && c.blue() < 80;
        }
    }
    return red;
}

class FDPDFViewTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        FOLIDOC_REQUIRE_USER_ATTRIBUTES();
    }

    void init()
    {
        AppWindow::reset();
        UserDefaults::standard().setInteger(1, FDDefaults::RememberLastPosition);
    }

    void readingPositionSurvivesCloseAndReopen_data()
    {
        QTest::addColumn<bool>("changed");
        QTest::addColumn<int>("remember");
        QTest::newRow("changed: written with the file") << true << 1;
        QTest::newRow("only read: the file stays as it was") << false << 1;
        QTest::newRow("only read, not remembered") << false << 0;
    }

    void readingPositionSurvivesCloseAndReopen()
    {
        QFETCH(bool, changed);
        QFETCH(int, remember);
        UserDefaults::standard().setInteger(remember, FDDefaults::RememberLastPosition);
        const QString path
            = writeFixture(QStringLiteral("reopen-%1.pdf").arg(QTest::currentDataTag()));
        const QUrl url = QUrl::fromLocalFile(path);
        const QDateTime modified = QFileInfo(path).fileTime(QFileDevice::FileModificationTime);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        file.close();

        auto first = openView(url);
        QTRY_VERIFY(!first->isLoading());
        first->setScaleFactor(1.5);
        first->goToPage(first->document()->pageAtIndex(5));
        QCOMPARE(currentIndex(*first), 5);
        // A change makes closing write the file, and the position with it.
        if (changed)
            first->fdDocument()->setNumberOfAnnotationChanges(1);
        first->setDocument(nullptr);
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll() != bytes, changed);
        if (changed)
            QVERIFY(FDGetXAttr(url, FDPDFView::LastPositionAttributeName).has_value());
        else
            QCOMPARE(QFileInfo(path).fileTime(QFileDevice::FileModificationTime), modified);

        auto second = openView(url);
        QTRY_VERIFY(!second->isLoading());
        QCOMPARE(currentIndex(*second), remember ? 5 : 0);
        if (changed) {
            QVERIFY(second->hasSavedStatus());
            QCOMPARE(second->scaleFactor(), 1.5);
            QCOMPARE(second->scaleMode(), PDFViewScaleMode::none);
        }
    }

    void storedStatusIsParsedStrictly_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<int>("scaleMode");
        QTest::addColumn<qint64>("displayMode");
        QTest::addColumn<int>("page");
        QTest::addColumn<double>("scale");

        QTest::newRow("position and zoom")
            << "3,72.000000,400.000000,1.250000" << 0 << qint64(1) << 3 << 1.25;
        QTest::newRow("no position, still the scale") << "-1,0,0,0" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("no position, still two-up") << "-1,0,0,0" << 0 << qint64(3) << 0 << 1.75;
        QTest::newRow("three fields") << "3,72,400" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("blank inside a field") << "3, 72,400,1.25" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("not a number") << "3,x,400,1.25" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("no such page") << "42,0,0,1.25" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("fit width, no position") << "-1,0,0,0" << 1 << qint64(1) << 0 << -1.0;
        // Found by fuzzing: numbers no int holds, for the page and for the point on it.
        QTest::newRow("page beyond an int") << "1e30,0,0,1.25" << 0 << qint64(1) << 0 << 1.75;
        QTest::newRow("point far above its page")
            << "3,72.000000,4007000000,1.250000" << 0 << qint64(1) << 0 << 1.25;
        // A mode out of range is taken as the nearest, with that mode's page breaks.
        QTest::newRow("display mode below the range")
            << "3,72.000000,400.000000,1.250000" << 0 << qint64(-7) << 3 << 1.25;
        QTest::newRow("display mode beyond an int")
            << "3,72.000000,400.000000,1.250000" << 0 << (qint64(1) << 32) << 3 << 1.25;
    }

    void storedStatusIsParsedStrictly()
    {
        QFETCH(QString, destination);
        QFETCH(int, scaleMode);
        QFETCH(qint64, displayMode);
        QFETCH(int, page);
        QFETCH(double, scale);

        const QUrl url = QUrl::fromLocalFile(writeFixture(QStringLiteral("status.pdf")));
        storeStatus(url, destination, scaleMode, 1.75, displayMode);
        auto view = openView(url);
        QTRY_VERIFY(!view->isLoading());
        QCOMPARE(currentIndex(*view), page);
        const int shownMode = int(std::clamp<qint64>(displayMode, 0, 3));
        QCOMPARE(view->displayMode(), shownMode);
        QCOMPARE(view->displaysPageBreaks(), shownMode < 2);
        QCOMPARE(int(view->scaleMode()), scaleMode);
        if (scale > 0)
            QCOMPARE(view->scaleFactor(), scale);
        else
            QCOMPARE(view->scaleFactor(), view->scaleFactorByMode());
    }

    void aFileReadAheadIsTakenBeforeTheFirstPaint_data()
    {
        QTest::addColumn<bool>("sameFile");
        QTest::newRow("the file read ahead") << true;
        QTest::newRow("another file") << false;
    }

    // The page a URL names in a file read ahead is the read-ahead opening's test.
    void aFileReadAheadIsTakenBeforeTheFirstPaint()
    {
        QFETCH(bool, sameFile);
        const QString path
            = writeFixture(QStringLiteral("ahead-%1.pdf").arg(QTest::currentDataTag()));
        const QString other
            = writeFixture(QStringLiteral("other-%1.pdf").arg(QTest::currentDataTag()));
        const PDFDocumentPrefetch prefetch(path);
        QTRY_VERIFY(PDFDocumentPrefetch::isReadToTake(path));
        FDPDFView view;
        view.resize(700, 600);
        view.loadDocument(QUrl::fromLocalFile(sameFile ? path : other));
        view.show();
        // The document read ahead is the view's before the window is on screen; another is read
        // after, and the view says it is loading meanwhile, so that nothing treats it as empty.
        QVERIFY(view.isVisible());
        QCOMPARE(bool(view.document()), sameFile);
        if (!sameFile)
            QVERIFY(view.isLoading());
        QCOMPARE(prefetch.taken(), sameFile);
        QTRY_VERIFY(!view.isLoading());
        QCOMPARE(view.document()->pageCount(), 8);
        QTRY_COMPARE(currentIndex(view), 0);
        // In a window already on screen, a document is read at once.
        const QUrl second = QUrl::fromLocalFile(
            writeFixture(QStringLiteral("second-%1.pdf").arg(QTest::currentDataTag()), 3));
        QTRY_VERIFY(view.windowHandle()->isExposed());
        view.loadDocument(second);
        QVERIFY(view.document());
        QCOMPARE(view.document()->pageCount(), 3);
    }

    void recentDocumentsKeepTheOrderOfOpeningWhenAViewClosesBeforeItsFirstPaint()
    {
        FDRecentDocuments::clearRecentDocuments();
        const QUrl first = QUrl::fromLocalFile(writeFixture(QStringLiteral("recent-first.pdf")));
        const QUrl second = QUrl::fromLocalFile(writeFixture(QStringLiteral("recent-second.pdf")));
        // Read, then closed at once: no page was shown sharp.
        openView(first).reset();
        QCOMPARE(FDRecentDocuments::recentDocumentURLs(), QList<QUrl> { first });
        auto view = openView(second);
        QTRY_VERIFY(view->isVisibleAreaRendered());
        QTRY_COMPARE(FDRecentDocuments::recentDocumentURLs(), (QList<QUrl> { second, first }));
        // Nothing noted late reorders them.
        QTest::qWait(int(FDPDFView::readAheadLongestWait * 1000) + 200);
        QCOMPARE(FDRecentDocuments::recentDocumentURLs(), (QList<QUrl> { second, first }));
    }

    void placesHoldWhileLatePageSizesArrive_data()
    {
        QTest::addColumn<bool>("fragment");
        QTest::addColumn<int>("displayMode");
        QTest::newRow("stored position, continuous") << false << 1;
        QTest::newRow("stored position, two-up continuous") << false << 3;
        QTest::newRow("page fragment, the stored two-up left aside") << true << 3;
    }

    // The first pages are landscape, so the layout's sizes for the others are wrong until read:
    // the saved place or the URL's page stays under the reader meanwhile.
    void placesHoldWhileLatePageSizesArrive()
    {
        QFETCH(bool, fragment);
        QFETCH(int, displayMode);
        PdfFixtures::Document fixture = PdfFixtures::textPages(600, 2, 0);
        for (int i = 0; i < 40; ++i)
            fixture.pages[i].mediaBox = QRectF(0, 0, 792, 612);
        const QString path
            = m_dir.filePath(QStringLiteral("late-%1-%2.pdf").arg(fragment).arg(displayMode));
        QVERIFY(PdfFixtures::write(fixture, path));
        QUrl url = QUrl::fromLocalFile(path);
        storeStatus(url, QStringLiteral("450,72.000000,400.000000,1.000000"), 0, 1.0, displayMode);
        if (fragment)
            url.setFragment(QStringLiteral("500"));
        const int expected = fragment ? 500 : 450;

        auto view = openView(url);
        QTRY_VERIFY(!view->isLoading());
        QTRY_COMPARE(currentIndex(*view), expected);
        // The page named in the URL is no part of the file's address.
        QCOMPARE(view->fileURL(), QUrl::fromLocalFile(path));
        QTRY_COMPARE(FDRecentDocuments::recentDocumentURLs().value(0), QUrl::fromLocalFile(path));
        const auto page = view->document()->pageAtIndex(expected);
        const QPointF point(72, 400);
        const QPointF shown = view->convertPointFromPage(point, page);
        // Until the layout stops changing: every size has been read.
        double height = -1;
        for (int turn = 0; turn < 100 && view->documentView().bounds().height() != height; ++turn) {
            height = view->documentView().bounds().height();
            QTest::qWait(100);
        }
        QCOMPARE(view->documentView().bounds().height(), height);
        QCOMPARE(currentIndex(*view), expected);
        QCOMPARE(view->displayMode(), fragment ? int(PDFView::SinglePageContinuous) : displayMode);
        QVERIFY((view->convertPointFromPage(point, page) - shown).manhattanLength() <= 1);
    }

    void fitWidthFollowsResizeUntilAManualZoom_data()
    {
        QTest::addColumn<int>("displayMode");
        QTest::addColumn<int>("across");
        QTest::newRow("one page") << int(PDFView::SinglePageContinuous) << 1;
        QTest::newRow("two-up") << int(PDFView::TwoUpContinuous) << 2;
    }

    void fitWidthFollowsResizeUntilAManualZoom()
    {
        QFETCH(int, displayMode);
        QFETCH(int, across);
        UserDefaults::standard().setInteger(
            int(PDFViewScaleMode::fitWidth), FDDefaults::DefaultScaleMode);
        const QUrl url = QUrl::fromLocalFile(writeFixture(QStringLiteral("fit.pdf")));
        auto view = openView(url, { 500, 600 });
        QTRY_VERIFY(!view->isLoading());
        view->setDisplayMode(displayMode);
        view->setScaleMode(PDFViewScaleMode::fitWidth);

        const auto expected = [&] {
            const double pageWidth = 612 + (view->displaysPageBreaks() ? 8.0 : 0.0);
            return (view->maximumViewportSize().width()
                       - view->verticalScrollBar()->sizeHint().width())
                / (pageWidth * across);
        };
        QCOMPARE(view->scaleFactor(), expected());
        QCOMPARE(view->horizontalScrollBar()->maximum(), 0);

        const double narrow = view->scaleFactor();
        view->resize(900, 600);
        QTRY_COMPARE(view->scaleFactor(), expected());
        QVERIFY(view->scaleFactor() > narrow);
        QCOMPARE(view->horizontalScrollBar()->maximum(), 0);

        view->zoomIn();
        const double zoomed = view->scaleFactor();
        QCOMPARE(view->scaleMode(), PDFViewScaleMode::none);
        view->resize(600, 600);
        QCOMPARE(view->scaleFactor(), zoomed);

        // Fit page, one page taller than the view: its height and the breaks bound the fit; a
        // zoom from elsewhere that moves the scale by more than 0.001 ends the fit.
        view->setDisplayMode(PDFView::SinglePageContinuous);
        view->setScaleMode(PDFViewScaleMode::fitPage);
        QCOMPARE(view->scaleFactor(), view->maximumViewportSize().height() / (792.0 + 8.0));
        view->setScaleFactor(view->scaleFactor() + 0.0011);
        QCOMPARE(view->scaleMode(), PDFViewScaleMode::none);
    }

    void reopeningTakesOverTheDocumentBeingSaved()
    {
        const QUrl url = QUrl::fromLocalFile(writeFixture(QStringLiteral("takeover.pdf"), 4));
        auto first = openView(url);
        QTRY_VERIFY(!first->isLoading());
        const auto document = first->fdDocument();
        auto extra = std::make_shared<PDFPage>();
        QVERIFY(extra->init());
        document->insertPage(extra, 0);
        // The second view's reading is queued first, to come before the end of the write.
        auto second = std::make_unique<FDPDFView>();
        second->loadDocument(url);
        second->show();
        first->setDocument(nullptr);
        QVERIFY(!document->pdfView());
        QVERIFY(PDFSavingService::shared().getDocumentByURL(url) == document);

        // Reopened while the write has not ended: the live object, not the file, is shown.
        QCoreApplication::sendPostedEvents();
        QVERIFY(second->fdDocument() == document);
        QCOMPARE(second->document()->pageCount(), 5);
        QCOMPARE(document->pdfView(), static_cast<QObject *>(second.get()));
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    }

    void unreadableFileAlertsOnceAndStaysEmpty()
    {
        const QString path = m_dir.filePath(QStringLiteral("broken name.pdf"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a PDF at all");
        file.close();
        QStringList messages;
        Alert::setHandlerForTesting([&](const AlertRequest &request) {
            messages << request.messageText;
            return int(Alert::FirstButtonReturn);
        });
        auto view = openView(QUrl::fromLocalFile(path));
        QTRY_COMPARE(messages.size(), 1);
        QCOMPARE(messages.first(), QStringLiteral("Can't read file: \"file://%1\"").arg(path));
        QVERIFY(!view->document());
        view->hide();
        view->show();
        QCoreApplication::processEvents();
        QCOMPARE(messages.size(), 1);
        AppWindow::answerAlertsWithTheSecondButton();
    }

    void jumpsPauseTheScreenOnlyUnderTintedThemes_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<bool>("pauses");
        QTest::newRow("blue") << 2 << false;
        QTest::newRow("sunset") << 3 << true;
        QTest::newRow("night") << 4 << true;
    }

    void areaSelectionAnswersOnlyInTheAreaTool()
    {
        auto view = openView(QUrl::fromLocalFile(writeFixture(QStringLiteral("area.pdf"))));
        QTRY_VERIFY(!view->isLoading());
        ToolOwner owner;
        view->setDelegate2(&owner);
        const QRectF area(10, 20, 100, 50);
        view->setCurrentSelectionRect(area);
        QVERIFY(!view->currentSelectionPage());

        owner.tool = PDFToolModeAreaSelection;
        view->setCurrentSelectionRect(area);
        QCOMPARE(view->currentSelectionRect(), area);
        QCOMPARE(view->currentSelectionPage(), view->currentPage());
        owner.tool = PDFToolModeTextSelection;
        QCOMPARE(view->currentSelectionRect(), QRectF());
        QCOMPARE(view->currentSelectionPage(), view->currentPage());
        owner.tool = PDFToolModeAreaSelection;
        QCOMPARE(view->currentSelectionRect(), area);

        // An empty rect clears both; a page alone selects its crop box.
        view->setCurrentSelectionRect(QRectF());
        QVERIFY(!view->currentSelectionPage());
        const auto third = view->document()->pageAtIndex(2);
        view->setCurrentSelectionPage(third);
        QCOMPARE(view->currentSelectionRect(), third->boundsForBox(PDFDisplayBox::CropBox));
        view->setDocument(view->document());
        QCOMPARE(view->currentSelectionRect(), QRectF());
        view->setDelegate2(nullptr);
    }

    void annotationsOfTheFileAreShownAndPrinted()
    {
        PdfFixtures::Document annotated = PdfFixtures::textPages(2, 3, 0);
        annotated.pages[0].annotations = {
            { "/Subtype /Square /Rect [200 100 240 140] /C [1 0 0] /Border [0 0 3] /F 4",
                "1 0 0 RG 3 w 2 2 36 36 re S", QRectF(0, 0, 40, 40) },
        };
        const QByteArray box("0 0 1 RG 10 10 30 30 re S");
        annotated.pages[1].annotations = {
            { "/Subtype /Square /Rect [100 100 140 140]", box, QRectF(0, 0, 40, 40) },
            { "/Subtype /Square /Rect [200 100 240 140] /C [1 0 0]", box, QRectF(0, 0, 40, 40) },
        };
        const QString path = m_dir.filePath(QStringLiteral("annotated.pdf"));
        QVERIFY(PdfFixtures::write(annotated, path));
        auto view = openView(QUrl::fromLocalFile(path));
        QTRY_VERIFY(!view->isLoading());
        // A square without a colour gets none; the pictures are the file's until an edit.
        const auto &shown = view->document()->pageAtIndex(1)->annotations();
        QCOMPARE(shown.size(), size_t(2));
        QCOMPARE(shown[0]->color().alpha(), 0);
        QCOMPARE(shown[1]->color(), QColor(255, 0, 0));
        for (const auto &annotation : shown)
            QVERIFY(annotation->hasAppearanceStream());

        const QRectF square(198, 98, 44, 44);
        const auto live = view->document()->pageAtIndex(0)->annotations();
        QCOMPARE(live.size(), size_t(1));
        // The overlay draws the square: the engine does not, until a copy is printed.
        const bool displayed = live[0]->shouldDisplay();

        const auto with = view->printCopy(true);
        const auto without = view->printCopy(false);
        QVERIFY(with && without);
        QVERIFY(with != view->document() && without != view->document());
        QVERIFY(redPixelsIn(with->pageAtIndex(0), square) > 40);
        QCOMPARE(redPixelsIn(without->pageAtIndex(0), square), 0);

        // The live document keeps its display flags and has nothing to save.
        QCOMPARE(live[0]->shouldDisplay(), displayed);
        QVERIFY(live[0]->shouldPrint());
        QCOMPARE(view->fdDocument()->numberOfChanges(), 0);
    }

    void closestOutlineItemIsTheLastOutlinedPageBefore()
    {
        PdfFixtures::Document outlined = PdfFixtures::textPages(8, 5, 0);
        // "Four" is read before "Also four", and a parent before its children.
        outlined.outline = { { QStringLiteral("Two"), 2, {}, 0, true,
                                 { { QStringLiteral("Four"), 4, {}, 0, true, {} },
                                     { QStringLiteral("Six"), 6, {}, 0, true, {} } } },
            { QStringLiteral("Also four"), 4, {}, 0, true, {} },
            { QStringLiteral("Five"), 5, {}, 0, true, {} } };
        const QString path = m_dir.filePath(QStringLiteral("outlined.pdf"));
        QVERIFY(PdfFixtures::write(outlined, path));
        auto view = openView(QUrl::fromLocalFile(path));
        QTRY_VERIFY(!view->isLoading());
        // Nothing before the first outlined page, nor from the last one on.
        const QStringList expected { "", "", "Two", "Two", "Four", "Five", "", "" };
        for (int page = 0; page < 8; ++page) {
            const auto item = view->closestOutlineItemFor(view->document()->pageAtIndex(page));
            QCOMPARE(item ? item->label() : QString(), expected[page]);
        }
    }

    void jumpsPauseTheScreenOnlyUnderTintedThemes()
    {
        QFETCH(int, theme);
        QFETCH(bool, pauses);
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(theme));
        auto view = openView(QUrl::fromLocalFile(writeFixture(QStringLiteral("jump.pdf"))));
        QTRY_VERIFY(!view->isLoading());
        QElapsedTimer clock;
        clock.start();
        view->goToPage(view->document()->pageAtIndex(4));
        view->goToPage(view->document()->pageAtIndex(2));
        QCOMPARE(currentIndex(*view), 2);
        QCOMPARE(view->viewport()->updatesEnabled(), !pauses);
        // The pause is bounded: updates come back after about 0.0835 s, counted from the last jump.
        QTRY_VERIFY(view->viewport()->updatesEnabled());
        if (pauses)
            QVERIFY(clock.elapsed() >= 80);
        FDThemeProvider::setCurrent(FDThemeProvider::blue());
    }

private:
    QString writeFixture(const QString &name, int pages = 8);
    // Stores a reading position as closing a view writes it.
    static void storeStatus(const QUrl &url, const QString &destination, int scaleMode,
        double scale, qint64 displayMode)
    {
        const QVariantMap status {
            { QStringLiteral("Destination"), destination },
            { QStringLiteral("ScaleMode"), qint64(scaleMode) },
            { QStringLiteral("ScaleFactor"), scale },
            { QStringLiteral("DisplayMode"), displayMode },
        };
        FDSetXAttr(url, FDPDFView::LastPositionAttributeName, Archiver::archivedData(status));
    }
    // A shown view that has loaded url (restoring its status, when asked, on the next turn).
    std::unique_ptr<FDPDFView> openView(const QUrl &url, QSize size = { 700, 600 });
    int currentIndex(const FDPDFView &view) const
    {
        return view.document()->indexForPage(view.currentPage());
    }

    QTemporaryDir m_dir;
};

QString FDPDFViewTest::writeFixture(const QString &name, int pages)
{
    const QString path = m_dir.filePath(name);
    PdfFixtures::write(PdfFixtures::textPages(pages, 30, 0), path);
    return path;
}

std::unique_ptr<FDPDFView> FDPDFViewTest::openView(const QUrl &url, QSize size)
{
    auto view = std::make_unique<FDPDFView>();
    view->resize(size);
    view->loadDocument(url);
    view->show();
    // The window goes on screen first; the document is read on the next turn.
    QCoreApplication::sendPostedEvents();
    return view;
}

FOLIDOC_APP_TEST_MAIN(FDPDFViewTest)

#include "FDPDFViewTest.moc"
