#include "ui/view.h"

#include "ui/ui_root.h"

namespace halvern {

ZView::~ZView()
{
    // Children go first, each telling the root to forget it; then this view.
    children_.clear();
    if (ZUIRoot* owner = root())
        owner->Forget(this);
}

void ZView::adopt(std::unique_ptr<ZView> child)
{
    child->parent_ = this;
    children_.push_back(std::move(child));
}

void ZView::ClearChildren()
{
    Invalidate();
    children_.clear();
}

std::unique_ptr<ZView> ZView::TakeChild(ZView* child)
{
    for (auto it = children_.begin(); it != children_.end(); ++it) {
        if (it->get() != child)
            continue;
        Invalidate();
        std::unique_ptr<ZView> taken = std::move(*it);
        children_.erase(it);
        taken->parent_ = nullptr;
        return taken;
    }
    return nullptr;
}

bool ZView::Contains(const ZView* view) const
{
    for (; view != nullptr; view = view->parent_)
        if (view == this)
            return true;
    return false;
}

ZUIRoot* ZView::root() const
{
    const ZView* top = this;
    while (top->parent_ != nullptr)
        top = top->parent_;
    return top->rootOfTree_;
}

ZView* ZView::FindByName(const std::string& name)
{
    if (name_ == name)
        return this;
    for (const auto& child : children_)
        if (ZView* found = child->FindByName(name))
            return found;
    return nullptr;
}

void ZView::SetBounds(const ZRect& bounds)
{
    Invalidate();
    bounds_ = bounds;
    Layout();
    Invalidate();
}

void ZView::SetVisible(bool visible)
{
    if (visible_ == visible)
        return;
    visible_ = visible;
    if (ZUIRoot* owner = root())
        owner->Invalidate(bounds_);
}

void ZView::Invalidate()
{
    if (!visible_)
        return;
    if (ZUIRoot* owner = root())
        owner->Invalidate(bounds_);
}

void ZView::Paint(ZCanvas& canvas, const ZRect& clip)
{
    if (!visible_ || !bounds_.intersects(clip))
        return;
    PaintSelf(canvas);
    if (clipsChildren_) {
        canvas.Save();
        canvas.ClipTo(bounds_);
    }
    const ZRect childClip = clipsChildren_ ? clip.intersection(bounds_) : clip;
    for (const auto& child : children_)
        child->Paint(canvas, childClip);
    if (clipsChildren_)
        canvas.Restore();
    PaintOver(canvas);
}

ZView* ZView::HitTest(ZPoint point)
{
    if (!visible_ || (clipsChildren_ && !bounds_.contains(point)))
        return nullptr;
    // Later children are drawn above earlier ones, so they are asked first.
    for (auto it = children_.rbegin(); it != children_.rend(); ++it)
        if (ZView* hit = (*it)->HitTest(point))
            return hit;
    return AcceptsMouse() && bounds_.contains(point) ? this : nullptr;
}

void ZView::RefreshTree()
{
    if (!visible_)
        return;
    Refresh();
    for (const auto& child : children_)
        child->RefreshTree();
}

} // namespace halvern
