#pragma once

// A logarithmic taper over a value from minimum to maximum (both above 0): equal knob
// travel multiplies the value by equal factors, as frequencies and Q want.

#include "core/z_value_scale.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace halvern {

class ZValueScaleLog : public ZValueScaleSqr {
public:
    ZValueScaleLog(std::unique_ptr<ZValue> inner, double minimum, double maximum)
        : ZValueScaleSqr(std::move(inner)), ratio_(maximum / minimum)
    {
    }

protected:
    double toInner(double outer) const override
    {
        return (std::pow(ratio_, outer) - 1.0) / (ratio_ - 1.0);
    }
    double fromInner(double inner) const override
    {
        return std::log1p(std::max(inner, 0.0) * (ratio_ - 1.0)) / std::log(ratio_);
    }

private:
    double ratio_; // maximum / minimum
};

} // namespace halvern
