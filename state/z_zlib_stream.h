#pragma once

// A filter that compresses what is written to it into its target stream, or
// decompresses what it reads from its target, in the zlib format (two-byte header,
// deflate data, Adler-32 trailer). The target is not owned. Work is done in fixed
// 4096-byte pieces; after Attach no call allocates beyond zlib's own state.
//
// A compressing stream must be finished before it is detached: Detach (and a new
// Attach, which detaches first) of an unfinished compressing stream throws
// "ZLIB stream has not been terminated." after releasing the zlib state, so a writer
// that forgets Finish learns that its data are incomplete. The destructor detaches
// too, but may not throw: it reports that error through the trace sink instead.

#include "state/z_stream.h"

#include <cstdint>
#include <memory>

namespace halvern {

class ZZLibStream : public ZStream {
public:
    static constexpr int32_t kPieceSize = 4096;

    ZZLibStream();
    ZZLibStream(ZStream* target, bool compress, int quality);
    ~ZZLibStream() override;
    ZZLibStream(const ZZLibStream&) = delete;
    ZZLibStream& operator=(const ZZLibStream&) = delete;

    // Detaches any earlier target, resets the uncompressed-byte count and, for a
    // non-null target, starts compressing (at LevelForQuality(quality)) or
    // decompressing. Throws "Could not initialize deflating." / "... inflating.".
    void Attach(ZStream* target, bool compress, int quality);

    // Compresses count bytes into the target; 0 bytes write nothing.
    void Write(const void* bytes, int32_t count) override;
    // Delivers up to count decompressed bytes; fewer when the compressed data or the
    // target end. Throws "Source compressed stream has invalid content." on corrupt data.
    // Data cut short end early without an error: reachedEnd() tells them apart.
    int32_t Read(void* bytes, int32_t count) override;
    // The number of uncompressed bytes written or read since Attach.
    int64_t Position() override;
    // Both forward to the target.
    void Flush() override;
    bool IsEnd() override;

    // Releases the zlib state and forgets the target (see above for the unfinished case).
    virtual void Detach();
    // Writes the rest of the compressed data with its trailer and releases the zlib
    // state. Does nothing when no compression is in progress.
    virtual void Finish();

    // The deflate level for a quality: clamp((quality - 1) / 10, 0, 9), quality 100 -> 9.
    static int LevelForQuality(int quality);

    // True once decompression met the end of the compressed data, the Adler-32 check
    // included; false while more is expected, as after input that was cut short.
    bool reachedEnd() const;

    ZStream* target() const { return target_; }
    bool isCompressing() const { return compress_; }

private:
    struct State;

    ZStream& requireTarget();
    void deflatePieces(int flush);

    ZStream* target_ = nullptr;
    bool compress_ = false;
    int64_t count_ = 0;
    std::unique_ptr<State> state_; // zlib state and both pieces; made on first Attach
};

} // namespace halvern
