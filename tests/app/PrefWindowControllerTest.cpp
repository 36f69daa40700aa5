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
    void init()
    {
        AppWindow::reset();
        window().showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
    }

    void checkBoxesAndMenusWriteTheirKeys()
    {
        // key, its value before and after a click (DisableHistory shows as keeping a history).
        const QList<std::tuple<QString, int, int>> boxes {
            { FDDefaults::SavingPrompt, 0, 1 },
            { FDDefaults::DisableHistory, 0, 1 },
            { FDDefaults::RememberCurrentTheme, 1, 0 },
            { FDDefaults::RememberLastPosition, 1, 0 },
            { FDDefaults::AlwaysShowSidebar, 0, 1 },
        };
        for (const auto &[key, before, after] : boxes) {
            auto *box = qobject_cast<QCheckBox *>(window().controlForKey(key));
            QVERIFY2(box, qPrintable(key));
            window().onTabButtonClickedWithButton(
                box->parentWidget() == window().advancedContentsView() ? window().advancedButton()
                                                                       : window().generalButton());
            QVERIFY(box->isVisible());
            QCOMPARE(UserDefaults::standard().integerForKey(key), before);
            QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
            QCOMPARE(UserDefaults::standard().integerForKey(key), after);
            QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
            QCOMPARE(UserDefaults::standard().integerForKey(key), before);
        }

        window().onTabButtonClickedWithButton(window().generalButton());
        for (const auto &[key, before, after] : QList<std::tuple<QString, int, int>> {
                 { FDDefaults::LaunchWith, 1, 0 }, { FDDefaults::DefaultScaleMode, 0, 1 } }) {
            auto *combo = qobject_cast<QComboBox *>(window().controlForKey(key));
            QVERIFY2(combo, qPrintable(key));
            QCOMPARE(combo->currentIndex(), before);
            QTest::keyClick(combo, after > before ? Qt::Key_Down : Qt::Key_Up);
            QCOMPARE(UserDefaults::standard().integerForKey(key), after);
        }
    }

    void typingTheNameWritesUserName()
    {
        auto *edit = qobject_cast<QLineEdit *>(window().controlForKey(FDDefaults::UserName));
        QVERIFY(edit);
        QCOMPARE(edit->text(), FDDefaults::fullUserName());
        edit->selectAll();
        QTest::keyClicks(edit, QStringLiteral("Ada L"));
        QCOMPARE(FDDefaults::userName(), QStringLiteral("Ada L"));
    }

    void closingOnlyHidesAndShowingAgainReadsTheStore()
    {
        PrefWindowController *const before = &window();
        window().close();
        QVERIFY(!window().isVisible());
        QCOMPARE(&PrefWindowController::shared(), before);
        // Keys changed behind the hidden window show when it comes back.
        UserDefaults &store = UserDefaults::standard();
        store.setInteger(2, FDDefaults::DefaultScaleMode);
        store.setInteger(1, FDDefaults::SavingPrompt);
        store.setObject(QStringLiteral("Grace"), FDDefaults::UserName);
        window().showWindow();
        QCOMPARE(qobject_cast<QComboBox *>(window().controlForKey(FDDefaults::DefaultScaleMode))
                     ->currentIndex(),
            2);
        QVERIFY(qobject_cast<QCheckBox *>(window().controlForKey(FDDefaults::SavingPrompt))
                    ->isChecked());
        QCOMPARE(qobject_cast<QLineEdit *>(window().controlForKey(FDDefaults::UserName))->text(),
            QStringLiteral("Grace"));
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        QTest::keyClick(&window(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!window().isVisible());
    }

    void windowFollowsTheThemeItsPickerSets()
    {
        window().onTabButtonClickedWithButton(window().generalButton());
        auto *const picker = window().generalContentsView()->findChild<FDThemePicker *>();
        QVERIFY(picker);
        QTest::mouseClick(picker->sunsetButton(), Qt::LeftButton);
        QCOMPARE(FDThemeProvider::current(), FDThemeProvider::sunset());
        for (int id = 0; id < 5; ++id) {
            const FDTheme *theme = FDThemeProvider::themeFor(id);
            FDThemeProvider::setCurrent(theme);
            const QImage image = window().grab().toImage();
            // A point of the pane's margin shows the theme's content background.
            const QColor margin = image.pixelColor(image.width() - 6, image.height() - 6);
            QCOMPARE(margin.rgb(), theme->color(FDTheme::contentViewBackgroundColor).rgb());
        }
    }

private:
    PrefWindowController &window() { return PrefWindowController::shared(); }
};

FOLIDOC_APP_TEST_MAIN(PrefWindowControllerTest)

#include "PrefWindowControllerTest.moc"
