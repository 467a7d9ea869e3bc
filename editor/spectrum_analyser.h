#pragma once

// ZSpectrumAnalyser: the spectrum of the newest stretch of a signal, for display. The
// newest `size` samples are windowed (Hann) and transformed; bin levels are in dB where
// a full-scale sine reads 0 dB. The shown levels rise at once and fall slowly from frame
// to frame, so that a passing peak stays visible for a moment.

#include "editor/real_fft.h"

#include <complex>
#include <cstddef>
#include <vector>

namespace halvern {

class ZSpectrumAnalyser {
public:
    static constexpr size_t kDefaultSize = 4096;
    static constexpr double kFloorDb = -120.0;    // silence and anything below
    static constexpr double kFallDbPerFrame = 0.6; // about 36 dB a second at 60 frames

    struct Peak {
        double frequency = 0.0; // Hz
        double levelDb = kFloorDb;
    };

    explicit ZSpectrumAnalyser(size_t size = kDefaultSize);

    size_t size() const { return fft_.size(); }
    double sampleRate() const { return sampleRate_; }

    // Appends samples; only the newest size samples are kept.
    void push(const float* samples, size_t count);
    // Transforms the newest samples taken at sampleRate and folds them into the shown levels.
    void analyse(double sampleRate);
    // Back to silence.
    void clear();

    // The shown level over a band of frequencies: the loudest bin inside it, or between
    // the two bins around it when it holds none.
    double levelDb(double lowHertz, double highHertz) const;
    // The loudest bin of the newest frame, its frequency and level refined between bins.
    Peak peak() const;

private:
    double binLevel(const std::vector<double>& levels, double bin) const;

    ZRealFFT fft_;
    std::vector<double> window_;
    double windowGain_;              // turns a bin's magnitude into a sine's amplitude
    std::vector<float> history_;     // a ring of the newest samples
    size_t next_ = 0;                // where the next sample goes in history_
    std::vector<double> frame_;
    std::vector<std::complex<double>> bins_;
    std::vector<double> frameDb_;    // the newest frame's levels
    std::vector<double> shownDb_;    // smoothed across frames
    double sampleRate_ = 0.0;
};

} // namespace halvern
