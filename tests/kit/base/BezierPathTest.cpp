#include <kit/base/BezierPath.h>

#include <QDataStream>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QTransform>

#include <cmath>

namespace {

BezierPath polygon(const QList<QPointF> &points, bool close = true)
{
    BezierPath path;
    path.moveTo(points.first());
    for (qsizetype i = 1; i < points.size(); ++i)
        path.lineTo(points[i]);
    if (close)
        path.closePath();
    return path;
}

// Bounds found by sampling the curve densely: a check independent of the derivative roots.
QRectF sampledCurveBounds(QPointF p0, QPointF c1, QPointF c2, QPointF p3)
{
    double minX = p0.x(), maxX = p0.x(), minY = p0.y(), maxY = p0.y();
    for (int i = 1; i <= 20000; ++i) {
        const double t = i / 20000.0;
        const double u = 1 - t;
        const QPointF p
            = p0 * (u * u * u) + c1 * (3 * u * u * t) + c2 * (3 * u * t * t) + p3 * (t * t * t);
        minX = std::min(minX, p.x());
        maxX = std::max(maxX, p.x());
        minY = std::min(minY, p.y());
        maxY = std::max(maxY, p.y());
    }
    return QRectF(minX, minY, maxX - minX, maxY - minY);
}

bool painted(const QImage &image, int x, int y)
{
    return qAlpha(image.pixel(x, y)) > 128;
}

} // namespace

class BezierPathTest : public QObject
{
    Q_OBJECT

private slots:
    void elementsKeepTheirKindsAndPoints()
    {
        BezierPath path;
        path.moveTo(QPointF(1, 2));
        path.lineTo(QPointF(3, 4));
        path.curveTo(QPointF(9, 9), QPointF(5, 6), QPointF(7, 8));
        path.closePath();
        QCOMPARE(path.currentPoint(), QPointF(1, 2));
        // A line after a close starts a new subpath at the closed one's first point.
        path.lineTo(QPointF(0, 5));
        QCOMPARE(path.elementCount(), 6);

        QPointF points[3];
        QCOMPARE(path.elementAt(2, points), BezierPath::CurveTo);
        QCOMPARE(points[0], QPointF(5, 6));
        QCOMPARE(points[1], QPointF(7, 8));
        QCOMPARE(points[2], QPointF(9, 9));
        QCOMPARE(path.elementAt(3), BezierPath::ClosePath);
        QCOMPARE(path.elementAt(4, points), BezierPath::MoveTo);
        QCOMPARE(points[0], QPointF(1, 2));
        QCOMPARE(path.elementAt(5, points), BezierPath::LineTo);
        QCOMPARE(points[0], QPointF(0, 5));
        QCOMPARE(path.currentPoint(), QPointF(0, 5));
    }

    void lineWithoutCurrentPointStartsASubpath()
    {
        BezierPath path;
        path.lineTo(QPointF(4, 4));
        QCOMPARE(path.elementCount(), 2);
        QCOMPARE(path.elementAt(0), BezierPath::MoveTo);
        QCOMPARE(path.currentPoint(), QPointF(4, 4));
    }

    void setAssociatedPointsEditsInPlace()
    {
        BezierPath path;
        path.moveTo(QPointF(0, 0));
        path.curveTo(QPointF(10, 0), QPointF(0, 0), QPointF(10, 0));
        QCOMPARE(path.bounds(), QRectF(0, 0, 10, 0));

        const QPointF curve[3] = { QPointF(0, 10), QPointF(10, 10), QPointF(10, 0) };
        path.setAssociatedPoints(curve, 1);
        QCOMPARE(path.elementCount(), 2);
        QCOMPARE(path.bounds(), QRectF(0, 0, 10, 7.5));

        const QPointF start[1] = { QPointF(-5, 0) };
        path.setAssociatedPoints(start, 0);
        QPointF read[3];
        path.elementAt(0, read);
        QCOMPARE(read[0], QPointF(-5, 0));
        QCOMPARE(path.controlPointBounds(), QRectF(-5, 0, 15, 10));

        const BezierPath before = path;
        path.setAssociatedPoints(start, 7);
        path.setAssociatedPoints(start, -1);
        QVERIFY(path == before);

        path.removeAllPoints();
        QVERIFY(path.isEmpty());
        QCOMPARE(path.bounds(), QRectF(0, 0, 0, 0));
    }

    void boundsIncludeCurveExtrema_data()
    {
        QTest::addColumn<QPointF>("p0");
        QTest::addColumn<QPointF>("c1");
        QTest::addColumn<QPointF>("c2");
        QTest::addColumn<QPointF>("p3");
        QTest::newRow("arch") << QPointF(0, 0) << QPointF(0, 10) << QPointF(10, 10)
                              << QPointF(10, 0);
        QTest::newRow("overshoot both axes")
            << QPointF(0, 0) << QPointF(-20, 30) << QPointF(40, -15) << QPointF(10, 5);
        QTest::newRow("s curve") << QPointF(0, 0) << QPointF(30, 10) << QPointF(-20, 20)
                                 << QPointF(10, 30);
        QTest::newRow("within hull ends")
            << QPointF(0, 0) << QPointF(2, 1) << QPointF(8, 3) << QPointF(10, 10);
        QTest::newRow("degenerate line")
            << QPointF(1, 1) << QPointF(2, 2) << QPointF(3, 3) << QPointF(4, 4);
    }
    void boundsIncludeCurveExtrema()
    {
        QFETCH(QPointF, p0);
        QFETCH(QPointF, c1);
        QFETCH(QPointF, c2);
        QFETCH(QPointF, p3);
        BezierPath path;
        path.moveTo(p0);
        path.curveTo(p3, c1, c2);
        const QRectF bounds = path.bounds();
        const QRectF sampled = sampledCurveBounds(p0, c1, c2, p3);
        const double tolerance = 1e-3;
        QVERIFY2(std::abs(bounds.left() - sampled.left()) < tolerance
                && std::abs(bounds.right() - sampled.right()) < tolerance
                && std::abs(bounds.top() - sampled.top()) < tolerance
                && std::abs(bounds.bottom() - sampled.bottom()) < tolerance,
            qPrintable(QStringLiteral("bounds (%1, %2, %3, %4), sampled (%5, %6, %7, %8)")
                           .arg(bounds.left())
                           .arg(bounds.top())
                           .arg(bounds.right())
                           .arg(bounds.bottom())
                           .arg(sampled.left())
                           .arg(sampled.top())
                           .arg(sampled.right())
                           .arg(sampled.bottom())));
        QVERIFY(path.controlPointBounds().contains(bounds));
    }

    void ovalBoundsAreItsRect()
    {
        const QRectF rect(10, 20, 30, 16);
        const BezierPath oval = BezierPath::bezierPathWithOvalInRect(rect);
        QCOMPARE(oval.elementCount(), 6);
        const QRectF bounds = oval.bounds();
        QVERIFY(std::abs(bounds.left() - 10) < 1e-9 && std::abs(bounds.right() - 40) < 1e-9);
        QVERIFY(std::abs(bounds.top() - 20) < 1e-9 && std::abs(bounds.bottom() - 36) < 1e-9);
    }

    void flatteningStaysWithinFlatness_data()
    {
        QTest::addColumn<double>("flatness");
        QTest::newRow("default") << 0.6;
        QTest::newRow("fine") << 0.1;
        QTest::newRow("very fine") << 0.01;
    }
    void flatteningStaysWithinFlatness()
    {
        QFETCH(double, flatness);
        const double radius = 100;
        const BezierPath circle = BezierPath::bezierPathWithOvalInRect(
            QRectF(-radius, -radius, 2 * radius, 2 * radius));
        const BezierPath flat = circle.flattened(flatness);
        QVERIFY(flat.elementCount() > 6);
        QCOMPARE(flat.elementAt(0), BezierPath::MoveTo);
        QCOMPARE(flat.elementAt(flat.elementCount() - 1), BezierPath::ClosePath);
        QPointF previous;
        for (int i = 0; i < flat.elementCount(); ++i) {
            QPointF points[3];
            const BezierPath::ElementType type = flat.elementAt(i, points);
            QVERIFY(type != BezierPath::CurveTo);
            if (type == BezierPath::ClosePath)
                continue;
            // Vertices lie on the curve, and each chord's middle stays near it.
            QVERIFY(std::abs(std::hypot(points[0].x(), points[0].y()) - radius) < 0.05);
            if (type == BezierPath::LineTo) {
                const QPointF mid = (previous + points[0]) / 2;
                QVERIFY(radius - std::hypot(mid.x(), mid.y()) <= flatness + 0.05);
            }
            previous = points[0];
        }
        QVERIFY(circle.flattened(flatness / 4).elementCount() > flat.elementCount());
    }

    void flatteningKeepsLinesAndAttributes()
    {
        BezierPath path = polygon({ QPointF(0, 0), QPointF(5, 0), QPointF(5, 5) });
        path.setLineWidth(3);
        path.setWindingRule(BezierPath::EvenOdd);
        QVERIFY(path.flattened() == path);
    }

    void containsPointHonoursWindingRule_data()
    {
        QTest::addColumn<BezierPath>("path");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("nonZero");
        QTest::addColumn<bool>("evenOdd");

        BezierPath sameDirection = BezierPath::bezierPathWithRect(QRectF(0, 0, 100, 100));
        sameDirection.appendRect(QRectF(25, 25, 50, 50));
        QTest::newRow("nested same way, hole") << sameDirection << QPointF(50, 50) << true << false;
        QTest::newRow("nested same way, ring") << sameDirection << QPointF(10, 50) << true << true;

        BezierPath opposite = BezierPath::bezierPathWithRect(QRectF(0, 0, 100, 100));
        opposite.appendPath(
            polygon({ QPointF(25, 25), QPointF(25, 75), QPointF(75, 75), QPointF(75, 25) }));
        QTest::newRow("nested opposite, hole") << opposite << QPointF(50, 50) << false << false;

        const BezierPath star = polygon(
            { QPointF(50, 0), QPointF(79, 90), QPointF(2, 35), QPointF(98, 35), QPointF(21, 90) });
        QTest::newRow("star centre") << star << QPointF(50, 50) << true << false;
        QTest::newRow("star point") << star << QPointF(50, 10) << true << true;
        QTest::newRow("outside star") << star << QPointF(5, 80) << false << false;

        const BezierPath circle = BezierPath::bezierPathWithOvalInRect(QRectF(0, 0, 100, 100));
        QTest::newRow("inside circle near edge") << circle << QPointF(85, 85) << true << true;
        QTest::newRow("corner outside circle") << circle << QPointF(90, 90) << false << false;

        const BezierPath open = polygon({ QPointF(0, 0), QPointF(10, 0), QPointF(0, 10) }, false);
        QTest::newRow("open subpath counts closed") << open << QPointF(2, 2) << true << true;
        QTest::newRow("empty path") << BezierPath() << QPointF(0, 0) << false << false;
    }
    void containsPointHonoursWindingRule()
    {
        QFETCH(BezierPath, path);
        QFETCH(QPointF, point);
        QFETCH(bool, nonZero);
        QFETCH(bool, evenOdd);
        path.setWindingRule(BezierPath::NonZero);
        QCOMPARE(path.containsPoint(point), nonZero);
        path.setWindingRule(BezierPath::EvenOdd);
        QCOMPARE(path.containsPoint(point), evenOdd);
    }

    void transformMovesEveryPoint()
    {
        BezierPath path;
        path.moveTo(QPointF(1, 1));
        path.curveTo(QPointF(3, 1), QPointF(1, 2), QPointF(3, 2));
        path.transform(QTransform::fromTranslate(10, 0).scale(2, 3));
        QPointF points[3];
        path.elementAt(0, points);
        QCOMPARE(points[0], QPointF(12, 3));
        path.elementAt(1, points);
        QCOMPARE(points[0], QPointF(12, 6));
        QCOMPARE(points[1], QPointF(16, 6));
        QCOMPARE(points[2], QPointF(16, 3));
        QCOMPARE(path.controlPointBounds(), QRectF(12, 3, 4, 3));
    }

    void strokeDrawsDashPattern_data()
    {
        QTest::addColumn<QList<double>>("dash");
        QTest::addColumn<double>("phase");
        QTest::addColumn<QList<int>>("paintedXs");
        QTest::addColumn<QList<int>>("clearXs");
        QTest::newRow("solid") << QList<double>() << 0.0 << QList<int> { 5, 15, 25, 35 }
                               << QList<int>();
        QTest::newRow("10 on 10 off")
            << QList<double> { 10, 10 } << 0.0 << QList<int> { 5, 25 } << QList<int> { 15, 35 };
        QTest::newRow("shifted by phase")
            << QList<double> { 10, 10 } << 10.0 << QList<int> { 15, 35 } << QList<int> { 5, 25 };
        // An odd pattern alternates: 6 on, 6 off, 6 on, ...
        QTest::newRow("odd pattern")
            << QList<double> { 6 } << 0.0 << QList<int> { 3, 15 } << QList<int> { 9, 21 };
    }
    void strokeDrawsDashPattern()
    {
        QFETCH(QList<double>, dash);
        QFETCH(double, phase);
        QFETCH(QList<int>, paintedXs);
        QFETCH(QList<int>, clearXs);
        QImage image(60, 20, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        BezierPath line;
        line.moveTo(QPointF(0, 10));
        line.lineTo(QPointF(60, 10));
        line.setLineWidth(4);
        line.setLineDash(dash, phase);
        {
            QPainter painter(&image);
            painter.setPen(Qt::black);
            line.stroke(painter);
        }
        for (const int x : std::as_const(paintedXs))
            QVERIFY2(painted(image, x, 10), qPrintable(QString::number(x)));
        for (const int x : std::as_const(clearXs))
            QVERIFY2(!painted(image, x, 10), qPrintable(QString::number(x)));
        QVERIFY(!painted(image, 5, 5)); // 4 wide: reaches 8..12 only
    }

    void fillUsesWindingRule()
    {
        BezierPath path = BezierPath::bezierPathWithRect(QRectF(0, 0, 40, 40));
        path.appendRect(QRectF(10, 10, 20, 20));
        for (const auto rule : { BezierPath::NonZero, BezierPath::EvenOdd }) {
            path.setWindingRule(rule);
            QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            {
                QPainter painter(&image);
                painter.setBrush(Qt::red);
                painter.setPen(Qt::blue);
                path.fill(painter);
                QCOMPARE(painter.pen().color(), QColor(Qt::blue));
            }
            QVERIFY(painted(image, 5, 5));
            QCOMPARE(painted(image, 20, 20), rule == BezierPath::NonZero);
        }
    }

    void streamRoundTripKeepsEverything()
    {
        BezierPath path = BezierPath::bezierPathWithOvalInRect(QRectF(1, 2, 3, 4));
        path.moveTo(QPointF(0.1, 0.2));
        path.lineTo(QPointF(7, 8));
        path.setLineWidth(2.5);
        path.setLineCap(BezierPath::RoundCap);
        path.setLineJoin(BezierPath::BevelJoin);
        path.setWindingRule(BezierPath::EvenOdd);
        path.setLineDash({ 3, 1, 4 }, 1.5);
        QByteArray bytes;
        {
            QDataStream out(&bytes, QIODevice::WriteOnly);
            out << path;
        }
        BezierPath read;
        QDataStream in(bytes);
        in >> read;
        QCOMPARE(in.status(), QDataStream::Ok);
        QVERIFY(read == path);

        QDataStream truncated(bytes.left(bytes.size() - 3));
        BezierPath partial;
        truncated >> partial;
        QVERIFY(truncated.status() != QDataStream::Ok);
        QVERIFY(partial.isEmpty());
    }
};

QTEST_MAIN(BezierPathTest)
#include "BezierPathTest.moc"
