#pragma once

// The maker-wide plug-in core: the modulator host that every effect of the family runs
// in, as host adapters create it.

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"

namespace halvern {

class ZQuessaneAudioEffectPlugin : public ZAudioEffectPluginToAudioPluginAdapter {
public:
    // Empty until Attach gives it its effect.
    ZQuessaneAudioEffectPlugin() = default;
};

} // namespace halvern
