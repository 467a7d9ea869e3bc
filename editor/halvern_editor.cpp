#include "editor/halvern_editor.h"

#include "core/trace.h"
#include "editor/editor_frame.h"
#include "editor/modulator_menu.h"
#include "editor/modulator_pages.h"
#include "editor/reverb_editor_view.h"
#include "ui/markup/markup_tooltip.h"
#include "ui/ui_root.h"

namespace halvern {
namespace {

struct EditorParts {
    ZQuessaneAudioEffectPlugin* core = nullptr;
    HalvernAudioEffectPlugin* effect = nullptr;
};

EditorParts partsOf(ZAudioPlugin& core)
{
    EditorParts parts;
    parts.core = dynamic_cast<ZQuessaneAudioEffectPlugin*>(&core);
    if (parts.core != nullptr)
        parts.effect = dynamic_cast<HalvernAudioEffectPlugin*>(&parts.core->effect());
    return parts;
}

// The built-in theme with the user's "Style.cfg" over it; a damaged file is ignored.
ZTheme editorTheme(const ZQuessaneAudioEffectPlugin& core)
{
    ZTheme theme = ZTheme::Default();
    if (core.userDataFolder().empty())
        return theme;
    std::string error;
    if (!LoadStyleFile(core.userDataFolder() + "/Style.cfg", theme, error))
        Trace("Style file ignored: " + error, "HalvernAudioEffectPlugin::CreateEditor");
    return theme;
}

} // namespace

std::unique_ptr<ZView> BuildHalvernEditorView(ZAudioPlugin& core, ZEditorHost& host, ZUIRoot& root)
{
    const EditorParts parts = partsOf(core);
    if (parts.effect == nullptr)
        return nullptr;
    auto view = std::make_unique<ZReverbEditorView>(
        *parts.core, *parts.effect, host, BuildModulatorPage,
        [&root](ZModulatorEditorContext& context, ZModulatorSelection which, ZRect anchor) {
            if (which.kind == ZModulatorSelection::Kind::None)
                ShowModulatorsMenu(context, root, anchor);
            else
                ShowModulatorMenu(context, root, which, anchor);
        });
    ZReverbEditorView* shown = view.get();
    root.SetHelpListener([shown](const std::string& help) { shown->ShowHelp(help); });
    root.SetInteractionListener([shown] { shown->InteractionEnded(); });
    root.SetShortcutHandler([shown](const ZKeyEvent& event) { return shown->Shortcut(event); });
    root.SetTooltipFactory(MakeMarkupTooltip);
    return view;
}

std::unique_ptr<ZPluginEditor> CreateHalvernEditor(ZAudioPlugin& core, ZEditorHost& host)
{
    const EditorParts parts = partsOf(core);
    if (parts.effect == nullptr)
        return nullptr;
    ZQuessaneAudioEffectPlugin& plugin = *parts.core;
    return std::make_unique<ZEditorFrame>(
        host, kHalvernEditorWidth, kHalvernEditorHeight,
        [&core, &host](ZUIRoot& root) { return BuildHalvernEditorView(core, host, root); },
        [&plugin](bool open) { plugin.SetMetering(open); }, editorTheme(plugin));
}

} // namespace halvern
