#pragma once

// Root classes of the framework: every polymorphic framework object is a ZObject,
// every object that receives events a ZEventTarget, every plug-in a ZPlugin.

#include <cstdint>

namespace halvern {

class ZObject {
public:
    virtual ~ZObject() = default;
};

class ZEventTarget : public ZObject {};

// A message as the plug-in system passes it: a list of 8-byte slots. An integer
// argument stands in the second 32-bit word of its slot; a pointer, which needs all 64
// bits on this platform, fills the whole slot. Argument 1..4 lives in slot 0..3.
struct ZPluginMessage {
    const uint64_t* slots = nullptr;
    int slotCount = 0;

    int32_t argument(int number) const;
    void* pointer(int number) const;
};

class ZPlugin : public ZEventTarget {
public:
    // The plug-in system's message entry: (operation code, message) -> result.
    virtual intptr_t HandleMessage(int32_t code, const ZPluginMessage& message);
};

} // namespace halvern
