#include "state/z_buffering_stream.h"

#include "core/trace.h"
#include "core/z_exception.h"

#include <algorithm>
#include <cstring>

namespace halvern {

ZBufferingStream::ZBufferingStream(ZStream* target, int32_t blockSize)
{
    Attach(target, blockSize);
}

ZBufferingStream::~ZBufferingStream()
{
    try {
        if (target_)
            WriteBuffered();
    } catch (const std::exception& error) {
        Trace(error.what(), "ZBufferingStream::~ZBufferingStream");
    }
}

void ZBufferingStream::Attach(ZStream* target, int32_t blockSize)
{
    if (target_)
        WriteBuffered();
    target_ = target;
    writing_ = true;
    start_ = 0;
    end_ = 0;
    buffer_.resize(static_cast<size_t>(std::max(blockSize, 1)));
}

ZStream& ZBufferingStream::requireTarget()
{
    if (!target_)
        throw ZException("Buffering stream has not been initialized.");
    return *target_;
}

void ZBufferingStream::WriteBuffered()
{
    ZStream& target = requireTarget();
    if (!writing_ || end_ == 0)
        return;
    // Forget the bytes first: when the target fails they are not written twice.
    const int32_t pending = end_;
    end_ = 0;
    target.Write(buffer_.data(), pending);
}

void ZBufferingStream::Write(const void* bytes, int32_t count)
{
    ZStream& target = requireTarget();
    if (count <= 0)
        return;
    if (!writing_) {
        if (start_ < end_)
            throw ZException("Buffering stream cannot write while read-ahead bytes are unread.");
        writing_ = true;
        start_ = end_ = 0;
    }
    const auto blockSize = static_cast<int32_t>(buffer_.size());
    const auto* source = static_cast<const uint8_t*>(bytes);
    // Top up the block in progress; a full block goes out at once.
    if (end_ > 0 || count < blockSize) {
        const int32_t n = std::min(count, blockSize - end_);
        std::memcpy(buffer_.data() + end_, source, static_cast<size_t>(n));
        end_ += n;
        source += n;
        count -= n;
        if (end_ == blockSize)
            WriteBuffered();
    }
    // The block is empty now: a whole block or more goes straight to the target.
    if (count >= blockSize) {
        target.Write(source, count);
    } else if (count > 0) {
        std::memcpy(buffer_.data(), source, static_cast<size_t>(count));
        end_ = count;
    }
}

int32_t ZBufferingStream::Read(void* bytes, int32_t count)
{
    ZStream& target = requireTarget();
    if (count <= 0)
        return 0;
    if (writing_) {
        WriteBuffered();
        writing_ = false;
        start_ = end_ = 0;
    }
    auto* destination = static_cast<uint8_t*>(bytes);
    const auto blockSize = static_cast<int32_t>(buffer_.size());
    int32_t delivered = 0;
    while (delivered < count) {
        if (start_ == end_) {
            const int32_t wanted = count - delivered;
            if (wanted >= blockSize) {
                // Nothing to gain from the buffer: read straight into the caller's.
                delivered += std::max(target.Read(destination + delivered, wanted), 0);
                break;
            }
            start_ = 0;
            end_ = std::max(target.Read(buffer_.data(), blockSize), 0);
            if (end_ == 0)
                break;
        }
        const int32_t n = std::min(end_ - start_, count - delivered);
        std::memcpy(destination + delivered, buffer_.data() + start_, static_cast<size_t>(n));
        start_ += n;
        delivered += n;
        if (end_ < blockSize && start_ == end_)
            break; // the target came back short: its data end here
    }
    return delivered;
}

} // namespace halvern
