// Where lines and circles are hit and held, how much of the page a line dirties, and how a line
// and its ends look on the overlay.

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

std::shared_ptr<PDFAnnotationLine> makeLine(QRectF bounds, QPointF start, QPointF end, double width)
{
    auto line = std::make_shared<PDFAnnotationLine>();
    line->initWithBounds(bounds);
    line->setStartPoint(start);
    line->setEndPoint(end);
    line->border()->setLineWidth(width);
    line->setColor(Qt::red);
    return line;
}

// The line's overlay drawing, four pixels to a page unit, page y up.
QImage drawn(const PDFAnnotation &annotation)
{
    QImage image(400, 400, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setTransform(QTransform(4, 0, 0, -4, 0, 400));
    annotation.drawWithBox(painter, PDFDisplayBox::MediaBox);
    return image;
}

bool isInked(const QImage &image, QPointF page)
{
    return image.pixelColor(QPoint(int(page.x() * 4), int(400 - page.y() * 4))).green() < 128;
}

} // namespace

class ShapeGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void lineHit_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        // The line runs from (50, 50) to (150, 50) on the page.
        QTest::newRow("3.9 above") << 1.0 << QPointF(100, 53.9) << true;
        QTest::newRow("4.0 above") << 1.0 << QPointF(100, 54.0) << false;
        QTest::newRow("4.0 below") << 1.0 << QPointF(100, 46.0) << false;
        QTest::newRow("3 past the end") << 1.0 << QPointF(153, 50) << true;
        QTest::newRow("4 past the end") << 1.0 << QPointF(154, 50) << true;
        QTest::newRow("5 past the end") << 1.0 << QPointF(155, 50) << false;
        QTest::newRow("width 10 reaches 5") << 10.0 << QPointF(100, 54.9) << true;
        QTest::newRow("width 10 stops at 5") << 10.0 << QPointF(100, 55.0) << false;
        QTest::newRow("width 8 stays at 4") << 8.0 << QPointF(100, 54.5) << false;
    }
    void lineHit()
    {
        QFETCH(double, width);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        const auto line = makeLine(QRectF(50, 50, 100, 1), QPointF(0, 0), QPointF(100, 0), width);
        QCOMPARE(lineHitTest(*line, point), hit);
    }

    void zeroLengthLineIsNeverHitButKeepsItsStartHandle()
    {
        const auto line = makeLine(QRectF(50, 50, 10, 10), QPointF(5, 5), QPointF(5, 5), 1);
        QVERIFY(!lineHitTest(*line, QPointF(55, 55)));
        QCOMPARE(lineResizeHandleForPoint(*line, QPointF(55, 55), 1.0), AnnotationResizeHandleLeft);
        QVERIFY(!isInked(drawn(*line), QPointF(55, 55)));
    }

    void lineHandles_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("handle");
        // Start (10, 10) and end (40, 30) relative to bounds at (100, 100).
        QTest::newRow("on the start") << 1.0 << QPointF(110, 110) << 1;
        QTest::newRow("3.9 right of the start") << 1.0 << QPointF(113.9, 110) << 1;
        QTest::newRow("4 right of the start") << 1.0 << QPointF(114, 110) << 0;
        QTest::newRow("4 left of the start") << 1.0 << QPointF(106, 110) << 1;
        QTest::newRow("on the end") << 1.0 << QPointF(140, 130) << 4;
        QTest::newRow("zoomed in, 1.9 off") << 2.0 << QPointF(141.9, 130) << 4;
        QTest::newRow("zoomed in, 2 off") << 2.0 << QPointF(142, 130) << 0;
        QTest::newRow("zoomed out, 15 off") << 0.25 << QPointF(125, 110) << 1;
        QTest::newRow("middle of the line") << 1.0 << QPointF(125, 120) << 0;
    }
    void lineHandles()
    {
        QFETCH(double, scale);
        QFETCH(QPointF, point);
        QFETCH(int, handle);
        const auto line = makeLine(QRectF(100, 100, 40, 30), QPointF(10, 10), QPointF(40, 30), 1);
        QCOMPARE(int(lineResizeHandleForPoint(*line, point, scale)), handle);
    }

    void lineDisplayRect_data()
    {
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<double>("width");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("square, width 1")
            << QRectF(0, 0, 100, 100) << 1.0 << QRectF(-2, -2, 104, 104);
        QTest::newRow("flat, width 1") << QRectF(0, 0, 100, 5) << 1.0 << QRectF(-2, -4, 104, 13);
        QTest::newRow("upright, width 3")
            << QRectF(0, 0, 10, 100) << 3.0 << QRectF(-12, -6, 34, 112);
        QTest::newRow("width 0 keeps room")
            << QRectF(0, 0, 100, 100) << 0.0 << QRectF(-2, -2, 104, 104);
        QTest::newRow("width 2.2 rounds up")
            << QRectF(0, 0, 100, 100) << 2.2 << QRectF(-5, -5, 110, 110);
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
        // Bounds (100, 100, 80, 40): centre (140, 120).
        QTest::newRow("centre") << QPointF(140, 120) << true;
        QTest::newRow("bottom-left corner") << QPointF(101, 101) << false;
        QTest::newRow("top-right corner") << QPointF(179, 139) << false;
        QTest::newRow("left tip") << QPointF(100, 120) << true;
        QTest::newRow("inside the ellipse near its edge") << QPointF(170, 130) << true;
        QTest::newRow("outside the bounds") << QPointF(181, 120) << false;
    }
    void circleHit()
    {
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        auto circle = std::make_shared<PDFAnnotationCircle>();
        circle->initWithBounds(QRectF(100, 100, 80, 40));
        QCOMPARE(circleHitTest(*circle, point), hit);
        auto empty = std::make_shared<PDFAnnotationCircle>();
        empty->initWithBounds(QRectF(100, 100, 0, 0));
        QVERIFY(!circleHitTest(*empty, QPointF(100, 100)));
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
        // Width 4: the end's outline lies 6 from the end point.
        const auto line = makeLine(QRectF(20, 50, 40, 1), QPointF(0, 0), QPointF(40, 0), 4);
        line->setEndLineStyle(style);
        const QImage image = drawn(*line);
        QVERIFY(isInked(image, QPointF(65.5, 50)));
        QVERIFY2(!isInked(image, QPointF(62, 50)), "the line end is filled");
        QVERIFY(!isInked(image, QPointF(14.5, 50))); // no end at the start
        line->setStartLineStyle(style);
        QVERIFY(isInked(drawn(*line), QPointF(14.5, 50))); // turned to face away from the line
    }

    void lineWithItsOwnPictureShowsThatPicture()
    {
        PdfFixtures::Page page;
        page.annotations = { { "/Subtype /Line /Rect [10 10 60 60] /L [10 10 60 60] /C [1 0 0]",
            "0 0 1 rg 0 0 50 50 re f", QRectF(0, 0, 50, 50) } };
        PdfFixtures::Document description;
        description.pages = { page };
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithData(PdfFixtures::build(description)));
        const auto &annotations = document->pageAtIndex(0)->annotations();
        QCOMPARE(annotations.size(), size_t(1));
        QImage image(612, 792, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        annotations.front()->drawWithBox(painter, PDFDisplayBox::MediaBox);
        painter.end();
        // Off the line's diagonal: only the file's blue box covers it.
        QCOMPARE(image.pixelColor(20, 792 - 50), QColor(Qt::blue));
    }
};

QTEST_MAIN(ShapeGeometryTest)
#include "ShapeGeometryTest.moc"
