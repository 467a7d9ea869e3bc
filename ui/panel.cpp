#include "ui/panel.h"

#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {

namespace {
constexpr double kTitleControlWidth = 44.0;
constexpr double kTitleControlHeight = 18.0;
} // namespace

ZPanel::ZPanel(std::string title, int columns) : title_(std::move(title)), columns_(std::max(1, columns))
{
    SetName(title_ + " panel");
}

void ZPanel::SetTitleControl(std::unique_ptr<ZView> control)
{
    titleControl_ = AddChild(std::move(control));
    Layout();
}

ZRect ZPanel::Body() const
{
    const double padding = root() != nullptr ? root()->theme().padding : 10.0;
    const ZRect& b = bounds();
    return {b.x + padding, b.y + kTitleHeight + padding / 2, b.width - 2 * padding,
            b.height - kTitleHeight - padding * 1.5};
}

void ZPanel::Layout()
{
    const ZRect& b = bounds();
    const ZRect body = Body();
    size_t cell = 0;
    const int rows = [&] {
        int count = 0;
        for (const auto& child : children())
            count += child.get() != titleControl_;
        return std::max(1, (count + columns_ - 1) / columns_);
    }();
    const double cellWidth = body.width / columns_;
    const double cellHeight = body.height / rows;
    for (const auto& child : children()) {
        if (child.get() == titleControl_) {
            child->SetBounds({std::round(b.right() - kTitleControlWidth - 8),
                              std::round(b.y + (kTitleHeight - kTitleControlHeight) / 2), kTitleControlWidth,
                              kTitleControlHeight});
            continue;
        }
        const double column = static_cast<double>(cell % static_cast<size_t>(columns_));
        const double row = static_cast<double>(cell / static_cast<size_t>(columns_));
        child->SetBounds({std::round(body.x + column * cellWidth), std::round(body.y + row * cellHeight),
                          std::floor(cellWidth), std::floor(cellHeight)});
        ++cell;
    }
}

void ZPanel::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& b = bounds();
    canvas.FillRoundedRect(b, theme.radius, theme.panel);
    canvas.Save();
    canvas.ClipTo({b.x, b.y, b.width, kTitleHeight});
    canvas.FillRoundedRect({b.x, b.y, b.width, kTitleHeight + theme.radius * 2}, theme.radius, theme.header);
    canvas.Restore();
    canvas.StrokeRoundedRect(b, theme.radius, theme.panelBorder, theme.lineWidth);
    const double right = titleControl_ != nullptr ? titleControl_->bounds().x - 6 : b.right() - theme.padding;
    canvas.DrawTextInRect(title_, {b.x + theme.padding, b.y, right - b.x - theme.padding, kTitleHeight},
                          theme.Title());
}

} // namespace halvern
