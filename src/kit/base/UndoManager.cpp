#include "UndoManager.h"

#include "MainQueue.h"

#include <algorithm>
#include <utility>

UndoManager::UndoManager(QObject *parent)
    : QObject(parent)
{ }

UndoManager::~UndoManager() = default;

void UndoManager::registerUndo(const void *target, std::function<void()> undoFn)
{
    Q_ASSERT_X(MainQueue::isMainThread(), "UndoManager::registerUndo", "main thread only");
    if (!undoFn || !isUndoRegistrationEnabled())
        return;
    if (m_level == 0) {
        m_level = 1;
        m_implicit = true;
        m_open = {};
        scheduleImplicitClose();
    }
    m_open.actions.append({ target, std::move(undoFn) });
    if (m_state == State::Idle)
        m_redoStack.clear();
    notifyChanged();
}

void UndoManager::setActionName(const QString &actionName)
{
    if (m_level > 0)
        m_open.actionName = actionName;
    else if (!m_undoStack.isEmpty())
        m_undoStack.last().actionName = actionName;
    notifyChanged();
}

QString UndoManager::undoActionName() const
{
    if (!canUndo())
        return {};
    if (m_level > 0 && !m_open.actions.isEmpty())
        return m_open.actionName;
    return m_undoStack.last().actionName;
}

QString UndoManager::redoActionName() const
{
    return canRedo() ? m_redoStack.last().actionName : QString();
}

QString UndoManager::undoMenuItemTitle() const
{
    const QString name = undoActionName();
    return name.isEmpty() ? tr("Undo") : tr("Undo %1").arg(name);
}

QString UndoManager::redoMenuItemTitle() const
{
    const QString name = redoActionName();
    return name.isEmpty() ? tr("Redo") : tr("Redo %1").arg(name);
}

void UndoManager::undo()
{
    runStep(m_undoStack, State::Undoing);
}

void UndoManager::redo()
{
    runStep(m_redoStack, State::Redoing);
}

bool UndoManager::canUndo() const
{
    return isAtTopLevel() && (!m_undoStack.isEmpty() || (m_level > 0 && !m_open.actions.isEmpty()));
}

bool UndoManager::canRedo() const
{
    return isAtTopLevel() && !m_redoStack.isEmpty();
}

QList<const void *> UndoManager::undoTargets() const
{
    if (!canUndo())
        return {};
    return targetsOf(m_level > 0 && !m_open.actions.isEmpty() ? m_open : m_undoStack.last());
}

QList<const void *> UndoManager::redoTargets() const
{
    return canRedo() ? targetsOf(m_redoStack.last()) : QList<const void *>();
}

QList<const void *> UndoManager::targetsOf(const Step &step)
{
    QList<const void *> targets;
    for (const Action &action : step.actions) {
        if (!targets.contains(action.target))
            targets.append(action.target);
    }
    return targets;
}

void UndoManager::beginUndoGrouping()
{
    if (m_level == 0) {
        m_open = {};
        m_implicit = false;
    }
    ++m_level;
}

void UndoManager::endUndoGrouping()
{
    if (m_level <= ownLevel()) {
        qWarning("UndoManager: endUndoGrouping without a matching beginUndoGrouping");
        return;
    }
    --m_level;
    if (m_level == 0)
        closeTopLevelGroup();
    else if (m_level == 1 && m_implicit)
        scheduleImplicitClose();
}

void UndoManager::removeAllActionsWithTarget(const void *target)
{
    const auto ofTarget = [target](const Action &action) { return action.target == target; };
    for (QList<Step> *const stack : { &m_undoStack, &m_redoStack }) {
        for (Step &step : *stack)
            step.actions.removeIf(ofTarget);
        stack->removeIf([](const Step &step) { return step.actions.isEmpty(); });
    }
    m_open.actions.removeIf(ofTarget);
    notifyChanged();
}

void UndoManager::removeAllActions()
{
    m_undoStack.clear();
    m_redoStack.clear();
    m_open.actions.clear();
    m_disableCount = 0;
    notifyChanged();
}

void UndoManager::setLevelsOfUndo(int levels)
{
    m_levelsOfUndo = std::max(0, levels);
    trim(m_undoStack);
    trim(m_redoStack);
    notifyChanged();
}

void UndoManager::disableUndoRegistration()
{
    ++m_disableCount;
}

void UndoManager::enableUndoRegistration()
{
    if (m_disableCount == 0) {
        qWarning("UndoManager: enableUndoRegistration without a matching disable");
        return;
    }
    --m_disableCount;
}

// No step runs and no explicit group is open, so undo() and redo() may act.
bool UndoManager::isAtTopLevel() const
{
    return m_state == State::Idle && (m_level == 0 || (m_level == 1 && m_implicit));
}

// The level that belongs to the manager itself and that endUndoGrouping() must not close: the
// implicit group, or the step that undo() and redo() collect.
int UndoManager::ownLevel() const
{
    return (m_implicit || m_state != State::Idle) ? 1 : 0;
}

void UndoManager::runStep(QList<Step> &from, State state)
{
    Q_ASSERT_X(MainQueue::isMainThread(), "UndoManager", "main thread only");
    if (m_state != State::Idle) {
        qWarning("UndoManager: undo or redo while a step is running");
        return;
    }
    if (m_level == 1 && m_implicit)
        closeTopLevelGroup();
    if (m_level > 0) {
        qWarning("UndoManager: undo or redo inside an open undo group");
        return;
    }
    if (from.isEmpty())
        return;

    const Step step = from.takeLast();
    m_state = state;
    m_level = 1;
    m_implicit = false;
    // The inverse step keeps the name unless a closure names it anew.
    m_open = { {}, step.actionName };
    for (auto action = step.actions.crbegin(); action != step.actions.crend(); ++action)
        action->fn();
    if (m_level != 1)
        qWarning("UndoManager: an undo closure left %d group(s) open", m_level - 1);
    closeTopLevelGroup();
    m_state = State::Idle;
    emit changed();
}

void UndoManager::closeTopLevelGroup()
{
    m_level = 0;
    m_implicit = false;
    Step step = std::exchange(m_open, {});
    if (step.actions.isEmpty())
        return;
    QList<Step> &stack = m_state == State::Undoing ? m_redoStack : m_undoStack;
    stack.append(std::move(step));
    trim(stack);
    notifyChanged();
}

void UndoManager::closeImplicitGroup()
{
    // With explicit groups nested inside, it waits for them: endUndoGrouping() schedules again.
    if (m_implicit && m_level == 1 && m_state == State::Idle)
        closeTopLevelGroup();
}

void UndoManager::scheduleImplicitClose()
{
    if (m_implicitCloseScheduled)
        return;
    m_implicitCloseScheduled = true;
    MainQueue::async(this, [this] {
        m_implicitCloseScheduled = false;
        closeImplicitGroup();
    });
}

void UndoManager::trim(QList<Step> &stack) const
{
    if (m_levelsOfUndo > 0 && stack.size() > m_levelsOfUndo)
        stack.remove(0, stack.size() - m_levelsOfUndo);
}

// While a step runs, changes are reported once, when it has run.
void UndoManager::notifyChanged()
{
    if (m_state == State::Idle)
        emit changed();
}
