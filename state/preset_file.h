#pragma once

// The user's preset files on disk: written so that no failure, crash or second writer
// can leave a half-written or lost file behind.
//
// A file is written to a temporary file of its own in the same folder, flushed to disk
// with the folder, and then renamed over the old one, keeping the old file's mode; a
// symbolic link is written through to its target. Writers of one file take an advisory
// lock on a lock file beside it (flock: it excludes threads with their own open
// descriptions as well as processes), so that a writer can read the file, change what it
// read and write it back without another writer's change coming in between.

#include "state/zml_element.h"

#include <string>

namespace halvern {

// Holds the advisory lock of the file at path while it lives; waits for another holder.
class ZPresetFileLock {
public:
    explicit ZPresetFileLock(const std::string& path);
    ~ZPresetFileLock();
    ZPresetFileLock(const ZPresetFileLock&) = delete;
    ZPresetFileLock& operator=(const ZPresetFileLock&) = delete;

private:
    int descriptor_ = -1;
};

// The file that path stands for: the target of a symbolic link, else path itself.
std::string PresetFileTarget(const std::string& path);

// Writes root as an indented "utf-8" markup document to path as described above, making
// its folder when it is missing. Throws "Could not write file ..." and leaves the old
// file and no temporary file when anything fails.
void WritePresetFile(const std::string& path, const ZMLElement& root);

// Moves a file that does not read aside, beside itself under a dated name
// ("presets.xml.damaged-20261124-153000", with "-2", "-3" ... when that is taken), so
// that nothing is ever written over it; returns the new path.
std::string KeepDamagedPresetFile(const std::string& path);

} // namespace halvern
