#include "support/AppTestEnvironment.h"

#include <app/FDDefaults.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/tabs/QKThemeProvider.h>
#include <support/DesktopPortal.h>

#include <QApplication>
#include <QDialog>
#include <QMenu>

#include <QThread>
#include <QtConcurrent>
#include <QtTest>

class FDThemeProviderTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
        FDThemeProvider::resetCurrentForTesting();
        m_posted.clear();
        m_postedOnMain.clear();
        for (const QString &name : { FDThemeProvider::ThemeWillChangeNotification,
                 FDThemeProvider::ThemeDidChangeNotification })
            NotificationCenter::qkCenter().addObserver(
                this, name, nullptr, [this](const Notification &notification) {
                    m_posted << notification.name;
                    m_postedOnMain << (QThread::currentThread() == qApp->thread());
                });
    }

    void cleanup() { NotificationCenter::qkCenter().removeObserver(this); }

    void firstReadChoosesTheTheme_data()
    {
        QTest::addColumn<int>("remember");
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("expected");
        QTest::newRow("new user starts with the system theme") << 1 << -2 << FDTheme::system;
        QTest::newRow("remembered night") << 1 << 4 << FDTheme::night;
        QTest::newRow("remembered red") << 1 << 0 << FDTheme::red;
        QTest::newRow("remembered system") << 1 << 5 << FDTheme::system;
        QTest::newRow("stored 7 is no theme: system") << 1 << 7 << FDTheme::system;
        QTest::newRow("not remembering: system over 4") << 0 << 4 << FDTheme::system;
    }

    void firstReadChoosesTheTheme()
    {
        QFETCH(int, remember);
        QFETCH(int, stored);
        QFETCH(int, expected);
        UserDefaults &store = UserDefaults::standard();
        store.setInteger(remember, FDDefaults::RememberCurrentTheme);
        if (stored != -2)
            store.setInteger(stored, FDDefaults::CurrentTheme);

        QCOMPARE(FDThemeProvider::current()->id(), expected);
        // The first read applies the theme: both notifications, and the id written back.
        const QStringList both { FDThemeProvider::ThemeWillChangeNotification,
            FDThemeProvider::ThemeDidChangeNotification };
        QCOMPARE(m_posted, both);
        QCOMPARE(store.integerForKey(FDDefaults::CurrentTheme), expected);
        // Later reads apply nothing.
        QCOMPARE(FDThemeProvider::current()->id(), expected);
        QCOMPARE(m_posted.size(), 2);
    }

    void firstReadOfTheStoredThemeLeavesTheFileAlone()
    {
        // Start-up reads the theme before the first screen: a write there would wait for the disk.
        UserDefaults::standard().setInteger(FDTheme::night, FDDefaults::CurrentTheme);
        QFile file(UserDefaults::storePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        const QDateTime written = QFileInfo(file).lastModified();
        file.close();
        QTest::qWait(20);
        QCOMPARE(FDThemeProvider::current()->id(), FDTheme::night);
        QCOMPARE(QFileInfo(file).lastModified(), written);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), before);
    }

    void settingWritesTheIdAndTheFrameFollows()
    {
        UserDefaults::standard().setInteger(0, FDDefaults::RememberCurrentTheme);
        FDThemeProvider::current();
        m_posted.clear();
        FDThemeProvider::setCurrent(FDThemeProvider::night());
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::night());
        QCOMPARE(UserDefaults::standard().integerForKey(FDDefaults::CurrentTheme), 4);
        QCOMPARE(m_posted.size(), 2);
        const QKThemeProvider &frames = QKThemeProvider::sharedInstance();
        QVERIFY(frames.current() == frames.night());
        FDThemeProvider::setCurrent(FDThemeProvider::sunset());
        QVERIFY(frames.current() == frames.day());
        QVERIFY(!(frames.day() == frames.night()));
    }

    void firstReadFromAWorkerHopsToTheMainThread()
    {
        UserDefaults::standard().setInteger(3, FDDefaults::CurrentTheme);
        QFuture<int> read = QtConcurrent::run([] { return FDThemeProvider::current()->id(); });
        QTRY_VERIFY(read.isFinished());
        QCOMPARE(read.result(), FDTheme::sunset);
        QCOMPARE(m_posted.size(), 2);
        QCOMPARE(m_postedOnMain, (QList<bool> { true, true }));
    }

    void systemFollowsTheDesktopWhileRunning()
    {
        if (!portal)
            QSKIP("dbus-daemon is not installed");
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(FDTheme::system));
        QCOMPARE(FDThemeProvider::current()->id(), FDTheme::system);
        QVERIFY(!FDThemeProvider::current()->isDark());
        QCOMPARE(FDThemeProvider::current()->color(FDTheme::primaryColor),
            FDThemeProvider::blue()->color(FDTheme::primaryColor));
        m_posted.clear();

        // The person switches the desktop to dark: window, tab strip and menus follow at once.
        portal->setColorScheme(1);
        QTRY_VERIFY(FDThemeProvider::current()->isDark());
        QCOMPARE(FDThemeProvider::current()->id(), FDTheme::system);
        QCOMPARE(FDThemeProvider::current()->color(FDTheme::pageBackgroundColor),
            FDThemeProvider::night()->color(FDTheme::pageBackgroundColor));
        QVERIFY(QKThemeProvider::sharedInstance().current().isDark());
        QMenu menu;
        QVERIFY(menu.palette().color(QPalette::Window).lightness() < 80);
        QVERIFY(menu.palette().color(QPalette::WindowText).lightness() > 180);
        QCOMPARE(m_posted.size(), 2);
        QCOMPARE(UserDefaults::standard().integerForKey(FDDefaults::CurrentTheme), FDTheme::system);

        // A chosen theme stays when the desktop changes; choosing system again takes the desktop's.
        FDThemeProvider::setCurrent(FDThemeProvider::sunset());
        portal->setColorScheme(2);
        QTRY_VERIFY(!FDThemeProvider::system()->isDark());
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::sunset());
        portal->setColorScheme(1);
        QTRY_VERIFY(FDThemeProvider::system()->isDark());
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::sunset());
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(FDTheme::system));
        QVERIFY(FDThemeProvider::current()->isDark());
        portal->setColorScheme(2);
        QTRY_VERIFY(!FDThemeProvider::current()->isDark());
        QVERIFY(QMenu().palette().color(QPalette::Window).lightness() > 180);
    }

    void everyThemeGivesMenusTheWindowsPalette()
    {
        for (int id = 0; id <= FDTheme::system; ++id) {
            FDThemeProvider::setCurrent(FDThemeProvider::themeFor(id));
            const FDTheme *theme = FDThemeProvider::current();
            QMenu menu;
            QDialog dialog;
            const QColor window = theme->windowTheme()->windowBackgroundColor();
            QCOMPARE(menu.palette().color(QPalette::Window), window);
            QCOMPARE(dialog.palette().color(QPalette::Window), window);
            // Text is readable on it, and a highlighted item stands out.
            const int contrast
                = qAbs(menu.palette().color(QPalette::WindowText).lightness() - window.lightness());
            QVERIFY2(contrast > 120, qPrintable(QString::number(id)));
            QVERIFY(menu.palette().color(QPalette::Highlight) != window);
        }
    }

public:
    // The desktop's portal, light at launch; null without dbus-daemon.
    DesktopPortal *portal = nullptr;

private:
    QStringList m_posted;
    QList<bool> m_postedOnMain;
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    // The desktop's portal answers on the session bus the application will use.
    auto portal = std::make_unique<DesktopPortal>();
    if (!portal->busAddress().isEmpty())
        qputenv("DBUS_SESSION_BUS_ADDRESS", portal->busAddress().toUtf8());
    QApplication app(argc, argv);
    const bool published = !portal->busAddress().isEmpty() && portal->publish(2);
    FDThemeProviderTest test;
    test.portal = published ? portal.get() : nullptr;
    const int failures = QTest::qExec(&test, argc, argv);
    // The portal's thread needs the application to leave the bus.
    portal.reset();
    return failures;
}

#include "FDThemeProviderTest.moc"
