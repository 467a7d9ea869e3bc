#pragma once

// Decay analysis of a recorded impulse response: decay times (T30, or T20 when the
// response's dynamic range is too small) and the early-to-late energy ratio, broadband
// and in the octave bands 125 Hz .. 8 kHz.
//
// A stereo (or any multichannel) response is analysed as one: the squared samples of the
// channels are summed before integration, so each band gets a single decay for the whole
// response rather than one per channel.

#include "core/biquad.h"
#include "audio_import/audio_data.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace halvern {

// A sixth-order Butterworth band-pass one octave wide (edges at centre / sqrt 2 and
// centre * sqrt 2), made by the low-pass to band-pass transform of the third-order
// Butterworth prototype and the bilinear transform with both edges prewarped, so the
// edges sit at exactly -3 dB and the middle of the band at 0 dB. It runs forwards only,
// as a measuring filter does: a zero-phase forward-backward pass would spread energy
// ahead of the direct sound and move the onset the early-to-late ratio counts from. Its
// own ringing falls by 60 dB in about 8 / centre seconds (65 ms at 125 Hz), so decays
// well above that are measured unbiased.
class ZOctaveBandFilter {
public:
    ZOctaveBandFilter(double sampleRate, double centreHz);

    // The filtered signal, starting from rest; the filter itself keeps no state.
    std::vector<double> apply(std::span<const float> input) const;

private:
    std::array<ZBiquad::Coefficients, 3> sections_;
};

enum class ZDecayMethod { T30, T20, NotMeasurable };

struct ZDecayTime {
    ZDecayMethod method = ZDecayMethod::NotMeasurable;
    double seconds = 0.0; // the time to decay by 60 dB; 0 when not measurable
};

struct ZBandAnalysis {
    double centreHz = 0.0;  // 0 for the broadband line
    bool available = false; // false when the band reaches too close to Nyquist
    ZDecayTime decay;
    // Energy in the first 80 ms after the direct sound over the energy after it, in dB;
    // empty when either part holds no energy.
    std::optional<double> earlyToLateDb;
};

struct ZImpulseReport {
    std::vector<ZBandAnalysis> bands; // 125 Hz .. 8 kHz, in ascending order
    ZBandAnalysis broadband;
};

// Centre frequencies of the analysed octave bands.
inline constexpr std::array<double, 7> kOctaveBandCentres = {125, 250, 500, 1000, 2000, 4000, 8000};

// A band is analysed only when its upper edge (centre * sqrt 2) lies below 0.45 times the
// sample rate.
bool OctaveBandAvailable(double sampleRate, double centreHz);

// Each decay curve is the backward (Schroeder) integral of the band's energy. The mean
// energy of the last 10 % of the response is taken as background noise: it is subtracted,
// the integration stops where the late decay's regression line meets it, and the energy
// that line still carries past that point is added back (a single pass of Lundeby's
// procedure). Only the curve down to 10 dB above the noise is used. A response cut off
// before reaching any noise is integrated to its end, with the same tail added. T30 fits
// -5 .. -35 dB, T20 -5 .. -25 dB. The direct sound is the first sample within 20 dB of
// the peak.
ZImpulseReport AnalyseImpulseResponse(const ZAudioData& response);

// A short text table: one line per band and a broadband line, each with the decay time,
// the method that measured it and the early-to-late ratio.
std::string FormatImpulseReport(const ZImpulseReport& report);

// "T30" or "T20", or the given text for a decay that could not be measured.
const char* DecayMethodName(ZDecayMethod method, const char* unmeasured);

// The broadband level over time, for drawing: the mean of the channels' summed squared
// samples in consecutive steps, in dB below the loudest step (which is 0 dB).
struct ZLevelEnvelope {
    double stepSeconds = 0.0;
    std::vector<double> levelsDb; // empty for a silent response
};
ZLevelEnvelope MeasureLevelEnvelope(const ZAudioData& response, double stepSeconds = 0.005);

} // namespace halvern
