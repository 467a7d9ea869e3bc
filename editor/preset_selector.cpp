#include "editor/preset_selector.h"

#include "editor/preset_source.h"
#include "ui/controls/button.h"

namespace halvern {

ZPresetSelector::ZPresetSelector(ZQuessaneAudioEffectPlugin& core, std::function<void()> openWindow,
                                 std::function<void()> loaded)
    : core_(core), loaded_(std::move(loaded))
{
    SetName("PresetSelector");
    previous_ = AddChild(std::make_unique<ZButton>("\u25C0", [this] { Step(-1); }));
    previous_->SetName("presetprevious");
    previous_->SetHelpText("Loads the previous preset.");
    name_ = AddChild(std::make_unique<ZButton>(PresetName(), std::move(openWindow)));
    name_->SetName("PresetName");
    name_->SetHelpText("The preset loaded last. Click to open the presets: load, save, rename, sort into folders, "
                       "export and import.");
    next_ = AddChild(std::make_unique<ZButton>("\u25B6", [this] { Step(1); }));
    next_->SetName("presetnext");
    next_->SetHelpText("Loads the next preset.");
}

std::string ZPresetSelector::PresetName() const
{
    ZPluginPresetManager* presets = core_.presets();
    const std::string name = presets != nullptr ? CurrentPresetName(*presets) : std::string();
    return name.empty() ? "No preset" : name;
}

void ZPresetSelector::Step(int direction)
{
    ZPluginPresetManager* presets = core_.presets();
    ZUIRoot* owner = root();
    if (presets != nullptr && owner != nullptr && StepPreset(*owner, *presets, direction) && loaded_)
        loaded_();
    Refresh();
}
void ZPresetSelector::Refresh()
{
    const std::string name = PresetName();
    if (name != name_->Text())
        name_->SetText(name);
}

void ZPresetSelector::Layout()
{
    const ZRect& b = bounds();
    const double arrow = b.height;
    previous_->SetBounds({b.x, b.y, arrow, b.height});
    name_->SetBounds({b.x + arrow + 4, b.y, b.width - 2 * (arrow + 4), b.height});
    next_->SetBounds({b.right() - arrow, b.y, arrow, b.height});
}

} // namespace halvern
