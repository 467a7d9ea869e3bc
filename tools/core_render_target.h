#pragma once

// The plug-in core built into the renderer (the same chain the library builds, with the
// factory presets), driven directly, without a plug-in library.

#include "analysis/core_block_processor.h"
#include "tools/render_target.h"

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

    ZAudioEffectPluginToAudioPluginAdapter& core() { return instance_.core(); }

private:
    ZCoreBlockProcessor instance_;
};

} // namespace halvern::tools
