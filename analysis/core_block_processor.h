#pragma once

// A private instance of the plug-in core with the reverb built into the program, driven
// directly as a block processor, the way a host drives it: rate and longest block
// first, then the settings, then start, then blocks.

#include "analysis/impulse_render.h"
#include "state/quessane_audio_effect_plugin.h"

#include <memory>

namespace halvern {

class ZCoreBlockProcessor final : public ZBlockProcessor {
public:
    ZCoreBlockProcessor();

    ZQuessaneAudioEffectPlugin& core() { return *core_; }
    void setup(double sampleRate, int maxBlock);
    // Prepares processing; call after the settings are made.
    void start();
    void process(float* const* inputs, float* const* outputs, int n) override;
    int tailLength() override;

private:
    std::unique_ptr<ZQuessaneAudioEffectPlugin> core_;
};

} // namespace halvern
