#include <kit/base/Geometry.h>

#include <QTest>

#include <cmath>
#include <limits>

using namespace Geometry;

class GeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void pointInRectFollowsEdgeRules_data()
    {
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<bool>("inside");
        const QRectF r(10, 20, 30, 40);
        QTest::newRow("interior") << QPointF(20, 30) << r << true;
        QTest::newRow("lower-left corner") << QPointF(10, 20) << r << true;
        QTest::newRow("left edge") << QPointF(10, 50) << r << true;
        QTest::newRow("lower edge") << QPointF(25, 20) << r << true;
        QTest::newRow("right edge") << QPointF(40, 30) << r << false;
        QTest::newRow("upper edge") << QPointF(20, 60) << r << false;
        QTest::newRow("upper-right corner") << QPointF(40, 60) << r << false;
        QTest::newRow("just below upper edge") << QPointF(39.999, 59.999) << r << true;
        QTest::newRow("left of rect") << QPointF(9.999, 30) << r << false;
        QTest::newRow("zero width") << QPointF(10, 30) << QRectF(10, 20, 0, 40) << false;
        QTest::newRow("zero height") << QPointF(15, 20) << QRectF(10, 20, 30, 0) << false;
        QTest::newRow("negative width") << QPointF(5, 30) << QRectF(10, 20, -10, 40) << false;
    }
    void pointInRectFollowsEdgeRules()
    {
        QFETCH(QPointF, point);
        QFETCH(QRectF, rect);
        QFETCH(bool, inside);
        QCOMPARE(pointInRect(point, rect), inside);
    }

    void integralRectFloorsOriginAndCeilsFarCorner_data()
    {
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("fractional") << QRectF(0.5, 1.2, 2.0, 2.5) << QRectF(0, 1, 3, 3);
        QTest::newRow("already integral") << QRectF(1, 2, 3, 4) << QRectF(1, 2, 3, 4);
        // The far corner, not the size, is ceiled: 0.9 + 0.2 = 1.1 reaches into 2.
        QTest::newRow("small span crosses") << QRectF(0.9, 0.9, 0.2, 0.2) << QRectF(0, 0, 2, 2);
        QTest::newRow("negative origin") << QRectF(-1.5, -0.5, 1, 1) << QRectF(-2, -1, 2, 2);
        QTest::newRow("empty width") << QRectF(3.5, 4.5, 0, 10) << QRectF(0, 0, 0, 0);
        QTest::newRow("negative height") << QRectF(3.5, 4.5, 2, -1) << QRectF(0, 0, 0, 0);
    }
    void integralRectFloorsOriginAndCeilsFarCorner()
    {
        QFETCH(QRectF, rect);
        QFETCH(QRectF, expected);
        QVERIFY(equalRects(integralRect(rect), expected));
    }

    void unionAndIntersection_data()
    {
        QTest::addColumn<QRectF>("a");
        QTest::addColumn<QRectF>("b");
        QTest::addColumn<QRectF>("united");
        QTest::addColumn<QRectF>("intersected");
        QTest::addColumn<bool>("intersects");
        const QRectF zero(0, 0, 0, 0);
        QTest::newRow("overlap") << QRectF(0, 0, 10, 10) << QRectF(5, 5, 10, 10)
                                 << QRectF(0, 0, 15, 15) << QRectF(5, 5, 5, 5) << true;
        QTest::newRow("apart") << QRectF(0, 0, 1, 1) << QRectF(5, 5, 1, 1) << QRectF(0, 0, 6, 6)
                               << zero << false;
        QTest::newRow("touching edges") << QRectF(0, 0, 10, 10) << QRectF(10, 0, 5, 10)
                                        << QRectF(0, 0, 15, 10) << zero << false;
        // An empty rect far away must not stretch the union towards it.
        QTest::newRow("empty adds nothing")
            << QRectF(5, 5, 2, 2) << QRectF(100, 100, 0, 0) << QRectF(5, 5, 2, 2) << zero << false;
        QTest::newRow("empty first")
            << QRectF(-50, -50, 0, 3) << QRectF(5, 5, 2, 2) << QRectF(5, 5, 2, 2) << zero << false;
        QTest::newRow("both empty")
            << QRectF(1, 1, 0, 0) << QRectF(2, 2, -1, 3) << zero << zero << false;
        QTest::newRow("nested") << QRectF(0, 0, 10, 10) << QRectF(2, 3, 4, 5)
                                << QRectF(0, 0, 10, 10) << QRectF(2, 3, 4, 5) << true;
    }
    void unionAndIntersection()
    {
        QFETCH(QRectF, a);
        QFETCH(QRectF, b);
        QFETCH(QRectF, united);
        QFETCH(QRectF, intersected);
        QFETCH(bool, intersects);
        QVERIFY2(equalRects(unionRect(a, b), united), qPrintable(stringFromRect(unionRect(a, b))));
        QVERIFY2(equalRects(unionRect(b, a), united), "union must be symmetric");
        QVERIFY(equalRects(intersectionRect(a, b), intersected));
        QCOMPARE(intersectsRect(a, b), intersects);
        QCOMPARE(intersectsRect(b, a), intersects);
    }

    void containsRectNeedsNonEmptyInner_data()
    {
        QTest::addColumn<QRectF>("outer");
        QTest::addColumn<QRectF>("inner");
        QTest::addColumn<bool>("contains");
        const QRectF outer(0, 0, 10, 10);
        QTest::newRow("inside") << outer << QRectF(1, 1, 2, 2) << true;
        QTest::newRow("same rect") << outer << outer << true;
        QTest::newRow("sticks out") << outer << QRectF(9, 9, 2, 1) << false;
        QTest::newRow("empty inner") << outer << QRectF(1, 1, 0, 2) << false;
    }
    void containsRectNeedsNonEmptyInner()
    {
        QFETCH(QRectF, outer);
        QFETCH(QRectF, inner);
        QFETCH(bool, contains);
        QCOMPARE(containsRect(outer, inner), contains);
    }

    void divideRectCutsFromEachEdge_data()
    {
        QTest::addColumn<int>("edge");
        QTest::addColumn<double>("amount");
        QTest::addColumn<QRectF>("slice");
        QTest::addColumn<QRectF>("remainder");
        QTest::newRow("min x") << int(RectEdge::MinX) << 3.0 << QRectF(10, 20, 3, 40)
                               << QRectF(13, 20, 27, 40);
        QTest::newRow("max x") << int(RectEdge::MaxX) << 3.0 << QRectF(37, 20, 3, 40)
                               << QRectF(10, 20, 27, 40);
        QTest::newRow("min y") << int(RectEdge::MinY) << 5.0 << QRectF(10, 20, 30, 5)
                               << QRectF(10, 25, 30, 35);
        QTest::newRow("max y") << int(RectEdge::MaxY) << 5.0 << QRectF(10, 55, 30, 5)
                               << QRectF(10, 20, 30, 35);
        QTest::newRow("amount beyond width")
            << int(RectEdge::MinX) << 99.0 << QRectF(10, 20, 30, 40) << QRectF(40, 20, 0, 40);
        QTest::newRow("negative amount")
            << int(RectEdge::MaxY) << -4.0 << QRectF(10, 60, 30, 0) << QRectF(10, 20, 30, 40);
    }
    void divideRectCutsFromEachEdge()
    {
        QFETCH(int, edge);
        QFETCH(double, amount);
        QFETCH(QRectF, slice);
        QFETCH(QRectF, remainder);
        QRectF s;
        QRectF r;
        divideRect(QRectF(10, 20, 30, 40), &s, &r, amount, RectEdge(edge));
        QVERIFY2(equalRects(s, slice), qPrintable(stringFromRect(s)));
        QVERIFY2(equalRects(r, remainder), qPrintable(stringFromRect(r)));
    }

    void divideEmptyRectGivesZeroRects()
    {
        QRectF s(1, 1, 1, 1);
        QRectF r(1, 1, 1, 1);
        divideRect(QRectF(5, 5, 0, 10), &s, &r, 2, RectEdge::MinY);
        QVERIFY(equalRects(s, QRectF(0, 0, 0, 0)));
        QVERIFY(equalRects(r, QRectF(0, 0, 0, 0)));
    }

    void insetStandardizeAndEmptiness()
    {
        QVERIFY(equalRects(insetRect(QRectF(0, 0, 10, 8), 2, 1), QRectF(2, 1, 6, 6)));
        QVERIFY(isEmptyRect(insetRect(QRectF(0, 0, 10, 8), 6, 1)));
        QVERIFY(equalRects(offsetRect(QRectF(1, 2, 3, 4), -1, 5), QRectF(0, 7, 3, 4)));
        QVERIFY(equalRects(standardizeRect(QRectF(10, 10, -4, -6)), QRectF(6, 4, 4, 6)));
        QVERIFY(isEmptyRect(QRectF(0, 0, std::nan(""), 5)));
        QVERIFY(!equalRects(QRectF(0, 0, 1, 1), QRectF(0, 0, 1, 1.0000001)));
    }

    void textFormsUseShortestNumbers_data()
    {
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<QString>("text");
        QTest::newRow("integers") << QRectF(1, 2, 3, 4) << "{{1, 2}, {3, 4}}";
        QTest::newRow("halves") << QRectF(0.5, -1.5, 10, 0.25) << "{{0.5, -1.5}, {10, 0.25}}";
        QTest::newRow("third") << QRectF(1.0 / 3, 0, 0.1, 2)
                               << "{{0.3333333333333333, 0}, {0.1, 2}}";
        QTest::newRow("negative zero") << QRectF(-0.0, -0.0, 1, 1) << "{{0, 0}, {1, 1}}";
        QTest::newRow("large") << QRectF(1e21, 123456789, 1, 1) << "{{1e+21, 123456789}, {1, 1}}";
    }
    void textFormsUseShortestNumbers()
    {
        QFETCH(QRectF, rect);
        QFETCH(QString, text);
        QCOMPARE(stringFromRect(rect), text);
        QVERIFY(equalRects(rectFromString(text), rect));
    }

    void textFormsRoundTripExactly()
    {
        const double values[] = { 0.1, 1.0 / 3, 2.0 / 3, 1e-300, 612.0000000000001, -7.25e10,
            std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min() };
        for (const double v : values) {
            const QPointF p(v, -v);
            QVERIFY2(equalPoints(pointFromString(stringFromPoint(p)), p),
                qPrintable(stringFromPoint(p)));
            const QSizeF s(v, 2 * v);
            QVERIFY(equalSizes(sizeFromString(stringFromSize(s)), s));
        }
        QCOMPARE(stringFromPoint(QPointF(3, 0.75)), QStringLiteral("{3, 0.75}"));
        QCOMPARE(stringFromSize(QSizeF(612, 792)), QStringLiteral("{612, 792}"));
    }

    void parsersRejectOtherText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("written form") << "{{1, 2}, {3, 4}}" << true;
        QTest::newRow("surrounding spaces") << "  {{1, 2}, {3, 4}}\n" << true;
        QTest::newRow("tight") << "{{1,2},{3,4}}" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("missing brace") << "{{1, 2}, {3, 4}" << false;
        QTest::newRow("trailing text") << "{{1, 2}, {3, 4}} x" << false;
        QTest::newRow("word") << "{{1, two}, {3, 4}}" << false;
        QTest::newRow("three numbers") << "{{1, 2, 5}, {3, 4}}" << false;
        QTest::newRow("point instead") << "{1, 2}" << false;
    }
    void parsersRejectOtherText()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        const QRectF parsed = rectFromString(text);
        QCOMPARE(equalRects(parsed, QRectF(1, 2, 3, 4)), valid);
        if (!valid)
            QVERIFY(equalRects(parsed, QRectF(0, 0, 0, 0)));
    }

    void pointAndSizeParsersRejectOtherText()
    {
        QVERIFY(equalPoints(pointFromString(QStringLiteral(" {1.5, -2} ")), QPointF(1.5, -2)));
        QVERIFY(equalPoints(pointFromString(QStringLiteral("{1.5 -2}")), QPointF(0, 0)));
        QVERIFY(equalPoints(pointFromString(QStringLiteral("{{1, 2}, {3, 4}}")), QPointF(0, 0)));
        QVERIFY(equalSizes(sizeFromString(QStringLiteral("{3, 4")), QSizeF(0, 0)));
        QVERIFY(equalSizes(sizeFromString(QStringLiteral("{3, 4}")), QSizeF(3, 4)));
    }
};

QTEST_GUILESS_MAIN(GeometryTest)
#include "GeometryTest.moc"
