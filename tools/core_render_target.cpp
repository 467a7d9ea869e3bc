#include "tools/core_render_target.h"

#include "presets/factory_presets.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"

namespace halvern::tools {

CoreRenderTarget::CoreRenderTarget()
{
    auto core = std::make_unique<ZQuessaneAudioEffectPlugin>(std::make_unique<HalvernAudioEffectPlugin>());
    core->SetPresets(ZPresetCollection::ReadBlock(FactoryPresetBlock()), "");
    core_ = std::move(core);
}

int CoreRenderTarget::parameterCount() { return core_->GetParameterCount(); }

std::string CoreRenderTarget::parameterKey(int index) { return core_->GetParameterID(index); }

bool CoreRenderTarget::setFromText(int index, const std::string& text)
{
    return core_->SetParameterFromDisplayText(index, text);
}

void CoreRenderTarget::setNormalized(int index, double normalized) { core_->SetParameter(index, normalized); }

void CoreRenderTarget::setup(double sampleRate, int maxBlock)
{
    core_->SetSampleRate(sampleRate);
    core_->SetMaxBlockSize(maxBlock);
}

void CoreRenderTarget::start() { core_->InitProcessing(); }

void CoreRenderTarget::process(float* const* inputs, float* const* outputs, int n)
{
    core_->ProcessBlock(inputs, outputs, n, true);
    core_->ProcessUpdate();
}

int CoreRenderTarget::tailLength() { return core_->GetTailSamples(); }

} // namespace halvern::tools
