#pragma once

// The late reverberation: a feedback delay network of eight lines in four stereo pairs
// (A0, B0, … A3, B3; the A lines feed the left output, the B lines the right). The early
// reflections enter through a pan-dependent input matrix; each line's output passes a
// low shelf, a high shelf and an all-pass, and a 4×4 matrix chosen by the reverb mode
// mixes the pairs back into the lines, scaled so that a pass of the loop time loses
// 60 dB × loop time / reverb time. Slow modulation of the matrix, the all-pass and the
// line delays keeps the tail from ringing.

#include "core/biquad.h"
#include "core/biquad_bank.h"
#include "reverb/delay_line.h"
#include "reverb/prime_table.h"

#include <array>
#include <cstdint>

namespace halvern {

using ZMatrix4 = std::array<std::array<double, 4>, 4>;

// The largest singular value of m, from above: it exceeds the exact value by at most a
// factor 1.0007.
double LargestSingularValue(const ZMatrix4& m);

// Four-point cubic Hermite interpolation between p0 and p1 at fraction f (before is the
// sample ahead of p0, p2 the one after p1). Its gain never exceeds 1 at any frequency or
// fraction, so reading a loop through it adds no energy.
inline double HermiteInterpolate(double before, double p0, double p1, double p2, double f)
{
    const double c1 = 0.5 * (p1 - before);
    const double c2 = before - 2.5 * p0 + 2.0 * p1 - 0.5 * p2;
    const double c3 = 0.5 * (p2 - before) + 1.5 * (p0 - p1);
    return ((c3 * f + c2) * f + c1) * f + p0;
}

class ZLateReverbNetwork {
public:
    static constexpr int kLines = 8;
    static constexpr int kModulationInterval = 64;
    static constexpr double kMaxTapDelay = 12.0;

    // The effective parameter values the network is derived from.
    struct Settings {
        double size = 0.04;              // room length L, seconds of sound travel
        double width = 1.0;              // 0..1
        double reverbTime = 0.5;         // seconds to fall by 60 dB
        double reverbDiffusion = 1.0;    // D, 0..1
        int32_t mode = 0;                // reverb mode 0..3
        double lowDamp = 3.0;            // dB of extra loss per 100 ms of travel
        double lowFrequency = 3.0;       // log10 Hz
        double highDamp = 6.0;           // dB of extra loss per 100 ms of travel
        double highFrequency = 4.0;      // log10 Hz
        double modulation = 0.5;         // m, 0..1
        double modulationFrequency = -0.6020599913279624; // log10 Hz
        double pan = 0.0;                // direct pan p of the source
        double stereoOffset = 0.0;       // samples; the room model's diffuser offset
        double sampleRate = 48000.0;
    };

    // Sizes every line for the longest delay possible at this rate (not real-time).
    void prepare(double sampleRate);
    // Takes the eight lengths from primes (after the room model's) in the order A0, B0,
    // … A3, B3 and recomputes every coefficient. Does nothing without a sample rate.
    void update(const Settings& settings, ZPrimeTable& primes);
    // Silences lines, filters and modulation buffers and restarts the modulation phases.
    void reset();

    void process(double earlyLeft, double earlyRight, double& lateLeft, double& lateRight)
    {
        if (modulated_ && ++counter_ >= kModulationInterval) {
            counter_ = 0;
            advanceModulation();
        }
        std::array<double, kLines> out;
        if (modulated_)
            readModulated(out);
        else
            for (size_t i = 0; i < kLines; ++i)
                out[i] = lines_.read(i);
        // The late output is taken before the filters.
        lateLeft = out[0] + out[2] + out[4] + out[6];
        lateRight = out[1] + out[3] + out[5] + out[7];
        lowShelves_.process(out);
        highShelves_.process(out);
        allPasses_.process(out);
        std::array<double, kLines> sum;
        for (size_t i = 0; i < kLines; ++i)
            sum[i] = input_[i][0] * earlyLeft + input_[i][1] * earlyRight;
        for (size_t k = 0; k < 4; ++k)
            for (size_t j = 0; j < 4; ++j) {
                sum[2 * j] += matrix_[k][j] * out[2 * k];
                sum[2 * j + 1] += matrix_[k][j] * out[2 * k + 1];
            }
        lines_.write(sum);
    }

    // Seconds the loop takes to fall by fallDb once its input stops: the passes of the
    // decay matrix, with the loudest shelf gain, until no state is left louder, each as
    // long as the longest line with its modulated read. Infinite for a loop that does
    // not decay.
    double ringingSeconds(double fallDb) const;

    // What the last update derived, for measurements and tests.
    const std::array<int, kLines>& lineLengths() const { return lengths_; }
    int lineCapacity() const { return lines_.capacity(); }
    double loopTime() const { return loopTime_; }                    // τ, seconds
    const ZMatrix4& baseMatrix() const { return base_; }             // M of the mode
    double normaliser() const { return normaliser_; }                // n
    const ZMatrix4& decayMatrix() const { return decayed_; }         // M × n × 10^(−3τ/T)
    const ZMatrix4& matrix() const { return matrix_; }               // M′ as used now
    const std::array<std::array<double, 2>, kLines>& inputWeights() const { return input_; }

private:
    void assignLengths(const Settings& s, double roomWidth, ZPrimeTable& primes);
    void designMatrix(const Settings& s);
    void designInput(double pan);
    void designDamping(const Settings& s);
    void designModulation(const Settings& s);
    void advanceModulation();
    void applyModulation(int glideSamples);
    // Moves line i's extra delay (1 … kMaxTapDelay samples) to target over the next
    // `samples` samples; 0 jumps at once.
    void glideTap(size_t i, double target, int samples);

    // The modulated read: each line is read a fractional number of samples later than
    // its length, the extra delay gliding linearly between the modulation steps.
    void readModulated(std::array<double, kLines>& out)
    {
        std::array<double, kLines> before, p0, p1, p2, fraction;
        for (size_t i = 0; i < kLines; ++i) {
            tapDelay_[i] += tapStep_[i];
            const int whole = static_cast<int>(tapDelay_[i]);
            fraction[i] = tapDelay_[i] - whole;
            const int at = lines_.length(i) + whole;
            before[i] = lines_.readAt(i, at - 1);
            p0[i] = lines_.readAt(i, at);
            p1[i] = lines_.readAt(i, at + 1);
            p2[i] = lines_.readAt(i, at + 2);
        }
        for (size_t i = 0; i < kLines; ++i)
            out[i] = HermiteInterpolate(before[i], p0[i], p1[i], p2[i], fraction[i]);
    }

    ZDelayBank<kLines> lines_;
    // Per line, in this order: low shelf, high shelf, modulated all-pass.
    ZBiquadBank<kLines> lowShelves_;
    ZBiquadBank<kLines> highShelves_;
    ZBiquadBank<kLines> allPasses_;
    std::array<double, kLines> tapDelay_{};
    std::array<double, kLines> tapStep_{};
    std::array<std::array<double, 2>, kLines> input_{};
    std::array<int, kLines> lengths_{};
    ZMatrix4 base_{};
    ZMatrix4 decayed_{};
    ZMatrix4 matrix_{};
    std::array<double, 4> phases_{};
    std::array<double, 4> increments_{};
    double normaliser_ = 1.0;
    double loopTime_ = 0.0;
    double modulation_ = 0.0;
    std::array<ZBiquad::Coefficients, 2> longestShelves_{}; // the longest line's low and high shelf
    double sampleRate_ = 0.0;
    bool mayExceedUnity_ = false;   // the modulated matrix can have a singular value above 1
    bool modulated_ = false;
    int counter_ = 0;
};

} // namespace halvern
