// The built plug-in's editor in the project's VST 2.4 editor host, on the test's Xvfb
// display: gestures, resizing, many openings, two editors at once and hosts that do
// less than they should.

#include "editor/halvern_editor.h"
#include "state/plugin_state_block.h"
#include "state/zml_element.h"
#include "editor_test_support.h"
#include "vst2_editor_host.h"

#include <gtest/gtest.h>

#include <X11/keysym.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using editorhost::HostCall;
using editorhost::TestDisplay;
using editorhost::Vst2EditorHost;
using editortest::DialogViewCentre;
using editortest::Drag;
using editortest::EditorSizeAt;
using editortest::IsOneGesture;
using editortest::MenuItemCentre;
using editortest::ParameterIndex;
using editortest::PresetRowCentre;
using editortest::Resizes;
using editortest::ViewCentre;

constexpr VstInt32 kScaleIndex = 0x50726553;  // 'PreS'
constexpr VstIntPtr kScaleValue = 0x41654373; // 'AeCs'

class Vst2Editor : public testing::Test {
protected:
    // A point in logical units in device pixels, at the editor's scale.
    static halvern::ZPoint scaled(Vst2EditorHost& host, halvern::ZPoint logical)
    {
        const double scale = host.editorSize().first / halvern::kHalvernEditorWidth;
        return {logical.x * scale, logical.y * scale};
    }
    // The point of a view in device pixels, at the editor's scale.
    halvern::ZPoint pointOf(Vst2EditorHost& host, const std::string& view, halvern::ZModulatorSelection page = {})
    {
        return scaled(host, ViewCentre(view, page));
    }

    TestDisplay display;
};

// The plug-in's state through the host's chunk call.
std::vector<char> Chunk(Vst2EditorHost& host)
{
    void* data = nullptr;
    const VstIntPtr size = host.dispatch(effGetChunk, 0, 0, &data);
    return data != nullptr && size > 0 ? std::vector<char>(static_cast<char*>(data), static_cast<char*>(data) + size)
                                       : std::vector<char>();
}

// The first LFO's element in a state.
const halvern::ZMLElement* FirstLFO(const halvern::ZMLElement& state)
{
    const halvern::ZMLElement* lfos = state.findChild("LFOs");
    return lfos != nullptr ? lfos->findChild("LFO") : nullptr;
}

size_t OpenFileCount()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)));
}

TEST_F(Vst2Editor, KnobDragInOneOfTwoOpenEditorsIsOneGestureOnItsInstance)
{
    const int depth = ParameterIndex("ReverbDepth");
    ASSERT_GE(depth, 0);
    Vst2EditorHost first(HALVERN_PLUGIN_PATH, display), second(HALVERN_PLUGIN_PATH, display);
    EXPECT_NE(second.effect()->flags & effFlagsHasEditor, 0);
    EXPECT_EQ(second.editorSize(), EditorSizeAt(1.0));
    ASSERT_TRUE(first.open(0, 0));
    ASSERT_TRUE(second.open(300, 200));
    auto pump = [&] {
        first.idle();
        second.idle();
    };
    display.Raise(second.parent());
    const float before = second.parameter(depth);
    const double dy = before > 0.5f ? 60.0 : -60.0;
    Drag(display, second.editorWindow(), pointOf(second, "ReverbDepth"), 0.0, dy, pump);

    double last = -1.0;
    EXPECT_TRUE(IsOneGesture(second.calls, depth, last));
    EXPECT_FLOAT_EQ(second.parameter(depth), static_cast<float>(last));
    EXPECT_EQ(second.parameter(depth) < before, dy > 0.0) << "dragging down lowers the value";
    EXPECT_TRUE(first.calls.empty());
    EXPECT_EQ(first.parameter(depth), before);
    first.close();
    second.close();
}

TEST_F(Vst2Editor, ClosingInTheMiddleOfADragEndsTheGesture)
{
    const int depth = ParameterIndex("ReverbDepth");
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    ASSERT_TRUE(host.open());
    const double dy = host.parameter(depth) > 0.5f ? 40.0 : -40.0;
    Drag(display, host.editorWindow(), pointOf(host, "ReverbDepth"), 0.0, dy, [&] { host.idle(); }, false);
    ASSERT_FALSE(host.calls.empty());
    EXPECT_NE(host.calls.back().kind, HostCall::Kind::End);
    host.close();
    double last = -1.0;
    EXPECT_TRUE(IsOneGesture(host.calls, depth, last));
    display.Button(1, false);
    EXPECT_TRUE(display.Children(host.parent()).empty());
}

TEST_F(Vst2Editor, ResizesThroughTheHostWithTheGripAndTheHostsScale)
{
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    ASSERT_TRUE(host.open());
    auto pump = [&] { host.idle(); };
    // The grip in the bottom-right corner, dragged 10 % larger.
    const auto [width, height] = EditorSizeAt(1.0);
    const auto grown = EditorSizeAt(1.1);
    Drag(display, host.editorWindow(), {width - 6.0, height - 6.0}, grown.first - width, grown.second - height, pump);
    ASSERT_FALSE(Resizes(host.calls).empty());
    const HostCall asked = Resizes(host.calls).back();
    EXPECT_EQ((std::pair{asked.width, asked.height}), grown);
    EXPECT_EQ(host.editorSize(), grown);
    EXPECT_TRUE(TestDisplay::PumpUntil(pump, [&] { return display.Size(host.editorWindow()) == grown; }));

    // A double click on the grip asks for the natural size again.
    display.MoveTo(host.editorWindow(), grown.first - 6.0, grown.second - 6.0);
    display.Click(1);
    TestDisplay::PumpFor(pump, 20);
    display.Click(1);
    EXPECT_TRUE(TestDisplay::PumpUntil(pump, [&] { return host.editorSize() == EditorSizeAt(1.0); }));
    EXPECT_EQ(Resizes(host.calls).back().width, width);
    EXPECT_EQ(host.calls.size(), Resizes(host.calls).size()) << "resizing touches no parameter";

    // The host's content scale through effVendorSpecific.
    EXPECT_EQ(host.dispatch(effVendorSpecific, kScaleIndex, kScaleValue, nullptr, 2.0f), 1);
    EXPECT_EQ(host.dispatch(effVendorSpecific, kScaleIndex, 0, nullptr, 2.0f), 0);
    EXPECT_EQ(host.editorSize(), EditorSizeAt(2.0));
    EXPECT_EQ(Resizes(host.calls).back().width, EditorSizeAt(2.0).first);
    host.close();
}

TEST_F(Vst2Editor, OpensAndClosesAHundredTimesLeavingNothingBehind)
{
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    ASSERT_TRUE(host.open());
    host.idle();
    host.close();
    const size_t files = OpenFileCount();
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(host.open()) << "opening " << i;
        host.idle();
        host.idle();
        host.close();
    }
    EXPECT_EQ(OpenFileCount(), files) << "every display connection is closed";
    EXPECT_TRUE(display.Children(host.parent()).empty());
}

TEST_F(Vst2Editor, AHostThatNeverCallsIdleStillOpensAndClosesCleanly)
{
    const int depth = ParameterIndex("ReverbDepth");
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    const float before = host.parameter(depth);
    ASSERT_TRUE(host.open());
    Drag(display, host.editorWindow(), pointOf(host, "ReverbDepth"), 0.0, 40.0, [] {});
    host.close();
    EXPECT_TRUE(host.calls.empty()) << "the events were never handled";
    EXPECT_EQ(host.parameter(depth), before);
    EXPECT_TRUE(display.Children(host.parent()).empty());
}

TEST_F(Vst2Editor, OpenFailsCleanlyWithoutADisplayOrAParent)
{
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    EXPECT_EQ(host.dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(0x7FFFFF)), 0) << "a parent that does not exist";
    const std::string saved = std::getenv("DISPLAY");
    unsetenv("DISPLAY");
    EXPECT_EQ(host.editorSize(), EditorSizeAt(1.0)) << "the size is known without any display";
    EXPECT_FALSE(host.open());
    host.idle();
    host.close();
    setenv("DISPLAY", saved.c_str(), 1);
    EXPECT_TRUE(display.Children(host.parent()).empty());
    EXPECT_TRUE(host.open()) << "and it opens once there is a display";
    host.close();
}

} // namespace

namespace {

TEST_F(Vst2Editor, LFOModeChangedAndTargetLearnedByClickingComeBackWithTheHostState)
{
    using Kind = halvern::ZModulatorSelection::Kind;
    const halvern::ZModulatorSelection lfoPage{Kind::LFO, 0};
    const int diffusion = ParameterIndex("Diffusion");
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    ASSERT_TRUE(host.open(0, 0));
    const Window window = host.editorWindow();
    auto pump = [&] { host.idle(); };
    const auto click = [&](halvern::ZPoint at, unsigned button = 1) {
        display.MoveTo(window, at.x, at.y);
        TestDisplay::PumpFor(pump, 40);
        display.Click(button);
        TestDisplay::PumpFor(pump, 60);
    };
    // The LFO's page, its mode one step on by the wheel.
    click(pointOf(host, "LFO 1 button"));
    click(pointOf(host, "Mode", lfoPage), 4); // a notch up
    // "Learn" from the page's menu, the knob moved, "Learn" again to stop.
    const double scale = host.editorSize().first / halvern::kHalvernEditorWidth;
    const halvern::ZPoint learnItem = MenuItemCentre("ModulatorMenu", "Learn", lfoPage);
    ASSERT_GE(learnItem.x, 0.0);
    const auto chooseLearn = [&] {
        click(pointOf(host, "ModulatorMenu", lfoPage));
        click({learnItem.x * scale, learnItem.y * scale});
    };
    chooseLearn();
    Drag(display, window, pointOf(host, "Diffusion"), 0.0, 60.0, pump);
    chooseLearn();

    const std::vector<char> saved = Chunk(host);
    ASSERT_FALSE(saved.empty());
    const auto state = halvern::ReadStateDocument(saved.data(), static_cast<int32_t>(saved.size()));
    const halvern::ZMLElement* lfo = FirstLFO(*state);
    ASSERT_NE(lfo, nullptr);
    EXPECT_NE(lfo->getAttribute("Mode", "Normal"), "Normal") << "the wheel changed the mode";
    bool learned = false;
    for (const auto& target : lfo->children())
        learned |= target->name() == "Parameter" && target->getAttribute("ParameterIndex") == std::to_string(diffusion);
    EXPECT_TRUE(learned) << "Diffusion was learned as a target";
    host.close();

    Vst2EditorHost reloaded(HALVERN_PLUGIN_PATH, display);
    ASSERT_EQ(reloaded.dispatch(effSetChunk, 0, static_cast<VstIntPtr>(saved.size()),
                                const_cast<char*>(saved.data())),
              1);
    const std::vector<char> again = Chunk(reloaded);
    const auto reread = halvern::ReadStateDocument(again.data(), static_cast<int32_t>(again.size()));
    ASSERT_NE(FirstLFO(*reread), nullptr);
    EXPECT_TRUE(*FirstLFO(*reread) == *lfo);
}

} // namespace

namespace {

// The values and gestures a host hears from the slot selector, the morph pad and a
// preset loaded from the preset window.
bool HeardGesture(const editorhost::HostCalls& calls, int index, double value)
{
    bool begun = false, performed = false;
    for (const HostCall& call : calls) {
        if (call.index != index)
            continue;
        if (call.kind == HostCall::Kind::Begin)
            begun = true;
        else if (begun && call.kind == HostCall::Kind::Perform && std::abs(call.value - value) < 1e-6)
            performed = true;
        else if (performed && call.kind == HostCall::Kind::End)
            return true;
    }
    return false;
}

} // namespace

TEST_F(Vst2Editor, SlotsThePadAndAFactoryPresetReachTheHostAndItsStateReloadsAsSaved)
{
    using Kind = halvern::ZModulatorSelection::Kind;
    const int slot = ParameterIndex("AH"), u = ParameterIndex("ABCDMorphingU"), size = ParameterIndex("Size");
    Vst2EditorHost host(HALVERN_PLUGIN_PATH, display);
    ASSERT_TRUE(host.open());
    auto pump = [&] { host.idle(); };
    auto click = [&](halvern::ZPoint at) {
        display.MoveTo(host.editorWindow(), at.x, at.y);
        TestDisplay::PumpFor(pump, 30);
        display.Click(1);
        TestDisplay::PumpFor(pump, 60);
    };

    click(pointOf(host, "SlotB"));
    EXPECT_TRUE(HeardGesture(host.Calls(), slot, 1.0 / 7.0));

    // The pad asks first in slot B, one of the four it blends; the answer switches to E.
    click(pointOf(host, "MorphPage"));
    const halvern::ZPoint pad = ViewCentre("MorphPad", {Kind::Morph, 0});
    click(scaled(host, pad));
    click(scaled(host, DialogViewCentre("MorphPad", "Select slot E", {Kind::Morph, 0})));
    EXPECT_TRUE(HeardGesture(host.Calls(), slot, 4.0 / 7.0));
    Drag(display, host.editorWindow(), scaled(host, pad), 40.0, 20.0, pump);
    const editorhost::HostCalls afterPad = host.Calls();
    EXPECT_TRUE(std::any_of(afterPad.begin(), afterPad.end(), [&](const HostCall& call) {
        return call.kind == HostCall::Kind::End && call.index == u;
    }));
    EXPECT_GT(host.parameter(u), 0.2f);

    // A factory preset: its folder opened with the keyboard, its first preset loaded with Enter.
    const float sizeBefore = host.parameter(size);
    click(pointOf(host, "PresetName"));
    click(scaled(host, PresetRowCentre("Halls")));
    display.Type(XK_Right);
    display.Type(XK_Down);
    display.Type(XK_Return);
    EXPECT_TRUE(TestDisplay::PumpUntil(pump, [&] { return host.parameter(size) != sizeBefore; }));
    EXPECT_TRUE(TestDisplay::PumpUntil(pump, [&] {
        const editorhost::HostCalls calls = host.Calls();
        return std::any_of(calls.begin(), calls.end(), [&](const HostCall& call) {
            return call.kind == HostCall::Kind::Perform && call.index == size &&
                   std::abs(call.value - host.parameter(size)) < 1e-6;
        });
    })) << "the preset's values reach the host as automation";

    // The state the host saves reloads into a new instance exactly.
    const std::vector<char> saved = Chunk(host);
    host.close();
    Vst2EditorHost second(HALVERN_PLUGIN_PATH, display);
    ASSERT_EQ(second.dispatch(effSetChunk, 0, static_cast<VstIntPtr>(saved.size()), const_cast<char*>(saved.data())), 1);
    const std::vector<char> reloaded = Chunk(second);
    EXPECT_TRUE(*halvern::ReadStateDocument(saved.data(), static_cast<int32_t>(saved.size())) ==
                *halvern::ReadStateDocument(reloaded.data(), static_cast<int32_t>(reloaded.size())));
    EXPECT_FLOAT_EQ(second.parameter(size), host.parameter(size));
}
