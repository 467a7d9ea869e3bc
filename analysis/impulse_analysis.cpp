#include "analysis/impulse_analysis.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <numeric>

namespace halvern {

namespace {

constexpr double kEarlyWindowSeconds = 0.080;
constexpr double kBlockSeconds = 0.010;
constexpr double kOnsetBelowPeak = 0.01;  // the direct sound: the first sample within 20 dB of the peak
constexpr double kNoiseTailFraction = 0.1; // the background noise is measured over the last 10 %
constexpr double kDecayFitAboveNoiseDb = 25.0;
constexpr double kDecayFitStopAboveNoiseDb = 5.0;
constexpr double kTrustedAboveNoiseDb = 10.0;
constexpr size_t kMinFitBlocks = 3;

double toDb(double energy) { return 10.0 * std::log10(std::max(energy, 1e-300)); }

// ---- octave band filter ----------------------------------------------------------------

// One biquad per upper-half-plane pole of the analog band-pass: that pole and its
// conjugate, with zeros at DC and Nyquist, scaled to unity gain at the band's centre.
ZBiquad::Coefficients sectionFor(std::complex<double> analogPole, double twiceRate, double centreRadians)
{
    const std::complex<double> z = (twiceRate + analogPole) / (twiceRate - analogPole);
    ZBiquad::Coefficients c;
    c.a1 = -2.0 * z.real();
    c.a2 = std::norm(z);
    const std::complex<double> w = std::polar(1.0, -centreRadians);
    const double gain = std::abs((1.0 + c.a1 * w + c.a2 * w * w) / (1.0 - w * w));
    c.b0 = gain;
    c.b1 = 0.0;
    c.b2 = -gain;
    return c;
}

// ---- energy decay ----------------------------------------------------------------------

// The squared response summed over channels, optionally through an octave filter.
std::vector<double> squaredSum(const ZAudioData& response, const std::optional<ZOctaveBandFilter>& filter)
{
    std::vector<double> energy(response.frames(), 0.0);
    for (const auto& channel : response.channels) {
        const std::vector<double> signal =
            filter ? filter->apply(channel) : std::vector<double>(channel.begin(), channel.end());
        for (size_t n = 0; n < energy.size(); ++n)
            energy[n] += signal[n] * signal[n];
    }
    return energy;
}

double meanOf(std::span<const double> values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// Mean energy in consecutive blocks, in dB; the last block may be shorter.
std::vector<double> blockLevelsDb(const std::vector<double>& energy, size_t blockLength)
{
    std::vector<double> levels;
    for (size_t start = 0; start < energy.size(); start += blockLength) {
        const size_t length = std::min(blockLength, energy.size() - start);
        levels.push_back(toDb(meanOf(std::span(energy).subspan(start, length))));
    }
    return levels;
}

struct Line {
    double intercept = 0.0;
    double slope = 0.0;
    double at(double x) const { return intercept + slope * x; }
};

// Least-squares line through (x(i), y[i]) for i in [first, last).
template <class X>
Line fitLine(const std::vector<double>& y, size_t first, size_t last, X x)
{
    const double count = static_cast<double>(last - first);
    double sx = 0.0, sy = 0.0;
    for (size_t i = first; i < last; ++i) {
        sx += x(i);
        sy += y[i];
    }
    const double mx = sx / count, my = sy / count;
    double sxy = 0.0, sxx = 0.0;
    for (size_t i = first; i < last; ++i) {
        sxy += (x(i) - mx) * (y[i] - my);
        sxx += (x(i) - mx) * (x(i) - mx);
    }
    const double slope = sxy / sxx;
    return {my - slope * mx, slope};
}

// Where the decay disappears into the background noise: the integration stops at `end`,
// the energy the decay would still have carried past it is added back as `tailEnergy`,
// the noise's mean energy per sample is taken off every sample before it, and the
// backward integral is trusted only before `trusted`, where the decay is still well clear
// of the noise.
struct Truncation {
    double noiseEnergy = 0.0;
    size_t end = 0;
    double tailEnergy = 0.0;
    size_t trusted = 0;
};

// The noise is the mean energy of the last 10 % of the response. The late decay is the
// stretch of block levels from the last block more than 25 dB above the noise up to the
// first within 5 dB of it; the line fitted to it meets the noise level at the truncation
// point, and is trusted down to 10 dB above the noise. When that line is still above the
// noise where the last 10 % begins, the response was cut off while decaying and the last
// 10 % is decay, not noise: all of it is kept and nothing subtracted. A decay that ends
// too abruptly to fit is cut where it reaches the noise, with nothing added; a response
// that never rises 25 dB above its noise yields nothing trusted.
Truncation findTruncation(const std::vector<double>& energy, size_t blockLength)
{
    const size_t noiseStart =
        energy.size() - std::max<size_t>(1, static_cast<size_t>(kNoiseTailFraction * energy.size()));
    const double noise = meanOf(std::span(energy).subspan(noiseStart));
    const double noiseDb = toDb(noise);
    const std::vector<double> levels = blockLevelsDb(energy, blockLength);

    const auto fitStart = std::find_if(levels.rbegin(), levels.rend(),
                                       [&](double level) { return level > noiseDb + kDecayFitAboveNoiseDb; });
    if (fitStart == levels.rend())
        return {noise, energy.size(), 0.0, 0};
    const size_t first = static_cast<size_t>(levels.rend() - fitStart) - 1;
    const size_t last = static_cast<size_t>(
        std::find_if(levels.begin() + first, levels.end(),
                     [&](double level) { return level <= noiseDb + kDecayFitStopAboveNoiseDb; }) -
        levels.begin());
    const size_t reachesNoise = std::min(last * blockLength, energy.size());
    const Truncation abrupt{noise, reachesNoise, 0.0, reachesNoise};
    if (last - first < kMinFitBlocks)
        return abrupt;
    const Line decay = fitLine(levels, first, last, [&](size_t b) { return (b + 0.5) * blockLength; });
    if (decay.slope >= 0.0)
        return abrupt;

    const double perSampleLoss = -std::expm1(decay.slope * std::numbers::ln10 / 10.0);
    const auto tailFrom = [&](size_t n) {
        return std::pow(10.0, decay.at(static_cast<double>(n)) / 10.0) / perSampleLoss;
    };
    if (decay.at(static_cast<double>(noiseStart)) > noiseDb)
        return {0.0, energy.size(), tailFrom(energy.size()), energy.size()};
    const auto sampleWhere = [&](double levelDb) {
        const double n = (levelDb - decay.intercept) / decay.slope;
        return static_cast<size_t>(std::clamp(n, static_cast<double>(first * blockLength),
                                              static_cast<double>(energy.size())));
    };
    const size_t end = sampleWhere(noiseDb);
    return {noise, end, tailFrom(end), std::min(end, sampleWhere(noiseDb + kTrustedAboveNoiseDb))};
}

// Schroeder's backward integral of the energy less the noise: remaining[n] is the decay's
// energy from sample n on, for n in [0, end]; the last entry is the tail energy past the
// truncation point.
std::vector<double> backwardIntegral(const std::vector<double>& energy, const Truncation& truncation)
{
    std::vector<double> remaining(truncation.end + 1);
    remaining[truncation.end] = truncation.tailEnergy;
    for (size_t n = truncation.end; n-- > 0;)
        remaining[n] = remaining[n + 1] + energy[n] - truncation.noiseEnergy;
    return remaining;
}

// ---- decay time and energy ratio --------------------------------------------------------

// The decay time from the least-squares line through the decay curve between `topDb` and
// `bottomDb`, or nothing when the trusted curve does not reach `bottomDb`.
std::optional<double> decayBetween(const std::vector<double>& curveDb, double topDb, double bottomDb,
                                   double sampleRate)
{
    const auto below = [&](double level) {
        return static_cast<size_t>(
            std::find_if(curveDb.begin(), curveDb.end(), [&](double db) { return db <= level; }) - curveDb.begin());
    };
    const size_t first = below(topDb), last = below(bottomDb);
    if (last >= curveDb.size() || last - first < 2)
        return std::nullopt;
    const Line line = fitLine(curveDb, first, last + 1, [&](size_t n) { return n / sampleRate; });
    if (line.slope >= 0.0)
        return std::nullopt;
    return -60.0 / line.slope;
}

ZDecayTime measureDecay(const std::vector<double>& remaining, size_t trusted, double sampleRate)
{
    std::vector<double> curveDb(std::min(trusted, remaining.size()));
    for (size_t n = 0; n < curveDb.size(); ++n)
        curveDb[n] = toDb(remaining[n] / remaining.front());
    if (const auto t30 = decayBetween(curveDb, -5.0, -35.0, sampleRate))
        return {ZDecayMethod::T30, *t30};
    if (const auto t20 = decayBetween(curveDb, -5.0, -25.0, sampleRate))
        return {ZDecayMethod::T20, *t20};
    return {};
}

// The direct sound is found in the analysed signal itself, so a band's ratio counts from
// the moment the band's filter lets the direct sound through. Energy past the truncation
// point counts as late, however soon the truncation comes.
std::optional<double> earlyToLateDb(const std::vector<double>& energy, const std::vector<double>& remaining,
                                    double sampleRate)
{
    const double threshold = *std::max_element(energy.begin(), energy.end()) * kOnsetBelowPeak;
    const size_t onset = static_cast<size_t>(
        std::find_if(energy.begin(), energy.end(), [&](double e) { return e >= threshold; }) - energy.begin());
    if (onset >= remaining.size())
        return std::nullopt;
    const size_t split =
        std::min(onset + static_cast<size_t>(std::lround(kEarlyWindowSeconds * sampleRate)), remaining.size() - 1);
    const double early = remaining[onset] - remaining[split];
    const double late = remaining[split];
    if (early <= 0.0 || late <= 0.0)
        return std::nullopt;
    return toDb(early / late);
}

ZBandAnalysis analyseEnergy(double centreHz, const std::vector<double>& energy, double sampleRate,
                           double blockSeconds)
{
    ZBandAnalysis band{centreHz, true, {}, std::nullopt};
    const size_t blockLength = std::max<size_t>(1, static_cast<size_t>(std::lround(blockSeconds * sampleRate)));
    const Truncation truncation = findTruncation(energy, blockLength);
    const std::vector<double> remaining = backwardIntegral(energy, truncation);
    band.decay = measureDecay(remaining, truncation.trusted, sampleRate);
    band.earlyToLateDb = earlyToLateDb(energy, remaining, sampleRate);
    return band;
}

// Blocks of 10 ms, or five periods of the band's centre where that is longer, so that a
// narrow band's level is averaged over enough of its slow fluctuation.
double blockSecondsFor(double centreHz) { return std::max(kBlockSeconds, 5.0 / centreHz); }

// ---- report ------------------------------------------------------------------------------

std::string bandLabel(double centreHz)
{
    char text[24];
    if (centreHz == 0.0)
        return "Broadband";
    if (centreHz >= 1000.0)
        std::snprintf(text, sizeof text, "%g kHz", centreHz / 1000.0);
    else
        std::snprintf(text, sizeof text, "%g Hz", centreHz);
    return text;
}

std::string formatLine(const ZBandAnalysis& band)
{
    char line[96];
    if (!band.available) {
        std::snprintf(line, sizeof line, "%-10s unavailable\n", bandLabel(band.centreHz).c_str());
        return line;
    }
    char decay[16] = "-";
    char ratio[16] = "-";
    if (band.decay.method != ZDecayMethod::NotMeasurable)
        std::snprintf(decay, sizeof decay, "%.3f", band.decay.seconds);
    if (band.earlyToLateDb)
        std::snprintf(ratio, sizeof ratio, "%+.1f", *band.earlyToLateDb);
    std::snprintf(line, sizeof line, "%-10s %10s  %-6s %16s\n", bandLabel(band.centreHz).c_str(), decay,
                  DecayMethodName(band.decay.method, "-"), ratio);
    return line;
}

} // namespace

const char* DecayMethodName(ZDecayMethod method, const char* unmeasured)
{
    switch (method) {
    case ZDecayMethod::T30:
        return "T30";
    case ZDecayMethod::T20:
        return "T20";
    case ZDecayMethod::NotMeasurable:
        break;
    }
    return unmeasured;
}

ZOctaveBandFilter::ZOctaveBandFilter(double sampleRate, double centreHz)
{
    const double twiceRate = 2.0 * sampleRate;
    const auto prewarp = [&](double hz) { return twiceRate * std::tan(std::numbers::pi * hz / sampleRate); };
    const double lower = prewarp(centreHz / std::numbers::sqrt2);
    const double upper = prewarp(centreHz * std::numbers::sqrt2);
    const double centreSquared = lower * upper;
    const double bandwidth = upper - lower;
    const double centreRadians = 2.0 * std::atan(std::sqrt(centreSquared) / twiceRate);

    // The prototype's poles lie on the unit circle at 120, 180 and 240 degrees. Each pole
    // p maps to the roots of s^2 - p B s + w0^2 = 0, exactly one of which lies in the
    // upper half plane.
    for (size_t k = 0; k < sections_.size(); ++k) {
        const std::complex<double> p = std::polar(1.0, std::numbers::pi * (2.0 * k + 4.0) / 6.0);
        const std::complex<double> root = std::sqrt(p * p * bandwidth * bandwidth - 4.0 * centreSquared);
        std::complex<double> pole = (p * bandwidth + root) / 2.0;
        if (pole.imag() < 0.0)
            pole = (p * bandwidth - root) / 2.0;
        sections_[k] = sectionFor(pole, twiceRate, centreRadians);
    }
}

std::vector<double> ZOctaveBandFilter::apply(std::span<const float> input) const
{
    std::array<ZBiquad, 3> filters;
    for (size_t k = 0; k < filters.size(); ++k)
        filters[k].setCoefficients(sections_[k]);
    std::vector<double> output(input.begin(), input.end());
    for (double& sample : output)
        for (ZBiquad& filter : filters)
            sample = filter.process(sample);
    return output;
}

bool OctaveBandAvailable(double sampleRate, double centreHz)
{
    return centreHz * std::numbers::sqrt2 < 0.45 * sampleRate;
}

ZImpulseReport AnalyseImpulseResponse(const ZAudioData& response)
{
    const double rate = response.sampleRate;
    const std::vector<double> broadband = squaredSum(response, std::nullopt);
    // A silent response has nothing to measure. This is judged before filtering, since the
    // filters' anti-denormal offset leaves a faint transient even in silence.
    const bool silent = std::none_of(broadband.begin(), broadband.end(), [](double e) { return e > 0.0; });

    ZImpulseReport report;
    report.broadband = silent ? ZBandAnalysis{0.0, true, {}, std::nullopt}
                              : analyseEnergy(0.0, broadband, rate, kBlockSeconds);
    for (double centre : kOctaveBandCentres) {
        ZBandAnalysis band{centre, OctaveBandAvailable(rate, centre), {}, std::nullopt};
        if (band.available && !silent)
            band = analyseEnergy(centre, squaredSum(response, ZOctaveBandFilter(rate, centre)), rate,
                                 blockSecondsFor(centre));
        report.bands.push_back(band);
    }
    return report;
}

std::string FormatImpulseReport(const ZImpulseReport& report)
{
    char header[96];
    std::snprintf(header, sizeof header, "%-10s %10s  %-6s %16s\n", "Band", "Decay (s)", "Method", "Early/late (dB)");
    std::string text = header;
    for (const ZBandAnalysis& band : report.bands)
        text += formatLine(band);
    return text + formatLine(report.broadband);
}

ZLevelEnvelope MeasureLevelEnvelope(const ZAudioData& response, double stepSeconds)
{
    ZLevelEnvelope envelope{stepSeconds, {}};
    const std::vector<double> energy = squaredSum(response, std::nullopt);
    if (std::none_of(energy.begin(), energy.end(), [](double e) { return e > 0.0; }))
        return envelope;
    const size_t step = std::max<size_t>(1, static_cast<size_t>(std::lround(stepSeconds * response.sampleRate)));
    envelope.levelsDb = blockLevelsDb(energy, step);
    const double loudest = *std::max_element(envelope.levelsDb.begin(), envelope.levelsDb.end());
    for (double& level : envelope.levelsDb)
        level -= loudest;
    return envelope;
}

} // namespace halvern
