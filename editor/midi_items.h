#pragma once

// The items of the MIDI settings page, read and replaced one at a time: a controller
// assignment or a note controller by its place in its list, or the preset switch
// controller. A change builds the new list and hands it to ZMIDIControllers, which
// publishes it under the processing lock.

#include "modulation/midi_controllers.h"

#include <cstdint>
#include <string>
#include <variant>

namespace halvern {

enum class ZMIDIItemKind : int32_t { Controller, NoteController, PresetSwitch };

using ZMIDIItem = std::variant<ZMIDIControllerAssignment, ZNoteController, ZPresetSwitchController>;

// The refusal of an item that is not there: a kind the lists do not know, a place past
// the end of its list, or an item of another kind.
inline constexpr const char* kUnknownMIDIItem = "Unknown item to set.";

// The preset switch is item 0 of its kind. Both throw ZException(kUnknownMIDIItem).
ZMIDIItem GetMIDIItem(const ZMIDIControllers& controllers, ZMIDIItemKind kind, int index);
void SetMIDIItem(ZMIDIControllers& controllers, ZMIDIItemKind kind, int index, const ZMIDIItem& item);

// "CC 7", "Aftertouch", "Pitch-bend", "Velocity (on & off)", "Velocity (on)".
std::string MIDISourceName(int32_t controller);
// A note's name with its octave, middle C (60) being "C4".
std::string NoteName(int note);

} // namespace halvern
