#pragma once

// The factory preset collection: presets/factory.xml, built into the library as its
// built-in store block. A static initialiser of the library registers the block, so
// every module instance holds it in its store; the plug-in's preset managers take their
// factory collection from there.

#include <cstdint>
#include <span>

namespace halvern {

// The collection's file as the library carries it.
std::span<const uint8_t> FactoryPresetBlock();

} // namespace halvern
