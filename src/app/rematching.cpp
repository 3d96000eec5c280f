// A person's own choice of match.

#include <algorithm>

#include "app/app_model.h"
#include "foundation/errors.h"
#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/external_match.h"
#include "identify/lengths.h"
#include "identify/movie_resolver.h"
#include "sources/details_loader.h"
#include "sources/key_store.h"

namespace marlet {

namespace {

constexpr const char* unreachable = "Couldn't reach the database.";

using Choices = std::vector<FileChoice>;
using EpisodeChoices = std::vector<EpisodeChoice>;

template <typename Episode, typename Number>
const Episode& numbered(const std::vector<Episode>& season, Number Episode::*number, int wanted) {
    const auto found = std::find_if(season.begin(), season.end(),
                                    [&](const Episode& each) { return each.*number == wanted; });
    if (found == season.end()) throw MFError("no such episode");
    return *found;
}

/// Makes the match of an episode that of a double one.
void addSecond(Match& match, int number, const std::string& title, std::optional<int> minutes) {
    match.episodeEnd = number;
    match.episodeTitle = DetailsLoader::combinedTitle(*match.episodeTitle, title);
    if (match.manual) match.manual->title = *match.episodeTitle;
    if (match.runtimeMinutes && minutes) *match.runtimeMinutes += *minutes;
}

Match episodeMatch(const TMDBShow& show, const TMDBSeason& season, int number,
                   const EpisodeChoice& choice) {
    const TMDBEpisode& chosen =
        numbered(season.episodes, &TMDBEpisode::episode_number, choice.episode);
    Match match;
    match.tmdbID = show.id;
    match.kind = MediaKind::tv;
    match.title = show.name;
    match.year = show.year();
    match.season = number;
    match.episode = choice.episode;
    match.episodeTitle = chosen.name;
    match.runtimeMinutes = chosen.runtime;
    match.posterPath = season.poster_path ? season.poster_path : show.poster_path;
    if (choice.episodeEnd) {
        const TMDBEpisode& second =
            numbered(season.episodes, &TMDBEpisode::episode_number, *choice.episodeEnd);
        addSecond(match, second.episode_number, second.name, second.runtime);
    }
    return match;
}

Task<Choices> databaseEpisodes(std::shared_ptr<TMDBClient> tmdb, EpisodeChoices files,
                               std::int64_t showID, int season) {
    if (!tmdb) throw TMDBError::noKey();
    auto fetchingShow = tmdb->show(showID);
    TMDBShow show = co_await fetchingShow;
    show.id = showID;
    auto fetchingSeason = tmdb->season(season, showID);
    const TMDBSeason found = co_await fetchingSeason;
    Choices choices;
    for (const EpisodeChoice& file : files)
        choices.push_back({file.file, episodeMatch(show, found, season, file)});
    co_return choices;
}

Task<Choices> databaseFilm(std::shared_ptr<TMDBClient> tmdb, std::filesystem::path file,
                           std::int64_t movieID) {
    if (!tmdb) throw TMDBError::noKey();
    auto fetching = tmdb->movie(movieID);
    const TMDBMovie movie = co_await fetching;
    Choices choices;
    choices.push_back({std::move(file), MovieResolver::matchOf(movie)});
    co_return choices;
}

Task<Choices> sourceEpisodes(ExternalSource* via, EpisodeChoices files, ExtShow show, int season,
                             CancelToken cancel) {
    auto fetchingInfo = via->showInfo(show, cancel);
    const ExtShowInfo info = co_await fetchingInfo;
    auto fetchingEpisodes = via->episodes(season, show, cancel);
    const std::vector<ExtEpisode> all = co_await fetchingEpisodes;
    Choices choices;
    for (const EpisodeChoice& file : files) {
        ExtEpisode chosen = numbered(all, &ExtEpisode::number, file.episode);
        chosen.season = season;
        Match match = ExternalMatch::ofEpisode(show, info, chosen, via->id());
        if (file.episodeEnd) {
            const ExtEpisode& second = numbered(all, &ExtEpisode::number, *file.episodeEnd);
            addSecond(match, second.number, second.title, second.minutes);
        }
        choices.push_back({file.file, std::move(match)});
    }
    co_return choices;
}

Task<Choices> sourceFilm(ExternalSource* via, std::filesystem::path file, ExtMovie movie,
                         CancelToken cancel) {
    auto fetching = via->movieDetails(movie, cancel);
    const ExtMovie full = co_await fetching;
    Choices choices;
    choices.push_back({std::move(file), ExternalMatch::ofFilm(full, via->id())});
    co_return choices;
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

Task<bool> AppModel::chooseFrom(Task<Choices> fetching, CancelToken cancel) {
    const CancelToken life = life_;
    CancelToken either;
    const auto ofModel = life.onCancel([either] { either.cancel(); });
    const auto ofPerson = cancel.onCancel([either] { either.cancel(); });
    try {
        auto waiting = Asking::orCancelled(std::move(fetching), either);
        Choices choices = co_await waiting;
        for (FileChoice& choice : choices) choose(choice.file, std::move(choice.match));
        co_return true;
    } catch (const CancelError&) {
        if (life.isCancelled()) throw;  // the model is gone
        if (cancel.isCancelled()) co_return false;
        say(unreachable);
    } catch (const std::exception&) {
        say(unreachable);
    }
    co_return false;
}

Task<bool> AppModel::rematchShow(Path file, std::int64_t showID, int season, int episode,
                                 CancelToken cancel) {
    EpisodeChoices one = {{std::move(file), episode, {}}};
    return rematchSeason(std::move(one), showID, season, cancel);
}

Task<bool> AppModel::rematchSeason(EpisodeChoices files, std::int64_t showID, int season,
                                   CancelToken cancel) {
    auto tmdb = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::No, cancel);
    return chooseFrom(databaseEpisodes(std::move(tmdb), std::move(files), showID, season), cancel);
}

Task<bool> AppModel::rematchMovie(Path file, std::int64_t movieID, CancelToken cancel) {
    auto tmdb = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::No, cancel);
    return chooseFrom(databaseFilm(std::move(tmdb), std::move(file), movieID), cancel);
}

Task<bool> AppModel::rematchExternal(Path file, ExternalSource* via, ExtShow show, int season,
                                     int episode, CancelToken cancel) {
    EpisodeChoices one = {{std::move(file), episode, {}}};
    return rematchSeason(std::move(one), via, std::move(show), season, cancel);
}

Task<bool> AppModel::rematchSeason(EpisodeChoices files, ExternalSource* via, ExtShow show,
                                   int season, CancelToken cancel) {
    return chooseFrom(sourceEpisodes(via, std::move(files), std::move(show), season, cancel),
                      cancel);
}

Task<bool> AppModel::rematchExternal(Path file, ExternalSource* via, ExtMovie movie,
                                     CancelToken cancel) {
    return chooseFrom(sourceFilm(via, std::move(file), std::move(movie), cancel), cancel);
}

ExternalSource* AppModel::external(SourceID id) const {
    const auto own = externals_.find(id);
    return own == externals_.end() ? sharedSource(id) : own->second;
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
