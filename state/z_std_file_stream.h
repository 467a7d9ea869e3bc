#pragma once

// A stream over a file, through the C library's buffered FILE. A file is opened for
// reading, for writing (created or truncated) or for appending (created when missing,
// every Write goes to the end). Operations that the open mode does not allow throw the
// not-implemented error of the ZStream defaults; any operation without an open file
// throws "File stream is not initialized.".

#include "state/z_stream.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace halvern {

class ZStdFileStream : public ZStream {
public:
    enum class Mode { Read, Write, Append };

    ZStdFileStream() = default;
    // Opens at once; see Open.
    ZStdFileStream(std::string_view fileName, Mode mode);
    // Closes the file; a failure to write the last buffered bytes goes to the trace sink.
    ~ZStdFileStream() override;
    ZStdFileStream(const ZStdFileStream&) = delete;
    ZStdFileStream& operator=(const ZStdFileStream&) = delete;

    // Closes any open file first. Throws "Could not open file \"name\"." on failure.
    void Open(std::string_view fileName, Mode mode);

    void Write(const void* bytes, int32_t count) override;
    int32_t Read(void* bytes, int32_t count) override;
    // A file may be positioned past its end (a later Write fills the gap with zeros);
    // a position before the start throws.
    void Seek(int64_t offset, int origin) override;
    int64_t Position() override;
    // Hands the buffered bytes to the operating system.
    void Flush() override;
    bool IsEnd() override;
    // Cuts the file off at the current position.
    void Truncate() override;
    int64_t Size() override;
    bool IsInitialized() override;
    // Writes out buffered bytes and closes the file; does nothing when none is open.
    // Throws the write error when the buffered bytes could not be written (the file is
    // closed all the same).
    virtual void Close();

    const std::string& fileName() const { return fileName_; }
    Mode mode() const { return mode_; }

private:
    std::FILE* requireFile();
    [[noreturn]] void throwWriteError();
    [[noreturn]] void throwReadError();

    std::FILE* file_ = nullptr;
    std::string fileName_;
    Mode mode_ = Mode::Read;
};

} // namespace halvern
