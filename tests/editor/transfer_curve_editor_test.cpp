#include "editor/transfer_curve_editor.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/ui_root.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace halvern {
namespace {

class NoHost : public ZEditorHost {
public:
    void BeginEdit(int32_t) override {}
    void PerformEdit(int32_t, double) override {}
    void EndEdit(int32_t) override {}
    bool RequestResize(ZEditorSize) override { return false; }
};

TEST(TransferCurveEditor, EditsArePublishedThroughTheTargetListAndChangesElsewhereShow)
{
    ZQuessaneAudioEffectPlugin core(std::make_unique<HalvernAudioEffectPlugin>());
    auto& effect = dynamic_cast<HalvernAudioEffectPlugin&>(core.effect());
    NoHost host;
    ZModulatorEditorContext context{core, effect, host, {}, {}};
    ZModulatorTargetList& list = core.lfo(1).targets();
    const auto shape = [&] { return list.targets()[0].shape; };
    const auto write = [&](const ZTransferCurve& curve) {
        ZModulatorTarget target = list.targets()[0];
        target.shape = curve;
        list.set(0, target);
    };

    const ZTheme theme = ZTheme::Default();
    ZUIRoot root(360, 240, 1.0, theme);
    auto owned = std::make_unique<ZTransferCurveEditor>(context, shape, write);
    ZTransferCurveEditor* editor = owned.get();
    root.SetContent(std::move(owned));
    editor->SetBounds({0, 0, 360, 240});
    root.Paint();
    const auto drag = [&](ZPoint from, ZPoint to) {
        root.MouseMove({from});
        root.MouseDown({from});
        root.MouseMove({to});
        root.MouseUp({to});
    };
    const auto onCurve = [&](double x) { return editor->ToView({x, shape().evaluate(x)}); };

    // A double click adds a straight point, which the target's curve gets.
    const ZPoint added = editor->ToView({0.5, 0.8});
    root.MouseDown({added, ZMouseButton::Left, kModifierNone, 2});
    root.MouseUp({added});
    ASSERT_EQ(shape().pointCount(), 3);
    EXPECT_NEAR(shape().point(1).x, 0.5, 1e-9);
    EXPECT_NEAR(shape().point(1).y, 0.8, 1e-9);
    EXPECT_EQ(shape().point(1).curve, 1.0);

    // Bending upward lifts a rising segment (curve below 1) and a falling one (above 1).
    const double quarter = editor->PlotRect().height / 4;
    drag(onCurve(0.25), {onCurve(0.25).x, onCurve(0.25).y - quarter});
    EXPECT_NEAR(shape().point(1).curve, 0.1, 1e-9);
    EXPECT_GT(shape().evaluate(0.25), 0.4);
    drag(editor->ToView({1.0, 1.0}), editor->ToView({1.0, 0.2}));
    EXPECT_NEAR(shape().point(2).y, 0.2, 1e-9);
    drag(onCurve(0.75), {onCurve(0.75).x, onCurve(0.75).y - quarter});
    EXPECT_NEAR(shape().point(2).curve, 10.0, 1e-9);
    EXPECT_GT(shape().evaluate(0.75), 0.5);
    EXPECT_TRUE(editor->curve() == shape());

    // A curve replaced elsewhere (a loaded state) shows at the next tick.
    root.Paint();
    write(ZTransferCurve());
    root.Tick(1.0);
    EXPECT_EQ(editor->model().PointCount(), 2);
    EXPECT_FALSE(root.Paint().empty());
}

} // namespace
} // namespace halvern
