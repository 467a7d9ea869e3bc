#include "tools/render_session.h"

#include "core/z_format.h"
#include "reverb/halvern_audio_effect_plugin.h"

#include <algorithm>
#include <stdexcept>

namespace halvern::tools {

RenderSession::RenderSession(double sampleRate, int blockSize)
    : sampleRate_(sampleRate), blockSize_(blockSize),
      core_(std::make_unique<ZAudioEffectPluginToAudioPluginAdapter>(std::make_unique<HalvernAudioEffectPlugin>()))
{
    core_->SetSampleRate(sampleRate);
    core_->SetMaxBlockSize(blockSize);
}

int RenderSession::findParameter(const std::string& key)
{
    for (int index = 0; index < core_->GetParameterCount(); ++index)
        if (core_->GetParameterID(index) == key)
            return index;
    throw std::runtime_error("no parameter has the key \"" + key + "\"");
}

void RenderSession::setByKey(const std::string& key, const std::string& text)
{
    const int index = findParameter(key);
    const ZValue* value = core_->parameters().value(index);
    double normalized = 0.0;
    if (value == nullptr || !value->normalizedFromDisplayText(text, normalized))
        throw std::runtime_error("\"" + text + "\" is not a value of " + key);
    core_->SetParameter(index, normalized);
}

void RenderSession::setByIndex(int index, double normalized)
{
    if (!core_->parameters().isValidIndex(index))
        throw std::runtime_error("no parameter has the index " + std::to_string(index));
    core_->SetParameter(index, normalized);
}

void RenderSession::start()
{
    core_->InitProcessing();
}

AudioData RenderSession::render(const AudioData& input, double minimumTail)
{
    if (input.channels.empty())
        throw std::runtime_error("the input has no channels");
    const size_t tail = static_cast<size_t>(std::max<double>(tailLength(), minimumTail * sampleRate_));
    const size_t frames = input.frames() + tail;
    std::vector<float> left(frames, 0.0f), right(frames, 0.0f);
    std::copy(input.channels[0].begin(), input.channels[0].end(), left.begin());
    const auto& second = input.channels.size() > 1 ? input.channels[1] : input.channels[0];
    std::copy(second.begin(), second.end(), right.begin());

    AudioData output;
    output.sampleRate = sampleRate_;
    output.channels.assign(2, std::vector<float>(frames, 0.0f));
    for (size_t at = 0; at < frames; at += static_cast<size_t>(blockSize_)) {
        const int n = static_cast<int>(std::min<size_t>(static_cast<size_t>(blockSize_), frames - at));
        float* in[2] = {left.data() + at, right.data() + at};
        float* out[2] = {output.channels[0].data() + at, output.channels[1].data() + at};
        core_->ProcessBlock(in, out, n, true);
        core_->ProcessUpdate();
    }
    return output;
}

} // namespace halvern::tools

namespace halvern::tools {

AudioData RenderSession::renderImpulse()
{
    AudioData impulse;
    impulse.sampleRate = sampleRate_;
    impulse.channels.assign(2, std::vector<float>(1, 1.0f));
    const auto& reverb = dynamic_cast<const HalvernAudioEffectPlugin&>(core_->effect());
    return render(impulse, 1.5 * reverb.settings().reverbTime + 0.5);
}

} // namespace halvern::tools
