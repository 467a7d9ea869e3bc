#include "core/z_value_scale.h"

#include <algorithm>

namespace halvern {

bool ZValueScaleSqr::stepBy(int count)
{
    return setNormalized(std::clamp(getNormalized() + count * 0.001, 0.0, 1.0));
}

bool ZValueScaleSqr::normalizedFromDisplayText(std::string_view text, double& normalized) const
{
    double innerPosition = 0;
    if (!inner_->normalizedFromDisplayText(text, innerPosition))
        return false;
    normalized = fromInner(innerPosition);
    return true;
}

} // namespace halvern
