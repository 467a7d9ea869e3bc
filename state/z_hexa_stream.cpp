#include "state/z_hexa_stream.h"

#include "core/z_exception.h"

#include <algorithm>

namespace halvern {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";
// Digits go through a piece on the stack: 512 bytes per target call.
constexpr int32_t kPieceDigits = 1024;

[[noreturn]] void invalidContent()
{
    throw ZException("Hexadecimal stream has invalid content.");
}

int digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    invalidContent();
}

} // namespace

ZStream& ZHexaStream::requireTarget()
{
    if (!target_)
        throw ZException("Hexadecimal stream has no target.");
    return *target_;
}

void ZHexaStream::Write(const void* bytes, int32_t count)
{
    ZStream& target = requireTarget();
    const auto* source = static_cast<const uint8_t*>(bytes);
    char piece[kPieceDigits];
    while (count > 0) {
        const int32_t n = std::min(count, kPieceDigits / 2);
        for (int32_t i = 0; i < n; ++i) {
            piece[2 * i] = kDigits[source[i] >> 4];
            piece[2 * i + 1] = kDigits[source[i] & 0x0F];
        }
        target.Write(piece, 2 * n);
        source += n;
        count -= n;
    }
}

int32_t ZHexaStream::Read(void* bytes, int32_t count)
{
    ZStream& target = requireTarget();
    auto* destination = static_cast<uint8_t*>(bytes);
    char piece[kPieceDigits];
    int32_t delivered = 0;
    while (delivered < count) {
        const int32_t asked = 2 * std::min(count - delivered, kPieceDigits / 2);
        const int32_t got = target.Read(piece, asked);
        if (got % 2 != 0)
            invalidContent();
        for (int32_t i = 0; i < got; i += 2)
            destination[delivered++] = static_cast<uint8_t>(digitValue(piece[i]) << 4 | digitValue(piece[i + 1]));
        if (got < asked)
            break;
    }
    return delivered;
}

void ZHexaStream::Seek(int64_t offset, int origin) { requireTarget().Seek(offset, origin); }
int64_t ZHexaStream::Position() { return requireTarget().Position(); }
void ZHexaStream::Flush() { requireTarget().Flush(); }
bool ZHexaStream::IsEnd() { return requireTarget().IsEnd(); }
int64_t ZHexaStream::Size() { return requireTarget().Size(); }
bool ZHexaStream::IsInitialized() { return target_ != nullptr; }

} // namespace halvern
