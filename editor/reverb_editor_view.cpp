#include "editor/reverb_editor_view.h"

#include "editor/abcd_editor.h"
#include "editor/decay_display.h"
#include "editor/editor_toolbar.h"
#include "editor/equalizer_editor.h"
#include "editor/host_parameter_binding.h"
#include "editor/position_editor.h"
#include "editor/preset_selector.h"
#include "editor/preset_window.h"
#include "editor/slot_bar.h"
#include "ui/dialog.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/box_layout.h"
#include "ui/controls/button.h"
#include "ui/controls/switch.h"
#include "ui/grid_layout.h"
#include "ui/level_meter.h"
#include "ui/markup/markup_view.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <map>

namespace halvern {
namespace {

constexpr double kHeaderHeight = 48.0;
constexpr double kToolbarHeight = 36.0;
constexpr int kTicksBeforeUndoStep = 6; // 0.1 s: the update thread's part of a change is done by then
constexpr const char* kHelpHint = "Point at a control to read what it does; right-click it to type a value.";

struct Placement {
    ZRect bounds;
    int columns;
};

// Where each panel stands in the natural 1200 x 840 layout, and its columns: every
// control's cell is at least 88 wide, so the longest names show whole.
const std::map<std::string, Placement>& placements()
{
    static const std::map<std::string, Placement> table = {
        {"Position", {{10, 92, 380, 364}, 1}},
        {"Globals", {{398, 92, 392, 128}, 4}},
        {"Equalizer", {{798, 92, 392, 128}, 4}},
        {"Room", {{398, 228, 290, 228}, 3}},
        {"Color", {{696, 228, 290, 228}, 3}},
        {"Gate", {{994, 228, 196, 228}, 2}},
    };
    return table;
}
const ZRect kModulatorBounds{10, 464, 1180, 310};
const ZRect kHelpBounds{10, 782, 1180, 50};

int32_t indexOfName(ZAudioPlugin& core, const std::string& name)
{
    for (int32_t i = 0; i < core.GetParameterCount(); ++i)
        if (core.GetParameterName(i) == name)
            return i;
    return -1;
}

} // namespace

// The strip at the top: the plug-in's and its maker's names, the current preset,
// bypass, and the meters.
class ZReverbEditorView::Header : public ZView {
public:
    Header(ZQuessaneAudioEffectPlugin& core, std::unique_ptr<ZView> presets, std::unique_ptr<ZView> bypass)
    {
        SetName("Header");
        presets_ = AddChild(std::move(presets));
        bypass_ = AddChild(std::move(bypass));
        meters_ = AddChild(std::make_unique<ZBoxLayout>(ZOrientation::Vertical, 2.0));
        meters_->Add(std::make_unique<ZLevelMeter>("In", [&core] { return core.TakeInputLevel(); }, kTickSeconds));
        meters_->Add(std::make_unique<ZLevelMeter>("Out", [&core] { return core.TakeOutputLevel(); }, kTickSeconds));
    }
    std::string Text() const override { return HalvernAudioEffectPlugin::kProductName; }
    void Layout() override
    {
        const ZRect& b = bounds();
        presets_->SetBounds({b.x + 330, b.y + 12, 300, 24});
        bypass_->SetBounds({b.right() - 470, b.y + 8, 110, 32});
        meters_->SetBounds({b.right() - 300, b.y + 6, 290, 36});
    }

protected:
    void PaintSelf(ZCanvas& canvas) override
    {
        const ZTheme& theme = root()->theme();
        const ZRect& b = bounds();
        canvas.FillRect(b, theme.header);
        canvas.Line({b.x, b.bottom() - 0.5}, {b.right(), b.bottom() - 0.5}, theme.panelBorder, 1);
        const ZTextStyle logo{theme.logoFontSize, ZFontWeight::SemiBold, theme.text};
        const double width = canvas.DrawTextInRect(HalvernAudioEffectPlugin::kProductName, {b.x + 16, b.y, 200, b.height}, logo);
        canvas.DrawTextInRect(std::string(HalvernAudioEffectPlugin::kVendorName) + "  \u00B7  Reverb",
                              {b.x + 26 + width, b.y + 3, 220, b.height}, theme.Label());
    }

private:
    ZView* presets_;
    ZView* bypass_;
    ZBoxLayout* meters_;
};

ZReverbEditorView::ZReverbEditorView(
    ZQuessaneAudioEffectPlugin& core, HalvernAudioEffectPlugin& effect, ZEditorHost& host,
    std::function<std::unique_ptr<ZView>(ZModulatorEditorContext&, ZModulatorSelection)> buildModulatorPage,
    std::function<void(ZModulatorEditorContext&, ZModulatorSelection, ZRect)> openMenu)
    : core_(core), effect_(effect), host_(host),
      context_{core, effect, host, [this](ZModulatorSelection which) { area_->Select(which); },
               [this](ZLearnListener* listener) { learn_ = listener; }},
      undo_(core)
{
    SetName("ReverbEditor");
    const auto notify = [this](const std::string& message) { ShowMessage(message); };
    header_ = AddChild(std::make_unique<Header>(
        core,
        std::make_unique<ZPresetSelector>(core, [this] { OpenPresetWindow(); }, [this] { presetLoaded(); }),
        controlFor(core.bypassIndex())));
    auto slots = std::make_unique<ZSlotBar>(core, host, notify);
    slots_ = slots.get();
    ZToolbarActions actions;
    actions.togglePage = [this](ZModulatorSelection::Kind kind) { TogglePage(kind); };
    actions.openPage = [this] { return area_->selection().kind; };
    actions.openModulatorsMenu = [this, openMenu](ZRect anchor) {
        if (openMenu)
            openMenu(context_, {}, anchor);
    };
    actions.undo = [this] { Undo(); };
    actions.redo = [this] { Redo(); };
    actions.canUndo = [this] { return undo_.CanUndo() || ticksToRecord_ > 0; };
    actions.canRedo = [this] { return undo_.CanRedo(); };
    toolbar_ = AddChild(std::make_unique<ZEditorToolbar>(std::move(slots), std::move(actions)));
    buildPanels();
    area_ = AddChild(std::make_unique<ZModulatorArea>(
        context_,
        [this, buildModulatorPage](ZModulatorSelection which) {
            std::unique_ptr<ZView> page = buildPage(which);
            return page || !buildModulatorPage ? std::move(page) : buildModulatorPage(context_, which);
        },
        [this, openMenu](ZModulatorSelection which, ZRect anchor) {
            if (openMenu)
                openMenu(context_, which, anchor);
        },
        [this](ZModulatorSelection which) { OpenModulatorPresets(which); },
        [this](int32_t index, const std::string& label) { return controlFor(index, label); }));
    help_ = AddChild(std::make_unique<ZMarkupView>(kHelpHint));
    help_->SetName("Help");
}

// The pages of the bottom area that are not a modulator's.
std::unique_ptr<ZView> ZReverbEditorView::buildPage(ZModulatorSelection which)
{
    switch (which.kind) {
    case ZModulatorSelection::Kind::Morph:
        return std::make_unique<ABCDEditor>(
            core_, host_, [this](int slot) { slots_->Select(slot); }, controlFor(core_.agcParameterIndex()),
            [this](const std::string& question, const std::vector<std::string>& answers, std::function<void(int)> answered) {
                if (ZUIRoot* owner = root())
                    ZDialog::Show(*owner, std::make_unique<ZQuestionDialog>("ABCD morphing", question, answers,
                                                                           std::move(answered)));
            });
    case ZModulatorSelection::Kind::Equalizer:
        return std::make_unique<ZEqualizerEditor>(context_, static_cast<ZBindingObserver*>(this));
    case ZModulatorSelection::Kind::Decay:
        return std::make_unique<ZDecayDisplay>(core_);
    default:
        return nullptr;
    }
}

void ZReverbEditorView::TogglePage(ZModulatorSelection::Kind kind)
{
    area_->Select(area_->selection().kind == kind ? ZModulatorSelection{} : ZModulatorSelection{kind, 0});
}

void ZReverbEditorView::ShowMessage(const std::string& message)
{
    if (ZUIRoot* owner = root())
        halvern::ShowMessage(*owner, HalvernAudioEffectPlugin::kProductName, message);
}

void ZReverbEditorView::OpenPresetWindow()
{
    ZUIRoot* owner = root();
    if (owner != nullptr && core_.presets() != nullptr)
        ShowPresetWindow(*owner, *core_.presets(), "Presets", [this] { presetLoaded(); });
}

// The managers live as long as the editor, so the window can keep them.
void ZReverbEditorView::OpenModulatorPresets(ZModulatorSelection which)
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    const auto show = [&](auto& manager, const std::string& title) {
        try {
            manager->LoadCollection();
        } catch (const std::exception& failure) {
            ShowMessage(std::string("The presets could not be read: ") + failure.what());
        }
        ShowPresetWindow(*owner, *manager, title, [this] { InteractionEnded(); });
    };
    const std::string folder = core_.userDataFolder();
    if (which.kind == ZModulatorSelection::Kind::LFO) {
        lfoPresets_ = std::make_unique<ZLFOPresetManager>(ZModulatorPresetOwnerT<ZLFOPresetKind>(core_, which.index), folder);
        show(lfoPresets_, "LFO " + std::to_string(which.index + 1) + " presets");
    } else if (which.kind == ZModulatorSelection::Kind::MultiParameter) {
        multiParameterPresets_ = std::make_unique<ZMultiParameterPresetManager>(
            ZModulatorPresetOwnerT<ZMultiParameterPresetKind>(core_, which.index), folder);
        show(multiParameterPresets_, core_.multiParameter(which.index).displayName() + " presets");
    }
}

// A preset changes every value behind the host's back: it hears them all again.
void ZReverbEditorView::presetLoaded()
{
    core_.StateChanged();
    InteractionEnded();
}

void ZReverbEditorView::InteractionEnded() { ticksToRecord_ = kTicksBeforeUndoStep; }

void ZReverbEditorView::recordPendingStep()
{
    ticksToRecord_ = 0;
    undo_.Record();
}

void ZReverbEditorView::Undo()
{
    if (ticksToRecord_ > 0)
        recordPendingStep();
    undo_.Undo();
}

void ZReverbEditorView::Redo()
{
    if (ticksToRecord_ > 0)
        recordPendingStep();
    undo_.Redo();
}

bool ZReverbEditorView::Shortcut(const ZKeyEvent& event)
{
    if (event.key != ZKey::Character || (event.modifiers & kModifierControl) == 0)
        return false;
    const bool shift = (event.modifiers & kModifierShift) != 0;
    if (event.text == "z" || event.text == "Z") {
        shift ? Redo() : Undo();
        return true;
    }
    if (event.text == "y" || event.text == "Y") {
        Redo();
        return true;
    }
    return false;
}

std::unique_ptr<ZView> ZReverbEditorView::controlFor(int32_t index, const std::string& label)
{
    ZBindingObserver* observer = this;
    auto binding = std::make_shared<ZHostParameterBinding>(core_, host_, index, label, observer);
    std::unique_ptr<ZView> control;
    switch (core_.GetParameterType(index)) {
    case ZParameterType::Enumeration:
        control = std::make_unique<ZEnumMenu>(binding);
        break;
    case ZParameterType::Switch:
        control = std::make_unique<ZSwitch>(binding);
        break;
    default:
        control = std::make_unique<ZKnob>(binding);
        break;
    }
    control->SetName(core_.GetParameterID(index));
    return control;
}

// The reverb's records in their order: each panel record opens a panel (its value, if it
// has one, is the panel's switch) and the records after it are its controls.
void ZReverbEditorView::buildPanels()
{
    auto* position = AddChild(std::make_unique<ZPanel>("Position", 1));
    position->SetHelpText(ZPositionEditor::kHelpText);
    position->Add(std::make_unique<ZPositionEditor>(
        effect_, std::make_shared<ZHostParameterBinding>(core_, host_, indexOfName(core_, "Position X")),
        std::make_shared<ZHostParameterBinding>(core_, host_, indexOfName(core_, "Position Y"))));
    panels_.push_back(position);

    ZPanel* panel = nullptr;
    const ZParameterRegistry& registry = core_.parameters();
    for (int32_t index = 0; index < ZReverbParameters::kCount; ++index) {
        const ZParameterInfo& info = registry.info(index);
        if (info.opensPanel) {
            panel = AddChild(std::make_unique<ZPanel>(info.name, placements().at(info.name).columns));
            panel->SetHelpText(info.help);
            if (registry.value(index) != nullptr)
                panel->SetTitleControl(controlFor(index));
            panels_.push_back(panel);
        } else if (panel != nullptr) {
            panel->Add(controlFor(index));
        }
    }
}

void ZReverbEditorView::Layout()
{
    const ZRect& b = bounds();
    header_->SetBounds({b.x, b.y, b.width, kHeaderHeight});
    toolbar_->SetBounds({b.x, b.y + kHeaderHeight, b.width, kToolbarHeight});
    for (ZPanel* panel : panels_) {
        const ZRect& at = placements().at(panel->Text()).bounds;
        panel->SetBounds({b.x + at.x, b.y + at.y, at.width, at.height});
    }
    area_->SetBounds({b.x + kModulatorBounds.x, b.y + kModulatorBounds.y, kModulatorBounds.width,
                      kModulatorBounds.height});
    help_->SetBounds(helpArea().inset(12, 6));
}

void ZReverbEditorView::GestureEnded(int32_t index, double from, double to)
{
    if (learn_ != nullptr)
        learn_->ParameterTouched(index, from, to);
}

std::optional<std::pair<double, double>> ZReverbEditorView::RangeOn(int32_t index) const
{
    return area_ != nullptr ? area_->RangeOn(index) : std::nullopt;
}

// The ranges drawn on the controls follow the selected modulator's targets: when they
// change (an edit on its page, a loaded state), every control is drawn again.
void ZReverbEditorView::Refresh()
{
    if (targetsChanged())
        Invalidate();
    if (ticksToRecord_ > 0 && --ticksToRecord_ == 0)
        recordPendingStep();
}

bool ZReverbEditorView::targetsChanged()
{
    const ZModulatorSelection& which = area_->selection();
    std::vector<ZModulatorTarget> now;
    if (which.kind == ZModulatorSelection::Kind::LFO)
        now = core_.lfo(which.index).targets().targets();
    else if (which.kind == ZModulatorSelection::Kind::MultiParameter)
        now = core_.multiParameter(which.index).targets().targets();
    const auto same = [](const ZModulatorTarget& a, const ZModulatorTarget& b) {
        return a.parameter == b.parameter && a.enabled == b.enabled && a.value == b.value && a.maxValue == b.maxValue &&
               a.range == b.range && a.rangeMode == b.rangeMode && a.invert == b.invert &&
               a.useFirstRange == b.useFirstRange;
    };
    if (std::equal(now.begin(), now.end(), shownTargets_.begin(), shownTargets_.end(), same))
        return false;
    shownTargets_ = std::move(now);
    return true;
}

ZRect ZReverbEditorView::helpArea() const
{
    const ZRect& b = bounds();
    return {b.x + kHelpBounds.x, b.y + kHelpBounds.y, kHelpBounds.width, kHelpBounds.height};
}

void ZReverbEditorView::ShowHelp(const std::string& help) { help_->SetMarkup(help.empty() ? kHelpHint : help); }

void ZReverbEditorView::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRect(bounds(), theme.background);
    canvas.FillRoundedRect(helpArea(), theme.radius, theme.panel);
    canvas.StrokeRoundedRect(helpArea(), theme.radius, theme.panelBorder, theme.lineWidth);
}

} // namespace halvern
