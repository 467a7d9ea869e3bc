#pragma once

// The stored form of the modulators: each function lists the items of one kind of
// modulator once and serves both directions (see ZSerializationContext). Targets are
// stored as "Parameter" children; the index of the controlled parameter is kept under
// "ParameterIndex". A read parameter index outside the plug-in's parameters drops the
// target; a modulator left without targets gets the default target.

#include "modulation/lfo.h"
#include "modulation/midi_controllers.h"
#include "modulation/multi_parameter.h"
#include "state/serialization_context.h"

#include <string_view>

namespace halvern {

struct ZModulatorStateScope {
    ZModulatorTarget defaultTarget; // what a modulator without stored targets controls
    int parameterCount = 0;         // valid parameter indices are 0 .. parameterCount - 1
};

// One "LFO" element: its settings, shape, detectors and targets.
void SerializeLFO(const ZSerializationContext& context, ZLFO& lfo, const ZModulatorStateScope& scope);
// The items of an LFO's shape, as attributes of the context's element.
void SerializeSignalGenerator(const ZSerializationContext& context, ZSignalGenerator& generator);
// One "MultiParameter" element: settings, targets, "Banks" and "ValueBackup".
void SerializeMultiParameter(const ZSerializationContext& context, ZMultiParameter& multiParameter,
                             const ZModulatorStateScope& scope);
// "Controllers" with one "Controller" each and "NoteControllers" with one "NoteController"
// each, as children of the context's element.
void SerializeControllerLists(const ZSerializationContext& context, ZMIDIControllers& controllers,
                              const ZModulatorStateScope& scope);

inline constexpr std::string_view kPresetSwitchElement = "PreviousNextPresetController";
// The child "PreviousNextPresetController" of the context's element, written only when
// the switch differs from its defaults.
void SerializePresetSwitch(const ZSerializationContext& context, ZPresetSwitchController& presetSwitch);

} // namespace halvern
