#include "editor/transfer_curve_editor.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace halvern {

namespace {

// The curve parameter's range, as the state limits it; a full bend reaches either end.
constexpr double kCurveRange = 100.0;

bool rising(const ZTransferCurve::Point& from, const ZTransferCurve::Point& to)
{
    return to.y >= from.y;
}

} // namespace

// The graph model over a transfer curve: segment i is the one that ends at point i + 1,
// its bend that point's curve parameter.
class ZTransferCurveGraph : public ZGraphModel {
public:
    ZTransferCurveGraph(std::function<ZTransferCurve()> read, std::function<void(const ZTransferCurve&)> write)
        : read_(std::move(read)), write_(std::move(write)), curve_(read_())
    {
    }

    const ZTransferCurve& curve() const { return curve_; }

    // Takes the curve as it is now; the listener hears of a change made elsewhere.
    void Reload()
    {
        ZTransferCurve now = read_();
        if (now == curve_)
            return;
        curve_ = now;
        NotifyChanged();
    }

    int PointCount() const override { return curve_.pointCount(); }
    ZPoint PointAt(int index) const override { return {curve_.point(index).x, curve_.point(index).y}; }
    double Evaluate(double x) const override { return curve_.evaluate(x); }
    int MaximumPointCount() const override { return ZTransferCurve::kMaxPoints; }

    double SegmentBend(int segment) const override
    {
        const ZTransferCurve::Point from = curve_.point(segment), to = curve_.point(segment + 1);
        // t^c lies above the straight line for c < 1, which lifts a rising segment.
        const double lift = -std::log(to.curve) / std::log(kCurveRange);
        return std::clamp(rising(from, to) ? lift : -lift, -1.0, 1.0);
    }

    void SetSegmentBend(int segment, double bend) override
    {
        std::vector<ZTransferCurve::Point> points = pointsOf();
        const bool up = rising(points[static_cast<size_t>(segment)], points[static_cast<size_t>(segment) + 1]);
        points[static_cast<size_t>(segment) + 1].curve =
            std::clamp(std::pow(kCurveRange, up ? -bend : bend), 1.0 / kCurveRange, kCurveRange);
        publish(points);
    }

    void SetPoint(int index, ZPoint point) override
    {
        std::vector<ZTransferCurve::Point> points = pointsOf();
        points[static_cast<size_t>(index)].x = point.x;
        points[static_cast<size_t>(index)].y = point.y;
        publish(points);
    }

    void InsertPoint(int index, ZPoint point) override
    {
        std::vector<ZTransferCurve::Point> points = pointsOf();
        // Both halves of a split segment keep its bend.
        const bool splits = index > 0 && index < static_cast<int>(points.size());
        const double curve = splits ? points[static_cast<size_t>(index)].curve : 1.0;
        points.insert(points.begin() + index, {point.x, point.y, curve});
        publish(points);
    }

    void RemovePoint(int index) override
    {
        std::vector<ZTransferCurve::Point> points = pointsOf();
        points.erase(points.begin() + index);
        publish(points);
    }

private:
    std::vector<ZTransferCurve::Point> pointsOf() const
    {
        std::vector<ZTransferCurve::Point> points;
        for (int i = 0; i < curve_.pointCount(); ++i)
            points.push_back(curve_.point(i));
        return points;
    }

    void publish(const std::vector<ZTransferCurve::Point>& points)
    {
        ZTransferCurve curve;
        curve.clear();
        for (const ZTransferCurve::Point& point : points)
            curve.addPoint(point);
        curve_ = curve;
        write_(curve_);
        NotifyChanged();
    }

    std::function<ZTransferCurve()> read_;
    std::function<void(const ZTransferCurve&)> write_;
    ZTransferCurve curve_;
};

ZTransferCurveEditor::ZTransferCurveEditor(ZModulatorEditorContext& /*context*/, std::function<ZTransferCurve()> read,
                                           std::function<void(const ZTransferCurve&)> write)
    : ZGraphEditor(std::make_unique<ZTransferCurveGraph>(std::move(read), std::move(write))),
      graph_(static_cast<ZTransferCurveGraph&>(model()))
{
    SetName("TransferCurve");
    SetHelpText("<name>Shape</name>: the incoming value runs across, the result up. Drag a point to move it, "
                "double-click to add or remove one, drag the curve up or down to bend it.");
}

const ZTransferCurve& ZTransferCurveEditor::curve() const
{
    return graph_.curve();
}

void ZTransferCurveEditor::Refresh()
{
    graph_.Reload();
    ZGraphEditor::Refresh();
}

} // namespace halvern
