#include "analysis/core_block_processor.h"

#include "reverb/halvern_audio_effect_plugin.h"

namespace halvern {

ZCoreBlockProcessor::ZCoreBlockProcessor()
    : core_(std::make_unique<ZQuessaneAudioEffectPlugin>(std::make_unique<HalvernAudioEffectPlugin>()))
{
}

void ZCoreBlockProcessor::setup(double sampleRate, int maxBlock)
{
    core_->SetSampleRate(sampleRate);
    core_->SetMaxBlockSize(maxBlock);
}

void ZCoreBlockProcessor::start() { core_->InitProcessing(); }

void ZCoreBlockProcessor::process(float* const* inputs, float* const* outputs, int n)
{
    core_->ProcessBlock(inputs, outputs, n, true);
    core_->ProcessUpdate();
}

int ZCoreBlockProcessor::tailLength() { return core_->GetTailSamples(); }

} // namespace halvern
