#pragma once

// ZParameterControl: the base of the controls that edit one ZParameterBinding. It gives
// them what they share: the display text and help of the binding, a repaint when the
// value changes from outside (polled on every tick), a drag that is one gesture from
// press to release (a subclass says how far a movement moves the value), the wheel,
// double-click to the default, and the right-click menu (type a value, default, copy,
// paste, and whatever the owner adds).

#include "ui/controls/gesture.h"
#include "ui/controls/popup_menu.h"
#include "ui/parameter_binding.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

struct ZTheme;

class ZParameterControl : public ZView {
public:
    // Adds the owner's items (MIDI learn, ...) to the right-click menu before it opens.
    using MenuExtension = std::function<void(std::vector<ZMenuItem>& items)>;

    explicit ZParameterControl(std::shared_ptr<ZParameterBinding> binding);

    ZParameterBinding& binding() const { return *binding_; }
    const std::shared_ptr<ZParameterBinding>& sharedBinding() const { return binding_; }
    void SetMenuExtension(MenuExtension extension) { menuExtension_ = std::move(extension); }

    // The display text of the current value.
    std::string Text() const override;
    // The view's own help when set, else the binding's.
    std::string HelpText() const override;

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void OnMouseEnter() override { Invalidate(); }
    void OnMouseLeave() override { Invalidate(); }
    // One notch moves a stepped value one step, a continuous one theme.wheelStep (Shift:
    // times theme.fineFactor); each notch is one gesture.
    bool OnWheel(const ZWheelEvent& event) override;
    void Refresh() override;

protected:
    const ZTheme& theme() const;
    double value() const { return binding_->Value(); }
    bool hovered() const;
    // A left press (clickCount 2 for a double click). The default sets the default value
    // on a double click and otherwise starts a drag; controls that act on a click instead
    // answer false (no capture).
    virtual bool OnLeftPress(const ZMouseEvent& event);
    // How much a drag from one point to the next moves the normalised value, before the
    // fine factor; controls that do not drag keep 0.
    virtual double DragChange(ZPoint, ZPoint) const { return 0.0; }
    // Where the text entry opens.
    virtual ZRect TextEntryBounds() const;

private:
    // The right-click menu at a point.
    void openContextMenu(ZPoint at);
    void endDrag();

    std::shared_ptr<ZParameterBinding> binding_;
    ZGesture gesture_;
    MenuExtension menuExtension_;
    double shownValue_;
    double dragValue_ = 0.0; // unsnapped, so stepped values move after enough travel
    ZPoint lastDragPoint_;
};

} // namespace halvern
