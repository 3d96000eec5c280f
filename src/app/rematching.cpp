// A person's own choice of match.

#include <algorithm>

#include "app/app_model.h"
#include "foundation/errors.h"
#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/external_match.h"
#include "identify/lengths.h"
#include "identify/movie_resolver.h"
#include "sources/key_store.h"

namespace marlet {

namespace {

constexpr const char* unreachable = "Couldn't reach the database.";

Task<Match> showMatch(std::shared_ptr<TMDBClient> tmdb, std::int64_t showID, int season,
                      int episode) {
    if (!tmdb) throw TMDBError::noKey();
    auto fetchingShow = tmdb->show(showID);
    const TMDBShow show = co_await fetchingShow;
    auto fetchingSeason = tmdb->season(season, showID);
    const TMDBSeason found = co_await fetchingSeason;
    const auto chosen =
        std::find_if(found.episodes.begin(), found.episodes.end(),
                     [&](const TMDBEpisode& each) { return each.episode_number == episode; });
    if (chosen == found.episodes.end()) throw TMDBError::badResponse();
    Match match;
    match.tmdbID = showID;
    match.kind = MediaKind::tv;
    match.title = show.name;
    match.year = show.year();
    match.season = season;
    match.episode = episode;
    match.episodeTitle = chosen->name;
    match.runtimeMinutes = chosen->runtime;
    match.posterPath = found.poster_path ? found.poster_path : show.poster_path;
    co_return match;
}

Task<Match> movieMatch(std::shared_ptr<TMDBClient> tmdb, std::int64_t movieID) {
    if (!tmdb) throw TMDBError::noKey();
    auto fetching = tmdb->movie(movieID);
    const TMDBMovie movie = co_await fetching;
    co_return MovieResolver::matchOf(movie);
}

Task<Match> sourceEpisode(ExternalSource* via, ExtShow show, int season, int episode) {
    auto fetchingInfo = via->showInfo(show, {});
    const ExtShowInfo info = co_await fetchingInfo;
    auto fetchingEpisodes = via->episodes(season, show, {});
    const std::vector<ExtEpisode> all = co_await fetchingEpisodes;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const ExtEpisode& each) { return each.number == episode; });
    if (found == all.end()) throw MFError("no such episode");
    ExtEpisode chosen = *found;
    chosen.season = season;
    co_return ExternalMatch::ofEpisode(show, info, chosen, via->id());
}

Task<Match> sourceFilm(ExternalSource* via, ExtMovie movie) {
    auto fetching = via->movieDetails(movie, {});
    const ExtMovie full = co_await fetching;
    co_return ExternalMatch::ofFilm(full, via->id());
}

/// The edition that a name tells, for a file that runs longer than the film it is.
std::optional<std::string> cutOf(const ScannedFile& file, const Match& match) {
    const auto minutes = Lengths::minutes(file);
    if (match.kind != MediaKind::movie || !minutes || !match.runtimeMinutes) return std::nullopt;
    const bool isLonger = *minutes > *match.runtimeMinutes;
    if (!isLonger || Lengths::fits(minutes, match.runtimeMinutes, Lengths::film) != false)
        return std::nullopt;
    return Matcher::cutHint(file.url.filename().string());
}

/// What the file is taken to be now, for its place among the items: nothing of the old reading.
Guess guessOf(const Match& match) {
    Guess guess;
    guess.kind = match.kind;
    guess.title = match.title;
    guess.year = match.year;
    guess.season = match.season;
    guess.episode = match.episode;
    guess.episodeTitle = match.episodeTitle;
    return guess;
}

}  // namespace

void AppModel::replace(const Path& file, ResolvedFile resolved) {
    const LibraryItem* old = review_.itemOf(file);
    if (old == nullptr) return;
    const bool wasSelected = reviewID == old->id;
    review_.confirm(file);
    review_.replace({std::move(resolved)});
    drafts_.forget(file);
    plans_.forget(file);
    plans_.analyse(file);
    if (wasSelected) {
        reviewID = review_.itemOf(file)->id;
        if (inspectorFile) inspectorFile = file;
    }
    changed();
}

void AppModel::choose(const Path& file, Match match) {
    const ResolvedFile* old = review_.find(file);
    if (old == nullptr) return;
    ResolvedFile resolved;
    resolved.file = old->file;
    resolved.guess = guessOf(match);
    resolved.verdict = Verdict::certain();
    resolved.match = std::move(match);
    resolved.match->cut = cutOf(resolved.file, *resolved.match);
    replace(file, std::move(resolved));
}

Task<> AppModel::chooseFrom(Path file, Task<Match> fetching) {
    try {
        auto waiting = Asking::orCancelled(std::move(fetching), life_);
        Match match = co_await waiting;
        choose(file, std::move(match));
    } catch (const CancelError&) {
        throw;  // the model is gone
    } catch (const std::exception&) {
        say(unreachable);
    }
}

Task<> AppModel::rematchShow(Path file, std::int64_t showID, int season, int episode) {
    return chooseFrom(std::move(file),
                      showMatch(TMDBClient::make(KeyStore::builtIn()), showID, season, episode));
}

Task<> AppModel::rematchMovie(Path file, std::int64_t movieID) {
    return chooseFrom(std::move(file), movieMatch(TMDBClient::make(KeyStore::builtIn()), movieID));
}

Task<> AppModel::rematchExternal(Path file, ExternalSource* via, ExtShow show, int season,
                                 int episode) {
    return chooseFrom(std::move(file), sourceEpisode(via, std::move(show), season, episode));
}

Task<> AppModel::rematchExternal(Path file, ExternalSource* via, ExtMovie movie) {
    return chooseFrom(std::move(file), sourceFilm(via, std::move(movie)));
}

void AppModel::manualTag(const Path& file, const HandTag& typed) {
    Match match;
    match.tmdbID = typed.tmdbID;
    match.kind = typed.kind;
    match.year = typed.year;
    match.posterPath = typed.posterPath;
    match.title = typed.details.title;
    if (typed.kind == MediaKind::tv) {
        match.title = typed.show;
        match.season = typed.season;
        match.episode = typed.episode;
        match.episodeTitle = typed.details.title;
        // Two shows that no database knows are two rows, each with its seasons.
        if (match.tmdbID == 0)
            match.tmdbID =
                ExtShow{.source = SourceID::tmdb, .id = "hand:" + TitleMatch::normalise(typed.show)}
                    .pseudoID();
    }
    match.manual = typed.details;
    match.manual->source.reset();
    choose(file, std::move(match));
}

}  // namespace marlet
