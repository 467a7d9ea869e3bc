#include "editor/shape_graph.h"

#include "core/z_format.h"
#include "ui/controls/popup_menu.h"
#include "ui/controls/text_field.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace halvern {
namespace {

constexpr double kInset = 4.0;         // from the view's edge to the drawing areas
constexpr double kCurveMargin = 6.0;   // above +1 and below -1, so the curve's peaks show whole
constexpr double kHarmonicsShare = 0.55; // of the height for the curve above the harmonic bars
constexpr double kBarGap = 6.0;
constexpr double kBarFill = 0.6;       // of a harmonic's slot that its bar fills

const char* const kFamilyNames[] = {"Sine", "Triangle", "Saw up", "Saw down", "Square", "Steps", "Harmonics"};

double wrap(double x) { return x - std::floor(x); }

std::string valueText(double value) { return ZFormat("{+0.2}").arg(value).text(); }

// Sets one step or harmonic of a shape; the count stays.
void setBarIn(ZSignalGenerator& shape, int bar, double value)
{
    const bool harmonics = shape.family() == ZSignalGenerator::Family::Harmonics;
    const std::span<const double> current = harmonics ? shape.harmonics() : shape.steps();
    if (bar < 0 || bar >= static_cast<int>(current.size()))
        return;
    std::vector<double> values(current.begin(), current.end());
    values[static_cast<size_t>(bar)] = std::clamp(value, -1.0, 1.0);
    harmonics ? shape.setHarmonics(values) : shape.setSteps(values);
}

double yOf(double value, const ZRect& area) { return area.y + (1.0 - value) / 2.0 * area.height; }

// A text field over a bar: Enter sets a number typed into the bar (when the shape still
// has that family), Escape or a click elsewhere leaves it.
void openValueEntry(ZUIRoot& root, const ZRect& at, const std::string& text, int bar, ZSignalGenerator::Family family,
                    const ZShapeGraph::Reader& read, const ZShapeGraph::Writer& write)
{
    auto* field = static_cast<ZTextField*>(root.PushOverlay(std::make_unique<ZTextField>(text)));
    field->SetName("ShapeValueEntry");
    field->SetBounds(at);
    field->SelectAll();
    ZUIRoot* owner = &root;
    field->SetOnCommit([owner, field, bar, family, read, write](const std::string& typed) {
        double value = 0.0;
        if (!ZParseNumber(typed, value))
            return false;
        ZSignalGenerator shape = read();
        if (shape.family() == family) {
            setBarIn(shape, bar, value);
            write(shape);
        }
        owner->RemoveOverlay(field);
        return true;
    });
    field->SetOnCancel([owner, field] { owner->RemoveOverlay(field); });
    root.SetFocus(field);
}

} // namespace

std::span<const char* const> ZEnumNames<ZSignalGenerator::Family>::names() { return kFamilyNames; }

bool SameShape(const ZSignalGenerator& a, const ZSignalGenerator& b)
{
    const auto same = [](std::span<const double> x, std::span<const double> y) {
        return std::equal(x.begin(), x.end(), y.begin(), y.end());
    };
    return a.family() == b.family() && a.phaseOffset() == b.phaseOffset() && a.smoothing() == b.smoothing() &&
           same(a.steps(), b.steps()) && same(a.harmonics(), b.harmonics());
}

ZShapeGraph::ZShapeGraph(Reader read, Writer write, Position position)
    : read_(std::move(read)), write_(std::move(write)), readPosition_(std::move(position)), shape_(read_())
{
    SetName("ShapeGraph");
}

std::string ZShapeGraph::Text() const { return kFamilyNames[static_cast<size_t>(shape_.family())]; }

std::string ZShapeGraph::HelpText() const
{
    if (steps())
        return "<name>Modulator shape</name> <p>Drag a step up or down to set it; drag across the steps to draw "
               "them. Right-click a step to type its value.</p>";
    if (harmonics())
        return "<name>Modulator shape</name> <p>The bars below the curve are the harmonics' amplitudes: drag one "
               "to set it, drag across them to draw. Right-click a bar to type its value.</p>";
    return "<name>Modulator shape</name> <p>One cycle of the LFO's waveform; the dot shows where the LFO is now.</p>";
}

// ---- geometry ----

ZRect ZShapeGraph::WaveRect() const
{
    const ZRect inner = bounds().inset(kInset, kInset);
    if (!harmonics())
        return inner;
    return {inner.x, inner.y, inner.width, std::round(inner.height * kHarmonicsShare)};
}

ZRect ZShapeGraph::BarsRect() const
{
    if (!harmonics())
        return {};
    const ZRect wave = WaveRect();
    const double top = wave.bottom() + kBarGap;
    return {wave.x, top, wave.width, bounds().bottom() - kInset - top};
}

int ZShapeGraph::BarCount() const
{
    if (steps())
        return static_cast<int>(shape_.steps().size());
    if (harmonics())
        return static_cast<int>(shape_.harmonics().size());
    return 0;
}

ZRect ZShapeGraph::barArea() const
{
    const ZRect area = harmonics() ? BarsRect() : WaveRect();
    return area.inset(0, kCurveMargin);
}

double ZShapeGraph::phaseAt(double x) const
{
    const ZRect wave = WaveRect();
    return std::clamp((x - wave.x) / wave.width, 0.0, std::nextafter(1.0, 0.0));
}

double ZShapeGraph::xOf(double phase) const
{
    const ZRect wave = WaveRect();
    return wave.x + wave.width * phase;
}

int ZShapeGraph::BarAt(ZPoint point) const
{
    const int count = BarCount();
    const ZRect area = harmonics() ? BarsRect() : WaveRect();
    if (count == 0 || !area.contains(point))
        return -1;
    // A step holds the phases its segment of the cycle covers, moved by the phase offset.
    const double position = harmonics() ? (point.x - area.x) / area.width : wrap(phaseAt(point.x) + shape_.phaseOffset());
    return std::clamp(static_cast<int>(position * count), 0, count - 1);
}

double ZShapeGraph::ValueAt(ZPoint point) const
{
    const ZRect area = barArea();
    return std::clamp(1.0 - 2.0 * (point.y - area.y) / area.height, -1.0, 1.0);
}

double ZShapeGraph::barValue(int bar) const
{
    const std::span<const double> values = harmonics() ? shape_.harmonics() : shape_.steps();
    return values[static_cast<size_t>(bar)];
}

ZPoint ZShapeGraph::BarPoint(int bar) const
{
    const int count = BarCount();
    const ZRect area = harmonics() ? BarsRect() : WaveRect();
    const double centre = (bar + 0.5) / count;
    const double x = harmonics() ? area.x + area.width * centre : xOf(wrap(centre - shape_.phaseOffset()));
    return {x, yOf(barValue(bar), barArea())};
}

ZPoint ZShapeGraph::CurvePoint(double x) const
{
    return {xOf(x), yOf(shape_.shape(x), WaveRect().inset(0, kCurveMargin))};
}

// ---- editing ----

void ZShapeGraph::setBar(int bar, double value)
{
    setBarIn(shape_, bar, value);
    write_(shape_);
    Invalidate();
}

void ZShapeGraph::drawAcross(ZPoint from, ZPoint to)
{
    const int count = BarCount();
    if (count == 0)
        return;
    const ZRect area = harmonics() ? BarsRect() : WaveRect();
    // Samples half a bar apart, so no bar is skipped however fast the pointer moves.
    const double half = area.width / count / 2.0;
    const int samples = std::max(1, static_cast<int>(std::ceil(std::abs(to.x - from.x) / half)));
    for (int i = 1; i <= samples; ++i) {
        const double t = static_cast<double>(i) / samples;
        const ZPoint p{std::clamp(from.x + (to.x - from.x) * t, area.x, area.right() - 0.001),
                       std::clamp(from.y + (to.y - from.y) * t, area.y, area.bottom())};
        setBarIn(shape_, BarAt(p), ValueAt(p));
    }
    write_(shape_);
    Invalidate();
}

bool ZShapeGraph::OnMouseDown(const ZMouseEvent& event)
{
    const int bar = BarAt(event.position);
    if (bar < 0)
        return false;
    if (event.button == ZMouseButton::Right) {
        ZUIRoot* owner = root();
        if (owner == nullptr)
            return false;
        // The menu's action keeps what it needs, not this view: the page may close first.
        auto entry = [owner, at = entryRect(bar), text = valueText(barValue(bar)), bar, family = shape_.family(),
                      read = read_, write = write_] { openValueEntry(*owner, at, text, bar, family, read, write); };
        ZPopupMenu::Show(*owner, {{.text = "Type a value\u2026", .action = entry}},
                         {event.position.x, event.position.y, 0.0, 0.0});
        return false;
    }
    if (event.button != ZMouseButton::Left)
        return false;
    setBar(bar, ValueAt(event.position));
    dragging_ = true;
    lastDrag_ = event.position;
    return true;
}

void ZShapeGraph::OnMouseDrag(const ZMouseEvent& event)
{
    if (!dragging_)
        return;
    drawAcross(lastDrag_, event.position);
    lastDrag_ = event.position;
}

void ZShapeGraph::OnMouseMove(const ZMouseEvent& event)
{
    const int bar = BarAt(event.position);
    if (bar != hovered_) {
        hovered_ = bar;
        Invalidate();
    }
}

void ZShapeGraph::OnMouseLeave()
{
    hovered_ = -1;
    Invalidate();
}

ZRect ZShapeGraph::entryRect(int bar) const
{
    const double height = root()->theme().rowHeight;
    const double width = 64.0;
    const ZPoint at = BarPoint(bar);
    return {std::clamp(at.x - width / 2, bounds().x, bounds().right() - width),
            std::clamp(at.y - height / 2, bounds().y, bounds().bottom() - height), width, height};
}

void ZShapeGraph::Refresh()
{
    ZSignalGenerator now = read_();
    if (!SameShape(now, shape_)) {
        shape_ = now;
        hovered_ = std::min(hovered_, BarCount() - 1);
        Invalidate();
    }
    const std::optional<double> position = readPosition_ ? readPosition_() : std::nullopt;
    if (position != position_) {
        position_ = position;
        Invalidate();
    }
}

// ---- drawing ----

void ZShapeGraph::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.background);
    const ZRect wave = WaveRect();
    const ZRect curveArea = wave.inset(0, kCurveMargin);
    for (int i = 1; i < 4; ++i)
        canvas.Line({wave.x + wave.width * i / 4, wave.y}, {wave.x + wave.width * i / 4, wave.bottom()},
                    theme.panelBorder, theme.lineWidth);
    for (double v : {1.0, -1.0})
        canvas.Line({wave.x, yOf(v, curveArea)}, {wave.right(), yOf(v, curveArea)}, theme.panelBorder, theme.lineWidth);
    canvas.Line({wave.x, yOf(0.0, curveArea)}, {wave.right(), yOf(0.0, curveArea)}, theme.track, theme.lineWidth);
    if (steps())
        paintStepBars(canvas);
    paintCurve(canvas);
    if (harmonics())
        paintHarmonicBars(canvas);
    paintPosition(canvas);
    paintHoverText(canvas);
}

void ZShapeGraph::paintCurve(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const ZRect wave = WaveRect();
    const ZRect area = wave.inset(0, kCurveMargin);
    // Two samples per device pixel, so the jumps of squares and steps stay upright.
    const int samples = std::max(2, static_cast<int>(wave.width * canvas.scale() * 2));
    std::vector<ZPoint> points;
    points.reserve(static_cast<size_t>(samples) + 3);
    for (int i = 0; i <= samples; ++i) {
        const double x = static_cast<double>(i) / samples;
        points.push_back({xOf(x), yOf(shape_.shape(std::min(x, std::nextafter(1.0, 0.0))), area)});
    }
    std::vector<ZPoint> fill = points;
    fill.push_back({wave.right(), yOf(0.0, area)});
    fill.push_back({wave.x, yOf(0.0, area)});
    canvas.FillPolygon(fill, theme.accent.withAlpha(0.12));
    canvas.StrokePolyline(points, theme.accent, 2.0);
}

void ZShapeGraph::paintStepBars(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const ZRect wave = WaveRect();
    const ZRect area = barArea();
    const int count = BarCount();
    const double width = wave.width / count;
    const double zero = yOf(0.0, area);
    for (int bar = 0; bar < count; ++bar) {
        const double y = yOf(barValue(bar), area);
        const ZColor fill = theme.accent.withAlpha(bar == hovered_ ? 0.30 : 0.14);
        // A step that the phase offset moves across the end of the cycle is drawn in two parts.
        const double start = xOf(wrap(static_cast<double>(bar) / count - shape_.phaseOffset()));
        for (double left : {start, start - wave.width}) {
            const double l = std::max(left, wave.x), r = std::min(left + width, wave.right());
            if (r - l <= 0.0)
                continue;
            canvas.FillRect({l + 1, std::min(y, zero), r - l - 2, std::abs(zero - y)}, fill);
            canvas.Line({l + 1, y}, {r - 1, y}, bar == hovered_ ? theme.text : theme.textDim, 2.0);
        }
    }
}

void ZShapeGraph::paintHarmonicBars(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const ZRect bars = BarsRect();
    const ZRect area = barArea();
    canvas.FillRoundedRect(bars, theme.radius, theme.panel.mixed(theme.background, 0.5));
    const double zero = yOf(0.0, area);
    canvas.Line({bars.x, zero}, {bars.right(), zero}, theme.track, theme.lineWidth);
    const int count = BarCount();
    const double slot = bars.width / count;
    for (int bar = 0; bar < count; ++bar) {
        const double y = yOf(barValue(bar), area);
        const double width = std::max(2.0, slot * kBarFill);
        const double x = bars.x + slot * (bar + 0.5) - width / 2;
        canvas.FillRect({x, std::min(y, zero), width, std::max(1.0, std::abs(zero - y))},
                        bar == hovered_ ? theme.text : theme.accent);
    }
}

void ZShapeGraph::paintPosition(ZCanvas& canvas) const
{
    if (!position_)
        return;
    const ZTheme& theme = root()->theme();
    const ZRect wave = WaveRect();
    const ZPoint at = CurvePoint(*position_);
    canvas.Line({at.x, wave.y}, {at.x, wave.bottom()}, theme.modulation.withAlpha(0.5), theme.lineWidth);
    canvas.FillCircle(at, 4.5, theme.modulation);
    canvas.StrokeCircle(at, 4.5, theme.background, theme.lineWidth);
}

void ZShapeGraph::paintHoverText(ZCanvas& canvas) const
{
    if (hovered_ < 0 || hovered_ >= BarCount())
        return;
    const ZTheme& theme = root()->theme();
    const std::string text =
        (harmonics() ? "Harmonic " : "Step ") + std::to_string(hovered_ + 1) + ": " + valueText(barValue(hovered_));
    // On a backing of its own, so that the curve under it does not cross it.
    const ZTextStyle style = theme.Label();
    const ZRect wave = WaveRect();
    const double width = std::min(canvas.TextWidth(text, style) + 2 * theme.textInset, wave.width);
    const ZRect backing{wave.x + 2, wave.y + 2, width, theme.labelHeight};
    canvas.FillRoundedRect(backing, theme.radius, theme.popup.withAlpha(0.9));
    canvas.DrawTextInRect(text, backing.inset(theme.textInset, 0), style);
}

} // namespace halvern
