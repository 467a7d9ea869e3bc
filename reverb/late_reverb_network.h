#pragma once

// The late reverberation: a feedback delay network of eight lines in four stereo pairs
// (A0, B0, … A3, B3; the A lines feed the left output, the B lines the right). The early
// reflections enter through a pan-dependent input matrix; each line's output passes a
// low shelf, a high shelf and an all-pass, and a 4×4 matrix chosen by the reverb mode
// mixes the pairs back into the lines, scaled so that a pass of the loop time loses
// 60 dB × loop time / reverb time. Slow modulation of the matrix, the all-pass and the
// line delays keeps the tail from ringing.

#include "core/biquad.h"
#include "reverb/delay_line.h"
#include "reverb/prime_table.h"

#include <array>
#include <cstdint>

namespace halvern {

using ZMatrix4 = std::array<std::array<double, 4>, 4>;

// The largest singular value of m, from above: it exceeds the exact value by at most a
// factor 1.0007.
double LargestSingularValue(const ZMatrix4& m);

// A short ring buffer read back at a moving fractional delay, by four-point cubic
// Hermite interpolation (its gain never exceeds 1 at any frequency or fraction, so it
// adds no energy to the loop). The delay glides linearly to each new target.
class ZModulatedTap {
public:
    static constexpr int kSize = 16;          // room for the four taps around delays below 14
    static constexpr double kMaxDelay = 12.0;

    void clear();
    // Moves the delay (1 … kMaxDelay samples) to target over the next `samples`
    // samples; 0 jumps at once.
    void glideTo(double target, int samples);

    double process(double x)
    {
        ring_[write_] = x;
        delay_ += step_;
        const int whole = static_cast<int>(delay_);
        const double f = delay_ - whole;
        const double before = at(whole - 1), p0 = at(whole), p1 = at(whole + 1), p2 = at(whole + 2);
        write_ = (write_ + 1) & kMask;
        const double c1 = 0.5 * (p1 - before);
        const double c2 = before - 2.5 * p0 + 2.0 * p1 - 0.5 * p2;
        const double c3 = 0.5 * (p2 - before) + 1.5 * (p0 - p1);
        return ((c3 * f + c2) * f + c1) * f + p0;
    }

private:
    static constexpr unsigned kMask = kSize - 1;
    // The sample written `back` samples ago (0: the newest).
    double at(int back) const { return ring_[(write_ - static_cast<unsigned>(back)) & kMask]; }

    std::array<double, kSize> ring_{};
    unsigned write_ = 0;
    double delay_ = 1.0;
    double step_ = 0.0;
};

class ZLateReverbNetwork {
public:
    static constexpr int kLines = 8;
    static constexpr int kModulationInterval = 64;

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
        std::array<double, kLines> sum;
        for (size_t i = 0; i < kLines; ++i)
            sum[i] = input_[i][0] * earlyLeft + input_[i][1] * earlyRight;
        double left = 0.0, right = 0.0;
        for (size_t k = 0; k < 4; ++k) {
            double a = lines_[2 * k].read();
            double b = lines_[2 * k + 1].read();
            if (modulated_) {
                a = taps_[2 * k].process(a);
                b = taps_[2 * k + 1].process(b);
            }
            left += a;
            right += b;
            a = filters_[2 * k].process(a);
            b = filters_[2 * k + 1].process(b);
            for (size_t j = 0; j < 4; ++j) {
                sum[2 * j] += matrix_[k][j] * a;
                sum[2 * j + 1] += matrix_[k][j] * b;
            }
        }
        for (size_t i = 0; i < kLines; ++i)
            lines_[i].write(sum[i]);
        lateLeft = left;
        lateRight = right;
    }

    // What the last update derived, for measurements and tests.
    const std::array<int, kLines>& lineLengths() const { return lengths_; }
    int lineCapacity() const { return lines_[0].capacity(); }
    double loopTime() const { return loopTime_; }                    // τ, seconds
    const ZMatrix4& baseMatrix() const { return base_; }             // M of the mode
    double normaliser() const { return normaliser_; }                // n
    const ZMatrix4& decayMatrix() const { return decayed_; }         // M × n × 10^(−3τ/T)
    const ZMatrix4& matrix() const { return matrix_; }               // M′ as used now
    const std::array<std::array<double, 2>, kLines>& inputWeights() const { return input_; }

private:
    struct LineFilters {
        ZBiquad lowShelf, highShelf, allPass;
        double process(double x) { return allPass.process(highShelf.process(lowShelf.process(x))); }
    };

    void assignLengths(const Settings& s, double roomWidth, ZPrimeTable& primes);
    void designMatrix(const Settings& s);
    void designInput(double pan);
    void designDamping(const Settings& s);
    void designModulation(const Settings& s);
    void advanceModulation();
    void applyModulation(int glideSamples);

    std::array<ZDelayLine<double>, kLines> lines_;
    std::array<LineFilters, kLines> filters_;
    std::array<ZModulatedTap, kLines> taps_;
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
    double sampleRate_ = 0.0;
    bool mayExceedUnity_ = false;   // the modulated matrix can have a singular value above 1
    bool modulated_ = false;
    int counter_ = 0;
};

} // namespace halvern
