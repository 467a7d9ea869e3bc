#pragma once

// The LFO's "Random" mode: a sequence of random values in [0, 1] locked to the song.
// The value for a musical position is a hash of the index of the step it falls in and
// the seed, so every rendering of a song gives the same sequence.

#include <cstdint>

namespace halvern {

class ZRandomModulator {
public:
    // Speed -1..1 (shown as -100 %..+100 %) sets the number of values per beat to
    // 2^round(4 * Speed): from one per 16 beats to 16 per beat, always on the beat grid;
    // 0 gives one new value per beat.
    static constexpr double kOctavesAtFullSpeed = 4.0;
    // Used when the host reports no tempo.
    static constexpr double kDefaultTempo = 120.0;

    struct Settings {
        double speed = 0.0;
        double smoothness = 0.0; // 0 steps; 1 glides over the whole step to the next value
        uint32_t seed = 0;
    };

    void setSettings(const Settings& settings);
    const Settings& settings() const { return settings_; }

    // Values per quarter note at the current speed.
    double valuesPerBeat() const { return valuesPerBeat_; }

    // The value at a song position in quarter notes.
    double valueAt(double quarterNotes) const;

    // The value at the block's start: the host's position when valid, otherwise an own
    // position that advances by n samples at the tempo.
    double process(double quarterNotes, double tempo, bool positionValid, int n, double sampleRate);

    void reset() { position_ = 0.0; }

private:
    double valueOfStep(int64_t step) const;

    Settings settings_;
    double valuesPerBeat_ = 1.0;
    double position_ = 0.0;
};

} // namespace halvern
