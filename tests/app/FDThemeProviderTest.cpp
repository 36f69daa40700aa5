#include "support/AppTestEnvironment.h"

#include <app/FDDefaults.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/tabs/QKThemeProvider.h>

#include <QThread>
#include <QtConcurrent>
#include <QtTest>

class FDThemeProviderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstReadChoosesTheTheme_data();
    void firstReadChoosesTheTheme();
    void settingWritesTheIdAndTheFrameFollows();
    void nullThemeChangesNothing();
    void onlyNightIsDark();
    void selectedBackgroundFollowsPrimaryExceptAtNight();
    void sameAsRoleKeepsTheValueItTook();
    void lineWidthWithoutMainWindowIsOne();
    void firstReadFromAWorkerHopsToTheMainThread();

private:
    QStringList m_posted;
    QList<bool> m_postedOnMain;
};

void FDThemeProviderTest::init()
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

void FDThemeProviderTest::cleanup()
{
    NotificationCenter::qkCenter().removeObserver(this);
}

void FDThemeProviderTest::firstReadChoosesTheTheme_data()
{
    QTest::addColumn<int>("remember");
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("expected");
    QTest::newRow("new user starts blue") << 1 << -2 << FDTheme::blue;
    QTest::newRow("remembered night") << 1 << 4 << FDTheme::night;
    QTest::newRow("remembered red") << 1 << 0 << FDTheme::red;
    QTest::newRow("stored 7 is no theme: blue") << 1 << 7 << FDTheme::blue;
    QTest::newRow("not remembering: blue over 4") << 0 << 4 << FDTheme::blue;
}

void FDThemeProviderTest::firstReadChoosesTheTheme()
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

void FDThemeProviderTest::settingWritesTheIdAndTheFrameFollows()
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

void FDThemeProviderTest::nullThemeChangesNothing()
{
    FDThemeProvider::setCurrent(FDThemeProvider::green());
    m_posted.clear();
    FDThemeProvider::setCurrent(nullptr);
    QVERIFY(m_posted.isEmpty());
    QCOMPARE(FDThemeProvider::current(), FDThemeProvider::green());
    QCOMPARE(FDThemeProvider::themeFor(5), nullptr);
    QCOMPARE(FDThemeProvider::themeFor(-1), nullptr);
}

void FDThemeProviderTest::onlyNightIsDark()
{
    for (int id = 0; id < 5; ++id) {
        const FDTheme *theme = FDThemeProvider::themeFor(id);
        QVERIFY(theme);
        QCOMPARE(theme->id(), id);
        QCOMPARE(theme->isDark(), id == FDTheme::night);
        for (int role = 0; role < FDTheme::RoleCount; ++role)
            QVERIFY2(
                theme->color(FDTheme::Role(role)).isValid(), qPrintable(QString::number(role)));
    }
}

void FDThemeProviderTest::selectedBackgroundFollowsPrimaryExceptAtNight()
{
    for (const FDTheme *theme : { FDThemeProvider::red(), FDThemeProvider::green(),
             FDThemeProvider::blue(), FDThemeProvider::sunset() }) {
        QCOMPARE(
            theme->color(FDTheme::selectedBackgroundColor), theme->color(FDTheme::primaryColor));
        QCOMPARE(theme->color(FDTheme::selectedBackgroundTintColor),
            theme->color(FDTheme::secondaryColor));
    }
    QCOMPARE(FDThemeProvider::red()->color(FDTheme::primaryColor), QColor(255, 68, 60));
    const FDTheme *night = FDThemeProvider::night();
    QVERIFY(night->color(FDTheme::selectedBackgroundColor) != night->color(FDTheme::primaryColor));
    QCOMPARE(
        night->color(FDTheme::primaryColor), FDThemeProvider::blue()->color(FDTheme::primaryColor));
    QCOMPARE(night->color(FDTheme::textFieldBackgroundColor), QColor(78, 78, 78));
}

void FDThemeProviderTest::sameAsRoleKeepsTheValueItTook()
{
    // Sunset recolours the table background after the divider took the base value.
    const FDTheme *sunset = FDThemeProvider::sunset();
    QCOMPARE(sunset->color(FDTheme::tableViewBackgroundColor), QColor(230, 222, 207));
    QCOMPARE(sunset->color(FDTheme::paneDividerPrimaryColor),
        FDThemeProvider::blue()->color(FDTheme::tableViewBackgroundColor));
    QCOMPARE(sunset->color(FDTheme::tableViewGroupBackgroundColor), QColor(242, 236, 212));
    QCOMPARE(sunset->color(FDTheme::pageBackgroundColor), QColor(237, 232, 205));
}

void FDThemeProviderTest::lineWidthWithoutMainWindowIsOne()
{
    for (int id = 0; id < 5; ++id)
        QCOMPARE(FDThemeProvider::themeFor(id)->lineWidth(), 1.0);
}

void FDThemeProviderTest::firstReadFromAWorkerHopsToTheMainThread()
{
    UserDefaults::standard().setInteger(3, FDDefaults::CurrentTheme);
    QFuture<int> read = QtConcurrent::run([] { return FDThemeProvider::current()->id(); });
    QTRY_VERIFY(read.isFinished());
    QCOMPARE(read.result(), FDTheme::sunset);
    QCOMPARE(m_posted.size(), 2);
    QCOMPARE(m_postedOnMain, (QList<bool> { true, true }));
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    FDThemeProviderTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FDThemeProviderTest.moc"
