#include "state/z_std_file_stream.h"

#include "core/trace.h"
#include "core/z_exception.h"
#include "core/z_format.h"

#include <sys/stat.h>
#include <unistd.h>

namespace halvern {

ZStdFileStream::ZStdFileStream(std::string_view fileName, Mode mode)
{
    Open(fileName, mode);
}

ZStdFileStream::~ZStdFileStream()
{
    try {
        Close();
    } catch (const std::exception& error) {
        Trace(error.what(), "ZStdFileStream::~ZStdFileStream");
    }
}

void ZStdFileStream::Open(std::string_view fileName, Mode mode)
{
    Close();
    fileName_ = std::string(fileName);
    mode_ = mode;
    // 'e' opens with close-on-exec, so a host that starts programs does not leak the file.
    const char* modeText = mode == Mode::Read ? "rbe" : mode == Mode::Write ? "wbe" : "abe";
    file_ = std::fopen(fileName_.c_str(), modeText);
    if (!file_)
        throw ZException(ZFormat("Could not open file \"{0}\".").arg(fileName_).text());
}

void ZStdFileStream::Close()
{
    if (!file_)
        return;
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0 && mode_ != Mode::Read)
        throwWriteError();
}

std::FILE* ZStdFileStream::requireFile()
{
    if (!file_)
        throw ZException("File stream is not initialized.");
    return file_;
}

void ZStdFileStream::throwWriteError()
{
    throw ZException(ZFormat("Error writing to file \"{0}\". Probably disk full.").arg(fileName_).text());
}

void ZStdFileStream::throwReadError()
{
    throw ZException(ZFormat("Error reading from file \"{0}\".").arg(fileName_).text());
}

void ZStdFileStream::Write(const void* bytes, int32_t count)
{
    std::FILE* file = requireFile();
    if (mode_ == Mode::Read)
        return ZStream::Write(bytes, count);
    if (count <= 0)
        return;
    if (std::fwrite(bytes, 1, static_cast<size_t>(count), file) != static_cast<size_t>(count)) {
        std::clearerr(file);
        throwWriteError();
    }
}

int32_t ZStdFileStream::Read(void* bytes, int32_t count)
{
    std::FILE* file = requireFile();
    if (mode_ != Mode::Read)
        return ZStream::Read(bytes, count);
    if (count <= 0)
        return 0;
    const size_t got = std::fread(bytes, 1, static_cast<size_t>(count), file);
    if (got < static_cast<size_t>(count) && std::ferror(file)) {
        std::clearerr(file);
        throwReadError();
    }
    return static_cast<int32_t>(got);
}

void ZStdFileStream::Seek(int64_t offset, int origin)
{
    std::FILE* file = requireFile();
    int whence;
    switch (origin) {
    case 0: whence = SEEK_SET; break;
    case 1: whence = SEEK_CUR; break;
    case 2: whence = SEEK_END; break;
    default: throw ZException("Invalid seek origin.");
    }
    if (fseeko(file, static_cast<off_t>(offset), whence) != 0)
        throw ZException(ZFormat("Could not seek in file \"{0}\".").arg(fileName_).text());
}

int64_t ZStdFileStream::Position()
{
    const off_t position = ftello(requireFile());
    if (position < 0)
        throw ZException(ZFormat("Could not seek in file \"{0}\".").arg(fileName_).text());
    return position;
}

void ZStdFileStream::Flush()
{
    std::FILE* file = requireFile();
    if (mode_ != Mode::Read && std::fflush(file) != 0) {
        std::clearerr(file);
        throwWriteError();
    }
}

bool ZStdFileStream::IsEnd()
{
    return Position() >= Size();
}

void ZStdFileStream::Truncate()
{
    requireFile();
    if (mode_ == Mode::Read)
        return ZStream::Truncate();
    Flush();
    if (ftruncate(fileno(file_), static_cast<off_t>(Position())) != 0)
        throwWriteError();
}

int64_t ZStdFileStream::Size()
{
    // Bytes still in the write buffer belong to the file as its user sees it.
    Flush();
    struct stat status {};
    if (fstat(fileno(file_), &status) != 0)
        throwReadError();
    return status.st_size;
}

bool ZStdFileStream::IsInitialized()
{
    return file_ != nullptr;
}

} // namespace halvern
