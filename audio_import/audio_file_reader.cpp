#include "audio_import/audio_file_reader.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>

namespace halvern {
namespace {

constexpr sf_count_t kChunkFrames = 16384;

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// The file's name in quotes, as messages show it.
std::string quoted(const std::string& path)
{
    return "\u201C" + std::filesystem::path(path).filename().string() + "\u201D";
}

// "10 minutes", "1.5 minutes" or "42 seconds".
std::string durationText(double seconds)
{
    const bool minutes = seconds >= 60.0;
    const double amount = minutes ? std::floor(seconds / 6.0) / 10.0 : std::floor(seconds * 10.0) / 10.0;
    char text[48];
    std::snprintf(text, sizeof text, "%g %s%s", amount, minutes ? "minute" : "second", amount == 1.0 ? "" : "s");
    return text;
}

struct FileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using FileHandle = std::unique_ptr<SNDFILE, FileCloser>;

FileHandle open(const std::string& path, SF_INFO& info)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        throw ZAudioFileError(quoted(path) + " does not exist or is not a file");
    info = {}; // format 0: libsndfile recognises the format from the content
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        throw ZAudioFileError(quoted(path) + " is not an audio file libsndfile can read: " + sf_strerror(nullptr));
    return FileHandle(file);
}

// Refuses, from the header alone, what is empty or too big to take into memory.
void checkSize(const std::string& path, const SF_INFO& info, const ZAudioReadLimits& limits)
{
    if (info.channels <= 0 || info.frames <= 0 || info.samplerate <= 0)
        throw ZAudioFileError(quoted(path) + " holds no audio");
    if (info.channels > limits.maxChannels)
        throw ZAudioFileError(quoted(path) + " has " + std::to_string(info.channels) + " channels: at most " +
                              std::to_string(limits.maxChannels) + " can be read");
    const double byDuration = limits.maxSeconds * info.samplerate;
    const double bySamples = static_cast<double>(limits.maxSamples) / info.channels;
    const double maxFrames = std::min(byDuration, bySamples);
    if (static_cast<double>(info.frames) > maxFrames)
        throw ZAudioFileError(quoted(path) + " is too long: at most " + durationText(maxFrames / info.samplerate) +
                              (bySamples < byDuration ? " of " + std::to_string(info.channels) + " channels at " +
                                                            std::to_string(info.samplerate) + " Hz"
                                                      : std::string()) +
                              " can be read");
}

} // namespace

std::vector<std::string> AudioFileExtensionList()
{
    std::vector<std::string> extensions;
    std::istringstream list(kAudioFileExtensions);
    for (std::string extension; std::getline(list, extension, ';');)
        extensions.push_back(extension);
    return extensions;
}

bool HasAudioFileExtension(const std::string& path)
{
    const std::string extension = lowerCase(std::filesystem::path(path).extension().string());
    const std::vector<std::string> known = AudioFileExtensionList();
    return extension.size() > 1 && std::find(known.begin(), known.end(), extension.substr(1)) != known.end();
}

ZAudioData ReadAudioFile(const std::string& path, const ZAudioReadLimits& limits)
{
    SF_INFO info;
    const FileHandle file = open(path, info);
    checkSize(path, info, limits);

    const auto channels = static_cast<size_t>(info.channels);
    ZAudioData audio;
    audio.sampleRate = info.samplerate;
    audio.channels.assign(channels, std::vector<float>(static_cast<size_t>(info.frames)));
    std::vector<float> chunk(static_cast<size_t>(kChunkFrames) * channels);
    sf_count_t done = 0;
    while (done < info.frames) {
        const sf_count_t read = sf_readf_float(file.get(), chunk.data(), std::min(kChunkFrames, info.frames - done));
        if (read <= 0)
            break;
        for (size_t frame = 0; frame < static_cast<size_t>(read); ++frame)
            for (size_t c = 0; c < channels; ++c)
                audio.channels[c][static_cast<size_t>(done) + frame] = chunk[frame * channels + c];
        done += read;
    }
    if (done < info.frames)
        throw ZAudioFileError(quoted(path) + " ends early: its header announces " + std::to_string(info.frames) +
                              " frames, only " + std::to_string(done) + " could be read (" +
                              sf_strerror(file.get()) + ")");
    return audio;
}

} // namespace halvern
