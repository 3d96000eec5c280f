#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/tmdb_records.h"

namespace marlet {

/// The pieces that a draft is put together from; what DetailsLoader and its filling of blanks
/// share.
namespace DetailsParts {

using People = std::optional<std::vector<TMDBPerson>>;

struct Crew {
    std::vector<std::string> directors;
    std::vector<std::string> writers;
};

std::vector<std::string> castOf(const TMDBMovieFull& film);
/// The episode's own cast, then its guests.
std::vector<std::string> castOf(const TMDBEpisodeFull& episode);
Crew crewOf(const TMDBMovieFull& film);
Crew crewOf(const TMDBEpisodeFull& episode);
std::string firstGenre(const std::optional<std::vector<TMDBGenre>>& genres);

std::vector<ArtworkOption> wideOf(const TMDBMovieFull& film);
std::vector<ArtworkOption> tallOf(const TMDBMovieFull& film);
/// The episode's stills, when there is one, then the show's backdrops.
std::vector<ArtworkOption> wideOf(const std::optional<TMDBEpisodeFull>& episode,
                                  const TMDBShowFull& show);
std::vector<ArtworkOption> tallOf(const std::vector<TMDBImage>& seasonPosters,
                                  const TMDBShowFull& show);

/// Description and its short form.
void setDescription(Details& details, const std::string& text);
/// The first picture of each shape, where none is chosen yet.
void chooseFirst(FileDraft& draft);
std::string seasonKey(std::int64_t show, int season);

}  // namespace DetailsParts
}  // namespace marlet
