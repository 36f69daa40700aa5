#include <kit/base/Geometry.h>

#include <QTest>

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
        QTest::newRow("lower-left corner") << QPointF(10, 20) << r << true;
        QTest::newRow("left edge") << QPointF(10, 50) << r << true;
        QTest::newRow("right edge") << QPointF(40, 30) << r << false;
        QTest::newRow("upper edge") << QPointF(20, 60) << r << false;
        QTest::newRow("just inside far corner") << QPointF(39.999, 59.999) << r << true;
        QTest::newRow("zero width") << QPointF(10, 30) << QRectF(10, 20, 0, 40) << false;
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
        // The far corner, not the size, is ceiled: 0.9 + 0.2 reaches into 2.
        QTest::newRow("small span") << QRectF(0.9, 0.9, 0.2, 0.2) << QRectF(0, 0, 2, 2);
        QTest::newRow("negative origin") << QRectF(-1.5, -0.5, 1, 1) << QRectF(-2, -1, 2, 2);
        QTest::newRow("empty") << QRectF(3.5, 4.5, 0, 10) << QRectF(0, 0, 0, 0);
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
        const QRectF zero(0, 0, 0, 0);
        QTest::newRow("overlap") << QRectF(0, 0, 10, 10) << QRectF(5, 5, 10, 10)
                                 << QRectF(0, 0, 15, 15) << QRectF(5, 5, 5, 5);
        QTest::newRow("touching") << QRectF(0, 0, 10, 10) << QRectF(10, 0, 5, 10)
                                  << QRectF(0, 0, 15, 10) << zero;
        // An empty rect far away must not stretch the union towards it.
        QTest::newRow("empty adds nothing")
            << QRectF(5, 5, 2, 2) << QRectF(100, 100, 0, 0) << QRectF(5, 5, 2, 2) << zero;
        QTest::newRow("both empty") << QRectF(1, 1, 0, 0) << QRectF(2, 2, -1, 3) << zero << zero;
    }
    void unionAndIntersection()
    {
        QFETCH(QRectF, a);
        QFETCH(QRectF, b);
        QFETCH(QRectF, united);
        QFETCH(QRectF, intersected);
        QVERIFY2(equalRects(unionRect(a, b), united), qPrintable(stringFromRect(unionRect(a, b))));
        QVERIFY(equalRects(unionRect(b, a), united));
        QVERIFY(equalRects(intersectionRect(a, b), intersected));
        QCOMPARE(intersectsRect(a, b), !isEmptyRect(intersected));
    }

    void divideRectCutsFromEachEdge_data()
    {
        QTest::addColumn<int>("edge");
        QTest::addColumn<double>("amount");
        QTest::addColumn<QRectF>("slice");
        QTest::addColumn<QRectF>("remainder");
        QTest::newRow("min x") << int(RectEdge::MinX) << 3.0 << QRectF(10, 20, 3, 40)
                               << QRectF(13, 20, 27, 40);
        QTest::newRow("max y") << int(RectEdge::MaxY) << 5.0 << QRectF(10, 55, 30, 5)
                               << QRectF(10, 20, 30, 35);
        QTest::newRow("beyond width")
            << int(RectEdge::MaxX) << 99.0 << QRectF(10, 20, 30, 40) << QRectF(10, 20, 0, 40);
        QTest::newRow("negative") << int(RectEdge::MinY) << -4.0 << QRectF(10, 20, 30, 0)
                                  << QRectF(10, 20, 30, 40);
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
        divideRect(QRectF(5, 5, 0, 10), &s, &r, amount, RectEdge(edge));
        QVERIFY(equalRects(s, QRectF(0, 0, 0, 0)) && equalRects(r, QRectF(0, 0, 0, 0)));
    }

    void containmentInsetAndStandardize()
    {
        QVERIFY(containsRect(QRectF(0, 0, 10, 10), QRectF(0, 0, 10, 10)));
        QVERIFY(!containsRect(QRectF(0, 0, 10, 10), QRectF(9, 9, 2, 1)));
        QVERIFY(!containsRect(QRectF(0, 0, 10, 10), QRectF(1, 1, 0, 2)));
        QVERIFY(equalRects(insetRect(QRectF(0, 0, 10, 8), 2, 1), QRectF(2, 1, 6, 6)));
        QVERIFY(equalRects(standardizeRect(QRectF(10, 10, -4, -6)), QRectF(6, 4, 4, 6)));
    }

    void textFormsUseShortestNumbers_data()
    {
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<QString>("text");
        QTest::newRow("integers") << QRectF(1, 2, 3, 4) << "{{1, 2}, {3, 4}}";
        QTest::newRow("fractions")
            << QRectF(0.5, -1.5, 0.1, 1.0 / 3) << "{{0.5, -1.5}, {0.1, 0.3333333333333333}}";
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
        const double values[] = { 0.1, 2.0 / 3, 1e-300, 612.0000000000001, -7.25e10,
            std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min() };
        for (const double v : values) {
            QVERIFY(equalPoints(pointFromString(stringFromPoint(QPointF(v, -v))), QPointF(v, -v)));
            QVERIFY(equalSizes(sizeFromString(stringFromSize(QSizeF(v, 2))), QSizeF(v, 2)));
        }
        QCOMPARE(stringFromPoint(QPointF(3, 0.75)), QStringLiteral("{3, 0.75}"));
        QCOMPARE(stringFromSize(QSizeF(612, 792)), QStringLiteral("{612, 792}"));
        QVERIFY(equalPoints(pointFromString(QStringLiteral("{1.5 -2}")), QPointF(0, 0)));
        QVERIFY(equalPoints(pointFromString(QStringLiteral("{{1, 2}, {3, 4}}")), QPointF(0, 0)));
        QVERIFY(equalSizes(sizeFromString(QStringLiteral(" {3, 4")), QSizeF(0, 0)));
    }

    void parsersRejectOtherText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("surrounding spaces") << "  {{1, 2}, {3, 4}}\n" << true;
        QTest::newRow("tight") << "{{1,2},{3,4}}" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("missing brace") << "{{1, 2}, {3, 4}" << false;
        QTest::newRow("trailing text") << "{{1, 2}, {3, 4}} x" << false;
        QTest::newRow("word") << "{{1, two}, {3, 4}}" << false;
        QTest::newRow("three numbers") << "{{1, 2, 5}, {3, 4}}" << false;
    }
    void parsersRejectOtherText()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QVERIFY(equalRects(rectFromString(text), valid ? QRectF(1, 2, 3, 4) : QRectF(0, 0, 0, 0)));
    }
};

QTEST_GUILESS_MAIN(GeometryTest)
#include "GeometryTest.moc"
