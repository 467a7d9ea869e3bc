#include "host/z_module.h"

#include "state/z_stream.h"

#include <cstdlib>

namespace halvern {
namespace {

std::string UserDataFolder()
{
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    std::string base;
    if (dataHome != nullptr && dataHome[0] == '/') {
        base = dataHome;
    } else if (const char* home = std::getenv("HOME"); home != nullptr && home[0] != '\0') {
        base = std::string(home) + "/.local/share";
    } else {
        return {};
    }
    return base + "/Quessane/Halvern";
}

} // namespace

ZModule::ZModule(std::string libraryPath) : libraryPath_(std::move(libraryPath)) {}

void ZModule::Initialize()
{
    userDataFolder_ = UserDataFolder();
}

void ZModule::LoadBuiltInStore(ZStream& stream)
{
    store_.clear();
    uint8_t piece[4096];
    for (;;) {
        const int32_t read = stream.Read(piece, sizeof(piece));
        store_.insert(store_.end(), piece, piece + read);
        if (read < static_cast<int32_t>(sizeof(piece)))
            break;
    }
}

} // namespace halvern
