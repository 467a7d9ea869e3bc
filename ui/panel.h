#pragma once

// ZPanel: a titled group of controls. The title strip may carry a control of its own
// (a switch that turns the whole group on); the body lays its children out in a grid of
// equal cells, row by row.

#include "ui/view.h"

#include <string>

namespace halvern {

class ZPanel : public ZView {
public:
    static constexpr double kTitleHeight = 26.0;

    ZPanel(std::string title, int columns);

    std::string Text() const override { return title_; }
    // A control shown at the right of the title strip; the panel owns it.
    void SetTitleControl(std::unique_ptr<ZView> control);
    ZView* titleControl() const { return titleControl_; }
    // The area below the title strip, inside the padding.
    ZRect Body() const;
    void Layout() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string title_;
    int columns_;
    ZView* titleControl_ = nullptr;
};

} // namespace halvern
