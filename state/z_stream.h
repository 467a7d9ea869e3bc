#pragma once

// The abstract byte stream through which every persistent or exchanged byte passes.
// The defaults throw "Service ... is not implemented." for what a stream does not
// provide, and build line reading, filling, string writing and forward seeking on the
// primitive Read and Write.

#include "core/z_object.h"

#include <cstdint>
#include <string_view>

namespace halvern {

class ZStream : public ZObject {
public:
    enum class LineStatus : int { Complete = 0, Truncated = 1, NoData = 2 };

    virtual ZStream* GetSubstream();
    virtual void Write(const void* bytes, int32_t count);
    // Writes count filler bytes (zeros) in pieces of at most 1024 bytes.
    virtual void WriteFill(int32_t count);
    // Returns the number of bytes delivered; fewer than asked only at the end of the data.
    virtual int32_t Read(void* bytes, int32_t count);
    virtual LineStatus ReadLine(char* buffer, int32_t capacity);
    virtual void WriteString(std::string_view text);
    virtual void WriteLine(std::string_view text);
    // origin 0 = from the beginning, 1 = from the current position, 2 = from the end.
    virtual void Seek(int64_t offset, int origin);
    virtual int64_t Position();
    virtual void Flush();
    virtual bool IsEnd();
    virtual void Truncate();
    virtual int64_t Size();
    virtual bool IsInitialized();

protected:
    // Builds one line into buffer from the bytes next() hands out one at a time (-1 at the
    // end of the data): carriage returns are skipped, a line feed or a zero byte ends the
    // line, a full buffer ends it as Truncated, and data that ends without any byte of
    // the line gives NoData. Every stream's ReadLine answers through this one rule.
    template <class Next>
    static LineStatus AssembleLine(char* buffer, int32_t capacity, Next next)
    {
        if (capacity <= 1) {
            if (capacity == 1)
                buffer[0] = '\0';
            return LineStatus::Truncated;
        }
        int32_t stored = 0;
        for (;;) {
            const int byte = next();
            if (byte < 0) {
                buffer[stored] = '\0';
                return stored == 0 ? LineStatus::NoData : LineStatus::Complete;
            }
            if (byte == '\r')
                continue;
            if (byte == '\n' || byte == '\0') {
                buffer[stored] = '\0';
                return LineStatus::Complete;
            }
            buffer[stored++] = static_cast<char>(byte);
            if (stored == capacity - 1) {
                buffer[stored] = '\0';
                return LineStatus::Truncated;
            }
        }
    }
};

} // namespace halvern
