#pragma once

// A stream over bytes held in memory. The buffer is reference counted and shared
// copy-on-write: copying the stream shares the buffer, and the first Write through a
// stream whose buffer has other holders takes a private copy first. That lets one
// thread hand a finished block to another (the host keeps a chunk alive by holding a
// copy) without copying the bytes. Size and position are 32-bit.

#include "state/z_stream.h"

#include <cstdint>

namespace halvern {

class ZMemoryStream : public ZStream {
public:
    ZMemoryStream() = default;
    // A stream over a private copy of count bytes, positioned at the start.
    ZMemoryStream(const void* bytes, int32_t count);
    // Copies share the buffer and take over size and position.
    ZMemoryStream(const ZMemoryStream& other) noexcept;
    ZMemoryStream& operator=(const ZMemoryStream& other) noexcept;
    ZMemoryStream(ZMemoryStream&& other) noexcept;
    ZMemoryStream& operator=(ZMemoryStream&& other) noexcept;
    ~ZMemoryStream() override;

    void Write(const void* bytes, int32_t count) override;
    int32_t Read(void* bytes, int32_t count) override;
    LineStatus ReadLine(char* buffer, int32_t capacity) override;
    // Moves to offset from origin 0 (start), 1 (position) or 2 (end), clamped to 0 .. size.
    void Seek(int64_t offset, int origin) override;
    int64_t Position() override;
    void Flush() override;
    bool IsEnd() override;
    int64_t Size() override;
    // The byte at the current position (nullptr while the stream has no buffer). Valid
    // until the next Write or reserve through this stream; read-only, since the buffer
    // may be shared.
    virtual const uint8_t* PositionPointer() const;

    // The whole content, independent of the position. data() is nullptr when empty
    // and no buffer was ever made.
    const uint8_t* data() const;
    int32_t size() const { return size_; }
    int32_t position() const { return position_; }
    // Makes the buffer private and able to hold capacity bytes, so that later Writes up
    // to that size do not allocate.
    void reserve(int32_t capacity);
    int32_t capacity() const;
    // Empties the stream; a private buffer keeps its capacity for reuse.
    void clear();
    // True while another stream holds the same buffer.
    bool isShared() const;

private:
    struct Buffer;

    // Makes buffer_ private with room for required bytes and returns the buffer it
    // replaced (or nullptr), still referenced, so that a caller copying from the old
    // bytes can release it afterwards.
    Buffer* prepareWrite(int64_t required);
    static void release(Buffer* buffer) noexcept;

    Buffer* buffer_ = nullptr;
    int32_t size_ = 0;
    int32_t position_ = 0;
};

} // namespace halvern
