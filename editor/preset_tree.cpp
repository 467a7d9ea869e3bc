#include "editor/preset_tree.h"

#include "ui/controls/scroll_indicator.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {

namespace {

constexpr double kIndent = 18.0;         // per level of depth
constexpr double kTriangle = 4.5;        // half the disclosure triangle's width
constexpr std::string_view kReadOnly = "read-only";

} // namespace

void ZPresetTree::SetNodes(std::vector<ZPresetNode> nodes)
{
    const ZPresetNode* was = selectedNode();
    const std::string key = was != nullptr ? was->key : std::string();
    const ZPresetNode::Kind kind = was != nullptr ? was->kind : ZPresetNode::Kind::Preset;
    const bool hadSelection = was != nullptr;
    nodes_ = std::move(nodes);
    selected_ = hadSelection ? RowOf(key, kind) : -1;
    scrollTo(offset_);
    Invalidate();
}

const ZPresetNode* ZPresetTree::selectedNode() const
{
    return selected_ >= 0 && selected_ < static_cast<int>(nodes_.size()) ? &nodes_[static_cast<size_t>(selected_)]
                                                                          : nullptr;
}

int ZPresetTree::RowOf(const std::string& key, ZPresetNode::Kind kind) const
{
    for (size_t row = 0; row < nodes_.size(); ++row)
        if (nodes_[row].key == key && nodes_[row].kind == kind)
            return static_cast<int>(row);
    return -1;
}

void ZPresetTree::Select(int row)
{
    selected_ = row >= 0 && row < static_cast<int>(nodes_.size()) ? row : -1;
    if (selected_ >= 0 && root() != nullptr) {
        const double top = selected_ * rowHeight();
        if (top < offset_)
            scrollTo(top);
        else if (top + rowHeight() > offset_ + bounds().height)
            scrollTo(top + rowHeight() - bounds().height);
    }
    Invalidate();
}

std::string ZPresetTree::Text() const
{
    const ZPresetNode* node = selectedNode();
    return node != nullptr ? node->name : std::string();
}

double ZPresetTree::rowHeight() const { return root()->theme().rowHeight; }

double ZPresetTree::indent(int depth) const { return root()->theme().textInset + depth * kIndent; }

ZRect ZPresetTree::RowRect(int row) const
{
    return {bounds().x, bounds().y + row * rowHeight() - offset_, bounds().width, rowHeight()};
}

ZRect ZPresetTree::toggleRect(int row) const
{
    const ZRect rect = RowRect(row);
    return {rect.x + indent(nodes_[static_cast<size_t>(row)].depth), rect.y, kIndent, rect.height};
}

int ZPresetTree::RowAt(ZPoint point) const
{
    if (!bounds().contains(point))
        return -1;
    const int row = static_cast<int>(std::floor((point.y - bounds().y + offset_) / rowHeight()));
    return row < static_cast<int>(nodes_.size()) ? row : -1;
}

void ZPresetTree::scrollTo(double offset)
{
    if (root() == nullptr)
        return;
    const double clamped =
        std::clamp(offset, 0.0, MaxScrollOffset(static_cast<double>(nodes_.size()) * rowHeight(), bounds().height));
    if (clamped == offset_)
        return;
    offset_ = clamped;
    Invalidate();
}

bool ZPresetTree::OnMouseDown(const ZMouseEvent& event)
{
    const int row = RowAt(event.position);
    if (event.button != ZMouseButton::Left || row < 0)
        return false;
    Select(row);
    if (onSelect_)
        onSelect_(row);
    const ZPresetNode& node = nodes_[static_cast<size_t>(row)];
    const bool onToggle = node.isContainer() && toggleRect(row).contains(event.position);
    if (node.isContainer() && (onToggle || event.clickCount == 2)) {
        if (onToggle_)
            onToggle_(row);
    } else if (event.clickCount == 2 && onActivate_) {
        onActivate_(row);
    }
    return false;
}

bool ZPresetTree::OnWheel(const ZWheelEvent& event)
{
    if (MaxScrollOffset(static_cast<double>(nodes_.size()) * rowHeight(), bounds().height) == 0.0)
        return false;
    scrollTo(offset_ - event.steps * root()->theme().wheelScroll);
    return true;
}

void ZPresetTree::paintRow(ZCanvas& canvas, int row)
{
    const ZTheme& theme = root()->theme();
    const ZPresetNode& node = nodes_[static_cast<size_t>(row)];
    const ZRect rect = RowRect(row);
    if (row == selected_)
        canvas.FillRect(rect, theme.highlight);
    const ZRect toggle = toggleRect(row);
    if (node.isContainer()) {
        const ZPoint c = toggle.center();
        const double t = kTriangle;
        canvas.FillPolygon(node.expanded ? std::vector<ZPoint>{{c.x - t, c.y - t / 2}, {c.x + t, c.y - t / 2}, {c.x, c.y + t}}
                                         : std::vector<ZPoint>{{c.x - t / 2, c.y - t}, {c.x + t, c.y}, {c.x - t / 2, c.y + t}},
                           theme.textDim);
    }
    ZTextStyle style = node.kind == ZPresetNode::Kind::Branch ? theme.Title() : theme.Text();
    if (node.current) {
        style.weight = ZFontWeight::SemiBold;
        if (row != selected_)
            style.color = theme.accent; // on the highlight, the text colour reads better
    }
    const double x = toggle.right();
    const ZRect text{x, rect.y, rect.right() - theme.textInset - x, rect.height};
    const double drawn = canvas.DrawTextInRect(node.name, text, style);
    if (node.kind == ZPresetNode::Kind::Branch && node.factory)
        canvas.DrawTextInRect(std::string(kReadOnly), {x + drawn + theme.spacing, rect.y, text.width - drawn, rect.height},
                              theme.Label());
}

void ZPresetTree::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.background);
    canvas.Save();
    canvas.ClipTo(bounds());
    const int first = static_cast<int>(offset_ / rowHeight());
    for (int row = first; row < static_cast<int>(nodes_.size()) && RowRect(row).y < bounds().bottom(); ++row)
        paintRow(canvas, row);
    PaintScrollIndicator(canvas, theme, bounds(), static_cast<double>(nodes_.size()) * rowHeight(), offset_);
    canvas.Restore();
    canvas.StrokeRoundedRect(bounds(), theme.radius, theme.panelBorder, theme.lineWidth);
}

} // namespace halvern
