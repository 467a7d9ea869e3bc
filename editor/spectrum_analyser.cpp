#include "editor/spectrum_analyser.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {

ZSpectrumAnalyser::ZSpectrumAnalyser(size_t size)
    : fft_(size), window_(size), history_(size, 0.0f), frame_(size), frameDb_(size / 2 + 1, kFloorDb),
      shownDb_(size / 2 + 1, kFloorDb)
{
    double sum = 0.0;
    for (size_t i = 0; i < size; ++i) {
        window_[i] = 0.5 * (1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(size)));
        sum += window_[i];
    }
    // A sine of amplitude A gives a bin of magnitude A/2 times the window's sum.
    windowGain_ = 2.0 / sum;
}

void ZSpectrumAnalyser::push(const float* samples, size_t count)
{
    const size_t n = history_.size();
    if (count > n) {
        samples += count - n;
        count = n;
    }
    for (size_t i = 0; i < count; ++i) {
        history_[next_] = samples[i];
        next_ = (next_ + 1) % n;
    }
}

void ZSpectrumAnalyser::analyse(double sampleRate)
{
    sampleRate_ = sampleRate;
    const size_t n = history_.size();
    for (size_t i = 0; i < n; ++i)
        frame_[i] = history_[(next_ + i) % n] * window_[i];
    fft_.forward(frame_.data(), bins_);
    const double floorGain = std::pow(10.0, kFloorDb / 20.0);
    for (size_t k = 0; k < bins_.size(); ++k) {
        const double level = 20.0 * std::log10(std::max(std::abs(bins_[k]) * windowGain_, floorGain));
        frameDb_[k] = level;
        shownDb_[k] = std::max(level, shownDb_[k] - kFallDbPerFrame);
    }
}

void ZSpectrumAnalyser::clear()
{
    std::fill(history_.begin(), history_.end(), 0.0f);
    std::fill(frameDb_.begin(), frameDb_.end(), kFloorDb);
    std::fill(shownDb_.begin(), shownDb_.end(), kFloorDb);
}

double ZSpectrumAnalyser::binLevel(const std::vector<double>& levels, double bin) const
{
    const double last = static_cast<double>(levels.size() - 1);
    bin = std::clamp(bin, 0.0, last);
    const auto below = static_cast<size_t>(bin);
    const size_t above = std::min(below + 1, levels.size() - 1);
    const double t = bin - static_cast<double>(below);
    return levels[below] + (levels[above] - levels[below]) * t;
}

double ZSpectrumAnalyser::levelDb(double lowHertz, double highHertz) const
{
    if (sampleRate_ <= 0.0)
        return kFloorDb;
    const double binsPerHertz = static_cast<double>(size()) / sampleRate_;
    const double last = static_cast<double>(shownDb_.size() - 1);
    const double low = std::clamp(lowHertz * binsPerHertz, 0.0, last);
    const double high = std::clamp(highHertz * binsPerHertz, 0.0, last);
    const auto first = static_cast<size_t>(std::ceil(low));
    const auto end = static_cast<size_t>(std::floor(high));
    if (first > end)
        return binLevel(shownDb_, 0.5 * (low + high));
    return *std::max_element(shownDb_.begin() + static_cast<std::ptrdiff_t>(first),
                             shownDb_.begin() + static_cast<std::ptrdiff_t>(end) + 1);
}

// A parabola through the loudest bin and its neighbours (in dB) finds the top of the
// window's main lobe between them.
ZSpectrumAnalyser::Peak ZSpectrumAnalyser::peak() const
{
    if (sampleRate_ <= 0.0)
        return {};
    const auto loudest = static_cast<size_t>(std::max_element(frameDb_.begin() + 1, frameDb_.end() - 1) -
                                             frameDb_.begin());
    const double a = frameDb_[loudest - 1], b = frameDb_[loudest], c = frameDb_[loudest + 1];
    const double curvature = a - 2.0 * b + c;
    const double offset = curvature < 0.0 ? 0.5 * (a - c) / curvature : 0.0;
    return {(static_cast<double>(loudest) + offset) * sampleRate_ / static_cast<double>(size()),
            b - 0.25 * (a - c) * offset};
}

} // namespace halvern
