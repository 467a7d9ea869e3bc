#pragma once

// MIDI input of the plug-in core: raw channel messages are decoded into note,
// controller, aftertouch, pitch-bend and program calls; the state of held notes and of
// the last controller values is kept for whoever needs it.

#include "core/z_object.h"

#include <array>
#include <bitset>
#include <cstdint>

namespace halvern {

class ZMIDIState {
public:
    static constexpr int kChannels = 16;

    bool isNoteHeld(int channel, int note) const;
    int heldNoteCount(int channel) const;
    int controller(int channel, int controller) const;
    int pitchBend(int channel) const;  // 0..16383, centre 8192

    void noteOn(int channel, int note);
    void noteOff(int channel, int note);
    void releaseAll(int channel);
    void setController(int channel, int controller, int value);
    void setPitchBend(int channel, int value);

private:
    std::array<std::bitset<128>, kChannels> held_{};
    std::array<std::array<uint8_t, 128>, kChannels> controllers_{};
    std::array<uint16_t, kChannels> pitchBend_{8192, 8192, 8192, 8192, 8192, 8192, 8192, 8192,
                                                8192, 8192, 8192, 8192, 8192, 8192, 8192, 8192};
};

class ZMIDIProcessorBase : public ZObject {
public:
    // Decodes one channel message (status byte, two data bytes) at a sample offset.
    virtual void ProcessMIDIMessage(uint8_t status, uint8_t data1, uint8_t data2, int32_t sampleOffset);
};

class ZMIDIProcessor : public ZMIDIProcessorBase {
public:
    // velocity 0 with on = true counts as a note-off.
    virtual void ProcessNote(int channel, int note, int velocity, bool on, int32_t sampleOffset);
    virtual void ProcessMIDIController(int channel, int controller, int value, int32_t sampleOffset);
    virtual void ProcessAftertouch(int channel, int value, int32_t sampleOffset);
    virtual void ProcessPolyAftertouch(int channel, int note, int value, int32_t sampleOffset);
    virtual void ProcessPitchBend(int channel, int value, int32_t sampleOffset);
    virtual void ProcessProgramChange(int channel, int program, int32_t sampleOffset);
    virtual void AllNotesOff(int channel, int32_t sampleOffset);

    void ProcessMIDIMessage(uint8_t status, uint8_t data1, uint8_t data2, int32_t sampleOffset) override;

    const ZMIDIState& midiState() const { return midiState_; }

private:
    ZMIDIState midiState_;
};

} // namespace halvern
