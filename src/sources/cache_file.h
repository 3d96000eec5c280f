#pragma once

#include <filesystem>

#include "foundation/bytes.h"

namespace marlet::CacheFile {

/// Writes the file with its folder so that a reader sees it whole or not at all. Not flushed: what
/// is lost with the power is fetched again. False when it couldn't be written; never throws.
bool write(const std::filesystem::path& file, ByteView content);
/// Whether a file of that name is one that write() left behind half done.
bool isLeftover(const std::filesystem::path& name);

}  // namespace marlet::CacheFile
