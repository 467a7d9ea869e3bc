#include "state/z_console_stream.h"

#include "core/z_exception.h"

namespace halvern {
namespace {

[[noreturn]] void readError()
{
    throw ZException("Error reading from the console.");
}

} // namespace

ZConsoleStream::~ZConsoleStream()
{
    std::fflush(output_);
}

void ZConsoleStream::put(const void* bytes, size_t count)
{
    if (count > 0 && std::fwrite(bytes, 1, count, output_) != count) {
        std::clearerr(output_);
        throw ZException("Error writing to the console.");
    }
}

void ZConsoleStream::Write(const void* bytes, int32_t count)
{
    if (count > 0)
        put(bytes, static_cast<size_t>(count));
}

int32_t ZConsoleStream::Read(void* bytes, int32_t count)
{
    if (count <= 0)
        return 0;
    // Whatever the user typed so far should be visible before waiting for input.
    std::fflush(output_);
    const size_t got = std::fread(bytes, 1, static_cast<size_t>(count), input_);
    if (got < static_cast<size_t>(count) && std::ferror(input_)) {
        std::clearerr(input_);
        readError();
    }
    return static_cast<int32_t>(got);
}

ZStream::LineStatus ZConsoleStream::ReadLine(char* buffer, int32_t capacity)
{
    if (capacity > 1)
        std::fflush(output_);
    return AssembleLine(buffer, capacity, [this] {
        const int byte = std::getc(input_);
        if (byte == EOF && std::ferror(input_)) {
            std::clearerr(input_);
            readError();
        }
        return byte == EOF ? -1 : byte;
    });
}

void ZConsoleStream::WriteString(std::string_view text)
{
    put(text.data(), text.size());
}

void ZConsoleStream::WriteLine(std::string_view text)
{
    put(text.data(), text.size());
    put("\n", 1);
    std::fflush(output_);
}

} // namespace halvern
