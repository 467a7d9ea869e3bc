#pragma once

// N independent second-order sections run side by side, one sample each per call: the
// same arithmetic as ZBiquad, laid out so that the compiler runs the sections in
// parallel vector lanes.

#include "core/biquad.h"

#include <array>
#include <cstddef>

namespace halvern {

template <std::size_t N>
class ZBiquadBank {
public:
    void setCoefficients(std::size_t index, const ZBiquad::Coefficients& c)
    {
        b0_[index] = c.b0;
        b1_[index] = c.b1;
        b2_[index] = c.b2;
        a1_[index] = c.a1;
        a2_[index] = c.a2;
    }

    void reset()
    {
        s1_.fill(0.0);
        s2_.fill(0.0);
    }

    // Filters x in place; the tiny offset on each input keeps the states out of the
    // denormal range in silence.
    void process(std::array<double, N>& x)
    {
        for (std::size_t i = 0; i < N; ++i) {
            const double in = x[i] + 1e-15;
            const double y = b0_[i] * in + s1_[i];
            s1_[i] = b1_[i] * in - a1_[i] * y + s2_[i];
            s2_[i] = b2_[i] * in - a2_[i] * y;
            x[i] = y;
        }
    }

private:
    alignas(32) std::array<double, N> b0_{}, b1_{}, b2_{}, a1_{}, a2_{}, s1_{}, s2_{};
};

} // namespace halvern
