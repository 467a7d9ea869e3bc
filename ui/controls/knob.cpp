#include "ui/controls/knob.h"

#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {

namespace {

// Canvas angles run clockwise from the right: -135° from the top is 3π/4, and the arc
// sweeps 270° through the top to +135°.
constexpr double kArcStart = 0.75 * std::numbers::pi;
constexpr double kArcSweep = 1.5 * std::numbers::pi;

} // namespace

ZKnob::ZKnob(std::shared_ptr<ZParameterBinding> binding) : ZParameterControl(std::move(binding))
{
}

ZPoint ZKnob::PreferredSize() const
{
    const ZUIRoot* r = root();
    if (!r)
        return {};
    const ZTheme& t = r->theme();
    return {t.knobSize + 2 * t.spacing, t.knobSize + 2 * t.labelHeight};
}

ZRect ZKnob::NameRect() const
{
    return {bounds().x, bounds().y, bounds().width, theme().labelHeight};
}

ZRect ZKnob::ValueRect() const
{
    const double height = theme().labelHeight;
    return {bounds().x, bounds().bottom() - height, bounds().width, height};
}

ZRect ZKnob::DialRect() const
{
    const ZRect name = NameRect(), value = ValueRect();
    const double size = std::max(0.0, std::min({theme().knobSize, bounds().width, value.y - name.bottom()}));
    const ZPoint center{bounds().center().x, (name.bottom() + value.y) / 2};
    return {center.x - size / 2, center.y - size / 2, size, size};
}

double ZKnob::DragChange(ZPoint from, ZPoint to) const
{
    return (from.y - to.y) / theme().dragPixelsFullRange;
}

ZRect ZKnob::TextEntryBounds() const
{
    const double height = theme().rowHeight;
    return {bounds().x, ValueRect().center().y - height / 2, bounds().width, height};
}

void ZKnob::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = theme();
    canvas.DrawTextInRect(binding().Name(), NameRect(), t.Label(), ZTextAlign::Center);
    canvas.DrawTextInRect(Text(), ValueRect(), t.Value(), ZTextAlign::Center);

    const ZRect dial = DialRect();
    const ZPoint center = dial.center();
    const double arcRadius = (dial.width - t.valueLineWidth) / 2;
    const double faceRadius = arcRadius - t.valueLineWidth;
    if (faceRadius <= 0.0)
        return;
    const double valueAngle = kArcStart + kArcSweep * value();
    canvas.StrokeArc(center, arcRadius, kArcStart, kArcStart + kArcSweep, t.track, t.valueLineWidth);
    canvas.StrokeArc(center, arcRadius, kArcStart, valueAngle, t.accent, t.valueLineWidth);
    if (const auto range = binding().ModulationRange()) {
        // The range a selected modulator sweeps, just outside the value arc.
        const double outer = arcRadius + t.valueLineWidth * 0.75 + 1.0;
        canvas.StrokeArc(center, outer, kArcStart + kArcSweep * range->first,
                         kArcStart + kArcSweep * std::max(range->second, range->first + 0.004), t.modulation,
                         t.valueLineWidth * 0.6);
    }
    canvas.FillCircle(center, faceRadius, hovered() ? t.controlHover : t.control);
    const ZPoint direction{std::cos(valueAngle), std::sin(valueAngle)};
    canvas.Line({center.x + direction.x * faceRadius / 2, center.y + direction.y * faceRadius / 2},
                {center.x + direction.x * faceRadius, center.y + direction.y * faceRadius}, t.text, t.valueLineWidth / 2);
}

} // namespace halvern
