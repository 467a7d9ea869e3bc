#pragma once

// The two charts of the decay display, drawn from measurements: the level over time and
// the decay time per octave band. Each takes one or more series (the reverb's own and a
// reference), each in its own colour.

#include "analysis/decay_measurement.h"
#include "ui/canvas.h"
#include "ui/theme.h"

#include <span>
#include <string>

namespace halvern {

struct ZDecaySeries {
    const ZDecayMeasurement* measurement;
    ZColor color;
};

// The floor of the level chart.
inline constexpr double kDecayChartFloorDb = -100.0;

// The level from 0 to -100 dB over a time axis that reaches the end of the longest decay,
// with a line where each series' broadband decay time has passed since its direct sound.
void PaintLevelChart(ZCanvas& canvas, const ZTheme& theme, const ZRect& area, std::span<const ZDecaySeries> series);

// A group of bars per octave band and one for the whole band, a bar per series, with
// each bar's seconds above it and the method that measured it below.
void PaintDecayBars(ZCanvas& canvas, const ZTheme& theme, const ZRect& area, std::span<const ZDecaySeries> series);

// "1.07 s", or "–" when the decay could not be measured.
std::string DecayText(const ZDecayTime& decay);

} // namespace halvern
