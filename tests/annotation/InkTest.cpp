// Free-hand strokes: smoothing of pointer samples, hits on the strokes rather than their box,
// the bounds an ink needs, and moving its geometry.

#include <annotation/PDFAnnotationInk+XExtensions.h>

#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFBorder.h>

#include <QtTest>

namespace {

using Points = QList<QPointF>;

// Each element as its type followed by its points (control 1, control 2, end for a curve).
QList<Points> elements(const BezierPath &path)
{
    QList<Points> result;
    for (int i = 0; i < path.elementCount(); ++i) {
        QPointF points[3];
        const auto type = path.elementAt(i, points);
        const int count = type == BezierPath::CurveTo ? 3 : type == BezierPath::ClosePath ? 0 : 1;
        Points element { QPointF(type, -1) };
        for (int j = 0; j < count; ++j)
            element.append(points[j]);
        result.append(element);
    }
    return result;
}

bool fuzzyEqual(const QList<Points> &a, const QList<Points> &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a[i].size() != b[i].size())
            return false;
        for (qsizetype j = 0; j < a[i].size(); ++j) {
            if (std::abs(a[i][j].x() - b[i][j].x()) > 1e-9
                || std::abs(a[i][j].y() - b[i][j].y()) > 1e-9)
                return false;
        }
    }
    return true;
}

const QPointF Move(BezierPath::MoveTo, -1);
const QPointF Line(BezierPath::LineTo, -1);
const QPointF Curve(BezierPath::CurveTo, -1);

BezierPath stroke(const Points &samples)
{
    BezierPath path;
    for (const QPointF &sample : samples)
        addPointToPath(sample, path);
    return path;
}

// An ink made from page-space strokes through the samples, with the given border width.
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
        QTest::addColumn<QList<Points>>("expected");
        const double third = 20.0 / 3.0;
        QTest::newRow("one sample") << Points { { 1, 2 } } << QList<Points> { { Move, { 1, 2 } } };
        QTest::newRow("two samples are a straight line") << Points { { 0, 0 },
            { 10, 0 } } << QList<Points> { { Move, { 0, 0 } }, { Line, { 10, 0 } } };
        QTest::newRow("three in a row")
            << Points { { 0, 0 }, { 10, 0 }, { 20, 0 } }
            << QList<Points> { { Move, { 0, 0 } }, { Curve, { 0, 0 }, { third, 0 }, { 10, 0 } },
                   { Curve, { 10 + 10.0 / 3.0, 0 }, { 20, 0 }, { 20, 0 } } };
        QTest::newRow("back to the first sample")
            << Points { { 0, 0 }, { 10, 0 }, { 0, 0 } }
            << QList<Points> { { Move, { 0, 0 } }, { Curve, { 0, 0 }, { 10, 0 }, { 10, 0 } },
                   { Curve, { 10, 0 }, { 0, 0 }, { 0, 0 } } };
        QTest::newRow("three identical samples")
            << Points { { 5, 5 }, { 5, 5 }, { 5, 5 } }
            << QList<Points> { { Move, { 5, 5 } }, { Curve, { 5, 5 }, { 5, 5 }, { 5, 5 } },
                   { Curve, { 5, 5 }, { 5, 5 }, { 5, 5 } } };
        // The fourth sample bends the end of the previous curve in place.
        QTest::newRow("a turn") << Points { { 0, 0 }, { 10, 0 }, { 20, 0 }, { 30, 10 } }
                                << QList<Points> { { Move, { 0, 0 } },
                                       { Curve, { 0, 0 }, { third, 0 }, { 10, 0 } },
                                       { Curve, { 10 + 10.0 / 3.0, 0 },
                                           { 20 - 8.0 / 3.0, -4.0 / 3.0 }, { 20, 0 } },
                                       { Curve, { 24, 2 }, { 30, 10 }, { 30, 10 } } };
    }
    void smoothing()
    {
        QFETCH(Points, samples);
        QFETCH(QList<Points>, expected);
        const BezierPath path = stroke(samples);
        QVERIFY2(
            fuzzyEqual(elements(path), expected), qPrintable(QString::number(path.elementCount())));
    }

    void eachSampleTouchesOnlyTheEndOfTheStroke()
    {
        BezierPath path;
        for (int i = 0; i < 200; ++i) {
            const QList<Points> before = elements(path);
            addPointToPath(QPointF(i * 3.0, (i % 7) * 5.0), path);
            const QList<Points> after = elements(path);
            QCOMPARE(after.size(), before.size() + 1);
            if (before.size() > 2)
                QCOMPARE(after.mid(0, before.size() - 1), before.mid(0, before.size() - 1));
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
        QTest::newRow("4.5 off") << 1.0 << QPointF(150, 104.5) << false;
        QTest::newRow("width 3 stays at 4") << 3.0 << QPointF(150, 104.5) << false;
        QTest::newRow("width 20 reaches 10") << 20.0 << QPointF(150, 109.5) << true;
        QTest::newRow("width 20 stops at 10") << 20.0 << QPointF(150, 110.5) << false;
        QTest::newRow("upright part") << 1.0 << QPointF(197, 180) << true;
        QTest::newRow("in the box, away from the strokes") << 1.0 << QPointF(120, 180) << false;
        QTest::newRow("outside the box") << 1.0 << QPointF(300, 100) << false;
    }
    void hit()
    {
        QFETCH(double, width);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        const auto ink = makeInk(
            { { { 100, 100 }, { 150, 100 }, { 200, 100 }, { 200, 150 }, { 200, 200 } } }, width);
        QVERIFY(ink);
        QCOMPARE(inkHitTest(*ink, point), hit);
    }

    void singleSampleIsNeverHit()
    {
        const auto ink = makeInk({ { { 100, 100 } } });
        QVERIFY(!inkHitTest(*ink, QPointF(100, 100)));
    }

    void boundsHoldThePathsAndThePathsComeBack()
    {
        const QList<Points> strokes { { { 10.5, 20 }, { 25, 20 }, { 40, 20 } },
            { { 30, 60.2 }, { 50, 70 } } };
        const auto ink = makeInk(strokes);
        // Integral box of the strokes (the flat one grown by 0.1), then 8 on every side.
        QCOMPARE(ink->bounds(), QRectF(2, 11, 56, 67));
        const QList<BezierPath> onPage = pagePaths(*ink);
        QCOMPARE(onPage.size(), 2);
        QVERIFY(fuzzyEqual(elements(onPage[0]), elements(stroke(strokes[0]))));
        QVERIFY(fuzzyEqual(elements(onPage[1]), elements(stroke(strokes[1]))));
        QCOMPARE(pointLists(*ink).at(1).last(), QPointF(50, 70) - ink->bounds().topLeft());
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

    void displayRectHoldsTheStrokes()
    {
        const auto ink = makeInk({ { { 100, 100 }, { 200, 100 } } });
        const QRectF bounds = ink->bounds();
        QCOMPARE(inkDisplayRectForBounds(*ink, bounds, 0), bounds);
        // A stroke moved beyond the bounds widens the repaint area by its width.
        moveByOffset(*ink, QSizeF(30, 0));
        QCOMPARE(inkDisplayRectForBounds(*ink, bounds, 6).right(), 230.0 + 7.0);
    }

    void moveByOffsetMovesTheStrokesAgainstTheBounds()
    {
        const auto ink = makeInk(
            { { { 100, 100 }, { 150, 100 }, { 200, 100 } }, { { 100, 150 }, { 120, 150 } } });
        const QRectF bounds = ink->bounds();
        const auto first = ink->paths().at(0);
        moveByOffset(*ink, QSizeF(0, 20));
        QCOMPARE(ink->bounds(), bounds);
        QCOMPARE(ink->paths().at(0), first); // same order
        QVERIFY(inkHitTest(*ink, QPointF(150, 120)));
        QVERIFY(!inkHitTest(*ink, QPointF(150, 100)));
        QCOMPARE(pagePaths(*ink).at(1).currentPoint(), QPointF(120, 170));
    }
};

QTEST_MAIN(InkTest)
#include "InkTest.moc"
