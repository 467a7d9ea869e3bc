#include "editor/preset_source.h"

#include "ui/dialog.h"

#include <exception>

namespace halvern {

const ZMLElement* ZPresetSource::current()
{
    const std::vector<const ZMLElement*> presets = sequence();
    const int32_t index = currentIndex();
    return index >= 0 && index < static_cast<int32_t>(presets.size()) ? presets[static_cast<size_t>(index)] : nullptr;
}

std::string ZPresetSource::CurrentName()
{
    const ZMLElement* preset = current();
    return preset != nullptr ? preset->getAttribute(kPresetName) : std::string();
}

bool ZPresetSource::StepShowingErrors(ZUIRoot& root, int direction)
{
    try {
        return Step(direction);
    } catch (const std::exception& error) {
        ShowMessage(root, "Presets", error.what());
        return false;
    }
}

} // namespace halvern
