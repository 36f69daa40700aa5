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
        undo.registerUndo(this, [this, old = value] { set(old); });
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
    // A script of steps: a digit sets the value, "t" ends the turn, "u"/"r" undo/redo, "[" and
    // "]" begin and end a group, "-"/"+" disable and enable registration, "x" drops the value's
    // actions, "L" keeps two levels. The trace holds the value after each undo or redo, and "g" the
    // grouping level.
    void stacks_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("trace");
        QTest::addColumn<bool>("canUndo");
        QTest::addColumn<bool>("canRedo");
        QTest::addColumn<bool>("warns");
        const auto row = [](const char *name, const char *script, const char *trace, bool canUndo,
                             bool canRedo, bool warns = false) {
            QTest::newRow(name) << QString(script) << QString(trace) << canUndo << canRedo << warns;
        };
        row("one step per turn", "1 2 g t g 3 t u u", "g1 g0 2 0", false, true);
        row("undo closes the open turn", "1 t 2 u 3 t u u", "1 1 0", false, true);
        row("walk both ways", "1 t 2 t 3 t u u r r u u u u r", "2 1 2 3 2 1 0 0 1", true, true);
        row("fresh registration clears redo", "1 t 2 t u 5 t u r", "1 1 5", true, false);
        row("groups span turns and nest", "[ 1 t [ 2 ] t g 3 ] g u r", "g1 g0 0 3", true, false);
        row("group inside a turn waits", "1 [ 2 t g ] g t g u", "g2 g1 g0 0", false, true);
        row("no undo inside a group", "[ 1 u ] u", "1 0", false, true, true);
        row("unbalanced end ignored", "1 ] g t g u", "g1 g0 0", false, true, true);
        row("registration suspended", "- - 1 + 2 t + 3 t u", "2", false, true);
        row("actions of a target removed", "1 t 2 x t", "", false, false);
        row("oldest levels dropped", "L 1 t 2 t 3 t u u u", "2 1 1", false, true);
    }

    void stacks()
    {
        QFETCH(QString, script);
        QFETCH(QString, trace);
        QFETCH(bool, canUndo);
        QFETCH(bool, canRedo);
        QFETCH(bool, warns);

        UndoManager undo;
        Value v { undo };
        QStringList seen;
        if (warns)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("UndoManager: .*"));
        for (const QString &step : script.split(' ')) {
            const QChar op = step.at(0);
            if (op.isDigit())
                v.set(op.digitValue());
            else if (op == 't')
                finishTurn();
            else if (op == 'u' || op == 'r') {
                op == 'u' ? undo.undo() : undo.redo();
                seen << QString::number(v.value);
            } else if (op == 'g')
                seen << "g" + QString::number(undo.groupingLevel());
            else if (op == '[' || op == ']')
                op == '[' ? undo.beginUndoGrouping() : undo.endUndoGrouping();
            else if (op == '-' || op == '+')
                op == '-' ? undo.disableUndoRegistration() : undo.enableUndoRegistration();
            else if (op == 'x')
                undo.removeAllActionsWithTarget(&v);
            else if (op == 'L')
                undo.setLevelsOfUndo(2);
        }
        QCOMPARE(seen.join(' '), trace);
        QCOMPARE(undo.canUndo(), canUndo);
        QCOMPARE(undo.canRedo(), canRedo);
    }

    void stepRunsItsClosuresInReverseAndDropsRemovedOnes()
    {
        UndoManager undo;
        QStringList log;
        int first = 0;
        int second = 0;
        undo.registerUndo(&first, [&] { log << "a"; });
        undo.registerUndo(&second, [&] { log << "b"; });
        undo.registerUndo(&first, [&] { log << "c"; });
        undo.registerUndo(&second, [&] { log << "d"; });
        // A window finds the document of the step it is about to undo by these.
        QCOMPARE(undo.undoTargets(), (QList<const void *> { &first, &second }));
        finishTurn();
        undo.registerUndo(&first, [&] { log << "e"; });
        finishTurn();
        undo.removeAllActionsWithTarget(&first);
        QCOMPARE(undo.undoTargets(), QList<const void *> { &second });
        undo.undo();
        QCOMPARE(log, QStringList({ "d", "b" }));
        QVERIFY(!undo.canUndo());
        QVERIFY(undo.undoTargets().isEmpty());
    }

    void menuTitlesFollowTheStepNames()
    {
        UndoManager undo;
        Value v { undo, 0, "Add Note" };
        v.set(1);
        QCOMPARE(undo.undoMenuItemTitle(), QString("Undo Add Note"));
        finishTurn();
        QCOMPARE(undo.redoMenuItemTitle(), QString("Redo"));
        // A name given while undoing names the redo step.
        v.name = "Delete Annotation";
        QSignalSpy changed(&undo, &UndoManager::changed);
        undo.undo();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(undo.redoMenuItemTitle(), QString("Redo Delete Annotation"));
        QCOMPARE(undo.undoMenuItemTitle(), QString("Undo"));
    }
};

QTEST_GUILESS_MAIN(UndoManagerTest)
#include "UndoManagerTest.moc"
