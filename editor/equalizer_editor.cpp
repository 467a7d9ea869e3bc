#include "editor/equalizer_editor.h"

#include "editor/equalizer_graph.h"
#include "editor/page_layout.h"
#include "ui/controls/knob.h"
#include "ui/controls/switch.h"
#include "ui/panel.h"

#include <string>

namespace halvern {
namespace {

constexpr double kSwitchColumn = 112.0;
constexpr double kKnobColumn = 76.0;
constexpr int kKnobsPerBand = 3;

int32_t parameterIndex(ZAudioPlugin& core, const std::string& id)
{
    for (int32_t index = 0; index < core.GetParameterCount(); ++index)
        if (core.GetParameterID(index) == id)
            return index;
    return -1;
}

std::shared_ptr<ZParameterBinding> cutBinding(ZModulatorEditorContext& context, const char* id,
                                              ZBindingObserver* observer)
{
    return std::make_shared<ZHostParameterBinding>(context.core, context.host, parameterIndex(context.core, id),
                                                   std::string{}, observer);
}

// Controls are named after their band and value ("Peak Gain"), for tests and style files.
std::string controlName(int band, const char* what) { return std::string(ZEqualizerModel::BandName(band)) + " " + what; }

} // namespace

ZEqualizerEditor::ZEqualizerEditor(ZModulatorEditorContext& context, ZBindingObserver* observer)
    : model_(std::make_shared<ZEqualizerModel>(context.effect, cutBinding(context, "LowCut", observer),
                                               cutBinding(context, "HighCut", observer)))
{
    SetName("EqualizerEditor");
    graph_ = AddChild(std::make_unique<ZEqualizerGraph>(model_));
    bands_ = AddChild(std::make_unique<ZPanel>("Bands", 1 + kKnobsPerBand));
    bands_->body().SetColumnWidths({kSwitchColumn, kKnobColumn, kKnobColumn, kKnobColumn});
    constexpr ZEqualizerModel::Field kFields[] = {ZEqualizerModel::Field::Frequency, ZEqualizerModel::Field::Gain,
                                                  ZEqualizerModel::Field::Q};
    constexpr const char* kFieldNames[] = {"Frequency", "Gain", "Q"};
    // The bands are rows of a table: only the first row's knobs carry the values' names.
    for (int band = 0; band < ZEqualizerProcessorPlugin::kBandCount; ++band) {
        bands_->Add(std::make_unique<ZSwitch>(ZEqualizerModel::EnableBinding(model_, band)))
            ->SetName(controlName(band, "Enabled"));
        for (int field = 0; field < kKnobsPerBand; ++field)
            bands_->Add(std::make_unique<ZKnob>(ZEqualizerModel::BandBinding(model_, band, kFields[field], band == 0)))
                ->SetName(controlName(band, kFieldNames[field]));
    }
}

void ZEqualizerEditor::Layout()
{
    const ZTheme& theme = PageTheme(*this);
    const ZRect& b = bounds();
    const double panelWidth = kSwitchColumn + kKnobsPerBand * (kKnobColumn + theme.spacing) + 2 * theme.padding;
    bands_->SetBounds({b.right() - panelWidth, b.y, panelWidth, b.height});
    graph_->SetBounds({b.x, b.y, b.width - panelWidth - theme.spacing, b.height});
}

void ZEqualizerEditor::Refresh()
{
    if (model_->Poll())
        graph_->Invalidate();
}

} // namespace halvern
