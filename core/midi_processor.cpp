#include "core/midi_processor.h"

namespace halvern {
namespace {

constexpr int kAllSoundOff = 120;
constexpr int kAllNotesOff = 123;

bool validChannel(int channel) { return channel >= 0 && channel < ZMIDIState::kChannels; }
bool validData(int value) { return value >= 0 && value < 128; }

} // namespace

bool ZMIDIState::isNoteHeld(int channel, int note) const
{
    return validChannel(channel) && validData(note) && held_[static_cast<size_t>(channel)].test(static_cast<size_t>(note));
}

int ZMIDIState::heldNoteCount(int channel) const
{
    return validChannel(channel) ? static_cast<int>(held_[static_cast<size_t>(channel)].count()) : 0;
}

int ZMIDIState::controller(int channel, int number) const
{
    return validChannel(channel) && validData(number) ? controllers_[static_cast<size_t>(channel)][static_cast<size_t>(number)] : 0;
}

int ZMIDIState::pitchBend(int channel) const
{
    return validChannel(channel) ? pitchBend_[static_cast<size_t>(channel)] : 8192;
}

void ZMIDIState::noteOn(int channel, int note)
{
    if (validChannel(channel) && validData(note))
        held_[static_cast<size_t>(channel)].set(static_cast<size_t>(note));
}

void ZMIDIState::noteOff(int channel, int note)
{
    if (validChannel(channel) && validData(note))
        held_[static_cast<size_t>(channel)].reset(static_cast<size_t>(note));
}

void ZMIDIState::releaseAll(int channel)
{
    if (validChannel(channel))
        held_[static_cast<size_t>(channel)].reset();
}

void ZMIDIState::setController(int channel, int number, int value)
{
    if (validChannel(channel) && validData(number) && validData(value))
        controllers_[static_cast<size_t>(channel)][static_cast<size_t>(number)] = static_cast<uint8_t>(value);
}

void ZMIDIState::setPitchBend(int channel, int value)
{
    if (validChannel(channel) && value >= 0 && value < 16384)
        pitchBend_[static_cast<size_t>(channel)] = static_cast<uint16_t>(value);
}

void ZMIDIProcessorBase::ProcessMIDIMessage(uint8_t, uint8_t, uint8_t, int32_t) {}

void ZMIDIProcessor::ProcessMIDIMessage(uint8_t status, uint8_t data1, uint8_t data2, int32_t offset)
{
    const int channel = status & 0x0F;
    const int a = data1 & 0x7F;
    const int b = data2 & 0x7F;
    switch (status & 0xF0) {
    case 0x80: ProcessNote(channel, a, b, false, offset); break;
    case 0x90: ProcessNote(channel, a, b, b != 0, offset); break;
    case 0xA0: ProcessPolyAftertouch(channel, a, b, offset); break;
    case 0xB0:
        if (a == kAllSoundOff || a == kAllNotesOff)
            AllNotesOff(channel, offset);
        else
            ProcessMIDIController(channel, a, b, offset);
        break;
    case 0xC0: ProcessProgramChange(channel, a, offset); break;
    case 0xD0: ProcessAftertouch(channel, a, offset); break;
    case 0xE0: ProcessPitchBend(channel, a | (b << 7), offset); break;
    default: break; // system messages carry nothing for the core
    }
}

void ZMIDIProcessor::ProcessNote(int channel, int note, int, bool on, int32_t)
{
    if (on)
        midiState_.noteOn(channel, note);
    else
        midiState_.noteOff(channel, note);
}

void ZMIDIProcessor::ProcessMIDIController(int channel, int controller, int value, int32_t)
{
    midiState_.setController(channel, controller, value);
}

void ZMIDIProcessor::ProcessAftertouch(int, int, int32_t) {}
void ZMIDIProcessor::ProcessPolyAftertouch(int, int, int, int32_t) {}

void ZMIDIProcessor::ProcessPitchBend(int channel, int value, int32_t)
{
    midiState_.setPitchBend(channel, value);
}

void ZMIDIProcessor::ProcessProgramChange(int, int, int32_t) {}

void ZMIDIProcessor::AllNotesOff(int channel, int32_t)
{
    midiState_.releaseAll(channel);
}

} // namespace halvern
