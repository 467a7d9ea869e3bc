#pragma once

// A preset manager, one for each kind of thing that has presets. It keeps the user's
// collection of that kind and the read-only factory collection built into the library,
// loads a preset into its owner, stores the owner's state as a new preset or over an
// existing one, and steps to the next and previous preset.
//
// Next and previous walk the factory presets and then the user's, each collection
// depth-first in document order, and wrap around at both ends.
//
// The owner binds a manager to what it manages (preset_owners.h has one per kind):
//   Owner::kKind                the name of the kind's preset folder;
//   owner.Store(element)        writes the owner's state items into element;
//   owner.Load(content)         reads them back; when that fails, the owner keeps the
//                               state it had and the error is thrown on;
//   owner.currentPresetIndex()  where the index of the preset loaded last is kept, -1
//                               for none (its place in the sequence that next and
//                               previous walk).

#include "core/z_exception.h"
#include "state/preset_collection.h"
#include "state/preset_content.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace halvern {

template <class Owner>
concept ZPresetOwner = requires(Owner& owner, ZMLElement& element) {
    { Owner::kKind } -> std::convertible_to<std::string_view>;
    owner.Store(element);
    owner.Load(element);
    { owner.currentPresetIndex() } -> std::same_as<int32_t&>;
};

template <ZPresetOwner Owner>
class ZPresetManagerT {
public:
    // The user's collection lies in userDataFolder/kind/presets.xml. Without a user data
    // folder the collection can be edited but not saved.
    ZPresetManagerT(Owner owner, std::string_view userDataFolder, ZPresetCollection factory = {})
        : owner_(std::move(owner)), factory_(std::move(factory))
    {
        if (!userDataFolder.empty())
            path_ = (std::filesystem::path(userDataFolder) / Owner::kKind / ZPresetCollection::kFileName).string();
    }

    Owner& owner() { return owner_; }
    ZPresetCollection& collection() { return user_; }
    const ZPresetCollection& factory() const { return factory_; }
    const std::string& collectionPath() const { return path_; }

    // Reads the user's collection from its file; a missing file gives an empty
    // collection. A file that cannot be read or parsed throws and leaves the collection
    // as it was.
    void LoadCollection()
    {
        std::error_code error;
        const bool present = !path_.empty() && std::filesystem::exists(path_, error);
        // A file that is there but cannot be looked at is read, so that its error shows
        // instead of an empty collection that a save would write over it.
        user_ = present || error ? ZPresetCollection::ReadFile(path_) : ZPresetCollection();
    }
    // Applies change to the user's collection as it is on disk now and saves it; see
    // ZPresetCollection::Update for what happens to a file that does not read and what
    // the returned notice says.
    std::string SaveCollection(const ZPresetCollection::Change& change = {})
    {
        if (path_.empty())
            throw ZException("There is no folder for the user's presets.");
        return ZPresetCollection::Update(path_, user_, change);
    }

    // Every preset in the order that next and previous walk.
    std::vector<const ZMLElement*> sequence() const
    {
        std::vector<const ZMLElement*> presets = factory_.presets();
        const std::vector<const ZMLElement*> own = user_.presets();
        presets.insert(presets.end(), own.begin(), own.end());
        return presets;
    }

    // Loads a preset of either collection into the owner and makes it the current one.
    // Throws for a preset of neither collection, for packed content that does not
    // unpack (see PresetContent) and when the owner refuses the content; the owner and
    // the current preset then stay as they were.
    void Load(const ZMLElement& preset)
    {
        const std::vector<const ZMLElement*> presets = sequence();
        const auto found = std::find(presets.begin(), presets.end(), &preset);
        if (found == presets.end())
            throw ZException("The preset is not part of the preset manager's collections.");
        load(presets, static_cast<int32_t>(found - presets.begin()));
    }

    // Loads the preset after (direction > 0) or before (direction < 0) the current one;
    // without a current preset, the first or the last. Returns false, loading nothing,
    // when there are no presets or the direction is 0.
    bool Step(int direction)
    {
        const std::vector<const ZMLElement*> presets = sequence();
        const auto count = static_cast<int32_t>(presets.size());
        if (direction == 0 || count == 0)
            return false;
        const int32_t current = owner_.currentPresetIndex();
        const bool known = current >= 0 && current < count;
        const int32_t target = direction > 0 ? (known ? (current + 1) % count : 0)
                                             : (known ? (current + count - 1) % count : count - 1);
        load(presets, target);
        return true;
    }
    bool Next() { return Step(1); }
    bool Previous() { return Step(-1); }

    // A new preset at the end of a folder of the user's collection, holding the owner's
    // current state.
    ZMLElement& Add(ZMLElement& folder, std::string_view name)
    {
        ZMLElement preset = storeOwner();
        ZPresetCollection::RenamePreset(preset, name);
        return folder.addCopy(preset);
    }

    // Stores the owner's current state into a preset of the user's collection. The
    // preset keeps its name, its exchange mark and its form, plain or compressed.
    void Replace(ZMLElement& preset)
    {
        ZMLElement stored = storeOwner();
        for (const std::string_view kept : {kPresetName, kPresetExchangeIndex})
            if (const std::string* value = preset.findAttribute(kept))
                stored.setAttribute(kept, *value);
        if (IsCompressedPreset(preset))
            CompressPreset(stored);
        preset = std::move(stored);
    }

private:
    ZMLElement storeOwner()
    {
        ZMLElement preset{std::string(kPresetElement)};
        owner_.Store(preset);
        return preset;
    }

    void load(const std::vector<const ZMLElement*>& presets, int32_t index)
    {
        const std::unique_ptr<ZMLElement> content = PresetContent(*presets[static_cast<size_t>(index)]);
        owner_.Load(*content);
        owner_.currentPresetIndex() = index;
    }

    Owner owner_;
    ZPresetCollection factory_;
    ZPresetCollection user_;
    std::string path_;
};

} // namespace halvern
