// A person's own choice of match, and asking the sources again.

#include <algorithm>

#include "app/app_model.h"
#include "foundation/work_area.h"
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
    Match match;
    match.tmdbID = showID;
    match.kind = MediaKind::tv;
    match.title = show.name;
    match.year = show.year();
    match.season = season;
    match.episode = episode;
    match.posterPath = found.poster_path ? found.poster_path : show.poster_path;
    for (const TMDBEpisode& each : found.episodes)
        if (each.episode_number == episode) {
            match.episodeTitle = each.name;
            match.runtimeMinutes = each.runtime;
        }
    co_return match;
}

Task<Match> movieMatch(std::shared_ptr<TMDBClient> tmdb, std::int64_t movieID) {
    if (!tmdb) throw TMDBError::noKey();
    auto fetching = tmdb->movie(movieID);
    const TMDBMovie movie = co_await fetching;
    Match match;
    match.tmdbID = movie.id;
    match.title = movie.title;
    match.year = movie.year();
    match.runtimeMinutes = movie.runtime;
    match.posterPath = movie.poster_path;
    co_return match;
}

std::optional<std::string> firstOf(const std::vector<std::string>& list,
                                   const std::optional<std::string>& otherwise) {
    if (!list.empty()) return Matcher::thumbnail(list.front());
    return otherwise;
}

Match movieFrom(const ExtMovie& movie) {
    Match match;
    match.tmdbID = movie.pseudoID();
    match.title = movie.title;
    match.year = movie.year;
    match.runtimeMinutes = movie.minutes;
    match.posterPath = firstOf(movie.tall, movie.poster);
    match.manual = ManualDetails{.title = movie.title,
                                 .description = movie.overview,
                                 .releaseDate = movie.date,
                                 .cast = movie.cast,
                                 .directors = movie.directors,
                                 .writers = {},
                                 .source = movie.source,
                                 .genre = movie.genre,
                                 .rating = movie.rating,
                                 .wide = movie.wide,
                                 .tall = movie.tall};
    return match;
}

Match episodeFrom(const ExtShow& show, const ExtShowInfo& info, const ExtEpisode& episode) {
    const auto seasonArt = info.seasonTall.find(episode.season);
    const std::vector<std::string>& tall =
        seasonArt == info.seasonTall.end() ? info.tall : seasonArt->second;
    Match match;
    match.tmdbID = show.pseudoID();
    match.kind = MediaKind::tv;
    match.title = show.title;
    match.year = show.year;
    match.season = episode.season;
    match.episode = episode.number;
    match.episodeTitle = episode.title.empty() ? show.title : episode.title;
    match.runtimeMinutes = episode.minutes;
    match.posterPath = firstOf(tall, show.poster);
    match.manual =
        ManualDetails{.title = *match.episodeTitle,
                      .description = episode.overview.empty() ? info.overview : episode.overview,
                      .releaseDate = episode.date.empty() ? info.date : episode.date,
                      .cast = info.cast,
                      .directors = {},
                      .writers = {},
                      .source = show.source,
                      .genre = info.genre,
                      .rating = info.rating,
                      .wide = info.wide,
                      .tall = tall};
    return match;
}

}  // namespace

void AppModel::replace(const Path& file, ResolvedFile resolved) {
    const bool wasSelected = reviewID && review_.itemOf(file) == review_.item(*reviewID);
    if (!review_.replace(file, resolved)) return;
    plans_.forget(file);
    drafts_.forget(file);
    review_.confirm(file);
    if (wasSelected) reviewID = review_.itemOf(file)->id;
    changed();
}

void AppModel::choose(const Path& file, Match match) {
    const ResolvedFile* old = review_.find(file);
    if (old == nullptr) return;
    ResolvedFile resolved = *old;
    resolved.match = std::move(match);
    resolved.verdict = Verdict::certain();
    resolved.ambiguous = false;
    // An item is keyed by its guess's kind and season: the choice overrules what the name said.
    Guess guess = resolved.guess.value_or(Guess{});
    guess.kind = resolved.match->kind;
    guess.title = resolved.match->title;
    guess.season = resolved.match->season;
    guess.episode = resolved.match->episode;
    resolved.guess = guess;
    replace(file, std::move(resolved));
}

Task<> AppModel::rematchShow(Path file, std::int64_t showID, int season, int episode) {
    try {
        auto fetching = showMatch(TMDBClient::make(KeyStore::builtIn()), showID, season, episode);
        Match match = co_await fetching;
        choose(file, std::move(match));
    } catch (const std::exception&) {
        say(unreachable);
    }
}

Task<> AppModel::rematchMovie(Path file, std::int64_t movieID) {
    try {
        auto fetching = movieMatch(TMDBClient::make(KeyStore::builtIn()), movieID);
        Match match = co_await fetching;
        match.cut = Matcher::cutHint(file.filename().string());
        choose(file, std::move(match));
    } catch (const std::exception&) {
        say(unreachable);
    }
}

Task<> AppModel::rematchExternal(Path file, ExternalSource* via, ExtShow show, int season,
                                 int episode) {
    try {
        auto fetchingInfo = via->showInfo(show);
        const ExtShowInfo info = co_await fetchingInfo;
        auto fetchingEpisodes = via->episodes(season, show);
        const std::vector<ExtEpisode> all = co_await fetchingEpisodes;
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const ExtEpisode& each) { return each.number == episode; });
        ExtEpisode chosen;
        if (found != all.end()) chosen = *found;
        chosen.season = season;
        chosen.number = episode;
        choose(file, episodeFrom(show, info, chosen));
    } catch (const std::exception&) {
        say(unreachable);
    }
}

Task<> AppModel::rematchExternal(Path file, ExternalSource* via, ExtMovie movie) {
    try {
        auto fetching = via->movieDetails(movie);
        const ExtMovie full = co_await fetching;
        choose(file, movieFrom(full));
    } catch (const std::exception&) {
        say(unreachable);
    }
}

void AppModel::manualTag(const Path& file, const HandTag& typed) {
    Match match;
    match.kind = typed.kind;
    match.title = typed.kind == MediaKind::tv ? typed.show : typed.details.title;
    match.year = typed.year;
    if (typed.kind == MediaKind::tv) {
        match.season = typed.season;
        match.episode = typed.episode;
        match.episodeTitle = typed.details.title;
    }
    match.manual = typed.details;
    match.manual->source.reset();
    choose(file, std::move(match));
}

Task<> AppModel::refreshFromTMDB(std::string itemID) {
    const LibraryItem* found = review_.item(itemID);
    if (found == nullptr) co_return;
    const LibraryItem item = *found;
    const auto tmdb = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::Yes);
    const std::shared_ptr<Matcher> matcher = matcherFor(tmdb);

    std::vector<ResolvedFile> fresh;
    std::vector<ScannedFile> files;
    std::vector<Guess> guesses;
    for (const ResolvedFile& file : item.files) {
        // What a person typed by hand is no source's to refresh.
        if (!file.guess || (file.match && file.match->byHand())) continue;
        files.push_back(file.file);
        guesses.push_back(*file.guess);
    }
    if (files.empty()) co_return;
    if (item.kind == MediaKind::tv) {
        auto resolving = matcher->resolveSeason(files, guesses);
        fresh = co_await resolving;
    } else {
        auto resolving = matcher->resolveMovie(files.front(), guesses.front());
        ResolvedFile one = co_await resolving;
        fresh.push_back(std::move(one));
    }
    const bool reached = std::any_of(fresh.begin(), fresh.end(),
                                     [](const auto& file) { return file.match.has_value(); });
    if (!reached) {
        say(unreachable);
        co_return;
    }
    for (const ResolvedFile& file : fresh) {
        if (!file.match || review_.find(file.file.url) == nullptr) continue;
        const ResolvedFile* old = review_.find(file.file.url);
        // A match that a person has confirmed is not undone by a refresh.
        ResolvedFile next = file;
        if (old->match && isConfirmed(*old) && old->match->tmdbID != file.match->tmdbID)
            next = *old;
        review_.replace(file.file.url, next);
        drafts_.forget(file.file.url);
    }
    if (const LibraryItem* now = review_.itemOf(files.front().url)) {
        auto loading = loadDrafts(*now);
        co_await loading;
    }
    say("Refreshed from the sources.");
}

}  // namespace marlet
