// The bundle's editor view in the project's VST 3 editor host, on the test's Xvfb
// display: the run loop, gestures through the component handler, the host's sizes and
// scale, and frames the view cannot work with.

#include "editor/halvern_editor.h"
#include "editor_test_support.h"
#include "vst3_editor_host.h"

#include <gtest/gtest.h>
#include <pluginterfaces/gui/iplugviewcontentscalesupport.h>

#include <cstdlib>
#include <string>

namespace {

using namespace Steinberg;
using editorhost::HostCall;
using editorhost::TestDisplay;
using editorhost::Vst3EditorHost;
using editortest::Drag;
using editortest::EditorSizeAt;
using editortest::IsOneGesture;
using editortest::ParameterIndex;
using editortest::Resizes;
using editortest::ViewCentre;

std::pair<int, int> SizeOf(const ViewRect& rect) { return {rect.getWidth(), rect.getHeight()}; }

class Vst3Editor : public testing::Test {
protected:
    TestDisplay display;
};

TEST_F(Vst3Editor, KnobDragsRunOnTheHostsRunLoopAndRemovalEndsAGesture)
{
    const int depth = ParameterIndex("ReverbDepth");
    ASSERT_GE(depth, 0);
    Vst3EditorHost host(display);
    EXPECT_EQ(host.view()->isPlatformTypeSupported(kPlatformTypeX11EmbedWindowID), kResultTrue);
    EXPECT_NE(host.view()->isPlatformTypeSupported("HWND"), kResultTrue);
    ASSERT_EQ(host.attach(), kResultOk);
    ASSERT_EQ(host.frame().eventHandlers().size(), 1u);
    EXPECT_GE(host.frame().eventHandlers().front().second, 0);
    ASSERT_EQ(host.frame().timers().size(), 1u);
    EXPECT_EQ(host.frame().timers().front().second, 16u);

    Vst::IEditController* controller = host.instance().controller();
    const double before = controller->getParamNormalized(static_cast<Vst::ParamID>(depth));
    const double dy = before > 0.5 ? 60.0 : -60.0;
    const halvern::ZPoint knob = ViewCentre("ReverbDepth");
    Drag(display, host.editorWindow(), knob, 0.0, dy, [&] { host.pump(); });
    double last = -1.0;
    EXPECT_TRUE(IsOneGesture(host.calls, depth, last));
    EXPECT_DOUBLE_EQ(controller->getParamNormalized(static_cast<Vst::ParamID>(depth)), last)
        << "the core took the value at once";

    // Removed in the middle of the next drag: the gesture ends, and the run loop holds
    // no handler of the view any more.
    host.calls.clear();
    Drag(display, host.editorWindow(), knob, 0.0, -dy, [&] { host.pump(); }, false);
    host.remove();
    display.Button(1, false);
    EXPECT_TRUE(IsOneGesture(host.calls, depth, last));
    EXPECT_TRUE(host.frame().eventHandlers().empty());
    EXPECT_TRUE(host.frame().timers().empty());
    EXPECT_EQ(host.editorWindow(), 0u);
}

TEST_F(Vst3Editor, TakesTheHostsSizesAndScale)
{
    Vst3EditorHost host(display);
    IPlugView* view = host.view();
    EXPECT_EQ(view->canResize(), kResultTrue);
    const auto tall = EditorSizeAt(1.1);
    ViewRect large(0, 0, 10000, 10000), small(0, 0, 10, 10), wide(0, 0, 3 * tall.first, tall.second);
    ASSERT_EQ(view->checkSizeConstraint(&large), kResultTrue);
    view->checkSizeConstraint(&small);
    view->checkSizeConstraint(&wide);
    EXPECT_EQ(SizeOf(large), EditorSizeAt(2.0));
    EXPECT_EQ(SizeOf(small), EditorSizeAt(0.75));
    EXPECT_EQ(SizeOf(wide), tall) << "the aspect is kept, inside the size asked";

    ASSERT_EQ(host.attach(), kResultOk);
    const auto [width, height] = EditorSizeAt(1.5);
    ViewRect wanted(0, 0, width, height);
    EXPECT_EQ(view->onSize(&wanted), kResultTrue);
    ViewRect size;
    view->getSize(&size);
    EXPECT_EQ(SizeOf(size), EditorSizeAt(1.5));
    EXPECT_TRUE(TestDisplay::PumpUntil([&] { host.pump(); },
                                       [&] { return display.Size(host.editorWindow()) == EditorSizeAt(1.5); }));

    // A new content scale while open: the view asks the frame for its new size.
    FUnknownPtr<IPlugViewContentScaleSupport> scaling(view);
    ASSERT_TRUE(scaling);
    EXPECT_EQ(scaling->setContentScaleFactor(2.0f), kResultTrue);
    ASSERT_FALSE(Resizes(host.calls).empty());
    EXPECT_EQ(Resizes(host.calls).back().width, EditorSizeAt(3.0).first);
    view->getSize(&size);
    EXPECT_EQ(SizeOf(size), EditorSizeAt(3.0));
    host.remove();
}

TEST_F(Vst3Editor, AttachFailsCleanlyWithoutARunLoopOrADisplay)
{
    Vst3EditorHost withoutRunLoop(display, false);
    EXPECT_EQ(withoutRunLoop.attach(), kResultFalse);
    EXPECT_EQ(withoutRunLoop.editorWindow(), 0u);
    ViewRect size;
    EXPECT_EQ(withoutRunLoop.view()->getSize(&size), kResultTrue);
    EXPECT_EQ(SizeOf(size), EditorSizeAt(1.0));

    Vst3EditorHost withoutDisplay(display);
    const std::string saved = std::getenv("DISPLAY");
    unsetenv("DISPLAY");
    EXPECT_EQ(withoutDisplay.attach(), kResultFalse);
    setenv("DISPLAY", saved.c_str(), 1);
    EXPECT_TRUE(withoutDisplay.frame().eventHandlers().empty());
    EXPECT_EQ(withoutDisplay.attach(), kResultOk) << "and it attaches once there is a display";
}

} // namespace
