#include "NSEvent+XExtensions.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWidget>

namespace {

QPointingDevice::PointerType g_pointingDeviceType = QPointingDevice::PointerType::Unknown;

// Keys with no text of their own, as the function-key characters the key handlers compare with.
char16_t specialKeyCharacter(int key)
{
    switch (key) {
    case Qt::Key_Return:
        return 0x0D;
    case Qt::Key_Enter:
        return 0x03;
    case Qt::Key_Tab:
        return 0x09;
    case Qt::Key_Backtab:
        return 0x19;
    case Qt::Key_Backspace:
        return 0x7F;
    case Qt::Key_Escape:
        return 0x1B;
    case Qt::Key_Up:
        return 0xF700;
    case Qt::Key_Down:
        return 0xF701;
    case Qt::Key_Left:
        return 0xF702;
    case Qt::Key_Right:
        return 0xF703;
    case Qt::Key_Delete:
        return 0xF728;
    case Qt::Key_Home:
        return 0xF729;
    case Qt::Key_End:
        return 0xF72B;
    case Qt::Key_PageUp:
        return 0xF72C;
    case Qt::Key_PageDown:
        return 0xF72D;
    default:
        break;
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return char16_t(0xF704 + (key - Qt::Key_F1));
    return 0;
}

} // namespace

quint32 modifierFlags(Qt::KeyboardModifiers modifiers)
{
    quint32 flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= ShiftKeyMask;
    if (modifiers & Qt::MetaModifier)
        flags |= ControlKeyMask;
    if (modifiers & Qt::AltModifier)
        flags |= AlternateKeyMask;
    if (modifiers & Qt::ControlModifier)
        flags |= CommandKeyMask;
    if (modifiers & Qt::KeypadModifier)
        flags |= NumericPadKeyMask;
    return flags;
}

quint32 deviceIndependentModifierFlags(Qt::KeyboardModifiers modifiers)
{
    return modifierFlags(modifiers) & DeviceIndependentModifierFlagsMask;
}

quint32 deviceIndependentModifierFlags(const QInputEvent &event)
{
    return deviceIndependentModifierFlags(event.modifiers());
}

quint32 standardModifierFlags(Qt::KeyboardModifiers modifiers)
{
    return modifierFlags(modifiers) & StandardModifierFlagsMask;
}

quint32 standardModifierFlags(const QInputEvent &event)
{
    return standardModifierFlags(event.modifiers());
}

quint32 standardModifierFlags()
{
    return standardModifierFlags(QGuiApplication::queryKeyboardModifiers());
}

QPointingDevice::PointerType currentPointingDeviceType()
{
    return g_pointingDeviceType;
}

void setCurrentPointingDeviceType(QPointingDevice::PointerType type)
{
    g_pointingDeviceType = type;
}

char16_t firstCharacter(const QKeyEvent &event)
{
    const int key = event.key();
    if (const char16_t special = specialKeyCharacter(key))
        return special;
    // Control and Command turn a letter's text into a control code, so the character comes from
    // the key, which Qt names by its capital letter.
    if (key >= Qt::Key_Space && key < Qt::Key_Escape && QChar::isPrint(char32_t(key))) {
        char32_t character = char32_t(key);
        if (!(event.modifiers() & Qt::ShiftModifier))
            character = QChar::toLower(character);
        if (QChar::requiresSurrogates(character))
            return QChar::highSurrogate(character);
        return char16_t(character);
    }
    const QString text = event.text();
    return text.isEmpty() ? char16_t(0) : text.at(0).unicode();
}

QPointF locationInView(const QSinglePointEvent &event, const QWidget &view)
{
    return view.mapFromGlobal(event.globalPosition());
}
