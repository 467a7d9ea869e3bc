#pragma once

// The impulse response of anything that processes stereo blocks: a unit impulse on both
// channels, rendered until the output has died away.

#include "audio_import/audio_data.h"

#include <atomic>
#include <optional>

namespace halvern {

// Stereo blocks in, stereo blocks out, and the tail the processor reports.
class ZBlockProcessor {
public:
    virtual ~ZBlockProcessor() = default;
    // One stereo block; inputs and outputs are distinct buffers of n samples.
    virtual void process(float* const* inputs, float* const* outputs, int n) = 0;
    // The tail the processor reports, in samples.
    virtual int tailLength() = 0;
};

// The response to a unit impulse on both channels, in whole blocks, rendered until it
// has been below -100 dB for half a second (and for at least the reported tail) or a
// minute and a half has passed: long enough to measure its decay whatever the processor
// reports as its tail. Empty when cancel is set before the end (it is checked between
// blocks).
std::optional<ZAudioData> RenderImpulseResponse(ZBlockProcessor& processor, double sampleRate, int blockSize,
                                                const std::atomic<bool>* cancel = nullptr);

} // namespace halvern
