#pragma once

// The saturation of the reverberation: an odd shaping curve with a linear part of gain
// k below a knee t and a shaping function g above it, blended with the unshaped signal
// together with an even-order term.

#include "reverb/reverb_enums.h"

#include <cstdint>

namespace halvern {

class ZSaturationShaper {
public:
    // Selects the curve; indices outside the modes are clamped to the nearest one.
    void setMode(int32_t mode);
    ZSaturationMode mode() const { return mode_; }

    double knee() const { return knee_; }
    double gain() const { return gain_; }

    // g(u) for the distance u >= 0 above the knee; g(0) = 0.
    double shapeAboveKnee(double u) const;

    // The shaped value y of one sample: k * x below the knee, the curve above it and
    // exactly +-1 from |x| = 1 on. Zero counts as positive.
    double shape(double x) const;

    // Replaces each sample x by ((y - x)^2 + y) * s + (1 - s) * x in place.
    void process(float* left, float* right, int n, double s) const;

private:
    void processChannel(float* samples, int n, double s) const;

    ZSaturationMode mode_ = ZSaturationMode::Soft1;
    double knee_ = 0.0;
    double kneeWidth_ = 0.0; // the clippers' rounded knee: from the knee to the flat top
    double gain_ = 1.0;
};

} // namespace halvern
