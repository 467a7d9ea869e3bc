#include "editor/target_list_editor.h"

#include "core/z_exception.h"
#include "editor/function_binding.h"
#include "editor/page_layout.h"
#include "editor/parameter_choice_menu.h"
#include "editor/transfer_curve_editor.h"
#include "ui/controls/button.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/list_view.h"
#include "ui/controls/switch.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {
namespace {

constexpr int kRangeSamples = 16; // modulator outputs sampled across -1..1
constexpr double kSettingsWidth = 240.0;
// The list's column: wide enough for "Clear & Learn" beside "Learn".
constexpr double kListMinWidth = 196.0;
constexpr double kListMaxWidth = 250.0;

// The editors that learn now, one for each editor window (its modulator context).
std::map<const ZModulatorEditorContext*, ZTargetListEditor*>& learners()
{
    static std::map<const ZModulatorEditorContext*, ZTargetListEditor*> editors;
    return editors;
}

} // namespace

std::pair<double, double> SweptRange(const ZModulatorTarget& target, const ZModulatorTarget& first)
{
    double low = 1.0, high = 0.0;
    for (int i = 0; i <= kRangeSamples; ++i) {
        const double value = TargetValueFor(target, first, -1.0 + 2.0 * i / kRangeSamples);
        low = std::min(low, value);
        high = std::max(high, value);
    }
    return {low, high};
}

ZTargetListEditor::ZTargetListEditor(ZModulatorEditorContext& context, ZModulatorTargetList& targets,
                                     std::string modulatorName)
    : ZTargetListEditor(context, targets,
                        Edits{[&targets](const ZModulatorTarget& target) { targets.add(target); },
                              [&targets](int index) { targets.remove(index); },
                              [&targets](int index, const ZModulatorTarget& target) { targets.set(index, target); },
                              [&targets](std::vector<ZModulatorTarget> all) { targets.replaceAll(std::move(all)); }},
                        std::move(modulatorName))
{
}

ZTargetListEditor::ZTargetListEditor(ZModulatorEditorContext& context, ZMultiParameter& multiParameter)
    : ZTargetListEditor(
          context, multiParameter.targets(),
          Edits{[&multiParameter](const ZModulatorTarget& target) { multiParameter.addTarget(target); },
                [&multiParameter](int index) { multiParameter.removeTarget(index); },
                [&multiParameter](int index, const ZModulatorTarget& target) { multiParameter.setTarget(index, target); },
                [&multiParameter](std::vector<ZModulatorTarget> all) { multiParameter.replaceTargets(std::move(all)); }},
          multiParameter.displayName())
{
}

ZTargetListEditor::ZTargetListEditor(ZModulatorEditorContext& context, const ZModulatorTargetList& list, Edits edits,
                                     std::string modulatorName)
    : context_(context), list_(list), edits_(std::move(edits)), modulatorName_(std::move(modulatorName))
{
    SetName("TargetList");
    for (const ZParameterGroup& group : ModulatableParameterGroups(context_.core))
        choices_.insert(choices_.end(), group.parameters.begin(), group.parameters.end());
    build();
    showRows();
}

ZTargetListEditor::~ZTargetListEditor() { StopLearning(); }

void ZTargetListEditor::build()
{
    rows_ = AddChild(std::make_unique<ZListView>());
    rows_->SetName("Targets");
    rows_->SetHelpText("The parameters that " + modulatorName_ + " drives, each with the range it sweeps.");
    rows_->SetOnSelect([this](int row) { SelectTarget(row); });

    const auto button = [this](const std::string& text, const std::string& help, std::function<void()> click) {
        ZButton* made = AddChild(std::make_unique<ZButton>(text, std::move(click)));
        made->SetName(text);
        made->SetHelpText(help);
        return made;
    };
    add_ = button("Add", "Adds a parameter for " + modulatorName_ + " to drive: the first one it does not drive yet.",
                  [this] { addTarget(); });
    remove_ = button("Remove", "Removes the selected parameter from the targets.", [this] { removeTarget(); });
    learn_ = button("Learn",
                    "Every parameter you move in the editor becomes a target of " + modulatorName_ +
                        ", over the range you moved it, until you click here again.",
                    [this] { learning() ? StopLearning() : StartLearning(false); });
    clearAndLearn_ = button("Clear & Learn",
                            "Removes the targets of " + modulatorName_ + ", then learns the parameters you move, "
                            "until you click here again.",
                            [this] { learning() ? StopLearning() : StartLearning(true); });
    buildSettings();
    messageLabel_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Value));
    messageLabel_->SetName("Message");
}

std::shared_ptr<ZFunctionBinding> ZTargetListEditor::rangeBinding(std::string label, std::string help,
                                                                  double ZModulatorTarget::*field,
                                                                  bool inParameterUnits)
{
    auto binding = std::make_shared<ZFunctionBinding>(
        std::move(label), std::move(help),
        [this, field] {
            const ZModulatorTarget* target = selected();
            return target != nullptr ? target->*field : 0.0;
        },
        [this, field](double value) { editSelected([&](ZModulatorTarget& target) { target.*field = value; }); });
    binding->SetDefault(ZModulatorTarget{}.*field);
    if (inParameterUnits) {
        // Shown and typed in the units of the parameter the target drives.
        const auto valueObject = [this]() -> const ZValue* {
            const ZModulatorTarget* target = selected();
            const ZParameterRegistry& registry = context_.core.parameters();
            return target != nullptr && registry.isValidIndex(target->parameter) ? registry.value(target->parameter)
                                                                                 : nullptr;
        };
        binding->SetTexts(
            [valueObject](double normalized) {
                const ZValue* value = valueObject();
                return value != nullptr ? value->displayTextAt(normalized) : std::string();
            },
            [valueObject](const std::string& text) -> std::optional<double> {
                const ZValue* value = valueObject();
                double normalized = 0.0;
                if (value == nullptr || !value->normalizedFromDisplayText(text, normalized))
                    return std::nullopt;
                return std::clamp(normalized, 0.0, 1.0);
            });
    }
    return binding;
}

std::shared_ptr<ZFunctionBinding> ZTargetListEditor::flagBinding(std::string label, std::string help,
                                                                 bool ZModulatorTarget::*field)
{
    return ZFunctionBinding::Switch(
        std::move(label), std::move(help),
        [this, field] {
            const ZModulatorTarget* target = selected();
            return target != nullptr && target->*field;
        },
        [this, field](bool on) { editSelected([&](ZModulatorTarget& target) { target.*field = on; }); });
}

void ZTargetListEditor::buildSettings()
{
    const ZParameterRegistry& registry = context_.core.parameters();
    std::vector<std::string> names;
    for (int32_t index : choices_)
        names.push_back(registry.info(index).name);
    auto parameter = ZFunctionBinding::Choice(
        "Parameter", "The parameter this target drives.", std::move(names),
        [this] {
            const ZModulatorTarget* target = selected();
            const auto found = target != nullptr ? std::find(choices_.begin(), choices_.end(), target->parameter)
                                                 : choices_.end();
            return found != choices_.end() ? static_cast<int>(found - choices_.begin()) : 0;
        },
        [this](int index) {
            if (index >= 0 && index < static_cast<int>(choices_.size()))
                editSelected([&](ZModulatorTarget& target) { target.parameter = choices_[static_cast<size_t>(index)]; });
        });
    parameterLabel_ = AddChild(std::make_unique<ZLabel>("Parameter", ZLabelStyle::Label));
    parameter_ = AddChild(std::make_unique<ZParameterChoiceMenu>(parameter, ModulatableParameterGroups(context_.core)));
    parameter_->SetName("Parameter");

    std::vector<std::string> modes;
    for (const char* mode : ZEnumNames<ZRangeMode>::names())
        modes.emplace_back(mode);
    auto rangeMode = ZFunctionBinding::Choice(
        "Range mode",
        "How the range is deduced: around Value (\"Up and down\", \"Full range\"), from Value up or down by Depth "
        "(\"Up only\", \"Down only\"), or from Value to MaxValue (\"Interval\").",
        std::move(modes),
        [this] {
            const ZModulatorTarget* target = selected();
            return target != nullptr ? static_cast<int>(target->rangeMode) : 0;
        },
        [this](int index) {
            editSelected([&](ZModulatorTarget& target) { target.rangeMode = static_cast<ZRangeMode>(index); });
        });
    rangeModeLabel_ = AddChild(std::make_unique<ZLabel>("Range mode", ZLabelStyle::Label));
    rangeMode_ = AddChild(std::make_unique<ZEnumMenu>(rangeMode));
    rangeMode_->SetName("RangeMode");

    value_ = AddChild(std::make_unique<ZKnob>(rangeBinding(
        "Value", "The centre of the modulation; in \"Interval\" mode its start.", &ZModulatorTarget::value,
        true)));
    value_->SetName("Value");
    maxValue_ = AddChild(std::make_unique<ZKnob>(rangeBinding(
        "Maximal value", "The end of the modulation in \"Interval\" mode.", &ZModulatorTarget::maxValue,
        true)));
    maxValue_->SetName("MaxValue");
    depth_ = AddChild(std::make_unique<ZKnob>(
        rangeBinding("Depth", "The size of the interval the modulation sweeps.", &ZModulatorTarget::range,
                     false)));
    depth_->SetName("Depth");

    enabled_ = AddChild(std::make_unique<ZSwitch>(
        flagBinding("Enabled", "Whether this target takes part.", &ZModulatorTarget::enabled)));
    enabled_->SetName("ParameterEnabled");
    invert_ = AddChild(std::make_unique<ZSwitch>(flagBinding(
        "Invert", "Inverts the modulator shape, so minimum becomes maximum.", &ZModulatorTarget::invert)));
    invert_->SetName("Invert");
    useFirstRange_ = AddChild(std::make_unique<ZSwitch>(
        flagBinding("Use first parameter's range", "This target uses the range of the first target in the list.",
                    &ZModulatorTarget::useFirstRange)));
    useFirstRange_->SetName("UseFirstRange");
    shape_ = AddChild(std::make_unique<ZSwitch>(flagBinding(
        "Shape", "Passes the value through the transfer curve below: incoming value across, result up.",
        &ZModulatorTarget::shapeEnabled)));
    shape_->SetName("Shape");
    curve_ = AddChild(std::make_unique<ZTransferCurveEditor>(
        context_,
        [this] {
            const ZModulatorTarget* target = selected();
            return target != nullptr ? target->shape : ZTransferCurve();
        },
        [this](const ZTransferCurve& curve) { editSelected([&](ZModulatorTarget& target) { target.shape = curve; }); }));
    curve_->SetName("TransferCurve");
}

const ZModulatorTarget* ZTargetListEditor::selected() const
{
    const std::vector<ZModulatorTarget>& targets = list_.targets();
    return selected_ >= 0 && selected_ < static_cast<int>(targets.size()) ? &targets[static_cast<size_t>(selected_)]
                                                                          : nullptr;
}

void ZTargetListEditor::editSelected(const std::function<void(ZModulatorTarget&)>& change)
{
    const ZModulatorTarget* target = selected();
    if (target == nullptr)
        return;
    ZModulatorTarget edited = *target;
    change(edited);
    attempt([&] { edits_.set(selected_, edited); });
    Invalidate();
}

void ZTargetListEditor::attempt(const std::function<void()>& edit)
{
    try {
        edit();
        showMessage({});
    } catch (const ZException& refusal) {
        showMessage(refusal.message());
    }
    showRows();
}

void ZTargetListEditor::SelectTarget(int index)
{
    selected_ = std::clamp(index, 0, list_.size() - 1);
    rows_->SetSelectedRow(selected_);
    Invalidate(); // the settings show another target, perhaps in other units
}

void ZTargetListEditor::addTarget()
{
    if (choices_.empty())
        return;
    const auto unused = std::find_if(choices_.begin(), choices_.end(), [this](int32_t index) {
        return std::none_of(list_.targets().begin(), list_.targets().end(),
                            [index](const ZModulatorTarget& target) { return target.parameter == index; });
    });
    ZModulatorTarget target;
    target.parameter = unused != choices_.end() ? *unused : choices_.front();
    // The new target starts where its parameter stands, so adding it moves nothing yet.
    target.value = context_.core.parameters().normalized(target.parameter);
    attempt([&] { edits_.add(target); });
    SelectTarget(list_.size() - 1);
}

void ZTargetListEditor::removeTarget()
{
    attempt([this] { edits_.remove(selected_); });
    SelectTarget(selected_);
}

bool ZTargetListEditor::learning() const
{
    const auto found = learners().find(&context_);
    return found != learners().end() && found->second == this;
}

void ZTargetListEditor::StartLearning(bool clearFirst)
{
    if (const auto found = learners().find(&context_); found != learners().end() && found->second != this)
        found->second->StopLearning();
    learned_.clear();
    learningCleared_ = clearFirst;
    replacePlaceholder_ = clearFirst;
    if (clearFirst) {
        attempt([this] { edits_.replaceAll({list_.targets().front()}); });
        SelectTarget(0);
    }
    learners()[&context_] = this;
    if (context_.setLearnListener)
        context_.setLearnListener(&learner_);
    learn_->SetChecked(!clearFirst);
    clearAndLearn_->SetChecked(clearFirst);
}

void ZTargetListEditor::StopLearning()
{
    if (!learning())
        return;
    learners().erase(&context_);
    if (context_.setLearnListener)
        context_.setLearnListener(nullptr);
    replacePlaceholder_ = false;
    learned_.clear();
    learn_->SetChecked(false);
    clearAndLearn_->SetChecked(false);
}

void ZTargetListEditor::learn(int32_t index, double from, double to)
{
    if (std::find(choices_.begin(), choices_.end(), index) == choices_.end())
        return;
    // Moved again while learning: the range grows to cover every move.
    double low = std::min(from, to);
    double high = std::max(from, to);
    if (const auto found = learned_.find(index); found != learned_.end()) {
        low = std::min(low, found->second.first);
        high = std::max(high, found->second.second);
    }
    learned_[index] = {low, high};

    // "Interval" maps the lowest output to Value and the highest to MaxValue: the
    // modulator sweeps exactly the range the user moved.
    const auto sweep = [low, high](ZModulatorTarget& target) {
        target.enabled = true;
        target.value = low;
        target.maxValue = high;
        target.rangeMode = ZRangeMode::Interval;
        target.useFirstRange = false;
    };
    const std::vector<ZModulatorTarget>& targets = list_.targets();
    const auto known = std::find_if(targets.begin(), targets.end(),
                                    [index](const ZModulatorTarget& target) { return target.parameter == index; });
    if (replacePlaceholder_) {
        ZModulatorTarget target;
        target.parameter = index;
        sweep(target);
        attempt([&] { edits_.replaceAll({target}); });
        replacePlaceholder_ = false;
        SelectTarget(0);
    } else if (known != targets.end()) {
        const int at = static_cast<int>(known - targets.begin());
        ZModulatorTarget target = *known;
        sweep(target);
        attempt([&] { edits_.set(at, target); });
        SelectTarget(at);
    } else {
        ZModulatorTarget target;
        target.parameter = index;
        sweep(target);
        attempt([&] { edits_.add(target); });
        SelectTarget(list_.size() - 1);
    }
}

std::string ZTargetListEditor::rowText(const ZModulatorTarget& target) const
{
    const ZParameterRegistry& registry = context_.core.parameters();
    if (!registry.isValidIndex(target.parameter))
        return "?";
    const std::string& name = registry.info(target.parameter).name;
    const ZValue* value = registry.value(target.parameter);
    if (!target.enabled || value == nullptr)
        return name + "   off";
    const auto [low, high] = SweptRange(target, list_.targets().front());
    return name + "   " + value->displayTextAt(low) + " \u2013 " + value->displayTextAt(high);
}

std::vector<std::string> ZTargetListEditor::rowTexts() const
{
    std::vector<std::string> texts;
    for (const ZModulatorTarget& target : list_.targets())
        texts.push_back(rowText(target));
    return texts;
}

void ZTargetListEditor::showRows()
{
    std::vector<std::string> texts = rowTexts();
    if (texts != rows_->rows()) {
        if (texts.size() != rows_->rows().size())
            showMessage({}); // a refusal concerned the list as it was
        const double offset = rows_->scrollOffset();
        rows_->SetRows(std::move(texts));
        if (root() != nullptr) // the list measures its rows in the root's theme
            rows_->ScrollTo(offset);
    }
    selected_ = std::clamp(selected_, 0, list_.size() - 1);
    if (rows_->selectedRow() != selected_)
        rows_->SetSelectedRow(selected_);
}

void ZTargetListEditor::showMessage(std::string message)
{
    if (message == message_)
        return;
    message_ = std::move(message);
    messageLabel_->SetText(message_);
}

bool ZTargetListEditor::rangeModeIs(ZRangeMode mode) const
{
    const ZModulatorTarget* target = selected();
    return target != nullptr && target->rangeMode == mode;
}

void ZTargetListEditor::Refresh()
{
    showRows();
    // MaxValue counts only in "Interval" mode, Depth in every other: the knob that does
    // not count gives its place to the one that does.
    const bool interval = rangeModeIs(ZRangeMode::Interval);
    if (maxValue_->visible() != interval || depth_->visible() == interval) {
        maxValue_->SetVisible(interval);
        depth_->SetVisible(!interval);
        Layout();
        Invalidate();
    }
    const bool learns = learning();
    learn_->SetChecked(learns && !learningCleared_);
    clearAndLearn_->SetChecked(learns && learningCleared_);
}

void ZTargetListEditor::Layout()
{
    const ZTheme& theme = PageTheme(*this);
    const ZRect& b = bounds();
    const double row = theme.rowHeight;
    const double gap = theme.spacing;
    const double knobHeight = PageKnobHeight(theme);
    const double contentHeight = b.height - theme.labelHeight - kPageRowGap;
    messageLabel_->SetBounds({b.x, b.bottom() - theme.labelHeight, b.width, theme.labelHeight});

    // The list with its buttons, two rows of two.
    const double listWidth = std::clamp(b.width * 0.3, kListMinWidth, kListMaxWidth);
    const double buttonsTop = b.y + contentHeight - 2 * row - kPageRowGap;
    const double half = (listWidth - kPageRowGap) / 2;
    rows_->SetBounds({b.x, b.y, listWidth, buttonsTop - kPageRowGap - b.y});
    add_->SetBounds({b.x, buttonsTop, half, row});
    remove_->SetBounds({b.x + half + kPageRowGap, buttonsTop, half, row});
    learn_->SetBounds({b.x, buttonsTop + row + kPageRowGap, half, row});
    clearAndLearn_->SetBounds({b.x + half + kPageRowGap, buttonsTop + row + kPageRowGap, half, row});

    // The selected target's settings, row by row.
    const double x = b.x + listWidth + gap;
    double y = b.y;
    parameterLabel_->SetBounds({x, y, kPageLabelWidth, row});
    parameter_->SetBounds({x + kPageLabelWidth, y, kSettingsWidth - kPageLabelWidth, row});
    y += row + kPageRowGap;
    rangeModeLabel_->SetBounds({x, y, kPageLabelWidth, row});
    rangeMode_->SetBounds({x + kPageLabelWidth, y, kSettingsWidth - kPageLabelWidth, row});
    y += row + kPageRowGap;
    double knobX = x;
    for (ZView* knob : {value_, maxValue_, depth_}) {
        if (!knob->visible())
            continue;
        knob->SetBounds({knobX, y, kPageKnobCell, knobHeight});
        knobX += kPageKnobCell;
    }
    y += knobHeight + kPageRowGap;
    enabled_->SetBounds({x, y, kSettingsWidth / 2, row});
    invert_->SetBounds({x + kSettingsWidth / 2, y, kSettingsWidth / 2, row});
    y += row + kPageRowGap;
    useFirstRange_->SetBounds({x, y, kSettingsWidth, row});

    // The transfer curve takes the rest.
    const double curveX = x + kSettingsWidth + gap;
    const double curveWidth = std::max(b.right() - curveX, 0.0);
    shape_->SetBounds({curveX, b.y, curveWidth, row});
    curve_->SetBounds({curveX, b.y + row + kPageRowGap, curveWidth, std::max(contentHeight - row - kPageRowGap, 0.0)});
}

} // namespace halvern
