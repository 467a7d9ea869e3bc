#pragma once

// One LFO modulator: an oscillator that samples its signal-generator shape once per
// block, and in its other modes a signal derived from the input (level follower,
// envelope, pitch) or from a song-locked random sequence, mixed with the oscillator by
// "LFO modulation". Its output m in [-1, 1] goes to its targets through the range
// mapping.

#include "core/modulation_enums.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"
#include "core/z_value_scale.h"
#include "modulation/envelope_generator.h"
#include "modulation/level_follower.h"
#include "modulation/modulator_target_list.h"
#include "modulation/pitch_detector.h"
#include "modulation/random_modulator.h"
#include "modulation/signal_generator.h"

#include <atomic>
#include <string>

namespace halvern {

struct ZHostTimeInfo;

// The block an LFO looks at.
struct ZLFOInput {
    const float* const* channels = nullptr; // the detector's input: main pair or side-chain
    int channelCount = 0;
    int sampleCount = 0;
    double sampleRate = 0.0;
    const ZHostTimeInfo* time = nullptr;
};

// Settings that are plain numbers; the detectors keep their own.
struct ZLFOSettings {
    int32_t enabled = 0;
    int32_t mode = static_cast<int32_t>(ZLFOMode::Normal);
    bool restoreWhenDisabled = false;  // "RestoreWhenDisabled"
    double frequency = 1.0;            // "Frequency", Hz
    bool highSpeed = false;            // "High-speed": ten times the frequency
    int32_t syncGroup = 0;             // "PhaseSyncGroup": 0 "Disabled", else the group number
    bool sync = false;                 // "Sync": phase from the host's song position
    double phase = 0.0;                // "Phase"
    double lfoAmount = 0.0;            // "LFOAmount", shown as "LFO modulation"
    bool project = false;              // "Project onto the LFO shape"
    double projectPhase = 0.75;        // its "Phase"
    double projectInterval = 1.0;      // its "Interval"
    bool useSideChain = false;         // "Use side-chain"
    double minFrequency = 55.0;        // Pitch mode: "MinFrequency", Hz
    double maxFrequency = 1760.0;      // "MaxFrequency", Hz
    double octaves = 0.0;              // "Octaves"
    double semitones = 0.0;            // "Semitones"
    double cents = 0.0;                // "Cents"
    bool autoTune = false;             // "Auto-tune" enable
};

class ZLFO {
public:
    static constexpr double kMinFrequency = 0.01;
    static constexpr double kMaxFrequency = 20.0;
    static constexpr int32_t kSyncGroups = 4;

    ZLFO(ZLock& processingLock, ZModulatorTarget firstTarget, int number);

    // The host-visible values: enable, frequency (fourth-root taper), LFO modulation.
    ZValue& enabledValue() { return enabledValue_; }
    ZValue& frequencyValue() { return frequencyTaper_; }
    ZValue& amountValue() { return amountValue_; }
    int number() const { return number_; }

    // Editor thread: settings change under the processing lock; values out of their
    // ranges are brought into them.
    const ZLFOSettings& settings() const { return settings_; }
    void setSettings(const ZLFOSettings& settings);
    // Settings from a loaded state, preset or slot: they replace the LFO's, and nothing
    // from before the load is given back when it stops.
    void loadSettings(const ZLFOSettings& settings);
    // A manual switch: turning the LFO off always gives the targets their values back.
    void setEnabledByUser(bool enabled);
    ZModulatorTargetList& targets() { return targets_; }
    // The shape and the detectors, read anywhere, changed under the processing lock.
    const ZSignalGenerator& shape() const { return shape_; }
    const ZLevelFollower& follower() const { return follower_; }
    const ZEnvelopeGenerator& envelope() const { return envelope_; }
    const ZRandomModulator& random() const { return random_; }
    const ZPitchDetector& pitchDetector() const { return pitch_; }
    const ZAutoTune& autoTune() const { return autoTune_; }
    void setShape(const ZSignalGenerator& shape);
    void setFollowerSettings(const ZLevelFollower::Settings& settings) { configure(follower_, settings); }
    void setEnvelopeSettings(const ZEnvelopeGenerator::Settings& settings) { configure(envelope_, settings); }
    void setRandomSettings(const ZRandomModulator::Settings& settings) { configure(random_, settings); }
    void setPitchSettings(const ZPitchDetector::Settings& settings) { configure(pitch_, settings); }
    void setAutoTuneSettings(const ZAutoTune::Settings& settings) { configure(autoTune_, settings); }

    // Sizes the detectors; under the processing lock.
    void prepare(double sampleRate, int maxBlock);
    // Puts the phase at "Phase" and clears the detectors.
    void reset();

    // Audio thread, once per block.
    bool enabled() const { return settings_.enabled != 0; }
    // Takes over a change of the enable switch: backs the targets' values up when the
    // LFO starts, gives them back when it stops (always for a manual stop, otherwise
    // with "RestoreWhenDisabled").
    void followEnableSwitch(ZParameterRegistry& registry);
    // The phase at the start of the coming block (what sync-group members follow).
    double phase() const { return phase_; }
    void alignPhase(double phase) { phase_ = phase; }
    // Computes the output for the block and advances the phase.
    double process(const ZLFOInput& input);
    double lastOutput() const { return output_; }
    // The output and the phase after the last block, for the editor's thread.
    double shownOutput() const { return shownOutput_.load(std::memory_order_relaxed); }
    double shownPhase() const { return shownPhase_.load(std::memory_order_relaxed); }
    double lastDetectorValue() const { return detector_; }
    void noteOn() { envelope_.noteOn(); }
    void noteOff() { envelope_.noteOff(); }

private:
    template <class Part>
    void configure(Part& part, const typename Part::Settings& settings)
    {
        ZLockHolder hold(processingLock_, -1);
        part.setSettings(settings);
    }
    static ZLFOSettings limit(const ZLFOSettings& settings);
    double computeOutput(const ZLFOInput& input);
    double detect(const ZLFOInput& input);
    double fromDetector(double d) const;
    void syncToHost(const ZLFOInput& input, double rate);

    int number_;
    ZLFOSettings settings_;
    ZValueInt enabledValue_;
    ZValueDouble frequencyValue_;
    ZValueScalePower<4> frequencyTaper_;
    ZValueDouble amountValue_;
    ZModulatorTargetList targets_;
    ZLock& processingLock_;

    ZSignalGenerator shape_;
    ZLevelFollower follower_;
    ZEnvelopeGenerator envelope_;
    ZRandomModulator random_;
    ZPitchDetector pitch_;
    ZAutoTune autoTune_;

    double phase_ = 0.0;
    double detector_ = 0.0;
    double output_ = 0.0;
    std::atomic<double> shownOutput_{0.0};
    std::atomic<double> shownPhase_{0.0};
    bool running_ = false;
    bool manualStop_ = false;
};

} // namespace halvern
