#pragma once

#include <filesystem>

#include "foundation/syscalls.h"

namespace marlet::WorkArea {

// What only the files of the work area share.

std::filesystem::path workLockFile(const std::filesystem::path& folder);

/// A lock file that is locked before it gets its name: another program that cleans up never sees
/// it in between and takes the job for ended. Not open when it can't be made.
FileHandle makeWorkLock(const std::filesystem::path& folder);

/// Counts the folder among those that this process claims.
void markActive(const std::filesystem::path& folder);

}  // namespace marlet::WorkArea
