#pragma once

// The LFO's "MIDI Envelope" mode: an ADSR envelope giving d in [0, 1], started and
// released either by MIDI notes or, in Audio mode, by the input's RMS level crossing
// "Threshold On" upwards and falling below "Threshold Off".

#include "core/modulation_enums.h"

namespace halvern {

class ZEnvelopeGenerator {
public:
    struct Settings {
        ZLFOEnvelopeMode mode = ZLFOEnvelopeMode::Midi;
        double attack = 0.01;      // seconds from 0 to 1
        double decay = 0.1;        // seconds from 1 down to the sustain level
        double sustain = 0.7;      // level held while the envelope is on, 0..1
        double release = 0.2;      // seconds from the level at release down to 0
        double thresholdOn = -30.0; // dB RMS that starts the envelope (Audio mode)
        double thresholdOff = -40.0; // dB RMS below which it releases; never above thresholdOn
        double rmsLength = 0.01;   // seconds of the RMS average (Audio mode); 0 uses the peak
    };

    void setSettings(const Settings& settings);
    const Settings& settings() const { return settings_; }

    // Blocks of any length run sample by sample, so the block size needs no storage.
    void prepare(double sampleRate, int maxBlockSize);
    void reset();

    // MIDI mode: the envelope starts with the first held note and releases when the last
    // one ends; notes overlapping a held one neither restart nor release it (legato).
    void noteOn();
    void noteOff();

    // Runs the envelope through the block (listening to the input in Audio mode) and
    // returns its level at the block's end.
    double process(const float* const* channels, int channelCount, int n);

private:
    enum class Stage { Idle, Attack, Decay, Sustain, Release };

    void updateCoefficients();
    void followInput(const float* const* channels, int channelCount, int i);
    void start() { stage_ = Stage::Attack; }
    void release();
    void step();

    Settings settings_;
    double sampleRate_ = 48000.0;
    double rmsWeight_ = 1.0;
    double onPower_ = 0.0;
    double offPower_ = 0.0;

    Stage stage_ = Stage::Idle;
    double level_ = 0.0;
    double releaseStep_ = 0.0;
    int heldNotes_ = 0;
    double meanSquare_ = 0.0;
    bool gateOpen_ = false;
};

} // namespace halvern
