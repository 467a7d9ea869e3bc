#include "state/z_zlib_stream.h"

#include "core/trace.h"
#include "core/z_exception.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace halvern {

struct ZZLibStream::State {
    z_stream zlib{};
    bool active = false; // deflateInit_ or inflateInit_ succeeded and no End yet
    bool ended = false;  // inflate reached the end of the compressed data
    Bytef input[kPieceSize];
    Bytef output[kPieceSize];
};

namespace {

// The version zlib is asked to be compatible with; zlib checks only its major digit.
constexpr const char* kZLibVersion = "1.2.3";

[[noreturn]] void invalidContent()
{
    throw ZException("Source compressed stream has invalid content.");
}

} // namespace

ZZLibStream::ZZLibStream() = default;

ZZLibStream::ZZLibStream(ZStream* target, bool compress, int quality)
{
    Attach(target, compress, quality);
}

ZZLibStream::~ZZLibStream()
{
    try {
        Detach();
    } catch (const std::exception& error) {
        Trace(error.what(), "ZZLibStream::~ZZLibStream");
    }
}

int ZZLibStream::LevelForQuality(int quality)
{
    // Integer division truncates toward zero, so qualities -9 .. 10 all give level 0.
    return std::clamp((quality - 1) / 10, 0, 9);
}

void ZZLibStream::Attach(ZStream* target, bool compress, int quality)
{
    Detach();
    count_ = 0;
    compress_ = compress;
    if (state_)
        state_->ended = false;
    if (!target)
        return;
    if (!state_)
        state_ = std::make_unique<State>();
    State& state = *state_;
    state.zlib = z_stream{};
    if (compress) {
        if (deflateInit_(&state.zlib, LevelForQuality(quality), kZLibVersion, sizeof(z_stream)) != Z_OK)
            throw ZException("Could not initialize deflating.");
    } else {
        state.zlib.next_in = state.input;
        state.zlib.avail_in = 0;
        if (inflateInit_(&state.zlib, kZLibVersion, sizeof(z_stream)) != Z_OK)
            throw ZException("Could not initialize inflating.");
    }
    state.active = true;
    target_ = target;
}

void ZZLibStream::Detach()
{
    if (!target_)
        return;
    target_ = nullptr;
    if (!state_ || !state_->active)
        return;
    state_->active = false;
    if (compress_) {
        deflateEnd(&state_->zlib);
        throw ZException("ZLIB stream has not been terminated.");
    }
    inflateEnd(&state_->zlib);
}

// Deflates in pieces of kPieceSize, writing each to the target, until deflate leaves
// output space free: with Z_NO_FLUSH it has then taken all the input, with Z_FINISH it
// has written the end of the stream.
void ZZLibStream::deflatePieces(int flush)
{
    State& state = *state_;
    do {
        state.zlib.next_out = state.output;
        state.zlib.avail_out = kPieceSize;
        if (deflate(&state.zlib, flush) == Z_STREAM_ERROR)
            break;
        const int32_t produced = kPieceSize - static_cast<int32_t>(state.zlib.avail_out);
        if (produced > 0)
            target_->Write(state.output, produced);
    } while (state.zlib.avail_out == 0);
}

void ZZLibStream::Finish()
{
    if (!target_ || !compress_ || !state_ || !state_->active)
        return;
    State& state = *state_;
    state.zlib.next_in = nullptr;
    state.zlib.avail_in = 0;
    deflatePieces(Z_FINISH);
    deflateEnd(&state.zlib);
    state.active = false;
}

void ZZLibStream::Write(const void* bytes, int32_t count)
{
    if (count <= 0)
        return;
    requireTarget();
    if (!compress_)
        return ZStream::Write(bytes, count);
    if (!state_->active)
        throw ZException("ZLIB stream has already been finished.");
    State& state = *state_;
    state.zlib.next_in = static_cast<Bytef*>(const_cast<void*>(bytes));
    state.zlib.avail_in = static_cast<uInt>(count);
    deflatePieces(Z_NO_FLUSH);
    state.zlib.next_in = nullptr;
    count_ += count;
}

int32_t ZZLibStream::Read(void* bytes, int32_t count)
{
    if (count <= 0)
        return 0;
    requireTarget();
    if (compress_)
        return ZStream::Read(bytes, count);
    State& state = *state_;
    if (state.ended)
        return 0;
    state.zlib.next_out = static_cast<Bytef*>(bytes);
    state.zlib.avail_out = static_cast<uInt>(count);
    while (state.zlib.avail_out > 0) {
        if (state.zlib.avail_in == 0) {
            const int32_t got = target_->Read(state.input, kPieceSize);
            if (got <= 0)
                break; // the target is exhausted: the data end here, complete or not
            state.zlib.next_in = state.input;
            state.zlib.avail_in = static_cast<uInt>(got);
        }
        const int result = inflate(&state.zlib, Z_SYNC_FLUSH);
        if (result == Z_STREAM_END) {
            state.ended = true;
            break;
        }
        if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        // Z_BUF_ERROR only means no progress was possible: with input left over and
        // output space free that cannot happen on sound data.
        if (result != Z_OK && !(result == Z_BUF_ERROR && state.zlib.avail_in == 0))
            invalidContent();
    }
    const int32_t delivered = count - static_cast<int32_t>(state.zlib.avail_out);
    state.zlib.next_out = nullptr;
    state.zlib.avail_out = 0;
    count_ += delivered;
    return delivered;
}

bool ZZLibStream::reachedEnd() const
{
    return state_ && !compress_ && state_->ended;
}

int64_t ZZLibStream::Position() { return count_; }
void ZZLibStream::Flush() { requireTarget().Flush(); }
bool ZZLibStream::IsEnd() { return requireTarget().IsEnd(); }

ZStream& ZZLibStream::requireTarget()
{
    if (!target_)
        throw ZException("ZLIB stream is not attached.");
    return *target_;
}

} // namespace halvern
