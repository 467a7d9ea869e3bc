#pragma once

// The block of bytes in which hosts keep a plug-in's whole state: a "settings" markup
// document, UTF-8, compressed in the zlib format at level 9, with nothing of its own
// around it. Both host standards carry exactly these bytes.

#include "state/z_memory_stream.h"
#include "state/zml_element.h"

#include <cstdint>
#include <memory>

namespace halvern {

class ZAudioPlugin;

// Stores the plug-in's state and returns the block, positioned at its end.
ZMemoryStream SavePluginState(ZAudioPlugin& plugin);

// Stores the plug-in's state into an element under its processing lock, after taking
// the parameter changes that the host made since the last block. Host blocks and
// plug-in presets are stored this way.
void StorePluginState(ZAudioPlugin& plugin, ZMLElement& element);

// Reads a document into the plug-in under its processing lock. If applying it fails,
// the state from before is put back and the error is thrown on. Host blocks and
// plug-in presets are loaded this way.
void ApplyPluginState(ZAudioPlugin& plugin, ZMLElement& document);

// The document inside a block. Throws "Source compressed stream has invalid content."
// for bytes that do not inflate (including a block that ends early) and the markup
// errors for a document that does not parse.
std::unique_ptr<ZMLElement> ReadStateDocument(const void* bytes, int32_t size);

// Reads a block into the plug-in (see ApplyPluginState). A block that does not inflate
// or parse throws before anything changes.
void LoadPluginState(ZAudioPlugin& plugin, const void* bytes, int32_t size);

} // namespace halvern
