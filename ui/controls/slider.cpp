#include "ui/controls/slider.h"

#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {

ZSlider::ZSlider(std::shared_ptr<ZParameterBinding> binding) : ZParameterControl(std::move(binding))
{
}

ZPoint ZSlider::PreferredSize() const
{
    const ZUIRoot* r = root();
    if (!r)
        return {};
    return {0.0, r->theme().labelHeight + 2 * r->theme().handleRadius};
}

ZRect ZSlider::TextRect() const
{
    return {bounds().x, bounds().y, bounds().width, std::max(0.0, bounds().height - 2 * theme().handleRadius)};
}

ZRect ZSlider::TrackRect() const
{
    const double radius = theme().handleRadius;
    return {bounds().x + radius, bounds().bottom() - radius, std::max(0.0, bounds().width - 2 * radius), 0.0};
}

double ZSlider::DragChange(ZPoint from, ZPoint to) const
{
    const double length = TrackRect().width;
    return length > 0.0 ? (to.x - from.x) / length : 0.0;
}

ZRect ZSlider::TextEntryBounds() const
{
    const double height = theme().rowHeight;
    return {bounds().x, TextRect().center().y - height / 2, bounds().width, height};
}

void ZSlider::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = theme();
    const ZRect text = TextRect();
    const std::string valueText = Text();
    const double valueWidth = std::min(canvas.TextWidth(valueText, t.Value()), text.width);
    canvas.DrawTextInRect(binding().Name(), {text.x, text.y, text.width - valueWidth - t.spacing, text.height},
                          t.Label());
    canvas.DrawTextInRect(valueText, text, t.Value(), ZTextAlign::Right);

    const ZRect track = TrackRect();
    const double thumbX = track.x + track.width * value();
    canvas.Line({track.x, track.y}, {track.right(), track.y}, t.track, t.valueLineWidth);
    canvas.Line({track.x, track.y}, {thumbX, track.y}, t.accent, t.valueLineWidth);
    if (const auto range = binding().ModulationRange()) {
        // The range a selected modulator sweeps, just under the track.
        const double below = track.y + t.valueLineWidth + 1.0;
        canvas.Line({track.x + track.width * range->first, below}, {track.x + track.width * range->second, below},
                    t.modulation, t.valueLineWidth * 0.6);
    }
    canvas.FillCircle({thumbX, track.y}, t.handleRadius, hovered() ? t.text : t.textDim);
}

} // namespace halvern
