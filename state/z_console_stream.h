#pragma once

// The process console as a stream: Write and the string writers go to standard
// output, Read and ReadLine take standard input. Other C streams may be given instead
// (a program that keeps standard output for data can send text to standard error).
// WriteLine flushes, so that a finished line shows at once.

#include "state/z_stream.h"

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace halvern {

class ZConsoleStream : public ZStream {
public:
    ZConsoleStream() : ZConsoleStream(stdin, stdout) {}
    ZConsoleStream(std::FILE* input, std::FILE* output) : input_(input), output_(output) {}
    // Flushes the output.
    ~ZConsoleStream() override;
    ZConsoleStream(const ZConsoleStream&) = delete;
    ZConsoleStream& operator=(const ZConsoleStream&) = delete;

    // Throws "Error writing to the console." when the output refuses the bytes.
    void Write(const void* bytes, int32_t count) override;
    // Fewer bytes than asked at the end of the input; throws "Error reading from the
    // console." on a read failure.
    int32_t Read(void* bytes, int32_t count) override;
    // The ZStream line rules, taking bytes straight from the C stream.
    LineStatus ReadLine(char* buffer, int32_t capacity) override;
    void WriteString(std::string_view text) override;
    void WriteLine(std::string_view text) override;

private:
    void put(const void* bytes, size_t count);

    std::FILE* input_;
    std::FILE* output_;
};

} // namespace halvern
