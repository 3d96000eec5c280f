#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace marlet::TrackHeaders {

/// Puts back what the media tool stamps or rewrites in fields of fixed size: dates and language of
/// every track (`tkhd`, `mdhd`; ISO/IEC 14496-12, 8.3.2 and 8.4.2) and its `ES_ID`. `keep` lists
/// the original's tracks that stayed, in the candidate's order. Gives at most one note for people.
std::vector<std::string> restore(const std::filesystem::path& original,
                                 const std::filesystem::path& candidate,
                                 const std::optional<std::vector<int>>& keep = std::nullopt);

}  // namespace marlet::TrackHeaders
