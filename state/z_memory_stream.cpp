#include "state/z_memory_stream.h"

#include "core/z_exception.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>

namespace halvern {

// One allocation: the header followed by capacity bytes.
struct ZMemoryStream::Buffer {
    std::atomic<int32_t> references{1};
    int32_t capacity = 0;

    uint8_t* bytes() { return reinterpret_cast<uint8_t*>(this + 1); }

    static Buffer* create(int32_t capacity)
    {
        void* storage = ::operator new(sizeof(Buffer) + static_cast<size_t>(capacity));
        Buffer* buffer = new (storage) Buffer;
        buffer->capacity = capacity;
        return buffer;
    }
};

namespace {

constexpr int32_t kMaxSize = std::numeric_limits<int32_t>::max();
constexpr int32_t kMinCapacity = 64;

} // namespace

ZMemoryStream::ZMemoryStream(const void* bytes, int32_t count)
{
    if (count > 0) {
        buffer_ = Buffer::create(count);
        std::memcpy(buffer_->bytes(), bytes, static_cast<size_t>(count));
        size_ = count;
    }
}

ZMemoryStream::ZMemoryStream(const ZMemoryStream& other) noexcept
    : ZStream(other), buffer_(other.buffer_), size_(other.size_), position_(other.position_)
{
    if (buffer_)
        buffer_->references.fetch_add(1, std::memory_order_relaxed);
}

ZMemoryStream& ZMemoryStream::operator=(const ZMemoryStream& other) noexcept
{
    if (other.buffer_)
        other.buffer_->references.fetch_add(1, std::memory_order_relaxed);
    release(buffer_);
    buffer_ = other.buffer_;
    size_ = other.size_;
    position_ = other.position_;
    return *this;
}

ZMemoryStream::ZMemoryStream(ZMemoryStream&& other) noexcept
    : ZStream(other), buffer_(other.buffer_), size_(other.size_), position_(other.position_)
{
    other.buffer_ = nullptr;
    other.size_ = 0;
    other.position_ = 0;
}

ZMemoryStream& ZMemoryStream::operator=(ZMemoryStream&& other) noexcept
{
    if (this != &other) {
        release(buffer_);
        buffer_ = other.buffer_;
        size_ = other.size_;
        position_ = other.position_;
        other.buffer_ = nullptr;
        other.size_ = 0;
        other.position_ = 0;
    }
    return *this;
}

ZMemoryStream::~ZMemoryStream()
{
    release(buffer_);
}

void ZMemoryStream::release(Buffer* buffer) noexcept
{
    if (buffer && buffer->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        buffer->~Buffer();
        ::operator delete(buffer);
    }
}

ZMemoryStream::Buffer* ZMemoryStream::prepareWrite(int64_t required)
{
    if (required > kMaxSize)
        throw ZException("Memory stream cannot hold more than 2 GB.");
    const bool shared = isShared();
    if (!buffer_ && required <= 0)
        return nullptr;
    const int32_t capacity = buffer_ ? buffer_->capacity : 0;
    if (buffer_ && !shared && required <= capacity)
        return nullptr;
    // Grow geometrically so that a run of small Writes costs linear time.
    int64_t grown = capacity;
    if (required > capacity)
        grown = std::max<int64_t>({required, int64_t{2} * capacity, kMinCapacity});
    Buffer* fresh = Buffer::create(static_cast<int32_t>(std::min<int64_t>(grown, kMaxSize)));
    if (size_ > 0)
        std::memcpy(fresh->bytes(), buffer_->bytes(), static_cast<size_t>(size_));
    Buffer* previous = buffer_;
    buffer_ = fresh;
    return previous;
}

void ZMemoryStream::Write(const void* bytes, int32_t count)
{
    if (count <= 0)
        return;
    const int64_t end = int64_t{position_} + count;
    // The bytes may lie in the old buffer (written from PositionPointer()): keep it
    // alive until they are copied.
    Buffer* previous = prepareWrite(std::max<int64_t>(size_, end));
    std::memmove(buffer_->bytes() + position_, bytes, static_cast<size_t>(count));
    release(previous);
    position_ = static_cast<int32_t>(end);
    size_ = std::max(size_, position_);
}

int32_t ZMemoryStream::Read(void* bytes, int32_t count)
{
    const int32_t available = size_ - position_;
    const int32_t delivered = std::clamp(count, 0, std::max(available, 0));
    if (delivered > 0) {
        std::memcpy(bytes, buffer_->bytes() + position_, static_cast<size_t>(delivered));
        position_ += delivered;
    }
    return delivered;
}

// The same results as the byte-by-byte default, by scanning the buffer in place.
ZStream::LineStatus ZMemoryStream::ReadLine(char* buffer, int32_t capacity)
{
    const uint8_t* bytes = buffer_ != nullptr ? buffer_->bytes() : nullptr;
    return AssembleLine(buffer, capacity, [&] { return position_ < size_ ? static_cast<int>(bytes[position_++]) : -1; });
}

void ZMemoryStream::Seek(int64_t offset, int origin)
{
    // Offsets far outside any 32-bit buffer clamp the same way; limiting them first
    // keeps the sums below from overflowing.
    constexpr int64_t kLimit = int64_t{1} << 40;
    offset = std::clamp(offset, -kLimit, kLimit);
    int64_t target;
    switch (origin) {
    case 0: target = offset; break;
    case 1: target = position_ + offset; break;
    case 2: target = size_ + offset; break;
    default: throw ZException("Invalid seek origin.");
    }
    position_ = static_cast<int32_t>(std::clamp<int64_t>(target, 0, size_));
}

int64_t ZMemoryStream::Position() { return position_; }
void ZMemoryStream::Flush() {}
bool ZMemoryStream::IsEnd() { return position_ >= size_; }
int64_t ZMemoryStream::Size() { return size_; }

const uint8_t* ZMemoryStream::PositionPointer() const
{
    return buffer_ ? buffer_->bytes() + position_ : nullptr;
}

const uint8_t* ZMemoryStream::data() const
{
    return buffer_ ? buffer_->bytes() : nullptr;
}

void ZMemoryStream::reserve(int32_t capacity)
{
    release(prepareWrite(std::max(capacity, size_)));
}

int32_t ZMemoryStream::capacity() const
{
    return buffer_ ? buffer_->capacity : 0;
}

void ZMemoryStream::clear()
{
    if (isShared()) {
        release(buffer_);
        buffer_ = nullptr;
    }
    size_ = 0;
    position_ = 0;
}

bool ZMemoryStream::isShared() const
{
    return buffer_ && buffer_->references.load(std::memory_order_acquire) > 1;
}

} // namespace halvern
