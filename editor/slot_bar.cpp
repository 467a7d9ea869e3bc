#include "editor/slot_bar.h"

#include "core/exception_frame.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"
#include "ui/controls/button.h"
#include "ui/ui_root.h"

namespace halvern {
namespace {

constexpr double kSlotWidth = 26.0;
constexpr double kGap = 4.0;
constexpr double kCommandWidth = 52.0;
constexpr int kTicksBetweenChecks = 30; // whether slots hold changes, twice a second

} // namespace

// A slot's button: lit while live, with a dot while it holds changes.
class ZSlotBar::SlotButton : public ZButton {
public:
    using ZButton::ZButton;
    void SetHoldsChanges(bool holds)
    {
        if (holds != holds_) {
            holds_ = holds;
            Invalidate();
        }
    }

protected:
    void PaintSelf(ZCanvas& canvas) override
    {
        ZButton::PaintSelf(canvas);
        if (!holds_)
            return;
        const ZTheme& theme = root()->theme();
        canvas.FillCircle({bounds().center().x, bounds().bottom() - 4}, 1.8, checked() ? theme.accentText : theme.accent);
    }

private:
    bool holds_ = false;
};

ZSlotBar::ZSlotBar(ZQuessaneAudioEffectPlugin& core, ZEditorHost& host, std::function<void(const std::string&)> notify)
    : core_(core), host_(host), notify_(std::move(notify))
{
    SetName("Slots");
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot) {
        const std::string letter(1, ZStateSlots::Letter(slot));
        auto button = std::make_unique<SlotButton>(letter, [this, slot] { Select(slot); });
        button->SetName("Slot" + letter);
        button->SetHelpText("Slot " + letter + ": a complete state of its own. Click to switch to it; the slot "
                            "you leave keeps your changes. A dot marks a slot that differs from the defaults.");
        buttons_[static_cast<size_t>(slot)] = AddChild(std::move(button));
    }
    copy_ = AddChild(std::make_unique<ZButton>("copy", [this] { Copy(); }));
    copy_->SetName("SlotCopy");
    copy_->SetHelpText("Copies the live slot's state to the clipboard.");
    paste_ = AddChild(std::make_unique<ZButton>("paste", [this] { Paste(); }));
    paste_->SetName("SlotPaste");
    paste_->SetHelpText("Replaces the live slot's state by the one on the clipboard.");
    showSlots();
}

void ZSlotBar::Select(int slot)
{
    core_.SelectSlot(slot);
    const int32_t index = core_.slotParameterIndex();
    host_.BeginEdit(index);
    host_.PerformEdit(index, static_cast<double>(slot) / (ZStateSlots::kCount - 1));
    host_.EndEdit(index);
    showSlots();
}

void ZSlotBar::Copy()
{
    if (ZUIRoot* owner = root())
        owner->clipboard().SetText(ZMLDocumentText(*core_.CopyLiveSlot(), ZMLLayout::Compact));
}

void ZSlotBar::Paste()
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    const std::string text = owner->clipboard().Text();
    std::string error;
    try {
        std::unique_ptr<ZMLElement> state = ReadZMLDocument(text);
        if (state->name() != ZQuessaneAudioEffectPlugin::kSlotElement)
            throw ZException("The clipboard holds no slot.");
        core_.PasteIntoLiveSlot(*state);
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    if (!error.empty() && notify_)
        notify_("The slot could not be pasted: " + error);
    showSlots();
}

void ZSlotBar::showSlots()
{
    const std::array<bool, ZStateSlots::kCount> holds = core_.SlotsHoldingChanges();
    const int live = core_.slots().live();
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot) {
        buttons_[static_cast<size_t>(slot)]->SetChecked(slot == live);
        buttons_[static_cast<size_t>(slot)]->SetHoldsChanges(holds[static_cast<size_t>(slot)]);
    }
    shownChanges_ = core_.slotChanges();
    ticksToCheck_ = kTicksBetweenChecks;
}

void ZSlotBar::Refresh()
{
    if (core_.slotChanges() != shownChanges_ || --ticksToCheck_ <= 0)
        showSlots();
}

ZPoint ZSlotBar::PreferredSize() const
{
    return {ZStateSlots::kCount * (kSlotWidth + kGap) + 2 * (kCommandWidth + kGap), 24.0};
}

void ZSlotBar::Layout()
{
    const ZRect& b = bounds();
    double x = b.x;
    for (SlotButton* button : buttons_) {
        button->SetBounds({x, b.y, kSlotWidth, b.height});
        x += kSlotWidth + kGap;
    }
    x += kGap;
    for (ZButton* command : {copy_, paste_}) {
        command->SetBounds({x, b.y, kCommandWidth, b.height});
        x += kCommandWidth + kGap;
    }
}

} // namespace halvern
