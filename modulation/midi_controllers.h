#pragma once

// MIDI control of parameters: controller assignments (continuous controllers,
// aftertouch, pitch-bend, note velocity), note controllers, and the controller that
// steps through presets. Lists are edited on the editor thread and published under the
// core's processing lock; MIDI arrives on the audio thread, which holds that lock.
//
// Channels are stored as 0 = any channel, 1..16 = that channel.
// Sources and their scaling into the modulator output m in [-1, 1]:
//   controllers 0..127 and aftertouch: m = 2 * value / 127 - 1;
//   pitch-bend: m = (bend - 8192) / 8192, limited to [-1, 1], so the centre gives m = 0;
//   velocity: m = 2 * velocity / 127 - 1 on a note-on; "Velocity (on & off)" also sends
//   m = -1 on the note-off.
// A controller record maps m onto its parameter with the modulators' range mapping:
// "FullRange" holds the range mode, "Range" the depth.

#include "core/parameter_registry.h"
#include "core/z_lock.h"
#include "modulation/range_mapping.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace halvern {

enum class ZMIDISource : int32_t {
    // 0..127 are continuous controller numbers.
    Aftertouch = 128,
    PitchBend = 129,
    VelocityOnOff = 130,
    VelocityOn = 131,
};

struct ZMIDIControllerAssignment {
    bool enabled = true;          // "Enabled"
    int32_t channel = 0;          // "Channel"
    int32_t controller = 1;       // "Controller": 0..127 or a ZMIDISource
    ZModulatorTarget target;      // parameter, "Value", "MaxValue", "Range", "FullRange", "Invert"
};

struct ZNoteController {
    bool enabled = true;                                  // "Enabled"
    ZNoteControllerMode mode = ZNoteControllerMode::Linear; // "Mode"
    int32_t channel = 0;                                  // "Channel"
    int32_t note = 60;                                    // "Note"
    double value = 0.0;                                   // "Value": the released / lowest end
    double maxValue = 1.0;                                // "MaxValue": the pressed / highest end
    int32_t parameter = 0;
};

struct ZPresetSwitchController {
    bool enabled = false;   // "Enabled"
    int32_t controller = 0; // "Controller"
    int32_t channel = 0;    // "Channel"

    bool operator==(const ZPresetSwitchController&) const = default;
};

// The controller the plug-in received last, for MIDI learn: count grows by one with
// every controller message, so a reader sees a new one even when it repeats the last.
struct ZReceivedController {
    uint32_t count = 0;     // 0: none received yet
    int32_t channel = 0;    // 0..15 as on the wire
    int32_t controller = 0; // 0..127, or ZMIDISource::Aftertouch / PitchBend

    bool operator==(const ZReceivedController&) const = default;
};

class ZMIDIControllers {
public:
    explicit ZMIDIControllers(ZLock& processingLock) : processingLock_(processingLock) {}

    // Editor thread.
    void setControllers(std::vector<ZMIDIControllerAssignment> controllers);
    void setNoteControllers(std::vector<ZNoteController> noteControllers);
    void setControllersEnabled(bool enabled);
    void setNoteControllersEnabled(bool enabled);
    // A changed switch starts outside both zones; setting the same switch again (as every
    // state load does) keeps its zone, so that a controller held in an outer third does
    // not step once more after the preset it chose has loaded.
    void setPresetSwitch(ZPresetSwitchController presetSwitch);

    const std::vector<ZMIDIControllerAssignment>& controllers() const { return controllers_; }
    const std::vector<ZNoteController>& noteControllers() const { return noteControllers_; }
    bool controllersEnabled() const { return controllersEnabled_; }
    bool noteControllersEnabled() const { return noteControllersEnabled_; }
    const ZPresetSwitchController& presetSwitch() const { return presetSwitch_; }

    // The parameter the first enabled assignment of a controller (0..127 or a
    // ZMIDISource) on a channel (0..15) drives, or -1; for hosts that map controllers
    // to parameters themselves.
    int32_t assignedParameter(int channel, int32_t controller) const;
    // Audio thread: MIDI input (channel 0..15 as on the wire).
    void controllerChanged(int channel, int controller, int value, ZParameterRegistry& registry);
    void aftertouch(int channel, int value, ZParameterRegistry& registry);
    void pitchBend(int channel, int value, ZParameterRegistry& registry);
    void note(int channel, int note, int velocity, bool on, ZParameterRegistry& registry);

    // Any thread: the controller received last. The audio thread records every
    // controller, aftertouch and pitch-bend message in one atomic word, without locking.
    ZReceivedController lastReceived() const;

    // Audio thread: -1 for the previous preset, +1 for the next, 0 when none was asked for
    // since the last call.
    int takePresetStep();

private:
    void drive(int channel, int32_t source, double m, ZParameterRegistry& registry);
    void watchPresetSwitch(int channel, int controller, int value);
    void driveNoteControllers(int channel, int note, bool on, ZParameterRegistry& registry);
    void recordReceived(int channel, int32_t controller);

    ZLock& processingLock_;
    std::vector<ZMIDIControllerAssignment> controllers_;
    std::vector<ZNoteController> noteControllers_;
    std::vector<bool> switchStates_; // one per note controller: the "Switch" modes' toggles
    bool controllersEnabled_ = false;
    bool noteControllersEnabled_ = false;
    ZPresetSwitchController presetSwitch_;
    int presetZone_ = 0;  // -1 below 33 %, +1 above 66 %, 0 between
    int presetStep_ = 0;
    // count << 16 | channel << 8 | controller; the count wraps harmlessly.
    std::atomic<uint64_t> lastReceived_{0};
    static_assert(std::atomic<uint64_t>::is_always_lock_free);
};

} // namespace halvern
