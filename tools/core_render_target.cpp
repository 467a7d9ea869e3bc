#include "tools/core_render_target.h"

#include "presets/factory_presets.h"

namespace halvern::tools {

CoreRenderTarget::CoreRenderTarget()
{
    instance_.core().SetPresets(ZPresetCollection::ReadBlock(FactoryPresetBlock()), "");
}

int CoreRenderTarget::parameterCount() { return core().GetParameterCount(); }

std::string CoreRenderTarget::parameterKey(int index) { return core().GetParameterID(index); }

bool CoreRenderTarget::setFromText(int index, const std::string& text)
{
    return core().SetParameterFromDisplayText(index, text);
}

void CoreRenderTarget::setNormalized(int index, double normalized) { core().SetParameter(index, normalized); }

void CoreRenderTarget::setup(double sampleRate, int maxBlock) { instance_.setup(sampleRate, maxBlock); }

void CoreRenderTarget::start() { instance_.start(); }

void CoreRenderTarget::process(float* const* inputs, float* const* outputs, int n) { instance_.process(inputs, outputs, n); }

int CoreRenderTarget::tailLength() { return instance_.tailLength(); }

} // namespace halvern::tools
