#pragma once

// The compact strips of the modulator overview: one per LFO (its name, enable switch,
// a trace of its output over the last two seconds, frequency and amount) and one per
// MultiParameter (its name, value, mode and state). A click on a strip's name opens the
// modulator's editor; a right click opens its menu.

#include "editor/modulator_editor_context.h"
#include "ui/controls/button.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

// A modulator's name as a button: left click opens, right click shows the menu.
class ZModulatorButton : public ZButton {
public:
    ZModulatorButton(std::string text, std::function<void()> open, std::function<void(ZRect)> menu);
    bool OnMouseDown(const ZMouseEvent& event) override;

private:
    std::function<void(ZRect)> menu_;
};

// A modulator's output over time, -1 at the bottom to +1 at the top, newest at the right.
class ZLiveTrace : public ZView {
public:
    static constexpr size_t kLength = 120; // two seconds of ticks

    explicit ZLiveTrace(std::function<double()> source);
    std::string Text() const override;
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::function<double()> source_;
    std::vector<double> values_ = std::vector<double>(kLength, 0.0);
    size_t next_ = 0;
};

class ZLFOStrip : public ZView {
public:
    ZLFOStrip(ZModulatorEditorContext& context, int index, std::unique_ptr<ZView> enable,
              std::unique_ptr<ZView> frequency, std::unique_ptr<ZView> amount, std::function<void()> open,
              std::function<void(ZRect)> menu);
    std::string Text() const override { return title_; }
    void Layout() override;
    // Marks the strip whose editor is open.
    void SetSelected(bool selected);

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string title_;
    bool selected_ = false;
    ZView* name_;
    ZView* enable_;
    ZView* trace_;
    ZView* knobs_;
};

class ZMultiParameterStrip : public ZView {
public:
    ZMultiParameterStrip(ZModulatorEditorContext& context, int index, std::unique_ptr<ZView> value,
                         std::function<void()> open, std::function<void(ZRect)> menu);
    std::string Text() const override;
    void Layout() override;
    void Refresh() override;
    void SetSelected(bool selected);

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string stateText() const;

    ZModulatorEditorContext& context_;
    int index_;
    bool selected_ = false;
    ZButton* name_;
    ZView* value_;
    std::string shownState_;
};

} // namespace halvern
