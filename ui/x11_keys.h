#pragma once

// Keyboard and pointer state from X as the toolkit's events take them. Pure functions:
// no connection to a server is needed.

#include "ui/events.h"

#include <string>

namespace halvern {

// Shift, Control and Alt (Mod1) from an X event's state field.
unsigned ModifiersFromX(unsigned state);

// The key event for an X keysym, the UTF-8 text the key typed and the event's state.
// Keys with a meaning of their own (Enter, arrows, ...) come first; any other key that
// typed printable text, or whose keysym is a character (Control+C), is a character.
ZKeyEvent KeyEventFromX(unsigned long keysym, const std::string& text, unsigned state);

// The UTF-8 text of a keysym (Latin-1 and Unicode keysyms), for when no input method
// turns keys into text; empty for keysyms that are no character.
std::string TextFromKeysym(unsigned long keysym);

} // namespace halvern
