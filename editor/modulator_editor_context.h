#pragma once

// What every modulator editor page needs from the editor around it: the plug-in, the
// host for gestures, the Learn recorder, and the modulator area in which pages open.

#include "core/plugin_editor.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>

namespace halvern {

// The page the bottom area shows: a modulator's editor, the MIDI settings, one of the
// editor's other pages (the morph pad, the equalizer, the decay display), or none.
struct ZModulatorSelection {
    enum class Kind { None, LFO, MultiParameter, MIDI, Morph, Equalizer, Decay };
    Kind kind = Kind::None;
    int index = 0; // 0..3 for LFOs and MultiParameters
    bool operator==(const ZModulatorSelection&) const = default;
};

// Parameters the user touches in the main editor while a modulator learns. The editor
// calls it for every gesture: the parameter, its value when the gesture began and when
// it ended (the range the user moved).
class ZLearnListener {
public:
    virtual ~ZLearnListener() = default;
    virtual void ParameterTouched(int32_t index, double from, double to) = 0;
};

struct ZModulatorEditorContext {
    ZQuessaneAudioEffectPlugin& core;
    HalvernAudioEffectPlugin& effect;
    ZEditorHost& host;
    // Opens a page in the modulator area in place of the one shown (the MIDI settings
    // from "Attach MIDI controller", say), or goes back to the overview.
    std::function<void(ZModulatorSelection)> open;
    // While set, every gesture in the main editor is reported to the listener.
    std::function<void(ZLearnListener*)> setLearnListener;
};

} // namespace halvern
