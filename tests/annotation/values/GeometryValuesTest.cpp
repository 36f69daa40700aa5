// Geometry of values: one-sided rounded rects, path boxes, reading order and bitmap crop boxes.

#include <annotation/values/NSBezierPath+XExtensions.h>
#include <annotation/values/NSBitmapImageRep+XExtensions.h>
#include <annotation/values/NSValue+XExtensions.h>

#include <kit/base/Geometry.h>

#include <QPainter>
#include <QTest>

#include <algorithm>

namespace {

bool nearRect(QRectF a, QRectF b)
{
    return std::abs(a.x() - b.x()) < 1e-9 && std::abs(a.y() - b.y()) < 1e-9
        && std::abs(a.width() - b.width()) < 1e-9 && std::abs(a.height() - b.height()) < 1e-9;
}

} // namespace

class GeometryValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void oneSidedRoundedRects_data()
    {
        QTest::addColumn<bool>("left");
        QTest::addColumn<double>("radius");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("inside");
        // The rect (10, 20, 100, 40), y upward: corners at x 10 / 110 and y 20 / 60.
        QTest::newRow("left: lower-left cut") << true << 8.0 << QPointF(10.5, 20.5) << false;
        QTest::newRow("left: upper-left cut") << true << 8.0 << QPointF(10.5, 59.5) << false;
        QTest::newRow("left: right corners kept") << true << 8.0 << QPointF(109.5, 59.5) << true;
        QTest::newRow("right: lower-right cut") << false << 8.0 << QPointF(109.5, 20.5) << false;
        QTest::newRow("right: left corners kept") << false << 8.0 << QPointF(10.5, 20.5) << true;
        // Capped at half the height: the left end is a half circle of radius 20.
        QTest::newRow("capped: off the half circle") << true << 500.0 << QPointF(14, 24) << false;
        QTest::newRow("capped: on its axis") << true << 500.0 << QPointF(10.5, 40) << true;
        QTest::newRow("negative radius: plain") << false << -3.0 << QPointF(109.5, 59.5) << true;
    }
    void oneSidedRoundedRects()
    {
        QFETCH(bool, left);
        QFETCH(double, radius);
        QFETCH(QPointF, point);
        QFETCH(bool, inside);
        const QRectF rect(10, 20, 100, 40);
        const BezierPath path = left ? bezierPathWithLeftRoundedRect(rect, radius)
                                     : bezierPathWithRightRoundedRect(rect, radius);
        QCOMPARE(path.containsPoint(point), inside);
        QVERIFY2(
            nearRect(path.bounds(), rect), qPrintable(Geometry::stringFromRect(path.bounds())));
    }

    void nonEmptyBounds_data()
    {
        QTest::addColumn<BezierPath>("path");
        QTest::addColumn<QRectF>("bounds");
        BezierPath point;
        point.moveTo(QPointF(5, 5));
        QTest::newRow("one point") << point << QRectF(4.9, 4.9, 0.2, 0.2);
        BezierPath flatCurve;
        flatCurve.moveTo(QPointF(0, 3));
        flatCurve.curveTo(QPointF(9, 3), QPointF(3, 3), QPointF(6, 3));
        QTest::newRow("flat curve") << flatCurve << QRectF(-0.1, 2.9, 9.2, 0.2);
        // The close must not pull the box to the origin.
        BezierPath closed;
        closed.moveTo(QPointF(30, 40));
        closed.lineTo(QPointF(30, 60));
        closed.closePath();
        QTest::newRow("closed vertical stroke") << closed << QRectF(29.9, 39.9, 0.2, 20.2);
        QTest::newRow("area kept as is")
            << BezierPath::bezierPathWithRect(QRectF(1, 2, 3, 4)) << QRectF(1, 2, 3, 4);
        QTest::newRow("empty path") << BezierPath() << QRectF();
    }
    void nonEmptyBounds()
    {
        QFETCH(BezierPath, path);
        QFETCH(QRectF, bounds);
        const QRectF result = ::nonEmptyBounds(path);
        QVERIFY2(nearRect(result, bounds), qPrintable(Geometry::stringFromRect(result)));
    }

    void rectsSortInReadingOrder()
    {
        // Page space, y upward: the higher top (y + height) is read first, then the left one.
        const QRectF firstLineLeft(50, 688, 60, 12); // top 700
        const QRectF firstLineRight(200, 690, 60, 10); // top 700
        const QRectF secondLineLeft(20, 650, 40, 20); // top 670
        const QRectF secondLineRight(300, 658, 40, 12); // top 670
        QList<QRectF> rects { secondLineRight, firstLineRight, secondLineLeft, firstLineLeft };
        std::sort(rects.begin(), rects.end(), boundsLessThan);
        QCOMPARE(rects,
            (QList<QRectF> { firstLineLeft, firstLineRight, secondLineLeft, secondLineRight }));
        QCOMPARE(boundsCompare(firstLineLeft, QRectF(50, 680, 1, 20)), 0);
        // A missing rect is the zero rect.
        QCOMPARE(boundsCompare(QRectF(0, 1, 1, 1)), -1);
        QCOMPARE(boundsCompare(QRectF(0, -5, 1, 1)), 1);
    }

    void foregroundRect_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QColor>("background");
        QTest::addColumn<QList<QRect>>("marks"); // y downward, as painted
        QTest::addColumn<QColor>("ink");
        QTest::addColumn<QRect>("found"); // y upward, from the lower-left corner
        const QSize size(100, 80);
        const QColor white(Qt::white), black(Qt::black);
        const QRect block(40, 30, 20, 10);
        // Rows 30..39 counted from the top are rows 40..49 counted from the bottom.
        // A speck and a 2 by 2 blot (four pixels of weight 2: not more than 8) are ignored.
        QTest::newRow("block, speck and blot")
            << size << white << QList<QRect> { QRect(10, 10, 1, 1), block, QRect(85, 65, 2, 2) }
            << black << QRect(40, 40, 20, 10);
        QTest::newRow("two blocks")
            << size << white << QList<QRect> { QRect(10, 5, 10, 10), QRect(70, 60, 20, 8) } << black
            << QRect(10, 12, 80, 63);
        // The background is read at (2, 2), so these marks stay clear of it.
        QTest::newRow("reaches the top and left edges")
            << size << white << QList<QRect> { QRect(20, 0, 20, 10), QRect(0, 30, 10, 10) } << black
            << QRect(0, 40, 40, 40);
        QTest::newRow("reaches the bottom-right edges")
            << size << white << QList<QRect> { QRect(80, 70, 20, 10) } << black
            << QRect(80, 0, 20, 10);
        QTest::newRow("coloured page, ink within tolerance")
            << size << QColor(40, 90, 200) << QList<QRect> { block } << QColor(42, 92, 198)
            << QRect();
        QTest::newRow("coloured page, ink just beyond")
            << size << QColor(40, 90, 200) << QList<QRect> { block } << QColor(43, 90, 200)
            << QRect(40, 40, 20, 10);
        QTest::newRow("too small to scan")
            << QSize(4, 4) << white << QList<QRect> { QRect(1, 1, 2, 2) } << black << QRect();
    }
    void foregroundRect()
    {
        QFETCH(QSize, size);
        QFETCH(QColor, background);
        QFETCH(QList<QRect>, marks);
        QFETCH(QColor, ink);
        QFETCH(QRect, found);
        QImage image(size, QImage::Format_RGB32);
        image.fill(background);
        {
            QPainter painter(&image);
            for (const QRect &mark : std::as_const(marks))
                painter.fillRect(mark, ink);
        }
        QCOMPARE(::foregroundRect(image), found);
    }
};

QTEST_APPLESS_MAIN(GeometryValuesTest)
#include "GeometryValuesTest.moc"
