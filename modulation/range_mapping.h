#pragma once

// The one rule by which every modulator (LFO, MultiParameter, MIDI controller) turns its
// output m in [-1, 1] into a normalised value for a target parameter.

#include "core/modulation_enums.h"
#include "modulation/transfer_curve.h"

#include <cstdint>

namespace halvern {

// One controlled parameter of a modulator, with the range the modulator moves it in.
struct ZModulatorTarget {
    int32_t parameter = 0;        // registry index of the controlled parameter
    bool enabled = true;          // "ParameterEnabled"
    double value = 0.5;           // "Value": centre, or the start in "Interval" mode
    double maxValue = 1.0;        // "MaxValue": the end in "Interval" mode
    double range = 1.0;           // "Range", shown as "Depth"
    ZRangeMode rangeMode = ZRangeMode::UpAndDown; // "FullRange"
    bool invert = false;          // "Invert"
    bool useFirstRange = false;   // "UseFirstRange"
    bool shapeEnabled = false;    // "ShapeEnabled"
    ZTransferCurve shape;         // "Shape": result X -> Y when enabled
};

// Maps m by the range mode: v = Value, w = MaxValue, d = Depth, all normalised.
double MapModulatorOutput(double m, double v, double w, double d, ZRangeMode mode, bool invert);

// The normalised value a target gets for modulator output m. A target that uses the
// first target's range takes Value, MaxValue, Depth and range mode from `first`; its own
// Invert and shape still apply.
double TargetValueFor(const ZModulatorTarget& target, const ZModulatorTarget& first, double m);

} // namespace halvern
