#include "editor/modulator_strips.h"

#include "core/modulation_enums.h"
#include "ui/grid_layout.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace halvern {
namespace {

constexpr double kNameHeight = 24.0;

void paintStripBackground(ZCanvas& canvas, const ZRect& bounds, bool selected, const ZTheme& theme)
{
    canvas.FillRoundedRect(bounds.inset(1, 0), theme.radius, theme.background.mixed(theme.panel, 0.5));
    if (selected)
        canvas.StrokeRoundedRect(bounds.inset(1, 0), theme.radius, theme.accent, theme.lineWidth * 1.5);
}

} // namespace

// ---- ZModulatorButton ----

ZModulatorButton::ZModulatorButton(std::string text, std::function<void()> open, std::function<void(ZRect)> menu)
    : ZButton(std::move(text), std::move(open)), menu_(std::move(menu))
{
}

bool ZModulatorButton::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button == ZMouseButton::Right) {
        if (menu_)
            menu_(bounds());
        return false;
    }
    return ZButton::OnMouseDown(event);
}

// ---- ZLiveTrace ----

ZLiveTrace::ZLiveTrace(std::function<double()> source) : source_(std::move(source)) {}

std::string ZLiveTrace::Text() const
{
    char text[16];
    std::snprintf(text, sizeof text, "%+.2f", values_[(next_ + kLength - 1) % kLength]);
    return text;
}

void ZLiveTrace::Refresh()
{
    const double value = source_ ? source_() : 0.0;
    values_[next_] = std::isfinite(value) ? std::clamp(value, -1.0, 1.0) : 0.0;
    next_ = (next_ + 1) % kLength;
    Invalidate();
}

void ZLiveTrace::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& b = bounds();
    canvas.FillRoundedRect(b, theme.radius, theme.background);
    canvas.Line({b.x, b.y + b.height / 2}, {b.right(), b.y + b.height / 2}, theme.panelBorder, 1);
    std::vector<ZPoint> points;
    points.reserve(kLength);
    const ZRect inner = b.inset(4, 5);
    for (size_t i = 0; i < kLength; ++i) {
        const double v = values_[(next_ + i) % kLength];
        points.push_back({inner.x + inner.width * i / (kLength - 1), inner.y + inner.height * (1 - v) / 2});
    }
    canvas.StrokePolyline(points, theme.accent, 1.5);
    canvas.FillCircle(points.back(), 2.5, theme.accent);
}

// ---- ZLFOStrip ----

ZLFOStrip::ZLFOStrip(ZModulatorEditorContext& context, int index, std::unique_ptr<ZView> enable,
                     std::unique_ptr<ZView> frequency, std::unique_ptr<ZView> amount, std::function<void()> open,
                     std::function<void(ZRect)> menu)
    : title_("LFO " + std::to_string(index + 1))
{
    SetName(title_);
    name_ = AddChild(std::make_unique<ZModulatorButton>(title_, std::move(open), std::move(menu)));
    name_->SetName(title_ + " button");
    enable_ = AddChild(std::move(enable));
    ZLFO& lfo = context.core.lfo(index);
    trace_ = AddChild(std::make_unique<ZLiveTrace>([&lfo] { return lfo.enabled() ? lfo.shownOutput() : 0.0; }));
    trace_->SetName(title_ + " trace");
    auto knobs = std::make_unique<ZGridLayout>(2);
    knobs->AddChild(std::move(frequency));
    knobs->AddChild(std::move(amount));
    knobs_ = AddChild(std::move(knobs));
}

void ZLFOStrip::Layout()
{
    const ZRect& b = bounds();
    const double knobsHeight = 92.0;
    name_->SetBounds({b.x + 6, b.y + 4, 80, kNameHeight - 2});
    enable_->SetBounds({b.right() - 48, b.y + 6, 44, 18});
    trace_->SetBounds({b.x + 8, b.y + kNameHeight + 10, b.width - 16, b.height - kNameHeight - knobsHeight - 16});
    knobs_->SetBounds({b.x, b.bottom() - knobsHeight, b.width, knobsHeight});
}

void ZLFOStrip::SetSelected(bool selected)
{
    if (selected_ != selected) {
        selected_ = selected;
        Invalidate();
    }
}

void ZLFOStrip::PaintSelf(ZCanvas& canvas) { paintStripBackground(canvas, bounds(), selected_, root()->theme()); }

// ---- ZMultiParameterStrip ----

ZMultiParameterStrip::ZMultiParameterStrip(ZModulatorEditorContext& context, int index, std::unique_ptr<ZView> value,
                                           std::function<void()> open, std::function<void(ZRect)> menu)
    : context_(context), index_(index)
{
    SetName("MultiParameter " + std::to_string(index + 1));
    name_ = AddChild(std::make_unique<ZModulatorButton>(context.core.multiParameter(index).displayName(),
                                                        std::move(open), std::move(menu)));
    name_->SetName(name() + " button");
    value_ = AddChild(std::move(value));
    shownState_ = stateText();
}

std::string ZMultiParameterStrip::Text() const { return name_->Text(); }

std::string ZMultiParameterStrip::stateText() const
{
    const ZMultiParameter& multi = context_.core.multiParameter(index_);
    const auto modes = ZEnumNames<ZMultiParameterMode>::names();
    const auto mode = static_cast<size_t>(multi.mode());
    return std::string(mode < modes.size() ? modes[mode] : "") + (multi.enabled() ? " \u00B7 On" : " \u00B7 Off");
}

void ZMultiParameterStrip::Layout()
{
    // The name across the top; the value's knob at the left, the mode and state beside it.
    const ZRect& b = bounds();
    name_->SetBounds({b.x + 6, b.y + 4, b.width - 12, kNameHeight - 2});
    const double top = b.y + kNameHeight + 6;
    value_->SetBounds({b.x + 2, top, std::min(96.0, b.width / 2), b.bottom() - top - 2});
}

void ZMultiParameterStrip::Refresh()
{
    const std::string name = context_.core.multiParameter(index_).displayName();
    if (name != name_->Text())
        name_->SetText(name);
    if (std::string state = stateText(); state != shownState_) {
        shownState_ = std::move(state);
        Invalidate();
    }
}

void ZMultiParameterStrip::SetSelected(bool selected)
{
    if (selected_ != selected) {
        selected_ = selected;
        Invalidate();
    }
}

void ZMultiParameterStrip::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    paintStripBackground(canvas, bounds(), selected_, theme);
    const ZRect& b = bounds();
    const ZRect& knob = value_->bounds();
    canvas.DrawTextInRect(shownState_, {knob.right() + 4, knob.y + knob.height / 2 - theme.labelHeight / 2,
                                        b.right() - knob.right() - 10, theme.labelHeight},
                          theme.Label(), ZTextAlign::Center);
}

} // namespace halvern
