#pragma once

// The choice of a modulator target's parameter. The plug-in has too many automatable
// parameters for one menu on the screen, so the choice opens in two steps: first the
// groups the main editor shows them in (its panels, the MultiParameters, the LFOs, the
// plug-in's own), then the parameters of the group chosen.

#include "editor/modulator_editor_context.h"
#include "ui/controls/enum_menu.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

struct ZParameterGroup {
    std::string name;
    std::vector<int32_t> parameters; // registry indices
};

// Every parameter a modulator can drive (automatable, with a value), grouped as the
// main editor shows them, each group in registry order.
std::vector<ZParameterGroup> ModulatableParameterGroups(ZQuessaneAudioEffectPlugin& core);

class ZParameterChoiceMenu : public ZEnumMenu {
public:
    // binding is a choice among the groups' parameters, group after group.
    ZParameterChoiceMenu(std::shared_ptr<ZParameterBinding> binding, std::vector<ZParameterGroup> groups);

    // Opens the groups; choosing one opens its parameters in place of them.
    void OpenGroups();
    void OpenGroup(int group);

protected:
    bool OnLeftPress(const ZMouseEvent& event) override;

private:
    // The first flat index of a group's parameters and their count.
    std::pair<int, int> flatRange(int group) const;
    std::vector<ZMenuItem> groupItems(int group) const;

    std::vector<ZParameterGroup> groups_;
};

} // namespace halvern
