#pragma once

// The stacks of undoable steps of one window. A step is a group of registered inverse closures;
// undoing a step runs them in reverse order. Without an explicit group, everything registered in
// one turn of the event loop is one step. Main thread only.

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class UndoManager : public QObject
{
    Q_OBJECT

public:
    explicit UndoManager(QObject *parent = nullptr);
    ~UndoManager() override;

    // Registers the inverse of a change; target is an identity for removeAllActionsWithTarget.
    // While undoing it goes to the redo step being built, while redoing to the undo step, and
    // otherwise it also drops every redo step.
    void registerUndo(const void *target, std::function<void()> undoFn);

    // Names the step being built: the open group, the redo step during undo(), the undo step
    // during redo(); with none of these, the newest undo step.
    void setActionName(const QString &actionName);
    QString undoActionName() const;
    QString redoActionName() const;
    // "Undo" followed by a space and the name, or "Undo" alone for an unnamed step.
    QString undoMenuItemTitle() const;
    QString redoMenuItemTitle() const;

    // Both close a group opened by registration first; with an explicit group open they do
    // nothing.
    void undo();
    void redo();
    bool canUndo() const;
    bool canRedo() const;
    // The targets of the step that undo() or redo() would run, each once, in registration
    // order; empty when there is none. A window shows the document a step belongs to first.
    QList<const void *> undoTargets() const;
    QList<const void *> redoTargets() const;
    bool isUndoing() const { return m_state == State::Undoing; }
    bool isRedoing() const { return m_state == State::Redoing; }

    // Nestable; everything up to the outermost end is one step, across any number of turns.
    void beginUndoGrouping();
    void endUndoGrouping();
    // Counts the group opened implicitly by a registration too.
    int groupingLevel() const { return m_level; }

    // Drops the target's closures from every step, and the steps left empty.
    void removeAllActionsWithTarget(const void *target);
    // Empties both stacks and enables registration again.
    void removeAllActions();

    // The most steps kept on each stack; 0 keeps all.
    void setLevelsOfUndo(int levels);
    int levelsOfUndo() const { return m_levelsOfUndo; }

    // Counted: registration resumes after as many enables as disables.
    void disableUndoRegistration();
    void enableUndoRegistration();
    bool isUndoRegistrationEnabled() const { return m_disableCount == 0; }

Q_SIGNALS:
    // The stacks, or the names shown for them, changed.
    void changed();

private:
    enum class State { Idle, Undoing, Redoing };
    struct Action
    {
        const void *target = nullptr;
        std::function<void()> fn;
    };
    struct Step
    {
        QList<Action> actions;
        QString actionName;
    };

    static QList<const void *> targetsOf(const Step &step);
    bool isAtTopLevel() const;
    int ownLevel() const;
    void runStep(QList<Step> &from, State state);
    void closeTopLevelGroup();
    void closeImplicitGroup();
    void scheduleImplicitClose();
    void trim(QList<Step> &stack) const;
    void notifyChanged();

    QList<Step> m_undoStack;
    QList<Step> m_redoStack;
    // The step being built while m_level > 0.
    Step m_open;
    int m_level = 0;
    // The open top-level group was opened by a registration, not by beginUndoGrouping().
    bool m_implicit = false;
    bool m_implicitCloseScheduled = false;
    State m_state = State::Idle;
    int m_levelsOfUndo = 0;
    int m_disableCount = 0;
};
