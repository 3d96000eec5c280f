#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace marlet {

/// Files and folders in, the ordered list of video files out. Never fails.
namespace Scanner {

extern const std::set<std::string> extensions;  ///< "mp4", "m4v", "mkv", "mov"
std::vector<std::filesystem::path> videoFiles(const std::vector<std::filesystem::path>& roots);
/// The extension without its dot, lower case.
std::string extensionOf(const std::filesystem::path& file);

}  // namespace Scanner
}  // namespace marlet
