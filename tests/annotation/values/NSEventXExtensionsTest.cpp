#include <annotation/values/NSEvent+XExtensions.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

class NSEventXExtensionsTest : public QObject
{
    Q_OBJECT

private slots:
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
