#include "presets/factory_presets.h"

#include "host/library_module.h"

namespace halvern {
namespace {

// Runs when the library is loaded, before any module instance can be made.
[[maybe_unused]] const bool registered = (RegisterBuiltInStore(FactoryPresetBlock()), true);

} // namespace

} // namespace halvern
