#pragma once

// Drives the plug-in core offline the way a host does: sets the rate and block size,
// sets parameters, prepares processing, then feeds the audio block by block and lets
// the reverb ring out.

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "tools/audio_file.h"

#include <memory>
#include <string>

namespace halvern::tools {

class RenderSession {
public:
    RenderSession(double sampleRate, int blockSize);

    // A parameter by its key with a value as the user would type it (display units);
    // throws std::runtime_error naming the key or the text that was not understood.
    void setByKey(const std::string& key, const std::string& text);
    // A parameter by its index with a normalised value.
    void setByIndex(int index, double normalized);

    // Prepares processing; call after the parameters are set.
    void start();
    // Processes the input followed by the reverb's tail (at least minimumTail seconds of
    // it); mono input feeds both channels.
    AudioData render(const AudioData& input, double minimumTail = 0.0);
    // The response to a unit impulse on both channels, long enough to measure its decay:
    // 1.5 reverb times plus half a second (the tail the plug-in reports counts whole
    // seconds only, too short for times below 1 s).
    AudioData renderImpulse();

    ZAudioEffectPluginToAudioPluginAdapter& core() { return *core_; }
    int tailLength() { return core_->effect().GetTailLength(); }

private:
    int findParameter(const std::string& key);

    double sampleRate_;
    int blockSize_;
    std::unique_ptr<ZAudioEffectPluginToAudioPluginAdapter> core_;
};

} // namespace halvern::tools
