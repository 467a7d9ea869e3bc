#pragma once

// ZButton: a push button with a text. A press and a release over it is a click, which
// runs the click handler; a toggle button flips its checked state first and shows it
// in the accent colour.

#include "ui/view.h"

#include <functional>
#include <string>

namespace halvern {

class ZButton : public ZView {
public:
    explicit ZButton(std::string text, std::function<void()> onClick = {});

    void SetText(std::string text);
    std::string Text() const override { return text_; }
    void SetOnClick(std::function<void()> onClick) { onClick_ = std::move(onClick); }
    // A toggle button keeps a checked state that each click flips.
    void SetToggles(bool toggles) { toggles_ = toggles; }
    void SetChecked(bool checked);
    bool checked() const { return checked_; }
    // A disabled button shows its text dimmed and takes no clicks; it still shows its help.
    void SetEnabled(bool enabled);
    bool enabled() const { return enabled_; }

    // The text's width with the inset either side, a row high.
    ZPoint PreferredSize() const override;
    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void OnMouseEnter() override { Invalidate(); }
    void OnMouseLeave() override { Invalidate(); }
    ZCursor Cursor() const override { return enabled_ ? ZCursor::Hand : ZCursor::Arrow; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    void setPressed(bool pressed);

    std::string text_;
    std::function<void()> onClick_;
    bool toggles_ = false;
    bool checked_ = false;
    bool enabled_ = true;
    bool pressed_ = false; // held down with the pointer over it
};

} // namespace halvern
