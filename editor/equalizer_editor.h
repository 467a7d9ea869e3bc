#pragma once

// The equalizer page ("EqualizerEditor"): the graph of the equalizer over the spectrum
// of the reverberation at the left, and at the right a row per band with its switch and
// its frequency, gain and Q knobs (right-click a knob to type a value). The page takes
// the bands and the filters' response once per tick, so a state the host loads shows at
// the next tick.

#include "editor/equalizer_model.h"
#include "editor/host_parameter_binding.h"
#include "editor/modulator_editor_context.h"
#include "ui/view.h"

#include <memory>

namespace halvern {

class ZEqualizerGraph;
class ZPanel;

class ZEqualizerEditor : public ZView {
public:
    static constexpr double kWidth = 1180.0;
    static constexpr double kHeight = 280.0;

    // The cuts are edited as host gestures on the "LowCut" and "HighCut" parameters;
    // observer, when given, hears of each of them (Learn).
    explicit ZEqualizerEditor(ZModulatorEditorContext& context, ZBindingObserver* observer = nullptr);

    ZEqualizerGraph& graph() const { return *graph_; }
    ZPanel& bandsPanel() const { return *bands_; }

    void Layout() override;
    void Refresh() override;

private:
    std::shared_ptr<ZEqualizerModel> model_;
    ZEqualizerGraph* graph_;
    ZPanel* bands_;
};

} // namespace halvern
