#pragma once

// LFO shapes taken from a sound, as values of the signal generator's Steps family, to be
// joined by full smoothing (cosine interpolation between the steps' centres).
//
// One cycle of the waveform: steps rather than harmonics, because the harmonic family
// holds only the amplitudes of sine partials, all starting in phase, so it cannot draw
// a cycle whose partials have other phases (a pulse, a triangle started at its peak,
// most recorded tones); 32 steps joined smoothly follow every partial up to the 16th,
// the harmonic family's own limit, in its true phase.

#include "audio_import/audio_data.h"

#include <stdexcept>
#include <vector>

namespace halvern {

enum class ZShapeSource {
    Cycle,    // one period of the waveform, from an upward zero crossing after the onset
    Envelope, // the level over the sound's audible length
};

// Why a sound gives no shape.
class ZShapeFromSoundError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// `count` values in [-1, 1] (the channels are mixed first).
//
// Cycle: the period is the first lag whose normalised autocorrelation reaches 90 % of
// the highest, searched from 20 Hz to a period of 8 samples in the 200 ms after the onset
// (the first sample within 20 dB of the peak). The cycle starts at the first upward zero
// crossing after the onset; each step is the mean of its stretch of the cycle, averaged
// over up to eight consecutive cycles, and the steps are scaled so the largest is 1.
//
// Envelope: the RMS level in `count` equal stretches of the audible part (from the first
// to the last sample within 40 dB of the peak), scaled so the loudest is 1 and the
// silence -1.
//
// Throws ZShapeFromSoundError when the sound is silent or, for a cycle, when nothing in
// it repeats (noise, or a sound shorter than two periods).
std::vector<double> StepsFromSound(const ZAudioData& sound, ZShapeSource source, int count);

} // namespace halvern
