#include "editor/position_editor.h"

#include "ui/controls/popup_menu.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace halvern {
namespace {

constexpr double kGrabRadius = 10.0;    // how near a marker or corner a press takes it
constexpr double kEdgeDistance = 6.0;   // how near an edge a double click adds a corner
constexpr double kLegendHeight = 18.0;
constexpr double kMinimumWidthRatio = 0.05;
constexpr int kOutlinePollTicks = 15;   // the outline is read back four times a second

double distance(ZPoint a, ZPoint b) { return std::hypot(a.x - b.x, a.y - b.y); }

// Distance from p to the segment a-b, and where along it (0..1) the nearest point lies.
double segmentDistance(ZPoint p, ZPoint a, ZPoint b, double& along)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double length2 = dx * dx + dy * dy;
    along = length2 > 0.0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length2, 0.0, 1.0) : 0.0;
    return distance(p, {a.x + along * dx, a.y + along * dy});
}

// A grid step in metres that gives a handful of lines across the longer side.
double gridStep(double metres)
{
    for (double step : {0.5, 1.0, 2.0, 5.0, 10.0})
        if (metres / step <= 12.0)
            return step;
    return 20.0;
}

std::string metresText(double metres)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f m", metres);
    return text;
}

} // namespace

ZPositionEditor::ZPositionEditor(HalvernAudioEffectPlugin& effect, std::shared_ptr<ZParameterBinding> sourceX,
                                 std::shared_ptr<ZParameterBinding> sourceY)
    : effect_(effect), sourceX_(std::move(sourceX)), sourceY_(std::move(sourceY)), outline_(effect.RoomOutline())
{
    SetName("PositionEditor");
    shown_ = take();
}

ZPositionEditor::Snapshot ZPositionEditor::take() const
{
    const auto& positions = effect_.positions();
    const auto& settings = effect_.settings();
    return {sourceX_->Value(), sourceY_->Value(), positions.microphoneX, positions.microphoneY, settings.size,
            settings.width};
}

std::string ZPositionEditor::Text() const
{
    const double length = shown_.size * ZReverbParameters::kMetresPerSecond;
    return metresText(length * std::max(shown_.width, kMinimumWidthRatio)) + " x " + metresText(length);
}

// ---- geometry ----

ZRect ZPositionEditor::planArea() const
{
    const ZRect& b = bounds();
    return {b.x + 8, b.y + 8, b.width - 16, b.height - 16 - kLegendHeight};
}

ZRect ZPositionEditor::RoomRect() const
{
    const ZRect area = planArea();
    const double ratio = std::clamp(shown_.width, kMinimumWidthRatio, 1.0); // width over length
    double height = area.height;
    double width = height * ratio;
    if (width > area.width) {
        width = area.width;
        height = width / ratio;
    }
    return {area.x + (area.width - width) / 2, area.y + (area.height - height) / 2, width, height};
}

ZPoint ZPositionEditor::ToView(double x, double y) const
{
    const ZRect room = RoomRect();
    return {room.x + x * room.width, room.y + y * room.height};
}

ZPoint ZPositionEditor::ToPlan(ZPoint view) const
{
    const ZRect room = RoomRect();
    return {std::clamp((view.x - room.x) / std::max(room.width, 1e-9), 0.0, 1.0),
            std::clamp((view.y - room.y) / std::max(room.height, 1e-9), 0.0, 1.0)};
}

ZPositionEditor::Hit ZPositionEditor::hitTest(ZPoint point) const
{
    // The markers lie above the outline's corners, the source above the microphone.
    if (distance(point, ToView(shown_.sourceX, shown_.sourceY)) <= kGrabRadius)
        return {Target::Source, 0};
    if (distance(point, ToView(shown_.microphoneX, shown_.microphoneY)) <= kGrabRadius)
        return {Target::Microphone, 0};
    for (size_t i = 0; i < outline_.size(); ++i)
        if (distance(point, ToView(outline_[i].x, outline_[i].y)) <= kGrabRadius * 0.7)
            return {Target::Corner, i};
    return {};
}

// ---- input ----

bool ZPositionEditor::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button == ZMouseButton::Right) {
        showMenu(event.position);
        return false;
    }
    if (event.button != ZMouseButton::Left)
        return false;
    if (event.clickCount == 2) {
        toggleCorner(event.position);
        return false;
    }
    drag_ = hitTest(event.position);
    if (drag_.target == Target::None)
        return false;
    if (drag_.target == Target::Source) {
        sourceX_->BeginEdit();
        sourceY_->BeginEdit();
    }
    moveTo(event.position);
    return true;
}

void ZPositionEditor::OnMouseDrag(const ZMouseEvent& event) { moveTo(event.position); }

void ZPositionEditor::OnMouseUp(const ZMouseEvent& event)
{
    moveTo(event.position);
    endDrag();
}

void ZPositionEditor::OnCaptureLost() { endDrag(); }

void ZPositionEditor::endDrag()
{
    if (drag_.target == Target::Source) {
        sourceX_->EndEdit();
        sourceY_->EndEdit();
    }
    drag_ = {};
    Invalidate();
}

void ZPositionEditor::moveTo(ZPoint point)
{
    const ZPoint plan = ToPlan(point);
    switch (drag_.target) {
    case Target::Source:
        sourceX_->SetValue(plan.x);
        sourceY_->SetValue(plan.y);
        break;
    case Target::Microphone:
        effect_.SetMicrophonePosition(plan.x, plan.y);
        break;
    case Target::Corner:
        outline_[drag_.corner] = {plan.x, plan.y};
        effect_.SetRoomOutline(outline_);
        break;
    case Target::None:
        return;
    }
    shown_ = take();
    Invalidate();
}

void ZPositionEditor::toggleCorner(ZPoint point)
{
    const Hit hit = hitTest(point);
    if (hit.target == Target::Corner) {
        if (outline_.size() > ZRoomOutline::kMinPoints)
            outline_.erase(outline_.begin() + static_cast<std::ptrdiff_t>(hit.corner));
    } else if (outline_.size() < ZRoomOutline::kMaxPoints) {
        for (size_t i = 0; i < outline_.size(); ++i) {
            const auto& a = outline_[i];
            const auto& b = outline_[(i + 1) % outline_.size()];
            double along = 0.0;
            if (segmentDistance(point, ToView(a.x, a.y), ToView(b.x, b.y), along) <= kEdgeDistance) {
                outline_.insert(outline_.begin() + static_cast<std::ptrdiff_t>(i + 1),
                                {a.x + along * (b.x - a.x), a.y + along * (b.y - a.y)});
                break;
            }
        }
    }
    effect_.SetRoomOutline(outline_);
    Invalidate();
}

void ZPositionEditor::showMenu(ZPoint at)
{
    ZMenuItem reset;
    reset.text = "Reset room outline";
    reset.enabled = outline_ != ZRoomOutline::Rectangle();
    reset.action = [this] {
        outline_ = ZRoomOutline::Rectangle();
        effect_.SetRoomOutline(outline_);
        Invalidate();
    };
    ZMenuItem centre;
    centre.text = "Source to the centre";
    centre.action = [this] {
        SetValueAsGesture(*sourceX_, 0.5);
        SetValueAsGesture(*sourceY_, 0.5);
    };
    ZPopupMenu::Show(*root(), {std::move(reset), std::move(centre)}, {at.x, at.y, 1, 1});
}

void ZPositionEditor::OnMouseMove(const ZMouseEvent& event)
{
    const Hit hit = hitTest(event.position);
    if (hit.target != hover_.target || hit.corner != hover_.corner) {
        hover_ = hit;
        Invalidate();
    }
}

void ZPositionEditor::OnMouseLeave()
{
    hover_ = {};
    Invalidate();
}

ZCursor ZPositionEditor::Cursor() const
{
    const Target target = drag_.target != Target::None ? drag_.target : hover_.target;
    return target == Target::None ? ZCursor::Crosshair : ZCursor::Move;
}

void ZPositionEditor::Refresh()
{
    if (drag_.target == Target::None && ++refreshes_ >= kOutlinePollTicks) {
        refreshes_ = 0;
        auto outline = effect_.RoomOutline(); // a loaded state or slot may bring another
        if (outline != outline_) {
            outline_ = std::move(outline);
            Invalidate();
        }
    }
    const Snapshot now = take();
    if (!(now == shown_)) {
        shown_ = now;
        Invalidate();
    }
}

// ---- drawing ----

void ZPositionEditor::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.background);
    const ZRect room = RoomRect();
    paintGrid(canvas, room);
    paintOutline(canvas);
    paintMarkers(canvas);
    paintLegend(canvas);
}

void ZPositionEditor::paintGrid(ZCanvas& canvas, const ZRect& room) const
{
    const ZTheme& theme = root()->theme();
    const double length = shown_.size * ZReverbParameters::kMetresPerSecond;
    const double step = gridStep(length);
    const double pixelsPerMetre = room.height / std::max(length, 1e-9);
    const ZColor line = theme.panelBorder;
    for (double m = step; m * pixelsPerMetre < room.width - 0.5; m += step)
        canvas.Line({room.x + m * pixelsPerMetre, room.y}, {room.x + m * pixelsPerMetre, room.bottom()}, line, 1);
    for (double m = step; m * pixelsPerMetre < room.height - 0.5; m += step)
        canvas.Line({room.x, room.y + m * pixelsPerMetre}, {room.right(), room.y + m * pixelsPerMetre}, line, 1);
    canvas.StrokeRect(room, theme.track, theme.lineWidth);
}

void ZPositionEditor::paintOutline(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    std::vector<ZPoint> points;
    for (const auto& p : outline_)
        points.push_back(ToView(p.x, p.y));
    canvas.FillPolygon(points, theme.accent.withAlpha(0.08));
    canvas.StrokePolyline(points, theme.textDim, 1.5, true);
    for (size_t i = 0; i < points.size(); ++i) {
        const bool active = (hover_.target == Target::Corner && hover_.corner == i) ||
                            (drag_.target == Target::Corner && drag_.corner == i);
        const double half = active ? 4.0 : 3.0;
        canvas.FillRect({points[i].x - half, points[i].y - half, 2 * half, 2 * half},
                        active ? theme.text : theme.textDim);
    }
}

void ZPositionEditor::paintMarkers(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const ZPoint source = ToView(shown_.sourceX, shown_.sourceY);
    const ZPoint microphone = ToView(shown_.microphoneX, shown_.microphoneY);
    canvas.Line(source, microphone, theme.textDim.withAlpha(0.5), 1);
    // The source radiates: a disc with two rings.
    for (double ring : {13.0, 9.5})
        canvas.StrokeCircle(source, ring, theme.source.withAlpha(ring > 10 ? 0.3 : 0.55), 1.2);
    canvas.FillCircle(source, 6.0, theme.source);
    // The microphone: a capsule on a short stand.
    const bool micActive = hover_.target == Target::Microphone || drag_.target == Target::Microphone;
    canvas.Line({microphone.x, microphone.y + 2}, {microphone.x, microphone.y + 9}, theme.microphone, 2);
    canvas.FillRoundedRect({microphone.x - 4.5, microphone.y - 8, 9, 12}, 4.5, theme.microphone);
    if (micActive)
        canvas.StrokeCircle(microphone, 11.0, theme.microphone.withAlpha(0.6), 1.2);
    if (hover_.target == Target::Source || drag_.target == Target::Source)
        canvas.StrokeCircle(source, 16.5, theme.source.withAlpha(0.6), 1.2);
}

void ZPositionEditor::paintLegend(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const ZRect& b = bounds();
    const ZRect row{b.x + 10, b.bottom() - kLegendHeight - 4, b.width - 20, kLegendHeight};
    const ZTextStyle label = theme.Label();
    double x = row.x;
    canvas.FillCircle({x + 5, row.y + row.height / 2}, 4.5, theme.source);
    x += 14;
    x += canvas.DrawTextInRect("Source", {x, row.y, 80, row.height}, label) + 14;
    canvas.FillRoundedRect({x + 1, row.y + row.height / 2 - 5.5, 8, 11}, 4, theme.microphone);
    x += 14;
    canvas.DrawTextInRect("Microphone", {x, row.y, 100, row.height}, label);
    canvas.DrawTextInRect(Text(), row, theme.Value(), ZTextAlign::Right);
}

} // namespace halvern
