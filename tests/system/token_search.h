#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace marlet::test {

/// The home of this test, with all XDG folders below it.
std::filesystem::path homeFolder();
/// The files below a folder that hold a text, in their name or in their bytes.
std::vector<std::string> filesHolding(const std::filesystem::path& folder, const std::string& text);
/// The processes below one, however deep.
std::vector<pid_t> descendantsOf(pid_t process);
/// What everybody of the same user can read of a process: its command line and its environment.
std::string publicFaceOf(pid_t process);

}  // namespace marlet::test
