#pragma once

// The gains with which the early reflections, the late reverberation and the dry signal
// are mixed, and the widening weights.

#include <cmath>

namespace halvern {

struct ZReverbMix {
    double dry = 0.0;
    double early = 0.0;
    double late = 0.0;
    double direct = 1.0; // widening: own channel
    double cross = 0.0;  // widening: the other channel
    double pan = 0.0;    // of the dry signal
};

// d = "Dry/wet", e = "Early/late", w = "Widening", pan from the room model. The loudness
// compensation m = 1.5 - |d - 0.5| makes the middle of the dry/wet range louder: 0.75
// for dry and wet at d = 0.5, dry 1 at d = 0, wet 1 at d = 1.
inline ZReverbMix ComputeReverbMix(double d, double e, double w, double pan)
{
    const double m = 1.5 - std::fabs(d - 0.5);
    ZReverbMix mix;
    mix.dry = (1.0 - d) * m;
    mix.early = (1.0 - e) * d * m;
    mix.late = e * d * m;
    mix.direct = (w + 2.0) * 0.5;
    mix.cross = (1.0 - (w + 1.0)) * 0.5;
    mix.pan = pan;
    return mix;
}

} // namespace halvern
