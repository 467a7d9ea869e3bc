#pragma once

// Shares a length among tracks (the children of a box, the columns or rows of a grid)
// with spacing between them: fixed tracks take their size, the rest is divided among the
// stretching tracks by weight. Edges are rounded to whole logical units, so neighbours
// never overlap and sit exactly the spacing apart (give or take the rounding).

#include <vector>

namespace halvern {

struct ZTrack {
    double fixed = 0.0;   // > 0: this size
    double stretch = 0.0; // otherwise: a share of what is left, by weight
};

struct ZSpan {
    double start = 0.0;
    double size = 0.0;
};

std::vector<ZSpan> DistributeTracks(double start, double length, double spacing, const std::vector<ZTrack>& tracks);

// The length the tracks need with spacing between them (stretching tracks count as 0).
double FixedLength(double spacing, const std::vector<ZTrack>& tracks);

} // namespace halvern
