#include <algorithm>

#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/external_match.h"
#include "identify/season_resolver.h"

namespace marlet::SeasonResolver {
namespace {

/// A show of a source with the season that was asked for.
struct Chosen {
    ExtShow show;
    std::vector<ExtEpisode> episodes;
    ExtShowInfo info;
};

/// Shows of exactly that title first; within both halves in the source's order.
std::vector<ExtShow> exactFirst(std::vector<ExtShow> shows, const std::string& title) {
    const std::string wanted = TitleMatch::normalise(title);
    std::stable_partition(shows.begin(), shows.end(), [&](const ExtShow& show) {
        return TitleMatch::normalise(show.title) == wanted;
    });
    return shows;
}

bool hasAnyOf(const std::vector<ExtEpisode>& episodes, const SeasonJudging::Claims& wanted) {
    return std::any_of(episodes.begin(), episodes.end(),
                       [&](const ExtEpisode& episode) { return wanted.contains(episode.number); });
}

/// The first show with a wanted episode, else the first with any episode of the season.
Task<std::optional<Chosen>> firstWithSeason(ExternalSource* source, std::vector<ExtShow> shows,
                                            SeasonFiles files, CancelToken cancel) {
    const auto wanted = SeasonJudging::claims(files.guesses);
    std::optional<Chosen> second;
    for (const ExtShow& show : shows) {
        auto asking = Asking::answer(source->episodes(files.season(), show, cancel), cancel);
        auto episodes = co_await asking;
        if (!episodes || episodes->empty()) continue;
        const bool isWanted = hasAnyOf(*episodes, wanted);
        if (!isWanted && second) continue;
        Chosen chosen{show, std::move(*episodes), {}};
        if (isWanted) co_return chosen;
        second = std::move(chosen);
    }
    co_return second;
}

std::string titleOf(const ExtEpisode& episode, const ExtShow& show) {
    return episode.title.empty() ? show.title : episode.title;
}

/// Turns judgements into results for one show of one source.
class Season {
public:
    Season(SourceID source, Chosen chosen, const SeasonFiles& files)
        : source_(source), chosen_(std::move(chosen)) {
        season_.number = files.season();
        season_.claims = SeasonJudging::claims(files.guesses);
        season_.words = CatalogueWords::of(source);
        for (ExtEpisode& episode : chosen_.episodes) {
            episode.season = season_.number;
            season_.episodes[episode.number] = {titleOf(episode, chosen_.show), episode.minutes};
            byNumber_[episode.number] = episode;
        }
    }

    ResolvedFile resolved(const ScannedFile& file, const Guess& guess) const {
        const auto judgement = SeasonJudging::judge(file, guess, season_);
        ResolvedFile result{file, guess, {}, judgement.verdict, false};
        if (judgement.episode) {
            result.match = ExternalMatch::ofEpisode(chosen_.show, chosen_.info,
                                                    byNumber_.at(*judgement.episode), source_);
        }
        return result;
    }

private:
    SourceID source_;
    Chosen chosen_;
    SeasonJudging::Season season_;
    std::map<int, ExtEpisode> byNumber_;
};

}  // namespace

Task<std::vector<ResolvedFile>> fromExternal(ExternalSource* source, SeasonFiles files,
                                             CancelToken cancel) {
    const SourceID id = source->id();
    const std::string title = VerdictWords::quoted(files.title());
    auto searching = Asking::answer(source->searchShows(files.title(), cancel), cancel);
    const auto found = co_await searching;
    const std::vector<ExtShow> shows = SeasonJudging::candidates(
        found.value_or(std::vector<ExtShow>{}), files,
        [](const ExtShow& show) { return show.title; },
        [](const ExtShow& show) { return show.year; });
    if (shows.empty()) co_return files.missed("No show called " + title + " on " + displayName(id));

    auto choosing = firstWithSeason(source, exactFirst(shows, files.title()), files, cancel);
    auto chosen = co_await choosing;
    if (!chosen) {
        co_return files.missed("Season " + std::to_string(files.season()) + " isn't on " +
                               displayName(id) + " for " + title);
    }
    auto describing = Asking::answer(source->showInfo(chosen->show, cancel), cancel);
    auto info = co_await describing;
    if (info) chosen->info = std::move(*info);

    const Season season(id, std::move(*chosen), files);
    std::vector<ResolvedFile> results;
    for (std::size_t i = 0; i < files.size(); i++) {
        results.push_back(season.resolved(files.files[i], files.guesses[i]));
    }
    co_return results;
}

}  // namespace marlet::SeasonResolver
