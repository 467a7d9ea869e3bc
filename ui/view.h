#pragma once

// ZView: the base of everything the toolkit draws. A view has bounds in the root's
// logical coordinates (absolute, not relative to its parent), children drawn above it,
// and virtual handlers for input. Views poll what they show in Refresh, which the root
// calls on every timer tick, and mark themselves dirty when it changed.

#include "ui/canvas.h"
#include "ui/events.h"

#include <memory>
#include <string>
#include <vector>

namespace halvern {

class ZUIRoot;

class ZView {
public:
    ZView() = default;
    virtual ~ZView();
    ZView(const ZView&) = delete;
    ZView& operator=(const ZView&) = delete;

    // ---- identity (tests and the style file find views by it) ----
    void SetName(std::string name) { name_ = std::move(name); }
    const std::string& name() const { return name_; }
    // The text the view shows to the user (a control's display text, a label's text).
    virtual std::string Text() const { return {}; }

    // ---- tree ----
    template <class View>
    View* AddChild(std::unique_ptr<View> child)
    {
        View* raw = child.get();
        adopt(std::move(child));
        return raw;
    }
    // Removes and destroys every child.
    void ClearChildren();
    // Takes a child out of the tree and hands it over (null when it is not a child).
    // Give it to ZUIRoot::Dispose when it may be in the middle of handling an event.
    std::unique_ptr<ZView> TakeChild(ZView* child);
    const std::vector<std::unique_ptr<ZView>>& children() const { return children_; }
    ZView* parent() const { return parent_; }
    // The root this view is shown in, or null while it is not attached to one.
    ZUIRoot* root() const;
    // Depth-first search by name; null when there is none.
    ZView* FindByName(const std::string& name);
    // Whether view is this view or one of its descendants.
    bool Contains(const ZView* view) const;

    // ---- geometry ----
    // Sets the bounds and lays the children out again.
    void SetBounds(const ZRect& bounds);
    const ZRect& bounds() const { return bounds_; }
    // Places the children inside the bounds; the default leaves them where they are.
    virtual void Layout() {}
    // The size this view would like (0 for "whatever it is given").
    virtual ZPoint PreferredSize() const { return {}; }
    void SetVisible(bool visible);
    bool visible() const { return visible_; }
    // Children are drawn clipped to this view's bounds (a scroll area's viewport).
    void SetClipsChildren(bool clips) { clipsChildren_ = clips; }

    // ---- drawing ----
    // Paints this view and its children where they meet the clip rectangle.
    void Paint(ZCanvas& canvas, const ZRect& clip);
    // Marks the view's bounds dirty in its root.
    void Invalidate();

    // ---- input ----
    // The deepest visible view under the point that takes the mouse, or null.
    ZView* HitTest(ZPoint point);
    virtual bool AcceptsMouse() const { return false; }
    // A press on this view; true takes the mouse until release (capture).
    virtual bool OnMouseDown(const ZMouseEvent&) { return false; }
    virtual void OnMouseDrag(const ZMouseEvent&) {}
    virtual void OnMouseUp(const ZMouseEvent&) {}
    // The capture ends without a release (the editor closes, a popup takes over).
    virtual void OnCaptureLost() {}
    virtual void OnMouseMove(const ZMouseEvent&) {}
    virtual void OnMouseEnter() {}
    virtual void OnMouseLeave() {}
    virtual bool OnWheel(const ZWheelEvent&) { return false; }
    virtual bool AcceptsFocus() const { return false; }
    virtual bool OnKey(const ZKeyEvent&) { return false; }
    virtual void OnFocusChanged(bool /*focused*/) {}
    virtual ZCursor Cursor() const { return ZCursor::Arrow; }
    // Help text in markup, shown as a tooltip and in the help panel; empty for none.
    virtual std::string HelpText() const { return helpText_; }
    void SetHelpText(std::string help) { helpText_ = std::move(help); }

    // ---- timer ----
    // Called on every timer tick for every visible view: poll the model, Invalidate on change.
    virtual void Refresh() {}
    // Calls Refresh on this view and its visible children.
    void RefreshTree();

protected:
    virtual void PaintSelf(ZCanvas&) {}
    // Drawn after the children (focus rings, overlays of a control group).
    virtual void PaintOver(ZCanvas&) {}

private:
    friend class ZUIRoot;
    void adopt(std::unique_ptr<ZView> child);

    std::string name_;
    std::string helpText_;
    ZRect bounds_;
    bool visible_ = true;
    bool clipsChildren_ = false;
    ZView* parent_ = nullptr;
    ZUIRoot* rootOfTree_ = nullptr; // set on the top view only
    std::vector<std::unique_ptr<ZView>> children_;
};

} // namespace halvern
