#include "tools/test_signal.h"

#include <cmath>
#include <numbers>
#include <random>

namespace halvern::tools {

ZAudioData MakeTestSignal(double sampleRate, double seconds)
{
    const size_t frames = static_cast<size_t>(sampleRate * seconds);
    ZAudioData audio;
    audio.sampleRate = sampleRate;
    audio.channels.assign(2, std::vector<float>(frames, 0.0f));
    std::mt19937 noise(1234);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);

    // Four clicks, 5 ms of noise decaying with a 1 ms time constant, every 250 ms.
    const size_t clickLength = static_cast<size_t>(0.005 * sampleRate);
    for (int click = 0; click < 4; ++click) {
        const size_t start = static_cast<size_t>(click * 0.25 * sampleRate);
        for (size_t i = 0; i < clickLength && start + i < frames; ++i) {
            const float envelope = 0.8f * static_cast<float>(std::exp(-static_cast<double>(i) / (0.001 * sampleRate)));
            audio.channels[0][start + i] = envelope * uniform(noise);
            audio.channels[1][start + i] = envelope * uniform(noise);
        }
    }
    // A 440 Hz tone burst of 300 ms from 1.1 s, with 10 ms raised-cosine edges.
    const size_t toneStart = static_cast<size_t>(1.1 * sampleRate);
    const size_t toneLength = static_cast<size_t>(0.3 * sampleRate);
    const double edge = 0.01 * sampleRate;
    for (size_t i = 0; i < toneLength && toneStart + i < frames; ++i) {
        const double t = static_cast<double>(i);
        const double rise = std::min(1.0, std::min(t, static_cast<double>(toneLength) - t) / edge);
        const double envelope = 0.5 * (1.0 - std::cos(std::numbers::pi * rise));
        const double phase = 2.0 * std::numbers::pi * 440.0 * t / sampleRate;
        audio.channels[0][toneStart + i] = static_cast<float>(0.5 * envelope * std::sin(phase));
        audio.channels[1][toneStart + i] = static_cast<float>(0.5 * envelope * std::sin(phase + 0.3));
    }
    return audio;
}

} // namespace halvern::tools
