#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"

namespace marlet::catalogue {

/// Loose search: an entry is found when each word of the query begins a word of one of its titles,
/// whatever the case, accents and punctuation, or when query and title are equal without blanks
/// ("doa" and "D.O.A."). Most popular first. An empty query finds nothing.
std::vector<const Film*> searchFilms(const Catalogue& catalogue, const std::string& query,
                                     std::optional<int> year);
std::vector<const Show*> searchShows(const Catalogue& catalogue, const std::string& query,
                                     std::optional<int> year);

/// The comparison form: lower case, no accents, one blank between words.
std::string folded(const std::string& text);

}  // namespace marlet::catalogue
