#include "editor/abcd_editor.h"

#include "editor/host_parameter_binding.h"
#include "state/abcd_morph.h"
#include "ui/controls/label.h"
#include "ui/controls/xy_pad.h"
#include "ui/markup/markup_view.h"
#include "ui/ui_root.h"

namespace halvern {
namespace {

constexpr double kPadSize = 232.0;
constexpr double kCornerMargin = 22.0; // room for the corner letters around the pad
constexpr const char* kAbout =
    "<p>Drag the point to blend the four slots A, B, C and D: each corner is one slot, and every automatable "
    "parameter takes the mix of its values in the four slots at the point's position.</p>"
    "<p>The blend goes into the live slot. Set up A to D first, then switch to a slot from E to H and morph "
    "there, so the four corners stay as they are.</p>";

// One of the pad's axes: a host parameter whose every change also blends at once.
class MorphAxisBinding : public ZHostParameterBinding {
public:
    MorphAxisBinding(ZQuessaneAudioEffectPlugin& core, ZEditorHost& host, int axis)
        : ZHostParameterBinding(core, host, core.morphParameterIndex(axis)), core_(core)
    {
    }
    void SetValue(double normalized) override
    {
        ZHostParameterBinding::SetValue(normalized);
        core_.MoveMorph(core_.GetParameter(core_.morphParameterIndex(0)), core_.GetParameter(core_.morphParameterIndex(1)));
    }

private:
    ZQuessaneAudioEffectPlugin& core_;
};

// The pad's vertical axis runs downward (C and D at the bottom), the control's upward.
class FlippedBinding : public ZParameterBinding {
public:
    explicit FlippedBinding(std::shared_ptr<ZParameterBinding> inner) : inner_(std::move(inner)) {}
    std::string Name() const override { return inner_->Name(); }
    std::string HelpText() const override { return inner_->HelpText(); }
    double Value() const override { return 1.0 - inner_->Value(); }
    double DefaultValue() const override { return 1.0 - inner_->DefaultValue(); }
    int StepCount() const override { return inner_->StepCount(); }
    std::string DisplayText(double normalized) const override { return inner_->DisplayText(1.0 - normalized); }
    std::optional<double> Parse(const std::string& text) const override
    {
        const std::optional<double> parsed = inner_->Parse(text);
        return parsed ? std::optional<double>(1.0 - *parsed) : std::nullopt;
    }
    void BeginEdit() override { inner_->BeginEdit(); }
    void SetValue(double normalized) override { inner_->SetValue(1.0 - normalized); }
    void EndEdit() override { inner_->EndEdit(); }

private:
    std::shared_ptr<ZParameterBinding> inner_;
};

} // namespace

// The pad asks the editor before a press may move it.
class ABCDEditor::MorphPad : public ZXYPad {
public:
    MorphPad(ABCDEditor& owner, std::shared_ptr<ZParameterBinding> x, std::shared_ptr<ZParameterBinding> y)
        : ZXYPad(std::move(x), std::move(y)), owner_(owner)
    {
    }
    bool OnMouseDown(const ZMouseEvent& event) override { return owner_.mayMorph() && ZXYPad::OnMouseDown(event); }

private:
    ABCDEditor& owner_;
};

ABCDEditor::ABCDEditor(ZQuessaneAudioEffectPlugin& core, ZEditorHost& host, std::function<void(int)> selectSlot,
                       std::unique_ptr<ZView> agc, Asker ask)
    : core_(core), selectSlot_(std::move(selectSlot)), ask_(std::move(ask))
{
    SetName("ABCDEditor");
    pad_ = AddChild(std::make_unique<MorphPad>(*this, std::make_shared<MorphAxisBinding>(core, host, 0),
                                               std::make_shared<FlippedBinding>(std::make_shared<MorphAxisBinding>(core, host, 1))));
    pad_->SetName("MorphPad");
    pad_->SetHelpText("Drag to blend slots A, B, C and D; double-click to go back to A.");
    about_ = AddChild(std::make_unique<ZMarkupView>(kAbout));
    position_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Value));
    position_->SetName("MorphPosition");
    agc_ = AddChild(std::move(agc));
    agcLabel_ = AddChild(std::make_unique<ZLabel>("AGC", ZLabelStyle::Text));
    agcLabel_->SetHelpText(agc_->HelpText());
}

int ABCDEditor::SlotOutsideSquare() { return ZABCDMorph::kCorners; } // slot E

std::string ABCDEditor::Question() const
{
    const std::string warning = core_.MorphWarning();
    if (warning.empty())
        return {};
    return warning + "\n\nDo you want to select slot " + std::string(1, ZStateSlots::Letter(SlotOutsideSquare())) +
           " and morph there instead?";
}

bool ABCDEditor::mayMorph()
{
    const int live = core_.slots().live();
    const std::string question = Question();
    if (question.empty() || live == confirmedSlot_ || !ask_)
        return true;
    const std::string other(1, ZStateSlots::Letter(SlotOutsideSquare()));
    const std::string here(1, ZStateSlots::Letter(live));
    ask_(question, {"Select slot " + other, "Morph in slot " + here, "Cancel"}, [this, live](int answer) {
        if (answer == 0)
            selectSlot_(SlotOutsideSquare());
        else if (answer == 1)
            confirmedSlot_ = live;
    });
    return false;
}

void ABCDEditor::Layout()
{
    const ZRect& b = bounds();
    const double top = b.y + (b.height - kPadSize) / 2;
    pad_->SetBounds({b.x + 20 + kCornerMargin, top, kPadSize, kPadSize});
    const double textX = pad_->bounds().right() + kCornerMargin + 30;
    about_->SetBounds({textX, top, 460, 120});
    position_->SetBounds({textX, top + 130, 460, 20});
    agcLabel_->SetBounds({textX, top + 170, 40, 20});
    agc_->SetBounds({textX + 44, top + 170, 40, 20});
}

void ABCDEditor::Refresh()
{
    const std::string text = "Position  " + pad_->Text() + "   \u00B7   live slot " +
                             std::string(1, ZStateSlots::Letter(core_.slots().live()));
    if (text != position_->Text())
        position_->SetText(text);
    if (core_.slots().live() != shownLive_) {
        shownLive_ = core_.slots().live();
        Invalidate();
    }
}

// The corner letters, the live slot's lit.
void ABCDEditor::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& pad = pad_->bounds();
    const double r = 9.0;
    const ZPoint corners[ZABCDMorph::kCorners] = {{pad.x - r - 4, pad.y - r - 4},
                                                  {pad.right() + r + 4, pad.y - r - 4},
                                                  {pad.x - r - 4, pad.bottom() + r + 4},
                                                  {pad.right() + r + 4, pad.bottom() + r + 4}};
    for (int corner = 0; corner < ZABCDMorph::kCorners; ++corner) {
        const bool live = corner == core_.slots().live();
        canvas.FillCircle(corners[corner], r, live ? theme.accent : theme.control);
        ZTextStyle style = theme.Text();
        style.weight = ZFontWeight::SemiBold;
        style.color = live ? theme.accentText : theme.text;
        canvas.DrawTextInRect(std::string(1, ZStateSlots::Letter(corner)),
                              {corners[corner].x - r, corners[corner].y - r, 2 * r, 2 * r}, style, ZTextAlign::Center);
    }
}

} // namespace halvern
