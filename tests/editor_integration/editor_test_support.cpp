#include "editor_test_support.h"

#include "core/audio_plugin.h"
#include "editor/halvern_editor.h"
#include "editor/offscreen_editor.h"
#include "editor/preset_tree.h"
#include "presets/factory_presets.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/dialog.h"
#include "host/library_module.h"
#include "ui/controls/popup_menu.h"
#include "ui/ui_root.h"

#include <cmath>
#include <memory>

namespace editortest {

using editorhost::HostCall;
using editorhost::HostCalls;
using halvern::ZPoint;

namespace {

std::unique_ptr<halvern::ZAudioPlugin> Core() { return std::unique_ptr<halvern::ZAudioPlugin>(halvern::CreatePluginCore()); }

} // namespace

std::pair<int, int> EditorSizeAt(double factor)
{
    return {static_cast<int>(std::lround(halvern::kHalvernEditorWidth * factor)),
            static_cast<int>(std::lround(halvern::kHalvernEditorHeight * factor))};
}

int ParameterIndex(const std::string& id)
{
    const auto core = Core();
    for (int index = 0; index < core->GetParameterCount(); ++index)
        if (core->GetParameterID(index) == id)
            return index;
    return -1;
}

ZPoint ViewCentre(const std::string& name, halvern::ZModulatorSelection page)
{
    const auto core = Core();
    halvern::ZOffscreenEditor editor(*core, 1.0);
    editor.Open(page);
    const halvern::ZView* view = editor.root().content()->FindByName(name);
    return view != nullptr ? view->bounds().center() : ZPoint{-1, -1};
}

ZPoint MenuItemCentre(const std::string& button, const std::string& item, halvern::ZModulatorSelection page)
{
    const auto core = Core();
    halvern::ZOffscreenEditor editor(*core, 1.0);
    editor.Open(page);
    halvern::ZUIRoot& root = editor.root();
    const halvern::ZView* view = root.content()->FindByName(button);
    if (view == nullptr)
        return {-1, -1};
    const ZPoint at = view->bounds().center();
    root.MouseDown({at});
    root.MouseUp({at});
    for (const auto& overlay : root.overlays())
        if (const auto* menu = dynamic_cast<const halvern::ZPopupMenu*>(overlay.get()))
            for (size_t i = 0; i < menu->items().size(); ++i)
                if (menu->items()[i].text == item)
                    return menu->ItemRect(static_cast<int>(i)).center();
    return {-1, -1};
}

namespace {

// The top dialog after a click on a view of an off-screen editor.
const halvern::ZDialog* DialogAfterClick(halvern::ZOffscreenEditor& editor, const std::string& clicked,
                                         halvern::ZModulatorSelection page)
{
    editor.Open(page);
    halvern::ZUIRoot& root = editor.root();
    const halvern::ZView* view = root.content()->FindByName(clicked);
    if (view == nullptr)
        return nullptr;
    const ZPoint at = view->bounds().center();
    root.MouseMove({at});
    root.MouseDown({at});
    root.MouseUp({at});
    return halvern::TopDialog(root);
}

} // namespace

ZPoint DialogViewCentre(const std::string& clicked, const std::string& name, halvern::ZModulatorSelection page)
{
    const auto core = Core();
    halvern::ZOffscreenEditor editor(*core, 1.0);
    const halvern::ZDialog* dialog = DialogAfterClick(editor, clicked, page);
    const halvern::ZView* view = dialog != nullptr ? const_cast<halvern::ZDialog*>(dialog)->FindByName(name) : nullptr;
    return view != nullptr ? view->bounds().center() : ZPoint{-1, -1};
}

ZPoint PresetRowCentre(const std::string& name)
{
    // Without the library's module the core has no factory presets: they are given here.
    const auto core = Core();
    static_cast<halvern::ZQuessaneAudioEffectPlugin&>(*core).SetPresets(
        halvern::ZPresetCollection::ReadBlock(halvern::FactoryPresetBlock()), "");
    halvern::ZOffscreenEditor editor(*core, 1.0);
    const halvern::ZDialog* dialog = DialogAfterClick(editor, "PresetName", {});
    auto* tree = dialog != nullptr ? dynamic_cast<halvern::ZPresetTree*>(const_cast<halvern::ZDialog*>(dialog)->FindByName("Presets"))
                                   : nullptr;
    if (tree == nullptr)
        return {-1, -1};
    for (size_t row = 0; row < tree->nodes().size(); ++row)
        if (tree->nodes()[row].name == name)
            return tree->RowRect(static_cast<int>(row)).center();
    return {-1, -1};
}

void Drag(editorhost::TestDisplay& display, Window window, ZPoint from, double dx, double dy,
          const std::function<void()>& pump, bool release)
{
    constexpr int kSteps = 6;
    display.MoveTo(window, from.x, from.y);
    editorhost::TestDisplay::PumpFor(pump, 30);
    display.Button(1, true);
    editorhost::TestDisplay::PumpFor(pump, 30);
    for (int step = 1; step <= kSteps; ++step) {
        display.MoveTo(window, from.x + dx * step / kSteps, from.y + dy * step / kSteps);
        editorhost::TestDisplay::PumpFor(pump, 20);
    }
    if (release) {
        display.Button(1, false);
        editorhost::TestDisplay::PumpFor(pump, 30);
    }
}

testing::AssertionResult IsOneGesture(const HostCalls& calls, int index, double& lastValue)
{
    HostCalls gesture;
    for (const HostCall& call : calls)
        if (call.kind != HostCall::Kind::Resize)
            gesture.push_back(call);
    if (gesture.size() < 3)
        return testing::AssertionFailure() << gesture.size() << " gesture calls, too few for begin, change, end";
    for (size_t i = 0; i < gesture.size(); ++i) {
        const HostCall& call = gesture[i];
        const HostCall::Kind expected = i == 0 ? HostCall::Kind::Begin
                                        : i + 1 == gesture.size() ? HostCall::Kind::End
                                                                  : HostCall::Kind::Perform;
        if (call.kind != expected || call.index != index)
            return testing::AssertionFailure() << "call " << i << " is kind " << static_cast<int>(call.kind)
                                               << " on parameter " << call.index;
        if (call.kind == HostCall::Kind::Perform && !(call.value >= 0.0 && call.value <= 1.0))
            return testing::AssertionFailure() << "change " << i << " to " << call.value << " is outside 0..1";
    }
    lastValue = gesture[gesture.size() - 2].value;
    return testing::AssertionSuccess();
}

std::vector<HostCall> Resizes(const HostCalls& calls)
{
    std::vector<HostCall> resizes;
    for (const HostCall& call : calls)
        if (call.kind == HostCall::Kind::Resize)
            resizes.push_back(call);
    return resizes;
}

} // namespace editortest
