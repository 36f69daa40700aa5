#include <kit/base/DesktopColorScheme.h>

#include <support/DesktopPortal.h>

#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

namespace {

QPalette desktopPalette(bool dark)
{
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? QColor(40, 40, 40) : QColor(240, 240, 240));
    palette.setColor(QPalette::WindowText, dark ? QColor(230, 230, 230) : QColor(20, 20, 20));
    return palette;
}

} // namespace

class DesktopColorSchemeTest : public QObject
{
    Q_OBJECT

private slots:
    void portalDecidesAndPaletteFallsBack_data()
    {
        QTest::addColumn<bool>("readAhead"); // the answer read on a thread before the instance
        QTest::addColumn<int>("portal"); // -1: no portal on the bus
        QTest::addColumn<bool>("darkPalette");
        QTest::addColumn<bool>("dark");
        for (const bool readAhead : { false, true }) {
            const char *const how = readAhead ? "read ahead: " : "";
            const auto row = [&](const char *name) -> QTestData & {
                return QTest::addRow("%s%s", how, name) << readAhead;
            };
            row("no portal, light palette") << -1 << false << false;
            row("no portal, dark palette") << -1 << true << true;
            row("portal prefers dark over a light palette") << 1 << false << true;
            row("portal prefers light over a dark palette") << 2 << true << false;
            row("portal without preference, dark palette") << 0 << true << true;
            row("portal without preference, light palette") << 0 << false << false;
            row("unknown value counts as none") << 9 << true << true;
        }
    }

    void portalDecidesAndPaletteFallsBack()
    {
        QFETCH(bool, readAhead);
        QFETCH(int, portal);
        QFETCH(bool, darkPalette);
        QFETCH(bool, dark);
        DesktopPortal desktop;
        if (desktop.busAddress().isEmpty())
            QSKIP("dbus-daemon is not installed");
        if (portal >= 0)
            QVERIFY(desktop.publish(uint(portal)));
        std::thread reading;
        if (readAhead)
            reading = DesktopColorScheme::readAheadOnThread(desktop.busAddress());
        // The instance waits for the thread's answer, whichever is first.
        DesktopColorScheme scheme(desktop.busAddress(), desktopPalette(darkPalette));
        if (reading.joinable())
            reading.join();
        QCOMPARE(scheme.isDark(), dark);
        if (!readAhead || portal < 0)
            return;
        // Read ahead or not, the instance follows later changes.
        QSignalSpy changed(&scheme, &DesktopColorScheme::darkChanged);
        desktop.setColorScheme(dark ? 2 : 1);
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(scheme.isDark(), !dark);
    }

    void changesWhileRunningAreFollowed()
    {
        DesktopPortal desktop;
        if (desktop.busAddress().isEmpty())
            QSKIP("dbus-daemon is not installed");
        QVERIFY(desktop.publish(2));
        DesktopColorScheme scheme(desktop.busAddress(), desktopPalette(false));
        QSignalSpy changed(&scheme, &DesktopColorScheme::darkChanged);
        QVERIFY(!scheme.isDark());

        desktop.setColorScheme(1);
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0).at(0).toBool(), true);
        QVERIFY(scheme.isDark());

        // Another setting, or the same value again, changes nothing.
        desktop.announce(QStringLiteral("accent-color"), QVariant::fromValue(2u));
        desktop.setColorScheme(1);
        desktop.setColorScheme(2);
        QTRY_COMPARE(changed.size(), 2);
        QCOMPARE(changed.at(1).at(0).toBool(), false);

        // Back to no preference: the palette decides, and a changed palette is followed.
        desktop.setColorScheme(0);
        QTRY_COMPARE(scheme.portalScheme(), DesktopColorScheme::NoPreference);
        QCOMPARE(changed.size(), 2);
        scheme.setDesktopPalette(desktopPalette(true));
        QCOMPARE(changed.size(), 3);
        QVERIFY(scheme.isDark());
    }
};

QTEST_MAIN(DesktopColorSchemeTest)
#include "DesktopColorSchemeTest.moc"
