#include "tools/audio_file.h"

#include <sndfile.h>

#include <stdexcept>

namespace halvern::tools {
namespace {

int formatFor(const std::string& path)
{
    const auto dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
    if (extension == "flac")
        return SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    if (extension == "aif" || extension == "aiff")
        return SF_FORMAT_AIFF | SF_FORMAT_FLOAT;
    return SF_FORMAT_WAV | SF_FORMAT_FLOAT;
}

} // namespace

AudioData ReadAudioFile(const std::string& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        throw std::runtime_error("cannot read \"" + path + "\": " + sf_strerror(nullptr));
    AudioData audio;
    audio.sampleRate = info.samplerate;
    std::vector<float> interleaved(static_cast<size_t>(info.frames) * static_cast<size_t>(info.channels));
    const sf_count_t read = sf_readf_float(file, interleaved.data(), info.frames);
    sf_close(file);
    audio.channels.assign(static_cast<size_t>(info.channels), std::vector<float>(static_cast<size_t>(read)));
    for (sf_count_t frame = 0; frame < read; ++frame)
        for (int c = 0; c < info.channels; ++c)
            audio.channels[static_cast<size_t>(c)][static_cast<size_t>(frame)] =
                interleaved[static_cast<size_t>(frame * info.channels + c)];
    return audio;
}

void WriteAudioFile(const std::string& path, const AudioData& audio)
{
    SF_INFO info{};
    info.samplerate = static_cast<int>(audio.sampleRate + 0.5);
    info.channels = static_cast<int>(audio.channels.size());
    info.format = formatFor(path);
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr)
        throw std::runtime_error("cannot write \"" + path + "\": " + sf_strerror(nullptr));
    const size_t frames = audio.frames();
    std::vector<float> interleaved(frames * audio.channels.size());
    for (size_t frame = 0; frame < frames; ++frame)
        for (size_t c = 0; c < audio.channels.size(); ++c)
            interleaved[frame * audio.channels.size() + c] = audio.channels[c][frame];
    const sf_count_t written = sf_writef_float(file, interleaved.data(), static_cast<sf_count_t>(frames));
    sf_close(file);
    if (written != static_cast<sf_count_t>(frames))
        throw std::runtime_error("could not write all of \"" + path + "\"");
}

} // namespace halvern::tools
