#pragma once

// Reading sound files into memory through libsndfile. The format is recognised from the
// file's content, never from its name: a file named .maf, .wav or anything else opens
// when libsndfile knows what its bytes hold (WAV, AIFF, CAF, FLAC, MPEG layer III and the
// rest of what the installed library reads). The name list below only tells the file
// chooser which files to offer.

#include "audio_import/audio_data.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace halvern {

// The extensions offered when choosing a sound, separated by semicolons.
inline constexpr const char* kAudioFileExtensions = "wav;maf;aif;aiff;mp3;flac";

// kAudioFileExtensions one by one, as the file chooser takes them.
std::vector<std::string> AudioFileExtensionList();
// Whether a file name ends in one of kAudioFileExtensions, in any letter case.
bool HasAudioFileExtension(const std::string& path);

// How much a read may take, checked against the file's header before any sample is
// allocated: at most maxSeconds at the file's own rate, and at most maxSamples over all
// channels, so that many channels at a high rate stay within memory (57.6 million floats
// are 230 MB: ten minutes of stereo at 48 kHz).
struct ZAudioReadLimits {
    double maxSeconds = 600.0;
    size_t maxSamples = 57'600'000;
    int maxChannels = 16;
};

// Why a file could not be read; the message names the file and the reason.
class ZAudioFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The file's channels and rate. Throws ZAudioFileError when libsndfile cannot read it,
// when it is longer than the limits allow, holds no audio, or ends before the length its
// header gives.
ZAudioData ReadAudioFile(const std::string& path, const ZAudioReadLimits& limits = {});

} // namespace halvern
