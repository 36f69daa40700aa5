#pragma once

// A widget that performs some of a window's edit commands implements this. The window sends
// each edit command to the widget with the focus, then up through its parents, to the first
// that responds to it; that one alone decides whether the command is on and what it does.
// Commands are named as their menu items: "undo:", "redo:", "cut:", "copy:", "paste:",
// "delete:", "selectAll:". Main thread only.

#include <QString>

class EditCommandResponder
{
public:
    virtual ~EditCommandResponder() = default;

    // Whether this widget takes the command at all; one that doesn't passes it to its parent.
    virtual bool respondsToEditCommand(const QString &command) const = 0;
    // Whether the command can act now. Asked when its menu opens and again when its item or
    // key triggers it; a command that is off greys its item and leaves its key without effect.
    virtual bool validateEditCommand(const QString &command) const = 0;
    // Called only right after validateEditCommand answered true.
    virtual void performEditCommand(const QString &command) = 0;
    // The item's title while this widget takes the command ("Undo Add Note"); empty keeps the
    // plain one.
    virtual QString editCommandTitle(const QString & /*command*/) const { return {}; }
};
