#pragma once

// ZGraphModel: the curve a ZGraphEditor shows and edits. Points lie in the unit square
// (x across, y up), ordered by x; segment i joins point i to point i + 1 and has a kind
// and a bend. The owner evaluates the curve; the editor keeps the rules it declares
// (order, fixed ends, point counts) before it calls a setter.

#include "ui/geometry.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

class ZGraphModel {
public:
    virtual ~ZGraphModel() = default;

    virtual int PointCount() const = 0;
    virtual ZPoint PointAt(int index) const = 0;
    // The curve at x, exactly as its owner computes it.
    virtual double Evaluate(double x) const = 0;
    // -1..1: positive lifts the segment's middle above the straight line, negative
    // lowers it, 0 is straight.
    virtual double SegmentBend(int segment) const = 0;
    // Whether the segment's kind can be bent at all.
    virtual bool SegmentBends(int /*segment*/) const { return true; }
    // The kinds a segment can take, by name; with fewer than two there is nothing to choose.
    virtual std::vector<std::string> SegmentKinds() const { return {}; }
    virtual int SegmentKind(int /*segment*/) const { return 0; }

    virtual int MinimumPointCount() const { return 2; }
    virtual int MaximumPointCount() const = 0;
    // Whether the first and the last point keep their x.
    virtual bool EndsFixed() const { return true; }

    virtual void SetPoint(int index, ZPoint point) = 0;
    // Inserts before the point at index (PointCount() appends).
    virtual void InsertPoint(int index, ZPoint point) = 0;
    virtual void RemovePoint(int index) = 0;
    virtual void SetSegmentBend(int segment, double bend) = 0;
    virtual void SetSegmentKind(int /*segment*/, int /*kind*/) {}

    // Called whenever the curve changed, through the setters or from elsewhere (the view
    // that shows it repaints).
    void SetChangedListener(std::function<void()> listener) { changed_ = std::move(listener); }

protected:
    // Implementations call it after every change of the curve.
    void NotifyChanged() const
    {
        if (changed_)
            changed_();
    }

private:
    std::function<void()> changed_;
};

} // namespace halvern
