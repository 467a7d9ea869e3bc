#include "modulation/midi_controllers.h"

#include "modulation/modulator_target_list.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvern {
namespace {

constexpr int kHighestNote = 127;

bool channelMatches(int32_t stored, int channel)
{
    return stored == 0 || stored == channel + 1;
}

double fromSevenBits(int value)
{
    return 2.0 * std::clamp(value, 0, 127) / 127.0 - 1.0;
}

bool noteMatches(const ZNoteController& controller, int note)
{
    switch (controller.mode) {
    case ZNoteControllerMode::OnOffAllOctaves:
    case ZNoteControllerMode::SwitchAllOctaves:
        return note % 12 == ((controller.note % 12) + 12) % 12;
    case ZNoteControllerMode::OnOff:
    case ZNoteControllerMode::Switch:
        return note == controller.note;
    default:
        return true; // the pitch modes follow every note
    }
}

// Where a note lies between the lowest and the highest note: linear in the note number,
// or linear in frequency for the logarithmic mode (useful for frequency parameters).
double notePosition(ZNoteControllerMode mode, int note)
{
    if (mode == ZNoteControllerMode::Logarithmic)
        return (std::exp2(note / 12.0) - 1.0) / (std::exp2(kHighestNote / 12.0) - 1.0);
    return static_cast<double>(note) / kHighestNote;
}

} // namespace

void ZMIDIControllers::setControllers(std::vector<ZMIDIControllerAssignment> controllers)
{
    ZLockHolder hold(processingLock_, -1);
    controllers_.swap(controllers);
}

void ZMIDIControllers::setNoteControllers(std::vector<ZNoteController> noteControllers)
{
    std::vector<bool> states(noteControllers.size(), false);
    ZLockHolder hold(processingLock_, -1);
    noteControllers_.swap(noteControllers);
    switchStates_.swap(states);
}

void ZMIDIControllers::setControllersEnabled(bool enabled)
{
    ZLockHolder hold(processingLock_, -1);
    controllersEnabled_ = enabled;
}

void ZMIDIControllers::setNoteControllersEnabled(bool enabled)
{
    ZLockHolder hold(processingLock_, -1);
    noteControllersEnabled_ = enabled;
}

void ZMIDIControllers::setPresetSwitch(ZPresetSwitchController presetSwitch)
{
    ZLockHolder hold(processingLock_, -1);
    if (presetSwitch != presetSwitch_)
        presetZone_ = 0;
    presetSwitch_ = presetSwitch;
}

void ZMIDIControllers::drive(int channel, int32_t source, double m, ZParameterRegistry& registry)
{
    if (!controllersEnabled_)
        return;
    for (const ZMIDIControllerAssignment& assignment : controllers_)
        if (assignment.enabled && assignment.controller == source && channelMatches(assignment.channel, channel))
            WriteModulatedValue(registry, assignment.target.parameter, TargetValueFor(assignment.target, assignment.target, m));
}

int32_t ZMIDIControllers::assignedParameter(int channel, int32_t controller) const
{
    if (!controllersEnabled_)
        return -1;
    for (const ZMIDIControllerAssignment& assignment : controllers_)
        if (assignment.enabled && assignment.controller == controller && channelMatches(assignment.channel, channel))
            return assignment.target.parameter;
    return -1;
}

void ZMIDIControllers::recordReceived(int channel, int32_t controller)
{
    const uint64_t count = (lastReceived_.load(std::memory_order_relaxed) >> 16) + 1;
    lastReceived_.store(count << 16 | static_cast<uint64_t>(channel & 0xFF) << 8 | static_cast<uint64_t>(controller & 0xFF),
                        std::memory_order_release);
}

ZReceivedController ZMIDIControllers::lastReceived() const
{
    const uint64_t word = lastReceived_.load(std::memory_order_acquire);
    return {static_cast<uint32_t>(word >> 16), static_cast<int32_t>(word >> 8 & 0xFF), static_cast<int32_t>(word & 0xFF)};
}

void ZMIDIControllers::controllerChanged(int channel, int controller, int value, ZParameterRegistry& registry)
{
    recordReceived(channel, controller);
    watchPresetSwitch(channel, controller, value);
    drive(channel, controller, fromSevenBits(value), registry);
}

void ZMIDIControllers::aftertouch(int channel, int value, ZParameterRegistry& registry)
{
    recordReceived(channel, static_cast<int32_t>(ZMIDISource::Aftertouch));
    drive(channel, static_cast<int32_t>(ZMIDISource::Aftertouch), fromSevenBits(value), registry);
}

void ZMIDIControllers::pitchBend(int channel, int value, ZParameterRegistry& registry)
{
    recordReceived(channel, static_cast<int32_t>(ZMIDISource::PitchBend));
    const double m = std::clamp((value - 8192) / 8192.0, -1.0, 1.0);
    drive(channel, static_cast<int32_t>(ZMIDISource::PitchBend), m, registry);
}

void ZMIDIControllers::note(int channel, int note, int velocity, bool on, ZParameterRegistry& registry)
{
    if (on) {
        const double m = fromSevenBits(velocity);
        drive(channel, static_cast<int32_t>(ZMIDISource::VelocityOnOff), m, registry);
        drive(channel, static_cast<int32_t>(ZMIDISource::VelocityOn), m, registry);
    } else {
        drive(channel, static_cast<int32_t>(ZMIDISource::VelocityOnOff), -1.0, registry);
    }
    if (noteControllersEnabled_)
        driveNoteControllers(channel, note, on, registry);
}

void ZMIDIControllers::driveNoteControllers(int channel, int note, bool on, ZParameterRegistry& registry)
{
    for (size_t i = 0; i < noteControllers_.size(); ++i) {
        const ZNoteController& controller = noteControllers_[i];
        if (!controller.enabled || !channelMatches(controller.channel, channel) || !noteMatches(controller, note))
            continue;
        const double span = controller.maxValue - controller.value;
        switch (controller.mode) {
        case ZNoteControllerMode::Linear:
        case ZNoteControllerMode::Logarithmic:
            if (on)
                WriteModulatedValue(registry, controller.parameter,
                                    controller.value + span * notePosition(controller.mode, note));
            break;
        case ZNoteControllerMode::OnOff:
        case ZNoteControllerMode::OnOffAllOctaves:
            WriteModulatedValue(registry, controller.parameter, on ? controller.maxValue : controller.value);
            break;
        case ZNoteControllerMode::Switch:
        case ZNoteControllerMode::SwitchAllOctaves:
            if (on) {
                switchStates_[i] = !switchStates_[i];
                WriteModulatedValue(registry, controller.parameter, switchStates_[i] ? controller.maxValue : controller.value);
            }
            break;
        }
    }
}

void ZMIDIControllers::watchPresetSwitch(int channel, int controller, int value)
{
    if (!presetSwitch_.enabled || presetSwitch_.controller != controller || !channelMatches(presetSwitch_.channel, channel))
        return;
    const double fraction = std::clamp(value, 0, 127) / 127.0;
    const int zone = fraction < 0.33 ? -1 : (fraction > 0.66 ? 1 : 0);
    if (zone != 0 && zone != presetZone_)
        presetStep_ = zone;
    presetZone_ = zone;
}

int ZMIDIControllers::takePresetStep()
{
    return std::exchange(presetStep_, 0);
}

} // namespace halvern
