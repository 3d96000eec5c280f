#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"

namespace marlet::catalogue {

/// The JSON of the web interface behind Apple's TV app, with what a client needs and some of what
/// it must pass over. Pictures are templates below `root`.
namespace AppleTVShapes {

using Json = nlohmann::json;

/// What the web client is told when it starts; the key lies deep in it.
Json configurations(const std::string& key);
Json search(const std::vector<const Show*>& shows, const std::vector<const Film*>& films,
            const std::string& root);
Json show(const Show& show, const std::string& root);
/// So many episodes of the one run that all seasons make, from `first` on.
Json episodes(const Show& show, std::size_t first, std::size_t count);
Json movie(const Film& film, const std::string& root);

/// "umc.cmc.film192201", "umc.cmc.show201750".
std::string idOf(const Film& film);
std::string idOf(const Show& show);

}  // namespace AppleTVShapes

/// The JSON of the iTunes Store's search.
namespace ITunesShapes {

using Json = nlohmann::json;

Json answer(const std::vector<Json>& results);
Json movie(const Film& film, const std::string& root);
Json artist(const Show& show);
Json collection(const Show& show, const Season& season, const std::string& root);
Json episode(const Show& show, const Season& season, const Episode& episode,
             const std::string& root);

std::int64_t collectionIdOf(const Show& show, const Season& season);

}  // namespace ITunesShapes
}  // namespace marlet::catalogue
