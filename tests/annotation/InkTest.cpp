// Free-hand strokes: smoothing of pointer samples, hits on the strokes rather than their box,
// the bounds an ink needs, and moving its geometry.

#include <annotation/PDFAnnotationInk+XExtensions.h>

#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFBorder.h>

#include <QtTest>

namespace {

using Points = QList<QPointF>;

BezierPath stroke(const Points &samples)
{
    BezierPath path;
    for (const QPointF &sample : samples)
        addPointToPath(sample, path);
    return path;
}

// The element types ("MLC") and all points, rounded to 1e-6 so that thirds compare.
QPair<QString, Points> elements(const BezierPath &path)
{
    QPair<QString, Points> result;
    for (int i = 0; i < path.elementCount(); ++i) {
        QPointF points[3];
        const auto type = path.elementAt(i, points);
        result.first += QStringLiteral("MLCZ").at(type);
        for (int j = 0; j < (type == BezierPath::CurveTo ? 3 : 1); ++j)
            result.second.append(QPointF(
                std::round(points[j].x() * 1e6) / 1e6, std::round(points[j].y() * 1e6) / 1e6));
    }
    return result;
}

std::shared_ptr<PDFAnnotationInk> makeInk(const QList<Points> &strokes, double width = 1.0)
{
    QList<std::shared_ptr<BezierPath>> paths;
    for (const Points &samples : strokes)
        paths.append(std::make_shared<BezierPath>(stroke(samples)));
    auto ink = std::make_shared<PDFAnnotationInk>();
    if (!initWithPaths(*ink, paths))
        return nullptr;
    ink->border()->setLineWidth(width);
    return ink;
}

} // namespace

class InkTest : public QObject
{
    Q_OBJECT

private slots:
    void smoothing_data()
    {
        QTest::addColumn<Points>("samples");
        QTest::addColumn<QString>("types");
        QTest::addColumn<Points>("points"); // a curve's are control 1, control 2, end
        const double a = 6.666667, b = 13.333333;
        QTest::newRow("one sample") << Points { { 1, 2 } } << "M" << Points { { 1, 2 } };
        QTest::newRow("two") << Points { { 0, 0 }, { 10, 0 } } << "ML"
                             << Points { { 0, 0 }, { 10, 0 } };
        QTest::newRow("three in a row")
            << Points { { 0, 0 }, { 10, 0 }, { 20, 0 } } << "MCC"
            << Points { { 0, 0 }, { 0, 0 }, { a, 0 }, { 10, 0 }, { b, 0 }, { 20, 0 }, { 20, 0 } };
        QTest::newRow("back to the first")
            << Points { { 0, 0 }, { 10, 0 }, { 0, 0 } } << "MCC"
            << Points { { 0, 0 }, { 0, 0 }, { 10, 0 }, { 10, 0 }, { 10, 0 }, { 0, 0 }, { 0, 0 } };
        QTest::newRow("identical")
            << Points { { 5, 5 }, { 5, 5 }, { 5, 5 } } << "MCC" << Points(7, QPointF(5, 5));
        // The fourth sample bends the end of the previous curve in place.
        QTest::newRow("a turn") << Points { { 0, 0 }, { 10, 0 }, { 20, 0 }, { 30, 10 } } << "MCCC"
                                << Points { { 0, 0 }, { 0, 0 }, { a, 0 }, { 10, 0 }, { b, 0 },
                                       { 17.333333, -1.333333 }, { 20, 0 }, { 24, 2 }, { 30, 10 },
                                       { 30, 10 } };
    }
    void smoothing()
    {
        QFETCH(Points, samples);
        QFETCH(QString, types);
        QFETCH(Points, points);
        QCOMPARE(elements(stroke(samples)), qMakePair(types, points));
    }

    void eachSampleTouchesOnlyTheEndOfTheStroke()
    {
        BezierPath path;
        for (int i = 0; i < 200; ++i) {
            const auto before = elements(path);
            addPointToPath(QPointF(i * 3.0, (i % 7) * 5.0), path);
            const auto after = elements(path);
            QCOMPARE(after.first.size(), before.first.size() + 1);
            if (i > 3) // all but the last curve's second control point and end stay
                QCOMPARE(after.second.mid(0, before.second.size() - 2),
                    before.second.mid(0, before.second.size() - 2));
        }
    }

    void hit_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        // An L: (100, 100) to (200, 100), then up to (200, 200).
        QTest::newRow("on the stroke") << 1.0 << QPointF(150, 100) << true;
        QTest::newRow("3.9 off") << 1.0 << QPointF(150, 103.9) << true;
        QTest::newRow("width 3, 4.5 off") << 3.0 << QPointF(150, 104.5) << false;
        QTest::newRow("width 20, 9.5 off") << 20.0 << QPointF(150, 109.5) << true;
        QTest::newRow("width 20, 10.5 off") << 20.0 << QPointF(150, 110.5) << false;
        QTest::newRow("upright part") << 1.0 << QPointF(197, 180) << true;
        QTest::newRow("in the box, away from the strokes") << 1.0 << QPointF(120, 180) << false;
    }
    void hit()
    {
        QFETCH(double, width);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        const auto ink = makeInk(
            { { { 100, 100 }, { 150, 100 }, { 200, 100 }, { 200, 150 }, { 200, 200 } } }, width);
        QCOMPARE(inkHitTest(*ink, point), hit);
        QVERIFY(!inkHitTest(*makeInk({ { point } }), point)); // one sample has no segment
    }

    void boundsHoldThePathsAndThePathsComeBack()
    {
        const QList<Points> strokes { { { 10.5, 20 }, { 25, 20 }, { 40, 20 } },
            { { 30, 60.2 }, { 50, 70 } } };
        const auto ink = makeInk(strokes);
        // The integral box of the strokes (the flat one grown by 0.1), then 8 on every side.
        QCOMPARE(ink->bounds(), QRectF(2, 11, 56, 67));
        QCOMPARE(elements(pagePaths(*ink).at(0)), elements(stroke(strokes[0])));
        QCOMPARE(elements(pagePaths(*ink).at(1)), elements(stroke(strokes[1])));
    }

    void enclosedBoundsOfAnInkWithoutBounds_data()
    {
        QTest::addColumn<Points>("samples");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("flat stroke") << Points { { 10, 10 }, { 50, 10 } } << QRectF(1, 1, 58, 18);
        QTest::newRow("no paths") << Points {} << QRectF(-8, -8, 16, 16);
    }
    void enclosedBoundsOfAnInkWithoutBounds()
    {
        QFETCH(Points, samples);
        QFETCH(QRectF, expected);
        auto ink = std::make_shared<PDFAnnotationInk>();
        QVERIFY(ink->init());
        if (!samples.isEmpty())
            ink->addBezierPath(std::make_shared<BezierPath>(stroke(samples)));
        QCOMPARE(inkEnclosedBounds(*ink), expected);
    }

    void moveByOffsetMovesTheStrokesAgainstTheBounds()
    {
        const auto ink = makeInk(
            { { { 100, 100 }, { 150, 100 }, { 200, 100 } }, { { 100, 150 }, { 120, 150 } } });
        const QRectF bounds = ink->bounds();
        QCOMPARE(inkDisplayRectForBounds(*ink, bounds, 0), bounds);
        const auto first = ink->paths().at(0);
        moveByOffset(*ink, QSizeF(30, 20));
        QCOMPARE(ink->bounds(), bounds);
        QCOMPARE(ink->paths().at(0), first);
        QVERIFY(inkHitTest(*ink, QPointF(180, 120)));
        QVERIFY(!inkHitTest(*ink, QPointF(150, 100)));
        QCOMPARE(pagePaths(*ink).at(1).currentPoint(), QPointF(150, 170));
        // The repaint area follows the stroke past the bounds, by its width.
        QCOMPARE(inkDisplayRectForBounds(*ink, bounds, 6).right(), 230.0 + 7.0);
    }
};

QTEST_MAIN(InkTest)
#include "InkTest.moc"
