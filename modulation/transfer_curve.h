#pragma once

// A transfer curve from an incoming value X to a result Y, both in [0, 1]: points joined
// by segments whose curve parameter bends them (1.0 is a straight line, above 1 the
// segment starts slowly, below 1 it starts fast). Fixed capacity, so that copying and
// evaluating never allocate.

#include <array>
#include <cstddef>

namespace halvern {

class ZTransferCurve {
public:
    static constexpr int kMaxPoints = 32;

    struct Point {
        double x = 0.0;
        double y = 0.0;
        double curve = 1.0; // shape of the segment that ends at this point
    };

    // The identity: (0, 0) to (1, 1), straight.
    ZTransferCurve();

    // Adds a point, keeping the points ordered by x; false when the curve is full.
    bool addPoint(Point point);
    void clear();
    int pointCount() const { return count_; }
    const Point& point(int index) const { return points_[static_cast<std::size_t>(index)]; }

    // Y for X; outside the points the curve continues flat.
    double evaluate(double x) const;

private:
    std::array<Point, kMaxPoints> points_{};
    int count_ = 0;
};

} // namespace halvern
