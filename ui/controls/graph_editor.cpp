#include "ui/controls/graph_editor.h"

#include "ui/controls/popup_menu.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace halvern {
namespace {

constexpr int kGridDivisions = 4;

double distance(ZPoint a, ZPoint b) { return std::hypot(a.x - b.x, a.y - b.y); }

// How near a point or the curve a press takes it; also the plot's margin, so that points
// on the edges can be taken all round.
double grabReach(const ZTheme& theme) { return theme.handleRadius + 2.0; }

} // namespace

ZGraphEditor::ZGraphEditor(std::unique_ptr<ZGraphModel> model) : model_(std::move(model))
{
    model_->SetChangedListener([this] { modelChanged(); });
}

void ZGraphEditor::modelChanged()
{
    // A curve changed elsewhere may have fewer points than a hover or drag refers to.
    const auto stale = [this](const Hit& hit) {
        const int limit = model_->PointCount() - (hit.kind == Hit::Kind::Segment ? 1 : 0);
        return hit.kind != Hit::Kind::None && hit.index >= limit;
    };
    if (stale(hover_))
        hover_ = {};
    if (stale(drag_))
        drag_ = {};
    Invalidate();
}

void ZGraphEditor::SetInputSource(std::function<double()> source)
{
    inputSource_ = std::move(source);
    input_ = inputSource_ ? inputSource_() : -1.0;
    Invalidate();
}

// ---- geometry ----

ZRect ZGraphEditor::PlotRect() const
{
    const double margin = grabReach(root() ? root()->theme() : ZTheme::Default());
    return bounds().inset(margin, margin);
}

ZPoint ZGraphEditor::ToView(ZPoint unit) const
{
    const ZRect plot = PlotRect();
    return {plot.x + unit.x * plot.width, plot.bottom() - unit.y * plot.height};
}

ZPoint ZGraphEditor::ToUnit(ZPoint view) const
{
    const ZRect plot = PlotRect();
    return {std::clamp((view.x - plot.x) / std::max(plot.width, 1e-9), 0.0, 1.0),
            std::clamp((plot.bottom() - view.y) / std::max(plot.height, 1e-9), 0.0, 1.0)};
}

// ---- hit testing ----

ZGraphEditor::Hit ZGraphEditor::pointAt(ZPoint position) const
{
    // Of points on top of each other the inner one is taken: it can still leave sideways.
    const int count = model_->PointCount();
    if (count == 0)
        return {};
    std::vector<int> order;
    for (int i = 1; i + 1 < count; ++i)
        order.push_back(i);
    order.push_back(0);
    if (count > 1)
        order.push_back(count - 1);
    Hit nearest;
    double best = grabReach(root()->theme());
    for (int i : order) {
        const double d = distance(position, ToView(model_->PointAt(i)));
        if (d <= best && (nearest.kind == Hit::Kind::None || d < best)) {
            best = d;
            nearest = {Hit::Kind::Point, i};
        }
    }
    return nearest;
}

int ZGraphEditor::segmentUnder(ZPoint position) const
{
    const double x = ToUnit(position).x;
    for (int s = 0; s + 1 < model_->PointCount(); ++s)
        if (model_->PointAt(s).x <= x && x <= model_->PointAt(s + 1).x)
            return s;
    return -1;
}

ZGraphEditor::Hit ZGraphEditor::curveAt(ZPoint position) const
{
    const int segment = segmentUnder(position);
    if (segment < 0 || !model_->SegmentBends(segment))
        return {};
    // The drawn curve near the pointer, one logical unit apart across the reach.
    const double reach = grabReach(root()->theme());
    const double from = ToView(model_->PointAt(segment)).x;
    const double to = ToView(model_->PointAt(segment + 1)).x;
    for (double dx = -reach; dx <= reach; dx += 1.0) {
        const double x = std::clamp(position.x + dx, from, to);
        const double value = std::clamp(model_->Evaluate(ToUnit({x, position.y}).x), 0.0, 1.0);
        if (distance(position, {x, ToView({0.0, value}).y}) <= reach)
            return {Hit::Kind::Segment, segment};
    }
    return {};
}

ZGraphEditor::Hit ZGraphEditor::hitTest(ZPoint position) const
{
    const Hit point = pointAt(position);
    return point.kind != Hit::Kind::None ? point : curveAt(position);
}

// ---- input ----

bool ZGraphEditor::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button == ZMouseButton::Right) {
        const int segment = segmentUnder(event.position);
        if (segment >= 0 && model_->SegmentKinds().size() >= 2)
            showKindMenu(segment, event.position);
        return false;
    }
    if (event.button != ZMouseButton::Left)
        return false;
    const Hit hit = hitTest(event.position);
    if (event.clickCount >= 2) {
        if (hit.kind == Hit::Kind::Point)
            removePoint(hit.index);
        else
            addPoint(event.position);
        return false;
    }
    if (hit.kind == Hit::Kind::None)
        return false;
    drag_ = hit;
    if (hit.kind == Hit::Kind::Point) {
        const ZPoint at = ToView(model_->PointAt(hit.index));
        grabOffset_ = {at.x - event.position.x, at.y - event.position.y};
    } else {
        grabY_ = event.position.y;
        grabBend_ = model_->SegmentBend(hit.index);
    }
    Invalidate();
    return true;
}

void ZGraphEditor::OnMouseDrag(const ZMouseEvent& event)
{
    if (drag_.kind == Hit::Kind::Point)
        dragPoint(event.position);
    else if (drag_.kind == Hit::Kind::Segment)
        dragBend(event.position);
}

void ZGraphEditor::OnMouseUp(const ZMouseEvent& event)
{
    OnMouseDrag(event);
    OnCaptureLost();
}

void ZGraphEditor::OnCaptureLost()
{
    drag_ = {};
    Invalidate();
}

void ZGraphEditor::dragPoint(ZPoint position)
{
    const int index = drag_.index;
    const int last = model_->PointCount() - 1;
    ZPoint unit = ToUnit({position.x + grabOffset_.x, position.y + grabOffset_.y});
    if (model_->EndsFixed() && (index == 0 || index == last)) {
        unit.x = model_->PointAt(index).x;
    } else {
        const double low = index > 0 ? model_->PointAt(index - 1).x : 0.0;
        const double high = index < last ? model_->PointAt(index + 1).x : 1.0;
        unit.x = std::clamp(unit.x, low, high);
    }
    const ZPoint now = model_->PointAt(index);
    if (unit.x != now.x || unit.y != now.y)
        model_->SetPoint(index, unit);
}

void ZGraphEditor::dragBend(ZPoint position)
{
    // Half the plot's height bends a segment from straight to its fullest.
    const double range = std::max(PlotRect().height / 2.0, 1.0);
    const double bend = std::clamp(grabBend_ + (grabY_ - position.y) / range, -1.0, 1.0);
    if (bend != model_->SegmentBend(drag_.index))
        model_->SetSegmentBend(drag_.index, bend);
}

void ZGraphEditor::addPoint(ZPoint position)
{
    const int count = model_->PointCount();
    if (count >= model_->MaximumPointCount())
        return;
    const ZPoint unit = ToUnit(position);
    int index = 0;
    while (index < count && model_->PointAt(index).x <= unit.x)
        ++index;
    if (model_->EndsFixed() && (index == 0 || index == count))
        return; // outside the fixed ends
    model_->InsertPoint(index, unit);
    setHover({Hit::Kind::Point, index});
}

void ZGraphEditor::removePoint(int index)
{
    const int count = model_->PointCount();
    if (count <= model_->MinimumPointCount() || (model_->EndsFixed() && (index == 0 || index == count - 1)))
        return;
    model_->RemovePoint(index);
    setHover({});
}

void ZGraphEditor::showKindMenu(int segment, ZPoint at)
{
    const std::vector<std::string> kinds = model_->SegmentKinds();
    const int current = model_->SegmentKind(segment);
    std::vector<ZMenuItem> items;
    for (int kind = 0; kind < static_cast<int>(kinds.size()); ++kind) {
        ZMenuItem item;
        item.text = kinds[static_cast<size_t>(kind)];
        item.checked = kind == current;
        item.action = [this, segment, kind] { model_->SetSegmentKind(segment, kind); };
        items.push_back(std::move(item));
    }
    ZPopupMenu::Show(*root(), std::move(items), {at.x, at.y, 1, 1});
}

void ZGraphEditor::OnMouseMove(const ZMouseEvent& event)
{
    setHover(hitTest(event.position));
}

void ZGraphEditor::OnMouseLeave()
{
    setHover({});
}

void ZGraphEditor::setHover(Hit hover)
{
    if (hover == hover_)
        return;
    hover_ = hover;
    Invalidate();
}

ZCursor ZGraphEditor::Cursor() const
{
    switch (drag_.kind != Hit::Kind::None ? drag_.kind : hover_.kind) {
    case Hit::Kind::Point:
        return ZCursor::Move;
    case Hit::Kind::Segment:
        return ZCursor::VerticalResize;
    case Hit::Kind::None:
        break;
    }
    return ZCursor::Crosshair;
}

void ZGraphEditor::Refresh()
{
    if (!inputSource_)
        return;
    const double input = inputSource_();
    if (input == input_ || (std::isnan(input) && std::isnan(input_)))
        return;
    input_ = input;
    Invalidate();
}

// ---- drawing ----

void ZGraphEditor::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.background);
    canvas.StrokeRoundedRect(bounds(), theme.radius, theme.panelBorder, theme.lineWidth);
    const ZRect plot = PlotRect();
    if (plot.empty() || model_->PointCount() == 0)
        return;
    paintGrid(canvas, plot);
    paintInput(canvas, plot);
    paintCurve(canvas, plot);
    paintPoints(canvas);
}

void ZGraphEditor::paintGrid(ZCanvas& canvas, const ZRect& plot) const
{
    const ZTheme& theme = root()->theme();
    for (int i = 1; i < kGridDivisions; ++i) {
        const double x = plot.x + plot.width * i / kGridDivisions;
        const double y = plot.y + plot.height * i / kGridDivisions;
        canvas.Line({x, plot.y}, {x, plot.bottom()}, theme.panelBorder, theme.lineWidth);
        canvas.Line({plot.x, y}, {plot.right(), y}, theme.panelBorder, theme.lineWidth);
    }
    canvas.StrokeRect(plot, theme.track, theme.lineWidth);
}

void ZGraphEditor::paintCurve(ZCanvas& canvas, const ZRect& plot) const
{
    const ZTheme& theme = root()->theme();
    // One sample per device pixel; the active segment is drawn again over the curve.
    const int samples = std::max(2, static_cast<int>(std::ceil(plot.width * canvas.scale())));
    const int active = drag_.kind == Hit::Kind::Segment ? drag_.index
                       : hover_.kind == Hit::Kind::Segment ? hover_.index
                                                           : -1;
    const double activeFrom = active >= 0 ? model_->PointAt(active).x : 2.0;
    const double activeTo = active >= 0 ? model_->PointAt(active + 1).x : -1.0;
    std::vector<ZPoint> curve, highlighted;
    curve.reserve(static_cast<size_t>(samples) + 3);
    for (int i = 0; i <= samples; ++i) {
        const double x = static_cast<double>(i) / samples;
        const ZPoint point = ToView({x, std::clamp(model_->Evaluate(x), 0.0, 1.0)});
        curve.push_back(point);
        if (x >= activeFrom && x <= activeTo)
            highlighted.push_back(point);
    }
    std::vector<ZPoint> area = curve;
    area.push_back({plot.right(), plot.bottom()});
    area.push_back({plot.x, plot.bottom()});
    canvas.FillPolygon(area, theme.accent.withAlpha(0.12));
    canvas.StrokePolyline(curve, theme.accent, theme.valueLineWidth * 2.0 / 3.0);
    if (highlighted.size() >= 2)
        canvas.StrokePolyline(highlighted, theme.text, theme.valueLineWidth * 2.0 / 3.0);
}

void ZGraphEditor::paintPoints(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    for (int i = 0; i < model_->PointCount(); ++i) {
        const Hit self{Hit::Kind::Point, i};
        const bool active = drag_ == self || hover_ == self;
        const ZPoint at = ToView(model_->PointAt(i));
        const double radius = theme.handleRadius - (active ? 0.0 : 1.5);
        canvas.FillCircle(at, radius, active ? theme.accent : theme.text);
        canvas.StrokeCircle(at, radius, theme.background, theme.lineWidth);
    }
}

void ZGraphEditor::paintInput(ZCanvas& canvas, const ZRect& plot) const
{
    if (!(input_ >= 0.0 && input_ <= 1.0))
        return;
    const ZTheme& theme = root()->theme();
    const ZPoint at = ToView({input_, std::clamp(model_->Evaluate(input_), 0.0, 1.0)});
    canvas.Line({at.x, plot.y}, {at.x, plot.bottom()}, theme.modulation.withAlpha(0.7), theme.lineWidth);
    canvas.FillCircle(at, theme.handleRadius * 0.6, theme.modulation);
}

} // namespace halvern
