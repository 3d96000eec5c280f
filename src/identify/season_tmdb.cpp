#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/season_resolver.h"

namespace marlet::SeasonResolver {
namespace {

using SeasonJudging::Episodes;

struct SeasonCandidate {
    TMDBSearchHit hit;
    std::optional<TMDBSeason> season;
    double score = 0.0;
};

std::string nameOf(const TMDBSearchHit& hit) {
    if (hit.name) return *hit.name;
    return hit.title.value_or("");
}

/// The year of a show's first evening; films have another date.
std::optional<int> yearOf(const TMDBSearchHit& hit) {
    if (!hit.first_air_date) return hit.year();
    TMDBSearchHit show;
    show.first_air_date = hit.first_air_date;
    return show.year();
}

/// A later episode of the same number stands for an earlier one.
Episodes episodesOf(const std::optional<TMDBSeason>& season) {
    Episodes episodes;
    if (!season) return episodes;
    for (const TMDBEpisode& episode : season->episodes) {
        episodes[episode.episode_number] = {episode.name, episode.runtime};
    }
    return episodes;
}

Task<std::optional<SeasonCandidate>> bestCandidate(std::shared_ptr<TMDBClient> tmdb,
                                                   std::vector<TMDBSearchHit> hits,
                                                   SeasonFiles files, CancelToken cancel) {
    std::optional<SeasonCandidate> best;
    for (std::size_t position = 0; position < hits.size(); position++) {
        SeasonCandidate candidate{hits[position], std::nullopt, 0.0};
        auto asking = Asking::answer(tmdb->season(files.season(), candidate.hit.id), cancel, tmdb);
        candidate.season = co_await asking;
        candidate.score = SeasonJudging::fit(files, episodesOf(candidate.season)) +
                          0.1 * TitleMatch::similarity(nameOf(candidate.hit), files.title()) -
                          0.01 * static_cast<double>(position);
        if (!best || candidate.score > best->score) best = std::move(candidate);
    }
    co_return best;
}

Match matchOf(const SeasonJudging::Judgement& judgement, const SeasonCandidate& show, int season) {
    Match match;
    match.tmdbID = show.hit.id;
    match.kind = MediaKind::tv;
    match.title = nameOf(show.hit);
    match.year = yearOf(show.hit);
    match.season = season;
    match.episode = judgement.episode;
    match.episodeEnd = judgement.episodeEnd;
    match.episodeTitle = judgement.title;
    match.runtimeMinutes = judgement.minutes;
    match.posterPath = show.season->poster_path ? show.season->poster_path : show.hit.poster_path;
    return match;
}

std::vector<ResolvedFile> judgeAll(const SeasonFiles& files, const SeasonCandidate& show) {
    const SeasonJudging::Season season{files.season(), episodesOf(show.season),
                                       SeasonJudging::claims(files.guesses),
                                       CatalogueWords::database(), true};
    std::vector<ResolvedFile> results;
    for (std::size_t i = 0; i < files.size(); i++) {
        const auto judgement = SeasonJudging::judge(files.files[i], files.guesses[i], season);
        ResolvedFile result{files.files[i], files.guesses[i], {}, judgement.verdict, false};
        if (judgement.episode) result.match = matchOf(judgement, show, season.number);
        results.push_back(std::move(result));
    }
    return results;
}

}  // namespace

Task<std::vector<ResolvedFile>> fromTMDB(std::shared_ptr<TMDBClient> tmdb, SeasonFiles files,
                                         CancelToken cancel) {
    if (!tmdb) co_return files.missed(VerdictWords::noKey);
    auto searching = Asking::answer(tmdb->searchShow(files.title()), cancel, tmdb);
    const auto found = co_await searching;
    if (!found) co_return files.missed(VerdictWords::unreachable);
    std::vector<TMDBSearchHit> hits = SeasonJudging::candidates(*found, files, nameOf, yearOf);
    const std::string title = VerdictWords::quoted(files.title());
    if (hits.empty()) co_return files.missed("No show called " + title + " in the database");
    auto comparing = bestCandidate(tmdb, std::move(hits), files, cancel);
    const auto best = co_await comparing;
    if (!best || !best->season) {
        co_return files.missed("Season " + std::to_string(files.season()) +
                               " isn't in the database for " + title);
    }
    co_return judgeAll(files, *best);
}

}  // namespace marlet::SeasonResolver
