#pragma once

// Stereo channel treatments applied around the effect, by their stored index.

#include <array>
#include <string_view>

namespace halvern {

enum class ZChannelMode : int {
    Stereo = 0,        // both channels through the effect
    Left = 1,          // left through the effect, right dry
    Right = 2,         // right through the effect, left dry
    MidSide = 3,       // the effect sees mid and side instead of left and right
    Side = 4,          // side through the effect, mid dry
    Mid = 5,           // mid through the effect, side dry
    InvertedRight = 6, // the right input is inverted before the effect
    Surround = 7,      // channels chosen by the surround enable mask go through the effect
};

constexpr int kChannelModeCount = 8;

constexpr std::array<std::string_view, kChannelModeCount> kChannelModeNames = {
    "Stereo", "Left", "Right", "Mid/Side", "Side", "Mid", "Inverted right", "Surround"};

// The mode that text names, or gives by its decimal index; false when it does neither.
bool ChannelModeFromText(std::string_view text, ZChannelMode& mode);
std::string_view ChannelModeName(ZChannelMode mode);

// Mid/side conversion of a sample pair: M = (L + R) / 2, S = (L - R) / 2, and back
// L = M + S, R = M - S.
inline void ToMidSide(float& a, float& b)
{
    const float mid = 0.5f * (a + b);
    const float side = 0.5f * (a - b);
    a = mid;
    b = side;
}

inline void FromMidSide(float& a, float& b)
{
    const float left = a + b;
    const float right = a - b;
    a = left;
    b = right;
}

} // namespace halvern
