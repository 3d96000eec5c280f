#pragma once

#include <cstdint>
#include <filesystem>
#include <set>

#include "foundation/run_control.h"

namespace marlet {

/// Lays an MP4 or QuickTime file out anew: `ftyp`, the index, padding, and all media in one
/// `mdat`, the tracks side by side in slices of time; then whatever else stood at the top level.
/// Nothing changes but chunk tables, their offsets and the padding. The other boxes come last
/// because tags can be edited in place only where nothing but padding stands beside the index.
namespace Relayout {

struct Request {
    std::filesystem::path input;
    std::filesystem::path output;
    std::uint32_t sliceMilliseconds = 500;
    std::uint32_t padding = 0;  ///< size of the `free` box behind the index; 1 to 7 make 8
    std::set<std::uint32_t> removedTracks;
    bool operator==(const Request&) const = default;
};

/// Writes the output whole or not at all. Memory: the index twice, its new tables, and some 10 MB.
/// Fails with MFError: a file that can't be laid out anew, or "phrase: system text".
void run(const Request& request, const Progress& progress = {});

}  // namespace Relayout
}  // namespace marlet
