#pragma once

// A transfer curve from an incoming value X to a result Y, both in [0, 1]: points joined
// by segments whose curve parameter bends them (1.0 is a straight line, above 1 the
// segment starts slowly, below 1 it starts fast). Each segment is an ItemExponencial of
// the envelope computer with the curve parameter as its curvature. Fixed capacity, so
// that copying and evaluating never allocate.

#include "modulation/envelope_computer.h"

namespace halvern {

class ZTransferCurve {
public:
    static constexpr int kMaxPoints = ZEnvelopeComputer::kMaxPoints;

    struct Point {
        double x = 0.0;
        double y = 0.0;
        double curve = 1.0; // shape of the segment that ends at this point
        bool operator==(const Point&) const = default;
    };

    // The identity: (0, 0) to (1, 1), straight.
    ZTransferCurve();

    // Adds a point, keeping the points ordered by x; false when the curve is full.
    bool addPoint(Point point);
    void clear() { envelope_.clear(); }
    int pointCount() const { return envelope_.pointCount(); }
    Point point(int index) const;
    const ZEnvelopeComputer& envelope() const { return envelope_; }

    // Y for X; outside the points the curve continues flat; without points, X itself.
    double evaluate(double x) const { return pointCount() == 0 ? x : envelope_.evaluate(x); }

    bool operator==(const ZTransferCurve& other) const;

private:
    ZEnvelopeComputer envelope_;
};

} // namespace halvern
