#include "modulation/envelope_computer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {
namespace {

double power(double t, int order)
{
    double result = t;
    for (int i = 1; i < order; ++i)
        result *= t;
    return result;
}

// Straight for bend 0, t^order for 1, 1 - (1 - t)^order for -1.
double polynomial(double t, double bend, int order)
{
    bend = std::clamp(bend, -1.0, 1.0);
    if (bend >= 0.0)
        return t + bend * (power(t, order) - t);
    return t - bend * (1.0 - power(1.0 - t, order) - t);
}

double exponential(double t, double curvature)
{
    return curvature == 1.0 || curvature <= 0.0 ? t : std::pow(t, curvature);
}

double bezier(double t, double controlX, double controlY)
{
    const double cx = std::clamp(controlX, 0.0, 1.0);
    const double u = t / (cx + std::sqrt(cx * cx + (1.0 - 2.0 * cx) * t));
    return 2.0 * u * (1.0 - u) * controlY + u * u;
}

double twoHalves(double t, double curvature)
{
    if (t < 0.5)
        return 0.5 * exponential(2.0 * t, curvature);
    return 1.0 - 0.5 * exponential(2.0 - 2.0 * t, curvature);
}

int countOf(double parameter)
{
    return static_cast<int>(std::clamp(std::round(parameter), 1.0, static_cast<double>(ZEnvelopeComputer::kMaxCount)));
}

double fraction(double value)
{
    return value - std::floor(value);
}

double triangles(double t, int n)
{
    const double ramps = (2.0 * n - 1.0) * t;
    const double k = std::floor(ramps);
    const double f = ramps - k;
    return std::fmod(k, 2.0) == 0.0 ? f : 1.0 - f;
}

} // namespace

double ZEnvelopeComputer::Shape(const Segment& segment, double t)
{
    if (t <= 0.0)
        return 0.0;
    if (t >= 1.0)
        return segment.item == ItemConstant ? 0.0 : 1.0;
    const double p = segment.parameter;
    switch (segment.item) {
    case ItemConstant:
        return 0.0;
    case ItemLinear:
        return t;
    case ItemExponencial:
        return exponential(t, p);
    case ItemQuadratic:
        return polynomial(t, p, 2);
    case ItemCubic:
        return polynomial(t, p, 3);
    case ItemFourthOrder:
        return polynomial(t, p, 4);
    case ItemBezier:
        return bezier(t, p, segment.parameter2);
    case ItemDouble:
        return twoHalves(t, p);
    case ItemSines:
        return 0.5 * (1.0 - std::cos((2.0 * countOf(p) - 1.0) * std::numbers::pi * t));
    case ItemSaw:
        return fraction(countOf(p) * t);
    case ItemTriangles:
        return triangles(t, countOf(p));
    case ItemStairs: {
        const int n = countOf(p);
        return std::min(std::floor((n + 1) * t) / n, 1.0);
    }
    case ItemPulses:
        return fraction(countOf(p) * t) >= 1.0 - std::clamp(segment.parameter2, 0.0, 1.0) ? 1.0 : 0.0;
    }
    return t;
}

bool ZEnvelopeComputer::addPoint(const Point& point)
{
    if (count_ >= kMaxPoints)
        return false;
    auto end = points_.begin() + count_;
    auto at = std::upper_bound(points_.begin(), end, point.x, [](double x, const Point& p) { return x < p.x; });
    std::move_backward(at, end, end + 1);
    *at = point;
    ++count_;
    return true;
}

double ZEnvelopeComputer::evaluate(double x) const
{
    if (count_ == 0)
        return 0.0;
    if (x <= points_[0].x)
        return points_[0].y;
    for (int i = 1; i < count_; ++i) {
        const Point& from = points_[static_cast<std::size_t>(i - 1)];
        const Point& to = points_[static_cast<std::size_t>(i)];
        if (x > to.x)
            continue;
        const double width = to.x - from.x;
        const double t = width > 0.0 ? (x - from.x) / width : 1.0;
        return SegmentValue(to.segment, from.y, to.y, t);
    }
    return points_[static_cast<std::size_t>(count_ - 1)].y;
}

} // namespace halvern
