#include "state/preset_content.h"

#include "core/z_exception.h"
#include "state/z_hexa_stream.h"
#include "state/z_memory_stream.h"
#include "state/z_zlib_stream.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"

#include <optional>
#include <string>

namespace halvern {
namespace {

constexpr int kQuality = 100; // zlib level 9

std::optional<std::string> attribute(const ZMLElement& element, std::string_view name)
{
    const std::string* value = element.findAttribute(name);
    return value != nullptr ? std::optional<std::string>(*value) : std::nullopt;
}

std::string pack(const ZMLElement& content)
{
    ZMemoryStream digits;
    ZHexaStream hexadecimal(&digits);
    ZZLibStream compressor(&hexadecimal, true, kQuality);
    WriteZMLDocument(compressor, content, ZMLLayout::Compact);
    compressor.Finish();
    compressor.Detach();
    return {reinterpret_cast<const char*>(digits.data()), static_cast<size_t>(digits.size())};
}

std::unique_ptr<ZMLElement> unpack(const std::string& text)
{
    ZMemoryStream digits(text.data(), static_cast<int32_t>(text.size()));
    ZHexaStream hexadecimal(&digits);
    ZZLibStream inflater(&hexadecimal, false, kQuality);
    std::unique_ptr<ZMLElement> content = ReadZMLDocument(inflater);
    // Packed data cut short may still hold a whole document; without its checksum it is
    // not trusted.
    if (!inflater.reachedEnd())
        throw ZException("Source compressed stream has invalid content.");
    return content;
}

} // namespace

bool IsCompressedPreset(const ZMLElement& preset)
{
    return preset.hasAttribute(kPresetCompressed);
}

std::unique_ptr<ZMLElement> PresetContent(const ZMLElement& preset)
{
    return IsCompressedPreset(preset) ? unpack(preset.text()) : preset.clone();
}

void CompressPreset(ZMLElement& preset)
{
    if (IsCompressedPreset(preset))
        return;
    std::string packed = pack(preset);
    const std::optional<std::string> name = attribute(preset, kPresetName);
    const std::optional<std::string> exchangeIndex = attribute(preset, kPresetExchangeIndex);
    preset.clear();
    if (name)
        preset.setAttribute(kPresetName, *name);
    preset.setAttribute(kPresetCompressed, "1");
    if (exchangeIndex)
        preset.setAttribute(kPresetExchangeIndex, *exchangeIndex);
    preset.setText(std::move(packed));
}

} // namespace halvern
