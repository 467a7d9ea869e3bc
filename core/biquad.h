#pragma once

// A second-order filter section: the audio-EQ cookbook responses, normalised by a0,
// run in transposed direct form II with double state.

namespace halvern {

class ZBiquad {
public:
    enum class Type { LowPass, HighPass, BandPass, Peak, LowShelf, HighShelf, AllPass };

    struct Coefficients {
        double b0 = 1.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
        bool operator==(const Coefficients&) const = default;
    };

    // Coefficients for a response at `frequency` Hz with quality q; gainDb is used by
    // Peak and the shelves only. The band-pass has 0 dB gain at its centre. The
    // frequency is kept inside (0, Nyquist) and q above zero.
    static Coefficients design(Type type, double sampleRate, double frequency, double q, double gainDb = 0.0);
    // |H| of a section at `frequency` Hz.
    static double magnitude(const Coefficients& c, double sampleRate, double frequency);

    void setCoefficients(const Coefficients& coefficients) { c_ = coefficients; }
    const Coefficients& coefficients() const { return c_; }
    void set(Type type, double sampleRate, double frequency, double q, double gainDb = 0.0)
    {
        c_ = design(type, sampleRate, frequency, q, gainDb);
    }

    // The tiny offset on the input keeps the states out of the denormal range in silence.
    double process(double x)
    {
        x += 1e-15;
        const double y = c_.b0 * x + s1_;
        s1_ = c_.b1 * x - c_.a1 * y + s2_;
        s2_ = c_.b2 * x - c_.a2 * y;
        return y;
    }

    void reset() { s1_ = s2_ = 0.0; }

private:
    Coefficients c_;
    double s1_ = 0.0;
    double s2_ = 0.0;
};

} // namespace halvern
