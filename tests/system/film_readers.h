#pragma once

#include <filesystem>
#include <string>

namespace marlet::test {

/// What FFmpeg and, where it is installed, MediaInfo have to say against a film: nothing, of a
/// good one. FFmpeg decodes picture and sound to their ends and stops at the first error.
std::string complaintsOf(const std::filesystem::path& film);

}  // namespace marlet::test
