#include "ui/controls/switch.h"

#include "ui/ui_root.h"

#include <cmath>

namespace halvern {

ZSwitch::ZSwitch(std::shared_ptr<ZParameterBinding> binding) : ZParameterControl(std::move(binding))
{
}

ZPoint ZSwitch::PreferredSize() const
{
    ZUIRoot* r = root();
    if (!r)
        return {};
    const ZTheme& t = r->theme();
    const double nameWidth = r->canvas().TextWidth(binding().Name(), t.Label());
    // Whole units: layouts round edges to them, and a width rounded down would cut the name.
    return {std::ceil(t.switchWidth + t.spacing + nameWidth), t.rowHeight};
}

bool ZSwitch::OnLeftPress(const ZMouseEvent&)
{
    ZGesture::SetOnce(binding(), on() ? 0.0 : 1.0);
    Invalidate();
    return false;
}

ZRect ZSwitch::pillRect() const
{
    const ZTheme& t = theme();
    return {bounds().x, bounds().center().y - t.switchHeight / 2, t.switchWidth, t.switchHeight};
}

void ZSwitch::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = theme();
    const ZRect pill = pillRect();
    const double radius = pill.height / 2;
    const ZColor face = on() ? t.accent : hovered() ? t.controlHover : t.track;
    canvas.FillRoundedRect(pill, radius, face);
    const double thumbRadius = radius - 2 * t.lineWidth;
    const double thumbX = on() ? pill.right() - radius : pill.x + radius;
    canvas.FillCircle({thumbX, pill.center().y}, thumbRadius, on() ? t.accentText : t.textDim);
    const double textX = pill.right() + t.spacing;
    canvas.DrawTextInRect(binding().Name(), {textX, bounds().y, bounds().right() - textX, bounds().height},
                          on() ? t.Text(t.smallFontSize) : t.Label());
}

} // namespace halvern
