#pragma once

// Writing audio files through libsndfile.

#include "audio_import/audio_data.h"

#include <string>

namespace halvern {

// The format follows the extension, in any letter case: .flac (24-bit), .aif/.aiff and
// .caf (32-bit float), .mp3 (MPEG layer III, where the installed libsndfile can encode
// it); anything else is a 32-bit float WAV. Throws ZAudioFileError on failure.
void WriteAudioFile(const std::string& path, const ZAudioData& audio);

} // namespace halvern
