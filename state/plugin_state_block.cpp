#include "state/plugin_state_block.h"

#include "core/audio_plugin.h"
#include "core/z_exception.h"
#include "state/serialization_context.h"
#include "state/z_zlib_stream.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"

namespace halvern {
namespace {

constexpr const char* kRootName = "settings";
constexpr const char* kEncoding = "utf-8";
constexpr int kQuality = 100; // zlib level 9

} // namespace

void StorePluginState(ZAudioPlugin& plugin, ZMLElement& element)
{
    ZLockHolder hold(plugin.processingLock(), -1);
    // Parameter changes the host made since the last block belong to the state.
    plugin.parameters().takeParked();
    plugin.Serialize(ZSerializationContext(element, true));
}

void ApplyPluginState(ZAudioPlugin& plugin, ZMLElement& document)
{
    ZLockHolder hold(plugin.processingLock(), -1);
    // Changes still parked for the next block would overwrite the loaded values.
    plugin.parameters().takeParked();
    ZReadOrRestore(document, [&](const ZSerializationContext& context) { plugin.Serialize(context); });
}

ZMemoryStream SavePluginState(ZAudioPlugin& plugin)
{
    ZMLElement root(kRootName);
    StorePluginState(plugin, root);
    ZMemoryStream block;
    ZZLibStream compressor(&block, true, kQuality);
    WriteZMLDocument(compressor, root, ZMLLayout::Compact, kEncoding);
    compressor.Finish();
    compressor.Detach();
    return block;
}

std::unique_ptr<ZMLElement> ReadStateDocument(const void* bytes, int32_t size)
{
    if (bytes == nullptr || size <= 0)
        throw ZException("Source compressed stream has invalid content.");
    ZMemoryStream block(bytes, size);
    ZZLibStream inflater(&block, false, kQuality);
    std::unique_ptr<ZMLElement> document = ReadZMLDocument(inflater);
    // A block cut short may still hold a whole document; without its checksum it is
    // not trusted.
    if (!inflater.reachedEnd())
        throw ZException("Source compressed stream has invalid content.");
    return document;
}

void LoadPluginState(ZAudioPlugin& plugin, const void* bytes, int32_t size)
{
    ApplyPluginState(plugin, *ReadStateDocument(bytes, size));
}

} // namespace halvern
