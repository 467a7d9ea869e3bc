#include "state/z_stream.h"

#include "core/z_exception.h"
#include "core/z_format.h"

#include <algorithm>

namespace halvern {
namespace {

constexpr int32_t kPieceSize = 1024;

[[noreturn]] void notImplemented(const char* service)
{
    throw ZException(ZFormat("Service \"{0}\" is not implemented.").arg(service).text());
}

} // namespace

ZStream* ZStream::GetSubstream() { notImplemented("return substream"); }
void ZStream::Write(const void*, int32_t) { notImplemented("write to stream"); }
int32_t ZStream::Read(void*, int32_t) { notImplemented("read from stream"); }
int64_t ZStream::Position() { notImplemented("get stream position"); }
void ZStream::Flush() { notImplemented("flush stream"); }
bool ZStream::IsEnd() { notImplemented("end of stream test"); }
void ZStream::Truncate() { notImplemented("truncate stream"); }
int64_t ZStream::Size() { notImplemented("stream size detection"); }
bool ZStream::IsInitialized() { return true; }

void ZStream::WriteFill(int32_t count)
{
    const char zeros[kPieceSize] = {};
    while (count > 0) {
        const int32_t piece = std::min(count, kPieceSize);
        Write(zeros, piece);
        count -= piece;
    }
}

ZStream::LineStatus ZStream::ReadLine(char* buffer, int32_t capacity)
{
    return AssembleLine(buffer, capacity, [this] {
        unsigned char byte = 0;
        return Read(&byte, 1) < 1 ? -1 : static_cast<int>(byte);
    });
}

void ZStream::WriteString(std::string_view text)
{
    if (!text.empty())
        Write(text.data(), static_cast<int32_t>(text.size()));
}

void ZStream::WriteLine(std::string_view text)
{
    WriteString(text);
    const char lineFeed = '\n';
    Write(&lineFeed, 1);
}

void ZStream::Seek(int64_t offset, int origin)
{
    int64_t distance;
    switch (origin) {
    case 0: distance = offset - Position(); break;
    case 1: distance = offset; break;
    case 2: distance = Size() + offset - Position(); break;
    default: throw ZException("Invalid seek origin.");
    }
    if (distance < 0)
        notImplemented("backward seek in a stream");
    char scratch[kPieceSize];
    while (distance > 0) {
        const int32_t piece = static_cast<int32_t>(std::min<int64_t>(distance, kPieceSize));
        const int32_t got = Read(scratch, piece);
        distance -= got;
        if (got < piece)
            return;
    }
}

} // namespace halvern
