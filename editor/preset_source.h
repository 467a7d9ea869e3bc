#pragma once

// ZPresetSource: what the preset window and the header's preset arrows need of a preset
// manager of any kind (the plug-in's, an LFO's, a MultiParameter's, a shape's), behind
// one small interface. ZPresetSourceT adapts a ZPresetManagerT.

#include "state/preset_collection.h"
#include "state/preset_content.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

class ZUIRoot;

class ZPresetSource {
public:
    virtual ~ZPresetSource() = default;

    // The read-only presets built into the library and the user's own.
    virtual const ZPresetCollection& factory() const = 0;
    virtual const ZPresetCollection& user() const = 0;
    // Every preset in the order that next and previous walk.
    virtual std::vector<const ZMLElement*> sequence() const = 0;
    // The place in the sequence of the preset loaded last, -1 for none.
    virtual int32_t currentIndex() = 0;
    // Loads a preset of either collection into the owner (on the UI thread; the owner
    // takes the locks the audio thread needs). Throws when it cannot be loaded.
    virtual void Load(const ZMLElement& preset) = 0;
    // Loads the preset after (direction > 0) or before the current one; false when
    // there are none.
    virtual bool Step(int direction) = 0;
    // Stores the owner's state into a preset, or as a new preset at the end of a folder,
    // of the collection that Save hands to its change.
    virtual void Replace(ZMLElement& preset) = 0;
    virtual void Add(ZMLElement& folder, std::string_view name) = 0;
    // Applies a change to the user's collection as it is on disk and writes it safely;
    // returns the notice about a damaged file that was kept aside (empty when none).
    virtual std::string Save(const ZPresetCollection::Change& change) = 0;

    // The preset loaded last, or null.
    const ZMLElement* current();
    // Its name, empty when there is none.
    std::string CurrentName();
    // Steps as Step does and shows a failure as a message in root; true when a preset
    // was loaded.
    bool StepShowingErrors(ZUIRoot& root, int direction);
};

template <class Manager>
class ZPresetSourceT final : public ZPresetSource {
public:
    explicit ZPresetSourceT(Manager& manager) : manager_(manager) {}

    const ZPresetCollection& factory() const override { return manager_.factory(); }
    const ZPresetCollection& user() const override { return manager_.collection(); }
    std::vector<const ZMLElement*> sequence() const override { return manager_.sequence(); }
    int32_t currentIndex() override { return manager_.owner().currentPresetIndex(); }
    void Load(const ZMLElement& preset) override { manager_.Load(preset); }
    bool Step(int direction) override { return manager_.Step(direction); }
    void Replace(ZMLElement& preset) override { manager_.Replace(preset); }
    void Add(ZMLElement& folder, std::string_view name) override { manager_.Add(folder, name); }
    std::string Save(const ZPresetCollection::Change& change) override { return manager_.SaveCollection(change); }

private:
    Manager& manager_;
};

// The name of the preset a manager loaded last (empty when none), for the header.
template <class Manager>
std::string CurrentPresetName(Manager& manager)
{
    return ZPresetSourceT<Manager>(manager).CurrentName();
}

// The header's arrows: loads the previous (direction < 0) or next preset without
// opening the window; a failure shows as a message in root. True when one was loaded.
template <class Manager>
bool StepPreset(ZUIRoot& root, Manager& manager, int direction)
{
    return ZPresetSourceT<Manager>(manager).StepShowingErrors(root, direction);
}

} // namespace halvern
