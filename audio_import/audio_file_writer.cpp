#include "audio_import/audio_file_writer.h"

#include "audio_import/audio_file_reader.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace halvern {
namespace {

int formatFor(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    if (extension == ".flac")
        return SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    if (extension == ".aif" || extension == ".aiff")
        return SF_FORMAT_AIFF | SF_FORMAT_FLOAT;
    if (extension == ".caf")
        return SF_FORMAT_CAF | SF_FORMAT_FLOAT;
    if (extension == ".mp3")
        return SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
    return SF_FORMAT_WAV | SF_FORMAT_FLOAT;
}

} // namespace

void WriteAudioFile(const std::string& path, const ZAudioData& audio)
{
    SF_INFO info{};
    info.samplerate = static_cast<int>(audio.sampleRate + 0.5);
    info.channels = static_cast<int>(audio.channels.size());
    info.format = formatFor(path);
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr)
        throw ZAudioFileError("cannot write \"" + path + "\": " + sf_strerror(nullptr));
    const size_t frames = audio.frames();
    std::vector<float> interleaved(frames * audio.channels.size());
    for (size_t frame = 0; frame < frames; ++frame)
        for (size_t c = 0; c < audio.channels.size(); ++c)
            interleaved[frame * audio.channels.size() + c] = audio.channels[c][frame];
    const sf_count_t written = sf_writef_float(file, interleaved.data(), static_cast<sf_count_t>(frames));
    sf_close(file);
    if (written != static_cast<sf_count_t>(frames))
        throw ZAudioFileError("could not write all of \"" + path + "\"");
}

} // namespace halvern
