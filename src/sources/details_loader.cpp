#include "sources/details_loader.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <utility>

#include "foundation/text.h"
#include "foundation/title_match.h"
#include "sources/details_parts.h"
#include "sources/region.h"

namespace marlet::DetailsLoader {

using namespace DetailsParts;

namespace {

constexpr std::size_t mostOptions = 12;

using Client = std::shared_ptr<TMDBClient>;

/// What a show has for one of its files. The parts load side by side.
struct ShowParts {
    TMDBShowFull show;
    std::optional<TMDBEpisodeFull> episode;
    std::optional<TMDBEpisodeFull> second;  ///< of a double episode
    std::vector<TMDBImage> seasonPosters;
};

/// Pictures are worth having, but no reason to go without the rest.
Task<std::vector<TMDBImage>> postersIfAny(Client tmdb, std::int64_t show,
                                          std::optional<int> season) {
    if (!season) co_return std::vector<TMDBImage>();
    try {
        Task<std::vector<TMDBImage>> asking = tmdb->seasonPosters(show, *season);
        std::vector<TMDBImage> posters = co_await asking;
        co_return posters;
    } catch (const MFError&) {
        co_return std::vector<TMDBImage>();
    }
}

Task<std::optional<TMDBEpisodeFull>> episodeIfAny(Client tmdb, std::int64_t show,
                                                  std::optional<int> season,
                                                  std::optional<int> episode) {
    if (!season || !episode) co_return std::optional<TMDBEpisodeFull>();
    Task<TMDBEpisodeFull> asking = tmdb->episodeFull(show, *season, *episode);
    std::optional<TMDBEpisodeFull> found = co_await asking;
    co_return found;
}

Task<ShowParts> loadShowParts(Client tmdb, Match match) {
    Task<TMDBShowFull> show = tmdb->showFull(match.tmdbID);
    Task<std::optional<TMDBEpisodeFull>> episode =
        episodeIfAny(tmdb, match.tmdbID, match.season, match.episode);
    Task<std::optional<TMDBEpisodeFull>> second =
        episodeIfAny(tmdb, match.tmdbID, match.season, match.episodeEnd);
    Task<std::vector<TMDBImage>> posters = postersIfAny(tmdb, match.tmdbID, match.season);
    ShowParts parts;
    parts.show = co_await show;
    parts.episode = co_await episode;
    parts.second = co_await second;
    parts.seasonPosters = co_await posters;
    co_return parts;
}

void setPeople(Details& details, std::vector<std::string> cast, Crew crew) {
    details.cast = std::move(cast);
    details.directors = std::move(crew.directors);
    details.writers = std::move(crew.writers);
}

FileDraft ended(FileDraft draft) {
    chooseFirst(draft);
    draft.original = draft.details;
    return draft;
}

FileDraft filmDraft(const TMDBMovieFull& film) {
    FileDraft draft;
    Details& details = draft.details;
    details.kind = MediaKind::movie;
    details.title = film.title;
    setDescription(details, film.overview.value_or(""));
    setPeople(details, castOf(film), crewOf(film));
    details.genre = firstGenre(film.genres);
    details.rating = film.certification().value_or("");
    details.releaseDate = film.release_date.value_or("");
    draft.wide = wideOf(film);
    draft.tall = tallOf(film);
    return ended(std::move(draft));
}

void setEpisode(Details& details, const TMDBEpisodeFull& episode,
                const std::optional<TMDBEpisodeFull>& second) {
    details.title = second ? combinedTitle(episode.name, second->name) : episode.name;
    setDescription(details, episode.overview.value_or(""));
    setPeople(details, castOf(episode), crewOf(episode));
    details.releaseDate = episode.air_date.value_or("");
}

FileDraft showDraft(const Match& match, const ShowParts& parts) {
    FileDraft draft;
    Details& details = draft.details;
    details.kind = MediaKind::tv;
    details.show = parts.show.name;
    details.season = match.season;
    details.episode = match.episode;
    details.episodeEnd = match.episodeEnd;
    if (parts.episode) setEpisode(details, *parts.episode, parts.second);
    details.genre = firstGenre(parts.show.genres);
    details.rating = parts.show.certification().value_or("");
    draft.wide = wideOf(parts.episode, parts.show);
    draft.tall = tallOf(parts.seasonPosters, parts.show);
    if (match.season) draft.seasonKey = seasonKey(match.tmdbID, *match.season);
    return ended(std::move(draft));
}

Task<FileDraft> loadFilm(Match match, Client tmdb) {
    Task<TMDBMovieFull> asking = tmdb->movieFull(match.tmdbID);
    const TMDBMovieFull film = co_await asking;
    co_return filmDraft(film);
}

Task<FileDraft> loadShow(Match match, Client tmdb) {
    Task<ShowParts> asking = loadShowParts(tmdb, match);
    const ShowParts parts = co_await asking;
    co_return showDraft(match, parts);
}

Task<FileDraft> loadFromSource(Match match, Client tmdb) {
    Task<FileDraft> filling = fillBlanks(loadExternal(match, *match.manual), match, tmdb);
    FileDraft draft = co_await filling;
    co_return draft;
}

std::vector<ArtworkOption> optionsOf(const std::vector<std::string>& addresses,
                                     ArtworkOption::Shape shape) {
    std::vector<ArtworkOption> list;
    for (const std::string& address : addresses)
        list.push_back({shape, address, std::nullopt, false});
    return list;
}

Task<std::optional<FileDraft>> loadIfAny(Match match, Client tmdb) {
    try {
        Task<FileDraft> asking =
            match.kind == MediaKind::movie ? loadFilm(match, tmdb) : loadShow(match, tmdb);
        std::optional<FileDraft> found = co_await asking;
        co_return found;
    } catch (const MFError&) {
        co_return std::optional<FileDraft>();
    }
}

/// TMDB's pictures for details typed by hand, as far as they can be had.
Task<FileDraft> pictures(Match match, Client tmdb) {
    Task<std::optional<FileDraft>> asking = loadIfAny(match, tmdb);
    std::optional<FileDraft> found = co_await asking;
    if (!found && match.episode) {
        // Episodes are typed in because TMDB lacks them; the season and the show it may have.
        match.episode.reset();
        match.episodeEnd.reset();
        Task<std::optional<FileDraft>> askingAgain = loadIfAny(match, tmdb);
        found = co_await askingAgain;
    }
    if (!found) co_return FileDraft();
    co_return std::move(*found);
}

Task<FileDraft> loadAny(Match match, Client tmdb) {
    if (match.manual && match.manual->source) return loadFromSource(match, tmdb);
    if (match.manual) return loadManual(match, *match.manual, match.season, match.episode, tmdb);
    if (!tmdb) throw TMDBError::noKey();
    return match.kind == MediaKind::movie ? loadFilm(match, tmdb) : loadShow(match, tmdb);
}

int languageRank(const TMDBImage& image, const std::string& own) {
    const std::string language = image.iso_639_1.value_or("");
    if (language.empty() || language == "xx") return 2;  // no words in the picture
    return language == own ? 0 : 1;
}

}  // namespace

Task<FileDraft> load(Match match, ScannedFile, std::shared_ptr<TMDBClient> tmdb) {
    Task<FileDraft> loading = loadAny(std::move(match), std::move(tmdb));
    FileDraft draft = co_await loading;
    co_return draft;
}

FileDraft loadExternal(const Match& match, const ManualDetails& manual) {
    FileDraft draft;
    Details& details = draft.details;
    details.kind = match.kind;
    details.title = manual.title;
    setDescription(details, manual.description);
    details.releaseDate = manual.releaseDate;
    details.cast = manual.cast;
    details.directors = manual.directors;
    details.writers = manual.writers;
    details.genre = manual.genre;
    details.rating = manual.rating;
    if (match.kind == MediaKind::tv) {
        details.show = match.title;
        details.season = match.season;
        details.episode = match.episode;
        details.episodeEnd = match.episodeEnd;
        // A show that was typed in has no number; two such must not share their pictures.
        if (match.season && match.tmdbID != 0)
            draft.seasonKey = seasonKey(match.tmdbID, *match.season);
    }
    draft.wide = optionsOf(manual.wide, ArtworkOption::Shape::wide);
    draft.tall = optionsOf(manual.tall, ArtworkOption::Shape::tall);
    return ended(std::move(draft));
}

Task<FileDraft> loadManual(Match match, ManualDetails manual, std::optional<int> season,
                           std::optional<int> episode, std::shared_ptr<TMDBClient> tmdb) {
    if (match.kind == MediaKind::tv) {
        // The end of a double episode says nothing of another one.
        if (match.season != season || match.episode != episode) match.episodeEnd.reset();
        match.season = season;
        match.episode = episode;
    }
    FileDraft draft = loadExternal(match, manual);
    const bool wanted = draft.wide.empty() || draft.tall.empty();
    // Negative numbers are those of other sources.
    if (!wanted || !tmdb || match.tmdbID <= 0) co_return draft;
    Task<FileDraft> asking = pictures(match, tmdb);
    FileDraft found = co_await asking;
    if (draft.wide.empty()) draft.wide = std::move(found.wide);
    if (draft.tall.empty()) draft.tall = std::move(found.tall);
    chooseFirst(draft);
    co_return draft;
}

std::vector<ArtworkOption> options(std::vector<TMDBImage> images,
                                   std::optional<std::string> fallback,
                                   ArtworkOption::Shape shape) {
    const std::string own = userLanguage();
    std::stable_sort(images.begin(), images.end(), [&own](const auto& a, const auto& b) {
        const int rankA = languageRank(a, own);
        const int rankB = languageRank(b, own);
        if (rankA != rankB) return rankA < rankB;
        return a.vote_average.value_or(0) > b.vote_average.value_or(0);
    });
    if (images.size() > mostOptions) images.resize(mostOptions);
    std::vector<ArtworkOption> list;
    for (const TMDBImage& image : images)
        list.push_back({shape, image.file_path, image.iso_639_1, false});
    if (list.empty() && fallback) list.push_back({shape, *fallback, std::nullopt, false});
    return list;
}

std::string shorten(const std::string& text, std::size_t limit) {
    return Text::shorten(text, limit);
}

std::vector<std::string> unique(const std::vector<std::string>& list) {
    std::set<std::string> seen;
    std::vector<std::string> result;
    for (const std::string& text : list) {
        if (seen.insert(text).second) result.push_back(text);
    }
    return result;
}

std::string combinedTitle(const std::string& a, const std::string& b) {
    const auto first = EpisodeTitles::displayStem(a);
    const auto second = EpisodeTitles::displayStem(b);
    if (first && second && Text::lower(*first) == Text::lower(*second))
        return *first + " (Parts 1 & 2)";
    return a + " / " + b;
}

std::string userLanguage() {
    const std::string language = Region::preferredLanguage();
    if (language.size() < 2) return "en";
    return Text::lower(language.substr(0, 2));
}

}  // namespace marlet::DetailsLoader
