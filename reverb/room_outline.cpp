#include "reverb/room_outline.h"

#include "core/z_format.h"
#include "state/zml_element.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace halvern {
namespace {

double coordinate(const ZMLElement& point, const char* name)
{
    const std::string text = point.getAttribute(name);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return 0.0;
    return std::clamp(value, 0.0, 1.0);
}

} // namespace

std::vector<ZRoomOutline::Point> ZRoomOutline::Rectangle() { return {{0, 0}, {1, 0}, {1, 1}, {0, 1}}; }

std::vector<ZRoomOutline::Point> ZRoomOutline::Read(const ZMLElement* graph)
{
    std::vector<Point> points;
    if (graph != nullptr)
        for (const auto& child : graph->children())
            if (child->name() == "Point" && points.size() < kMaxPoints)
                points.push_back({coordinate(*child, "X"), coordinate(*child, "Y")});
    return points.size() >= kMinPoints ? points : Rectangle();
}

void ZRoomOutline::Write(const std::vector<Point>& points, ZMLElement& graph)
{
    graph.clear();
    if (points == Rectangle())
        return;
    for (size_t i = 0; i < std::min(points.size(), kMaxPoints); ++i) {
        ZMLElement& point = graph.addChild("Point");
        point.setAttribute("X", ZFormatFixed(std::clamp(points[i].x, 0.0, 1.0), 6));
        point.setAttribute("Y", ZFormatFixed(std::clamp(points[i].y, 0.0, 1.0), 6));
    }
}

} // namespace halvern
