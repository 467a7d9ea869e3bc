#include "ui/panel.h"

#include "ui/ui_root.h"

#include <cmath>

namespace halvern {

ZPanel::ZPanel(std::string title, int columns) : title_(std::move(title))
{
    SetName(title_ + " panel");
    body_ = AddChild(std::make_unique<ZGridLayout>(columns));
}

void ZPanel::SetTitleControl(std::unique_ptr<ZView> control)
{
    titleControl_ = AddChild(std::move(control));
    Layout();
}

void ZPanel::Layout()
{
    const ZUIRoot* owner = root();
    const double padding = owner != nullptr ? owner->theme().padding : 10.0;
    const double row = owner != nullptr ? owner->theme().rowHeight : 22.0;
    const ZRect& b = bounds();
    body_->SetBounds({b.x + padding, b.y + kTitleHeight + padding / 2, b.width - 2 * padding,
                      b.height - kTitleHeight - padding * 1.5});
    // The title's control gets a compact cell: room for a switch's pill, not its name,
    // which the title already shows.
    if (titleControl_ != nullptr)
        titleControl_->SetBounds({std::round(b.right() - 2 * row - padding), std::round(b.y + (kTitleHeight - row + 4) / 2),
                                  2 * row, row - 4});
}

void ZPanel::PaintFace(ZCanvas& canvas, const ZTheme& theme, const ZRect& b, const std::string& title,
                       double titleRight, double titleHeight)
{
    canvas.FillRoundedRect(b, theme.radius, theme.panel);
    canvas.Save();
    canvas.ClipTo({b.x, b.y, b.width, titleHeight});
    canvas.FillRoundedRect({b.x, b.y, b.width, titleHeight + theme.radius * 2}, theme.radius, theme.header);
    canvas.Restore();
    canvas.StrokeRoundedRect(b, theme.radius, theme.panelBorder, theme.lineWidth);
    canvas.DrawTextInRect(title, {b.x + theme.padding, b.y, titleRight - b.x - theme.padding, titleHeight},
                          theme.Title());
}

void ZPanel::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const double right = titleControl_ != nullptr ? titleControl_->bounds().x - 6 : bounds().right() - theme.padding;
    PaintFace(canvas, theme, bounds(), title_, right);
}

} // namespace halvern
