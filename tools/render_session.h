#pragma once

// Drives a render target offline the way a host does: sets the rate and block size,
// sets parameters, prepares processing, then feeds the audio block by block and lets
// the reverb ring out.

#include "audio_import/audio_data.h"
#include "tools/render_target.h"

#include <memory>
#include <string>

namespace halvern {
class ZAudioEffectPluginToAudioPluginAdapter;
}

namespace halvern::tools {

class RenderSession {
public:
    // Through the reverb core built into the program.
    RenderSession(double sampleRate, int blockSize);
    // Through the VST 2.4 plug-in library at pluginPath.
    RenderSession(double sampleRate, int blockSize, const std::string& pluginPath);

    // A parameter by its key with a value as the user would type it (display units);
    // throws std::runtime_error naming the key or the text that was not understood.
    void setByKey(const std::string& key, const std::string& text);
    // A parameter by its index with a normalised value.
    void setByIndex(int index, double normalized);

    // Prepares processing; call after the parameters are set.
    void start();
    // Processes the input followed by the reverb's tail (at least minimumTail seconds of
    // it); mono input feeds both channels.
    ZAudioData render(const ZAudioData& input, double minimumTail = 0.0);
    // The response to a unit impulse on both channels, rendered until it has died away
    // (half a second below -100 dB) or a minute and a half has passed: long enough to
    // measure its decay whatever the plug-in reports as its tail.
    ZAudioData renderImpulse();

    // The built-in core; only for sessions made without a plug-in library.
    ZAudioEffectPluginToAudioPluginAdapter& core();
    int tailLength() { return target_->tailLength(); }

private:
    RenderSession(double sampleRate, int blockSize, std::unique_ptr<RenderTarget> target);
    int findParameter(const std::string& key);
    void processBlock(float* const* inputs, float* const* outputs, int n);

    double sampleRate_;
    int blockSize_;
    std::unique_ptr<RenderTarget> target_;
};

} // namespace halvern::tools
