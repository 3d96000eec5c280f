// DetailsLoader::fillBlanks: what a source lacked, taken from TMDB when the title is found there.

#include <cstdlib>
#include <utility>

#include "foundation/title_match.h"
#include "sources/details_loader.h"
#include "sources/details_parts.h"

namespace marlet::DetailsLoader {

using namespace DetailsParts;

namespace {

constexpr double sureTitle = 0.9;      ///< of a film
constexpr double likelyEpisode = 0.6;  ///< of an episode's title, its show's name being equal
constexpr int notFound = 404;

using Client = std::shared_ptr<TMDBClient>;

/// What TMDB has for the draft.
struct Found {
    Details details;
    std::vector<ArtworkOption> wide;
    std::vector<ArtworkOption> tall;
};

bool hasBlanks(const FileDraft& draft) {
    const Details& details = draft.details;
    return details.description.empty() || details.genre.empty() || details.rating.empty() ||
           details.cast.empty() || draft.wide.empty() || draft.tall.empty();
}

template <typename T>
void fill(T& field, const T& with) {
    if (field.empty()) field = with;
}

void fill(Details& details, const Details& with) {
    // The two descriptions belong together: a short one isn't given the long one of another text.
    if (details.description.empty() && details.longDescription.empty()) {
        details.description = with.description;
        details.longDescription = with.longDescription;
    }
    fill(details.cast, with.cast);
    fill(details.directors, with.directors);
    fill(details.writers, with.writers);
    fill(details.genre, with.genre);
    fill(details.rating, with.rating);
    fill(details.releaseDate, with.releaseDate);
}

void fill(FileDraft& draft, const Found& found) {
    fill(draft.details, found.details);
    fill(draft.original, found.details);
    fill(draft.wide, found.wide);
    fill(draft.tall, found.tall);
    chooseFirst(draft);
}

bool isThisFilm(const TMDBSearchHit& hit, const std::string& title, std::optional<int> year) {
    if (TitleMatch::score(title, hit.anyTitle()) < sureTitle) return false;
    if (!year) return true;
    const auto own = hit.year();
    return own && std::abs(*own - *year) < 2;
}

bool isThisShow(const TMDBSearchHit& hit, const std::string& show) {
    const std::string name = hit.name ? *hit.name : hit.title.value_or("");
    return TitleMatch::normalise(name) == TitleMatch::normalise(show);
}

bool isThisEpisode(const TMDBEpisodeFull& episode, const Details& details) {
    if (TitleMatch::similarity(episode.name, details.title) >= likelyEpisode) return true;
    return !details.releaseDate.empty() && episode.air_date == details.releaseDate;
}

Task<std::optional<Found>> findFilm(std::string title, std::optional<int> year, Client tmdb) {
    Task<std::vector<TMDBSearchHit>> searching = tmdb->searchMovie(title, year);
    const std::vector<TMDBSearchHit> hits = co_await searching;
    for (const TMDBSearchHit& hit : hits) {
        if (!isThisFilm(hit, title, year)) continue;
        Task<TMDBMovieFull> asking = tmdb->movieFull(hit.id);
        const TMDBMovieFull film = co_await asking;
        Found found;
        setDescription(found.details, film.overview.value_or(""));
        Crew crew = crewOf(film);
        found.details.cast = castOf(film);
        found.details.directors = std::move(crew.directors);
        found.details.writers = std::move(crew.writers);
        found.details.genre = firstGenre(film.genres);
        found.details.rating = film.certification().value_or("");
        found.details.releaseDate = film.release_date.value_or("");
        found.wide = wideOf(film);
        found.tall = tallOf(film);
        co_return found;
    }
    co_return std::optional<Found>();
}

/// Nothing when the show has no such episode.
Task<std::optional<TMDBEpisodeFull>> episodeOf(Client tmdb, std::int64_t show, int season,
                                               int episode) {
    try {
        Task<TMDBEpisodeFull> asking = tmdb->episodeFull(show, season, episode);
        std::optional<TMDBEpisodeFull> found = co_await asking;
        co_return found;
    } catch (const TMDBError& error) {
        // Another show of the same name, which has fewer seasons; the next hit may be ours.
        if (error.status() != notFound) throw;
    }
    co_return std::optional<TMDBEpisodeFull>();
}

Found foundEpisode(const TMDBEpisodeFull& episode, const TMDBShowFull& show) {
    Found found;
    setDescription(found.details, episode.overview.value_or(""));
    Crew crew = crewOf(episode);
    found.details.cast = castOf(episode);
    found.details.directors = std::move(crew.directors);
    found.details.writers = std::move(crew.writers);
    found.details.genre = firstGenre(show.genres);
    found.details.rating = show.certification().value_or("");
    found.details.releaseDate = episode.air_date.value_or("");
    found.wide = wideOf(episode, show);
    found.tall = tallOf({}, show);
    return found;
}

Task<std::optional<Found>> findEpisode(Details details, std::string name, Client tmdb) {
    Task<std::vector<TMDBSearchHit>> searching = tmdb->searchShow(name);
    const std::vector<TMDBSearchHit> hits = co_await searching;
    for (const TMDBSearchHit& hit : hits) {
        if (!isThisShow(hit, name)) continue;
        Task<std::optional<TMDBEpisodeFull>> asking =
            episodeOf(tmdb, hit.id, *details.season, *details.episode);
        const std::optional<TMDBEpisodeFull> episode = co_await asking;
        if (!episode || !isThisEpisode(*episode, details)) continue;
        Task<TMDBShowFull> askingShow = tmdb->showFull(hit.id);
        const TMDBShowFull show = co_await askingShow;
        co_return foundEpisode(*episode, show);
    }
    co_return std::optional<Found>();
}

Task<std::optional<Found>> find(Details details, Match match, Client tmdb) {
    if (details.kind == MediaKind::movie) {
        std::string title = details.title.empty() ? match.title : details.title;
        Task<std::optional<Found>> searching = findFilm(std::move(title), match.year, tmdb);
        std::optional<Found> found = co_await searching;
        co_return found;
    }
    if (!details.season || !details.episode) co_return std::optional<Found>();
    std::string show = details.show.empty() ? match.title : details.show;
    Task<std::optional<Found>> searching = findEpisode(details, std::move(show), tmdb);
    std::optional<Found> found = co_await searching;
    co_return found;
}

}  // namespace

Task<FileDraft> fillBlanks(FileDraft draft, Match match, std::shared_ptr<TMDBClient> tmdb) {
    if (!tmdb || !hasBlanks(draft)) co_return draft;
    try {
        Task<std::optional<Found>> finding = find(draft.details, match, tmdb);
        const std::optional<Found> found = co_await finding;
        if (found) fill(draft, *found);
    } catch (const MFError&) {
        // What the source gave stands by itself.
    }
    co_return draft;
}

}  // namespace marlet::DetailsLoader
