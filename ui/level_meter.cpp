#include "ui/level_meter.h"

#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace halvern {

ZLevelMeter::ZLevelMeter(std::string label, std::function<double()> source, double tickSeconds)
    : label_(std::move(label)), source_(std::move(source)), tickSeconds_(tickSeconds)
{
    SetName(label_);
}

std::string ZLevelMeter::Text() const
{
    if (heldDB_ <= kFloorDB)
        return "-inf";
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", heldDB_);
    return text;
}

void ZLevelMeter::Refresh()
{
    const double peak = source_ ? source_() : 0.0;
    const double peakDB = peak > 0.0 && std::isfinite(peak) ? std::max(kFloorDB, 20.0 * std::log10(peak)) : kFloorDB;
    const double fallen = std::max(kFloorDB, levelDB_ - kFallDBPerSecond * tickSeconds_);
    const double level = std::max(peakDB, fallen);
    heldFor_ += tickSeconds_;
    double held = heldDB_;
    if (peakDB >= heldDB_ || heldFor_ > kHoldSeconds) {
        held = peakDB >= heldDB_ ? peakDB : level;
        heldFor_ = 0.0;
    }
    if (level != levelDB_ || held != heldDB_) {
        levelDB_ = level;
        heldDB_ = held;
        Invalidate();
    }
}

double ZLevelMeter::fraction(double db) const
{
    return std::clamp((db - kFloorDB) / (kCeilingDB - kFloorDB), 0.0, 1.0);
}

void ZLevelMeter::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& b = bounds();
    const double labelWidth = 26.0, numberWidth = 40.0;
    canvas.DrawTextInRect(label_, {b.x, b.y, labelWidth, b.height}, theme.Label());
    const ZRect bar{b.x + labelWidth, b.y + b.height / 2 - 4, b.width - labelWidth - numberWidth - 6, 8};
    canvas.FillRoundedRect(bar, 2, theme.track);
    const double zeroAt = fraction(0.0), highAt = fraction(-12.0);
    const double filled = fraction(levelDB_) * bar.width;
    const auto segment = [&](double from, double to, const ZColor& color) {
        const double x0 = bar.x + from * bar.width, x1 = std::min(bar.x + to * bar.width, bar.x + filled);
        if (x1 > x0)
            canvas.FillRect({x0, bar.y, x1 - x0, bar.height}, color);
    };
    segment(0.0, highAt, theme.meterLow);
    segment(highAt, zeroAt, theme.meterHigh);
    segment(zeroAt, 1.0, theme.meterClip);
    if (heldDB_ > kFloorDB) {
        const double x = bar.x + fraction(heldDB_) * bar.width;
        canvas.FillRect({std::min(x, bar.right() - 2), bar.y, 2, bar.height}, heldDB_ >= 0.0 ? theme.meterClip : theme.text);
    }
    canvas.DrawTextInRect(Text(), {bar.right() + 6, b.y, numberWidth, b.height}, theme.Value(), ZTextAlign::Right);
}

} // namespace halvern
