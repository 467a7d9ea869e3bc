#include "audio_import/audio_file_reader.h"
#include "audio_import/audio_file_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>

#include <unistd.h>

namespace halvern {
namespace {

namespace fs = std::filesystem;

struct ScratchFolder {
    fs::path folder = fs::temp_directory_path() / ("halvern_audio_import_" + std::to_string(::getpid()));
    ScratchFolder() { fs::create_directories(folder); }
    ~ScratchFolder() { fs::remove_all(folder); }
    std::string operator/(const std::string& name) const { return (folder / name).string(); }
};

// Two channels of different tones, a quarter of a second.
ZAudioData twoTones(double rate = 44100.0, double seconds = 0.25)
{
    ZAudioData audio{rate, {std::vector<float>(static_cast<size_t>(rate * seconds)), {}}};
    for (size_t n = 0; n < audio.channels[0].size(); ++n)
        audio.channels[0][n] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * 441.0 * n / rate));
    audio.channels[1] = audio.channels[0];
    for (float& sample : audio.channels[1])
        sample = -0.5f * sample;
    return audio;
}

std::string readError(const std::string& path, const ZAudioReadLimits& limits = {})
{
    try {
        ReadAudioFile(path, limits);
    } catch (const ZAudioFileError& error) {
        return error.what();
    }
    return "read without error";
}

TEST(AudioFileReader, FormatsAreRecognisedByContentNotByName)
{
    ScratchFolder scratch;
    const ZAudioData original = twoTones();
    for (const std::string name : {"tones.wav", "tones.aiff", "tones.flac", "tones.caf"}) {
        WriteAudioFile(scratch / name, original);
        // The same bytes under another of the offered names read the same.
        fs::copy_file(scratch / name, scratch / (name + ".maf"));
        for (const std::string& path : {scratch / name, scratch / (name + ".maf")}) {
            const ZAudioData read = ReadAudioFile(path);
            EXPECT_EQ(read.sampleRate, 44100.0) << path;
            ASSERT_EQ(read.channels.size(), 2u) << path;
            ASSERT_EQ(read.frames(), original.frames()) << path;
            for (size_t c = 0; c < 2; ++c)
                for (size_t n = 0; n < read.frames(); n += 97)
                    ASSERT_NEAR(read.channels[c][n], original.channels[c][n], 1e-6) << path << " " << n;
        }
    }
    EXPECT_TRUE(HasAudioFileExtension("/a/Hall.WAV"));
    EXPECT_TRUE(HasAudioFileExtension("x.maf"));
    EXPECT_TRUE(HasAudioFileExtension("x.Aif"));
    EXPECT_FALSE(HasAudioFileExtension("x.ogg"));
    EXPECT_FALSE(HasAudioFileExtension("wav"));
}

TEST(AudioFileReader, MP3WhereTheLibraryEncodesIt)
{
    ScratchFolder scratch;
    const ZAudioData original = twoTones(48000.0, 1.0);
    try {
        WriteAudioFile(scratch / "tones.mp3", original);
    } catch (const ZAudioFileError& error) {
        GTEST_SKIP() << "libsndfile cannot encode MP3 here: " << error.what();
    }
    fs::rename(scratch / "tones.mp3", scratch / "tones.flac"); // a misleading name does not matter
    const ZAudioData read = ReadAudioFile(scratch / "tones.flac");
    EXPECT_EQ(read.sampleRate, 48000.0);
    ASSERT_EQ(read.channels.size(), 2u);
    // The codec adds a delay and padding; the level and the opposite channels survive.
    EXPECT_NEAR(static_cast<double>(read.frames()), 48000.0, 3000.0);
    double left = 0.0, product = 0.0;
    for (size_t n = 0; n < read.frames(); ++n) {
        left += read.channels[0][n] * read.channels[0][n];
        product += read.channels[0][n] * read.channels[1][n];
    }
    EXPECT_NEAR(std::sqrt(left / read.frames()), 0.5 / std::sqrt(2.0), 0.03);
    EXPECT_LT(product, -0.9 * left / 2);
}

TEST(AudioFileReader, DamagedAndOversizedFilesAreRefusedWithTheirReason)
{
    ScratchFolder scratch;
    std::ofstream(scratch / "notes.wav") << "These are my notes, not a sound.";
    EXPECT_NE(readError(scratch / "notes.wav").find("\u201Cnotes.wav\u201D is not an audio file libsndfile can read: "),
              std::string::npos);
    EXPECT_NE(readError(scratch / "missing.wav").find("does not exist"), std::string::npos);

    // FLAC cut in the middle of its frames: the header still announces them all.
    WriteAudioFile(scratch / "cut.flac", twoTones(44100.0, 2.0));
    ASSERT_EQ(ReadAudioFile(scratch / "cut.flac").frames(), 88200u);
    fs::resize_file(scratch / "cut.flac", fs::file_size(scratch / "cut.flac") / 2);
    EXPECT_NE(readError(scratch / "cut.flac").find("ends early: its header announces 88200 frames"), std::string::npos)
        << readError(scratch / "cut.flac");

    // A header that announces 2^36 frames before a few hundred bytes of audio.
    fs::copy_file(scratch / "cut.flac", scratch / "huge.flac");
    {
        std::fstream file(scratch / "huge.flac", std::ios::in | std::ios::out | std::ios::binary);
        file.seekg(21);
        const int high = file.get();
        file.seekp(21);
        file.put(static_cast<char>(high | 0x0F)); // the total's top four bits, then its low 32
        for (int i = 0; i < 4; ++i)
            file.put(static_cast<char>(0xFF));
    }
    EXPECT_EQ(readError(scratch / "huge.flac"), "\u201Chuge.flac\u201D is too long: at most 10 minutes can be read");

    // Limits are judged from the header, before any sample is read.
    WriteAudioFile(scratch / "long.wav", twoTones(44100.0, 2.0));
    EXPECT_EQ(readError(scratch / "long.wav", {.maxSeconds = 1.0}), "\u201Clong.wav\u201D is too long: at most 1 second can be read");
    EXPECT_EQ(readError(scratch / "long.wav", {.maxSamples = 44100}),
              "\u201Clong.wav\u201D is too long: at most 0.5 seconds of 2 channels at 44100 Hz can be read");
}

} // namespace
} // namespace halvern
