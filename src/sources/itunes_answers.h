#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "sources/source.h"

namespace marlet {

/// From the `results` of the iTunes Store's search to records. Pure: what isn't as expected counts
/// as absent, and nothing here throws.
namespace ITunesAnswers {

/// The first result of each artist, in the order of the results.
std::vector<ExtShow> shows(const nlohmann::json& results);
std::vector<ExtMovie> movies(const nlohmann::json& results);
std::vector<ExtEpisode> episodes(const nlohmann::json& results, int season);
/// Season number to collection id.
std::map<int, std::int64_t> seasonCollections(const nlohmann::json& results);
/// What the collections of a show tell about it.
ExtShowInfo showInfo(const nlohmann::json& results, const ExtShow& show);

/// "The Simpsons, Season 37" is 37; a collection that names no season is none.
std::optional<int> seasonNumber(const std::string& name);
/// The address of an item's picture in a square of that size.
std::optional<std::string> art(const nlohmann::json& item, int size);

}  // namespace ITunesAnswers
}  // namespace marlet
