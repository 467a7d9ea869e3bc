#include "modulation/transfer_curve.h"

#include <algorithm>
#include <cmath>

namespace halvern {

ZTransferCurve::ZTransferCurve()
{
    addPoint({0.0, 0.0, 1.0});
    addPoint({1.0, 1.0, 1.0});
}

bool ZTransferCurve::addPoint(Point point)
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

void ZTransferCurve::clear()
{
    count_ = 0;
}

double ZTransferCurve::evaluate(double x) const
{
    if (count_ == 0)
        return x;
    if (x <= points_[0].x)
        return points_[0].y;
    for (int i = 1; i < count_; ++i) {
        const Point& from = points_[static_cast<size_t>(i - 1)];
        const Point& to = points_[static_cast<size_t>(i)];
        if (x > to.x)
            continue;
        const double width = to.x - from.x;
        const double t = width > 0.0 ? (x - from.x) / width : 1.0;
        const double bent = to.curve == 1.0 || to.curve <= 0.0 ? t : std::pow(t, to.curve);
        return from.y + (to.y - from.y) * bent;
    }
    return points_[static_cast<size_t>(count_ - 1)].y;
}

} // namespace halvern
