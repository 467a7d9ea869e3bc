#pragma once

// ZDecayDisplay: the page that shows how the reverb with the current settings decays:
// its level over time (0 to -100 dB) and its decay time in the octave bands 125 Hz to
// 8 kHz and over the whole band, each marked with the method that measured it (T30, or
// T20 when the response's dynamic range is too small). The figures come from a private
// instance loaded with the settings, measured on a worker thread once the settings have
// stopped changing for 300 ms, exactly as the offline renderer's report measures them.
// A reference impulse response from a sound file can be laid over both charts.

#include "analysis/decay_measurement.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/view.h"

#include <memory>
#include <optional>
#include <string>

namespace halvern {

class ZButton;
class ZDecayWorker;

class ZDecayDisplay : public ZView {
public:
    static constexpr int kPollTicks = 6;    // the settings are compared ten times a second
    static constexpr int kSettleTicks = 18; // and measured once they have rested for 300 ms,
    // or after two seconds when they never rest (a running LFO moves its targets, and the
    // state holds the moved values)
    static constexpr int kLongestWaitTicks = 120;

    explicit ZDecayDisplay(ZQuessaneAudioEffectPlugin& core);
    ~ZDecayDisplay() override;

    // Reads an impulse response from a sound file and lays it over the charts. Returns
    // why it could not be read, or empty on success; a failure changes nothing.
    std::string LoadReference(const std::string& path);
    void ClearReference();
    // What "Load reference…" does: a file chooser for sound files whose choice goes to
    // LoadReference; an error is shown in a message.
    void ChooseReference();

    // A measurement is waiting or running.
    bool computing() const { return computing_; }
    const std::optional<ZDecayMeasurement>& measurement() const { return measurement_; }
    const std::optional<ZDecayMeasurement>& reference() const { return reference_; }

    // The status line: "Computing…", the last error, or empty.
    std::string Text() const override;
    void Layout() override;
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    void takeResult();
    void pollSettings();
    void startWhenSettled();
    ZRect levelPanel() const;
    ZRect barsPanel() const;
    void paintLegend(ZCanvas& canvas, const ZRect& strip) const;

    ZQuessaneAudioEffectPlugin& core_;
    std::unique_ptr<ZDecayWorker> worker_;
    ZButton* load_;
    ZButton* clear_;
    std::string referenceFolder_; // where the chooser opens: the last reference's folder
    // The settings as last seen (text and document), and the text last measured.
    std::string seenText_;
    std::unique_ptr<ZMLElement> seenState_;
    std::string submittedText_;
    int ticks_ = 0;
    int changedAt_ = 0;
    int submittedAt_ = 0;
    bool computing_ = false;
    std::optional<ZDecayMeasurement> measurement_;
    std::optional<ZDecayMeasurement> reference_;
    std::string referenceName_;
    std::string error_;
};

} // namespace halvern
