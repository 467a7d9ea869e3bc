#include "state/preset_file.h"

#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/z_memory_stream.h"
#include "state/zml_writer.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace halvern {
namespace {

[[noreturn]] void cannotWrite(const std::string& path)
{
    throw ZException(ZFormat("Could not write file \"{0}\".").arg(path).text());
}

// Writes every byte, however many calls it takes.
bool writeAll(int descriptor, const uint8_t* bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// A new file with a name no other writer picks, in folder; the mode follows the umask
// like any new file's.
int createTemporary(const std::filesystem::path& folder, const std::string& stem, std::string& name)
{
    std::random_device seed;
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = (folder / ("." + stem + "." + std::to_string(::getpid()) + "." + std::to_string(seed()))).string();
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST)
            return descriptor;
    }
    return -1;
}

void syncFolder(const std::filesystem::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

} // namespace

ZPresetFileLock::ZPresetFileLock(const std::string& path)
{
    const std::string lockPath = PresetFileTarget(path) + ".lock";
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(lockPath).parent_path(), error);
    descriptor_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        cannotWrite(path);
    while (::flock(descriptor_, LOCK_EX) != 0)
        if (errno != EINTR) {
            ::close(descriptor_);
            cannotWrite(path);
        }
}

ZPresetFileLock::~ZPresetFileLock()
{
    ::flock(descriptor_, LOCK_UN);
    ::close(descriptor_);
}

std::string PresetFileTarget(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error))
        return path;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target.string();
}

void WritePresetFile(const std::string& path, const ZMLElement& root)
{
    const std::filesystem::path target(PresetFileTarget(path));
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    std::error_code error;
    std::filesystem::create_directories(folder, error);

    ZMemoryStream document;
    WriteZMLDocument(document, root, ZMLLayout::Indented);

    std::string temporary;
    const int descriptor = createTemporary(folder, target.filename().string(), temporary);
    if (descriptor < 0)
        cannotWrite(path);
    struct stat old {};
    const bool replacing = ::stat(target.c_str(), &old) == 0;
    bool written = writeAll(descriptor, document.data(), static_cast<size_t>(document.size()));
    written = written && (!replacing || ::fchmod(descriptor, old.st_mode & 07777) == 0);
    written = written && ::fsync(descriptor) == 0;
    written = ::close(descriptor) == 0 && written;
    if (!written || ::rename(temporary.c_str(), target.c_str()) != 0) {
        ::unlink(temporary.c_str());
        cannotWrite(path);
    }
    syncFolder(folder);
}

std::string KeepDamagedPresetFile(const std::string& path)
{
    const std::string target = PresetFileTarget(path);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    const std::string dated = target + ".damaged-" + stamp;
    std::string kept = dated;
    std::error_code error;
    for (int number = 2; std::filesystem::exists(kept, error) || error; ++number) {
        if (number > 1000)
            cannotWrite(path);
        kept = dated + "-" + std::to_string(number);
    }
    if (::rename(target.c_str(), kept.c_str()) != 0)
        cannotWrite(path);
    return kept;
}

} // namespace halvern
