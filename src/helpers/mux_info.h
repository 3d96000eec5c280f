#pragma once

#include <filesystem>
#include <string>

namespace marlet::MuxInfo {

/// A short account of a file, in lines: its length, its sound layout, its tracks. Of a Matroska
/// file each track in a line like MP4Box's, "- Track 1 type: Video - Codec V_MPEG4/ISO/AVC".
std::string text(const std::filesystem::path& file);

}  // namespace marlet::MuxInfo
