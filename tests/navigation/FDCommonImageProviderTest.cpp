#include "app/support/AppWindow.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <navigation/FDCommonImageProvider.h>

#include <QtTest>

// The markers of a split's views: the two letters differ, the states differ, and a theme change
// draws them again in the new theme's colours.
namespace {

QImage pixels(const QIcon &icon)
{
    return icon.pixmap(QSize(FDCommonImageProvider::iconSize, FDCommonImageProvider::iconSize), 1.0)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

QColor centreFill(const QIcon &icon)
{
    // The corner of the letter's box, away from the letter itself.
    return pixels(icon).pixelColor(3, 3);
}

} // namespace

class FDCommonImageProviderTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        FDThemeProvider::setCurrent(FDThemeProvider::blue());
    }

    void markersAreDistinctImages()
    {
        FDCommonImageProvider &provider = FDCommonImageProvider::shared();
        const QList<QImage> images { pixels(provider.primaryIndicatorOnStateIcon()),
            pixels(provider.primaryIndicatorOffStateIcon()),
            pixels(provider.secondaryIndicatorOnStateIcon()),
            pixels(provider.secondaryIndicatorOffStateIcon()), pixels(provider.enabledMarkIcon()),
            pixels(provider.disabledMarkIcon()) };
        for (int first = 0; first < images.size(); ++first) {
            QVERIFY(!images.at(first).isNull());
            for (int second = first + 1; second < images.size(); ++second)
                QVERIFY2(images.at(first) != images.at(second),
                    qPrintable(QStringLiteral("%1 and %2 look the same").arg(first).arg(second)));
        }
        QCOMPARE(centreFill(provider.primaryIndicatorOnStateIcon()),
            FDThemeProvider::blue()->color(FDTheme::primaryColor));
    }

    void themeChangeRedrawsTheMarkers_data()
    {
        QTest::addColumn<int>("theme");
        QTest::newRow("red") << FDTheme::red;
        QTest::newRow("green") << FDTheme::green;
        QTest::newRow("sunset") << FDTheme::sunset;
    }

    void themeChangeRedrawsTheMarkers()
    {
        QFETCH(int, theme);
        FDCommonImageProvider &provider = FDCommonImageProvider::shared();
        const QImage before = pixels(provider.secondaryIndicatorOnStateIcon());
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(theme));
        const QColor wanted = FDThemeProvider::themeFor(theme)->color(FDTheme::primaryColor);
        QCOMPARE(centreFill(provider.secondaryIndicatorOnStateIcon()), wanted);
        QCOMPARE(centreFill(provider.primaryIndicatorOnStateIcon()), wanted);
        QVERIFY(pixels(provider.secondaryIndicatorOnStateIcon()) != before);
    }
};

FOLIDOC_APP_TEST_MAIN(FDCommonImageProviderTest)

#include "FDCommonImageProviderTest.moc"
