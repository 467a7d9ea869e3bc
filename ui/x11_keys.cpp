#include "ui/x11_keys.h"

#include "core/utf8.h"

#include <X11/X.h>
#include <X11/keysym.h>

namespace halvern {
namespace {

ZKey NamedKey(unsigned long keysym)
{
    switch (keysym) {
    case XK_Return:
    case XK_KP_Enter:
        return ZKey::Enter;
    case XK_Escape:
        return ZKey::Escape;
    case XK_Tab:
    case XK_ISO_Left_Tab:
        return ZKey::Tab;
    case XK_BackSpace:
        return ZKey::Backspace;
    case XK_Delete:
    case XK_KP_Delete:
        return ZKey::Delete;
    case XK_Left:
    case XK_KP_Left:
        return ZKey::Left;
    case XK_Right:
    case XK_KP_Right:
        return ZKey::Right;
    case XK_Up:
    case XK_KP_Up:
        return ZKey::Up;
    case XK_Down:
    case XK_KP_Down:
        return ZKey::Down;
    case XK_Home:
    case XK_KP_Home:
        return ZKey::Home;
    case XK_End:
    case XK_KP_End:
        return ZKey::End;
    case XK_Prior:
    case XK_KP_Prior:
        return ZKey::PageUp;
    case XK_Next:
    case XK_KP_Next:
        return ZKey::PageDown;
    default:
        return ZKey::Other;
    }
}

bool IsPrintable(const std::string& text)
{
    for (const char c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            return false;
    return !text.empty();
}

} // namespace

unsigned ModifiersFromX(unsigned state)
{
    unsigned modifiers = kModifierNone;
    if ((state & ShiftMask) != 0)
        modifiers |= kModifierShift;
    if ((state & ControlMask) != 0)
        modifiers |= kModifierControl;
    if ((state & Mod1Mask) != 0)
        modifiers |= kModifierAlt;
    return modifiers;
}

ZKeyEvent KeyEventFromX(unsigned long keysym, const std::string& text, unsigned state)
{
    ZKeyEvent event;
    event.modifiers = ModifiersFromX(state);
    event.key = NamedKey(keysym);
    if (event.key != ZKey::Other)
        return event;
    // With Control held the text is a control character; the key's own character is
    // what a shortcut means (Control+C is "c").
    const std::string typed = IsPrintable(text) ? text : TextFromKeysym(keysym);
    if (!typed.empty()) {
        event.key = ZKey::Character;
        event.text = typed;
    }
    return event;
}

std::string TextFromKeysym(unsigned long keysym)
{
    std::string text;
    if ((keysym >= 0x20 && keysym <= 0x7E) || (keysym >= 0xA0 && keysym <= 0xFF))
        AppendUTF8(text, static_cast<char32_t>(keysym)); // Latin-1 keysyms are their code points
    else if ((keysym & 0xFF000000UL) == 0x01000000UL && (keysym & 0x00FFFFFFUL) <= 0x10FFFF)
        AppendUTF8(text, static_cast<char32_t>(keysym & 0x00FFFFFFUL));
    return text;
}

} // namespace halvern
