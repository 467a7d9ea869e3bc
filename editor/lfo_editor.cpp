#include "editor/lfo_editor.h"

#include "editor/host_parameter_binding.h"
#include "editor/modulator_strips.h"
#include "editor/page_layout.h"
#include "editor/shape_editor.h"
#include "editor/target_list_editor.h"
#include "ui/box_layout.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/scroll_area.h"
#include "ui/controls/switch.h"
#include "ui/grid_layout.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <set>

namespace halvern {
namespace {

constexpr double kRowHeight = 280.0;      // the general row and the targets: one screen each
constexpr double kGeneralWidth = 396.0;   // four knob cells
constexpr int kGeneralColumns = 4;

using Rows = std::vector<std::vector<const char*>>;

// A panel of the current mode: its title, the setting whose switch sits in its title,
// its columns of knobs and its rows of settings (a row of switches only is a row of
// switches side by side).
struct PanelPlan {
    std::string title;
    const char* titleSwitch;
    int columns;
    Rows rows;
};

double panelWidth(int columns, const ZTheme& theme)
{
    return columns * kPageKnobCell + (columns - 1) * theme.spacing + 2 * theme.padding;
}

// What the detector modes output: the oscillator mixed in, the projection onto the
// shape where the mode has it, and the side-chain where the mode listens to the input.
PanelPlan outputPanel(bool projection, bool sideChain)
{
    PanelPlan output{"Output", nullptr, projection ? 3 : 2, {}};
    output.rows.push_back(projection ? std::vector<const char*>{"LFOAmount", "Project.Phase", "Project.Interval"}
                                     : std::vector<const char*>{"LFOAmount"});
    if (projection)
        output.rows.push_back({"Project.enabled"});
    if (sideChain)
        output.rows.push_back({"UseSideChain"});
    return output;
}

std::vector<PanelPlan> panelsOf(ZLFOMode mode, bool audioEnvelope)
{
    switch (mode) {
    case ZLFOMode::Envelope:
        return {{"Level follower", nullptr, 4,
                 {{"Follower.Attack", "Follower.Release", "Follower.Hold", "Follower.RMSLength"},
                  {"Follower.LevelMin", "Follower.LevelMax", "Follower.Mode", "Follower.Threshold"},
                  {"Follower.Maximize"}}},
                {"Band-pass", "Follower.BandPass", 3, {{"Follower.Minimum", "Follower.Maximum", "Follower.Q"}}},
                outputPanel(true, true)};
    case ZLFOMode::MidiEnvelope:
        return {audioEnvelope ? PanelPlan{"Envelope", nullptr, 4,
                                          {{"Envelope.EnvelopeMode", "Envelope.Threshold On", "Envelope.Threshold Off",
                                            "Envelope.RMSLength"}}}
                              : PanelPlan{"Envelope", nullptr, 1, {{"Envelope.EnvelopeMode"}}},
                {"ADSR", nullptr, 4,
                 {{"Envelope.ADSR.Attack", "Envelope.ADSR.Decay", "Envelope.ADSR.Sustain", "Envelope.ADSR.Release"}}},
                outputPanel(true, audioEnvelope)};
    case ZLFOMode::Random:
        return {{"Random", nullptr, 2, {{"Random.Speed", "Random.Smoothness"}}}, outputPanel(true, false)};
    case ZLFOMode::Pitch:
        return {{"Pitch range", nullptr, 3, {{"MinFrequency", "MaxFrequency"}, {"Octaves", "Semitones", "Cents"}}},
                {"Detector", nullptr, 3,
                 {{"PitchDetector.MinFrequencyRec", "PitchDetector.MaxFrequencyRec", "PitchDetector.Threshold"},
                  {"PitchDetector.Stabilization", "PitchDetector.Speed", "PitchDetector.Accuracy"}}},
                {"Auto-tune", "Auto-tune.Enabled", 2, {{"Auto-tune.Speed", "Auto-tune.Depth"}}},
                outputPanel(false, true)};
    case ZLFOMode::Normal:
        break;
    }
    return {};
}

bool isMenu(const std::string& key)
{
    static const std::set<std::string> menus = {"Mode", "PhaseSyncGroup", "Follower.Mode", "Envelope.EnvelopeMode"};
    return menus.count(key) != 0;
}

// The enable switch of the page is the user's own: turning the LFO off always gives its
// targets their values back. The host hears of it as of any gesture.
class ZManualEnableBinding : public ZHostParameterBinding {
public:
    ZManualEnableBinding(ZModulatorEditorContext& context, ZLFO& lfo, int32_t index)
        : ZHostParameterBinding(context.core, context.host, index, "Enabled"), lfo_(lfo)
    {
    }
    void SetValue(double normalized) override
    {
        lfo_.setEnabledByUser(normalized >= 0.5);
        ZHostParameterBinding::SetValue(normalized);
    }

private:
    ZLFO& lfo_;
};

} // namespace

// The page's rows: the general settings beside the shape, the mode's panels (when the
// mode has any) and the targets.
class ZLFOEditor::Rows : public ZView {
public:
    ZView* general = nullptr;
    ZView* shape = nullptr;
    ZView* modes = nullptr;
    ZView* targets = nullptr;
    double modesHeight = 0.0; // the tallest panel of the mode

    double Height() const
    {
        const double gap = PageTheme(*this).spacing;
        return 2 * kRowHeight + gap + (modes != nullptr ? modesHeight + gap : 0.0);
    }
    void Layout() override
    {
        const double gap = PageTheme(*this).spacing;
        const ZRect& b = bounds();
        double y = b.y;
        general->SetBounds({b.x, y, kGeneralWidth, kRowHeight});
        shape->SetBounds({b.x + kGeneralWidth + gap, y, b.width - kGeneralWidth - gap, kRowHeight});
        y += kRowHeight + gap;
        if (modes != nullptr) {
            modes->SetBounds({b.x, y, b.width, modesHeight});
            y += modesHeight + gap;
        }
        targets->SetBounds({b.x, y, b.width, kRowHeight});
    }
};

std::unique_ptr<ZView> BuildLFOEditor(ZModulatorEditorContext& context, int lfoIndex)
{
    return std::make_unique<ZLFOEditor>(context, lfoIndex);
}

ZLFOEditor::ZLFOEditor(ZModulatorEditorContext& context, int lfoIndex)
    : context_(context), index_(lfoIndex), lfo_(context.core.lfo(lfoIndex)),
      values_(MakeLFOSettingValues(lfo_, context.core.processingLock())), shown_(shownNow())
{
    SetName("LFOEditor");
    scroll_ = AddChild(std::make_unique<ZScrollArea>());
    scroll_->SetName("LFOScroll");
    auto rows = std::make_unique<Rows>();
    rows_ = rows.get();
    rows_->general = buildGeneral();

    auto shapePanel = std::make_unique<ZPanel>("Modulator shape", 1);
    shape_ = shapePanel->Add(std::make_unique<ZShapeEditor>(context_, index_));
    rows_->shape = rows_->AddChild(std::move(shapePanel));

    auto targets = std::make_unique<ZPanel>("Targets", 1);
    targets->Add(std::make_unique<ZTargetListEditor>(context_, lfo_.targets(), "LFO " + std::to_string(index_ + 1)));
    rows_->targets = rows_->AddChild(std::move(targets));
    scroll_->SetContent(std::move(rows));
    buildModePanels();
}

ZLFOEditor::Shown ZLFOEditor::shownNow() const
{
    return {static_cast<ZLFOMode>(lfo_.settings().mode),
            lfo_.envelope().settings().mode == ZLFOEnvelopeMode::Audio};
}

std::unique_ptr<ZView> ZLFOEditor::control(const std::string& key)
{
    const int32_t first = context_.core.lfoParameterIndex(index_);
    std::unique_ptr<ZView> made;
    if (key == "Enabled")
        made = std::make_unique<ZSwitch>(std::make_shared<ZManualEnableBinding>(context_, lfo_, first));
    else if (key == "Frequency")
        made = std::make_unique<ZKnob>(
            std::make_shared<ZHostParameterBinding>(context_.core, context_.host, first + 1, "Frequency"));
    else if (key == "LFOAmount")
        made = std::make_unique<ZKnob>(
            std::make_shared<ZHostParameterBinding>(context_.core, context_.host, first + 2, "LFO modulation"));
    else if (isMenu(key))
        made = std::make_unique<ZEnumMenu>(values_->Binding(key));
    else if (auto binding = values_->Binding(key); binding->StepCount() == 1)
        made = std::make_unique<ZSwitch>(binding);
    else
        made = std::make_unique<ZKnob>(binding);
    made->SetName(key);
    return made;
}

std::unique_ptr<ZPanel> ZLFOEditor::panel(const std::string& title, const char* titleSwitch, int columns,
                                          const std::vector<std::vector<const char*>>& rows)
{
    const ZTheme& theme = PageTheme(*this);
    auto made = std::make_unique<ZPanel>(title, 1);
    if (titleSwitch != nullptr)
        made->SetTitleControl(control(titleSwitch));
    auto* body = made->Add(std::make_unique<ZBoxLayout>(ZOrientation::Vertical, theme.spacing));
    for (const std::vector<const char*>& row : rows) {
        std::vector<std::unique_ptr<ZView>> controls;
        bool switches = true;
        for (const char* key : row) {
            controls.push_back(control(key));
            switches = switches && dynamic_cast<ZSwitch*>(controls.back().get()) != nullptr;
        }
        if (switches) {
            auto* line = body->Add(std::make_unique<ZBoxLayout>(ZOrientation::Horizontal, 2 * theme.spacing),
                                   ZBoxItem::Fixed(theme.rowHeight));
            for (auto& made : controls)
                line->Add(std::move(made), ZBoxItem::Preferred());
            line->Add(std::make_unique<ZView>());
        } else {
            auto* line = body->Add(std::make_unique<ZGridLayout>(columns, theme.spacing), ZBoxItem::Fixed(PageKnobHeight(theme)));
            for (auto& made : controls)
                line->AddChild(std::move(made));
        }
    }
    return made;
}

ZPanel* ZLFOEditor::buildGeneral()
{
    std::unique_ptr<ZPanel> general =
        panel("LFO", "Enabled", kGeneralColumns,
              {{"Mode", "Frequency", "Phase", "PhaseSyncGroup"}, {"High-speed", "Sync", "RestoreWhenDisabled"}});
    // The output over the last two seconds, under the settings.
    auto& body = static_cast<ZBoxLayout&>(*general->body().children().front());
    const ZTheme& theme = PageTheme(*this);
    auto* caption = body.Add(std::make_unique<ZLabel>("Output", ZLabelStyle::Label), ZBoxItem::Fixed(theme.labelHeight));
    caption->SetName("OutputCaption");
    ZLFO& lfo = lfo_;
    ZQuessaneAudioEffectPlugin& core = context_.core;
    auto* trace = body.Add(std::make_unique<ZLiveTrace>([&lfo, &core] {
        return lfo.enabled() && core.modulatorsEnabled() ? lfo.shownOutput() : 0.0;
    }));
    trace->SetName("Output");
    trace->SetHelpText("<name>Output</name> <p>What the LFO sent to its targets over the last two seconds.</p>");
    return rows_->AddChild(std::move(general));
}

void ZLFOEditor::buildModePanels()
{
    if (rows_->modes != nullptr) {
        std::unique_ptr<ZView> old = rows_->TakeChild(rows_->modes);
        rows_->modes = nullptr;
        if (ZUIRoot* owner = root())
            owner->Dispose(std::move(old)); // a control of it may be handling the event in progress
    }
    const std::vector<PanelPlan> plans = panelsOf(shown_.mode, shown_.audioEnvelope);
    if (!plans.empty()) {
        const ZTheme& theme = PageTheme(*this);
        auto line = std::make_unique<ZBoxLayout>(ZOrientation::Horizontal, theme.spacing);
        line->SetName("ModeSettings");
        rows_->modesHeight = 0.0;
        for (const PanelPlan& plan : plans) {
            std::unique_ptr<ZPanel> made = panel(plan.title, plan.titleSwitch, plan.columns, plan.rows);
            ZView& body = *made->body().children().front();
            const double height = ZPanel::kTitleHeight + 1.5 * theme.padding + body.PreferredSize().y;
            rows_->modesHeight = std::max(rows_->modesHeight, height);
            body.AddChild(std::make_unique<ZView>()); // the rows keep to the top
            line->Add(std::move(made), ZBoxItem::Fixed(panelWidth(plan.columns, theme)));
        }
        line->Add(std::make_unique<ZView>());
        rows_->modes = rows_->AddChild(std::move(line));
    }
    scroll_->SetContentHeight(rows_->Height());
    rows_->Layout();
    Invalidate();
}

std::vector<ZPanel*> ZLFOEditor::modePanels() const
{
    std::vector<ZPanel*> panels;
    if (rows_->modes != nullptr)
        for (const auto& child : rows_->modes->children())
            if (auto* made = dynamic_cast<ZPanel*>(child.get()))
                panels.push_back(made);
    return panels;
}

void ZLFOEditor::Layout()
{
    scroll_->SetBounds(bounds());
}

void ZLFOEditor::Refresh()
{
    values_->Pull();
    if (const Shown now = shownNow(); !(now == shown_)) {
        shown_ = now;
        buildModePanels();
    }
}

} // namespace halvern
