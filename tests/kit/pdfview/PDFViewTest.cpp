// The reading view as a user meets it: where pages sit and how points convert on cropped and
// rotated pages, zoom, history, keys, text selection with the mouse, links and page views.
// Real documents written by the fixtures, real widgets on the offscreen platform.

#include "support/FixtureDocuments.h"

#include "support/PdfFixtures.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <kit/pdfview/PDFScrollBar.h>
#include <kit/pdfview/PDFView.h>
#include <kit/pdfview/PDFViewDelegate.h>

#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

namespace {

struct Recorder : PDFViewDelegate
{
    QList<QUrl> urls;
    QList<int> added;
    QList<int> removed;
    QList<QWidget *> views;
    void PDFViewWillClickOnLink(PDFView *, const QUrl &url) override { urls.append(url); }
    void pdfViewDidAddView(
        PDFView *, QWidget *view, const std::shared_ptr<PDFPage> &, int index) override
    {
        added.append(index);
        views.append(view);
    }
    void pdfViewWillRemoveView(
        PDFView *, QWidget *view, const std::shared_ptr<PDFPage> &, int index) override
    {
        removed.append(index);
        views.removeAll(view);
    }
};

QPoint center(const QRectF &rect)
{
    return rect.center().toPoint();
}

} // namespace

class PDFViewTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    std::shared_ptr<PDFDocument> open(const PdfFixtures::Document &fixture, const QString &name)
    {
        return FixtureDocuments::open(m_dir, fixture, name);
    }
    std::shared_ptr<PDFDocument> standard()
    {
        return open(PdfFixtures::standard(), "standard.pdf");
    }
    std::shared_ptr<PDFDocument> text(int pages)
    {
        return open(PdfFixtures::textPages(pages, 10, 0), QStringLiteral("text%1.pdf").arg(pages));
    }
    static void show(PDFView &view, const std::shared_ptr<PDFDocument> &document, double scale)
    {
        view.resize(800, 600);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.setDocument(document);
        view.setScaleFactor(scale);
    }
    // The view point of the middle of a character of the page's text.
    static QPoint characterPoint(PDFView &view, const std::shared_ptr<PDFPage> &page,
        const QString &word, int offset = 0, double dx = 0)
    {
        const int index = page->string().indexOf(word) + offset;
        const QRectF bounds = page->characterBoundsAtIndex(index);
        return view.convertPointFromPage(bounds.center() + QPointF(dx * bounds.width(), 0), page)
            .toPoint();
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void conversionsOnCroppedAndRotatedPages_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QPointF>("corner"); // the box's lower-left corner in page space
        QTest::addColumn<int>("shownCorner"); // where it shows: 0 bottom-left, 1 top-left, ...
        QTest::newRow("cropped") << 1 << QPointF(10, 20) << 0;
        QTest::newRow("rotated 90") << 2 << QPointF(0, 0) << 1;
        QTest::newRow("rotated 180") << 3 << QPointF(0, 0) << 2;
        QTest::newRow("rotated 270") << 4 << QPointF(0, 0) << 3;
    }
    void conversionsOnCroppedAndRotatedPages()
    {
        QFETCH(int, index);
        QFETCH(QPointF, corner);
        QFETCH(int, shownCorner);
        const auto document = standard();
        QVERIFY(document);
        PDFView view;
        show(view, document, 0.5);
        const auto page = document->pageAtIndex(index);
        view.goToPage(page);
        const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
        const QRectF rect = view.convertRectFromPage(box, page);
        const bool turned = page->rotation() % 180 != 0;
        QCOMPARE(rect.size(), (turned ? box.size().transposed() : box.size()) * 0.5);
        const QPointF corners[]
            = { rect.bottomLeft(), rect.topLeft(), rect.topRight(), rect.bottomRight() };
        const QPointF shown = view.convertPointFromPage(corner, page);
        QVERIFY2((shown - corners[shownCorner]).manhattanLength() < 1.01,
            qPrintable(QStringLiteral("shown at %1,%2").arg(shown.x()).arg(shown.y())));
        const QPointF inside = box.center() + QPointF(37, -21);
        const QPointF back = view.convertPointToPage(view.convertPointFromPage(inside, page), page);
        QVERIFY((back - inside).manhattanLength() < 1e-6);
        const QRectF boxBack = view.convertRectToPage(rect, page);
        QVERIFY((boxBack.topLeft() - box.topLeft()).manhattanLength() < 1e-6);
        QVERIFY((boxBack.bottomRight() - box.bottomRight()).manhattanLength() < 1e-6);
        QCOMPARE(view.pageForPoint(rect.center(), false), page);
        // The page view lies exactly over the page.
        QCOMPARE(QRectF(view.pageViewForPage(page)->geometry()), rect);
    }

    void pagesAtAndNearPointsAndAreas()
    {
        const auto document = standard();
        QVERIFY(document);
        PDFView view;
        show(view, document, 0.5);
        const auto first = document->pageAtIndex(0);
        const auto second = document->pageAtIndex(1);
        const QRectF upper
            = view.convertRectFromPage(first->boundsForBox(PDFDisplayBox::CropBox), first);
        const QRectF lower
            = view.convertRectFromPage(second->boundsForBox(PDFDisplayBox::CropBox), second);
        QVERIFY2(lower.top() - upper.bottom() >= 3, "page breaks leave a gap");
        const QPointF gapNearUpper(upper.center().x(), upper.bottom() + 0.5);
        QCOMPARE(view.pageForPoint(gapNearUpper, false), nullptr);
        QCOMPARE(view.pageForPoint(gapNearUpper, true), first);
        // Which page is nearest elsewhere is the layout's (PDFLayoutTest).
        QCOMPARE(view.areaOfInterestForPoint(QPointF(2, lower.center().y())), int(PDFView::NoArea));
        QCOMPARE(view.areaOfInterestForPoint(upper.bottomRight() - QPointF(10, 10)),
            int(PDFView::PageArea));
        QVERIFY(
            view.areaOfInterestForPoint(characterPoint(view, first, "quick")) & PDFView::TextArea);
    }

    void displayModeKeepsTheCurrentPage_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("single page") << 0;
        QTest::newRow("two-up") << 2;
        QTest::newRow("two-up continuous") << 3;
    }
    void displayModeKeepsTheCurrentPage()
    {
        QFETCH(int, mode);
        const auto document = text(12);
        QVERIFY(document);
        PDFView view;
        show(view, document, 0.5);
        const auto seventh = document->pageAtIndex(7);
        view.goToPage(seventh);
        QCOMPARE(view.currentPage(), seventh);
        view.setDisplayMode(mode);
        const auto visible = view.visiblePages();
        QVERIFY(std::find(visible.begin(), visible.end(), seventh) != visible.end());
        view.setDisplayMode(1);
        QCOMPARE(view.currentPage(), seventh);
    }

    void zoomStepsLimitsAndNotifications()
    {
        const auto document = standard();
        QVERIFY(document);
        PDFView view;
        show(view, document, 1.0);
        int posted = 0;
        NotificationCenter::defaultCenter().addObserver(this, PDFView::ScaleChangedNotification,
            &view, [&](const Notification &) { ++posted; });
        view.zoomIn();
        QCOMPARE(view.scaleFactor(), 1.25);
        view.zoomOut();
        view.zoomOut();
        QCOMPARE(view.scaleFactor(), 0.75);
        view.setScaleFactor(50);
        QCOMPARE(view.scaleFactor(), view.maxScaleFactor());
        QVERIFY(!view.canZoomIn());
        view.zoomIn();
        view.setScaleFactor(0.001);
        QCOMPARE(view.scaleFactor(), view.minScaleFactor());
        QVERIFY(!view.canZoomOut());
        QCOMPARE(posted, 5);
        NotificationCenter::defaultCenter().removeObserver(this);

        // Ctrl+wheel zooms around the pointer: the text under it stays under it.
        view.setScaleFactor(1.0);
        const auto page = document->pageAtIndex(0);
        view.goToPage(page);
        const QPoint pointer = characterPoint(view, page, "lazy");
        const QPointF before = view.convertPointToPage(pointer, page);
        QWheelEvent wheel(pointer, view.viewport()->mapToGlobal(pointer), QPoint(), QPoint(0, 120),
            Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view.viewport(), &wheel);
        QVERIFY(view.scaleFactor() > 1.1);
        QVERIFY((view.convertPointToPage(pointer, page) - before).manhattanLength() < 2);

        // Auto scaling fits the pages' width, follows resizing, and ends with a chosen scale.
        view.setAutoScales(true);
        const auto width = [&] {
            return view.convertRectFromPage(page->boundsForBox(PDFDisplayBox::CropBox), page)
                .width();
        };
        QVERIFY(width() > view.viewport()->width() - 40 && width() <= view.viewport()->width());
        view.resize(500, 600);
        QVERIFY(width() > view.viewport()->width() - 40 && width() <= view.viewport()->width());
        view.setScaleFactor(1.0);
        QVERIFY(!view.autoScales());
        view.resize(800, 600);
        QCOMPARE(view.scaleFactor(), 1.0);
    }

    void historyGoesBackAndForwardThroughJumps()
    {
        const auto document = text(20);
        QVERIFY(document);
        PDFView view;
        QStringList posted;
        for (const QString &name :
            { PDFView::DocumentChangedNotification, PDFView::PageChangedNotification }) {
            NotificationCenter::defaultCenter().addObserver(
                this, name, &view, [&posted](const Notification &n) { posted.append(n.name); });
        }
        show(view, document, 0.5);
        QCOMPARE(posted.count(PDFView::DocumentChangedNotification), 1);
        posted.clear();
        view.goToPage(document->pageAtIndex(5));
        view.goToPage(document->pageAtIndex(12));
        QVERIFY(view.canGoBack());
        QVERIFY(!view.canGoForward());
        view.goBack();
        QCOMPARE(document->indexForPage(view.currentPage()), 5);
        view.goBack();
        QCOMPARE(document->indexForPage(view.currentPage()), 0);
        QVERIFY(!view.canGoBack());
        view.goForward();
        view.goForward();
        QCOMPARE(document->indexForPage(view.currentPage()), 12);
        QVERIFY(!view.canGoForward());
        view.goBack();
        view.goToPage(document->pageAtIndex(2));
        QVERIFY2(!view.canGoForward(), "a new jump forgets the forward list");
        QCOMPARE(posted.count(PDFView::PageChangedNotification), 8);
        NotificationCenter::defaultCenter().removeObserver(this);

        // A destination brings its point to the top left, and reads back the same.
        auto destination
            = std::make_shared<PDFDestination>(document->pageAtIndex(9), QPointF(20, 500));
        destination->setZoom(1.5);
        view.goToDestination(destination);
        const auto current = view.currentDestination();
        QCOMPARE(current->page(), destination->page());
        QVERIFY2((current->point() - destination->point()).manhattanLength() < 1.5,
            qPrintable(
                QStringLiteral("%1 %2").arg(current->point().x()).arg(current->point().y())));
        QCOMPARE(current->zoom(), 1.5);
        view.goBack();
        QCOMPARE(document->indexForPage(view.currentPage()), 2);
        QCOMPARE(view.scaleFactor(), 0.5);
    }

    void frozenViewRefusesHorizontalScrolls()
    {
        struct FreezableView : PDFView
        {
            bool frozen = false;
            bool vetoesHorizontalScroll() const override { return frozen; }
        };
        const auto document = standard();
        QVERIFY(document);
        FreezableView view;
        show(view, document, 3.0);
        QScrollBar *horizontal = view.horizontalScrollBar();
        horizontal->setValue(100);
        view.frozen = true;
        const int top = view.verticalScrollBar()->value();
        horizontal->setValue(400);
        view.verticalScrollBar()->setValue(top + 300);
        QCOMPARE(horizontal->value(), 100);
        QCOMPARE(view.verticalScrollBar()->value(), top + 300);
        QCOMPARE(view.documentView().visibleRect().left(), 100.0);
        view.frozen = false;
        horizontal->setValue(400);
        QCOMPARE(view.documentView().visibleRect().left(), 400.0);
    }

    void keysScrollAndTurnPages_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("presses");
        QTest::addColumn<int>("page");
        QTest::newRow("page down, continuous") << 1 << int(Qt::Key_PageDown) << 2 << 1;
        QTest::newRow("space, continuous") << 1 << int(Qt::Key_Space) << 4 << 3;
        QTest::newRow("end, continuous") << 1 << int(Qt::Key_End) << 1 << 9;
        QTest::newRow("page down turns a single page") << 0 << int(Qt::Key_PageDown) << 3 << 1;
        QTest::newRow("right arrow turns a single page") << 0 << int(Qt::Key_Right) << 2 << 2;
        QTest::newRow("end, single page") << 0 << int(Qt::Key_End) << 1 << 9;
    }
    void keysScrollAndTurnPages()
    {
        QFETCH(int, mode);
        QFETCH(int, key);
        QFETCH(int, presses);
        QFETCH(int, page);
        const auto document = text(10);
        QVERIFY(document);
        PDFView view;
        show(view, document, 1.0);
        view.setDisplayMode(mode);
        for (int i = 0; i < presses; ++i)
            QTest::keyClick(&view, Qt::Key(key));
        QCOMPARE(document->indexForPage(view.currentPage()), page);
        QTest::keyClick(&view, Qt::Key_Home);
        QCOMPARE(document->indexForPage(view.currentPage()), 0);
    }

    // Each gesture selects what a reader expects, copies it, and on X desktops, which paste the
    // primary selection with a middle click, offers it there (the offscreen platform has none).
    void mouseAndKeysSelectText_data()
    {
        QTest::addColumn<QString>("gesture");
        QTest::addColumn<QString>("selected"); // empty: nothing is selected
        QTest::addColumn<QString>("offered"); // empty: what is selected
        const auto row = [](const char *name, const char *gesture, const char *selected,
                             const char *offered = "") {
            QTest::newRow(name) << QString(gesture) << QString(selected) << QString(offered);
        };
        row("drag", "drag", "quick brown fox");
        row("shift click extends a drag", "extend", "quick brown fox jumps over the lazy dog",
            "quick brown fox jumps");
        row("double click", "double", "gamma");
        row("triple click", "triple", "Alpha beta gamma delta");
        row("select all", "all", "The quick brown fox");
        row("selection made by the program", "program", "gamma", "untouched");
        row("click on blank paper clears", "blank", "", "untouched");
    }
    void mouseAndKeysSelectText()
    {
        QFETCH(QString, gesture);
        QFETCH(QString, selected);
        QFETCH(QString, offered);
        if (offered.isEmpty())
            offered = selected;
        const auto document = standard();
        QVERIFY(document);
        PDFView view;
        show(view, document, 1.0);
        const auto page = document->pageAtIndex(0);
        QWidget *viewport = view.viewport();
        QClipboard *clipboard = QGuiApplication::clipboard();
        const bool primary = clipboard->supportsSelection();
        if (primary) {
            clipboard->setText(QStringLiteral("untouched"), QClipboard::Selection);
            QTRY_COMPARE(clipboard->text(QClipboard::Selection), QStringLiteral("untouched"));
        }

        const QPoint beta = characterPoint(view, page, "beta", 1);
        if (gesture == QLatin1String("drag") || gesture == QLatin1String("extend")) {
            const QPoint end = characterPoint(view, page, "fox", 2, 0.45);
            QTest::mousePress(
                viewport, Qt::LeftButton, {}, characterPoint(view, page, "quick", 0, -0.45));
            QTest::mouseMove(viewport, characterPoint(view, page, "brown"));
            QTest::mouseMove(viewport, end);
            QTest::mouseRelease(viewport, Qt::LeftButton, {}, end);
            if (gesture == QLatin1String("extend"))
                QTest::mouseClick(viewport, Qt::LeftButton, Qt::ShiftModifier,
                    characterPoint(view, page, "dog", 2, 0.45));
        } else if (gesture == QLatin1String("double")) {
            QTest::mouseDClick(
                viewport, Qt::LeftButton, {}, characterPoint(view, page, "gamma", 1));
        } else if (gesture == QLatin1String("triple")) {
            // Press, release, double click, press: the third click takes the line.
            QTest::mousePress(viewport, Qt::LeftButton, {}, beta);
            QTest::mouseRelease(viewport, Qt::LeftButton, {}, beta);
            QTest::mouseDClick(viewport, Qt::LeftButton, {}, beta);
            QTest::mousePress(viewport, Qt::LeftButton, {}, beta);
            QTest::mouseRelease(viewport, Qt::LeftButton, {}, beta);
        } else if (gesture == QLatin1String("all")) {
            view.selectAll();
        } else if (gesture == QLatin1String("program")) {
            view.setCurrentSelection(page->selectionForWordAtPoint(
                view.convertPointToPage(characterPoint(view, page, "gamma", 1), page)));
        } else {
            QTest::mouseDClick(
                viewport, Qt::LeftButton, {}, characterPoint(view, page, "gamma", 1));
            QVERIFY(view.currentSelection());
            if (primary) {
                clipboard->setText(QStringLiteral("untouched"), QClipboard::Selection);
                QTRY_COMPARE(clipboard->text(QClipboard::Selection), QStringLiteral("untouched"));
            }
            QTest::mouseClick(viewport, Qt::LeftButton, {},
                view.convertPointFromPage(QPointF(300, 100), page).toPoint());
        }
        if (selected.isEmpty()) {
            QVERIFY(!view.currentSelection());
        } else {
            QVERIFY(view.currentSelection());
            const QString text = view.currentSelection()->string().trimmed();
            QVERIFY2(text.startsWith(selected), qPrintable(text));
            if (gesture != QLatin1String("all"))
                QCOMPARE(text, selected);
            view.copy();
            QCOMPARE(clipboard->text().trimmed(), text);
        }
        if (primary)
            QTRY_VERIFY2(clipboard->text(QClipboard::Selection).trimmed().startsWith(offered),
                qPrintable(clipboard->text(QClipboard::Selection)));
    }

    void draggingPastTheEdgeScrollsAndSelectsAcrossPages()
    {
        const auto document = text(3);
        QVERIFY(document);
        PDFView view;
        show(view, document, 1.0);
        const auto first = document->pageAtIndex(0);
        QWidget *viewport = view.viewport();
        QTest::mousePress(
            viewport, Qt::LeftButton, {}, characterPoint(view, first, "line 9", 0, -0.45));
        QTest::mouseMove(viewport, QPoint(300, viewport->height() + 30));
        QTRY_VERIFY(view.currentSelection() && view.currentSelection()->pages().size() == 2);
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(300, viewport->height() + 30));
        const QString text = view.currentSelection()->string();
        QVERIFY(text.startsWith(QStringLiteral("line 9")));
        QVERIFY(text.contains(QStringLiteral("Page 1 line 10")));
        QVERIFY(text.contains(QStringLiteral("Page 2 line 1 ")));
    }

    void linkClicksReachTheDelegateOrJump()
    {
        const auto document = standard();
        QVERIFY(document);
        PDFView view;
        Recorder recorder;
        view.setDelegate(&recorder);
        show(view, document, 1.0);
        const auto page = document->pageAtIndex(0);
        const QPoint external = center(view.convertRectFromPage(QRectF(72, 600, 200, 20), page));
        QVERIFY(view.areaOfInterestForPoint(external) & PDFView::LinkArea);
        QMouseEvent hover(QEvent::MouseMove, external, view.viewport()->mapToGlobal(external),
            Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(view.viewport(), &hover);
        QCOMPARE(view.viewport()->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, external);
        QCOMPARE(
            recorder.urls, QList<QUrl> { QUrl(QStringLiteral("https://example.org/folidoc")) });

        const QPoint internal = center(view.convertRectFromPage(QRectF(72, 560, 200, 20), page));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, internal);
        QCOMPARE(view.currentPage(), document->pageAtIndex(2));
        QVERIFY(view.canGoBack());
        view.goBack();
        QCOMPARE(view.currentPage(), page);
        QCOMPARE(recorder.urls.size(), 1);
        view.setDelegate(nullptr);
    }

    void pageViewsFollowTheVisiblePages()
    {
        const auto document = text(40);
        QVERIFY(document);
        PDFView view;
        Recorder recorder;
        view.setDelegate(&recorder);
        show(view, document, 0.5);
        QVERIFY(!recorder.added.isEmpty());
        QVERIFY(recorder.added.contains(0) && recorder.added.contains(1));
        QVERIFY2(recorder.added.size() <= 5, "only pages near the view get page views");
        for (QWidget *pageView : std::as_const(recorder.views))
            QVERIFY(pageView->testAttribute(Qt::WA_TransparentForMouseEvents));

        // A double click through the window reaches the view across the page view.
        const auto first = document->pageAtIndex(0);
        const QPoint word = characterPoint(view, first, "line", 0);
        QTest::mouseDClick(view.window()->windowHandle(), Qt::LeftButton, {},
            view.viewport()->mapTo(view.window(), word));
        QVERIFY(view.currentSelection());
        QCOMPARE(view.currentSelection()->string().trimmed(), QStringLiteral("line"));

        view.goToLastPage();
        QVERIFY(recorder.removed.contains(0));
        QVERIFY(recorder.added.contains(39));
        QCOMPARE(view.pageViewForPage(first), nullptr);
        const auto last = document->pageAtIndex(39);
        QCOMPARE(QRectF(view.pageViewForPage(last)->geometry()),
            view.convertRectFromPage(last->boundsForBox(PDFDisplayBox::CropBox), last));
        view.setDelegate(nullptr);
    }

    // Pages inserted, removed, moved or turned by the document: the view finds every page where
    // the document has it at once, and lays the pages out again on the next turn.
    void pageChangesOfTheDocumentReachTheView()
    {
        const auto document = text(10);
        QVERIFY(document);
        PDFView view;
        show(view, document, 0.5);
        const auto first = document->pageAtIndex(0);
        const auto last = document->pageAtIndex(9);
        const QRectF box = first->boundsForBox(PDFDisplayBox::CropBox);
        const QRectF firstPlace = view.convertRectFromPage(box, first);
        const double height = view.documentView().bounds().height();

        document->removePageAtIndex(9);
        document->insertPage(last, 0);
        QCOMPARE(view.convertRectFromPage(box, last), firstPlace);
        QCOMPARE(view.pageForPoint(firstPlace.center(), false), last);
        for (int k = 0; k < 3; ++k)
            document->removePageAtIndex(9 - k);
        QCOMPARE(view.pageForPoint(firstPlace.center(), false), last);
        QTRY_COMPARE(view.documentView().bounds().height(), height * 7 / 10);
        // First still, though the shorter document may centre the column elsewhere.
        QCOMPARE(view.convertRectFromPage(box, last).top(), firstPlace.top());
        QVERIFY(view.convertRectFromPage(box, first).top() > firstPlace.bottom());

        // A page turned on its side is laid out across.
        const double width = view.documentView().bounds().width();
        last->setRotation(90);
        QTRY_VERIFY(view.documentView().bounds().width() > width);
        QCOMPARE(view.convertRectFromPage(box, last).size(), firstPlace.size().transposed());
    }

    // Sizes past the first pages arrive late, read in the background or when the reader gets
    // there: the page under the reader stays where it is shown, and a reader who went to the end
    // before the layout was complete stays at the end.
    void theFirstScreenShowsItsPagesAtTheirOwnSizes_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<int>("mode");
        QTest::newRow("a page wide") << 1.0 << int(PDFLayout::SinglePageContinuous);
        QTest::newRow("many small pages") << 0.25 << int(PDFLayout::SinglePageContinuous);
        QTest::newRow("two up") << 0.5 << int(PDFLayout::TwoUpContinuous);
    }
    // The view's bar, painted in bands, looks exactly like Qt's own, at rest and while its
    // slider is held.
    void theScrollBarLooksLikeQtsOwn()
    {
        PDFView view;
        QVERIFY(dynamic_cast<PDFScrollBar *>(view.verticalScrollBar()));
        PDFScrollBar banded(Qt::Vertical);
        QScrollBar plain(Qt::Vertical);
        for (QScrollBar *bar : { static_cast<QScrollBar *>(&banded), &plain }) {
            bar->setRange(0, 5000);
            bar->setPageStep(700);
            bar->setValue(1800);
            bar->resize(16, 700);
        }
        const auto look = [](QWidget &widget) { return widget.grab().toImage(); };
        QCOMPARE(look(banded), look(plain));

        QStyleOptionSlider option;
        option.initFrom(&plain);
        option.orientation = Qt::Vertical;
        option.maximum = 5000;
        option.sliderPosition = option.sliderValue = 1800;
        option.pageStep = 700;
        const QPoint slider = plain.style()
                                  ->subControlRect(QStyle::CC_ScrollBar, &option,
                                      QStyle::SC_ScrollBarSlider, &plain)
                                  .center();
        QTest::mousePress(&banded, Qt::LeftButton, {}, slider);
        QTest::mousePress(&plain, Qt::LeftButton, {}, slider);
        QVERIFY(banded.isSliderDown());
        QCOMPARE(look(banded), look(plain));
        QTest::mouseRelease(&banded, Qt::LeftButton, {}, slider);
        QTest::mouseRelease(&plain, Qt::LeftButton, {}, slider);
        QCOMPARE(look(banded), look(plain));
        // A slider moved, to the ends too, is the picture it had laid at its new place.
        for (const int value : { 4000, 0, 5, 10, 20, 5000, 4990, 4980, 2500 }) {
            banded.setValue(value);
            plain.setValue(value);
            QCOMPARE(look(banded), look(plain));
        }
    }

    void theFirstScreenShowsItsPagesAtTheirOwnSizes()
    {
        QFETCH(double, scale);
        QFETCH(int, mode);
        // Only the first screen's sizes are read at once: a page after the first, unlike it,
        // must not show at the first page's size.
        PdfFixtures::Document fixture = PdfFixtures::textPages(60, 2, 0);
        for (int i = 1; i < 60; ++i) {
            fixture.pages[i].mediaBox = QRectF(0, 0, 400, 200);
            fixture.pages[i].rotate = i % 3 == 0 ? 90 : 0;
        }
        const auto document = open(fixture, QStringLiteral("first-screen.pdf"));
        QVERIFY(document);
        PDFView view;
        view.resize(800, 1000);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.setDisplayMode(mode);
        view.setScaleFactor(scale);
        view.setDocument(document);
        const auto shown = view.visiblePages();
        QVERIFY(shown.size() >= (scale < 0.5 ? 10 : 2));
        for (const auto &page : shown) {
            const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
            const QSizeF size = page->rotation() % 180 ? box.size().transposed() : box.size();
            QCOMPARE(view.convertRectFromPage(box, page).size(), size * scale);
        }
    }

    void refiningTheLayoutKeepsTheReadersPlace_data()
    {
        QTest::addColumn<bool>("landscapeFirst");
        QTest::addColumn<int>("target"); // negative: scrolled to by the bar; 0: to the end
        QTest::newRow("a destination, estimates too tall") << false << 150;
        QTest::newRow("a destination, estimates too short") << true << 150;
        QTest::newRow("a scroll into unread pages, estimates too tall") << false << -300;
        QTest::newRow("a scroll into unread pages, estimates too short") << true << -300;
        QTest::newRow("the end, estimates too tall") << false << 0;
        QTest::newRow("the end, estimates too short") << true << 0;
    }
    void refiningTheLayoutKeepsTheReadersPlace()
    {
        QFETCH(bool, landscapeFirst);
        QFETCH(int, target);
        // The first pages read set the estimates for all the others, which are then wrong.
        PdfFixtures::Document fixture = PdfFixtures::textPages(600, 2, 0);
        for (int i = 0; i < 600; ++i) {
            if ((i < 40) == landscapeFirst)
                fixture.pages[i].mediaBox = QRectF(0, 0, 792, 612);
        }
        const auto document
            = open(fixture, QStringLiteral("refine-%1.pdf").arg(landscapeFirst ? 1 : 0));
        QVERIFY(document);
        const double landscape = landscapeFirst ? 40 : 560;
        const double height = landscape * (612 + 8) + (600 - landscape) * (792 + 8);
        PDFView view;
        show(view, document, 1.0);
        QVERIFY(view.documentView().bounds().height() != height);
        QScrollBar *bar = view.verticalScrollBar();
        if (target == 0) {
            bar->setValue(bar->maximum());
            QTRY_COMPARE(view.documentView().bounds().height(), height);
            QCOMPARE(bar->value(), bar->maximum());
            QCOMPARE(view.currentPage(), document->pageAtIndex(599));
            return;
        }
        // Where the estimates put the top of the page, which the reader then sees.
        if (target < 0)
            bar->setValue(int(-target * (landscapeFirst ? 612 + 8 : 792 + 8)) + 4);
        const auto page = document->pageAtIndex(std::abs(target));
        const QPointF point = target > 0 ? QPointF(100, 300) : QPointF(0, 0);
        if (target < 0) {
            QCOMPARE(view.currentPage(), page);
        } else {
            view.goToDestination(std::make_shared<PDFDestination>(page, point));
            // The page is shown at its own size before the layout is complete.
            const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
            QCOMPARE(view.convertRectFromPage(box, page).size(), box.size());
        }
        const QPointF shown = view.convertPointFromPage(point, page);
        QTRY_COMPARE(view.documentView().bounds().height(), height);
        QCOMPARE(view.currentPage(), page);
        QVERIFY((view.convertPointFromPage(point, page) - shown).manhattanLength() <= 1);
    }
};

QTEST_MAIN(PDFViewTest)
#include "PDFViewTest.moc"
