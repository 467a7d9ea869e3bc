#include "modulation/range_mapping.h"

#include <algorithm>

namespace halvern {

double MapModulatorOutput(double m, double v, double w, double d, ZRangeMode mode, bool invert)
{
    if (invert)
        m = -m;
    const double u = (m + 1.0) * 0.5;
    switch (mode) {
    case ZRangeMode::UpAndDown: {
        const double h = std::min({d * 0.5, v, 1.0 - v});
        return v + m * h;
    }
    case ZRangeMode::FullRange: {
        const double h = d * 0.5;
        const double c = std::max(std::min(v, 1.0 - h), h);
        return c + m * h;
    }
    case ZRangeMode::UpOnly:
        return v + u * std::min(d, 1.0 - v);
    case ZRangeMode::DownOnly:
        // Same orientation of u as "Up only": the highest output gives the lowest value.
        return v - u * std::min(d, v);
    case ZRangeMode::Interval:
        return v + (w - v) * u;
    }
    return v;
}

double TargetValueFor(const ZModulatorTarget& target, const ZModulatorTarget& first, double m)
{
    const ZModulatorTarget& ranged = target.useFirstRange ? first : target;
    const double mapped = MapModulatorOutput(m, ranged.value, ranged.maxValue, ranged.range, ranged.rangeMode, target.invert);
    return target.shapeEnabled ? target.shape.evaluate(mapped) : mapped;
}

} // namespace halvern
