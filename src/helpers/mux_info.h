#pragma once

#include <filesystem>
#include <string>

namespace marlet::MuxInfo {

/// A short account of a file, in lines: its length, its sound layout, its tracks.
std::string text(const std::filesystem::path& file);

}  // namespace marlet::MuxInfo
