#include "support/AppWindow.h"

#include <app/FDDefaults.h>
#include <app/PrefWindowController.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeButton.h>
#include <appearance/FDThemePicker.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/UserDefaults.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>
#include <QtTest>

class PrefWindowControllerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void togglingACheckBoxWritesItsKey_data();
    void togglingACheckBoxWritesItsKey();
    void choosingFromAMenuWritesItsKey_data();
    void choosingFromAMenuWritesItsKey();
    void typingTheNameWritesUserName();
    void keyChangedBehindTheWindowShowsAtNextShow();
    void tabButtonsSwitchPanes();
    void themeButtonSetsTheTheme();
    void closingOnlyHides();
    void windowFollowsTheTheme();

private:
    PrefWindowController &window() { return PrefWindowController::shared(); }
};

void PrefWindowControllerTest::init()
{
    AppWindow::reset();
    window().showWindow();
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
}

void PrefWindowControllerTest::togglingACheckBoxWritesItsKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("SavingPrompt") << FDDefaults::SavingPrompt << 0 << 1;
    QTest::newRow("DisableHistory, shown as keeping a history")
        << FDDefaults::DisableHistory << 0 << 1;
    QTest::newRow("RememberCurrentTheme") << FDDefaults::RememberCurrentTheme << 1 << 0;
    QTest::newRow("RememberLastPosition") << FDDefaults::RememberLastPosition << 1 << 0;
    QTest::newRow("AlwaysShowSidebar") << FDDefaults::AlwaysShowSidebar << 0 << 1;
}

void PrefWindowControllerTest::togglingACheckBoxWritesItsKey()
{
    QFETCH(QString, key);
    QFETCH(int, before);
    QFETCH(int, after);
    auto *box = qobject_cast<QCheckBox *>(window().controlForKey(key));
    QVERIFY(box);
    window().onTabButtonClickedWithButton(box->parentWidget() == window().advancedContentsView()
            ? window().advancedButton()
            : window().generalButton());
    QVERIFY(box->isVisible());
    QCOMPARE(UserDefaults::standard().integerForKey(key), before);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    QCOMPARE(UserDefaults::standard().integerForKey(key), after);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    QCOMPARE(UserDefaults::standard().integerForKey(key), before);
}

void PrefWindowControllerTest::choosingFromAMenuWritesItsKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("LaunchWith") << FDDefaults::LaunchWith << 1 << 0;
    QTest::newRow("DefaultScaleMode") << FDDefaults::DefaultScaleMode << 0 << 1;
}

void PrefWindowControllerTest::choosingFromAMenuWritesItsKey()
{
    QFETCH(QString, key);
    QFETCH(int, before);
    QFETCH(int, after);
    window().onTabButtonClickedWithButton(window().generalButton());
    auto *combo = qobject_cast<QComboBox *>(window().controlForKey(key));
    QVERIFY(combo);
    QCOMPARE(combo->currentIndex(), before);
    QTest::keyClick(combo, after > before ? Qt::Key_Down : Qt::Key_Up);
    QCOMPARE(UserDefaults::standard().integerForKey(key), after);
}

void PrefWindowControllerTest::typingTheNameWritesUserName()
{
    auto *edit = qobject_cast<QLineEdit *>(window().controlForKey(FDDefaults::UserName));
    QVERIFY(edit);
    QCOMPARE(edit->text(), FDDefaults::fullUserName());
    edit->selectAll();
    QTest::keyClicks(edit, QStringLiteral("Ada L"));
    QCOMPARE(FDDefaults::userName(), QStringLiteral("Ada L"));
}

void PrefWindowControllerTest::keyChangedBehindTheWindowShowsAtNextShow()
{
    window().performCloseTabAction();
    QVERIFY(!window().isVisible());
    UserDefaults &store = UserDefaults::standard();
    store.setInteger(2, FDDefaults::DefaultScaleMode);
    store.setInteger(1, FDDefaults::SavingPrompt);
    store.setObject(QStringLiteral("Grace"), FDDefaults::UserName);
    window().showWindow();
    QCOMPARE(qobject_cast<QComboBox *>(window().controlForKey(FDDefaults::DefaultScaleMode))
                 ->currentIndex(),
        2);
    QVERIFY(
        qobject_cast<QCheckBox *>(window().controlForKey(FDDefaults::SavingPrompt))->isChecked());
    QCOMPARE(qobject_cast<QLineEdit *>(window().controlForKey(FDDefaults::UserName))->text(),
        QStringLiteral("Grace"));
}

void PrefWindowControllerTest::tabButtonsSwitchPanes()
{
    QTest::mouseClick(window().advancedButton(), Qt::LeftButton);
    QCOMPARE(window().selectedTabButton(), window().advancedButton());
    QVERIFY(window().advancedContentsView()->isVisible());
    QVERIFY(!window().generalContentsView()->isVisible());
    QVERIFY(!window().generalButton()->isChecked());
    QTest::mouseClick(window().generalButton(), Qt::LeftButton);
    QVERIFY(window().generalContentsView()->isVisible());
    QVERIFY(!window().advancedContentsView()->isVisible());
    QVERIFY(window().generalButton()->isChecked());
}

void PrefWindowControllerTest::themeButtonSetsTheTheme()
{
    window().onTabButtonClickedWithButton(window().generalButton());
    auto *picker = window().generalContentsView()->findChild<FDThemePicker *>();
    QVERIFY(picker);
    QTest::mouseClick(picker->sunsetButton(), Qt::LeftButton);
    QCOMPARE(FDThemeProvider::current(), FDThemeProvider::sunset());
    QCOMPARE(UserDefaults::standard().integerForKey(FDDefaults::CurrentTheme), 3);
    QTest::mouseClick(picker->blueButton(), Qt::LeftButton);
    QCOMPARE(FDThemeProvider::current(), FDThemeProvider::blue());
}

void PrefWindowControllerTest::closingOnlyHides()
{
    PrefWindowController *before = &window();
    window().close();
    QVERIFY(!window().isVisible());
    QCOMPARE(&PrefWindowController::shared(), before);
    window().showWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
    QTest::keyClick(&window(), Qt::Key_W, Qt::ControlModifier);
    QVERIFY(!window().isVisible());
}

void PrefWindowControllerTest::windowFollowsTheTheme()
{
    const QString folder = qEnvironmentVariable("FOLIDOC_SCREENSHOT_DIR");
    for (int id = 0; id < 5; ++id) {
        const FDTheme *theme = FDThemeProvider::themeFor(id);
        FDThemeProvider::setCurrent(theme);
        const QImage image = window().grab().toImage();
        // A point of the pane's margin shows the theme's content background.
        const QColor margin = image.pixelColor(image.width() - 6, image.height() - 6);
        QCOMPARE(margin.rgb(), theme->color(FDTheme::contentViewBackgroundColor).rgb());
        if (!folder.isEmpty()) {
            static const char *names[] = { "red", "green", "blue", "sunset", "night" };
            image.save(folder + QStringLiteral("/prefs-%1.png").arg(QLatin1String(names[id])));
        }
    }
}

FOLIDOC_APP_TEST_MAIN(PrefWindowControllerTest)

#include "PrefWindowControllerTest.moc"
