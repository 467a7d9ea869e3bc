#include "host/host_time.h"

#include <cmath>

namespace halvern {

double RoundedBarStart(double barStart, int denominator)
{
    int u = denominator / 4;
    if (u <= 0)
        u = 1;
    const double scaled = u * barStart;
    double rounded = std::floor(scaled);
    if (scaled - rounded >= 0.5)
        rounded += 1.0;
    return rounded / u;
}

} // namespace halvern
