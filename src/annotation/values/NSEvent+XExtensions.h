#pragma once

// Input events in the terms the editing view decides by: modifier flags with Command, Option and
// Control bits (Command is Qt's Control, Control is Qt's Meta), the first character of a key, the
// pointer's location in a view, and the kind of pointing device last seen. Main thread only.

#include <QPointF>
#include <QPointingDevice>
#include <Qt>

class QInputEvent;
class QKeyEvent;
class QSinglePointEvent;
class QWidget;

enum ModifierFlag : quint32 {
    ShiftKeyMask = 0x20000,
    ControlKeyMask = 0x40000,
    AlternateKeyMask = 0x80000,
    CommandKeyMask = 0x100000,
    NumericPadKeyMask = 0x200000,
    DeviceIndependentModifierFlagsMask = 0xffff0000,
    StandardModifierFlagsMask = 0x1e0000, // shift, control, option, command
};

// The flag bits for Qt's modifiers.
quint32 modifierFlags(Qt::KeyboardModifiers modifiers);
quint32 deviceIndependentModifierFlags(Qt::KeyboardModifiers modifiers);
quint32 deviceIndependentModifierFlags(const QInputEvent &event);
quint32 standardModifierFlags(Qt::KeyboardModifiers modifiers);
quint32 standardModifierFlags(const QInputEvent &event);
// The modifiers held now, asked of the window system.
quint32 standardModifierFlags();

// The device of the last tablet event the view saw; Unknown until one is set.
QPointingDevice::PointerType currentPointingDeviceType();
void setCurrentPointingDeviceType(QPointingDevice::PointerType type);

// The first UTF-16 unit of what the key types with only Shift applied, 0 if it types nothing.
// Keys that type no text answer function-key codes: Return 0x0D, Enter 0x03, Tab 0x09, Backspace
// 0x7F, Escape 0x1B, the arrows 0xF700 (up) to 0xF703 (right), F1 0xF704 on, forward delete
// 0xF728, Home 0xF729, End 0xF72B, Page Up 0xF72C, Page Down 0xF72D.
char16_t firstCharacter(const QKeyEvent &event);

// Where the event happened, in view's coordinates, whichever widget received it.
QPointF locationInView(const QSinglePointEvent &event, const QWidget &view);
