#include "reverb/room_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace halvern {
namespace {

ZRoomGeometry geometryOf(const ZRoomInputs& inputs)
{
    ZPrimeTable primes;
    return ComputeRoomGeometry(inputs, primes);
}

TEST(RoomModel, DefaultRoomAtFortyEightKilohertz)
{
    // L = 0.04 s, W = 0.04 s; the source straight ahead of the microphone, half a room
    // length away: X = 0, Y = 0.02 s.
    const ZRoomGeometry g = geometryOf({});
    EXPECT_DOUBLE_EQ(g.roomWidth, 0.04);
    EXPECT_DOUBLE_EQ(g.pan, 0.0);
    EXPECT_DOUBLE_EQ(g.distance, 0.02);
    // Both side walls at sqrt(0.04^2 + 0.02^2) = 0.0447214 s: the difference is forced
    // to +0.01 x Width, so line 1 = (0.0447214 + 0.01) x 48000 and line 2 = (... - 0.01).
    EXPECT_DOUBLE_EQ(g.difference, 0.01);
    EXPECT_EQ(g.predelayLeft, 2626);
    EXPECT_EQ(g.predelayRight, 1666);
    // t = 0.025 / 0.045; base = (1 - 0.4 t) x 1920 = 1493.33; step = base / 3; offset =
    // min(960, 746.67); wanted lengths 2240, 746.67, 1244.4, 2737.8, 3086.2, 1592.9,
    // 1836.8, 3330.1 become the first free primes at or above them.
    EXPECT_NEAR(g.stereoOffset, 746.6667, 1e-3);
    EXPECT_EQ(g.diffusersLeft, (std::array<int, 4>{2243, 1249, 3089, 1847}));
    EXPECT_EQ(g.diffusersRight, (std::array<int, 4>{751, 2741, 1597, 3331}));
    EXPECT_DOUBLE_EQ(g.diffuserGain, 0.6);
    EXPECT_DOUBLE_EQ(g.earlyGainLeft, 0.7);
}

TEST(RoomModel, EdgesOfTheGeometry)
{
    ZRoomInputs coincident;
    coincident.sourceX = coincident.microphoneX = 0.3;
    coincident.sourceY = coincident.microphoneY = 0.3;
    const ZRoomGeometry c = geometryOf(coincident);
    EXPECT_DOUBLE_EQ(c.pan, 0.0); // dy = 0.001 keeps the direction straight ahead
    EXPECT_GE(c.predelayRight, 480);
    EXPECT_GE(c.predelayLeft, 480);

    ZRoomInputs leftSource;
    leftSource.sourceX = 0.0; // smaller X than the microphone
    leftSource.sourceY = 1.0;
    EXPECT_DOUBLE_EQ(geometryOf(leftSource).pan, -1.0);

    ZRoomInputs narrow;
    narrow.width = 0.0;
    const ZRoomGeometry n = geometryOf(narrow);
    EXPECT_DOUBLE_EQ(n.roomWidth, 0.004);
    EXPECT_EQ(n.stereoOffset, 0.0);
    // Equal wanted lengths: the right ear takes the next free prime.
    for (size_t k = 0; k < 4; ++k)
        EXPECT_GT(n.diffusersRight[k], n.diffusersLeft[k]);
    EXPECT_EQ(n.difference, 0.0); // 0.01 x Width is 0 as well

    ZRoomInputs manual;
    manual.predelay = 0.1;
    const ZRoomGeometry m = geometryOf(manual);
    EXPECT_EQ(m.predelayRight, 4800);                                 // the Predelay itself
    EXPECT_EQ(m.predelayLeft, static_cast<int>((0.1 + 0.02) * 48000)); // plus twice the difference
    manual.predelay = 0.0;
    EXPECT_EQ(geometryOf(manual).predelayRight, 480); // never below 0.01 s

    ZRoomInputs small;
    small.size = 0.00333;
    const ZRoomGeometry s = geometryOf(small);
    // t = 0: base = W fs = 159.84, step = 79.92, offset = min(960, 79.92).
    EXPECT_NEAR(s.stereoOffset, 79.92, 1e-9);
    EXPECT_EQ(s.diffusersLeft[0], 239);  // trunc(239.76) is prime
    EXPECT_EQ(s.diffusersRight[0], 79);  // trunc(79.92) is prime
}

} // namespace
} // namespace halvern
