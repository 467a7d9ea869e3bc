#include "core/oversampler.h"

#include "core/z_exception.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>
#include <string>

// The filters keep only past input samples and have no feedback, so nothing in them
// decays towards denormal values; unlike the recursive stages they need no offset.

namespace halvern {
namespace {

// Kaiser-windowed sinc, beta 9.5, 64 taps per phase, cutoff 0.45 x base rate: under
// 0.001 dB ripple to 0.4 x base rate, at least 95 dB rejection from 0.5 x base rate at
// every factor; a round trip delays by 63 base samples.
constexpr int kTapsPerPhase = 64;
constexpr double kKaiserBeta = 9.5;
constexpr double kCutoff = 0.45; // as a fraction of the base sample rate

// Modified Bessel function of the first kind, order 0, by its power series.
double besselI0(double x)
{
    const double quarterSquare = x * x / 4.0;
    double term = 1.0;
    double sum = 1.0;
    for (int k = 1; term > sum * 1e-17; ++k) {
        term *= quarterSquare / (static_cast<double>(k) * k);
        sum += term;
    }
    return sum;
}

// The low-pass at the high rate, factor * kTapsPerPhase taps, scaled to unity gain at DC.
std::vector<double> designLowPass(int factor)
{
    const int length = factor * kTapsPerPhase;
    const double centre = (length - 1) / 2.0;
    const double cutoff = kCutoff / factor; // cycles per high-rate sample
    std::vector<double> taps(static_cast<size_t>(length));
    double sum = 0.0;
    for (int n = 0; n < length; ++n) {
        const double t = n - centre; // never 0: the length is even
        const double ratio = t / centre;
        const double window = besselI0(kKaiserBeta * std::sqrt(1.0 - ratio * ratio)) / besselI0(kKaiserBeta);
        const double sinc = std::sin(2.0 * std::numbers::pi * cutoff * t) / (std::numbers::pi * t);
        taps[static_cast<size_t>(n)] = sinc * window;
        sum += taps[static_cast<size_t>(n)];
    }
    for (double& tap : taps)
        tap /= sum;
    return taps;
}

// Eight independent partial sums let the multiply-adds run in parallel; n is a
// multiple of 8 (every filter length here is a multiple of kTapsPerPhase).
float dotProduct(const float* a, const float* b, int n)
{
    float partial[8] = {};
    for (int i = 0; i < n; i += 8)
        for (int k = 0; k < 8; ++k)
            partial[k] += a[i + k] * b[i + k];
    return ((partial[0] + partial[4]) + (partial[1] + partial[5]))
         + ((partial[2] + partial[6]) + (partial[3] + partial[7]));
}

} // namespace

void ZOversampler::prepare(int factor, int maxBaseBlock)
{
    if (factor < kMinFactor || factor > kMaxFactor)
        throw ZException("oversampling factor " + std::to_string(factor) + " is outside 2..16");
    if (maxBaseBlock < 1)
        throw ZException("oversampler block size must be at least 1");
    factor_ = factor;
    maxBaseBlock_ = maxBaseBlock;

    const std::vector<double> lowPass = designLowPass(factor);
    downTaps_.assign(lowPass.begin(), lowPass.end());

    // High-rate output p of base sample m is the sum over j of h[p + j*factor] * x[m - j];
    // each sub-filter is stored reversed so it runs over the base-rate line oldest first.
    // The factor restores the level lost by spreading each input over factor outputs.
    upPhases_.resize(lowPass.size());
    for (int p = 0; p < factor; ++p)
        for (int i = 0; i < kTapsPerPhase; ++i) {
            const size_t tap = static_cast<size_t>(p + (kTapsPerPhase - 1 - i) * factor);
            upPhases_[static_cast<size_t>(p * kTapsPerPhase + i)] = static_cast<float>(factor * lowPass[tap]);
        }

    upLine_.resize(static_cast<size_t>(upHistory() + maxBaseBlock));
    downLine_.resize(static_cast<size_t>(downHistory() + maxBaseBlock * factor));
    reset();
}

void ZOversampler::reset()
{
    std::fill(upLine_.begin(), upLine_.end(), 0.0f);
    std::fill(downLine_.begin(), downLine_.end(), 0.0f);
}

// Up then down delays by factor * kTapsPerPhase - 1 high-rate samples (half the filter
// length less one, twice). downsample() keeps the newest sample of each group of factor,
// factor - 1 samples after the group's start, so the delay is a whole number of groups.
int ZOversampler::latency() const
{
    return kTapsPerPhase - 1;
}

int ZOversampler::upHistory() const
{
    return kTapsPerPhase - 1;
}

// A base sample's window ends on the newest sample of its own group, so the line
// needs the previous kTapsPerPhase - 1 whole groups.
int ZOversampler::downHistory() const
{
    return (kTapsPerPhase - 1) * factor_;
}

void ZOversampler::upsample(const float* in, float* out, int baseCount)
{
    assert(maxBaseBlock_ > 0 && "prepare() first");
    for (int done = 0; done < baseCount;) {
        const int count = std::min(baseCount - done, maxBaseBlock_);
        upsampleChunk(in + done, out + done * factor_, count);
        done += count;
    }
}

void ZOversampler::downsample(const float* in, float* out, int baseCount)
{
    assert(maxBaseBlock_ > 0 && "prepare() first");
    for (int done = 0; done < baseCount;) {
        const int count = std::min(baseCount - done, maxBaseBlock_);
        downsampleChunk(in + done * factor_, out + done, count);
        done += count;
    }
}

void ZOversampler::upsampleChunk(const float* in, float* out, int baseCount)
{
    float* line = upLine_.data();
    std::copy_n(in, baseCount, line + upHistory());
    for (int m = 0; m < baseCount; ++m)
        for (int p = 0; p < factor_; ++p)
            *out++ = dotProduct(upPhases_.data() + p * kTapsPerPhase, line + m, kTapsPerPhase);
    std::copy(line + baseCount, line + baseCount + upHistory(), line);
}

void ZOversampler::downsampleChunk(const float* in, float* out, int baseCount)
{
    float* line = downLine_.data();
    const int highCount = baseCount * factor_;
    const int length = static_cast<int>(downTaps_.size());
    std::copy_n(in, highCount, line + downHistory());
    for (int m = 0; m < baseCount; ++m)
        out[m] = dotProduct(downTaps_.data(), line + m * factor_, length);
    std::copy(line + highCount, line + highCount + downHistory(), line);
}

} // namespace halvern
