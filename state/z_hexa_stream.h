#pragma once

// A filter that writes every byte to its target as two upper-case hexadecimal digits,
// high nibble first, and reads such digit pairs back into bytes. The target is not
// owned. Reading accepts upper- and lower-case digits; any other character, or a
// single digit left over at the end of the data, throws
// "Hexadecimal stream has invalid content.". Seek, Position, Flush, IsEnd and Size
// are the target's (positions and sizes count digits, not decoded bytes).

#include "state/z_stream.h"

#include <cstdint>

namespace halvern {

class ZHexaStream : public ZStream {
public:
    ZHexaStream() = default;
    explicit ZHexaStream(ZStream* target) : target_(target) {}

    void Attach(ZStream* target) { target_ = target; }
    ZStream* target() const { return target_; }

    void Write(const void* bytes, int32_t count) override;
    int32_t Read(void* bytes, int32_t count) override;
    void Seek(int64_t offset, int origin) override;
    int64_t Position() override;
    void Flush() override;
    bool IsEnd() override;
    int64_t Size() override;
    // True when a target is set.
    bool IsInitialized() override;

private:
    ZStream& requireTarget();

    ZStream* target_ = nullptr;
};

} // namespace halvern
