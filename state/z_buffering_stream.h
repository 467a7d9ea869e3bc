#pragma once

// A filter that gathers small Writes into blocks before passing them to its target,
// and reads its target a block at a time. The target is not owned. Writes larger than
// a block go to the target directly once the pending bytes are out.
//
// One direction at a time: a Read first writes out the pending bytes; a Write while
// read-ahead bytes are still unread throws, because the target has already moved past
// them. WriteBuffered() (the stream's own further operation) writes the pending bytes
// to the target without flushing the target itself; the destructor does the same and
// reports a failure through the trace sink, since it may not throw.

#include "state/z_stream.h"

#include <cstdint>
#include <vector>

namespace halvern {

class ZBufferingStream : public ZStream {
public:
    static constexpr int32_t kDefaultBlockSize = 4096;

    ZBufferingStream() = default;
    explicit ZBufferingStream(ZStream* target, int32_t blockSize = kDefaultBlockSize);
    ~ZBufferingStream() override;
    ZBufferingStream(const ZBufferingStream&) = delete;
    ZBufferingStream& operator=(const ZBufferingStream&) = delete;

    // Writes the bytes pending for the earlier target, drops any read-ahead, then
    // takes the new target (nullptr leaves the stream uninitialised). The block buffer
    // is allocated here, not per call.
    void Attach(ZStream* target, int32_t blockSize = kDefaultBlockSize);
    ZStream* target() const { return target_; }

    void Write(const void* bytes, int32_t count) override;
    int32_t Read(void* bytes, int32_t count) override;
    virtual void WriteBuffered();

    // Bytes written but not yet passed on; bytes read ahead but not yet delivered.
    int32_t pendingWrite() const { return writing_ ? end_ : 0; }
    int32_t readAhead() const { return writing_ ? 0 : end_ - start_; }

private:
    ZStream& requireTarget();

    ZStream* target_ = nullptr;
    std::vector<uint8_t> buffer_;
    // Writing: buffer_[0, end_) waits for the target. Reading: buffer_[start_, end_)
    // came from the target and was not yet delivered.
    bool writing_ = true;
    int32_t start_ = 0;
    int32_t end_ = 0;
};

} // namespace halvern
