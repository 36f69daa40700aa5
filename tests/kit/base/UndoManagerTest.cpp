#include <kit/base/UndoManager.h>

#include <QSignalSpy>
#include <QtTest>

namespace {

// A model value whose setter registers its own inverse, as editing code does.
struct Value
{
    UndoManager &undo;
    int value = 0;
    QString name = "Edit";

    void set(int newValue)
    {
        const int old = value;
        undo.registerUndo(this, [this, old] { set(old); });
        undo.setActionName(name);
        value = newValue;
    }
};

// Lets the event loop take one turn, which closes a group opened by registration.
void finishTurn()
{
    QCoreApplication::processEvents();
}

} // namespace

class UndoManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registrationsOfOneTurnAreOneStep();
    void undoClosesTheOpenTurnFirst();
    void undoAndRedoWalkTheStacks();
    void freshRegistrationClearsRedo();
    void explicitGroupsNestAndSpanTurns();
    void explicitGroupInsideATurnWaitsForItsEnd();
    void menuTitles_data();
    void menuTitles();
    void removeAllActionsWithTargetDropsEmptiedSteps();
    void registrationCanBeSuspended();
    void levelsOfUndoDropTheOldest();
    void changedIsEmittedOncePerUndo();
};

void UndoManagerTest::registrationsOfOneTurnAreOneStep()
{
    UndoManager undo;
    QStringList log;
    undo.registerUndo(&log, [&] { log << "a"; });
    undo.registerUndo(&log, [&] { log << "b"; });
    QCOMPARE(undo.groupingLevel(), 1);
    finishTurn();
    QCOMPARE(undo.groupingLevel(), 0);
    undo.registerUndo(&log, [&] { log << "c"; });
    finishTurn();

    undo.undo();
    QCOMPARE(log, QStringList({ "c" }));
    undo.undo();
    QCOMPARE(log, QStringList({ "c", "b", "a" }));
    QVERIFY(!undo.canUndo());
}

void UndoManagerTest::undoClosesTheOpenTurnFirst()
{
    UndoManager undo;
    Value v { undo };
    v.set(1);
    finishTurn();
    v.set(2);
    QVERIFY(undo.canUndo());
    undo.undo();
    QCOMPARE(v.value, 1);
    QCOMPARE(undo.groupingLevel(), 0);
    // The close that was pending for that turn must not disturb what follows.
    v.set(3);
    finishTurn();
    undo.undo();
    QCOMPARE(v.value, 1);
    undo.undo();
    QCOMPARE(v.value, 0);
}

void UndoManagerTest::undoAndRedoWalkTheStacks()
{
    UndoManager undo;
    Value v { undo };
    for (int i = 1; i <= 3; ++i) {
        v.set(i);
        finishTurn();
    }
    undo.undo();
    undo.undo();
    QCOMPARE(v.value, 1);
    QVERIFY(undo.canRedo());
    undo.redo();
    QCOMPARE(v.value, 2);
    undo.redo();
    QCOMPARE(v.value, 3);
    QVERIFY(!undo.canRedo());
    undo.undo();
    undo.undo();
    undo.undo();
    QCOMPARE(v.value, 0);
    QVERIFY(!undo.canUndo());
    undo.undo();
    QCOMPARE(v.value, 0);
    undo.redo();
    QCOMPARE(v.value, 1);
}

void UndoManagerTest::freshRegistrationClearsRedo()
{
    UndoManager undo;
    Value v { undo };
    v.set(1);
    finishTurn();
    v.set(2);
    finishTurn();
    undo.undo();
    QVERIFY(undo.canRedo());
    v.set(5);
    QVERIFY(!undo.canRedo());
    undo.undo();
    QCOMPARE(v.value, 1);
    undo.redo();
    QCOMPARE(v.value, 5);
}

void UndoManagerTest::explicitGroupsNestAndSpanTurns()
{
    UndoManager undo;
    Value v { undo };
    QStringList log;
    undo.beginUndoGrouping();
    v.set(1);
    undo.registerUndo(&log, [&] { log << "first"; });
    finishTurn();
    undo.beginUndoGrouping();
    QCOMPARE(undo.groupingLevel(), 2);
    v.set(2);
    undo.registerUndo(&log, [&] { log << "second"; });
    undo.endUndoGrouping();
    finishTurn();
    QCOMPARE(undo.groupingLevel(), 1);
    QVERIFY(!undo.canUndo());
    v.set(3);
    undo.endUndoGrouping();
    QCOMPARE(undo.groupingLevel(), 0);

    undo.undo();
    QCOMPARE(v.value, 0);
    QCOMPARE(log, QStringList({ "second", "first" }));
    QVERIFY(!undo.canUndo());
    undo.redo();
    QCOMPARE(v.value, 3);
}

void UndoManagerTest::explicitGroupInsideATurnWaitsForItsEnd()
{
    UndoManager undo;
    Value v { undo };
    v.set(1);
    undo.beginUndoGrouping();
    v.set(2);
    finishTurn();
    QCOMPARE(undo.groupingLevel(), 2);
    QTest::ignoreMessage(QtWarningMsg, "UndoManager: undo or redo inside an open undo group");
    undo.undo();
    QCOMPARE(v.value, 2);
    undo.endUndoGrouping();
    QTest::ignoreMessage(
        QtWarningMsg, "UndoManager: endUndoGrouping without a matching beginUndoGrouping");
    undo.endUndoGrouping();
    QCOMPARE(undo.groupingLevel(), 1);
    finishTurn();
    QCOMPARE(undo.groupingLevel(), 0);
    undo.undo();
    QCOMPARE(v.value, 0);
}

void UndoManagerTest::menuTitles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("nameDuringUndo");
    QTest::addColumn<QString>("undoTitle");
    QTest::addColumn<QString>("redoTitle");
    QTest::newRow("named") << "Add Note"
                           << ""
                           << "Undo Add Note"
                           << "Redo Add Note";
    QTest::newRow("unnamed") << ""
                             << ""
                             << "Undo"
                             << "Redo";
    QTest::newRow("renamed while undoing") << "Add Note"
                                           << "Delete Annotation"
                                           << "Undo Add Note"
                                           << "Redo Delete Annotation";
}

void UndoManagerTest::menuTitles()
{
    QFETCH(QString, name);
    QFETCH(QString, nameDuringUndo);
    QFETCH(QString, undoTitle);
    QFETCH(QString, redoTitle);

    UndoManager undo;
    Value v { undo, 0, name };
    v.set(1);
    QCOMPARE(undo.undoMenuItemTitle(), undoTitle);
    finishTurn();
    QCOMPARE(undo.undoMenuItemTitle(), undoTitle);
    QCOMPARE(undo.redoMenuItemTitle(), QString("Redo"));
    if (!nameDuringUndo.isEmpty())
        v.name = nameDuringUndo;
    undo.undo();
    QCOMPARE(undo.redoMenuItemTitle(), redoTitle);
    QCOMPARE(undo.undoMenuItemTitle(), QString("Undo"));
}

void UndoManagerTest::removeAllActionsWithTargetDropsEmptiedSteps()
{
    UndoManager undo;
    QStringList log;
    int first = 0;
    int second = 0;
    undo.registerUndo(&first, [&] { log << "a"; });
    finishTurn();
    undo.registerUndo(&first, [&] { log << "b"; });
    undo.registerUndo(&second, [&] { log << "c"; });
    finishTurn();
    undo.registerUndo(&first, [&] { log << "d"; });
    undo.removeAllActionsWithTarget(&first);
    finishTurn();

    QVERIFY(undo.canUndo());
    undo.undo();
    QCOMPARE(log, QStringList({ "c" }));
    QVERIFY(!undo.canUndo());
}

void UndoManagerTest::registrationCanBeSuspended()
{
    UndoManager undo;
    Value v { undo };
    undo.disableUndoRegistration();
    undo.disableUndoRegistration();
    v.set(1);
    undo.enableUndoRegistration();
    v.set(2);
    finishTurn();
    QVERIFY(!undo.canUndo());
    undo.enableUndoRegistration();
    v.set(3);
    finishTurn();
    undo.undo();
    QCOMPARE(v.value, 2);
    undo.redo();
    undo.removeAllActions();
    QVERIFY(!undo.canUndo());
    QVERIFY(!undo.canRedo());
}

void UndoManagerTest::levelsOfUndoDropTheOldest()
{
    UndoManager undo;
    Value v { undo };
    undo.setLevelsOfUndo(2);
    for (int i = 1; i <= 4; ++i) {
        v.set(i);
        finishTurn();
    }
    undo.undo();
    undo.undo();
    QCOMPARE(v.value, 2);
    QVERIFY(!undo.canUndo());
}

void UndoManagerTest::changedIsEmittedOncePerUndo()
{
    UndoManager undo;
    Value v { undo };
    v.set(1);
    finishTurn();
    QSignalSpy spy(&undo, &UndoManager::changed);
    undo.undo();
    QCOMPARE(spy.count(), 1);
    QVERIFY(undo.canRedo());
}

QTEST_GUILESS_MAIN(UndoManagerTest)
#include "UndoManagerTest.moc"
