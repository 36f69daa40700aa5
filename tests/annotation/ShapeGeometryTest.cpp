// Where lines and circles are hit and held, how much of the page a line dirties, and how a
// line's ends look on the overlay.

#include "support/AnnotationTestKit.h"

#include <annotation/PDFAnnotationCircle+XExtensions.h>
#include <annotation/PDFAnnotationLine+XExtensions.h>

#include <support/PdfFixtures.h>

#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QPainter>
#include <QtTest>

namespace {

// From (x, y) + start to (x, y) + end of bounds at (x, y).
std::shared_ptr<PDFAnnotationLine> makeLine(
    QPointF origin, QPointF start, QPointF end, double width)
{
    auto line = std::make_shared<PDFAnnotationLine>();
    line->initWithBounds(QRectF(origin, QSizeF(end.x(), end.y())));
    line->setStartPoint(start);
    line->setEndPoint(end);
    line->border()->setLineWidth(width);
    line->setColor(Qt::red);
    return line;
}

// Whether the overlay drawing inks a page point, at four pixels to a page unit.
bool inks(const PDFAnnotation &annotation, QPointF point)
{
    QImage image(400, 400, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setTransform(QTransform(4, 0, 0, -4, 0, 400));
    annotation.drawWithBox(painter, PDFDisplayBox::MediaBox);
    return image.pixelColor(QPoint(int(point.x() * 4), int(400 - point.y() * 4))).green() < 128;
}

} // namespace

class ShapeGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void lineHitsAndHandles_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        QTest::addColumn<int>("handle");
        // From (50, 50) to (150, 50).
        QTest::newRow("3.9 above") << 1.0 << 1.0 << QPointF(100, 53.9) << true << 0;
        QTest::newRow("4.0 above") << 1.0 << 1.0 << QPointF(100, 54.0) << false << 0;
        QTest::newRow("3 past the end") << 1.0 << 1.0 << QPointF(153, 50) << true << 4;
        QTest::newRow("5 past the end") << 1.0 << 1.0 << QPointF(155, 50) << false << 0;
        QTest::newRow("width 10 reaches 5") << 10.0 << 1.0 << QPointF(100, 54.9) << true << 0;
        QTest::newRow("width 8 stays at 4") << 8.0 << 1.0 << QPointF(100, 54.5) << false << 0;
        QTest::newRow("4 left of the start") << 1.0 << 1.0 << QPointF(46, 50) << true << 1;
        QTest::newRow("4 right of the start") << 1.0 << 1.0 << QPointF(54, 50) << true << 0;
        QTest::newRow("zoomed in, 2 off") << 1.0 << 2.0 << QPointF(48, 50) << true << 1;
        QTest::newRow("zoomed in, 2 off right") << 1.0 << 2.0 << QPointF(52, 50) << true << 0;
        QTest::newRow("zoomed out, 15 off") << 1.0 << 0.25 << QPointF(135, 50) << true << 4;
    }
    void lineHitsAndHandles()
    {
        QFETCH(double, width);
        QFETCH(double, scale);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        QFETCH(int, handle);
        const auto line = makeLine(QPointF(50, 50), QPointF(0, 0), QPointF(100, 0), width);
        QCOMPARE(lineHitTest(*line, point), hit);
        QCOMPARE(int(lineResizeHandleForPoint(*line, point, scale)), handle);
    }

    void zeroLengthLineIsNeitherHitNorDrawnButHasItsStartHandle()
    {
        const auto line = makeLine(QPointF(50, 50), QPointF(5, 5), QPointF(5, 5), 1);
        QVERIFY(!lineHitTest(*line, QPointF(55, 55)));
        QCOMPARE(lineResizeHandleForPoint(*line, QPointF(55, 55), 1.0), AnnotationResizeHandleLeft);
        QVERIFY(!inks(*line, QPointF(55, 55)));
    }

    void lineDisplayRect_data()
    {
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<double>("width");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("square") << QRectF(0, 0, 100, 100) << 1.0 << QRectF(-2, -2, 104, 104);
        QTest::newRow("flat") << QRectF(0, 0, 100, 5) << 1.0 << QRectF(-2, -4, 104, 13);
        QTest::newRow("upright, width 3")
            << QRectF(0, 0, 10, 100) << 3.0 << QRectF(-12, -6, 34, 112);
        QTest::newRow("width 0") << QRectF(0, 0, 100, 100) << 0.0 << QRectF(-2, -2, 104, 104);
    }
    void lineDisplayRect()
    {
        QFETCH(QRectF, bounds);
        QFETCH(double, width);
        QFETCH(QRectF, expected);
        QCOMPARE(lineDisplayRectForBounds(bounds, width), expected);
    }

    void circleHit_data()
    {
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        // Bounds (100, 100, 80, 40).
        QTest::newRow("centre") << QPointF(140, 120) << true;
        QTest::newRow("corner") << QPointF(101, 101) << false;
        QTest::newRow("near the edge") << QPointF(170, 130) << true;
        QTest::newRow("outside") << QPointF(181, 120) << false;
    }
    void circleHit()
    {
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        auto circle = std::make_shared<PDFAnnotationCircle>();
        circle->initWithBounds(QRectF(100, 100, 80, 40));
        QCOMPARE(circleHitTest(*circle, point), hit);
        circle->setBounds(QRectF(point, QSizeF()));
        QVERIFY(!circleHitTest(*circle, point));
    }

    void lineEndsAreOutlinesNotFills_data()
    {
        QTest::addColumn<int>("style");
        QTest::newRow("square") << int(PDFAnnotationLine::Square);
        QTest::newRow("circle") << int(PDFAnnotationLine::Circle);
        QTest::newRow("diamond") << int(PDFAnnotationLine::Diamond);
    }
    void lineEndsAreOutlinesNotFills()
    {
        QFETCH(int, style);
        // Width 4: an end's outline lies 6 from its point, the line's ends are (20, 50), (60, 50).
        const auto line = makeLine(QPointF(20, 50), QPointF(0, 0), QPointF(40, 0), 4);
        line->setEndLineStyle(style);
        QVERIFY(inks(*line, QPointF(65.5, 50)));
        QVERIFY2(!inks(*line, QPointF(62, 50)), "the line end is filled");
        QVERIFY(!inks(*line, QPointF(14.5, 50)));
        line->setStartLineStyle(style);
        QVERIFY(inks(*line, QPointF(14.5, 50)));
    }

    void lineWithItsOwnPictureShowsThatPicture()
    {
        PdfFixtures::Page page;
        page.annotations = { { "/Subtype /Line /Rect [10 10 60 60] /L [10 10 60 60] /C [1 0 0]",
            "0 0 1 rg 0 0 50 50 re f", QRectF(0, 0, 50, 50) } };
        const auto document = AnnotationTestKit::documentOf({ page });
        QVERIFY(document);
        QImage image(612, 792, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        document->pageAtIndex(0)->annotations().at(0)->drawWithBox(
            painter, PDFDisplayBox::MediaBox);
        QCOMPARE(image.pixelColor(20, 792 - 50), QColor(Qt::blue)); // off the line's diagonal
    }
};

QTEST_MAIN(ShapeGeometryTest)
#include "ShapeGeometryTest.moc"
