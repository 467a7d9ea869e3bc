#include "state/preset_collection.h"

#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/preset_content.h"
#include "state/preset_file.h"
#include "state/z_std_file_stream.h"
#include "state/zml_reader.h"

#include <filesystem>
#include <system_error>

namespace halvern {
namespace {

constexpr const char* kRootElement = "presets";
constexpr const char* kDamagedFileNotice =
    "The preset file \"{0}\" could not be read ({1}); it was kept as \"{2}\" and the presets were saved in a new file.";

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
    WritePresetFile(path, *root_);
}

ZPresetCollection ZPresetCollection::clone() const
{
    return ZPresetCollection(root_->clone());
}

std::string ZPresetCollection::Update(const std::string& path, ZPresetCollection& collection, const Change& change)
{
    const ZPresetFileLock lock(path);
    std::string notice;
    // The file as it is now; without one, this instance's collection.
    ZPresetCollection current = collection.clone();
    std::error_code error;
    if (std::filesystem::exists(path, error) || error) {
        try {
            current = ReadFile(path);
        } catch (const ZException& damaged) {
            const std::string kept = KeepDamagedPresetFile(path);
            notice = ZFormat(kDamagedFileNotice).arg(path).arg(std::string(damaged.message())).arg(kept).text();
        }
    }
    if (change)
        change(current);
    current.WriteFile(path);
    collection = std::move(current);
    return notice;
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
    WritePresetFile(path, *content);
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
