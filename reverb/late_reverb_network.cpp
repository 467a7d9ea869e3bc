#include "reverb/late_reverb_network.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace halvern {
namespace {

// The longest line: the fourth pair wants at most τ fs (1 + 2.19 (0.32 − 2W)), below
// 0.095 s at the worst room width, plus a stereo offset of at most 0.02 s.
constexpr double kLongestLineSeconds = 0.12;
// How far the next free prime may lie above a wanted length.
constexpr int kPrimeSearchMargin = 64;
constexpr double kPhaseWrap = 100000.0;
constexpr double kModulationOff = 1e-50;
constexpr std::array<float, 4> kPairTilt{0.2f, -0.4f, 0.4f, -0.2f};
constexpr std::array<double, 4> kShelfQuality{0.4, 0.6, 0.7, 0.5};
// The all-pass stays inside 20 Hz … 0.45 fs: tuned to a band edge its poles sit on the
// unit circle, and retuning such a section every 64 samples pumps energy into the loop.
constexpr double kAllPassLowest = 20.0;
constexpr double kAllPassHighest = 0.45;
// Ten squarings: the singular value bound is at most 4^(1/2048) = 1.0007 too high.
constexpr int kSquarings = 10;
// The ringing estimate counts up to 2^16 passes of the loop.
constexpr int kPassBits = 17;

// Frequencies probed for the loudest gain of a line's shelves, spaced evenly in octaves.
constexpr int kShelfProbes = 64;

// The highest gain of a low and a high shelf in series between 20 Hz and just below
// Nyquist: what the slowest-decaying frequency keeps of a pass.
double loudestGain(const ZBiquad::Coefficients& low, const ZBiquad::Coefficients& high, double rate)
{
    const double top = 0.49 * rate;
    double loudest = 0.0;
    for (int k = 0; k <= kShelfProbes; ++k) {
        const double f = 20.0 * std::pow(top / 20.0, static_cast<double>(k) / kShelfProbes);
        loudest = std::max(loudest, ZBiquad::magnitude(low, rate, f) * ZBiquad::magnitude(high, rate, f));
    }
    return loudest;
}

ZMatrix4 modeMatrix(int mode, double D)
{
    const double d = 0.2 * D;
    switch (mode) {
    case 0: return {{{-D, 1, 0, -d}, {1, D, d, 0}, {0, d, -D, 1}, {-d, 0, 1, D}}};
    case 1: return {{{1, D, d, 0}, {-D, 1, 0, -d}, {-d, 0, 1, D}, {0, d, -D, 1}}};
    case 2: return {{{-D, 1, -d, -d}, {-d, -d, 1, D}, {d, d, -D, 1}, {1, D, d, d}}};
    default: return {{{1, D, D, D}, {D, -1, D, -D}, {D, D, -1, -D}, {D, -D, -D, 1}}};
    }
}

// The sum of the magnitudes of a row's entries (first powers, not squares) under the root.
double modeNormaliser(int mode, double D)
{
    const double d = 0.2 * D;
    switch (mode) {
    case 0:
    case 1: return std::sqrt(1.0 / (1.0 + D + d));
    case 2: return std::sqrt(1.0 / (1.0 + D + 2.0 * d));
    default: return std::sqrt(1.0 / (1.0 + 3.0 * D));
    }
}

ZMatrix4 product(const ZMatrix4& a, const ZMatrix4& b)
{
    ZMatrix4 p{};
    for (size_t i = 0; i < 4; ++i)
        for (size_t k = 0; k < 4; ++k)
            for (size_t j = 0; j < 4; ++j)
                p[i][j] += a[i][k] * b[k][j];
    return p;
}

ZMatrix4 transpose(const ZMatrix4& m)
{
    ZMatrix4 t{};
    for (size_t i = 0; i < 4; ++i)
        for (size_t j = 0; j < 4; ++j)
            t[i][j] = m[j][i];
    return t;
}

double trace(const ZMatrix4& m) { return m[0][0] + m[1][1] + m[2][2] + m[3][3]; }

void scale(ZMatrix4& m, double factor)
{
    for (auto& row : m)
        for (double& entry : row)
            entry *= factor;
}

// Scales m down where its largest singular value exceeds 1, so that the loop can never
// gain energy.
void limitGain(ZMatrix4& m)
{
    const double largest = LargestSingularValue(m);
    if (largest > 1.0)
        scale(m, 1.0 / largest);
}

// How many passes of the loop matrix m it takes until no state can be left louder than
// fallDb below where it started: the smallest k with |m^k| (the largest singular value)
// below the floor, so the transient growth of a non-normal matrix is counted too. The
// powers m^(2^j) are formed by squaring, each kept with its norm's logarithm apart, and k
// is built from them bit by bit, from the highest. Infinite when even 2^kPassBits
// passes leave the floor unreached.
double passesToFall(const ZMatrix4& m, double fallDb)
{
    const double floor = -fallDb / 20.0 * std::numbers::ln10;
    std::array<ZMatrix4, kPassBits> powers;
    std::array<double, kPassBits> logs{};
    ZMatrix4 power = m;
    double logNorm = 0.0;
    for (int j = 0; j < kPassBits; ++j) {
        const double norm = LargestSingularValue(power);
        if (!(norm > 0.0))
            return j == 0 ? 0.0 : std::ldexp(1.0, j - 1);
        scale(power, 1.0 / norm);
        logNorm += std::log(norm);
        powers[static_cast<size_t>(j)] = power;
        logs[static_cast<size_t>(j)] = logNorm;
        power = product(power, power);
        logNorm *= 2.0;
    }
    if (logs.back() > floor)
        return std::numeric_limits<double>::infinity();
    ZMatrix4 current{};
    for (size_t i = 0; i < 4; ++i)
        current[i][i] = 1.0;
    double currentLog = 0.0;
    double passes = 0.0;
    for (int j = kPassBits - 1; j >= 0; --j) {
        ZMatrix4 candidate = product(current, powers[static_cast<size_t>(j)]);
        const double norm = LargestSingularValue(candidate);
        const double candidateLog = currentLog + logs[static_cast<size_t>(j)] + (norm > 0.0 ? std::log(norm) : -1e300);
        if (candidateLog > floor) {
            scale(candidate, 1.0 / norm);
            current = candidate;
            currentLog = candidateLog;
            passes += std::ldexp(1.0, j);
        }
    }
    return passes + 1.0;
}

} // namespace

// Power iteration on B = MᵀM, run on the whole matrix at once by repeated squaring with
// each power renormalised by its trace: for p = 2^K, λmax(B)^p ≤ trace(B^p) ≤ 4 λmax(B)^p,
// so trace(B^p)^(1/p) bounds λmax from above to within 4^(1/p), with no start vector.
double LargestSingularValue(const ZMatrix4& m)
{
    ZMatrix4 b = product(transpose(m), m);
    const double first = trace(b);
    if (!(first > 0.0))
        return 0.0;
    scale(b, 1.0 / first);
    double logBound = std::log(first);
    double weight = 1.0;
    for (int i = 0; i < kSquarings; ++i) {
        b = product(b, b);
        const double t = trace(b);
        scale(b, 1.0 / t);
        weight *= 0.5;
        logBound += weight * std::log(t);
    }
    return std::exp(0.5 * logBound);
}

void ZLateReverbNetwork::glideTap(size_t i, double target, int samples)
{
    target = std::clamp(target, 1.0, kMaxTapDelay);
    if (samples <= 0) {
        tapDelay_[i] = target;
        tapStep_[i] = 0.0;
    } else {
        tapStep_[i] = (target - tapDelay_[i]) / samples;
    }
}

void ZLateReverbNetwork::prepare(double sampleRate)
{
    const int longest = static_cast<int>(std::ceil(kLongestLineSeconds * sampleRate)) + kPrimeSearchMargin;
    // Room for the modulated read's extra delay and its interpolation points.
    lines_.allocate(longest + static_cast<int>(kMaxTapDelay) + 3);
    reset();
}

void ZLateReverbNetwork::reset()
{
    lines_.clear();
    lowShelves_.reset();
    highShelves_.reset();
    allPasses_.reset();
    tapStep_.fill(0.0);
    phases_.fill(0.0);
    counter_ = 0;
    if (sampleRate_ > 0.0)
        applyModulation(0);
}

void ZLateReverbNetwork::update(const Settings& s, ZPrimeTable& primes)
{
    if (s.sampleRate <= 0.0)
        return;
    sampleRate_ = s.sampleRate;
    const double roomWidth = s.size * (0.9 * s.width + 0.1);
    loopTime_ = 0.25 * roomWidth + 0.05;
    assignLengths(s, roomWidth, primes);
    designMatrix(s);
    designInput(s.pan);
    designDamping(s);
    designModulation(s);
}

void ZLateReverbNetwork::assignLengths(const Settings& s, double roomWidth, ZPrimeTable& primes)
{
    double base = loopTime_ * sampleRate_;
    double step = (0.32 - 2.0 * roomWidth) * loopTime_ * sampleRate_;
    double offset = s.stereoOffset;
    for (size_t k = 0; k < 4; ++k) {
        lengths_[2 * k] = primes.take(static_cast<int>(base + offset));
        lengths_[2 * k + 1] = primes.take(static_cast<int>(base - offset));
        base += step;
        step *= 0.7;
        offset = -offset;
    }
    for (size_t i = 0; i < kLines; ++i)
        lines_.setLength(i, lengths_[i]);
}

void ZLateReverbNetwork::designMatrix(const Settings& s)
{
    const int mode = std::clamp<int>(s.mode, 0, 3);
    base_ = modeMatrix(mode, s.reverbDiffusion);
    normaliser_ = modeNormaliser(mode, s.reverbDiffusion);
    // One pass of the loop time τ falls by 60 τ / T dB.
    const double decay = s.reverbTime > 0.0 ? std::pow(10.0, -3.0 * loopTime_ / s.reverbTime) : 0.0;
    decayed_ = base_;
    scale(decayed_, normaliser_ * decay);
    // Each modulation term is at most 0.01 |m|, so it adds at most 0.04 |m| to the
    // largest singular value; below that margin the gain check is skipped.
    mayExceedUnity_ = LargestSingularValue(decayed_) + 0.04 * std::fabs(s.modulation) > 1.0;
}

// Pair k leans toward the left or right early signal by v = t[k] + p / 2; the weights are
// formed in single precision, then halved.
void ZLateReverbNetwork::designInput(double pan)
{
    for (size_t k = 0; k < 4; ++k) {
        const float v = kPairTilt[k] + 0.5f * static_cast<float>(pan);
        const bool right = v >= 0.0f;
        const float aLeft = right ? 1.0f - v : 1.0f;
        const float aRight = right ? 0.0f : -v;
        const float bLeft = right ? v : 0.0f;
        const float bRight = right ? 1.0f : 1.0f + v;
        input_[2 * k] = {0.5 * aLeft, 0.5 * aRight};
        input_[2 * k + 1] = {0.5 * bLeft, 0.5 * bRight};
    }
}

// The dampening is a loss per 100 ms of travel: a line of D seconds gets shelves of
// −Damp × D / 0.1 dB, so every line loses the same per second.
void ZLateReverbNetwork::designDamping(const Settings& s)
{
    const double lowHz = std::pow(10.0, s.lowFrequency);
    const double highHz = std::pow(10.0, s.highFrequency);
    const size_t longest = static_cast<size_t>(std::max_element(lengths_.begin(), lengths_.end()) - lengths_.begin());
    for (size_t i = 0; i < kLines; ++i) {
        const double seconds = lengths_[i] / sampleRate_;
        const double q = kShelfQuality[i / 2];
        const ZBiquad::Coefficients low = ZBiquad::design(ZBiquad::Type::LowShelf, sampleRate_, lowHz, q, -s.lowDamp * seconds / 0.1);
        const ZBiquad::Coefficients high = ZBiquad::design(ZBiquad::Type::HighShelf, sampleRate_, highHz, q, -s.highDamp * seconds / 0.1);
        lowShelves_.setCoefficients(i, low);
        highShelves_.setCoefficients(i, high);
        if (i == longest)
            longestShelves_ = {low, high};
    }
}

void ZLateReverbNetwork::designModulation(const Settings& s)
{
    modulation_ = s.modulation;
    modulated_ = std::fabs(s.modulation) >= kModulationOff;
    const double increment = std::pow(10.0, s.modulationFrequency) * kModulationInterval / sampleRate_;
    increments_ = {increment, increment * 1.001, increment * 0.999, increment * 1.003};
    applyModulation(kModulationInterval);
}

void ZLateReverbNetwork::advanceModulation()
{
    for (size_t j = 0; j < 4; ++j) {
        phases_[j] += increments_[j];
        if (phases_[j] > kPhaseWrap)
            phases_[j] = std::fmod(phases_[j], 2.0 * std::numbers::pi);
    }
    applyModulation(kModulationInterval);
}

// M′, the all-passes and the tap delays for the current phases. Without modulation this
// leaves M′ = the decay-scaled matrix and every all-pass fixed at 5000 Hz: the section
// is kept, so turning modulation on or off does not change the tail's phase character.
// The tap delay swings over 10 |m| + 1 samples, from 1 to 2 + 10 |m|: at most 0.2 cent
// of pitch wobble, as the phases turn at only 10^"Modulation freq" radians per second.
void ZLateReverbNetwork::applyModulation(int glideSamples)
{
    const double m = modulation_;
    for (size_t k = 0; k < 4; ++k)
        for (size_t j = 0; j < 4; ++j)
            matrix_[k][j] = decayed_[k][j] + 0.01 * m * std::sin(phases_[j] + static_cast<double>(k + j));
    if (mayExceedUnity_)
        limitGain(matrix_);

    const double halfSwing = 0.5 * (10.0 * std::min(std::fabs(m), 1.0) + 1.0);
    for (size_t k = 0; k < 4; ++k) {
        const double angle = static_cast<double>(k) * std::numbers::pi / 2.0 + phases_[k];
        const double sine = std::sin(angle);
        const double frequency = std::clamp(5000.0 + 5000.0 * m * sine, kAllPassLowest, kAllPassHighest * sampleRate_);
        const ZBiquad::Coefficients allPass = ZBiquad::design(ZBiquad::Type::AllPass, sampleRate_, frequency, 0.4);
        allPasses_.setCoefficients(2 * k, allPass);
        allPasses_.setCoefficients(2 * k + 1, allPass);
        glideTap(2 * k, 1.0 + halfSwing * (1.0 + sine), glideSamples);
        glideTap(2 * k + 1, 1.0 + halfSwing * (1.0 + std::cos(angle)), glideSamples);
    }
}

double ZLateReverbNetwork::ringingSeconds(double fallDb) const
{
    if (sampleRate_ <= 0.0)
        return 0.0;
    // The dampening takes the same share per second from every line, so the longest
    // line's pass with its shelves at their loudest sets the pace. The modulation moves
    // each entry by up to 0.01 |m|, which can lift the matrix's gain by about as much.
    ZMatrix4 pass = decayed_;
    const double shelfGain = loudestGain(longestShelves_[0], longestShelves_[1], sampleRate_);
    scale(pass, shelfGain * (1.0 + 0.01 * std::fabs(modulation_)));
    const int longest = *std::max_element(lengths_.begin(), lengths_.end());
    return passesToFall(pass, fallDb) * (longest + kMaxTapDelay + 2.0) / sampleRate_;
}

} // namespace halvern
