#pragma once

// Streams for the stream tests: a forward-only source with only the primitive Read (the
// ZStream defaults do the rest), and a memory stream that records its Write and Read sizes.

#include "core/z_exception.h"
#include "state/z_memory_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace halvern::test {

class ForwardOnlyStream : public ZStream {
public:
    explicit ForwardOnlyStream(std::string bytes) : bytes_(std::move(bytes)) {}

    int32_t Read(void* buffer, int32_t count) override
    {
        ++reads;
        const auto n = std::min<size_t>(static_cast<size_t>(count), bytes_.size() - position_);
        std::memcpy(buffer, bytes_.data() + position_, n);
        position_ += n;
        return static_cast<int32_t>(n);
    }
    int64_t Position() override { return static_cast<int64_t>(position_); }
    int64_t Size() override { return static_cast<int64_t>(bytes_.size()); }

    int reads = 0;

private:
    std::string bytes_;
    size_t position_ = 0;
};

class RecordingStream : public ZMemoryStream {
public:
    using ZMemoryStream::ZMemoryStream;

    void Write(const void* bytes, int32_t count) override
    {
        writes.push_back(count);
        ZMemoryStream::Write(bytes, count);
    }
    int32_t Read(void* bytes, int32_t count) override
    {
        reads.push_back(count);
        return ZMemoryStream::Read(bytes, count);
    }

    std::vector<int32_t> writes;
    std::vector<int32_t> reads;
};

inline ZMemoryStream memoryOf(std::string_view bytes)
{
    return ZMemoryStream(bytes.data(), static_cast<int32_t>(bytes.size()));
}

inline std::string contentOf(const ZMemoryStream& stream)
{
    return std::string(reinterpret_cast<const char*>(stream.data()), static_cast<size_t>(stream.size()));
}

// The message of the ZException that action throws; fails the test when none is thrown.
template <class Action>
std::string messageOf(Action&& action)
{
    try {
        action();
    } catch (const ZException& error) {
        return error.message();
    }
    ADD_FAILURE() << "no ZException thrown";
    return {};
}

} // namespace halvern::test
