#include "reverb/room_outline.h"

#include "state/zml_element.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

TEST(RoomOutline, PointsRoundTripAndDamagedNodesGiveTheRectangle)
{
    ZMLElement graph("graph");
    ZRoomOutline::Write(ZRoomOutline::Rectangle(), graph);
    EXPECT_TRUE(graph.children().empty()); // the default outline leaves the node empty
    EXPECT_EQ(ZRoomOutline::Read(&graph), ZRoomOutline::Rectangle());
    EXPECT_EQ(ZRoomOutline::Read(nullptr), ZRoomOutline::Rectangle());

    const std::vector<ZRoomOutline::Point> pentagon = {{0, 0}, {0.5, 0.1}, {1, 0}, {1, 1}, {0, 1}};
    ZRoomOutline::Write(pentagon, graph);
    EXPECT_EQ(ZRoomOutline::Read(&graph), pentagon);

    // Out-of-range and unreadable coordinates are limited to the plan; two points are no
    // outline; points past the 64th are dropped.
    ZMLElement damaged("graph");
    for (const auto& [x, y] : {std::pair{"2", "-1"}, {"nan", "0.5"}, {"0.25x", "1"}}) {
        ZMLElement& point = damaged.addChild("Point");
        point.setAttribute("X", x);
        point.setAttribute("Y", y);
    }
    const std::vector<ZRoomOutline::Point> limited = {{1, 0}, {0, 0.5}, {0, 1}};
    EXPECT_EQ(ZRoomOutline::Read(&damaged), limited);
    damaged.removeChild(*damaged.children().back());
    EXPECT_EQ(ZRoomOutline::Read(&damaged), ZRoomOutline::Rectangle());
    ZMLElement many("graph");
    for (int i = 0; i < 100; ++i)
        many.addChild("Point").setAttribute("X", "0.5");
    EXPECT_EQ(ZRoomOutline::Read(&many).size(), ZRoomOutline::kMaxPoints);
}

} // namespace
} // namespace halvern
