#pragma once

// ZClickCounter: tells double clicks from single ones by the window system's timestamps.
// A press is the second of a double click when the same button was pressed before it
// within kMaxInterval milliseconds and kMaxDistance pixels; the press after a double
// click starts counting again.

#include <cstdint>

namespace halvern {

class ZClickCounter {
public:
    static constexpr uint32_t kMaxInterval = 400; // milliseconds
    static constexpr double kMaxDistance = 4.0;    // device pixels, each axis

    // The click count of a press (1 or 2). Timestamps are the server's 32-bit
    // milliseconds, which wrap around.
    int Press(int button, uint32_t time, double x, double y);

private:
    int button_ = 0;
    uint32_t time_ = 0;
    double x_ = 0.0;
    double y_ = 0.0;
    int count_ = 0;
};

} // namespace halvern
