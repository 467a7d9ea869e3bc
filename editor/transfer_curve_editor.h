#pragma once

// ZTransferCurveEditor: the graph editor over a modulator target's transfer curve
// ("Shape": incoming value across, result up). It reads the curve through `read` and
// hands every edit to `write` as a whole new curve, which the owner publishes through the
// target list (never by changing the list's target in place). Each segment's bend is its
// curve parameter: straight at 1.0, from 0.01 to 100 at the ends of the bend's range,
// oriented so that a bend upward lifts the segment on the screen whichever way it runs.
// A curve changed elsewhere (a loaded state, automation of the list) shows within a tick.

#include "editor/modulator_editor_context.h"
#include "modulation/transfer_curve.h"
#include "ui/controls/graph_editor.h"

#include <functional>

namespace halvern {

class ZTransferCurveGraph;

class ZTransferCurveEditor : public ZGraphEditor {
public:
    ZTransferCurveEditor(ZModulatorEditorContext& context, std::function<ZTransferCurve()> read,
                         std::function<void(const ZTransferCurve&)> write);

    // The curve as shown.
    const ZTransferCurve& curve() const;

    void Refresh() override;

private:
    ZTransferCurveGraph& graph_;
};

} // namespace halvern
