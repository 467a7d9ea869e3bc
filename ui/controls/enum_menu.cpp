#include "ui/controls/enum_menu.h"

#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {

ZEnumMenu::ZEnumMenu(std::shared_ptr<ZParameterBinding> binding) : ZParameterControl(std::move(binding))
{
}

int ZEnumMenu::stepCount() const
{
    const int steps = binding().StepCount();
    return steps > 0 ? steps : std::max(1, static_cast<int>(binding().ItemNames().size()) - 1);
}

int ZEnumMenu::currentIndex() const
{
    return static_cast<int>(std::lround(std::clamp(value(), 0.0, 1.0) * stepCount()));
}

ZPoint ZEnumMenu::PreferredSize() const
{
    ZUIRoot* r = root();
    if (!r)
        return {};
    const ZTheme& t = r->theme();
    double widest = 0.0;
    for (const std::string& item : binding().ItemNames())
        widest = std::max(widest, r->canvas().TextWidth(item, t.Text()));
    // Text inset on the left, a square arrow column on the right.
    return {t.textInset + widest + t.rowHeight, t.rowHeight};
}

bool ZEnumMenu::OnLeftPress(const ZMouseEvent&)
{
    OpenItems();
    return false;
}

void ZEnumMenu::OpenItems()
{
    ZUIRoot* r = root();
    if (!r)
        return;
    const std::vector<std::string> names = binding().ItemNames();
    const int current = currentIndex();
    const int steps = stepCount();
    const std::shared_ptr<ZParameterBinding> b = sharedBinding();
    std::vector<ZMenuItem> items;
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        ZMenuItem item;
        item.text = names[i];
        item.checked = i == current;
        item.action = [b, i, steps] { ZGesture::SetOnce(*b, static_cast<double>(i) / steps); };
        items.push_back(std::move(item));
    }
    ZPopupMenu::Show(*r, std::move(items), BoxRect(), BoxRect().width);
}

bool ZEnumMenu::showsName() const
{
    const ZTheme& t = theme();
    return bounds().height >= t.rowHeight + 2 * t.labelHeight;
}

ZRect ZEnumMenu::BoxRect() const
{
    if (!showsName())
        return bounds();
    const ZTheme& t = theme();
    const ZRect& b = bounds();
    const double middle = b.y + b.height / 2;
    return {b.x + t.spacing / 2, std::round(middle - t.rowHeight / 2), b.width - t.spacing, t.rowHeight};
}

void ZEnumMenu::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = theme();
    if (showsName())
        canvas.DrawTextInRect(binding().Name(), {bounds().x, bounds().y, bounds().width, t.labelHeight}, t.Label(),
                              ZTextAlign::Center);
    const ZRect box = BoxRect();
    canvas.FillRoundedRect(box, t.radius, hovered() ? t.controlHover : t.control);
    const ZRect arrow{box.right() - t.rowHeight, box.y, t.rowHeight, box.height};
    canvas.DrawTextInRect(Text(), {box.x + t.textInset, box.y, arrow.x - box.x - t.textInset, box.height}, t.Text());
    // A small triangle pointing down, a third of the column wide.
    const ZPoint c = arrow.center();
    const double half = arrow.width / 6;
    canvas.FillPolygon({{c.x - half, c.y - half / 2}, {c.x + half, c.y - half / 2}, {c.x, c.y + half / 2}}, t.textDim);
}

} // namespace halvern
