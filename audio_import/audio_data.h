#pragma once

// Audio as deinterleaved float channels at a sample rate: what the file readers return,
// what the offline renderer produces and what the decay analysis measures.

#include <cstddef>
#include <vector>

namespace halvern {

struct ZAudioData {
    double sampleRate = 48000.0;
    std::vector<std::vector<float>> channels;
    size_t frames() const { return channels.empty() ? 0 : channels.front().size(); }
};

} // namespace halvern
