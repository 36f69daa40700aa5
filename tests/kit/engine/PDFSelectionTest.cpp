// Text selections in page space and the asynchronous find with its notifications.

#include "support/FindRecorder.h"

#include <support/PdfFixtures.h>

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QtTest>

class PDFSelectionTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::build(PdfFixtures::standard())));
    }

    void textLinesSitWhereThePageSpaceSays_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << 0 << "The quick brown fox jumps over the lazy dog";
        QTest::newRow("crop box at (10, 20)") << 1 << "Cropped page text";
        QTest::newRow("rotated 90") << 2 << "Rotated ninety degrees";
        QTest::newRow("rotated 180") << 3 << "Rotated half turn";
        QTest::newRow("rotated 270") << 4 << "Rotated three quarters";
    }
    void textLinesSitWhereThePageSpaceSays()
    {
        QFETCH(int, page);
        QFETCH(QString, text);
        // Every fixture line starts at (72, 720) in page space, 12 points Helvetica.
        const auto p = doc->pageAtIndex(page);
        const auto selection = p->selectionForRect(QRectF(60, 712, 540, 20));
        QVERIFY(selection);
        QCOMPARE(selection->string(), text);
        const QRectF bounds = selection->boundsForPage(p);
        QVERIFY2(qAbs(bounds.left() - 72) < 1.5, qPrintable(QString::number(bounds.left())));
        QVERIFY(bounds.top() < 720 && bounds.top() > 714); // descenders below the baseline
        QVERIFY(bounds.bottom() > 726 && bounds.bottom() < 734);
        const int index = p->characterIndexAtPoint(QPointF(bounds.left() + 2, 724));
        QCOMPARE(index, 0);
        QCOMPARE(p->characterBoundsAtIndex(index).left(), bounds.left());
    }

    void selectionsSplitByLineAndExtendByCharacters()
    {
        const auto page = doc->pageAtIndex(0);
        const QString text = page->string();
        QCOMPARE(text,
            QString("The quick brown fox jumps over the lazy dog\nAlpha beta gamma delta\n"
                    "Folio one marker"));
        const auto twoLines = page->selectionForRect(QRectF(60, 700, 540, 34));
        QVERIFY(twoLines);
        QCOMPARE(twoLines->string(), text.section('\n', 0, 1));
        const auto lines = twoLines->selectionsByLine();
        QCOMPARE(lines.size(), size_t(2));
        QCOMPARE(lines[1]->string(), QString("Alpha beta gamma delta"));
        QVERIFY(lines[0]->boundsForPage(page).bottom() > lines[1]->boundsForPage(page).bottom());
        QCOMPARE(twoLines->lineRectsForPage(page),
            std::vector<QRectF>({ lines[0]->boundsForPage(page), lines[1]->boundsForPage(page) }));
        QVERIFY(twoLines->lineRectsForPage(doc->pageAtIndex(1)).empty());
        QVERIFY(!page->selectionForRect(QRectF(0, 0, 10, 10))); // no text there

        const int fox = text.indexOf("fox");
        auto hit = page->selectionForRange({ fox, 3 });
        const auto context = hit->copy();
        context->extendSelectionAtStart(6);
        context->extendSelectionAtEnd(30);
        QCOMPARE(hit->string(), QString("fox"));
        QCOMPARE(context->string(), text.mid(fox - 6, 3 + 6 + 30));
        context->extendSelectionAtStart(500);
        context->extendSelectionAtEnd(500);
        QCOMPARE(context->string(), text);
        QCOMPARE(context->numberOfTextRangesOnPage(page), 1);
        QCOMPARE(context->rangeAtIndex(0, page), PDFTextRange({ 0, int(text.size()) }));
    }

    void selectionsCombineAcrossPages()
    {
        const auto first = doc->pageAtIndex(0);
        const auto second = doc->pageAtIndex(1);
        auto selection = std::make_shared<PDFSelection>(doc);
        QVERIFY(selection->isEmpty());
        QVERIFY(selection->string().isNull());
        selection->addSelection(second->selectionForRange({ 0, 7 }));
        selection->addSelection(first->selectionForRange({ 4, 5 }));
        selection->addSelection(first->selectionForRange({ 20, 5 }));
        selection->addSelection(first->selectionForRange({ 8, 3 })); // touches "quick"
        QCOMPARE(selection->pages(), std::vector<std::shared_ptr<PDFPage>>({ first, second }));
        QCOMPARE(selection->numberOfTextRangesOnPage(first), 2);
        QCOMPARE(selection->rangeAtIndex(0, first), PDFTextRange({ 4, 7 }));
        QCOMPARE(selection->string(), QString("quick b\njumps\nCropped"));

        const auto drag
            = doc->selectionFromPage(second, QPointF(100, 704), first, QPointF(100, 688));
        QVERIFY(drag);
        QCOMPARE(drag->pages().size(), size_t(2));
        QVERIFY(drag->string().contains("marker\nCropped page text\nSec"));
        QVERIFY(!drag->string().contains("Alpha"));
        QVERIFY(!drag->string().contains("here"));
    }

    void dragsSnapToWordsAndLines_data()
    {
        QTest::addColumn<int>("granularity");
        QTest::addColumn<QString>("text");
        QTest::newRow("characters") << int(PDFSelectionGranularity::Character) << "uick brown fo";
        QTest::newRow("words") << int(PDFSelectionGranularity::Word) << "quick brown fox";
        QTest::newRow("lines") << int(PDFSelectionGranularity::Line)
                               << "The quick brown fox jumps over the lazy dog";
    }
    void dragsSnapToWordsAndLines()
    {
        QFETCH(int, granularity);
        QFETCH(QString, text);
        const auto page = doc->pageAtIndex(0);
        const int u = page->string().indexOf("uick");
        const int o = page->string().indexOf("fox") + 1;
        // Dragged backwards: the order of the points does not matter.
        const auto selection
            = page->selectionFromPointToPoint(page->characterBoundsAtIndex(o).center(),
                page->characterBoundsAtIndex(u).center(), PDFSelectionGranularity(granularity));
        QVERIFY(selection);
        QCOMPARE(selection->string(), text);
        if (granularity == int(PDFSelectionGranularity::Word)) {
            const auto across
                = doc->selectionFromPage(page, page->characterBoundsAtIndex(o).center(),
                    doc->pageAtIndex(1), QPointF(80, 724), PDFSelectionGranularity::Word);
            QVERIFY(across->string().startsWith("fox jumps"));
            QVERIFY(across->string().endsWith("marker\nCropped"));
        }
    }

    void findPostsHitsInPageOrderThenEnds_data()
    {
        QTest::addColumn<QString>("needle");
        QTest::addColumn<int>("options");
        QTest::addColumn<QStringList>("hits");
        QTest::newRow("case-insensitive") << "rotated" << int(PDFDocument::CaseInsensitiveSearch)
                                          << QStringList({ "2:Rotated", "3:Rotated", "4:Rotated" });
        QTest::newRow("case-sensitive miss") << "rotated" << 0 << QStringList();
        QTest::newRow("case-sensitive hit")
            << "Rotated half" << 0 << QStringList({ "3:Rotated half" });
        QTest::newRow("several per line") << "O" << int(PDFDocument::CaseInsensitiveSearch)
                                          << QStringList({ "0:o", "0:o", "0:o", "0:o", "0:o", "0:o",
                                                 "0:o", "1:o", "1:o", "2:o", "3:o", "4:o" });
        QTest::newRow("nothing") << "zebra" << int(PDFDocument::CaseInsensitiveSearch)
                                 << QStringList();
        QTest::newRow("across a line break") << "dog Alpha" << 0 << QStringList({ "0:dog\nAlpha" });
        QTest::newRow("across a line break, any case")
            << "DOG alpha beta" << int(PDFDocument::CaseInsensitiveSearch)
            << QStringList({ "0:dog\nAlpha beta" });
    }
    void findPostsHitsInPageOrderThenEnds()
    {
        QFETCH(QString, needle);
        QFETCH(int, options);
        QFETCH(QStringList, hits);
        FindRecorder recorder(doc);
        doc->beginFindString(needle, options);
        QVERIFY(doc->isFinding());
        QTRY_COMPARE_WITH_TIMEOUT(recorder.ends, 1, 60000);
        QVERIFY(!doc->isFinding());
        QCOMPARE(recorder.summary(), hits);
        // A hit across a line break covers both lines, so the view can show and select all of it.
        for (const auto &hit : recorder.hits)
            QCOMPARE(hit->selectionsByLine().size(), size_t(hit->string().count(u'\n') + 1));
    }

    void cancelStopsAtOnce()
    {
        auto big = std::make_shared<PDFDocument>();
        QVERIFY(big->initWithData(PdfFixtures::build(PdfFixtures::textPages(150, 40, 1))));
        FindRecorder recorder(big);
        int hitsAtCancel = -1;
        recorder.onHit = [&](const std::shared_ptr<PDFSelection> &) {
            if (hitsAtCancel < 0) {
                big->cancelFindString();
                hitsAtCancel = int(recorder.hits.size());
                QVERIFY(!big->isFinding());
            }
        };
        big->beginFindString("needle", PDFDocument::CaseInsensitiveSearch);
        QTRY_VERIFY_WITH_TIMEOUT(hitsAtCancel > 0, 60000);
        // A second search runs to its end; nothing of the first arrives after its cancel.
        recorder.onHit = nullptr;
        big->beginFindString("Page 150 line 40", 0);
        QTRY_COMPARE_WITH_TIMEOUT(recorder.ends, 1, 60000);
        QCOMPARE(recorder.strings().mid(hitsAtCancel), QStringList({ "Page 150 line 40" }));
    }

private:
    std::shared_ptr<PDFDocument> doc;
};

QTEST_MAIN(PDFSelectionTest)
#include "PDFSelectionTest.moc"
