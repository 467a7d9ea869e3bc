#pragma once

// Conversion between the numeric types of value objects that saturates at the target
// type's limits instead of overflowing, so that a far out-of-range number still ends
// at the nearer end of a range after clamping.

#include <limits>
#include <type_traits>

namespace halvern {

template <class To, class From>
To ZSaturatingCast(From value)
{
    if constexpr (std::is_same_v<To, From>) {
        return value;
    } else {
        const double number = static_cast<double>(value);
        constexpr double lowest = static_cast<double>(std::numeric_limits<To>::lowest());
        constexpr double highest = static_cast<double>(std::numeric_limits<To>::max());
        if constexpr (std::is_integral_v<To>) {
            if (!(number > lowest)) // also catches NaN
                return std::numeric_limits<To>::lowest();
            if (number >= highest)
                return std::numeric_limits<To>::max();
        } else {
            if (number < lowest)
                return std::numeric_limits<To>::lowest();
            if (number > highest)
                return std::numeric_limits<To>::max();
        }
        return static_cast<To>(number);
    }
}

} // namespace halvern
