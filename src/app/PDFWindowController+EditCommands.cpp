// The edit commands of PDFWindowController ("undo:", "copy:"...): each goes to the widget with the
// focus and up through its parents to the first that responds to it. Text fields and the reading
// view respond by their own means; other widgets implement EditCommandResponder. At the end of
// the chain the window's undo manager takes undo and redo.

#include "PDFWindowController.h"

#include "PDFContents.h"

#include <kit/base/UndoManager.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFSelection.h>
#include <kit/pdfview/PDFView.h>
#include <kit/tabs/EditCommandResponder.h>
#include <kit/tabs/TabStripModel.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTextEdit>

#include <algorithm>

namespace {

bool is(const QString &command, const char *name)
{
    return command == QLatin1String(name);
}

bool clipboardHasText()
{
    const QMimeData *const data = QApplication::clipboard()->mimeData();
    return data && data->hasText();
}

// A one-line field keeps its own undo stack and clipboard commands.
class LineEditResponder : public EditCommandResponder
{
public:
    explicit LineEditResponder(QLineEdit *field)
        : m_field(field)
    { }
    bool respondsToEditCommand(const QString &) const override { return true; }
    bool validateEditCommand(const QString &command) const override
    {
        // A password field gives nothing away to the clipboard.
        const bool revealed = m_field->echoMode() == QLineEdit::Normal;
        const bool selected = m_field->hasSelectedText();
        const bool writable = !m_field->isReadOnly();
        if (is(command, "undo:"))
            return writable && m_field->isUndoAvailable();
        if (is(command, "redo:"))
            return writable && m_field->isRedoAvailable();
        if (is(command, "cut:"))
            return writable && selected && revealed;
        if (is(command, "copy:"))
            return selected && revealed;
        if (is(command, "paste:"))
            return writable && clipboardHasText();
        if (is(command, "delete:"))
            return writable && selected;
        return is(command, "selectAll:") && !m_field->text().isEmpty();
    }
    void performEditCommand(const QString &command) override
    {
        if (is(command, "undo:"))
            m_field->undo();
        else if (is(command, "redo:"))
            m_field->redo();
        else if (is(command, "cut:"))
            m_field->cut();
        else if (is(command, "copy:"))
            m_field->copy();
        else if (is(command, "paste:"))
            m_field->paste();
        else if (is(command, "delete:"))
            m_field->del();
        else if (is(command, "selectAll:"))
            m_field->selectAll();
    }

private:
    QLineEdit *m_field;
};

// QTextEdit and QPlainTextEdit share these slots without a common base that has them.
template <class Editor> class TextEditResponder : public EditCommandResponder
{
public:
    explicit TextEditResponder(Editor *editor)
        : m_editor(editor)
    { }
    bool respondsToEditCommand(const QString &) const override { return true; }
    bool validateEditCommand(const QString &command) const override
    {
        const bool selected = m_editor->textCursor().hasSelection();
        const bool writable = !m_editor->isReadOnly();
        if (is(command, "undo:"))
            return writable && m_editor->document()->isUndoAvailable();
        if (is(command, "redo:"))
            return writable && m_editor->document()->isRedoAvailable();
        if (is(command, "cut:") || is(command, "delete:"))
            return writable && selected;
        if (is(command, "copy:"))
            return selected;
        if (is(command, "paste:"))
            return writable && m_editor->canPaste();
        return is(command, "selectAll:") && !m_editor->document()->isEmpty();
    }
    void performEditCommand(const QString &command) override
    {
        if (is(command, "undo:"))
            m_editor->undo();
        else if (is(command, "redo:"))
            m_editor->redo();
        else if (is(command, "cut:"))
            m_editor->cut();
        else if (is(command, "copy:"))
            m_editor->copy();
        else if (is(command, "paste:"))
            m_editor->paste();
        else if (is(command, "delete:"))
            m_editor->textCursor().removeSelectedText();
        else if (is(command, "selectAll:"))
            m_editor->selectAll();
    }

private:
    Editor *m_editor;
};

// The reading view copies and selects its text; the rest goes on to its parents, and undo to
// the window.
class ReadingViewResponder : public EditCommandResponder
{
public:
    explicit ReadingViewResponder(PDFView *view)
        : m_view(view)
    { }
    bool respondsToEditCommand(const QString &command) const override
    {
        return is(command, "copy:") || is(command, "selectAll:");
    }
    bool validateEditCommand(const QString &command) const override
    {
        if (is(command, "copy:"))
            return m_view->currentSelection() && !m_view->currentSelection()->string().isEmpty();
        return m_view->document() && m_view->document()->pageCount() > 0;
    }
    void performEditCommand(const QString &command) override
    {
        if (is(command, "copy:"))
            m_view->copy();
        else
            m_view->selectAll();
    }

private:
    PDFView *m_view;
};

// The window's undo manager, the last in every chain. Undoing a step of a tab that is not in
// front brings that tab forward first, so that the person sees what changes.
class WindowUndoResponder : public EditCommandResponder
{
public:
    explicit WindowUndoResponder(PDFWindowController *window)
        : m_window(window)
    { }
    bool respondsToEditCommand(const QString &command) const override
    {
        return is(command, "undo:") || is(command, "redo:");
    }
    bool validateEditCommand(const QString &command) const override
    {
        UndoManager *const undo = m_window->undoManager();
        return is(command, "undo:") ? undo->canUndo() : undo->canRedo();
    }
    void performEditCommand(const QString &command) override
    {
        UndoManager *const undo = m_window->undoManager();
        const bool undoing = is(command, "undo:");
        showTabOf(undoing ? undo->undoTargets() : undo->redoTargets());
        if (undoing)
            undo->undo();
        else
            undo->redo();
    }
    QString editCommandTitle(const QString &command) const override
    {
        UndoManager *const undo = m_window->undoManager();
        return is(command, "undo:") ? undo->undoMenuItemTitle() : undo->redoMenuItemTitle();
    }

private:
    void showTabOf(const QList<const void *> &targets)
    {
        TabStripModel *const model = m_window->tabStripModel();
        for (int index = 0; index < model->count(); ++index) {
            const auto *const contents
                = qobject_cast<const PDFContents *>(model->getTabContentsAtIndex(index));
            const bool owns = contents
                && std::any_of(targets.begin(), targets.end(),
                    [contents](const void *target) { return contents->ownsUndoTarget(target); });
            if (owns) {
                if (index != model->selectedIndex())
                    model->selectTabContentsAt(index, true);
                return;
            }
        }
    }

    PDFWindowController *m_window;
};

// The responder that widget is for command, kept in holder when it had to be made; null when
// the widget passes the command on.
EditCommandResponder *responderOf(
    QWidget *widget, const QString &command, std::unique_ptr<EditCommandResponder> &holder)
{
    if (auto *const own = dynamic_cast<EditCommandResponder *>(widget))
        return own->respondsToEditCommand(command) ? own : nullptr;
    if (auto *const field = qobject_cast<QLineEdit *>(widget))
        holder = std::make_unique<LineEditResponder>(field);
    else if (auto *const editor = qobject_cast<QTextEdit *>(widget))
        holder = std::make_unique<TextEditResponder<QTextEdit>>(editor);
    else if (auto *const plain = qobject_cast<QPlainTextEdit *>(widget))
        holder = std::make_unique<TextEditResponder<QPlainTextEdit>>(plain);
    else if (auto *const reader = qobject_cast<PDFView *>(widget))
        holder = std::make_unique<ReadingViewResponder>(reader);
    else
        return nullptr;
    if (holder->respondsToEditCommand(command))
        return holder.get();
    holder.reset();
    return nullptr;
}

} // namespace

const QStringList &PDFWindowController::editCommands()
{
    static const QStringList commands { QStringLiteral("undo:"), QStringLiteral("redo:"),
        QStringLiteral("cut:"), QStringLiteral("copy:"), QStringLiteral("paste:"),
        QStringLiteral("delete:"), QStringLiteral("selectAll:") };
    return commands;
}

EditCommandResponder *PDFWindowController::editCommandResponder(
    const QString &command, std::unique_ptr<EditCommandResponder> &holder)
{
    // Without a focus the command goes to the view the document commands act on.
    QWidget *start = focusWidget();
    if (!start)
        start = selectedPDFView();
    for (QWidget *widget = start; widget && widget != this; widget = widget->parentWidget()) {
        if (EditCommandResponder *const responder = responderOf(widget, command, holder))
            return responder;
    }
    holder = std::make_unique<WindowUndoResponder>(this);
    if (holder->respondsToEditCommand(command))
        return holder.get();
    holder.reset();
    return nullptr;
}

bool PDFWindowController::validateEditCommand(QAction *item)
{
    const QString command = item->objectName();
    std::unique_ptr<EditCommandResponder> holder;
    EditCommandResponder *const responder = editCommandResponder(command, holder);
    if (is(command, "undo:") || is(command, "redo:")) {
        const QString title = responder ? responder->editCommandTitle(command) : QString();
        item->setText(title.isEmpty() ? (is(command, "undo:") ? tr("Undo") : tr("Redo")) : title);
    }
    return responder && responder->validateEditCommand(command);
}

void PDFWindowController::performEditCommand(QAction *item)
{
    const QString command = item->objectName();
    std::unique_ptr<EditCommandResponder> holder;
    EditCommandResponder *const responder = editCommandResponder(command, holder);
    if (responder && responder->validateEditCommand(command))
        responder->performEditCommand(command);
}
