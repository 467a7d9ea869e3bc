#pragma once

// Reading and writing audio files through libsndfile, as deinterleaved float channels.

#include <string>
#include <vector>

namespace halvern::tools {

struct AudioData {
    double sampleRate = 48000.0;
    std::vector<std::vector<float>> channels;
    size_t frames() const { return channels.empty() ? 0 : channels.front().size(); }
};

// Throws std::runtime_error with libsndfile's message when the file cannot be read.
AudioData ReadAudioFile(const std::string& path);
// Writes 32-bit float WAV (or the format the extension names); throws on failure.
void WriteAudioFile(const std::string& path, const AudioData& audio);

} // namespace halvern::tools
