#pragma once

// ABCD morphing: an XY pad over slots A, B, C and D. A table holds, per morphable
// parameter, its normalised value in each of the four slots; every move of the pad
// sets each parameter to the bilinear blend of its four values at the pad's position.
// Nothing here locks or allocates after the table is built: the caller excludes
// processing.

#include "core/parameter_registry.h"
#include "core/z_value_number.h"

#include <array>
#include <vector>

namespace halvern {

class ZABCDMorph {
public:
    static constexpr int kCorners = 4; // slots A, B, C, D
    // A parameter is set only when its blend differs from its value by more than this.
    static constexpr double kMinimalChange = 0.00001;

    // One record per parameter, in the given order, every corner at its current value.
    void setParameters(const std::vector<int>& parameters, const ZParameterRegistry& registry);
    // The corner (0 for slot A to 3 for slot D) takes every parameter's current value.
    void capture(int corner, const ZParameterRegistry& registry);

    // The pad's position as two values from 0 to 1, u (index 0) first.
    ZValue& axis(int index) { return index == 0 ? uValue_ : vValue_; }
    // Blends at the pad's position, whether or not it moved (a move to where the pad
    // stands sets the values too), and marks every parameter it sets for the host.
    // Returns how many parameters it set.
    int follow(ZParameterRegistry& registry);

private:
    struct Record {
        int parameter = 0;
        std::array<double, kCorners> values{}; // normalised, in slots A, B, C, D
    };

    // A at (0, 0), B at (1, 0), C at (0, 1), D at (1, 1).
    static double Blend(const std::array<double, kCorners>& values, double u, double v);

    std::vector<Record> table_;
    double u_ = 0.0;
    double v_ = 0.0;
    ZValueDouble uValue_{&u_, 0.0, 1.0, 0.0, 0.01, "{0;.3}"};
    ZValueDouble vValue_{&v_, 0.0, 1.0, 0.0, 0.01, "{0;.3}"};
};

} // namespace halvern
