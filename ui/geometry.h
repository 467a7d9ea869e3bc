#pragma once

// Points and rectangles in logical units (device pixels divided by the scale factor).

#include <algorithm>

namespace halvern {

struct ZPoint {
    double x = 0.0;
    double y = 0.0;
};

struct ZRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    bool empty() const { return width <= 0.0 || height <= 0.0; }
    bool contains(ZPoint p) const { return p.x >= x && p.x < right() && p.y >= y && p.y < bottom(); }
    bool contains(const ZRect& r) const
    {
        return r.x >= x - 1e-9 && r.y >= y - 1e-9 && r.right() <= right() + 1e-9 && r.bottom() <= bottom() + 1e-9;
    }
    bool intersects(const ZRect& r) const
    {
        return x < r.right() && r.x < right() && y < r.bottom() && r.y < bottom();
    }
    ZRect intersection(const ZRect& r) const
    {
        const double l = std::max(x, r.x), t = std::max(y, r.y);
        const double rr = std::min(right(), r.right()), b = std::min(bottom(), r.bottom());
        return rr > l && b > t ? ZRect{l, t, rr - l, b - t} : ZRect{};
    }
    ZRect united(const ZRect& r) const
    {
        if (empty())
            return r;
        if (r.empty())
            return *this;
        const double l = std::min(x, r.x), t = std::min(y, r.y);
        return {l, t, std::max(right(), r.right()) - l, std::max(bottom(), r.bottom()) - t};
    }
    ZRect inset(double dx, double dy) const { return {x + dx, y + dy, width - 2 * dx, height - 2 * dy}; }
    ZPoint center() const { return {x + width / 2, y + height / 2}; }
};

} // namespace halvern
