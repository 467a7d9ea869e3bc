#pragma once

// The built-in test signal: percussive clicks (decaying noise bursts) followed by a
// short tone burst, in stereo with the two channels slightly different.

#include "audio_import/audio_data.h"

namespace halvern::tools {

ZAudioData MakeTestSignal(double sampleRate, double seconds);

} // namespace halvern::tools
