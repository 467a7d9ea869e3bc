#include "editor/midi_settings_editor.h"

#include "core/modulation_enums.h"
#include "core/z_exception.h"
#include "editor/function_binding.h"
#include "editor/page_layout.h"
#include "editor/parameter_choice_menu.h"
#include "editor/setting_mirror.h"
#include "ui/box_layout.h"
#include "ui/controls/button.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/list_view.h"
#include "ui/controls/switch.h"
#include "ui/panel.h"

#include <algorithm>

namespace halvern {
namespace {

using ControllerValues = ZSettingMirror<ZMIDIControllerAssignment>;
using NoteValues = ZSettingMirror<ZNoteController>;
using PresetSwitchValues = ZSettingMirror<ZPresetSwitchController>;

constexpr double kStatusHeight = 18.0;
constexpr double kControllersWidth = 554.0;
constexpr double kNotesWidth = 494.0;
constexpr double kListWidth = 124.0; // "Remove" whole under it
constexpr double kParameterLabelWidth = 62.0;
constexpr double kParameterMenuWidth = 140.0;
constexpr double kLearnWidth = 64.0;
// Menus wide enough for their longest item: "Velocity (on & off)", "Up and down",
// "Switch (all octaves)".
constexpr double kSourceWidth = 138.0;
constexpr double kRangeModeWidth = 114.0;
constexpr double kNoteModeWidth = 150.0;

const char* const kSources[] = {"Controller", "Aftertouch", "Pitch-bend", "Velocity (on & off)", "Velocity (on)"};
constexpr int32_t kFirstSource = static_cast<int32_t>(ZMIDISource::Aftertouch);
constexpr int32_t kLastSource = static_cast<int32_t>(ZMIDISource::VelocityOn);

bool followsEveryNote(ZNoteControllerMode mode)
{
    return mode == ZNoteControllerMode::Linear || mode == ZNoteControllerMode::Logarithmic;
}

// Channels are 0 for any, else 1..16.
void addChannel(auto& values, auto access)
{
    values.AddInteger("Channel", std::move(access), 0, 16, 0)
        .setFormatter([](int channel) { return channel == 0 ? std::string("Any") : std::to_string(channel); });
    values.Describe("Channel", "Channel", "<name>Channel</name> <p>The MIDI channel listened to, or any.</p>");
}

// Value and MaxValue are shown and typed in the controlled parameter's own units.
void inParameterUnits(ZValueDouble& value, ZAudioPlugin& core, std::function<int32_t()> parameter)
{
    value.setFormatter([&core, parameter](double normalized) {
        const int32_t index = parameter();
        std::string text = core.GetParameterValueNameFrom01(index, normalized);
        const std::string units = core.GetParameterUnitsName(index);
        return units.empty() || text.empty() ? text : text + " " + units;
    });
    value.setParser([&core, parameter](std::string_view text, double& normalized) {
        const int32_t index = parameter();
        const ZValue* target = core.parameters().isValidIndex(index) ? core.parameters().value(index) : nullptr;
        return target != nullptr && target->normalizedFromDisplayText(text, normalized);
    });
}

// The parameter an item drives, by its place among the choices.
template <class Values, class Item>
void addParameter(Values& values, const std::vector<int32_t>& choices, ZAudioPlugin& core,
                  std::function<int32_t&(Item&)> parameterOf)
{
    const auto place = [choices](int32_t parameter) {
        const auto found = std::find(choices.begin(), choices.end(), parameter);
        return found != choices.end() ? static_cast<double>(found - choices.begin()) : 0.0;
    };
    values
        .AddInteger("Parameter",
                    {[place, parameterOf](const Item& item) { return place(parameterOf(const_cast<Item&>(item))); },
                     [choices, parameterOf](Item& item, double at) {
                         parameterOf(item) = choices[static_cast<size_t>(std::clamp(
                             static_cast<int>(at), 0, static_cast<int>(choices.size()) - 1))];
                     }},
                    0, std::max(static_cast<int>(choices.size()) - 1, 0), 0)
        .setFormatter([&core, choices](int at) {
            return at >= 0 && at < static_cast<int>(choices.size()) ? core.GetParameterName(choices[static_cast<size_t>(at)])
                                                                     : std::string();
        });
    values.Describe("Parameter", "Parameter", "<name>Parameter</name> <p>The parameter this item drives.</p>");
}

// New rows for a list where it stands: an edit of one item does not scroll the list.
void keepScrolled(ZListView& list, std::vector<std::string> rows)
{
    const double offset = list.scrollOffset();
    list.SetRows(std::move(rows));
    if (list.root() != nullptr) // a list not shown yet has not scrolled
        list.ScrollTo(offset);
}

// A view in the middle of a row's height: a button beside knobs.
std::unique_ptr<ZView> centred(std::unique_ptr<ZView> view, double height)
{
    auto column = std::make_unique<ZBoxLayout>(ZOrientation::Vertical);
    column->Add(std::make_unique<ZView>());
    column->Add(std::move(view), ZBoxItem::Fixed(height));
    column->Add(std::make_unique<ZView>());
    return column;
}

} // namespace

// What the bindings and the page share: the selection and the status line. The bindings
// outlive the page when a text entry is left open.
struct ZMIDISettingsEditor::State {
    int controller = -1;
    int note = -1;
    std::string message;
};

// A list with its add and remove buttons on the left, the selected item's settings on
// the right (a hint in their place while nothing is selected).
class ZMIDISettingsEditor::Section : public ZView {
public:
    ZListView* list;
    ZButton* add;
    ZButton* remove;
    ZBoxLayout* details;
    ZLabel* hint;

    Section(double listWidth, const std::string& hintText) : listWidth_(listWidth)
    {
        list = AddChild(std::make_unique<ZListView>());
        add = AddChild(std::make_unique<ZButton>("Add"));
        remove = AddChild(std::make_unique<ZButton>("Remove"));
        details = AddChild(std::make_unique<ZBoxLayout>(ZOrientation::Vertical, PageTheme(*this).spacing));
        hint = AddChild(std::make_unique<ZLabel>(hintText, ZLabelStyle::Label, ZTextAlign::Center));
    }
    // A row of the settings, a knob high or a row high.
    ZBoxLayout* Row(double height)
    {
        return details->Add(std::make_unique<ZBoxLayout>(ZOrientation::Horizontal, PageTheme(*this).spacing),
                            ZBoxItem::Fixed(height));
    }
    // Keeps every row's settings to the left and the rows to the top.
    void CloseUp()
    {
        for (const auto& row : details->children())
            row->AddChild(std::make_unique<ZView>());
        details->AddChild(std::make_unique<ZView>());
    }
    void ShowDetails(bool shown)
    {
        details->SetVisible(shown);
        hint->SetVisible(!shown);
    }
    void Layout() override
    {
        const ZTheme& theme = PageTheme(*this);
        const ZRect& b = bounds();
        const double buttonsTop = b.bottom() - theme.rowHeight;
        const double half = (listWidth_ - kPageRowGap) / 2;
        list->SetBounds({b.x, b.y, listWidth_, buttonsTop - kPageRowGap - b.y});
        add->SetBounds({b.x, buttonsTop, half, theme.rowHeight});
        remove->SetBounds({b.x + half + kPageRowGap, buttonsTop, half, theme.rowHeight});
        const ZRect right{b.x + listWidth_ + theme.spacing, b.y, b.width - listWidth_ - theme.spacing, b.height};
        details->SetBounds(right);
        hint->SetBounds(right);
    }

private:
    double listWidth_;
};

std::unique_ptr<ZView> BuildMIDISettingsEditor(ZModulatorEditorContext& context)
{
    return std::make_unique<ZMIDISettingsEditor>(context);
}

ZMIDISettingsEditor::ZMIDISettingsEditor(ZModulatorEditorContext& context)
    : context_(context), midi_(context.core.midiControllers()), state_(std::make_shared<State>())
{
    SetName("MIDISettingsEditor");
    for (const ZParameterGroup& group : ModulatableParameterGroups(context_.core))
        choices_.insert(choices_.end(), group.parameters.begin(), group.parameters.end());
    state_->controller = midi_.controllers().empty() ? -1 : 0;
    state_->note = midi_.noteControllers().empty() ? -1 : 0;
    buildControllers();
    buildNoteControllers();
    buildPresetSwitch();
    status_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Label));
    status_->SetName("Status");
    Refresh();
}

ZMIDISettingsEditor::~ZMIDISettingsEditor() = default;

std::unique_ptr<ZView> ZMIDISettingsEditor::control(const std::shared_ptr<ZParameterBinding>& binding,
                                                    const std::string& name, bool menu)
{
    std::unique_ptr<ZView> made;
    if (menu)
        made = std::make_unique<ZEnumMenu>(binding);
    else if (binding->StepCount() == 1)
        made = std::make_unique<ZSwitch>(binding);
    else
        made = std::make_unique<ZKnob>(binding);
    made->SetName(name);
    return made;
}

void ZMIDISettingsEditor::buildControllers()
{
    ZMIDIControllers& midi = midi_;
    const std::shared_ptr<State> state = state_;
    auto values = ControllerValues::Create(
        context_.core.processingLock(),
        [&midi, state] { return std::get<ZMIDIControllerAssignment>(GetMIDIItem(midi, ZMIDIItemKind::Controller, state->controller)); },
        [&midi, state](const ZMIDIControllerAssignment& item, int) {
            SetMIDIItem(midi, ZMIDIItemKind::Controller, state->controller, item);
        },
        [state](const std::string& message) { state->message = message; });
    using A = ZMIDIControllerAssignment;
    values->AddSwitch("Enabled", ControllerValues::Field(&A::enabled), true);
    values->Describe("Enabled", "Enabled", "<name>Enabled</name> <p>Whether this controller drives its parameter.</p>");
    ZValueInt& source = values->AddInteger(
        "Source",
        {[](const A& item) { return item.controller >= kFirstSource ? double(item.controller - kFirstSource + 1) : 0.0; },
         [](A& item, double at) {
             const int chosen = static_cast<int>(at);
             if (chosen > 0)
                 item.controller = kFirstSource + chosen - 1;
             else if (item.controller >= kFirstSource)
                 item.controller = 1; // back to a continuous controller: the modulation wheel
         }},
        0, kLastSource - kFirstSource + 1, 0);
    source.setFormatter([](int at) { return std::string(kSources[at]); });
    values->Describe("Source", "Source",
                     "<name>Source</name> <p>What drives the parameter: a continuous controller, aftertouch, "
                     "pitch-bend, or the velocity of notes (\"Velocity (on & off)\" goes to the lowest value when "
                     "the note ends).</p>");
    values->AddInteger("Controller", ControllerValues::Field(&A::controller), 0, 127, 1)
        .setFormatter([](int number) { return "CC " + std::to_string(number); });
    values->Describe("Controller", "Controller", "<name>Controller</name> <p>The continuous controller's number.</p>");
    addChannel(*values, ControllerValues::Field(&A::channel));
    values->AddEnum("FullRange", ControllerValues::Field(&A::target, &ZModulatorTarget::rangeMode), ZRangeMode::UpAndDown);
    values->Describe("FullRange", "Range mode",
                     "<name>Range mode</name> <p>How the controller's travel maps onto the parameter: around Value, "
                     "up or down from it by Range, or from Value to MaxValue (Interval).</p>");
    ZValueDouble& range = values->AddNumber("Range", ControllerValues::Field(&A::target, &ZModulatorTarget::range), 0.0,
                                            1.0, 1.0);
    range.setFormatter(FormatPercent);
    range.setParser(ParsePercent);
    values->Describe("Range", "Range", "<name>Range</name> <p>How far the controller moves the parameter.</p>");
    const auto parameter = [&midi, state] {
        try {
            return std::get<A>(GetMIDIItem(midi, ZMIDIItemKind::Controller, state->controller)).target.parameter;
        } catch (const ZException&) {
            return int32_t{0};
        }
    };
    inParameterUnits(values->AddNumber("Value", ControllerValues::Field(&A::target, &ZModulatorTarget::value), 0.0, 1.0,
                                       0.5),
                     context_.core, parameter);
    values->Describe("Value", "Value", "<name>Value</name> <p>The middle of the range, or its start in Interval mode.</p>");
    inParameterUnits(values->AddNumber("MaxValue", ControllerValues::Field(&A::target, &ZModulatorTarget::maxValue), 0.0,
                                       1.0, 1.0),
                     context_.core, parameter);
    values->Describe("MaxValue", "Max value", "<name>Max value</name> <p>The end of the range in Interval mode.</p>");
    values->AddSwitch("Invert", ControllerValues::Field(&A::target, &ZModulatorTarget::invert), false);
    values->Describe("Invert", "Invert", "<name>Invert</name> <p>The controller's highest value gives the lowest.</p>");
    addParameter<ControllerValues, A>(*values, choices_, context_.core,
                                      [](A& item) -> int32_t& { return item.target.parameter; });
    controllerValues_ = values;

    auto section = std::make_unique<Section>(kListWidth, "Add a controller, then move it with Learn on.");
    section->list->SetName("Controllers");
    section->list->SetOnSelect([this](int row) { SelectController(row); });
    section->add->SetName("AddController");
    section->add->SetOnClick([this] { AddController(); });
    section->remove->SetName("RemoveController");
    section->remove->SetOnClick([this] { RemoveController(); });
    const double knob = PageKnobHeight(PageTheme(*this));
    ZBoxLayout* first = section->Row(knob);
    first->Add(control(values->Binding("Source"), "Source", true), ZBoxItem::Fixed(kSourceWidth));
    controllerNumber_ = first->Add(control(values->Binding("Controller"), "Controller"), ZBoxItem::Fixed(kPageKnobCell));
    first->Add(control(values->Binding("Channel"), "Channel", true), ZBoxItem::Fixed(kPageKnobCell));
    auto learn = std::make_unique<ZButton>("Learn", [this] { Learn(ZMIDIItemKind::Controller); });
    learn->SetName("Learn");
    learn->SetHelpText("<name>Learn</name> <p>Takes the next controller the plug-in receives.</p>");
    learnController_ = learn.get();
    first->Add(centred(std::move(learn), PageTheme(*this).rowHeight), ZBoxItem::Fixed(kLearnWidth));
    ZBoxLayout* second = section->Row(knob);
    second->Add(control(values->Binding("FullRange"), "FullRange", true), ZBoxItem::Fixed(kRangeModeWidth));
    for (const char* key : {"Range", "Value", "MaxValue"})
        second->Add(control(values->Binding(key), key), ZBoxItem::Fixed(kPageKnobCell));
    ZBoxLayout* third = section->Row(PageTheme(*this).rowHeight);
    third->Add(control(values->Binding("Enabled"), "Enabled"), ZBoxItem::Preferred());
    third->Add(control(values->Binding("Invert"), "Invert"), ZBoxItem::Preferred());
    third->Add(std::make_unique<ZLabel>("Parameter", ZLabelStyle::Label), ZBoxItem::Fixed(kParameterLabelWidth));
    third->Add(std::make_unique<ZParameterChoiceMenu>(values->Binding("Parameter"), ModulatableParameterGroups(context_.core)),
               ZBoxItem::Fixed(kParameterMenuWidth))
        ->SetName("Parameter");
    section->CloseUp();

    auto panel = std::make_unique<ZPanel>("MIDI controllers", 1);
    panel->SetTitleControl(control(ZFunctionBinding::Switch(
                                       "Enabled", "<name>MIDI controllers</name> <p>Turns all controllers on or off.</p>",
                                       [&midi] { return midi.controllersEnabled(); },
                                       [&midi](bool on) { midi.setControllersEnabled(on); }),
                                   "ControllersEnabled"));
    controllers_ = panel->Add(std::move(section));
    AddChild(std::move(panel));
}

void ZMIDISettingsEditor::buildNoteControllers()
{
    ZMIDIControllers& midi = midi_;
    const std::shared_ptr<State> state = state_;
    auto values = NoteValues::Create(
        context_.core.processingLock(),
        [&midi, state] { return std::get<ZNoteController>(GetMIDIItem(midi, ZMIDIItemKind::NoteController, state->note)); },
        [&midi, state](const ZNoteController& item, int) {
            SetMIDIItem(midi, ZMIDIItemKind::NoteController, state->note, item);
        },
        [state](const std::string& message) { state->message = message; });
    using N = ZNoteController;
    values->AddSwitch("Enabled", NoteValues::Field(&N::enabled), true);
    values->Describe("Enabled", "Enabled", "<name>Enabled</name> <p>Whether this note controller drives its parameter.</p>");
    values->AddEnum("Mode", NoteValues::Field(&N::mode), ZNoteControllerMode::Linear);
    values->Describe("Mode", "Mode",
                     "<name>Mode</name> <p>Linear and Logarithmic follow the pitch of every note (Logarithmic suits "
                     "frequencies); On/Off holds MaxValue while the note is down; Switch toggles with each press. "
                     "The all-octaves modes take the note in any octave.</p>");
    values->AddInteger("Note", NoteValues::Field(&N::note), 0, 127, 60).setFormatter(NoteName);
    values->Describe("Note", "Note", "<name>Note</name> <p>The note listened to.</p>");
    addChannel(*values, NoteValues::Field(&N::channel));
    const auto parameter = [&midi, state] {
        try {
            return std::get<N>(GetMIDIItem(midi, ZMIDIItemKind::NoteController, state->note)).parameter;
        } catch (const ZException&) {
            return int32_t{0};
        }
    };
    inParameterUnits(values->AddNumber("Value", NoteValues::Field(&N::value), 0.0, 1.0, 0.0), context_.core, parameter);
    values->Describe("Value", "Value", "<name>Value</name> <p>The value for the lowest note, or while no note is down.</p>");
    inParameterUnits(values->AddNumber("MaxValue", NoteValues::Field(&N::maxValue), 0.0, 1.0, 1.0), context_.core,
                     parameter);
    values->Describe("MaxValue", "Max value",
                     "<name>Max value</name> <p>The value for the highest note, or while the note is down.</p>");
    addParameter<NoteValues, N>(*values, choices_, context_.core, [](N& item) -> int32_t& { return item.parameter; });
    noteValues_ = values;

    auto section = std::make_unique<Section>(kListWidth, "Add a note controller.");
    section->list->SetName("NoteControllers");
    section->list->SetOnSelect([this](int row) { SelectNoteController(row); });
    section->add->SetName("AddNoteController");
    section->add->SetOnClick([this] { AddNoteController(); });
    section->remove->SetName("RemoveNoteController");
    section->remove->SetOnClick([this] { RemoveNoteController(); });
    const double knob = PageKnobHeight(PageTheme(*this));
    ZBoxLayout* first = section->Row(knob);
    first->Add(control(values->Binding("Mode"), "Mode", true), ZBoxItem::Fixed(kNoteModeWidth));
    first->Add(control(values->Binding("Note"), "Note"), ZBoxItem::Fixed(kPageKnobCell));
    first->Add(control(values->Binding("Channel"), "Channel", true), ZBoxItem::Fixed(kPageKnobCell));
    ZBoxLayout* second = section->Row(knob);
    for (const char* key : {"Value", "MaxValue"})
        second->Add(control(values->Binding(key), key), ZBoxItem::Fixed(kPageKnobCell));
    ZBoxLayout* third = section->Row(PageTheme(*this).rowHeight);
    third->Add(control(values->Binding("Enabled"), "Enabled"), ZBoxItem::Preferred());
    third->Add(std::make_unique<ZLabel>("Parameter", ZLabelStyle::Label), ZBoxItem::Fixed(kParameterLabelWidth));
    third->Add(std::make_unique<ZParameterChoiceMenu>(values->Binding("Parameter"), ModulatableParameterGroups(context_.core)),
               ZBoxItem::Fixed(kParameterMenuWidth))
        ->SetName("Parameter");
    section->CloseUp();

    auto panel = std::make_unique<ZPanel>("Note controllers", 1);
    panel->SetTitleControl(control(ZFunctionBinding::Switch(
                                       "Enabled", "<name>Note controllers</name> <p>Turns all note controllers on or off.</p>",
                                       [&midi] { return midi.noteControllersEnabled(); },
                                       [&midi](bool on) { midi.setNoteControllersEnabled(on); }),
                                   "NoteControllersEnabled"));
    notes_ = panel->Add(std::move(section));
    AddChild(std::move(panel));
}

void ZMIDISettingsEditor::buildPresetSwitch()
{
    ZMIDIControllers& midi = midi_;
    const std::shared_ptr<State> state = state_;
    auto values = PresetSwitchValues::Create(
        context_.core.processingLock(), [&midi] { return midi.presetSwitch(); },
        [&midi](const ZPresetSwitchController& item, int) { SetMIDIItem(midi, ZMIDIItemKind::PresetSwitch, 0, item); },
        [state](const std::string& message) { state->message = message; });
    using P = ZPresetSwitchController;
    values->AddSwitch("Enabled", PresetSwitchValues::Field(&P::enabled), false);
    values->Describe("Enabled", "Enabled",
                     "<name>Preset switch</name> <p>A controller that steps through the presets: below a third of "
                     "its travel it loads the previous preset, above two thirds the next.</p>");
    values->AddInteger("Controller", PresetSwitchValues::Field(&P::controller), 0, 127, 0)
        .setFormatter([](int number) { return "CC " + std::to_string(number); });
    values->Describe("Controller", "Controller", "<name>Controller</name> <p>The controller that switches presets.</p>");
    addChannel(*values, PresetSwitchValues::Field(&P::channel));
    presetSwitchValues_ = values;

    const ZTheme& theme = PageTheme(*this);
    auto panel = std::make_unique<ZPanel>("Preset switch", 1);
    panel->SetName("PreviousNextPresetController");
    auto* column = panel->Add(std::make_unique<ZBoxLayout>(ZOrientation::Vertical, theme.spacing));
    column->Add(control(values->Binding("Enabled"), "Enabled"), ZBoxItem::Fixed(theme.rowHeight));
    column->Add(control(values->Binding("Controller"), "Controller"), ZBoxItem::Fixed(PageKnobHeight(theme)));
    column->Add(control(values->Binding("Channel"), "Channel", true),
                ZBoxItem::Fixed(theme.rowHeight + 2 * theme.labelHeight));
    learnPresetSwitch_ =
        column->Add(std::make_unique<ZButton>("Learn", [this] { Learn(ZMIDIItemKind::PresetSwitch); }),
                    ZBoxItem::Fixed(theme.rowHeight));
    learnPresetSwitch_->SetName("Learn");
    learnPresetSwitch_->SetHelpText("<name>Learn</name> <p>Takes the next controller the plug-in receives.</p>");
    column->Add(std::make_unique<ZView>());
    presetSwitch_ = AddChild(std::move(panel));
}

// ---- selection and lists ----

int ZMIDISettingsEditor::selectedController() const { return state_->controller; }
int ZMIDISettingsEditor::selectedNoteController() const { return state_->note; }
const std::string& ZMIDISettingsEditor::message() const { return state_->message; }

void ZMIDISettingsEditor::SelectController(int index)
{
    const int count = static_cast<int>(midi_.controllers().size());
    state_->controller = count == 0 ? -1 : std::clamp(index, 0, count - 1);
    Refresh();
}

void ZMIDISettingsEditor::SelectNoteController(int index)
{
    const int count = static_cast<int>(midi_.noteControllers().size());
    state_->note = count == 0 ? -1 : std::clamp(index, 0, count - 1);
    Refresh();
}

void ZMIDISettingsEditor::attempt(const std::function<void()>& edit)
{
    state_->message.clear();
    try {
        edit();
    } catch (const ZException& error) {
        state_->message = error.what();
    }
    Refresh();
}

// A new controller drives the first parameter no other controller drives; the list is
// switched on with it, since a controller added is meant to be used.
void ZMIDISettingsEditor::AddController()
{
    attempt([this] {
        std::vector<ZMIDIControllerAssignment> list = midi_.controllers();
        ZMIDIControllerAssignment added;
        const auto unused = std::find_if(choices_.begin(), choices_.end(), [&list](int32_t index) {
            return std::none_of(list.begin(), list.end(), [index](const auto& item) { return item.target.parameter == index; });
        });
        added.target.parameter = unused != choices_.end() ? *unused : choices_.front();
        list.push_back(added);
        midi_.setControllers(std::move(list));
        midi_.setControllersEnabled(true);
        state_->controller = static_cast<int>(midi_.controllers().size()) - 1;
    });
}

void ZMIDISettingsEditor::RemoveController()
{
    attempt([this] {
        std::vector<ZMIDIControllerAssignment> list = midi_.controllers();
        if (state_->controller < 0 || state_->controller >= static_cast<int>(list.size()))
            throw ZException(kUnknownMIDIItem);
        if (learning_ && learning_->kind == ZMIDIItemKind::Controller)
            stopLearning();
        list.erase(list.begin() + state_->controller);
        midi_.setControllers(std::move(list));
    });
}

void ZMIDISettingsEditor::AddNoteController()
{
    attempt([this] {
        std::vector<ZNoteController> list = midi_.noteControllers();
        ZNoteController added;
        added.parameter = choices_.front();
        list.push_back(added);
        midi_.setNoteControllers(std::move(list));
        midi_.setNoteControllersEnabled(true);
        state_->note = static_cast<int>(midi_.noteControllers().size()) - 1;
    });
}

void ZMIDISettingsEditor::RemoveNoteController()
{
    attempt([this] {
        std::vector<ZNoteController> list = midi_.noteControllers();
        if (state_->note < 0 || state_->note >= static_cast<int>(list.size()))
            throw ZException(kUnknownMIDIItem);
        list.erase(list.begin() + state_->note);
        midi_.setNoteControllers(std::move(list));
    });
}

void ZMIDISettingsEditor::showRows()
{
    const auto parameterName = [this](int32_t index) { return context_.core.GetParameterName(index); };
    std::vector<std::string> rows;
    for (const ZMIDIControllerAssignment& item : midi_.controllers())
        rows.push_back(MIDISourceName(item.controller) + " \u2192 " + parameterName(item.target.parameter) +
                       (item.enabled ? "" : " (off)"));
    if (rows != controllers_->list->rows())
        keepScrolled(*controllers_->list, rows);
    if (controllers_->list->selectedRow() != state_->controller)
        controllers_->list->SetSelectedRow(state_->controller);

    rows.clear();
    const auto modes = ZEnumNames<ZNoteControllerMode>::names();
    for (const ZNoteController& item : midi_.noteControllers())
        rows.push_back((followsEveryNote(item.mode) ? std::string(modes[static_cast<size_t>(item.mode)])
                                                    : NoteName(item.note)) +
                       " \u2192 " + parameterName(item.parameter) + (item.enabled ? "" : " (off)"));
    if (rows != notes_->list->rows())
        keepScrolled(*notes_->list, rows);
    if (notes_->list->selectedRow() != state_->note)
        notes_->list->SetSelectedRow(state_->note);
}

// Each list shows the settings of its selected item, only those that apply to it.
void ZMIDISettingsEditor::showDetails()
{
    const bool controller = state_->controller >= 0;
    controllers_->ShowDetails(controller);
    if (controller) {
        controllerValues_->Pull();
        const bool continuous = midi_.controllers()[static_cast<size_t>(state_->controller)].controller < kFirstSource;
        if (controllerNumber_->visible() != continuous) {
            controllerNumber_->SetVisible(continuous);
            controllerNumber_->parent()->Layout();
        }
    }
    const bool note = state_->note >= 0;
    notes_->ShowDetails(note);
    if (note) {
        noteValues_->Pull();
        ZView* number = notes_->FindByName("Note");
        const bool oneNote = !followsEveryNote(midi_.noteControllers()[static_cast<size_t>(state_->note)].mode);
        if (number->visible() != oneNote) {
            number->SetVisible(oneNote);
            number->parent()->Layout();
        }
    }
    presetSwitchValues_->Pull();
}

// ---- MIDI learn ----

void ZMIDISettingsEditor::Learn(ZMIDIItemKind kind)
{
    const bool again = learning_ && learning_->kind == kind;
    stopLearning();
    const int index = kind == ZMIDIItemKind::Controller ? state_->controller : 0;
    if (again || index < 0)
        return;
    learning_ = Learning{kind, index, midi_.lastReceived().count};
    (kind == ZMIDIItemKind::Controller ? learnController_ : learnPresetSwitch_)->SetChecked(true);
    state_->message = "Move a controller\u2026";
}

void ZMIDISettingsEditor::stopLearning()
{
    learning_.reset();
    learnController_->SetChecked(false);
    learnPresetSwitch_->SetChecked(false);
}

// The preset switch watches continuous controllers only; a controller assignment takes
// aftertouch and pitch-bend too.
void ZMIDISettingsEditor::followLearning()
{
    if (!learning_)
        return;
    const ZReceivedController received = midi_.lastReceived();
    if (received.count == learning_->count)
        return;
    learning_->count = received.count;
    if (learning_->kind == ZMIDIItemKind::PresetSwitch && received.controller >= kFirstSource)
        return;
    const Learning learned = *learning_;
    stopLearning();
    attempt([&] {
        ZMIDIItem item = GetMIDIItem(midi_, learned.kind, learned.index);
        std::visit(
            [&](auto& chosen) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(chosen)>, ZNoteController>) {
                    chosen.controller = received.controller;
                    chosen.channel = received.channel + 1;
                }
            },
            item);
        SetMIDIItem(midi_, learned.kind, learned.index, item);
        state_->message = "Learned " + MIDISourceName(received.controller) + " on channel " +
                          std::to_string(received.channel + 1) + ".";
    });
}

// ---- layout and polling ----

void ZMIDISettingsEditor::Layout()
{
    const ZRect& b = bounds();
    const double gap = PageTheme(*this).spacing;
    const double height = b.height - kStatusHeight - 4;
    controllers_->parent()->parent()->SetBounds({b.x, b.y, kControllersWidth, height});
    notes_->parent()->parent()->SetBounds({b.x + kControllersWidth + gap, b.y, kNotesWidth, height});
    const double presetX = b.x + kControllersWidth + kNotesWidth + 2 * gap;
    presetSwitch_->SetBounds({presetX, b.y, b.right() - presetX, height});
    status_->SetBounds({b.x + PageTheme(*this).padding, b.bottom() - kStatusHeight, b.width, kStatusHeight});
}

void ZMIDISettingsEditor::Refresh()
{
    // The lists may have changed elsewhere (a loaded state): the selection stays inside them.
    const int controllers = static_cast<int>(midi_.controllers().size());
    const int notes = static_cast<int>(midi_.noteControllers().size());
    state_->controller = controllers == 0 ? -1 : std::clamp(state_->controller, 0, controllers - 1);
    state_->note = notes == 0 ? -1 : std::clamp(state_->note, 0, notes - 1);
    followLearning();
    showRows();
    showDetails();
    if (status_->Text() != state_->message)
        status_->SetText(state_->message);
}

} // namespace halvern
