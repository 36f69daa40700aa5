// Colours: sort keys, equality, swatches, scripting forms and colours kept in the preferences.

#include <annotation/values/NSColor+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>

#include <kit/base/Archiver.h>
#include <kit/base/UserDefaults.h>

#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

class ColorValuesTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_config;

private slots:
    void sortKeyOrdersByHueThenSaturation()
    {
        const QColor grey(128, 128, 128), red(Qt::red), paleRed(255, 128, 128), yellow(Qt::yellow),
            green(Qt::green), blue(Qt::blue);
        QList<QColor> colors { blue, paleRed, green, grey, yellow, red };
        std::sort(colors.begin(), colors.end(),
            [](const QColor &a, const QColor &b) { return colorCompare(a, b) < 0; });
        QCOMPARE(colors, (QList<QColor> { grey, paleRed, red, yellow, green, blue }));
        QCOMPARE(uint32HSBAValue(red), 0x00ffffffu);
        QCOMPARE(uint32HSBAValue(blue), 0xaaffffffu);
        QCOMPARE(uint32HSBAValue(QColor::fromRgbF(0, 0, 0, 0.5f)), 0x0000007fu);
        QCOMPARE(uint32HSBAValue(QColor()), 0u);
    }

    void equalityTolerance_data()
    {
        QTest::addColumn<QColor>("a");
        QTest::addColumn<QColor>("b");
        QTest::addColumn<bool>("equal");
        QTest::newRow("red 0.50 and 0.55")
            << QColor::fromRgbF(0.50f, 0.2f, 0.2f) << QColor::fromRgbF(0.55f, 0.2f, 0.2f) << true;
        QTest::newRow("red 0.50 and 0.56")
            << QColor::fromRgbF(0.50f, 0.2f, 0.2f) << QColor::fromRgbF(0.56f, 0.2f, 0.2f) << false;
        QTest::newRow("HSV form of the same colour")
            << QColor(Qt::red).toHsv() << QColor::fromRgbF(0.98f, 0.0f, 0.03f) << true;
        QTest::newRow("invalid and black") << QColor() << QColor(Qt::black) << false;
    }
    void equalityTolerance()
    {
        QFETCH(QColor, a);
        QFETCH(QColor, b);
        QFETCH(bool, equal);
        QCOMPARE(isEqual_(a, b), equal);
        QCOMPARE(isEqual_(b, a), equal);
    }

    void scriptingDescriptorRoundTrips()
    {
        const QColor color = QColor::fromRgbF(1.0f, 0.5f, 0.0f, 0.25f);
        const QList<int> descriptor = scriptingRgbaColorDescriptor(color);
        QCOMPARE(descriptor, (QList<int> { 65535, 32768, 0, 16384 }));
        QCOMPARE(scriptingRgbaColorWithDescriptor(descriptor), color);
        // A list without alpha is opaque; values beyond the range are pulled in.
        QCOMPARE(scriptingRgbaColorWithDescriptor({ 70000, -4, 0 }), QColor(255, 0, 0, 255));
    }

    void swatchShowsColourAndTransparency()
    {
        QImage image(40, 24, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            drawSwatchInRoundedRect(QColor(Qt::red), painter, QRectF(0, 0, 20, 24));
            drawSwatchInRoundedRect(QColor(0, 0, 255, 100), painter, QRectF(20, 0, 20, 24));
        }
        QCOMPARE(image.pixelColor(10, 12), QColor(Qt::red));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0); // the rounded corner leaves it untouched
        QVERIFY(image.pixelColor(10, 0).alpha() > 0); // the border along the top edge
        // Under the translucent swatch the checkerboard shows: two different shades, both opaque.
        const QColor a = image.pixelColor(25, 9), b = image.pixelColor(29, 9);
        QCOMPARE(a.alpha(), 255);
        QCOMPARE(b.alpha(), 255);
        QVERIFY(a != b);
        QVERIFY(a.blue() > a.red() && b.blue() > b.red());
    }

    void initTestCase()
    {
        QVERIFY(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
    }

    void colorForKey_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QColor>("color");
        const QColor clear(0, 0, 0, 0);
        QTest::newRow("grey with alpha")
            << QVariant(QVariantList { 0.5, 0.25 }) << QColor::fromRgbF(0.5, 0.5, 0.5, 0.25);
        QTest::newRow("one number is an opaque grey")
            << QVariant(QVariantList { 0.75 }) << QColor::fromRgbF(0.75, 0.75, 0.75);
        QTest::newRow("fourth is alpha, fifth ignored") << QVariant(
            QVariantList { 0.1, 0.2, 0.3, 0.4, 0.9 }) << QColor::fromRgbF(0.1, 0.2, 0.3, 0.4);
        QTest::newRow("out of range clamped")
            << QVariant(QVariantList { 2.0, -1.0 }) << QColor::fromRgbF(1, 1, 1, 0);
        QTest::newRow("numbers as text")
            << QVariant(QStringList { "0.5", "0.25" }) << QColor::fromRgbF(0.5, 0.5, 0.5, 0.25);
        QTest::newRow("a word in the list") << QVariant(QVariantList { 0.5, "red" }) << clear;
        QTest::newRow("nothing") << QVariant() << clear;
        QTest::newRow("data that is no colour")
            << QVariant(Archiver::archivedData(QStringLiteral("red"))) << QColor();
    }
    void colorForKey()
    {
        QFETCH(QVariant, stored);
        QFETCH(QColor, color);
        UserDefaults defaults;
        defaults.setObject(stored, "Ann_TestColor");
        const QColor read = ::colorForKey(defaults, "Ann_TestColor");
        QCOMPARE(read.isValid(), color.isValid());
        if (color.isValid())
            QCOMPARE(read.toRgb().rgba64(), color.toRgb().rgba64());
    }

    void storedColorReadsBackAndInvalidRemovesIt()
    {
        UserDefaults defaults;
        const QColor color = QColor::fromRgbF(0.2f, 0.4f, 0.6f, 0.8f);
        setColorForKey(defaults, color, "Ann_TestColor");
        QVERIFY(defaults.synchronize());
        QCOMPARE(::colorForKey(UserDefaults(), "Ann_TestColor"), color);
        setColorForKey(defaults, QColor(), "Ann_TestColor");
        QVERIFY(!defaults.objectForKey("Ann_TestColor").isValid());
        QCOMPARE(::colorForKey(defaults, "Ann_TestColor"), QColor(0, 0, 0, 0));
    }
};

QTEST_MAIN(ColorValuesTest)
#include "ColorValuesTest.moc"
