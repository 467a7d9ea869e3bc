#include "tools/render_session.h"

#include "tools/core_render_target.h"
#include "tools/vst2_render_target.h"

#include <algorithm>
#include <stdexcept>

namespace halvern::tools {

RenderSession::RenderSession(double sampleRate, int blockSize)
    : RenderSession(sampleRate, blockSize, std::make_unique<CoreRenderTarget>())
{
}

RenderSession::RenderSession(double sampleRate, int blockSize, const std::string& pluginPath)
    : RenderSession(sampleRate, blockSize, std::make_unique<Vst2RenderTarget>(pluginPath))
{
}

RenderSession::RenderSession(double sampleRate, int blockSize, std::unique_ptr<RenderTarget> target)
    : sampleRate_(sampleRate), blockSize_(blockSize), target_(std::move(target))
{
    target_->setup(sampleRate, blockSize);
}

ZAudioEffectPluginToAudioPluginAdapter& RenderSession::core()
{
    auto* builtIn = dynamic_cast<CoreRenderTarget*>(target_.get());
    if (builtIn == nullptr)
        throw std::logic_error("the session runs a plug-in library, not the built-in core");
    return builtIn->core();
}

int RenderSession::findParameter(const std::string& key)
{
    for (int index = 0; index < target_->parameterCount(); ++index)
        if (target_->parameterKey(index) == key)
            return index;
    throw std::runtime_error("no parameter has the key \"" + key + "\"");
}

void RenderSession::setByKey(const std::string& key, const std::string& text)
{
    if (!target_->setFromText(findParameter(key), text))
        throw std::runtime_error("\"" + text + "\" is not a value of " + key);
}

void RenderSession::setByIndex(int index, double normalized)
{
    if (index < 0 || index >= target_->parameterCount())
        throw std::runtime_error("no parameter has the index " + std::to_string(index));
    target_->setNormalized(index, normalized);
}

void RenderSession::start() { target_->start(); }

void RenderSession::processBlock(float* const* inputs, float* const* outputs, int n) { target_->process(inputs, outputs, n); }

ZAudioData RenderSession::render(const ZAudioData& input, double minimumTail)
{
    if (input.channels.empty())
        throw std::runtime_error("the input has no channels");
    const size_t tail = static_cast<size_t>(std::max<double>(tailLength(), minimumTail * sampleRate_));
    const size_t frames = input.frames() + tail;
    std::vector<float> left(frames, 0.0f), right(frames, 0.0f);
    std::copy(input.channels[0].begin(), input.channels[0].end(), left.begin());
    const auto& second = input.channels.size() > 1 ? input.channels[1] : input.channels[0];
    std::copy(second.begin(), second.end(), right.begin());

    ZAudioData output;
    output.sampleRate = sampleRate_;
    output.channels.assign(2, std::vector<float>(frames, 0.0f));
    for (size_t at = 0; at < frames; at += static_cast<size_t>(blockSize_)) {
        const int n = static_cast<int>(std::min<size_t>(static_cast<size_t>(blockSize_), frames - at));
        float* in[2] = {left.data() + at, right.data() + at};
        float* out[2] = {output.channels[0].data() + at, output.channels[1].data() + at};
        processBlock(in, out, n);
    }
    return output;
}

ZAudioData RenderSession::renderImpulse() { return *RenderImpulseResponse(*target_, sampleRate_, blockSize_); }

} // namespace halvern::tools
