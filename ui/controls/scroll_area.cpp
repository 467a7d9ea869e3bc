#include "ui/controls/scroll_area.h"

#include "ui/controls/scroll_indicator.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {

ZScrollArea::ZScrollArea()
{
    SetClipsChildren(true);
}

void ZScrollArea::SetContentHeight(double height)
{
    contentHeight_ = height;
    Layout();
}

double ZScrollArea::contentHeight() const
{
    if (contentHeight_ > 0.0)
        return contentHeight_;
    const ZView* view = content();
    const double preferred = view ? view->PreferredSize().y : 0.0;
    return preferred > 0.0 ? preferred : bounds().height;
}

double ZScrollArea::maxOffset() const
{
    return MaxScrollOffset(contentHeight(), bounds().height);
}

void ZScrollArea::Layout()
{
    ZView* view = content();
    if (!view)
        return;
    offset_ = std::clamp(offset_, 0.0, maxOffset());
    const ZUIRoot* r = root();
    const double bar = maxOffset() > 0.0 && r ? r->theme().scrollBarWidth : 0.0;
    view->SetBounds({bounds().x, bounds().y - offset_, std::max(0.0, bounds().width - bar), contentHeight()});
}

void ZScrollArea::ScrollTo(double offset)
{
    const double clamped = std::clamp(offset, 0.0, maxOffset());
    if (clamped == offset_)
        return;
    offset_ = clamped;
    Layout();
    Invalidate();
}

bool ZScrollArea::OnWheel(const ZWheelEvent& event)
{
    if (maxOffset() == 0.0)
        return false;
    ScrollTo(offset_ - event.steps * root()->theme().wheelScroll);
    return true;
}

void ZScrollArea::PaintOver(ZCanvas& canvas)
{
    PaintScrollIndicator(canvas, root()->theme(), bounds(), contentHeight(), offset_);
}

} // namespace halvern
