#include <kit/base/BezierPath.h>

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

// Bounds found by sampling densely: a check independent of the derivative roots.
QRectF sampledBounds(QPointF p0, QPointF c1, QPointF c2, QPointF p3)
{
    QPolygonF samples;
    for (int i = 0; i <= 20000; ++i) {
        const double t = i / 20000.0, u = 1 - t;
        samples << p0 * (u * u * u) + c1 * (3 * u * u * t) + c2 * (3 * u * t * t)
                + p3 * (t * t * t);
    }
    return samples.boundingRect();
}

bool near(QRectF a, QRectF b, double tolerance)
{
    return std::abs(a.left() - b.left()) < tolerance && std::abs(a.top() - b.top()) < tolerance
        && std::abs(a.right() - b.right()) < tolerance
        && std::abs(a.bottom() - b.bottom()) < tolerance;
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
        path.curveTo(QPointF(9, 9), QPointF(5, 6), QPointF(7, 8));
        path.closePath();
        QCOMPARE(path.currentPoint(), QPointF(1, 2));
        // A line after a close starts a new subpath at the closed one's first point.
        path.lineTo(QPointF(0, 5));
        QCOMPARE(path.elementCount(), 5);
        QPointF points[3];
        QCOMPARE(path.elementAt(1, points), BezierPath::CurveTo);
        QCOMPARE(QList<QPointF>(points, points + 3),
            (QList<QPointF> { QPointF(5, 6), QPointF(7, 8), QPointF(9, 9) }));
        QCOMPARE(path.elementAt(2), BezierPath::ClosePath);
        QCOMPARE(path.elementAt(3, points), BezierPath::MoveTo);
        QCOMPARE(points[0], QPointF(1, 2));

        BezierPath loose;
        loose.lineTo(QPointF(4, 4)); // no current point: a move comes first
        QCOMPARE(loose.elementAt(0), BezierPath::MoveTo);
        QCOMPARE(loose.elementCount(), 2);
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
        // The arch peaks at 7.5, below its control points and above its ends.
        QCOMPARE(path.bounds(), QRectF(0, 0, 10, 7.5));
        const QPointF start[1] = { QPointF(-5, 0) };
        path.setAssociatedPoints(start, 0);
        QCOMPARE(path.controlPointBounds(), QRectF(-5, 0, 15, 10));

        const BezierPath before = path;
        path.setAssociatedPoints(start, 7);
        QVERIFY(path == before);
        path.transform(QTransform::fromTranslate(10, 0).scale(2, 3));
        QCOMPARE(path.controlPointBounds(), QRectF(0, 0, 30, 30));
        path.removeAllPoints();
        QVERIFY(path.isEmpty());
        QCOMPARE(path.bounds(), QRectF(0, 0, 0, 0));
    }

    void boundsIncludeCurveExtrema_data()
    {
        QTest::addColumn<QList<QPointF>>("curve");
        QTest::newRow("overshoot both axes")
            << QList<QPointF> { { 0, 0 }, { -20, 30 }, { 40, -15 }, { 10, 5 } };
        QTest::newRow("s curve") << QList<QPointF> { { 0, 0 }, { 30, 10 }, { -20, 20 },
            { 10, 30 } };
    }
    void boundsIncludeCurveExtrema()
    {
        QFETCH(QList<QPointF>, curve);
        BezierPath path;
        path.moveTo(curve[0]);
        path.curveTo(curve[3], curve[1], curve[2]);
        QVERIFY(near(path.bounds(), sampledBounds(curve[0], curve[1], curve[2], curve[3]), 1e-3));
        QVERIFY(path.controlPointBounds().contains(path.bounds()));
    }

    void flatteningStaysWithinFlatness_data()
    {
        QTest::addColumn<double>("flatness");
        QTest::newRow("default") << 0.6;
        QTest::newRow("fine") << 0.01;
    }
    void flatteningStaysWithinFlatness()
    {
        QFETCH(double, flatness);
        const BezierPath circle
            = BezierPath::bezierPathWithOvalInRect(QRectF(-100, -100, 200, 200));
        const BezierPath flat = circle.flattened(flatness);
        QCOMPARE(flat.elementAt(flat.elementCount() - 1), BezierPath::ClosePath);
        QPointF previous;
        for (int i = 0; i < flat.elementCount() - 1; ++i) {
            QPointF p[3];
            QVERIFY(flat.elementAt(i, p) == (i == 0 ? BezierPath::MoveTo : BezierPath::LineTo));
            // Vertices lie on the circle, and each chord's middle stays near it.
            QVERIFY(std::abs(std::hypot(p[0].x(), p[0].y()) - 100) < 0.05);
            const QPointF mid = (previous + p[0]) / 2;
            QVERIFY(i == 0 || 100 - std::hypot(mid.x(), mid.y()) <= flatness + 0.05);
            previous = p[0];
        }
        QVERIFY(circle.flattened(flatness / 4).elementCount() > flat.elementCount());
        const BezierPath lines = polygon({ QPointF(0, 0), QPointF(5, 0), QPointF(5, 5) });
        QVERIFY(lines.flattened(flatness) == lines);
    }

    void containsPointHonoursWindingRule_data()
    {
        QTest::addColumn<BezierPath>("path");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("nonZero");
        QTest::addColumn<bool>("evenOdd");
        BezierPath same = BezierPath::bezierPathWithRect(QRectF(0, 0, 100, 100));
        same.appendRect(QRectF(25, 25, 50, 50));
        QTest::newRow("nested same way, hole") << same << QPointF(50, 50) << true << false;
        QTest::newRow("nested same way, ring") << same << QPointF(10, 50) << true << true;
        BezierPath opposite = BezierPath::bezierPathWithRect(QRectF(0, 0, 100, 100));
        opposite.appendPath(polygon({ { 25, 25 }, { 25, 75 }, { 75, 75 }, { 75, 25 } }));
        QTest::newRow("nested opposite, hole") << opposite << QPointF(50, 50) << false << false;
        const BezierPath star
            = polygon({ { 50, 0 }, { 79, 90 }, { 2, 35 }, { 98, 35 }, { 21, 90 } });
        QTest::newRow("star centre") << star << QPointF(50, 50) << true << false;
        QTest::newRow("outside star") << star << QPointF(5, 80) << false << false;
        const BezierPath circle = BezierPath::bezierPathWithOvalInRect(QRectF(0, 0, 100, 100));
        QTest::newRow("inside circle near edge") << circle << QPointF(85, 85) << true << true;
        QTest::newRow("corner outside circle") << circle << QPointF(90, 90) << false << false;
        const BezierPath open = polygon({ { 0, 0 }, { 10, 0 }, { 0, 10 } }, false);
        QTest::newRow("open subpath counts closed") << open << QPointF(2, 2) << true << true;
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

    void arcsFollowDirectionAndSweep_data()
    {
        QTest::addColumn<double>("start");
        QTest::addColumn<double>("end");
        QTest::addColumn<bool>("clockwise");
        QTest::addColumn<int>("curves");
        QTest::addColumn<QRectF>("bounds");
        QTest::newRow("quarter") << 0.0 << 90.0 << false << 1 << QRectF(0, 0, 10, 10);
        QTest::newRow("clockwise long way") << 0.0 << 90.0 << true << 3 << QRectF(-10, -10, 20, 20);
        QTest::newRow("full turn") << 90.0 << 450.0 << false << 4 << QRectF(-10, -10, 20, 20);
        QTest::newRow("wraps past zero")
            << 315.0 << 45.0 << false << 1 << QRectF(7.0710678, -7.0710678, 2.9289322, 14.1421356);
    }
    void arcsFollowDirectionAndSweep()
    {
        QFETCH(double, start);
        QFETCH(double, end);
        QFETCH(bool, clockwise);
        QFETCH(int, curves);
        QFETCH(QRectF, bounds);
        BezierPath arc;
        arc.appendArc(QPointF(0, 0), 10, start, end, clockwise);
        QCOMPARE(arc.elementCount(), 1 + curves);
        QVERIFY2(near(arc.bounds(), bounds, 1e-3), qPrintable(QString::number(arc.bounds().top())));
        const BezierPath flat = arc.flattened(0.001);
        for (int i = 0; i < flat.elementCount(); ++i) {
            QPointF p[3];
            flat.elementAt(i, p);
            QVERIFY(std::abs(std::hypot(p[0].x(), p[0].y()) - 10) < 0.01);
        }
    }

    void arcFromPointRoundsTheCorner()
    {
        BezierPath path;
        path.moveTo(QPointF(0, 0));
        path.appendArcFromPoint(QPointF(10, 0), QPointF(10, 10), 2);
        QPointF p[3];
        QCOMPARE(path.elementAt(1, p), BezierPath::LineTo);
        QCOMPARE(p[0], QPointF(8, 0));
        QCOMPARE(path.elementAt(2, p), BezierPath::CurveTo);
        QVERIFY(std::abs(p[2].x() - 10) < 1e-9 && std::abs(p[2].y() - 2) < 1e-9);
        QVERIFY(near(path.bounds(), QRectF(0, 0, 10, 2), 1e-6));
        // Bending the other way, the arc turns clockwise.
        BezierPath other;
        other.moveTo(QPointF(0, 0));
        other.appendArcFromPoint(QPointF(10, 0), QPointF(10, -10), 2);
        QVERIFY(near(other.bounds(), QRectF(0, -2, 10, 2), 1e-6));
    }

    void roundedRectCutsItsCorners()
    {
        BezierPath rounded;
        rounded.appendRoundedRect(QRectF(0, 0, 40, 20), 100, 5); // x radius capped at 20
        QVERIFY(near(rounded.bounds(), QRectF(0, 0, 40, 20), 1e-9));
        QVERIFY(!rounded.containsPoint(QPointF(1, 1)));
        QVERIFY(rounded.containsPoint(QPointF(20, 1)));
        BezierPath square;
        square.appendRoundedRect(QRectF(0, 0, 4, 4), 0, 3);
        QVERIFY(square == BezierPath::bezierPathWithRect(QRectF(0, 0, 4, 4)));
    }

    void strokeDrawsDashPattern_data()
    {
        QTest::addColumn<QList<double>>("dash");
        QTest::addColumn<double>("phase");
        QTest::addColumn<QList<int>>("paintedXs");
        QTest::addColumn<QList<int>>("clearXs");
        QTest::newRow("10 on 10 off")
            << QList<double> { 10, 10 } << 0.0 << QList<int> { 5, 25 } << QList<int> { 15, 35 };
        QTest::newRow("phase") << QList<double> { 10, 10 } << 10.0 << QList<int> { 15, 35 }
                               << QList<int> { 5, 25 };
        // An odd pattern alternates: 6 on, 6 off, 6 on, ...
        QTest::newRow("odd") << QList<double> { 6 } << 0.0 << QList<int> { 3, 15 }
                             << QList<int> { 9, 21 };
    }
    void strokeDrawsDashPattern()
    {
        QFETCH(QList<double>, dash);
        QFETCH(double, phase);
        QFETCH(QList<int>, paintedXs);
        QFETCH(QList<int>, clearXs);
        QImage image(60, 20, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        BezierPath line = polygon({ QPointF(0, 10), QPointF(60, 10) }, false);
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
};

QTEST_MAIN(BezierPathTest)
#include "BezierPathTest.moc"
