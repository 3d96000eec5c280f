#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "foundation/run_control.h"
#include "helpers/track_request.h"

namespace marlet {

/// Builds a new film from tracks of Matroska, MP4, QuickTime, AC-3 and .srt files: `ftyp`, the
/// index, padding, and all media in one `mdat`, in slices of time. Media is copied from where it
/// lies in its file; neither it nor a list of it is kept in memory beyond the new index.
namespace BuildMovie {

struct Request {
    std::vector<TrackRequest> tracks;               ///< in the order of the result
    std::optional<std::filesystem::path> chapters;  ///< a chapter file
    std::filesystem::path scratch;  ///< a folder; what is made there is removed again
    std::filesystem::path output;
    std::uint32_t sliceMilliseconds = 500;
    std::uint32_t padding = 0;  ///< size of the `free` box behind the index; 1 to 7 make 8
    bool operator==(const Request&) const = default;
};

/// Writes the output whole or not at all. Fails with MFError in one sentence.
void run(const Request& request, const Progress& progress = {});

}  // namespace BuildMovie
}  // namespace marlet
