#pragma once

// ZShapeGraph: one cycle of an LFO's shape, drawn from the signal generator's own
// shape(x), with the LFO's current position on it. For a step sequence each step is a
// bar on the curve; for harmonics each amplitude is a bar in a strip under it. A press
// sets the bar under the pointer to the pointer's height and a drag draws across the
// bars it passes; a right click types a bar's value. Values run from -1 to +1 about the
// middle line.

#include "core/z_enum_names.h"
#include "modulation/signal_generator.h"
#include "ui/view.h"

#include <functional>
#include <optional>
#include <string>

namespace halvern {

// "Sine", "Triangle", "Saw up", "Saw down", "Square", "Steps", "Harmonics".
template <>
struct ZEnumNames<ZSignalGenerator::Family> {
    static std::span<const char* const> names();
};

class ZShapeGraph : public ZView {
public:
    using Reader = std::function<ZSignalGenerator()>;
    using Writer = std::function<void(const ZSignalGenerator&)>;
    // The phase to mark (0..1), or nothing while the LFO does not run.
    using Position = std::function<std::optional<double>()>;

    ZShapeGraph(Reader read, Writer write, Position position);

    // The family's name.
    std::string Text() const override;
    std::string HelpText() const override;

    // Where the curve is drawn, and the strip of harmonic bars (empty for other families).
    ZRect WaveRect() const;
    ZRect BarsRect() const;
    // The editable bars: the steps, the harmonics, or none.
    int BarCount() const;
    // The bar under a point (-1 for none), and the value a point's height gives.
    int BarAt(ZPoint point) const;
    double ValueAt(ZPoint point) const;
    // The centre of a bar's value mark, in root coordinates.
    ZPoint BarPoint(int bar) const;
    // A point on the drawn curve at phase x.
    ZPoint CurvePoint(double x) const;
    // The marked position as drawn, if any.
    std::optional<double> shownPosition() const { return position_; }

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent&) override { dragging_ = false; }
    void OnCaptureLost() override { dragging_ = false; }
    void OnMouseMove(const ZMouseEvent& event) override;
    void OnMouseLeave() override;
    ZCursor Cursor() const override { return BarCount() > 0 ? ZCursor::Crosshair : ZCursor::Arrow; }
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    bool harmonics() const { return shape_.family() == ZSignalGenerator::Family::Harmonics; }
    bool steps() const { return shape_.family() == ZSignalGenerator::Family::Steps; }
    double barValue(int bar) const;
    // The area a bar's values span vertically.
    ZRect barArea() const;
    // The phase that an x position of the wave area shows, and back.
    double phaseAt(double x) const;
    double xOf(double phase) const;
    void setBar(int bar, double value);
    // Sets every bar the line from one point to another passes to the line's height there.
    void drawAcross(ZPoint from, ZPoint to);
    // Where a bar's typed value is entered.
    ZRect entryRect(int bar) const;
    void paintCurve(ZCanvas& canvas) const;
    void paintStepBars(ZCanvas& canvas) const;
    void paintHarmonicBars(ZCanvas& canvas) const;
    void paintPosition(ZCanvas& canvas) const;
    void paintHoverText(ZCanvas& canvas) const;

    Reader read_;
    Writer write_;
    Position readPosition_;
    ZSignalGenerator shape_;
    std::optional<double> position_;
    int hovered_ = -1;
    bool dragging_ = false;
    ZPoint lastDrag_;
};

// Whether two shapes are the same in every setting.
bool SameShape(const ZSignalGenerator& a, const ZSignalGenerator& b);

} // namespace halvern
