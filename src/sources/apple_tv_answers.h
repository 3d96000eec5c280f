#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "sources/source.h"

namespace marlet {

/// From the answers of Apple TV's web interface to records. Pure. The service may change its shape
/// at any time: what isn't as expected counts as absent, and nothing here throws.
namespace AppleTVAnswers {

/// What the service hands to its own web client, to be sent back with every other request.
struct Key {
    std::string utsk;
    std::string pfm;
};

struct SearchResult {
    std::vector<ExtShow> shows;
    std::vector<ExtMovie> movies;
};

/// Season number to count of episodes.
using SeasonSummaries = std::map<int, int>;

/// Anywhere in the answer; nothing without a utsk.
std::optional<Key> parseKey(const nlohmann::json& answer);
/// In the order of the shelves, each title once.
SearchResult parseSearch(const nlohmann::json& answer);
/// Nothing when the answer tells of no film.
std::optional<ExtMovie> parseMovie(const nlohmann::json& answer, const std::string& id);
/// Nothing when the answer tells of no show.
std::optional<ExtShowInfo> parseShowInfo(const nlohmann::json& answer);
/// Nothing when there is no such list.
std::optional<SeasonSummaries> parseSeasonSummaries(const nlohmann::json& answer);
std::vector<ExtEpisode> parseEpisodes(const nlohmann::json& answer);

/// Where a season begins in the one long run in which the service lists a show's episodes.
std::int64_t offset(int season, const SeasonSummaries& summaries);
/// Milliseconds since 1970 as the year in UTC; nothing outside the years 1 to 9999.
std::optional<int> year(std::optional<std::int64_t> milliseconds);
/// As "yyyy-MM-dd" in UTC; empty where there is no year.
std::string isoDate(std::optional<std::int64_t> milliseconds);

}  // namespace AppleTVAnswers
}  // namespace marlet
