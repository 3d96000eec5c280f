#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/picture_list.h"

namespace marlet::catalogue {

/// The JSON of version 3 of the service, with the keys that a client may rely on and the ones
/// around them that it must pass over.
namespace Shapes {

using Json = nlohmann::json;

/// Which pictures an answer lists: those in these languages, "" standing for none. Absent: all.
using Languages = std::optional<std::set<std::string>>;

Json hit(const Film& film);
Json hit(const Show& show);
/// One page of a search, in the order given.
Json page(const std::vector<Json>& hits, int number);

Json details(const Film& film);
Json details(const Show& show);
Json season(const Show& show, const Season& season);
Json episode(const Show& show, const Season& season, const Episode& episode);

Json credits(const Film& film);
Json credits(const Show& show, const Episode& episode);
Json releaseDates(const Film& film);
Json contentRatings(const Show& show);

Json images(const Film& film, const Languages& languages);
Json images(const Show& show, const Languages& languages);
Json images(const Show& show, const Season& season, const Languages& languages);
Json images(const Show& show, const Season& season, const Episode& episode,
            const Languages& languages);

}  // namespace Shapes
}  // namespace marlet::catalogue
