#include "editor/modulator_menu.h"

#include "core/z_exception.h"
#include "editor/target_list_editor.h"
#include "state/preset_owners.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"
#include "ui/ui_root.h"

#include <memory>

namespace halvern {
namespace {

using Kind = ZModulatorSelection::Kind;
using LFOOwner = ZModulatorPresetOwnerT<ZLFOPresetKind>;
using MultiParameterOwner = ZModulatorPresetOwnerT<ZMultiParameterPresetKind>;

bool isModulator(ZModulatorSelection which) { return which.kind == Kind::LFO || which.kind == Kind::MultiParameter; }

std::string_view tagOf(ZModulatorSelection which)
{
    return which.kind == Kind::LFO ? kLFOClipboardTag : kMultiParameterClipboardTag;
}

// The modulator's element in the plug-in's state: written into `element`, or read from it.
void store(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which, ZMLElement& element)
{
    if (which.kind == Kind::LFO)
        LFOOwner(core, which.index).Store(element);
    else
        MultiParameterOwner(core, which.index).Store(element);
}

void load(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which, ZMLElement& element)
{
    if (which.kind == Kind::LFO)
        LFOOwner(core, which.index).Load(element);
    else
        MultiParameterOwner(core, which.index).Load(element);
}

// Hosts hear of the modulator's own parameters, which a paste or a swap changed.
void tellHost(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which)
{
    if (which.kind == Kind::MultiParameter) {
        core.parameters().markForHost(core.multiParameterIndex(which.index));
        return;
    }
    for (int i = 0; i < ZAudioEffectPluginToAudioPluginAdapter::kParametersPerLFO; ++i)
        core.parameters().markForHost(core.lfoParameterIndex(which.index) + i);
}

const ZModulatorTargetList& targetsOf(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which)
{
    return which.kind == Kind::LFO ? core.lfo(which.index).targets() : core.multiParameter(which.index).targets();
}

ZTargetListEditor* findTargetList(ZView* view, const ZModulatorTargetList& targets)
{
    if (view == nullptr)
        return nullptr;
    if (auto* editor = dynamic_cast<ZTargetListEditor*>(view); editor != nullptr && &editor->targets() == &targets)
        return editor;
    for (const auto& child : view->children())
        if (ZTargetListEditor* found = findTargetList(child.get(), targets))
            return found;
    return nullptr;
}

ZMenuItem item(std::string text, std::function<void()> action, bool checked = false, bool enabled = true)
{
    ZMenuItem made;
    made.text = std::move(text);
    made.action = std::move(action);
    made.checked = checked;
    made.enabled = enabled;
    return made;
}

std::string modulatorTitle(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which)
{
    return which.kind == Kind::LFO ? "LFO " + std::to_string(which.index + 1)
                                   : core.multiParameter(which.index).displayName();
}

// "Presets": the modulators, each opening its page with its presets.
void showModulatorPresets(ZModulatorEditorContext& context, ZUIRoot& root, ZRect anchor)
{
    std::vector<ZMenuItem> items;
    const auto add = [&](Kind kind, int count) {
        for (int index = 0; index < count; ++index) {
            const ZModulatorSelection which{kind, index};
            items.push_back(item(modulatorTitle(context.core, which), [&context, which] { context.open(which); }));
        }
    };
    add(Kind::MultiParameter, ZAudioEffectPluginToAudioPluginAdapter::kMultiParameterCount);
    add(Kind::LFO, ZAudioEffectPluginToAudioPluginAdapter::kLFOCount);
    ZPopupMenu::Show(root, std::move(items), anchor);
}

} // namespace

std::string CopyModulator(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which)
{
    if (!isModulator(which))
        return {};
    ZMLElement element{std::string(tagOf(which))};
    store(core, which, element);
    return ZMLDocumentText(element, ZMLLayout::Indented);
}

bool PasteModulator(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which, const std::string& text)
{
    if (!isModulator(which))
        return false;
    try {
        const std::unique_ptr<ZMLElement> element = ReadZMLDocument(text);
        if (element->name() != tagOf(which))
            return false;
        load(core, which, *element);
    } catch (const ZException&) {
        return false; // not markup, or refused by the modulator, which keeps its state
    }
    tellHost(core, which);
    return true;
}

void SwapMultiParameters(ZQuessaneAudioEffectPlugin& core, int from, int to)
{
    if (from == to)
        return;
    const ZModulatorSelection first{Kind::MultiParameter, from}, second{Kind::MultiParameter, to};
    ZMLElement a{std::string(kMultiParameterClipboardTag)}, b{std::string(kMultiParameterClipboardTag)};
    store(core, first, a);
    store(core, second, b);
    load(core, first, b);
    load(core, second, a);
    tellHost(core, first);
    tellHost(core, second);
}

void LearnTargets(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which, bool clearFirst)
{
    if (!isModulator(which))
        return;
    const ZModulatorTargetList& targets = targetsOf(context.core, which);
    ZTargetListEditor* editor = findTargetList(root.content(), targets);
    if (editor == nullptr && context.open) {
        context.open(which);
        editor = findTargetList(root.content(), targets);
    }
    if (editor != nullptr)
        editor->StartLearning(clearFirst);
}

std::vector<ZMenuItem> ModulatorsMenuItems(ZModulatorEditorContext& context, ZUIRoot& root, ZRect anchor)
{
    std::vector<ZMenuItem> items;
    ZQuessaneAudioEffectPlugin& core = context.core;
    items.push_back(item("Enable modulators", [&core] { core.SetModulatorsEnabled(!core.modulatorsEnabled()); },
                         core.modulatorsEnabled()));
    items.push_back(item("Randomize", [&core] { core.GenerateRandomSettings(); }));
    items.push_back(item("Randomize (only enabled)", [&core] { core.GenerateRandomSettingsSmart(); }));
    items.push_back(item("Presets", [&context, &root, anchor] { showModulatorPresets(context, root, anchor); }));
    return items;
}

std::vector<ZMenuItem> ModulatorMenuItems(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which,
                                          ZRect anchor)
{
    std::vector<ZMenuItem> items;
    if (isModulator(which)) {
        ZQuessaneAudioEffectPlugin& core = context.core;
        items.push_back(item("Copy", [&core, &root, which] { root.clipboard().SetText(CopyModulator(core, which)); }));
        items.push_back(item("Paste", [&core, &root, which] { PasteModulator(core, which, root.clipboard().Text()); }));
        items.push_back(ZMenuItem::Separator());
        if (which.kind == Kind::MultiParameter) {
            items.push_back(item("Attach MIDI controller", [&context] { context.open({Kind::MIDI, 0}); }));
            for (int place = 0; place < ZAudioEffectPluginToAudioPluginAdapter::kMultiParameterCount; ++place)
                items.push_back(item("Reorder -> Multiparameter " + std::to_string(place + 1),
                                     [&context, which, place] {
                                         SwapMultiParameters(context.core, which.index, place);
                                         context.open({Kind::MultiParameter, place});
                                     },
                                     place == which.index, place != which.index));
            items.push_back(ZMenuItem::Separator());
        }
        const auto learning = [&context, &root, which] {
            const ZTargetListEditor* editor = findTargetList(root.content(), targetsOf(context.core, which));
            return editor != nullptr && editor->learning();
        };
        // Chosen again while the modulator learns, either entry ends the learning.
        const auto learn = [&context, &root, which, learning](bool clearFirst) {
            return [&context, &root, which, learning, clearFirst] {
                if (learning())
                    findTargetList(root.content(), targetsOf(context.core, which))->StopLearning();
                else
                    LearnTargets(context, root, which, clearFirst);
            };
        };
        items.push_back(item("Learn", learn(false), learning()));
        items.push_back(item("Clear & Learn", learn(true)));
        items.push_back(ZMenuItem::Separator());
    }
    std::vector<ZMenuItem> all = ModulatorsMenuItems(context, root, anchor);
    items.insert(items.end(), std::make_move_iterator(all.begin()), std::make_move_iterator(all.end()));
    return items;
}

void ShowModulatorMenu(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which, ZRect anchor)
{
    ZPopupMenu::Show(root, ModulatorMenuItems(context, root, which, anchor), anchor);
}

void ShowModulatorsMenu(ZModulatorEditorContext& context, ZUIRoot& root, ZRect anchor)
{
    ZPopupMenu::Show(root, ModulatorsMenuItems(context, root, anchor), anchor);
}

} // namespace halvern
