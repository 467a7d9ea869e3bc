#pragma once

// A collection of presets: a tree of folders ("Directory", named by "Name") and presets
// ("preset", named by "name", see preset_content.h) under a root element, nested to any
// depth in the user's order. It is kept in one markup file, "presets.xml", in the
// indented layout and the "utf-8" encoding. The collection edits the tree and its files;
// loading a preset into its owner is the preset manager's job.

#include "state/zml_element.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

class ZPresetCollection {
public:
    static constexpr std::string_view kFileName = "presets.xml";
    static constexpr std::string_view kFolderElement = "Directory";
    static constexpr std::string_view kFolderName = "Name";
    // The folder dialogs' prompts and the start of a new folder's suggested name.
    static constexpr std::string_view kNewFolderPrompt = "Enter name of the new folder";
    static constexpr std::string_view kRenameFolderPrompt = "Enter new name of the folder";
    static constexpr std::string_view kNewFolderName = "New folder ";

    // An empty collection.
    ZPresetCollection();
    // Throws the file stream's errors and the markup reader's.
    static ZPresetCollection ReadFile(const std::string& path);
    // The collection that a block of bytes holds in the form of the file, such as the
    // factory collection built into the library; an empty block gives an empty
    // collection. Throws the markup reader's errors.
    static ZPresetCollection ReadBlock(std::span<const uint8_t> block);
    // Writes the file safely (see preset_file.h), making its folder when it is missing.
    void WriteFile(const std::string& path) const;
    // Changes the collection kept in the file at path without losing what another writer
    // saved: under the file's lock, reads the file as it is now (this collection when
    // there is none), applies change to that and writes the result, which then becomes
    // this collection. A file that does not read is never written over: it is kept
    // beside itself under a dated name, this collection takes its place, and the notice
    // returned says so; otherwise the notice is empty.
    using Change = std::function<void(ZPresetCollection&)>;
    static std::string Update(const std::string& path, ZPresetCollection& collection, const Change& change);
    ZPresetCollection clone() const;

    ZMLElement& root() { return *root_; }
    const ZMLElement& root() const { return *root_; }

    // Every preset, depth-first in document order: a folder's presets and subfolders in
    // the order they stand, each subfolder walked completely where it stands.
    std::vector<ZMLElement*> presets();
    std::vector<const ZMLElement*> presets() const;

    // "New folder " and the smallest number from 1 that no folder in parent is named with.
    static std::string SuggestFolderName(const ZMLElement& parent);
    // A new, empty folder at the end of parent. Names must not be empty.
    static ZMLElement& CreateFolder(ZMLElement& parent, std::string_view name);
    static void RenameFolder(ZMLElement& folder, std::string_view name);
    static void RenamePreset(ZMLElement& preset, std::string_view name);
    // Removes a preset, or a folder with everything in it. Throws for the root and for
    // an element that is not in the collection.
    void Remove(const ZMLElement& element);

    // Writes a preset's content, in plain form and under the preset's name, as a markup
    // file of its own.
    static void ExportPreset(const ZMLElement& preset, const std::string& path);
    // Adds the preset that such a file holds at the end of folder. A preset without a
    // name is named after the file. Throws "File \"{0}\" does not hold a preset." when
    // the document is something else, and the errors of PresetContent for packed content
    // that does not unpack.
    static ZMLElement& ImportPreset(ZMLElement& folder, const std::string& path);

    // Turns every plain preset that has a name into the compressed form; presets without
    // a name stay as they are. Returns the number of presets converted.
    int CompressAll();
    // Sets "ExchangeIndex" to index on every preset or, with onlyUnmarked, on every preset
    // that has none yet; walks each folder's presets before its subfolders. Returns the
    // number of presets marked.
    int MarkForExchange(int32_t index, bool onlyUnmarked);

private:
    explicit ZPresetCollection(std::unique_ptr<ZMLElement> root) : root_(std::move(root)) {}

    std::unique_ptr<ZMLElement> root_;
};

} // namespace halvern
