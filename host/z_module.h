#pragma once

// The per-library object that every plug-in instance of the library shares: where the
// library lies, its name, the folder for the user's own data, and the data blocks built
// into the library.

#include "core/z_object.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace halvern {

class ZStream;

class ZModule : public ZObject {
public:
    // libraryPath: the file the library was loaded from (empty when unknown).
    explicit ZModule(std::string libraryPath);

    // Finds the module's folders; the user data folder is
    // ${XDG_DATA_HOME:-$HOME/.local/share}/Quessane/Halvern.
    void Initialize();

    const std::string& libraryPath() const { return libraryPath_; }
    const std::string& name() const { return name_; }
    void SetName(std::string name) { name_ = std::move(name); }
    const std::string& userDataFolder() const { return userDataFolder_; }

    // The first built-in block, read into the module's store.
    void LoadBuiltInStore(ZStream& stream);
    const std::vector<uint8_t>& builtInStore() const { return store_; }
    // The second built-in block, kept where it lies in the library.
    void SetBuiltInResource(std::span<const uint8_t> resource) { resource_ = resource; }
    std::span<const uint8_t> builtInResource() const { return resource_; }

private:
    std::string libraryPath_;
    std::string name_;
    std::string userDataFolder_;
    std::vector<uint8_t> store_;
    std::span<const uint8_t> resource_;
};

} // namespace halvern
