// The overlay over each page of a real view, read back from the screen's pixels: what it draws,
// that changing only what it draws renders no page again, and what ink, ribbon and area repaint.

#include "app/support/AppWindow.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFSavingService.h>
#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFSelection.h>
#include <kit/pdfview/PDFRenderScheduler.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>
#include <view/PDFViewDelegate2.h>
#include <view/QKOverlayView.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QTemporaryDir>
#include <QtTest>

#include <set>

namespace {

const QRectF firstLine(72, 716, 300, 14); // page 0's first line of text

// The owner's side of the view: only the tool matters here.
class ToolOwner : public PDFViewDelegate2
{
public:
    PDFToolMode mode = PDFToolModeTextSelection;
    PDFToolMode toolMode() const override { return mode; }
    void PDFViewESCKeyDown(XPDFView *) override { }
    void PDFViewDidBecomeFirstResponder(XPDFView *) override { }
    void PDFViewPerformAddOutline(XPDFView *) override { }
};

// A view whose pending stroke the test grows as the ink gesture does.
class InkingView : public FDPDFView
{
public:
    void beginInk(const std::shared_ptr<PDFPage> &page, QPointF point)
    {
        m_pendingInkPath = std::make_shared<BezierPath>();
        m_pendingInkPath->setLineWidth(3);
        m_pendingInkPath->moveTo(point);
        m_pendingInkPage = page;
        post(page);
    }
    void appendInk(QPointF point)
    {
        m_pendingInkPath->lineTo(point);
        post(m_pendingInkPage.lock());
    }

private:
    void post(const std::shared_ptr<PDFPage> &page)
    {
        NotificationCenter::defaultCenter().post(PendingAnnInkDidChangeNotification, this,
            { { QStringLiteral("Page"), QVariant::fromValue(page) } });
    }
};

// Collects the areas an overlay repaints.
class PaintSpy : public QObject
{
public:
    QRegion painted;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

bool near(QColor a, QColor b, int tolerance = 40)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
}

int countNear(const QImage &image, const QRect &area, const QColor &color, int tolerance = 40)
{
    // Thin antialiased marks only tint the page: a coloured mark counts by its hue.
    const bool byHue = tolerance < 0;
    int count = 0;
    const QRect clipped = area.intersected(image.rect());
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        for (int x = clipped.left(); x <= clipped.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (byHue ? pixel.hsvSaturation() > 40 && std::abs(pixel.hsvHue() - color.hsvHue()) < 20
                      : near(pixel, color, tolerance))
                ++count;
        }
    }
    return count;
}

} // namespace

class OverlayViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        FDThemeProvider::setCurrent(FDThemeProvider::blue());
        const QString path = m_dir.filePath(QStringLiteral("overlay.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3, 10, 0), path));
        m_owner.mode = PDFToolModeTextSelection;
        m_view = std::make_unique<InkingView>();
        m_view->setDelegate2(&m_owner);
        m_view->setUndoManager(&m_undo);
        m_view->resize(700, 900);
        m_view->loadDocument(QUrl::fromLocalFile(path));
        m_view->show();
        QTRY_VERIFY(!m_view->isLoading());
        m_view->setScaleMode(PDFViewScaleMode::none);
        m_view->setScaleFactor(1.0);
        m_view->goToPage(page(0));
        QTRY_VERIFY(m_view->isVisibleAreaRendered());
        QTRY_VERIFY(m_view->renderScheduler()->isIdle());
    }
    void cleanup()
    {
        if (m_view && m_view->fdDocument())
            m_view->fdDocument()->setNumberOfChanges(0);
        m_view.reset();
        m_undo.removeAllActions();
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    }

    void overlayDrawsItsAnnotationsAndTheirSelection_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("overlayDrawn"); // else the engine draws it
        QTest::addColumn<bool>("ringed"); // its selection shows a ring or handles
        QTest::newRow("square: handles") << "Square" << true << true;
        QTest::newRow("note") << "Text" << true << false;
        QTest::newRow("highlight: a ring along its outline") << "Highlight" << false << true;
    }
    void overlayDrawsItsAnnotationsAndTheirSelection()
    {
        QFETCH(QString, kind);
        QFETCH(bool, overlayDrawn);
        QFETCH(bool, ringed);
        const auto annotation = make(kind);
        QVERIFY(annotation);
        if (ringed) {
            m_view->setSelectedAnn(annotation);
            QCOMPARE(m_view->selectedAnn(), annotation);
            const QColor ring = FDThemeProvider::current()->color(FDTheme::primaryColor);
            const QRect area = onScreen(annotation->bounds()).adjusted(-6, -6, 6, 6);
            QVERIFY(countNear(screen(), area, ring, -1) > 8);
            m_view->setSelectedAnn(nullptr);
            QCOMPARE(countNear(screen(), area, ring, -1), 0);
        }
        if (!overlayDrawn)
            return;
        annotation->setColor(QColor(0, 160, 0));
        m_view->setSelectedAnn(nullptr);
        const QImage shown = screen();
        const QRect area = onScreen(annotation->bounds());
        const QSizeF size = page()->boundsForBox(m_view->displayBox()).size();
        const QImage engine = page()->imageForBox(m_view->displayBox(), size.toSize());
        const QRect inEngine(QPoint(int(annotation->bounds().left()),
                                 int(size.height() - annotation->bounds().bottom())),
            annotation->bounds().size().toSize());
        if (kind == "Square") {
            QVERIFY(near(shown.pixelColor(area.center()), Qt::red));
            QCOMPARE(countNear(engine, inEngine, Qt::red), 0);
        } else {
            // White paper, a gray frame, and the icon in the note's colour in the middle.
            QVERIFY(countNear(shown, area.adjusted(1, 1, -1, -1), Qt::white, 10) > area.width());
            QVERIFY(countNear(shown, area, QColor(0, 160, 0)) > 10);
            QCOMPARE(countNear(engine, inEngine, QColor(0, 160, 0)), 0);
        }
        // Hidden from the engine by its display flag only; the file is not told.
        QVERIFY(!annotation->shouldDisplay());
    }

    void changesOnlyTheOverlayDrawsRenderNoPage_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<int>("pageRenders");
        QTest::newRow("a square dragged in 40 steps") << "drag" << 0;
        QTest::newRow("a square resized") << "resize" << 0;
        QTest::newRow("a square recoloured") << "colour" << 0;
        QTest::newRow("a square added") << "add" << 0;
        QTest::newRow("a square removed") << "remove" << 0;
        QTest::newRow("a highlight added") << "highlight" << 1;
        QTest::newRow("a highlight added and recoloured in one turn") << "highlights" << 1;
    }
    void changesOnlyTheOverlayDrawsRenderNoPage()
    {
        QFETCH(QString, change);
        QFETCH(int, pageRenders);
        std::shared_ptr<PDFAnnotation> square;
        if (change != "add" && !change.startsWith("highlight")) {
            square = make(QStringLiteral("Square"));
            QTRY_VERIFY(m_view->isVisibleAreaRendered());
            QTRY_VERIFY(m_view->renderScheduler()->isIdle());
        }
        const quint64 revision = page()->revision();
        const int rendered = renders(0, [&] {
            if (change == "drag") {
                for (int step = 0; step < 40; ++step) {
                    square->setBounds(square->bounds().translated(3, -2));
                    QCoreApplication::processEvents();
                }
            } else if (change == "resize") {
                square->setBounds(square->bounds().adjusted(0, 0, 60, 30));
            } else if (change == "colour") {
                square->setColor(Qt::blue);
            } else if (change == "add") {
                make(QStringLiteral("Square"));
            } else if (change == "remove") {
                m_view->removeAnnotation(square);
            } else if (change == "highlight") {
                QVERIFY(make(QStringLiteral("Highlight")));
            } else {
                const auto highlight = make(QStringLiteral("Highlight"));
                QVERIFY(highlight);
                highlight->setColor(Qt::green);
            }
        });
        QCOMPARE(rendered, pageRenders);
        QCOMPARE(page()->revision() != revision, pageRenders > 0);
        // The other pages are never rendered again for it.
        QCOMPARE(renders(1, [] {}), 0);
    }

    void inkRepaintsOnlyItsNewSegment()
    {
        QWidget *const overlay = m_view->pageViewForPage(page())->findChild<QKOverlayView *>();
        QVERIFY(overlay);
        m_view->beginInk(page(), QPointF(100, 300));
        for (int step = 1; step <= 20; ++step)
            m_view->appendInk(QPointF(100 + 5 * step, 300 + 2 * step));
        screen();
        PaintSpy spy;
        overlay->installEventFilter(&spy);
        m_view->appendInk(QPointF(210, 344));
        QCoreApplication::processEvents();
        overlay->removeEventFilter(&spy);
        // The last segment, 10 by 4 points, with room for the stroke's width and rounding.
        const QRect segment = spy.painted.boundingRect();
        QVERIFY2(segment.width() <= 24 && segment.height() <= 18,
            qPrintable(QStringLiteral("%1x%2").arg(segment.width()).arg(segment.height())));
        // The stroke shows in the ink colour all along.
        const QImage shown = screen();
        const QColor ink = colorForKey(UserDefaults::standard(), AnnotationDefaultsKeys::InkColor);
        QVERIFY(countNear(shown, onScreen(QRectF(100, 300, 110, 44)), ink, 60) > 100);
    }

    void ribbonShowsBookmarksAndPreviewsOnHover()
    {
        auto *const overlay = m_view->pageViewForPage(page())->findChild<QKOverlayView *>();
        QVERIFY(overlay);
        const QColor ribbon = FDThemeProvider::current()->color(FDTheme::secondaryColor);
        const QSizeF size = page()->boundsForBox(m_view->displayBox()).size();
        const QRectF hot = FDPage::bookmarkIndicatorHotAreaWithScale(1.0, size);
        const QRect ribbonArea = onScreen(QRectF(size.width() - 40, size.height() - 45, 40, 45));
        QCOMPARE(countNear(screen(), ribbonArea, ribbon, -1), 0);

        // A move into the hot area previews, a move out takes it away.
        const auto hover = [this](QPoint at) {
            QMouseEvent move(QEvent::MouseMove, at, m_view->viewport()->mapToGlobal(at),
                Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(m_view->viewport(), &move);
        };
        hover(onScreen(hot.center()));
        QVERIFY(overlay->isMouseInBookmarkIndicatorHotArea());
        const int dashed = countNear(screen(), ribbonArea, ribbon, -1);
        QVERIFY(dashed > 10);
        hover(onScreen(QPointF(300, 300)));
        QVERIFY(!overlay->isMouseInBookmarkIndicatorHotArea());
        QCOMPARE(countNear(screen(), ribbonArea, ribbon, -1), 0);

        // A bookmarked page shows the filled ribbon, pointer or not.
        const auto fdPage = std::dynamic_pointer_cast<FDPage>(page());
        QVERIFY(m_view->fdDocument()->addBookmarkWith(fdPage, QStringLiteral("Here")));
        QVERIFY(countNear(screen(), ribbonArea, ribbon, -1) > dashed * 2);
    }

    void areaSelectionDimsEverythingElse()
    {
        m_owner.mode = PDFToolModeAreaSelection;
        m_view->setScaleFactor(0.5);
        m_view->goToPage(page(0));
        QTRY_VERIFY(m_view->isVisibleAreaRendered());
        const QRectF selection(100, 400, 200, 200);
        m_view->setCurrentSelectionPage(page(0));
        m_view->setCurrentSelectionRect(selection);
        // Page 1 shows below page 0 in the 900-pixel view.
        const QImage shown = screen();
        const QColor inside = shown.pixelColor(onScreen(QPointF(150, 420)));
        const QColor outside = shown.pixelColor(onScreen(QPointF(400, 300)));
        const QColor otherPageHole = shown.pixelColor(onScreen(QPointF(150, 580), 1));
        QVERIFY(near(inside, Qt::white, 10));
        QVERIFY(near(outside, QColor(102, 102, 102), 12));
        // On another page the hole is shaded too, so that it does not look selected.
        QVERIFY(near(otherPageHole, QColor(178, 178, 178), 12));
        // In another tool nothing shows.
        m_owner.mode = PDFToolModeTextSelection;
        m_view->viewport()->update();
        QVERIFY(near(screen().pixelColor(onScreen(QPointF(400, 300))), Qt::white, 10));
    }

private:
    QImage screen()
    {
        QCoreApplication::processEvents();
        return m_view->viewport()->grab().toImage();
    }

    QPoint onScreen(QPointF pagePoint, int pageIndex = 0)
    {
        return m_view->convertPointFromPage(pagePoint, page(pageIndex)).toPoint();
    }

    QRect onScreen(QRectF pageRect, int pageIndex = 0)
    {
        return m_view->convertRectFromPage(pageRect, page(pageIndex)).toAlignedRect();
    }

    std::shared_ptr<PDFPage> page(int index = 0) { return m_view->document()->pageAtIndex(index); }

    std::shared_ptr<PDFAnnotation> make(const QString &kind)
    {
        if (kind == QLatin1String("Highlight"))
            m_view->setCurrentSelection(page()->selectionForRect(firstLine));
        const auto made = m_view->addAnnotationWithType(kind, page(), QRectF(150, 450, 120, 80));
        if (auto *square = dynamic_cast<FDAnnotationSquare *>(made.get()))
            square->setInteriorColor(Qt::red);
        return made;
    }
    // Renders of the page (tiles of distinct revisions) while the block runs and the renderer
    // settles.
    int renders(int pageIndex, const std::function<void()> &block)
    {
        const void *const target = page(pageIndex).get();
        std::set<quint64> revisions;
        const auto connection = connect(m_view->renderScheduler(),
            &PDFRenderScheduler::tileFinished, this, [&](const PDFTileKey &key, const QImage &) {
                if (key.page == target)
                    revisions.insert(key.revision);
            });
        block();
        QTest::qWait(400);
        if (!QTest::qWaitFor([this] { return m_view->renderScheduler()->isIdle(); }))
            return -1;
        disconnect(connection);
        return int(revisions.size());
    }

    QTemporaryDir m_dir;
    std::unique_ptr<InkingView> m_view;
    ToolOwner m_owner;
    UndoManager m_undo;
};

FOLIDOC_APP_TEST_MAIN(OverlayViewTest)

#include "OverlayViewTest.moc"
