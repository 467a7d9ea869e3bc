#pragma once

// Input events as the toolkit's views receive them, in logical units. The window turns
// X events into these; tests build them directly.

#include "ui/geometry.h"

#include <string>

namespace halvern {

enum ZModifiers : unsigned {
    kModifierNone = 0,
    kModifierShift = 1,
    kModifierControl = 2,
    kModifierAlt = 4,
};

enum class ZMouseButton { None = 0, Left = 1, Middle = 2, Right = 3 };

struct ZMouseEvent {
    ZPoint position;
    ZMouseButton button = ZMouseButton::Left;
    unsigned modifiers = kModifierNone;
    int clickCount = 1; // 2 for the second press of a double click
};

struct ZWheelEvent {
    ZPoint position;
    double steps = 0.0; // +1 a notch away from the user (up), -1 toward
    unsigned modifiers = kModifierNone;
};

enum class ZKey {
    Character, // text holds what was typed
    Enter,
    Escape,
    Tab,
    Backspace,
    Delete,
    Left,
    Right,
    Up,
    Down,
    Home,
    End,
    PageUp,
    PageDown,
    Other,
};

struct ZKeyEvent {
    ZKey key = ZKey::Other;
    std::string text; // UTF-8, for ZKey::Character
    unsigned modifiers = kModifierNone;
};

enum class ZCursor { Arrow, Hand, VerticalResize, Move, Text, Crosshair };

} // namespace halvern
