// The editing view's pointer and keys, sent to a real view in a real window over generated PDFs:
// what each tool makes or changes, its limits, its undo step, and gestures cut short.

#include "app/support/AppWindow.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/PDFWindowController.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <kit/base/Geometry.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>
#include <view/editors/FDAnnTextEditor.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Points = QList<QPointF>;

// The text editors come later; the view's hook for them is all that is watched here.
class EditorHookView : public FDPDFView
{
public:
    void editSelectedAnnotation() override { ++edits; }
    int edits = 0;
};

} // namespace

class PointerGestureTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void init()
    {
        AppWindow::reset();
        PdfFixtures::Document document = PdfFixtures::textPages(3, 10, 0);
        document.pages[2].lines.clear(); // a page without text
        open(document);
    }
    void cleanup() { QVERIFY(AppWindow::closeWindow(m_window)); }

    void eachToolMakesItsKind_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<Points>("points"); // page points of the press, moves and release
        QTest::addColumn<QString>("made"); // the subtype; empty when nothing is made
        QTest::addColumn<QRectF>("bounds"); // the expected bounds; empty: not compared

        const Points square { { 300, 300 }, { 320, 280 }, { 380, 240 } }, click { { 300, 300 } };
        const QRectF dragged(300, 240, 80, 60);
        const auto row = [](const char *name, PDFToolMode tool, const Points &points,
                             const char *made, QRectF bounds = {}) {
            QTest::newRow(name) << int(tool) << points << QString(made) << bounds;
        };
        row("square by drag", PDFToolModeAnnSquare, square, "Square", dragged);
        row("circle by drag", PDFToolModeAnnCircle, square, "Circle", dragged);
        row("line by drag", PDFToolModeAnnLine, square, "Line");
        row("square, a click", PDFToolModeAnnSquare, click, "");
        row("tiny square stays 8", PDFToolModeAnnSquare, { { 300, 300 }, { 302, 301 } }, "Square",
            { 300, 300, 8, 8 });
        row("square to the page edge", PDFToolModeAnnSquare, { { 580, 300 }, { 700, 320 } },
            "Square", { 580, 300, 32, 20 });
        row("note, a click", PDFToolModeAnnText, click, "Text");
        row("text box, a click", PDFToolModeAnnFreeText, click, "FreeText");
        row("text box by drag", PDFToolModeAnnFreeText, square, "FreeText", dragged);
        row("ink stroke", PDFToolModeAnnInk,
            { { 300, 300 }, { 310, 310 }, { 330, 300 }, { 350, 330 }, { 370, 300 } }, "Ink");
        row("ink, a click", PDFToolModeAnnInk, click, "");
        row("ink, too short", PDFToolModeAnnInk, { { 300, 300 }, { 310, 310 } }, "");
    }
    void eachToolMakesItsKind()
    {
        QFETCH(int, tool);
        QFETCH(Points, points);
        QFETCH(QString, made);
        QFETCH(QRectF, bounds);
        m_tab->setToolMode(PDFToolMode(tool));
        drag(points);
        const auto list = annotations();
        QCOMPARE(int(list.size()), made.isEmpty() ? 0 : 1);
        // Nothing is left half done: no cursor, no open undo group, no stroke.
        QCOMPARE(m_view->cursorStackDepth(), 0);
        QCOMPARE(m_undo->groupingLevel(), 0);
        QVERIFY(!m_view->pendingInkPath());
        if (made.isEmpty()) {
            QVERIFY(!m_view->selectedAnn());
            QVERIFY(!m_undo->canUndo());
            return;
        }
        QCOMPARE(list.front()->type(), made);
        if (!bounds.isEmpty())
            QCOMPARE(list.front()->bounds(), bounds);
        const QRectF made0 = list.front()->bounds();
        QVERIFY(made0.width() >= 8 && made0.height() >= 8);
        const auto saved = savedAnnotations();
        QCOMPARE(int(saved.size()), 1);
        QCOMPARE(saved.front()->type(), made);
        // The file's rect holds the stroke too: the same place within a few points.
        const QPointF offCentre = saved.front()->bounds().center() - made0.center();
        QVERIFY2(offCentre.manhattanLength() < 8,
            qPrintable(Geometry::stringFromRect(saved.front()->bounds())));
        // One step takes it away, and brings it back (property edits have no redo by design).
        QCoreApplication::processEvents();
        m_undo->undo();
        QVERIFY(annotations().empty());
        QVERIFY(!m_undo->canUndo());
        m_undo->redo();
        QCOMPARE(int(annotations().size()), 1);
    }

    void markupToolsMarkUpTheDraggedText_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("made");
        QTest::newRow("highlight") << int(PDFToolModeAnnHighlight) << "Highlight";
        QTest::newRow("underline") << int(PDFToolModeAnnUnderline) << "Underline";
        QTest::newRow("strike out") << int(PDFToolModeAnnStrikeOut) << "StrikeOut";
    }
    void markupToolsMarkUpTheDraggedText()
    {
        QFETCH(int, tool);
        QFETCH(QString, made);
        m_tab->setToolMode(PDFToolMode(tool));
        drag({ { 74, 722 }, { 150, 722 }, { 250, 722 } });
        QCOMPARE(int(annotations().size()), 1);
        QCOMPARE(annotations().front()->type(), made);
        // The selection is used up, nothing is selected and the tool stays.
        QVERIFY(!m_view->currentSelection());
        QVERIFY(!m_view->selectedAnn());
        QCOMPARE(int(m_tab->toolMode()), tool);
        // A click on the markup selects it.
        drag({ { 120, 724 } });
        QCOMPARE(m_view->selectedAnn(), annotations().front());
    }

    void resizeStaysWithinItsLimits_data()
    {
        QTest::addColumn<QPointF>("handle");
        QTest::addColumn<QPointF>("to");
        QTest::addColumn<QRectF>("bounds");
        // The square is (100, 100, 100, 100); the page 612 by 792.
        const auto row = [](const char *name, QPointF handle, QPointF to, QRectF bounds) {
            QTest::newRow(name) << handle << to << bounds;
        };
        row("right wider", { 200, 150 }, { 250, 150 }, { 100, 100, 150, 100 });
        row("left past the right edge stops at 8", { 100, 150 }, { 400, 150 },
            { 192, 100, 8, 100 });
        row("top beyond the page is clamped", { 150, 200 }, { 150, 900 }, { 100, 100, 100, 692 });
        row("bottom-left corner", { 100, 100 }, { 60.4, 79.6 }, { 60, 79, 140, 121 });
        row("top-right to a point", { 200, 200 }, { 0, 0 }, { 100, 100, 8, 8 });
        row("inside moves", { 150, 150 }, { 170, 140 }, { 120, 90, 100, 100 });
        row("moved past the left edge stops at it", { 150, 150 }, { -200, 170 },
            { 0, 120, 100, 100 });
    }
    void resizeStaysWithinItsLimits()
    {
        QFETCH(QPointF, handle);
        QFETCH(QPointF, to);
        QFETCH(QRectF, bounds);
        const auto square = addSquare(QRectF(100, 100, 100, 100));
        QCOMPARE(m_view->selectedAnn(), square);
        drag({ handle, (handle + to) / 2, to });
        QCOMPARE(square->bounds(), bounds);
        QCOMPARE(m_undo->groupingLevel(), 0);
        // The first edit in the view's life is one undo step back to the press.
        QCoreApplication::processEvents();
        m_undo->undo();
        QCOMPARE(square->bounds(), QRectF(100, 100, 100, 100));
    }

    void lineEndsKeepAHoldableBox()
    {
        m_tab->setToolMode(PDFToolModeAnnLine);
        drag({ { 100, 100 }, { 150, 150 }, { 200, 200 } });
        const auto line = std::dynamic_pointer_cast<PDFAnnotationLine>(m_view->selectedAnn());
        QVERIFY(line);
        // Drag one end onto a point just beside the other: the box stays 8 by 8, centred.
        const QPointF end = line->bounds().topLeft() + line->endPoint();
        const QPointF start = line->bounds().topLeft() + line->startPoint();
        const QPointF other = end == QPointF(200, 200) ? start : end;
        const QPointF held = other == start ? end : start;
        drag({ held, other + QPointF(2, 1) });
        QCOMPARE(line->bounds().size(), QSizeF(8, 8));
        const QRectF box = line->bounds().adjusted(-0.01, -0.01, 0.01, 0.01);
        QVERIFY(box.contains(line->bounds().topLeft() + line->startPoint()));
        QVERIFY(box.contains(line->bounds().topLeft() + line->endPoint()));
    }

    void moveAcrossPagesIsOneStep()
    {
        const auto square = addSquare(QRectF(300, 60, 60, 40));
        drag({ { 320, 80 }, { 320, 40 }, { 320, 700 } }, 0, {}, { 0, 0, 1 });
        QCOMPARE(square->page(), m_view->document()->pageAtIndex(1));
        QCOMPARE(m_view->selectedAnn(), square);
        QCoreApplication::processEvents();
        m_undo->undo();
        QCOMPARE(square->page(), m_view->document()->pageAtIndex(0));
        QCOMPARE(square->bounds(), QRectF(300, 60, 60, 40));
        QVERIFY(!m_undo->canUndo());
    }

    void theOldestIsPickedTheNewestErased()
    {
        const auto first = addSquare(QRectF(100, 100, 100, 100));
        const auto second = addSquare(QRectF(120, 120, 100, 100));
        const auto third = addSquare(QRectF(140, 140, 100, 100));
        m_view->setSelectedAnn(nullptr);
        drag({ { 160, 160 } });
        QCOMPARE(m_view->selectedAnn(), first);
        m_tab->setToolMode(PDFToolModeEraser);
        m_undo->removeAllActions();
        // The press erases nothing; each move takes the newest under the pointer.
        mouse(QEvent::MouseButtonPress, at({ 160, 160 }), Qt::LeftButton);
        QCOMPARE(int(annotations().size()), 3);
        mouse(QEvent::MouseMove, at({ 161, 160 }), Qt::LeftButton);
        QCoreApplication::processEvents();
        QCOMPARE(annotations(), (std::vector { first, second }));
        mouse(QEvent::MouseMove, at({ 162, 160 }), Qt::LeftButton);
        QCoreApplication::processEvents();
        QCOMPARE(annotations(), (std::vector { first }));
        mouse(QEvent::MouseButtonRelease, at({ 162, 160 }), Qt::NoButton);
        QCOMPARE(m_undo->undoActionName(), XPDFView::DeleteAnnotationActionName);
        // Each removal is its own step.
        m_undo->undo();
        QCOMPARE(annotations(), (std::vector { first, second }));
        m_undo->undo();
        QCOMPARE(int(annotations().size()), 3);
    }

    void areaSelection_data()
    {
        QTest::addColumn<Points>("points");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QRectF>("rect"); // empty: no selection left
        const auto row = [](const char *name, const Points &points, int modifiers, QRectF rect) {
            QTest::newRow(name) << points << modifiers << rect;
        };
        const int shift = Qt::ShiftModifier;
        row("drag", { { 100, 100 }, { 150, 150 }, { 200, 160 } }, 0, { 100, 100, 100, 60 });
        row("drag up and left flips", { { 200, 200 }, { 150, 150 }, { 100, 120 } }, 0,
            { 100, 120, 100, 80 });
        row("shift makes a square", { { 100, 100 }, { 200, 140 } }, shift, { 100, 100, 100, 100 });
        row("shift square stays in the page", { { 560, 700 }, { 700, 900 } }, shift,
            { 560, 700, 52, 52 });
        row("a click clears", { { 100, 100 } }, 0, {});
    }
    void areaSelection()
    {
        QFETCH(Points, points);
        QFETCH(int, modifiers);
        QFETCH(QRectF, rect);
        m_tab->setToolMode(PDFToolModeAreaSelection);
        // A selection already there: a click outside it starts anew.
        drag({ { 300, 400 }, { 350, 450 } });
        QVERIFY(!m_view->currentSelectionRect().isEmpty());
        drag(points, 0, Qt::KeyboardModifiers(modifiers));
        QCOMPARE(m_view->currentSelectionRect(), rect);
        QCOMPARE(m_view->currentSelectionPage(),
            rect.isEmpty() ? nullptr : m_view->document()->pageAtIndex(0));
        QCOMPARE(m_view->cursorStackDepth(), 0);
    }

    void gestureEndsWhenNoReleaseComes_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QPointF>("press");
        QTest::newRow("moving") << int(PDFToolModeTextSelection) << QPointF(150, 150);
        QTest::newRow("resizing") << int(PDFToolModeTextSelection) << QPointF(200, 150);
        QTest::newRow("creating") << int(PDFToolModeAnnCircle) << QPointF(400, 300);
        QTest::newRow("drawing") << int(PDFToolModeAnnInk) << QPointF(400, 300);
        QTest::newRow("selecting an area") << int(PDFToolModeAreaSelection) << QPointF(400, 300);
        QTest::newRow("panning") << int(PDFToolModeHand) << QPointF(400, 300);
    }
    void gestureEndsWhenNoReleaseComes()
    {
        QFETCH(int, tool);
        QFETCH(QPointF, press);
        const auto square = addSquare(QRectF(100, 100, 100, 100));
        m_tab->setToolMode(PDFToolMode(tool));
        if (tool != PDFToolModeTextSelection)
            m_view->setSelectedAnn(nullptr);
        mouse(QEvent::MouseButtonPress, at(press), Qt::LeftButton);
        for (int step = 1; step <= 5; ++step)
            mouse(QEvent::MouseMove, at(press + QPointF(10 * step, -8 * step)), Qt::LeftButton);
        QVERIFY(m_view->isTrackingGesture());
        // A dialog takes the keyboard: the release will go to it.
        QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QApplication::sendEvent(m_view, &out);
        QVERIFY(!m_view->isTrackingGesture());
        QCOMPARE(m_view->cursorStackDepth(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(m_undo->groupingLevel(), 0);
        QVERIFY(!m_view->pendingInkPath());
        // What the gesture reached stays, as one undo step; timers find nothing to do.
        QTest::qWait(250);
        if (tool == PDFToolModeTextSelection) {
            QVERIFY(square->bounds() != QRectF(100, 100, 100, 100));
            QCoreApplication::processEvents();
            m_undo->undo();
            QCOMPARE(square->bounds(), QRectF(100, 100, 100, 100));
        }
        if (tool == PDFToolModeAnnCircle || tool == PDFToolModeAnnInk)
            QCOMPARE(int(annotations().size()), 2);
        // The next gesture works as ever.
        m_tab->setToolMode(PDFToolModeTextSelection);
        m_view->setSelectedAnn(nullptr);
        drag({ { 110, 110 } });
        QCOMPARE(m_view->selectedAnn(), square);
    }

    void ribbonTogglesTheBookmark()
    {
        const auto document = m_view->fdDocument();
        // A click on the ribbon adds a bookmark titled by the start of the text; again removes it.
        const QPointF ribbon(612 - 10 - 10, 792 - 5);
        drag({ ribbon });
        QCOMPARE(document->bookmarks().size(), 1);
        QCOMPARE(document->bookmarks().front()->title(),
            document->pageAtIndex(0)->string().left(30).trimmed());
        drag({ ribbon });
        QVERIFY(document->bookmarks().isEmpty());
        // A page without text gets none, and nothing else happens there.
        m_view->goToPage(document->pageAtIndex(2));
        drag({ ribbon }, 2);
        QVERIFY(document->bookmarks().isEmpty());
    }

    void resizeCursorsTurnWithThePage_data()
    {
        QTest::addColumn<int>("rotation");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("shape");
        QTest::newRow("right, upright") << 0 << QPointF(200, 150) << int(Qt::SizeHorCursor);
        QTest::newRow("top, upright") << 0 << QPointF(150, 200) << int(Qt::SizeVerCursor);
        QTest::newRow("top-right, upright") << 0 << QPointF(200, 200) << int(Qt::SizeBDiagCursor);
        QTest::newRow("right, turned") << 90 << QPointF(200, 150) << int(Qt::SizeVerCursor);
        QTest::newRow("top-right, turned") << 90 << QPointF(200, 200) << int(Qt::SizeFDiagCursor);
        QTest::newRow("inside") << 90 << QPointF(150, 150) << int(Qt::OpenHandCursor);
    }
    void resizeCursorsTurnWithThePage()
    {
        QFETCH(int, rotation);
        QFETCH(QPointF, point);
        QFETCH(int, shape);
        m_view->document()->pageAtIndex(0)->setRotation(rotation);
        m_view->layoutDocumentView();
        addSquare(QRectF(100, 100, 100, 100));
        mouse(QEvent::MouseMove, at(point), Qt::NoButton);
        QCOMPARE(int(m_view->viewport()->cursor().shape()), shape);
    }

    void keysNudgeOnTheScreensAxes_data()
    {
        QTest::addColumn<int>("rotation");
        QTest::addColumn<int>("key");
        QTest::addColumn<QRectF>("bounds");
        QTest::newRow("up, upright") << 0 << int(Qt::Key_Up) << QRectF(100, 110, 100, 100);
        QTest::newRow("left to the edge") << 0 << int(Qt::Key_Left) << QRectF(0, 100, 100, 100);
        QTest::newRow("up, turned") << 90 << int(Qt::Key_Up) << QRectF(90, 100, 100, 100);
        QTest::newRow("right, turned") << 90 << int(Qt::Key_Right) << QRectF(100, 110, 100, 100);
        // The first step is taken, the second would cross the edge and is not.
        QTest::newRow("past the edge, turned")
            << 270 << int(Qt::Key_Down) << QRectF(90, 100, 100, 100);
    }
    void keysNudgeOnTheScreensAxes()
    {
        QFETCH(int, rotation);
        QFETCH(int, key);
        QFETCH(QRectF, bounds);
        m_view->document()->pageAtIndex(0)->setRotation(rotation);
        const auto square = addSquare(QRectF(100, 100, 100, 100));
        m_view->moveSelectedAnnotationForKey(key, key == Qt::Key_Left ? 150 : 10);
        if (key == Qt::Key_Down && rotation == 270)
            m_view->moveSelectedAnnotationForKey(key, 150);
        QCOMPARE(square->bounds(), bounds);
        QTest::keyClick(m_view, Qt::Key_Escape);
        QVERIFY(!m_view->selectedAnn());
    }

    void strokeEndedOnTheNextPageJoinsIt()
    {
        m_tab->setToolMode(PDFToolModeAnnInk);
        drag({ { 300, 60 }, { 310, 30 }, { 320, 10 }, { 330, 780 }, { 340, 760 } }, 0, {},
            { 0, 0, 0, 1, 1 });
        QVERIFY(annotations(0).empty());
        QCOMPARE(int(annotations(1).size()), 1);
        QCOMPARE(annotations(1).front()->type(), QStringLiteral("Ink"));
    }

    void bareTextToolPressPansNearTextSelects()
    {
        // Far from text, a drag pans the view and selects nothing.
        m_view->setScaleFactor(1.5);
        const int before = m_view->verticalScrollBar()->value();
        const QPointF press = at({ 300, 300 });
        mouse(QEvent::MouseButtonPress, press, Qt::LeftButton);
        mouse(QEvent::MouseMove, press - QPointF(0, 50), Qt::LeftButton);
        mouse(QEvent::MouseMove, press - QPointF(0, 100), Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, press - QPointF(0, 100), Qt::NoButton);
        QCOMPARE(m_view->verticalScrollBar()->value(), before + 100);
        QVERIFY(!m_view->currentSelection());
        QCOMPARE(m_view->cursorStackDepth(), 0);
        // Near text, the same drag selects it.
        m_view->goToPage(m_view->document()->pageAtIndex(0));
        drag({ { 74, 722 }, { 200, 722 } });
        QVERIFY(m_view->currentSelection());
        QVERIFY(!m_view->currentSelection()->string().isEmpty());
    }

    void notesOnCroppedPagesAreHitWhereShown()
    {
        delete m_window.data();
        PdfFixtures::Document document = PdfFixtures::textPages(1, 3, 0);
        document.pages[0].cropBox = QRectF(10, 20, 590, 760);
        open(document);
        m_tab->setToolMode(PDFToolModeAnnText);
        drag({ { 300, 300 } });
        const auto note = m_view->selectedAnn();
        QVERIFY(note);
        // Stored against the media box: moved by the crop box's origin from where it was clicked.
        QCOMPARE(note->bounds().topLeft(), QPointF(310, 320));
        // A new note opens its popover; one left without text would go when it closes.
        QTRY_VERIFY(qobject_cast<FDAnnTextEditor *>(m_view->annEditor()));
        QTest::keyClicks(
            qobject_cast<FDAnnTextEditor *>(m_view->annEditor())->popover()->textView(), "Kept");
        m_view->setSelectedAnn(nullptr);
        QVERIFY(note->page());
        m_tab->setToolMode(PDFToolModeTextSelection);
        // Shown, and hit, moved back by that origin.
        drag({ { 325, 345 } });
        QCOMPARE(m_view->selectedAnn(), note);
    }

    void linksFollowUnlessTheToolTakesThePress_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<bool>("follows");
        QTest::newRow("text") << int(PDFToolModeTextSelection) << true;
        QTest::newRow("hand") << int(PDFToolModeHand) << true;
        QTest::newRow("highlight") << int(PDFToolModeAnnHighlight) << true;
        QTest::newRow("square") << int(PDFToolModeAnnSquare) << true;
        QTest::newRow("area") << int(PDFToolModeAreaSelection) << false;
        QTest::newRow("eraser") << int(PDFToolModeEraser) << false;
    }
    void linksFollowUnlessTheToolTakesThePress()
    {
        QFETCH(int, tool);
        QFETCH(bool, follows);
        delete m_window.data();
        PdfFixtures::Document document = PdfFixtures::textPages(3, 3, 0);
        document.pages[0].links.append({ QRectF(300, 300, 100, 40), {}, 2, QPointF(0, 792) });
        open(document);
        m_tab->setToolMode(PDFToolMode(tool));
        drag({ { 350, 320 } });
        QCOMPARE(m_view->currentPage() == m_view->document()->pageAtIndex(2), follows);
        // Nothing is made or taken: the link is all there is.
        QCOMPARE(int(annotations().size()), 1);
        QVERIFY(isLink(*annotations().front()));
    }

    void dragBeyondTheViewAutoscrolls()
    {
        m_view->setScaleFactor(1.0);
        const auto square = addSquare(QRectF(300, 500, 60, 40));
        const int before = m_view->verticalScrollBar()->value();
        const QPointF press = at({ 330, 520 });
        mouse(QEvent::MouseButtonPress, press, Qt::LeftButton);
        const QPointF below(press.x(), m_view->viewport()->height() + 30);
        mouse(QEvent::MouseMove, below, Qt::LeftButton);
        // The pointer rests below the view: the view keeps scrolling and the square goes along.
        QTRY_VERIFY(m_view->verticalScrollBar()->value() > before + 60);
        mouse(QEvent::MouseButtonRelease, below, Qt::NoButton);
        QVERIFY(square->bounds().y() < 400);
        const int after = m_view->verticalScrollBar()->value();
        QTest::qWait(250);
        QCOMPARE(m_view->verticalScrollBar()->value(), after);
    }

    void returnAndDoubleClickOpenTheEditor()
    {
        EditorHookView view;
        UndoManager undo;
        view.setUndoManager(&undo);
        view.resize(700, 600);
        view.loadDocument(QUrl::fromLocalFile(m_path));
        view.show();
        QTRY_VERIFY(view.document() && !view.isLoading());
        view.setScaleMode(PDFViewScaleMode::none);
        view.setScaleFactor(0.5);
        view.setFocus();
        const auto page = view.document()->pageAtIndex(0);
        const auto note
            = view.addAnnotationWithType(QStringLiteral("Text"), page, { 300, 300, 24, 24 });
        QTRY_COMPARE(view.edits, 1); // a new note opens its editor
        QTest::keyClick(&view, Qt::Key_Return);
        QCOMPARE(view.edits, 2);
        QTest::keyClick(&view, Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(view.edits, 2);
        // A double click on the note opens it and neither moves nor makes anything.
        QWidget *viewport = view.viewport();
        const QPointF point = view.convertPointFromPage({ 310, 310 }, page);
        for (const QEvent::Type type : { QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                 QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease }) {
            const Qt::MouseButtons buttons
                = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
            QMouseEvent event(
                type, point, viewport->mapToGlobal(point), Qt::LeftButton, buttons, {});
            QApplication::sendEvent(viewport, &event);
        }
        QCOMPARE(view.edits, 3);
        QCOMPARE(view.selectedAnn(), note);
        QCOMPARE(note->bounds(), QRectF(300, 300, 24, 24));
        QCOMPARE(int(page->annotations().size()), 1);
        view.fdDocument()->setNumberOfChanges(0);
    }

private:
    void open(const PdfFixtures::Document &document)
    {
        static int files = 0;
        m_path = m_dir.filePath(QStringLiteral("gestures%1.pdf").arg(++files));
        QVERIFY(PdfFixtures::write(document, m_path));
        m_window = AppWindow::makeWindow({ 900, 800 });
        m_tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(m_path));
        QVERIFY(m_tab);
        m_view = m_tab->primaryPDFView();
        m_undo = m_tab->undoManager();
        QVERIFY(m_undo);
        // Half size: a whole page and the top of the next one are in view.
        m_view->setScaleMode(PDFViewScaleMode::none);
        m_view->setScaleFactor(0.5);
        m_view->goToPage(m_view->document()->pageAtIndex(0));
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        m_view->setFocus();
    }

    QPointF at(QPointF pagePoint, int page = 0) const
    {
        return m_view->convertPointFromPage(pagePoint, m_view->document()->pageAtIndex(page));
    }

    void mouse(QEvent::Type type, QPointF viewPoint, Qt::MouseButtons buttons,
        Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *viewport = m_view->viewport();
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(
            type, viewPoint, viewport->mapToGlobal(viewPoint), button, buttons, modifiers);
        QApplication::sendEvent(viewport, &event);
    }
    // Press at the first point, move through the others, release at the last (page points).
    void drag(const Points &points, int page = 0, Qt::KeyboardModifiers modifiers = {},
        QList<int> pages = {})
    {
        const auto pageOf = [&](int index) { return index < pages.size() ? pages[index] : page; };
        mouse(QEvent::MouseButtonPress, at(points.first(), pageOf(0)), Qt::LeftButton, modifiers);
        for (int index = 1; index < points.size(); ++index)
            mouse(QEvent::MouseMove, at(points[index], pageOf(index)), Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, at(points.last(), pageOf(int(points.size()) - 1)),
            Qt::NoButton, modifiers);
        QCoreApplication::processEvents();
    }

    std::shared_ptr<PDFAnnotation> addSquare(QRectF bounds, int page = 0)
    {
        const auto annotation = m_view->addAnnotationWithType(
            QStringLiteral("Square"), m_view->document()->pageAtIndex(page), bounds);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        m_undo->removeAllActions();
        return annotation;
    }

    std::vector<std::shared_ptr<PDFAnnotation>> annotations(int page = 0) const
    {
        return m_view->document()->pageAtIndex(page)->annotations();
    }

    std::vector<std::shared_ptr<PDFAnnotation>> savedAnnotations()
    {
        m_view->fdDocument()->save();
        AppWindow::waitForSaves();
        auto saved = std::make_shared<PDFDocument>();
        if (!saved->initWithURL(QUrl::fromLocalFile(m_path)))
            return {};
        return saved->pageAtIndex(0)->annotations();
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    PDFContents *m_tab = nullptr;
    FDPDFView *m_view = nullptr;
    UndoManager *m_undo = nullptr;
    QString m_path;
};

FOLIDOC_APP_TEST_MAIN(PointerGestureTest)

#include "PointerGestureTest.moc"
