#include "editor/multi_parameter_editor.h"

#include "core/z_exception.h"
#include "editor/function_binding.h"
#include "editor/host_parameter_binding.h"
#include "editor/page_layout.h"
#include "editor/preset_source.h"
#include "editor/value_binding.h"
#include "state/preset_content.h"
#include "ui/box_layout.h"
#include "ui/controls/button.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/list_view.h"
#include "ui/controls/popup_menu.h"
#include "ui/controls/switch.h"
#include "ui/controls/text_field.h"
#include "ui/grid_layout.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

constexpr double kGeneralWidth = 240.0;
constexpr double kBankListWidth = 112.0;
constexpr double kBankToolWidth = 76.0;

std::string modeTitle(ZMultiParameterMode mode)
{
    return mode == ZMultiParameterMode::Normal ? std::string("Value")
                                               : ZEnumNames<ZMultiParameterMode>::names()[static_cast<size_t>(mode)];
}

ZButton* addButton(ZView& parent, const std::string& name, const std::string& text, const std::string& help,
                   std::function<void()> click)
{
    ZButton* button = parent.AddChild(std::make_unique<ZButton>(text, std::move(click)));
    button->SetName(name);
    button->SetHelpText(help);
    return button;
}

// The settings of the current mode: a row of knobs, a row of switches and commands,
// and in "Banks" mode the list of banks with their tools beside it.
class ModeSettings : public ZView {
public:
    ZView* AddKnob(std::unique_ptr<ZView> knob) { return knobs_.emplace_back(AddChild(std::move(knob))); }
    template <class View>
    View* AddToRow(std::unique_ptr<View> view)
    {
        View* added = AddChild(std::move(view));
        row_.push_back(added);
        return added;
    }
    void SetBanks(std::unique_ptr<ZView> list, std::unique_ptr<ZGridLayout> tools)
    {
        list_ = AddChild(std::move(list));
        tools_ = AddChild(std::move(tools));
    }

    // The width its contents need, side by side.
    double NeededWidth() const
    {
        const ZTheme& theme = PageTheme(*this);
        double row = 0.0;
        for (const ZView* view : row_)
            row += view->PreferredSize().x + (row > 0.0 ? theme.spacing : 0.0);
        const double banks = list_ != nullptr ? kBankListWidth + theme.spacing + 2 * kBankToolWidth + kPageRowGap : 0.0;
        return std::max({knobs_.size() * kPageKnobCell, row, banks});
    }

    void Layout() override
    {
        const ZTheme& theme = PageTheme(*this);
        const ZRect& b = bounds();
        double x = b.x;
        for (ZView* knob : knobs_) {
            knob->SetBounds({x, b.y, kPageKnobCell, PageKnobHeight(theme)});
            x += kPageKnobCell;
        }
        double y = b.y + PageKnobHeight(theme) + kPageRowGap;
        x = b.x;
        for (ZView* view : row_) {
            const double width = std::min(view->PreferredSize().x, b.right() - x);
            view->SetBounds({x, y, width, theme.rowHeight});
            x += width + theme.spacing;
        }
        if (list_ == nullptr)
            return;
        y += theme.rowHeight + kPageRowGap;
        const double height = std::max(b.bottom() - y, 0.0);
        tools_->SetRowHeight(theme.rowHeight);
        list_->SetBounds({b.x, y, kBankListWidth, height});
        tools_->SetBounds({b.x + kBankListWidth + theme.spacing, y, b.right() - b.x - kBankListWidth - theme.spacing,
                           height});
    }

private:
    std::vector<ZView*> knobs_;
    std::vector<ZView*> row_;
    ZView* list_ = nullptr;
    ZGridLayout* tools_ = nullptr;
};

} // namespace

ZMultiParameterEditor::ZMultiParameterEditor(ZModulatorEditorContext& context, int index)
    : context_(context), index_(index), multi_(context.core.multiParameter(index)),
      presets_({context.core, index}, context.core.userDataFolder()), shownMode_(multi_.mode())
{
    SetName("MultiParameterEditor");
    try {
        presets_.LoadCollection();
    } catch (const ZException& error) {
        message_ = error.message();
    }
    general_ = buildGeneral();
    buildModePanel();
    targetsPanel_ = AddChild(std::make_unique<ZPanel>("Targets", 1));
    targets_ = targetsPanel_->Add(std::make_unique<ZTargetListEditor>(context_, multi_));
    showMessage(message_);
}

ZPanel* ZMultiParameterEditor::buildGeneral()
{
    auto* panel = AddChild(std::make_unique<ZPanel>("MultiParameter", 1));
    auto enabled = ZFunctionBinding::Switch(
        "Enabled", "The MultiParameter acts on its targets.", [this] { return multi_.enabled(); },
        [this](bool on) { multi_.setEnabled(on); });
    panel->SetTitleControl(std::make_unique<ZSwitch>(enabled));
    panel->titleControl()->SetName("Enabled");

    auto column = std::make_unique<ZBoxLayout>(ZOrientation::Vertical, kPageRowGap);
    auto rows = std::make_unique<ZGridLayout>(2, kPageRowGap);
    rows->SetColumnWidths({kPageLabelWidth, 0.0});
    const auto label = [&rows](const std::string& text) {
        rows->AddChild(std::make_unique<ZLabel>(text, ZLabelStyle::Label));
    };

    label("Name");
    rows->AddChild(textRow(
        "Name",
        "The name shown on the MultiParameter's button and to hosts. A name that begins with '*' hides the "
        "MultiParameter from the active preset editor (for internal use).",
        [this] { return multi_.name(); }, [this](std::string text) { multi_.setName(std::move(text)); }));
    label("Group");
    rows->AddChild(textRow(
        "Group", "MultiParameters of the same group share one panel in the active preset editor.",
        [this] { return multi_.group(); }, [this](std::string text) { multi_.setGroup(std::move(text)); }));
    label("Info");
    rows->AddChild(textRow("Info", "A free description.", [this] { return multi_.info(); },
                           [this](std::string text) { multi_.setInfo(std::move(text)); }));

    ZLock& lock = context_.core.processingLock();
    label("Mode");
    auto* mode = rows->AddChild(std::make_unique<ZEnumMenu>(std::make_shared<ZValueBinding>(
        "Mode",
        "\"Normal\": the value drives each target through its range. \"Switch\" and \"Trigger\": the value is a "
        "button that starts a timed move (a trigger comes back by itself). \"Banks\": the value moves between "
        "stored sets of target values.",
        multi_.modeObject(), lock)));
    mode->SetName("Mode");
    label("Value mode");
    auto* valueMode = rows->AddChild(std::make_unique<ZEnumMenu>(std::make_shared<ZValueBinding>(
        "Value mode",
        "\"Percents\" shows the value from 0 % to 100 %; \"By first parameter\" shows the first target's value in "
        "its own units.",
        multi_.valueModeObject(), lock)));
    valueMode->SetName("ValueMode");
    label("Preset");
    rows->AddChild(presetRow());
    label("");
    rows->AddChild(presetTools());
    generalRows_ = column->Add(std::move(rows), ZBoxItem::Preferred());
    messageLabel_ = column->Add(std::make_unique<ZLabel>("", ZLabelStyle::Value), ZBoxItem::Stretch());
    messageLabel_->SetName("Message");
    panel->Add(std::move(column));
    return panel;
}

std::unique_ptr<ZView> ZMultiParameterEditor::textRow(const std::string& name, const std::string& help,
                                                      std::function<std::string()> read,
                                                      std::function<void(std::string)> write)
{
    auto field = std::make_unique<ZTextField>(read());
    field->SetName(name);
    field->SetHelpText(help);
    ZTextField* shown = field.get();
    field->SetOnCommit([write = std::move(write)](const std::string& text) {
        write(text);
        return true;
    });
    field->SetOnCancel([shown, read] { shown->SetText(read()); });
    textFields_.emplace_back(shown, std::move(read));
    return field;
}

std::unique_ptr<ZView> ZMultiParameterEditor::presetRow()
{
    auto row = std::make_unique<ZBoxLayout>(ZOrientation::Horizontal, kPageRowGap);
    const double arrow = PageTheme(*this).rowHeight;
    auto previous = std::make_unique<ZButton>("\u2039", [this] { stepPreset(-1); });
    previous->SetName("presetprevious");
    previous->SetHelpText("Loads the previous preset.");
    row->Add(std::move(previous), ZBoxItem::Fixed(arrow));
    presetName_ = row->Add(std::make_unique<ZLabel>(presetName(), ZLabelStyle::Text, ZTextAlign::Center));
    presetName_->SetName("PresetName");
    auto next = std::make_unique<ZButton>("\u203A", [this] { stepPreset(1); });
    next->SetName("presetnext");
    next->SetHelpText("Loads the next preset.");
    row->Add(std::move(next), ZBoxItem::Fixed(arrow));
    return row;
}

std::unique_ptr<ZView> ZMultiParameterEditor::presetTools()
{
    auto row = std::make_unique<ZGridLayout>(2, kPageRowGap);
    ZButton* load = addButton(*row, "LoadPreset", "Load", "Chooses a MultiParameter preset to load.", {});
    load->SetOnClick([this, load] { showMenuOfPresets(load->bounds()); });
    addButton(*row, "SavePreset", "Save", "Saves this MultiParameter as a new preset under its name.",
              [this] { savePreset(); });
    return row;
}

void ZMultiParameterEditor::buildModePanel()
{
    if (mode_ != nullptr) {
        std::unique_ptr<ZView> old = TakeChild(mode_);
        if (ZUIRoot* owner = root())
            owner->Dispose(std::move(old)); // it may be handling the event in progress
    }
    shownMode_ = multi_.mode();
    banks_ = nullptr;
    mode_ = AddChild(std::make_unique<ZPanel>(modeTitle(shownMode_), 1));
    auto settings = std::make_unique<ModeSettings>();
    ZLock& lock = context_.core.processingLock();
    const bool isSwitch = shownMode_ == ZMultiParameterMode::Switch || shownMode_ == ZMultiParameterMode::Trigger;

    // Its own value, as hosts see it; in "Switch" and "Trigger" modes a button, pressed
    // from 50 %.
    auto value = std::make_shared<ZHostParameterBinding>(context_.core, context_.host,
                                                         context_.core.multiParameterIndex(index_), "Value");
    ZView* valueControl = isSwitch ? settings->AddToRow(std::make_unique<ZSwitch>(value))
                                   : settings->AddKnob(std::make_unique<ZKnob>(value));
    valueControl->SetName("Value");
    settings->AddKnob(std::make_unique<ZKnob>(std::make_shared<ZValueBinding>(
                          "Default value", "The value restored by a reset.", multi_.defaultValueObject(), lock)))
        ->SetName("DefaultValue");
    if (isSwitch)
        settings
            ->AddKnob(std::make_unique<ZKnob>(std::make_shared<ZValueBinding>(
                "Switch time", "The time of one full move from 0 % to 100 % or back.", multi_.switchTimeObject(),
                lock)))
            ->SetName("SwitchTime");
    if (shownMode_ == ZMultiParameterMode::Banks) {
        auto count = std::make_shared<ZFunctionBinding>(
            "Banks", "The number of banks the value is spread over; new banks start as copies of the last one.",
            [this] { return (multi_.bankCount() - 1.0) / (ZMultiParameter::kMaxBankCount - 1); },
            [this](double normalized) {
                multi_.setBankCount(1 + static_cast<int>(std::lround(normalized * (ZMultiParameter::kMaxBankCount - 1))));
            });
        count->SetSteps(ZMultiParameter::kMaxBankCount - 1);
        count->SetTexts(
            [](double normalized) {
                return std::to_string(1 + std::lround(normalized * (ZMultiParameter::kMaxBankCount - 1)));
            },
            [](const std::string& text) -> std::optional<double> {
                try {
                    const int banks = std::clamp(std::stoi(text), 1, ZMultiParameter::kMaxBankCount);
                    return (banks - 1.0) / (ZMultiParameter::kMaxBankCount - 1);
                } catch (const std::exception&) {
                    return std::nullopt;
                }
            });
        count->SetDefault((ZMultiParameter::kDefaultBankCount - 1.0) / (ZMultiParameter::kMaxBankCount - 1));
        settings->AddKnob(std::make_unique<ZKnob>(count))->SetName("BankCount");
        settings
            ->AddToRow(std::make_unique<ZSwitch>(ZFunctionBinding::Switch(
                "Interpolate", "Interpolates between the banks; off, the value takes the nearest bank.",
                [this] { return multi_.interpolate(); }, [this](bool on) { multi_.setInterpolate(on); })))
            ->SetName("Interpolate");
    }
    auto setDefault = std::make_unique<ZButton>("Set current value as defaut", [this] {
        ZLockHolder hold(context_.core.processingLock(), -1);
        multi_.setCurrentValueAsDefault();
    });
    setDefault->SetName("SetCurrentValueAsDefault");
    setDefault->SetHelpText("Makes the current value the one a reset restores.");
    settings->AddToRow(std::move(setDefault));
    if (shownMode_ == ZMultiParameterMode::Banks) {
        auto list = std::make_unique<ZListView>();
        list->SetName("BankList");
        list->SetHelpText("The banks, from the one at 0 % to the one at 100 %; the tools act on the selected one.");
        list->SetOnSelect([this](int row) { SelectBank(row); });
        banks_ = list.get();
        settings->SetBanks(std::move(list), bankTools());
    }
    mode_->Add(std::move(settings));
    refreshBanks();
}

std::unique_ptr<ZGridLayout> ZMultiParameterEditor::bankTools()
{
    auto tools = std::make_unique<ZGridLayout>(2, kPageRowGap);
    ZParameterRegistry& registry = context_.core.parameters();
    addButton(*tools, "SaveBank", "Save", "Stores the targets' current values in the selected bank.",
              [this, &registry] { multi_.saveBank(selectedBank_, registry); });
    addButton(*tools, "LoadBank", "Load", "Gives the targets the selected bank's values.",
              [this, &registry] { multi_.loadBank(selectedBank_, registry); });
    addButton(*tools, "RandomBank", "R", "Puts random values into the selected bank.",
              [this] { multi_.randomizeBank(selectedBank_, random_); });
    addButton(*tools, "ReverseBanks", "Reverse", "Reverses the order of the banks.", [this] { multi_.reverseBanks(); });
    addButton(*tools, "SortIncreasing", "Sort \u2191",
              "Sorts the banks by the selected target's value, increasing.",
              [this] { multi_.sortBanks(targets_->selectedTarget(), true); });
    addButton(*tools, "SortDecreasing", "Sort \u2193",
              "Sorts the banks by the selected target's value, decreasing.",
              [this] { multi_.sortBanks(targets_->selectedTarget(), false); });
    addButton(*tools, "AutoGain", "Auto-gain",
              "Auto-gain (setting the plug-in's main gain so that all banks sound equally loud) is not available "
              "yet.",
              {})
        ->SetEnabled(false);
    return tools;
}

void ZMultiParameterEditor::SelectBank(int bank)
{
    selectedBank_ = std::clamp(bank, 0, multi_.bankCount() - 1);
    if (banks_ != nullptr)
        banks_->SetSelectedRow(selectedBank_);
}

std::string ZMultiParameterEditor::presetName()
{
    const std::string name = CurrentPresetName(presets_);
    if (!name.empty())
        return name;
    return presets_.sequence().empty() ? "No presets" : "\u2014";
}

void ZMultiParameterEditor::showMenuOfPresets(const ZRect& anchor)
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    std::vector<ZMenuItem> items;
    const std::vector<const ZMLElement*> sequence = presets_.sequence();
    for (size_t i = 0; i < sequence.size(); ++i) {
        ZMenuItem item;
        const std::string* name = sequence[i]->findAttribute(kPresetName);
        item.text = name != nullptr ? *name : std::string();
        item.checked = static_cast<int32_t>(i) == presets_.owner().currentPresetIndex();
        const ZMLElement* preset = sequence[i];
        item.action = [this, preset] {
            try {
                presets_.Load(*preset);
                showMessage({});
            } catch (const ZException& error) {
                showMessage(error.message());
            }
        };
        items.push_back(std::move(item));
    }
    if (items.empty()) {
        ZMenuItem none;
        none.text = "No presets";
        none.enabled = false;
        items.push_back(std::move(none));
    }
    ZPopupMenu::Show(*owner, std::move(items), anchor, anchor.width);
}

void ZMultiParameterEditor::savePreset()
{
    try {
        const std::string name = multi_.displayName();
        const std::string notice =
            presets_.SaveCollection([this, &name](ZPresetCollection& collection) { presets_.Add(collection.root(), name); });
        showMessage(notice.empty() ? "Saved as \"" + name + "\"." : notice);
    } catch (const ZException& error) {
        showMessage(error.message());
    }
}

void ZMultiParameterEditor::stepPreset(int direction)
{
    try {
        showMessage(presets_.Step(direction) ? std::string() : "There are no MultiParameter presets yet.");
    } catch (const ZException& error) {
        showMessage(error.message());
    }
}

void ZMultiParameterEditor::showMessage(std::string message)
{
    message_ = std::move(message);
    messageLabel_->SetText(message_);
    messageLabel_->SetHelpText(message_);
}

void ZMultiParameterEditor::refreshTexts()
{
    const ZUIRoot* owner = root();
    for (auto& [field, read] : textFields_) {
        // A field being typed in keeps what is typed.
        if (owner != nullptr && owner->focused() == field)
            continue;
        if (std::string text = read(); text != field->Text())
            field->SetText(std::move(text));
    }
    if (std::string name = presetName(); name != presetName_->Text())
        presetName_->SetText(std::move(name));
}

void ZMultiParameterEditor::refreshBanks()
{
    if (banks_ == nullptr)
        return;
    if (static_cast<int>(banks_->rows().size()) != multi_.bankCount()) {
        std::vector<std::string> rows;
        for (int bank = 1; bank <= multi_.bankCount(); ++bank)
            rows.push_back("Bank " + std::to_string(bank));
        banks_->SetRows(std::move(rows));
    }
    if (banks_->selectedRow() != std::min(selectedBank_, multi_.bankCount() - 1))
        SelectBank(selectedBank_);
}

void ZMultiParameterEditor::Refresh()
{
    if (multi_.mode() != shownMode_) {
        buildModePanel();
        Layout();
        Invalidate();
    }
    refreshTexts();
    refreshBanks();
}

void ZMultiParameterEditor::Layout()
{
    const ZTheme& theme = PageTheme(*this);
    const ZRect area = bounds().inset(theme.spacing, theme.spacing);
    generalRows_->SetRowHeight(theme.rowHeight);
    general_->SetBounds({area.x, area.y, kGeneralWidth, area.height});
    const auto* settings = static_cast<const ModeSettings*>(mode_->body().children().front().get());
    // Whole units: the panel's grid places its cells on whole units too.
    const double modeWidth = std::ceil(settings->NeededWidth()) + 2 * theme.padding;
    const double modeX = area.x + kGeneralWidth + theme.spacing;
    mode_->SetBounds({modeX, area.y, modeWidth, area.height});
    const double targetsX = modeX + modeWidth + theme.spacing;
    targetsPanel_->SetBounds({targetsX, area.y, area.right() - targetsX, area.height});
}

std::unique_ptr<ZView> BuildMultiParameterEditor(ZModulatorEditorContext& context, int index)
{
    return std::make_unique<ZMultiParameterEditor>(context, index);
}

} // namespace halvern
