#include "editor/shape_editor.h"

#include "editor/preset_source.h"
#include "editor/preset_window.h"

#include "audio_import/audio_file_reader.h"
#include "core/value_displays.h"
#include "editor/page_layout.h"
#include "editor/preset_window.h"
#include "editor/setting_mirror.h"
#include "editor/shape_graph.h"
#include "state/preset_owners.h"
#include "ui/controls/button.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/popup_menu.h"
#include "ui/controls/text_field.h"
#include "ui/dialog.h"
#include "ui/file_chooser.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <vector>

namespace halvern {
namespace {

using ShapeValues = ZSettingMirror<ZSignalGenerator>;
using Family = ZSignalGenerator::Family;

constexpr double kFamilyWidth = 120.0;
constexpr double kCountWidth = 84.0;
constexpr double kArrowWidth = 26.0;

std::shared_ptr<ShapeValues> makeShapeValues(ZLFO& lfo, ZLock& lock)
{
    auto values = ShapeValues::Create(
        lock, [&lfo] { return lfo.shape(); }, [&lfo](const ZSignalGenerator& shape, int) { lfo.setShape(shape); });
    values->AddEnum("Family",
                    {[](const ZSignalGenerator& g) { return static_cast<double>(g.family()); },
                     [](ZSignalGenerator& g, double v) { g.setFamily(static_cast<Family>(std::lround(v))); }},
                    Family::Sine);
    values->Describe("Family", "Shape",
                     "<name>Shape</name> <p>The waveform's family: sine, triangle, rising or falling saw, square, a "
                     "sequence of steps, or a sum of harmonics.</p>");
    ZValueDouble& offset = values->AddNumber(
        "PhaseOffset",
        {[](const ZSignalGenerator& g) { return g.phaseOffset(); },
         [](ZSignalGenerator& g, double v) { g.setPhaseOffset(v); }},
        0.0, 1.0, 0.0);
    offset.setFormatter(FormatPercent);
    offset.setParser(ParsePercent);
    values->Describe("PhaseOffset", "Phase offset",
                     "<name>Phase offset</name> <p>Moves the waveform along the cycle.</p>");
    ZValueDouble& smoothing = values->AddNumber(
        "Smoothing",
        {[](const ZSignalGenerator& g) { return g.smoothing(); }, [](ZSignalGenerator& g, double v) { g.setSmoothing(v); }},
        0.0, 1.0, 0.0);
    smoothing.setFormatter(FormatPercent);
    smoothing.setParser(ParsePercent);
    values->Describe("Smoothing", "Smoothing",
                     "<name>Smoothing</name> <p>Rounds the jumps of squares, saws and steps; at 100 % a square "
                     "becomes a sine.</p>");
    values->Pull();
    return values;
}

} // namespace

// The shape presets of one LFO and the line that reports on them. Shared with the menus
// and text fields it opens, which may outlive the editor.
class ZShapePresets {
public:
    ZShapePresets(ZQuessaneAudioEffectPlugin& core, int lfoIndex) : manager_({core, lfoIndex}, core.userDataFolder())
    {
        Reload();
    }

    // The last message, else the name of the preset loaded last.
    std::string Caption()
    {
        if (!message_.empty())
            return message_;
        if (std::string name = CurrentPresetName(manager_); !name.empty())
            return name;
        return manager_.sequence().empty() ? "No shape presets yet" : "No preset";
    }

    // What the user's collection holds now: another instance may have saved meanwhile.
    void Reload()
    {
        attempt([this] { manager_.LoadCollection(); });
    }
    void Step(int direction)
    {
        attempt([this, direction] {
            manager_.LoadCollection();
            if (!manager_.Step(direction))
                message_ = "No shape presets yet";
        });
    }
    // False for an empty name, which is not taken.
    bool SaveAs(const std::string& name)
    {
        if (name.find_first_not_of(' ') == std::string::npos)
            return false;
        attempt([this, &name] {
            const std::string notice =
                manager_.SaveCollection([this, &name](ZPresetCollection& collection) { manager_.Add(collection.root(), name); });
            message_ = notice.empty() ? "Saved \u201C" + name + "\u201D" : notice;
        });
        return true;
    }
    ZSignalGeneratorPresetManager& manager() { return manager_; }

private:
    template <class Action>
    void attempt(Action action)
    {
        message_.clear();
        try {
            action();
        } catch (const std::exception& error) {
            message_ = error.what();
        }
    }

    ZSignalGeneratorPresetManager manager_;
    std::string message_;
};

ZShapeEditor::ZShapeEditor(ZModulatorEditorContext& context, int lfoIndex)
    : lfo_(context.core.lfo(lfoIndex)), lock_(context.core.processingLock()), presets_(std::make_shared<ZShapePresets>(context.core, lfoIndex)),
      values_(makeShapeValues(lfo_, context.core.processingLock()))
{
    SetName("SignalGenerator");
    ZQuessaneAudioEffectPlugin& core = context.core;
    ZLFO& lfo = lfo_;

    family_ = AddChild(std::make_unique<ZEnumMenu>(values_->Binding("Family")));
    family_->SetName("Family");
    fewer_ = AddChild(std::make_unique<ZButton>("\u2212", [this] { ChangeCount(-1); }));
    fewer_->SetName("ShapeCountDown");
    count_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Text, ZTextAlign::Center));
    count_->SetName("ShapeCount");
    more_ = AddChild(std::make_unique<ZButton>("+", [this] { ChangeCount(1); }));
    more_->SetName("ShapeCountUp");

    graph_ = AddChild(std::make_unique<ZShapeGraph>(
        [&lfo] { return lfo.shape(); },
        [&lfo](const ZSignalGenerator& shape) { lfo.setShape(shape); },
        [&lfo, &core]() -> std::optional<double> {
            if (!lfo.enabled() || !core.modulatorsEnabled())
                return std::nullopt;
            return lfo.shownPhase();
        }));
    phaseOffset_ = AddChild(std::make_unique<ZKnob>(values_->Binding("PhaseOffset")));
    phaseOffset_->SetName("PhaseOffset");
    smoothing_ = AddChild(std::make_unique<ZKnob>(values_->Binding("Smoothing")));
    smoothing_->SetName("Smoothing");

    previous_ = AddChild(std::make_unique<ZButton>("\u25C0", [this] { StepPreset(-1); }));
    previous_->SetName("PreviousShapePreset");
    previous_->SetHelpText("<name>Previous preset</name> <p>Loads the shape preset before the current one.</p>");
    status_ = AddChild(std::make_unique<ZLabel>("", ZLabelStyle::Label, ZTextAlign::Center));
    status_->SetName("ShapePresetStatus");
    next_ = AddChild(std::make_unique<ZButton>("\u25B6", [this] { StepPreset(1); }));
    next_->SetName("NextShapePreset");
    next_->SetHelpText("<name>Next preset</name> <p>Loads the shape preset after the current one.</p>");
    fromSound_ = AddChild(std::make_unique<ZButton>("From sound\u2026", [this] { OpenSoundMenu(); }));
    fromSound_->SetName("ShapeFromSound");
    fromSound_->SetHelpText("<name>From sound</name> <p>Takes the shape from a sound file (wav, aif, aiff, flac, "
                            "mp3, maf): the waveform of one of its cycles, or its envelope.</p>");
    load_ = AddChild(std::make_unique<ZButton>("Load\u2026", [this] { OpenPresetWindow(); }));
    load_->SetName("LoadShapePreset");
    load_->SetHelpText("<name>Load</name> <p>Opens the shape presets: load, rename, sort into folders, export and "
                       "import.</p>");
    saveAs_ = AddChild(std::make_unique<ZButton>("Save as\u2026", [this] { OpenSaveAs(); }));
    saveAs_->SetName("SaveShapePreset");
    saveAs_->SetHelpText("<name>Save as</name> <p>Keeps the shape as a new preset of your own.</p>");
    showCount();
    status_->SetText(presets_->Caption());
}

ZShapeEditor::~ZShapeEditor() = default;

void ZShapeEditor::ChangeCount(int change)
{
    ZLockHolder hold(lock_, -1);
    ZSignalGenerator shape = lfo_.shape();
    const bool steps = shape.family() == Family::Steps;
    if (!steps && shape.family() != Family::Harmonics)
        return;
    const std::span<const double> current = steps ? shape.steps() : shape.harmonics();
    std::vector<double> values(current.begin(), current.end());
    const int limit = steps ? ZSignalGenerator::kMaxSteps : ZSignalGenerator::kMaxHarmonics;
    values.resize(static_cast<size_t>(std::clamp(static_cast<int>(values.size()) + change, 1, limit)), 0.0);
    steps ? shape.setSteps(values) : shape.setHarmonics(values);
    lfo_.setShape(shape);
}

std::string ZShapeEditor::LoadShapeFromSound(const std::string& path, ZShapeSource source)
{
    std::vector<double> steps;
    try {
        steps = StepsFromSound(ReadAudioFile(path), source, ZSignalGenerator::kMaxSteps);
    } catch (const ZShapeFromSoundError& error) {
        return "\u201C" + std::filesystem::path(path).filename().string() + "\u201D gives no shape: " + error.what();
    } catch (const std::exception& error) {
        return error.what();
    }
    ZLockHolder hold(lock_, -1);
    ZSignalGenerator shape = lfo_.shape();
    shape.setFamily(Family::Steps);
    shape.setSteps(steps);
    shape.setSmoothing(1.0);
    shape.setPhaseOffset(0.0);
    lfo_.setShape(shape);
    return {};
}

void ZShapeEditor::ChooseShapeFromSound(ZShapeSource source)
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    ZFileChooserOptions options;
    options.title = source == ZShapeSource::Cycle ? "Shape from a sound's cycle" : "Shape from a sound's envelope";
    options.extensions = AudioFileExtensionList();
    ZDialog::Show(*owner, std::make_unique<ZFileChooser>(std::move(options), [this, owner, source](const std::string& path) {
        if (const std::string error = LoadShapeFromSound(path, source); !error.empty())
            ShowMessage(*owner, "Shape from sound", error);
    }));
}

void ZShapeEditor::showCount()
{
    const ZSignalGenerator& shape = lfo_.shape();
    const bool steps = shape.family() == Family::Steps;
    const bool counted = steps || shape.family() == Family::Harmonics;
    for (ZView* view : std::initializer_list<ZView*>{fewer_, count_, more_})
        view->SetVisible(counted);
    if (!counted)
        return;
    const size_t count = steps ? shape.steps().size() : shape.harmonics().size();
    const std::string text = std::to_string(count) + (steps ? " step" : " harmonic") + (count == 1 ? "" : "s");
    if (text != count_->Text())
        count_->SetText(text);
}

void ZShapeEditor::StepPreset(int direction)
{
    presets_->Step(direction);
    status_->SetText(presets_->Caption());
}

// The window keeps the presets alive while it is open.
void ZShapeEditor::OpenPresetWindow()
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    presets_->Reload();
    ShowPresetWindow(*owner, presets_->manager(), "Shape presets", [presets = presets_] {});
}

void ZShapeEditor::OpenSoundMenu()
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    std::vector<ZMenuItem> items;
    items.push_back({.text = "Waveform of one cycle\u2026", .action = [this] { ChooseShapeFromSound(ZShapeSource::Cycle); }});
    items.push_back({.text = "Envelope\u2026", .action = [this] { ChooseShapeFromSound(ZShapeSource::Envelope); }});
    ZPopupMenu::Show(*owner, std::move(items), fromSound_->bounds(), fromSound_->bounds().width);
}

// A text field over the status line takes the new preset's name; Enter saves it.
void ZShapeEditor::OpenSaveAs()
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    auto* field = static_cast<ZTextField*>(owner->PushOverlay(std::make_unique<ZTextField>("My shape")));
    field->SetName("ShapePresetName");
    field->SetBounds(status_->bounds());
    field->SelectAll();
    field->SetOnCommit([owner, field, presets = presets_](const std::string& name) {
        if (!presets->SaveAs(name))
            return false;
        owner->RemoveOverlay(field);
        return true;
    });
    field->SetOnCancel([owner, field] { owner->RemoveOverlay(field); });
    owner->SetFocus(field);
}

void ZShapeEditor::Layout()
{
    const ZRect& b = bounds();
    const ZTheme& theme = PageTheme(*this);
    const double row = theme.rowHeight;
    const double gap = theme.spacing;
    const double knobWidth = kPageKnobCell;
    family_->SetBounds({b.x, b.y, kFamilyWidth, row});
    fewer_->SetBounds({b.x + kFamilyWidth + gap, b.y, row, row});
    count_->SetBounds({fewer_->bounds().right(), b.y, kCountWidth, row});
    more_->SetBounds({count_->bounds().right(), b.y, row, row});
    const double graphTop = b.y + row + gap;
    const double bottomRow = b.bottom() - row;
    graph_->SetBounds({b.x, graphTop, b.width - knobWidth - gap, bottomRow - gap - graphTop});
    // The knobs one above the other, in the middle of the height beside the graph.
    const double knobHeight = PageKnobHeight(theme);
    const double knobsTop = std::round(b.y + (bottomRow - b.y - 2 * knobHeight - gap) / 2);
    phaseOffset_->SetBounds({b.right() - knobWidth, knobsTop, knobWidth, knobHeight});
    smoothing_->SetBounds({b.right() - knobWidth, knobsTop + knobHeight + gap, knobWidth, knobHeight});
    const double loadWidth = 64.0, saveWidth = 76.0, soundWidth = 100.0;
    saveAs_->SetBounds({b.right() - saveWidth, bottomRow, saveWidth, row});
    load_->SetBounds({saveAs_->bounds().x - gap - loadWidth, bottomRow, loadWidth, row});
    fromSound_->SetBounds({load_->bounds().x - gap - soundWidth, bottomRow, soundWidth, row});
    previous_->SetBounds({b.x, bottomRow, kArrowWidth, row});
    next_->SetBounds({fromSound_->bounds().x - gap - kArrowWidth, bottomRow, kArrowWidth, row});
    status_->SetBounds({previous_->bounds().right() + 4, bottomRow, next_->bounds().x - 4 - previous_->bounds().right() - 4, row});
}

void ZShapeEditor::Refresh()
{
    values_->Pull();
    showCount();
    const std::string caption = presets_->Caption();
    if (caption != status_->Text())
        status_->SetText(caption);
}

} // namespace halvern
