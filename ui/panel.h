#pragma once

// ZPanel: a titled group of controls. The title strip may carry a control of its own
// (a switch that turns the whole group on); the body is a grid of equal cells filled row
// by row. Its name is its title followed by " panel".

#include "ui/grid_layout.h"
#include "ui/theme.h"
#include "ui/view.h"

#include <string>

namespace halvern {

class ZPanel : public ZView {
public:
    static constexpr double kTitleHeight = 26.0;

    ZPanel(std::string title, int columns);

    std::string Text() const override { return title_; }
    // Adds a control to the next cell of the body.
    template <class View>
    View* Add(std::unique_ptr<View> control)
    {
        return body_->AddChild(std::move(control));
    }
    // A control shown at the right of the title strip; the panel owns it.
    void SetTitleControl(std::unique_ptr<ZView> control);
    ZView* titleControl() const { return titleControl_; }
    ZGridLayout& body() const { return *body_; }
    void Layout() override;
    // A panel's face: the rounded box, its title strip and the title, cut where
    // titleRight begins. Views that look like panels draw with it.
    static void PaintFace(ZCanvas& canvas, const ZTheme& theme, const ZRect& bounds, const std::string& title,
                          double titleRight, double titleHeight = kTitleHeight);

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string title_;
    ZGridLayout* body_;
    ZView* titleControl_ = nullptr;
};

} // namespace halvern
