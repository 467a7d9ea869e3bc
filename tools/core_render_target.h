#pragma once

// The plug-in core built into the renderer (the same chain the library builds), driven
// directly, without a plug-in library.

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "tools/render_target.h"

#include <memory>

namespace halvern::tools {

class CoreRenderTarget final : public RenderTarget {
public:
    CoreRenderTarget();

    int parameterCount() override;
    std::string parameterKey(int index) override;
    bool setFromText(int index, const std::string& text) override;
    void setNormalized(int index, double normalized) override;
    void setup(double sampleRate, int maxBlock) override;
    void start() override;
    void process(float* const* inputs, float* const* outputs, int n) override;
    int tailLength() override;

    ZAudioEffectPluginToAudioPluginAdapter& core() { return *core_; }

private:
    std::unique_ptr<ZAudioEffectPluginToAudioPluginAdapter> core_;
};

} // namespace halvern::tools
