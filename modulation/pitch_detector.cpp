#include "modulation/pitch_detector.h"

#include "modulation/detector_math.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

// The analysis runs at about eight times the highest pitch searched, within these
// bounds: fast enough for parabolic refinement to be precise, slow enough to be cheap.
constexpr double kAnalysisOversampling = 8.0;
constexpr double kMinAnalysisRate = 4000.0;
constexpr double kMaxAnalysisRate = 16000.0;
// The anti-alias low-pass (fourth-order Butterworth as two sections) sits at this part
// of the analysis rate.
constexpr double kAntiAliasCutoff = 0.4;
constexpr std::array<double, 2> kButterworthQ{0.5411961, 1.3065630};
// The first dip of the normalised difference under kPeriodicThreshold marks the period;
// without one, the deepest dip counts if it is under kFallbackThreshold.
constexpr double kPeriodicThreshold = 0.15;
constexpr double kFallbackThreshold = 0.35;
constexpr double kSlowestGlide = 0.5; // seconds, at speed 0

double glideWeight(double speed, int n, double sampleRate)
{
    return onePoleWeight(kSlowestGlide * (1.0 - std::clamp(speed, 0.0, 1.0)), n, sampleRate);
}

// The sum of (a[j] - b[j])^2, in four interleaved partial sums so that the additions do
// not wait on each other; this loop is nearly all of the detector's cost.
double squaredDistance(const double* a, const double* b, int count)
{
    std::array<double, 4> partial{};
    int j = 0;
    for (; j + 4 <= count; j += 4) {
        for (int k = 0; k < 4; ++k) {
            const double delta = a[j + k] - b[j + k];
            partial[static_cast<size_t>(k)] += delta * delta;
        }
    }
    for (; j < count; ++j)
        partial[0] += (a[j] - b[j]) * (a[j] - b[j]);
    return partial[0] + partial[1] + partial[2] + partial[3];
}

int decimationFor(double sampleRate, double maxFrequency)
{
    const double rate = std::clamp(kAnalysisOversampling * maxFrequency, kMinAnalysisRate, kMaxAnalysisRate);
    return std::max(1, static_cast<int>(sampleRate / rate));
}

} // namespace

void ZPitchDetector::setSettings(const Settings& settings)
{
    settings_ = settings;
    settings_.minFrequency = std::clamp(settings.minFrequency, kLowestFrequency, 20000.0);
    settings_.maxFrequency = std::clamp(settings.maxFrequency, settings_.minFrequency, 20000.0);
    settings_.stabilization = std::clamp(settings.stabilization, 0.0, 1.0);
    settings_.speed = std::clamp(settings.speed, 0.0, 1.0);
    settings_.accuracy = std::clamp(settings.accuracy, 0.0, 1.0);
    settings_.threshold = std::clamp(settings.threshold, -120.0, 0.0);
    updateAnalysis();
}

void ZPitchDetector::prepare(double sampleRate, int /*maxBlockSize*/)
{
    sampleRate_ = sampleRate;
    // The longest frame: the fastest analysis rate and the lowest pitch, three periods
    // of window plus one period of lag.
    const double fastestRate = sampleRate / std::max(1, static_cast<int>(sampleRate / kMaxAnalysisRate));
    const int longestLag = static_cast<int>(std::ceil(fastestRate / kLowestFrequency)) + 2;
    const int longestFrame = 4 * longestLag + 1;
    size_t capacity = 1;
    while (capacity < static_cast<size_t>(longestFrame))
        capacity *= 2;
    ring_.assign(capacity, 0.0f);
    frame_.assign(static_cast<size_t>(longestFrame), 0.0);
    difference_.assign(static_cast<size_t>(longestLag + 2), 0.0);
    normalised_.assign(static_cast<size_t>(longestLag + 2), 0.0);
    updateAnalysis();
    reset();
}

void ZPitchDetector::reset()
{
    clearInput();
    historyCount_ = 0;
    target_ = 0.0;
    reported_ = 0.0;
}

void ZPitchDetector::clearInput()
{
    std::fill(ring_.begin(), ring_.end(), 0.0f);
    for (ZBiquad& section : antiAlias_)
        section.reset();
    writeIndex_ = 0;
    filled_ = 0;
    decimationPhase_ = 0;
    sinceAnalysis_ = 0;
}

void ZPitchDetector::updateAnalysis()
{
    const int decimation = decimationFor(sampleRate_, settings_.maxFrequency);
    if (decimation != decimation_) {
        decimation_ = decimation;
        clearInput(); // what the ring holds was taken at another rate
    }
    analysisRate_ = sampleRate_ / decimation_;
    const double highest = std::max(std::min(settings_.maxFrequency, kAntiAliasCutoff * analysisRate_), kLowestFrequency);
    const double lowest = std::clamp(settings_.minFrequency, kLowestFrequency, highest);
    minLag_ = std::max(2, static_cast<int>(analysisRate_ / highest));
    maxLag_ = std::max(minLag_ + 2, static_cast<int>(std::ceil(analysisRate_ / lowest)));
    window_ = static_cast<int>(std::lround(maxLag_ * (1.0 + 2.0 * std::clamp(settings_.accuracy, 0.0, 1.0))));
    historySize_ = 1 + 2 * static_cast<int>(std::lround(3.0 * std::clamp(settings_.stabilization, 0.0, 1.0)));
    for (size_t i = 0; i < antiAlias_.size(); ++i)
        antiAlias_[i].set(ZBiquad::Type::LowPass, sampleRate_, kAntiAliasCutoff * analysisRate_, kButterworthQ[i]);
    const double threshold = decibelsToAmplitude(settings_.threshold);
    thresholdPower_ = threshold * threshold;
}

double ZPitchDetector::process(const float* const* channels, int channelCount, int n)
{
    if (ring_.empty() || channelCount <= 0)
        return reported_;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int c = 0; c < channelCount; ++c)
            sum += channels[c][i];
        const double filtered = antiAlias_[1].process(antiAlias_[0].process(sum / channelCount));
        if (++decimationPhase_ >= decimation_) {
            decimationPhase_ = 0;
            push(filtered);
        }
    }
    if (sinceAnalysis_ >= std::max(1, window_ / 2) && filled_ >= frameLength()) {
        sinceAnalysis_ = 0;
        target_ = stabilised(analyse());
    }
    glideTo(target_, n);
    return reported_;
}

void ZPitchDetector::push(double sample)
{
    ring_[writeIndex_] = static_cast<float>(sample);
    writeIndex_ = (writeIndex_ + 1) & (ring_.size() - 1);
    filled_ = std::min(filled_ + 1, static_cast<int>(ring_.size()));
    ++sinceAnalysis_;
}

// One estimate from the newest frame: the pitch in Hz, or 0 when the frame is too quiet
// or not periodic.
double ZPitchDetector::analyse()
{
    const size_t length = static_cast<size_t>(frameLength());
    const size_t mask = ring_.size() - 1;
    for (size_t k = 0; k < length; ++k)
        frame_[k] = ring_[(writeIndex_ + ring_.size() - length + k) & mask];
    if (!loudEnough())
        return 0.0;
    computeDifferences();
    const int lag = pickLag();
    return lag > 0 ? analysisRate_ / refineLag(lag) : 0.0;
}

bool ZPitchDetector::loudEnough() const
{
    const size_t length = static_cast<size_t>(frameLength());
    double sum = 0.0;
    for (size_t k = 0; k < length; ++k)
        sum += frame_[k] * frame_[k];
    return sum / static_cast<double>(length) >= thresholdPower_;
}

// difference(tau) = sum over the window of (x[j] - x[j + tau])^2, and its cumulative
// mean normalised form, which is 1 at tau = 0 and dips towards 0 at each period.
void ZPitchDetector::computeDifferences()
{
    normalised_[0] = 1.0;
    double runningSum = 0.0;
    for (int tau = 1; tau <= maxLag_ + 1; ++tau) {
        const double sum = squaredDistance(frame_.data(), frame_.data() + tau, window_);
        difference_[static_cast<size_t>(tau)] = sum;
        runningSum += sum;
        normalised_[static_cast<size_t>(tau)] = runningSum > 0.0 ? sum * tau / runningSum : 1.0;
    }
}

// The first dip under the threshold, followed down to its bottom; shorter lags come
// first, so a period is preferred to its multiples. -1 when nothing is periodic enough.
int ZPitchDetector::pickLag() const
{
    auto at = [this](int tau) { return normalised_[static_cast<size_t>(tau)]; };
    for (int tau = minLag_; tau <= maxLag_; ++tau) {
        if (at(tau) < kPeriodicThreshold) {
            while (tau < maxLag_ && at(tau + 1) < at(tau))
                ++tau;
            return tau;
        }
    }
    int deepest = minLag_;
    for (int tau = minLag_ + 1; tau <= maxLag_; ++tau)
        if (at(tau) < at(deepest))
            deepest = tau;
    return at(deepest) < kFallbackThreshold ? deepest : -1;
}

// The bottom of the parabola through the raw differences around the lag.
double ZPitchDetector::refineLag(int lag) const
{
    const double before = difference_[static_cast<size_t>(lag - 1)];
    const double here = difference_[static_cast<size_t>(lag)];
    const double after = difference_[static_cast<size_t>(lag + 1)];
    const double curvature = before - 2.0 * here + after;
    if (curvature <= 0.0)
        return lag;
    return lag + std::clamp(0.5 * (before - after) / curvature, -1.0, 1.0);
}

double ZPitchDetector::stabilised(double estimate)
{
    std::move_backward(history_.begin(), history_.end() - 1, history_.end());
    history_[0] = estimate;
    historyCount_ = std::min(historyCount_ + 1, kMaxHistory);
    const int count = std::min(historyCount_, historySize_);
    std::array<double, kMaxHistory> recent = history_;
    const auto middle = recent.begin() + count / 2;
    std::nth_element(recent.begin(), middle, recent.begin() + count);
    return *middle;
}

// A glide in pitch (log frequency); a pitch after silence is taken at once, and
// silence ends the pitch at once.
void ZPitchDetector::glideTo(double target, int n)
{
    if (target <= 0.0 || reported_ <= 0.0) {
        reported_ = target;
        return;
    }
    reported_ *= std::pow(target / reported_, glideWeight(settings_.speed, n, sampleRate_));
}

double ZAutoTune::process(double frequency, int n, double sampleRate)
{
    if (frequency <= 0.0)
        return frequency;
    const double semitones = 12.0 * std::log2(frequency / 440.0);
    const double target = std::clamp(settings_.depth, 0.0, 1.0) * (std::round(semitones) - semitones);
    correction_ += glideWeight(settings_.speed, n, sampleRate) * (target - correction_);
    return frequency * std::exp2(correction_ / 12.0);
}

double PitchToDetectorValue(double frequency, double octaves, double semitones, double cents, double minFrequency,
                            double maxFrequency, double previous)
{
    if (frequency < 20.0)
        return previous;
    const double shift = octaves + semitones / 12.0 + cents / 1200.0;
    const double shifted = frequency * std::exp2(shift);
    double low = std::log10(minFrequency);
    double high = std::log10(maxFrequency);
    if (!(high > low + 1e-50)) {
        low = 1.3010299956639813;  // log10(20 Hz)
        high = 4.301029995663981;  // log10(20 kHz)
    }
    return std::clamp((std::log10(shifted) - low) / (high - low), 0.0, 1.0);
}

} // namespace halvern
