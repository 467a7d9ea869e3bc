#include "state/abcd_morph.h"

#include <cmath>

namespace halvern {

void ZABCDMorph::setParameters(const std::vector<int>& parameters, const ZParameterRegistry& registry)
{
    table_.clear();
    for (const int parameter : parameters) {
        Record record;
        record.parameter = parameter;
        record.values.fill(registry.normalized(parameter));
        table_.push_back(record);
    }
}

void ZABCDMorph::capture(int corner, const ZParameterRegistry& registry)
{
    for (Record& record : table_)
        record.values.at(static_cast<size_t>(corner)) = registry.normalized(record.parameter);
}

double ZABCDMorph::Blend(const std::array<double, kCorners>& values, double u, double v)
{
    const double left = (1.0 - v) * values[0] + v * values[2];
    const double right = (1.0 - v) * values[1] + v * values[3];
    return (1.0 - u) * left + u * right;
}

int ZABCDMorph::follow(ZParameterRegistry& registry)
{
    int set = 0;
    for (const Record& record : table_) {
        const double target = Blend(record.values, u_, v_);
        if (std::abs(target - registry.normalized(record.parameter)) <= kMinimalChange)
            continue;
        registry.setNow(record.parameter, target);
        registry.markForHost(record.parameter);
        ++set;
    }
    return set;
}

} // namespace halvern
