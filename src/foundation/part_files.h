#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace marlet {

/// Files in a person's folders that aren't finished: ".marlet-XXXXXXXX.part", with ".partial"
/// behind it while a copy still grows. A job notes in its own folder where it has one, so that the
/// clean-up that takes the folder of a dead job takes the file along.
namespace PartFiles {

/// A name that no other job has.
std::string newName();
/// Exactly such a name, or that of its growing copy.
bool isName(std::string_view name);

/// Before the file is begun. Never fails: without a note the file goes at the next delivery.
void note(const std::filesystem::path& jobFolder, const std::filesystem::path& part);
/// Removes what the note in the folder names, and its growing copy. What hasn't such a name, or is
/// no regular file, stays, whatever the note says. Never fails.
void removeNoted(const std::filesystem::path& jobFolder);

}  // namespace PartFiles
}  // namespace marlet
