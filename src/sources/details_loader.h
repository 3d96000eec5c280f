#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/async.h"
#include "sources/tmdb_client.h"

namespace marlet {

/// Turns a Match into a FileDraft.
namespace DetailsLoader {

/// Throws what the client throws.
Task<FileDraft> load(Match match, ScannedFile file, std::shared_ptr<TMDBClient> tmdb);
FileDraft loadExternal(const Match& match, const ManualDetails& manual);
Task<FileDraft> loadManual(Match match, ManualDetails manual, std::optional<int> season,
                           std::optional<int> episode, std::shared_ptr<TMDBClient> tmdb);
/// Fills what is empty; never replaces what is there; a failure leaves the draft as it is.
Task<FileDraft> fillBlanks(FileDraft draft, Match match, std::shared_ptr<TMDBClient> tmdb);

std::vector<ArtworkOption> options(std::vector<TMDBImage> images,
                                   std::optional<std::string> fallback, ArtworkOption::Shape shape);
std::string shorten(const std::string& text, std::size_t limit);
std::vector<std::string> unique(const std::vector<std::string>& list);
std::string combinedTitle(const std::string& a, const std::string& b);
/// Two letters; "en" when the person's languages tell none.
std::string userLanguage();

}  // namespace DetailsLoader
}  // namespace marlet
