#include "editor/parameter_choice_menu.h"

#include "reverb/reverb_parameters.h"
#include "ui/controls/gesture.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {

std::vector<ZParameterGroup> ModulatableParameterGroups(ZQuessaneAudioEffectPlugin& core)
{
    const ZParameterRegistry& registry = core.parameters();
    const auto modulatable = [&](int32_t index) {
        return registry.info(index).automatable && registry.value(index) != nullptr;
    };
    std::vector<ZParameterGroup> groups;
    // The reverb's records: each panel record opens a group, as it opens a panel.
    for (int32_t index = 0; index < ZReverbParameters::kCount; ++index) {
        if (registry.info(index).opensPanel || groups.empty())
            groups.push_back({registry.info(index).name, {}});
        if (modulatable(index))
            groups.back().parameters.push_back(index);
    }
    // Between the reverb's records and the modulators stand the source position's two,
    // which the main editor shows in its "Position" panel.
    ZParameterGroup position{"Position", {}}, multiParameters{"MultiParameters", {}}, lfos{"LFOs", {}},
        plugin{"Plug-in", {}};
    const int32_t firstMultiParameter = core.multiParameterIndex(0);
    const int32_t lastMultiParameter = core.multiParameterIndex(ZAudioEffectPluginToAudioPluginAdapter::kMultiParameterCount - 1);
    const int32_t firstLFO = core.lfoParameterIndex(0);
    const int32_t lastLFO = core.lfoParameterIndex(ZAudioEffectPluginToAudioPluginAdapter::kLFOCount) - 1;
    for (int32_t index = ZReverbParameters::kCount; index < registry.count(); ++index) {
        if (!modulatable(index))
            continue;
        if (index < firstMultiParameter)
            position.parameters.push_back(index);
        else if (index <= lastMultiParameter)
            multiParameters.parameters.push_back(index);
        else if (index >= firstLFO && index <= lastLFO)
            lfos.parameters.push_back(index);
        else
            plugin.parameters.push_back(index);
    }
    groups.insert(groups.begin(), std::move(position));
    for (ZParameterGroup* group : {&multiParameters, &lfos, &plugin})
        groups.push_back(std::move(*group));
    std::erase_if(groups, [](const ZParameterGroup& group) { return group.parameters.empty(); });
    return groups;
}

ZParameterChoiceMenu::ZParameterChoiceMenu(std::shared_ptr<ZParameterBinding> binding,
                                           std::vector<ZParameterGroup> groups)
    : ZEnumMenu(std::move(binding)), groups_(std::move(groups))
{
}

bool ZParameterChoiceMenu::OnLeftPress(const ZMouseEvent&)
{
    OpenGroups();
    return false;
}

void ZParameterChoiceMenu::OpenGroups()
{
    ZUIRoot* r = root();
    if (r == nullptr)
        return;
    const ZRect anchor = BoxRect();
    const int current = currentIndex();
    std::vector<ZMenuItem> items;
    for (int group = 0; group < static_cast<int>(groups_.size()); ++group) {
        const auto [first, count] = flatRange(group);
        ZMenuItem item;
        item.text = groups_[static_cast<size_t>(group)].name + "  \u203A";
        item.checked = current >= first && current < first + count;
        // The menu may outlive this control: the action keeps what it shows.
        item.action = [r, anchor, parameters = groupItems(group)] {
            ZPopupMenu::Show(*r, parameters, anchor, anchor.width);
        };
        items.push_back(std::move(item));
    }
    ZPopupMenu::Show(*r, std::move(items), anchor, anchor.width);
}

void ZParameterChoiceMenu::OpenGroup(int group)
{
    if (ZUIRoot* r = root(); r != nullptr && group >= 0 && group < static_cast<int>(groups_.size()))
        ZPopupMenu::Show(*r, groupItems(group), BoxRect(), BoxRect().width);
}

std::pair<int, int> ZParameterChoiceMenu::flatRange(int group) const
{
    int first = 0;
    for (int g = 0; g < group; ++g)
        first += static_cast<int>(groups_[static_cast<size_t>(g)].parameters.size());
    return {first, static_cast<int>(groups_[static_cast<size_t>(group)].parameters.size())};
}

std::vector<ZMenuItem> ZParameterChoiceMenu::groupItems(int group) const
{
    const auto [first, count] = flatRange(group);
    const std::vector<std::string> names = binding().ItemNames();
    const int steps = std::max(static_cast<int>(names.size()) - 1, 1);
    const int current = currentIndex();
    const std::shared_ptr<ZParameterBinding> shared = sharedBinding();
    std::vector<ZMenuItem> items;
    for (int i = first; i < first + count && i < static_cast<int>(names.size()); ++i) {
        ZMenuItem item;
        item.text = names[static_cast<size_t>(i)];
        item.checked = i == current;
        item.action = [shared, i, steps] { ZGesture::SetOnce(*shared, static_cast<double>(i) / steps); };
        items.push_back(std::move(item));
    }
    return items;
}

} // namespace halvern
