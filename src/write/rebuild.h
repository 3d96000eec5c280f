#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "write/candidate.h"
#include "write/write_job.h"

namespace marlet {

namespace TagWriter {

/// The media tool, looked for once per process.
std::optional<std::filesystem::path> mp4box();

/// What the media tool is asked to lay out anew.
struct Layout {
    std::filesystem::path input;
    std::filesystem::path output;
    std::filesystem::path tmp;          ///< scratch folder
    std::size_t pad = 0;                ///< bytes kept free behind the index
    int inter = 500;                    ///< length of a slice of sound, milliseconds
    std::vector<std::uint32_t> remove;  ///< track IDs to leave out
};

/// Runs the tool; it may read the input and write the folder of the output, nothing else. Throws
/// MFError "MP4Box failed (exit N): ...", CancelError, or the system's failure to launch.
void runMP4Box(const std::filesystem::path& tool, const Layout& layout, RunControl& control,
               const Progress& progress = {});

}  // namespace TagWriter

/// Lays a file out anew, its sound in short slices beside the picture.
namespace Rebuild {

inline constexpr const char* missingForFix =
    "the media tool (MP4Box) is missing from this copy of Marlet, so the Apple TV fix can't run";
inline constexpr const char* missingForTracks =
    "the media tool (MP4Box) is missing from this copy of Marlet, so tracks can't be removed";

/// Builds WriteJob::candidate from the private copy: slices of 500, 250 and 100 ms, the intended
/// tags, the original's dates and languages, the default sound track. Not proved yet. Notes join
/// the outcome's changes. Gives the sound layout in seconds.
double build(WriteJob& job, const TagTarget& target, const TrackRemoval& removal);

/// Proves the built candidate against the private copy, and its tags against the intended ones.
void prove(const WriteJob& job, const TagTarget& target, const TrackRemoval& removal);

}  // namespace Rebuild
}  // namespace marlet
