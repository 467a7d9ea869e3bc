#pragma once

// The room's outline as the position editor draws and edits it: a polygon on the floor
// plan's unit square (x along the width, y along the length), stored in the state's
// "graph" node as <Point X=".." Y=".."/> children. The sound uses the room's size and
// width; the outline shows the user's room and should stay roughly rectangular.

#include "state/zml_fwd.h"

#include <cstddef>

#include <vector>

namespace halvern {

struct ZRoomOutline {
    struct Point {
        double x = 0.0;
        double y = 0.0;
        bool operator==(const Point&) const = default;
    };
    static constexpr size_t kMinPoints = 3;
    static constexpr size_t kMaxPoints = 64;

    // The floor plan's rectangle, corner by corner.
    static std::vector<Point> Rectangle();
    // The points of a "graph" node, each limited to the unit square; the rectangle when
    // the node is absent, empty or holds fewer than three points (extra points past the
    // 64th are dropped).
    static std::vector<Point> Read(const ZMLElement* graph);
    // Writes the points into a "graph" node, replacing what it held; nothing at all for
    // the rectangle, so a default outline leaves an empty node.
    static void Write(const std::vector<Point>& points, ZMLElement& graph);
};

} // namespace halvern
