#pragma once

#include <filesystem>
#include <functional>

#include "foundation/syscalls.h"

namespace marlet {

/// Walking and removing the program's own folders. Symbolic links are items like others and are
/// never followed, so that no walk leaves its tree; what can't be read is passed over.
namespace FolderTree {

using Visit = std::function<void(const std::filesystem::path&, const Sys::FileStat&)>;

/// Every item below the folder, not the folder itself, in no particular order.
void forEach(const std::filesystem::path& folder, const Visit& visit);
/// Removes the folder with all that is in it, as far as that is possible.
void remove(const std::filesystem::path& folder) noexcept;

}  // namespace FolderTree
}  // namespace marlet
