#include "editor/midi_items.h"

#include "core/z_exception.h"

#include <vector>

namespace halvern {
namespace {

template <class Item>
const Item& checked(const ZMIDIItem& item)
{
    if (!std::holds_alternative<Item>(item))
        throw ZException(kUnknownMIDIItem);
    return std::get<Item>(item);
}

template <class Item>
std::vector<Item> replaced(const std::vector<Item>& list, int index, const ZMIDIItem& item)
{
    if (index < 0 || index >= static_cast<int>(list.size()))
        throw ZException(kUnknownMIDIItem);
    std::vector<Item> changed = list;
    changed[static_cast<size_t>(index)] = checked<Item>(item);
    return changed;
}

template <class Item>
const Item& at(const std::vector<Item>& list, int index)
{
    if (index < 0 || index >= static_cast<int>(list.size()))
        throw ZException(kUnknownMIDIItem);
    return list[static_cast<size_t>(index)];
}

} // namespace

ZMIDIItem GetMIDIItem(const ZMIDIControllers& controllers, ZMIDIItemKind kind, int index)
{
    switch (kind) {
    case ZMIDIItemKind::Controller:
        return at(controllers.controllers(), index);
    case ZMIDIItemKind::NoteController:
        return at(controllers.noteControllers(), index);
    case ZMIDIItemKind::PresetSwitch:
        if (index == 0)
            return controllers.presetSwitch();
        break;
    }
    throw ZException(kUnknownMIDIItem);
}

void SetMIDIItem(ZMIDIControllers& controllers, ZMIDIItemKind kind, int index, const ZMIDIItem& item)
{
    switch (kind) {
    case ZMIDIItemKind::Controller:
        controllers.setControllers(replaced(controllers.controllers(), index, item));
        return;
    case ZMIDIItemKind::NoteController:
        controllers.setNoteControllers(replaced(controllers.noteControllers(), index, item));
        return;
    case ZMIDIItemKind::PresetSwitch:
        if (index == 0) {
            controllers.setPresetSwitch(checked<ZPresetSwitchController>(item));
            return;
        }
        break;
    }
    throw ZException(kUnknownMIDIItem);
}

std::string MIDISourceName(int32_t controller)
{
    switch (static_cast<ZMIDISource>(controller)) {
    case ZMIDISource::Aftertouch:
        return "Aftertouch";
    case ZMIDISource::PitchBend:
        return "Pitch-bend";
    case ZMIDISource::VelocityOnOff:
        return "Velocity (on & off)";
    case ZMIDISource::VelocityOn:
        return "Velocity (on)";
    }
    return "CC " + std::to_string(controller);
}

std::string NoteName(int note)
{
    static const char* const names[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    const int octave = (note >= 0 ? note / 12 : (note - 11) / 12) - 1;
    return names[((note % 12) + 12) % 12] + std::to_string(octave);
}

} // namespace halvern
