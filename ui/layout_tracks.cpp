#include "ui/layout_tracks.h"

#include <algorithm>
#include <cmath>

namespace halvern {

double FixedLength(double spacing, const std::vector<ZTrack>& tracks)
{
    double length = tracks.empty() ? 0.0 : spacing * static_cast<double>(tracks.size() - 1);
    for (const ZTrack& track : tracks)
        length += track.fixed > 0.0 ? track.fixed : 0.0;
    return length;
}

std::vector<ZSpan> DistributeTracks(double start, double length, double spacing, const std::vector<ZTrack>& tracks)
{
    double weights = 0.0;
    for (const ZTrack& track : tracks)
        weights += track.fixed > 0.0 ? 0.0 : std::max(0.0, track.stretch);
    const double rest = std::max(0.0, length - FixedLength(spacing, tracks));

    std::vector<ZSpan> spans;
    spans.reserve(tracks.size());
    double position = start;
    for (const ZTrack& track : tracks) {
        const double size = track.fixed > 0.0 ? track.fixed
                            : weights > 0.0   ? rest * std::max(0.0, track.stretch) / weights
                                              : 0.0;
        const double first = std::round(position), last = std::round(position + size);
        spans.push_back({first, last - first});
        position += size + spacing;
    }
    return spans;
}

} // namespace halvern
