// Page positions of the four display modes, with and without page breaks, as a book, and the
// page found at or nearest to a point.

#include <kit/pdfview/PDFLayout.h>

#include <QTest>

namespace {

// Portrait, portrait, landscape, portrait, square.
PDFLayout makeLayout(int mode, bool breaks, bool asBook, int anchor = 0)
{
    PDFLayout layout;
    layout.setPageSizes({ { 612, 792 }, { 612, 792 }, { 792, 612 }, { 612, 792 }, { 500, 500 } });
    layout.setDisplayMode(mode);
    layout.setDisplaysPageBreaks(breaks);
    layout.setDisplaysAsBook(asBook);
    layout.setAnchorPage(anchor);
    layout.update();
    return layout;
}

} // namespace

class PDFLayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void pagePositions_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("breaks");
        QTest::addColumn<bool>("asBook");
        QTest::addColumn<int>("anchor");
        QTest::addColumn<int>("page");
        QTest::addColumn<QRectF>("rect"); // empty: not laid out
        QTest::addColumn<QSizeF>("documentSize");

        // One column as wide as the widest page plus margins; 8 points between pages.
        QTest::newRow("continuous, first")
            << 1 << true << false << 0 << 0 << QRectF(94, 4, 612, 792) << QSizeF(800, 3528);
        QTest::newRow("continuous, landscape centred")
            << 1 << true << false << 0 << 2 << QRectF(4, 1604, 792, 612) << QSizeF(800, 3528);
        QTest::newRow("continuous without breaks")
            << 1 << false << false << 0 << 1 << QRectF(90, 792, 612, 792) << QSizeF(792, 3488);
        // Two-up: left pages meet right pages at a spine; rows as high as their tallest page.
        QTest::newRow("two-up continuous, left")
            << 3 << true << false << 0 << 0 << QRectF(184, 4, 612, 792) << QSizeF(1420, 2108);
        QTest::newRow("two-up continuous, right")
            << 3 << true << false << 0 << 3 << QRectF(804, 804, 612, 792) << QSizeF(1420, 2108);
        QTest::newRow("two-up continuous, landscape in a row")
            << 3 << true << false << 0 << 2 << QRectF(4, 894, 792, 612) << QSizeF(1420, 2108);
        QTest::newRow("two-up continuous, odd last page")
            << 3 << true << false << 0 << 4 << QRectF(296, 1604, 500, 500) << QSizeF(1420, 2108);
        // As a book the first page stands alone on the right.
        QTest::newRow("book, first alone on the right")
            << 3 << true << true << 0 << 0 << QRectF(624, 4, 612, 792) << QSizeF(1420, 2400);
        QTest::newRow("book, second on the left")
            << 3 << true << true << 0 << 1 << QRectF(4, 804, 612, 792) << QSizeF(1420, 2400);
        // Non-continuous modes show only the anchor's row.
        QTest::newRow("single page shows the anchor")
            << 0 << true << false << 2 << 2 << QRectF(4, 4, 792, 612) << QSizeF(800, 620);
        QTest::newRow("single page hides the others")
            << 0 << true << false << 2 << 0 << QRectF() << QSizeF(800, 620);
        QTest::newRow("two-up shows the anchor's row")
            << 2 << true << false << 3 << 3 << QRectF(804, 4, 612, 792) << QSizeF(1420, 800);
        QTest::newRow("two-up, landscape partner centred")
            << 2 << true << false << 3 << 2 << QRectF(4, 94, 792, 612) << QSizeF(1420, 800);
    }
    void pagePositions()
    {
        QFETCH(int, mode);
        QFETCH(bool, breaks);
        QFETCH(bool, asBook);
        QFETCH(int, anchor);
        QFETCH(int, page);
        QFETCH(QRectF, rect);
        QFETCH(QSizeF, documentSize);
        const PDFLayout layout = makeLayout(mode, breaks, asBook, anchor);
        QCOMPARE(layout.pageRect(page), rect);
        QCOMPARE(layout.documentSize(), documentSize);
    }

    void pagesFoundAtAndNearPoints_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("atPoint");
        QTest::addColumn<int>("nearest");

        QTest::newRow("inside a page") << 1 << QPointF(400, 900) << 1 << 1;
        QTest::newRow("gap nearer the upper page") << 1 << QPointF(400, 797) << -1 << 0;
        QTest::newRow("gap nearer the lower page") << 1 << QPointF(400, 803) << -1 << 1;
        QTest::newRow("beside a page") << 1 << QPointF(20, 1000) << -1 << 1;
        QTest::newRow("below the last page") << 1 << QPointF(400, 9000) << -1 << 4;
        QTest::newRow("above the first page") << 1 << QPointF(400, -50) << -1 << 0;
        QTest::newRow("lower edge belongs to the page") << 1 << QPointF(94, 4) << 0 << 0;
        QTest::newRow("upper edge does not") << 1 << QPointF(706, 400) << -1 << 0;
        QTest::newRow("two-up, right of the spine") << 3 << QPointF(900, 400) << 1 << 1;
        QTest::newRow("two-up, in the spine") << 3 << QPointF(799, 400) << -1 << 0;
    }
    void pagesFoundAtAndNearPoints()
    {
        QFETCH(int, mode);
        QFETCH(QPointF, point);
        QFETCH(int, atPoint);
        QFETCH(int, nearest);
        const PDFLayout layout = makeLayout(mode, true, false);
        QCOMPARE(layout.pageAtPoint(point), atPoint);
        QCOMPARE(layout.nearestPage(point), nearest);
    }

    void rowsStepAsTheModeGroupsPages_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("asBook");
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("previous");
        QTest::addColumn<int>("next");
        QTest::newRow("single") << 1 << false << 2 << 1 << 3;
        QTest::newRow("single, last") << 1 << false << 4 << 3 << -1;
        QTest::newRow("two-up") << 3 << false << 3 << 0 << 4;
        QTest::newRow("book") << 3 << true << 2 << 0 << 3;
        QTest::newRow("book, first") << 3 << true << 0 << -1 << 1;
    }
    void rowsStepAsTheModeGroupsPages()
    {
        QFETCH(int, mode);
        QFETCH(bool, asBook);
        QFETCH(int, page);
        QFETCH(int, previous);
        QFETCH(int, next);
        const PDFLayout layout = makeLayout(mode, true, asBook);
        QCOMPARE(layout.previousRowPage(page), previous);
        QCOMPARE(layout.nextRowPage(page), next);
    }

    void visiblePagesOfARect()
    {
        const PDFLayout layout = makeLayout(1, true, false);
        QCOMPARE(layout.pagesInRect(QRectF(0, 700, 800, 200)), (std::vector<int> { 0, 1 }));
        QCOMPARE(layout.pagesInRect(QRectF(0, 797, 800, 6)), std::vector<int> {});
        QCOMPARE(
            layout.pagesInRect(QRectF(0, 0, 800, 10000)), (std::vector<int> { 0, 1, 2, 3, 4 }));
    }
};

QTEST_APPLESS_MAIN(PDFLayoutTest)
#include "PDFLayoutTest.moc"
