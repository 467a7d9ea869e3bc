#pragma once

// The built-in test signal: percussive clicks (decaying noise bursts) followed by a
// short tone burst, in stereo with the two channels slightly different.

#include "tools/audio_file.h"

namespace halvern::tools {

AudioData MakeTestSignal(double sampleRate, double seconds);

} // namespace halvern::tools
