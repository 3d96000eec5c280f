#pragma once

#include <filesystem>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// Steps that last through a loss of power: what is named here is on the medium when the call
/// returns. Failures are MFError "phrase: system text".
namespace Durable {

/// Creates the folder with its missing parents (mode 0700) and flushes each parent that got a
/// new name.
void makeFolders(const std::filesystem::path& folder);
/// Temporary name beside it, write, flush, rename, flush the folder.
void writeFile(const std::filesystem::path& file, ByteView content);
void flushFile(const std::filesystem::path& file);
void flushFolder(const std::filesystem::path& folder);
/// Renames and flushes the folder(s).
void rename(const std::filesystem::path& from, const std::filesystem::path& to);
/// The same with the caller's own phrase for every failure.
void rename(const std::filesystem::path& from, const std::filesystem::path& to,
            const std::string& phrase);
/// Removes the file and flushes its folder. A file that is not there is no failure.
void remove(const std::filesystem::path& file);

}  // namespace Durable
}  // namespace marlet
