#include "state/preset_collection.h"

#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/preset_content.h"
#include "state/z_std_file_stream.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"

#include <filesystem>
#include <system_error>

namespace halvern {
namespace {

constexpr const char* kRootElement = "presets";

bool isPreset(const ZMLElement& element)
{
    return element.name() == kPresetElement;
}

bool isFolder(const ZMLElement& element)
{
    return element.name() == ZPresetCollection::kFolderElement;
}

void setName(ZMLElement& element, std::string_view attribute, std::string_view name)
{
    if (name.empty())
        throw ZException("The name must not be empty.");
    element.setAttribute(attribute, name);
}

template <class Element>
void collectPresets(Element& folder, std::vector<Element*>& presets)
{
    for (const auto& child : folder.children()) {
        if (isPreset(*child))
            presets.push_back(child.get());
        else if (isFolder(*child))
            collectPresets<Element>(*child, presets);
    }
}

ZMLElement* parentOf(ZMLElement& folder, const ZMLElement& element)
{
    for (const auto& child : folder.children()) {
        if (child.get() == &element)
            return &folder;
        if (ZMLElement* parent = isFolder(*child) ? parentOf(*child, element) : nullptr)
            return parent;
    }
    return nullptr;
}

int compressFolder(ZMLElement& folder)
{
    int count = 0;
    for (const auto& child : folder.children()) {
        if (isFolder(*child)) {
            count += compressFolder(*child);
        } else if (isPreset(*child) && child->hasAttribute(kPresetName) && !IsCompressedPreset(*child)) {
            CompressPreset(*child);
            ++count;
        }
    }
    return count;
}

int markFolder(ZMLElement& folder, int32_t index, bool onlyUnmarked)
{
    int count = 0;
    for (const auto& child : folder.children())
        if (isPreset(*child) && !(onlyUnmarked && child->hasAttribute(kPresetExchangeIndex))) {
            child->setAttributeInt(kPresetExchangeIndex, index);
            ++count;
        }
    for (const auto& child : folder.children())
        if (isFolder(*child))
            count += markFolder(*child, index, onlyUnmarked);
    return count;
}

// Writes next to the file and then puts the new file in the old one's place.
void writeDocument(const std::string& path, const ZMLElement& root)
{
    const std::filesystem::path target(path);
    std::error_code error;
    if (target.has_parent_path())
        std::filesystem::create_directories(target.parent_path(), error);
    const std::string temporary = path + ".new";
    try {
        ZStdFileStream file(temporary, ZStdFileStream::Mode::Write);
        WriteZMLDocument(file, root, ZMLLayout::Indented);
        file.Close();
    } catch (...) {
        std::filesystem::remove(temporary, error);
        throw;
    }
    std::filesystem::rename(temporary, target, error);
    if (error) {
        std::filesystem::remove(temporary, error);
        throw ZException(ZFormat("Could not write file \"{0}\".").arg(path).text());
    }
}

std::unique_ptr<ZMLElement> readDocument(const std::string& path)
{
    ZStdFileStream file(path, ZStdFileStream::Mode::Read);
    return ReadZMLDocument(file);
}

} // namespace

ZPresetCollection::ZPresetCollection() : root_(std::make_unique<ZMLElement>(kRootElement)) {}

ZPresetCollection ZPresetCollection::ReadFile(const std::string& path)
{
    return ZPresetCollection(readDocument(path));
}

ZPresetCollection ZPresetCollection::ReadBlock(std::span<const uint8_t> block)
{
    if (block.empty())
        return {};
    return ZPresetCollection(ReadZMLDocument(std::string_view(reinterpret_cast<const char*>(block.data()), block.size())));
}

void ZPresetCollection::WriteFile(const std::string& path) const
{
    writeDocument(path, *root_);
}

std::vector<ZMLElement*> ZPresetCollection::presets()
{
    std::vector<ZMLElement*> found;
    collectPresets(*root_, found);
    return found;
}

std::vector<const ZMLElement*> ZPresetCollection::presets() const
{
    std::vector<const ZMLElement*> found;
    collectPresets<const ZMLElement>(*root_, found);
    return found;
}

std::string ZPresetCollection::SuggestFolderName(const ZMLElement& parent)
{
    for (int number = 1;; ++number) {
        std::string name = std::string(kNewFolderName) + std::to_string(number);
        bool taken = false;
        for (const auto& child : parent.children())
            taken = taken || (isFolder(*child) && child->getAttribute(kFolderName) == name);
        if (!taken)
            return name;
    }
}

ZMLElement& ZPresetCollection::CreateFolder(ZMLElement& parent, std::string_view name)
{
    ZMLElement folder{std::string(kFolderElement)};
    setName(folder, kFolderName, name);
    return parent.addCopy(folder);
}

void ZPresetCollection::RenameFolder(ZMLElement& folder, std::string_view name)
{
    setName(folder, kFolderName, name);
}

void ZPresetCollection::RenamePreset(ZMLElement& preset, std::string_view name)
{
    setName(preset, kPresetName, name);
}

void ZPresetCollection::Remove(const ZMLElement& element)
{
    ZMLElement* parent = parentOf(*root_, element);
    if (parent == nullptr)
        throw ZException("The element is not part of the preset collection.");
    parent->removeChild(element);
}

void ZPresetCollection::ExportPreset(const ZMLElement& preset, const std::string& path)
{
    std::unique_ptr<ZMLElement> content = PresetContent(preset);
    if (const std::string* name = preset.findAttribute(kPresetName))
        content->setAttribute(kPresetName, *name);
    writeDocument(path, *content);
}

ZMLElement& ZPresetCollection::ImportPreset(ZMLElement& folder, const std::string& path)
{
    std::unique_ptr<ZMLElement> preset = readDocument(path);
    if (!isPreset(*preset))
        throw ZException(ZFormat("File \"{0}\" does not hold a preset.").arg(path).text());
    PresetContent(*preset); // damaged packed content is refused here, not when loaded
    if (!preset->hasAttribute(kPresetName))
        preset->setAttribute(kPresetName, std::filesystem::path(path).stem().string());
    return folder.addCopy(*preset);
}

int ZPresetCollection::CompressAll()
{
    return compressFolder(*root_);
}

int ZPresetCollection::MarkForExchange(int32_t index, bool onlyUnmarked)
{
    return markFolder(*root_, index, onlyUnmarked);
}

} // namespace halvern
