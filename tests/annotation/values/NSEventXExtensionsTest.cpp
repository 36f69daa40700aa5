#include <annotation/values/NSEvent+XExtensions.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

class NSEventXExtensionsTest : public QObject
{
    Q_OBJECT

private slots:
    void modifiersMapToCommandOptionControlFlags_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<quint32>("standard");
        QTest::addColumn<quint32>("deviceIndependent");
        QTest::newRow("Control is Command")
            << Qt::KeyboardModifiers(Qt::ControlModifier) << 0x100000u << 0x100000u;
        QTest::newRow("Meta is Control")
            << Qt::KeyboardModifiers(Qt::MetaModifier) << 0x40000u << 0x40000u;
        QTest::newRow("Command-Shift")
            << (Qt::ControlModifier | Qt::ShiftModifier) << 0x120000u << 0x120000u;
        QTest::newRow("keypad is not standard")
            << (Qt::KeypadModifier | Qt::AltModifier) << 0x80000u << 0x280000u;
    }
    void modifiersMapToCommandOptionControlFlags()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(quint32, standard);
        QFETCH(quint32, deviceIndependent);
        const QKeyEvent event(QEvent::KeyPress, Qt::Key_A, modifiers, QStringLiteral("a"));
        QCOMPARE(standardModifierFlags(event), standard);
        QCOMPARE(deviceIndependentModifierFlags(event), deviceIndependent);
    }

    void firstCharacter_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("character");
        const Qt::KeyboardModifiers none;
        QTest::newRow("shifted letter")
            << int(Qt::Key_A) << Qt::KeyboardModifiers(Qt::ShiftModifier) << "A" << int('A');
        QTest::newRow("Command-letter")
            << int(Qt::Key_A) << Qt::KeyboardModifiers(Qt::ControlModifier) << "\x01" << int('a');
        QTest::newRow("non-Latin letter")
            << int(0x0416) << none << QStringLiteral("\u0436") << 0x0436;
        QTest::newRow("Return") << int(Qt::Key_Return) << none << "\r" << 0x0D;
        QTest::newRow("keypad Enter")
            << int(Qt::Key_Enter) << Qt::KeyboardModifiers(Qt::KeypadModifier) << "\r" << 0x03;
        QTest::newRow("up arrow") << int(Qt::Key_Up) << none << "" << 0xF700;
        QTest::newRow("a modifier alone")
            << int(Qt::Key_Shift) << Qt::KeyboardModifiers(Qt::ShiftModifier) << "" << 0;
    }
    void firstCharacter()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(QString, text);
        QFETCH(int, character);
        const QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QCOMPARE(int(::firstCharacter(event)), character);
    }

    void locationIsInTheAskedView()
    {
        QWidget window;
        window.resize(300, 200);
        QWidget view(&window);
        view.setGeometry(30, 40, 100, 100);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        // The window received the press; the view is asked where it was.
        const QPointF inWindow(35.5, 46);
        const QMouseEvent press(QEvent::MouseButtonPress, inWindow, inWindow,
            window.mapToGlobal(inWindow), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCOMPARE(locationInView(press, view), QPointF(5.5, 6));
        QCOMPARE(locationInView(press, window), inWindow);
    }
};

QTEST_MAIN(NSEventXExtensionsTest)
#include "NSEventXExtensionsTest.moc"
