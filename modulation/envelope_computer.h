#pragma once

// ZEnvelopeComputer: a curve through points ordered by x, each joined to the one before
// by a segment of some item kind. Graph editors and transfer curves (a modulator target's
// shape, the gate's opening) are evaluated through it. Fixed capacity: copying,
// evaluating and editing never allocate, so the audio thread evaluates it freely.
//
// A segment from (x0, y0) to (x1, y1) is evaluated at t = (x - x0) / (x1 - x0) as
//     y = y0 + (y1 - y0) * s(t)
// with the item's shape s, t limited to [0, 1]. Every shape gives s(0) = 0 and s(1) = 1,
// so the curve is continuous at the points, except ItemConstant, which holds y0 to the
// end. Parameters: p is the segment's `parameter`, q its `parameter2`, n = p rounded
// (at least 1, at most kMaxCount) for the counted items, frac the fractional part:
//
//   ItemConstant     s = 0
//   ItemLinear       s = t
//   ItemExponencial  s = t^p, the curvature p > 0 (1 straight, above 1 starts slowly,
//                    below 1 starts fast); p <= 0 is straight
//   ItemQuadratic    s = t + p (t^2 - t) for p >= 0, s = t - p (1 - (1 - t)^2 - t) for
//                    p < 0: the bend p in [-1, 1] leans from straight toward t^2
//                    (starts slowly) or toward 1 - (1 - t)^2 (starts fast)
//   ItemCubic        the same with the power 3
//   ItemFourthOrder  the same with the power 4
//   ItemBezier       the quadratic Bezier curve (0, 0), (p, q), (1, 1) in the segment's
//                    unit square, p limited to [0, 1]: u = t / (p + sqrt(p^2 + (1 - 2p) t))
//                    solves x(u) = t, then s = 2 u (1 - u) q + u^2; p = q is straight
//   ItemDouble       s = (2t)^p / 2 for t < 1/2, s = 1 - (2 - 2t)^p / 2 from 1/2: two
//                    mirrored power curves meeting at the middle (p > 1 an S, p < 1 the
//                    reverse); p <= 0 is straight
//   ItemSines        s = (1 - cos((2n - 1) pi t)) / 2: reaches the end value n times
//   ItemSaw          s = frac(n t) for t < 1: n rising teeth
//   ItemTriangles    with r = (2n - 1) t: s = frac(r) while floor(r) is even, else
//                    1 - frac(r): 2n - 1 straight ramps, reaching the end value n times
//   ItemStairs       s = min(floor((n + 1) t) / n, 1): n equal rises on n + 1 equal treads
//   ItemPulses       s = 1 where frac(n t) >= 1 - q, else 0: n pulses of width q in
//                    [0, 1] (a share of each period), alternating between the two values

#include <array>
#include <cstdint>

namespace halvern {

class ZEnvelopeComputer {
public:
    static constexpr int kMaxPoints = 32;
    static constexpr int kMaxCount = 64; // sines, teeth, triangles, stairs or pulses

    enum Item : uint8_t {
        ItemConstant,
        ItemLinear,
        ItemExponencial,
        ItemQuadratic,
        ItemCubic,
        ItemFourthOrder,
        ItemBezier,
        ItemDouble,
        ItemSines,
        ItemSaw,
        ItemTriangles,
        ItemStairs,
        ItemPulses,
    };
    static constexpr int kItemCount = ItemPulses + 1;

    struct Segment {
        Item item = ItemLinear;
        double parameter = 1.0;
        double parameter2 = 0.5;
    };

    struct Point {
        double x = 0.0;
        double y = 0.0;
        Segment segment; // the segment that ends at this point (unused on the first)
    };

    // The item's shape s at t (see above).
    static double Shape(const Segment& segment, double t);
    // The value of a segment from y0 to y1 at t.
    static double SegmentValue(const Segment& segment, double y0, double y1, double t)
    {
        return y0 + (y1 - y0) * Shape(segment, t);
    }

    // Adds a point after those with the same or a smaller x; false when the curve is full.
    bool addPoint(const Point& point);
    void clear() { count_ = 0; }
    int pointCount() const { return count_; }
    const Point& point(int index) const { return points_[static_cast<std::size_t>(index)]; }

    // The curve at x: the first segment whose end point is not left of x; flat before
    // the first point and after the last; 0 without points.
    double evaluate(double x) const;

private:
    std::array<Point, kMaxPoints> points_{};
    int count_ = 0;
};

} // namespace halvern
