#include <algorithm>
#include <set>

#include "identify/asking.h"
#include "identify/catalogue_words.h"
#include "identify/movie_judging.h"
#include "identify/movie_resolver.h"

namespace marlet::MovieResolver {
namespace {

using MovieJudging::Candidate;
using MovieJudging::Wanted;

constexpr std::size_t looksWithYear = 4;
constexpr std::size_t looksWithoutYear = 6;

/// One film's questions to the database and what came of them.
struct Inquiry {
    std::shared_ptr<TMDBClient> tmdb;
    CancelToken cancel;
    Wanted wanted;
    std::vector<TMDBSearchHit> hits;
    std::vector<Candidate> candidates;
    bool failed = false;  ///< some request was not answered

    /// The words for nothing found: a line that is down doesn't say that a film doesn't exist.
    std::string nothingFound() const {
        if (failed) return VerdictWords::unreachable;
        return "No movie called " + VerdictWords::quoted(wanted.title) + " in the database";
    }
    bool hasExactCandidate() const {
        return std::any_of(candidates.begin(), candidates.end(), [](const Candidate& candidate) {
            return candidate.titleScore >= MovieJudging::exactTitle;
        });
    }
    std::set<std::int64_t> candidateIDs() const {
        std::set<std::int64_t> ids;
        for (const Candidate& candidate : candidates) ids.insert(candidate.movie.id);
        return ids;
    }
};
using InquiryPtr = std::shared_ptr<Inquiry>;

Task<std::vector<TMDBSearchHit>> search(InquiryPtr inquiry, std::string query,
                                        std::optional<int> year) {
    auto searching =
        Asking::answer(inquiry->tmdb->searchMovie(query, year), inquiry->cancel, inquiry->tmdb);
    auto found = co_await searching;
    std::vector<TMDBSearchHit> hits;
    if (found) {
        hits = std::move(*found);
    } else {
        inquiry->failed = true;
    }
    co_return hits;
}

Task<std::optional<TMDBMovie>> fetch(InquiryPtr inquiry, std::int64_t id) {
    auto asking = Asking::answer(inquiry->tmdb->movie(id), inquiry->cancel, inquiry->tmdb);
    auto movie = co_await asking;
    if (!movie) inquiry->failed = true;
    co_return movie;
}

/// Leaves the likely hits in the inquiry, the likeliest first.
Task<> gatherHits(InquiryPtr inquiry) {
    const Wanted& wanted = inquiry->wanted;
    struct Search {
        std::string query;
        std::optional<int> year;
    };
    std::vector<Search> searches;
    for (std::string& query : MovieJudging::queries(wanted)) {
        searches.push_back({std::move(query), std::nullopt});
    }
    if (wanted.year) searches.push_back({wanted.title, wanted.year});

    std::vector<TMDBSearchHit> all;
    for (const Search& one : searches) {
        auto searching = search(inquiry, one.query, one.year);
        const auto found = co_await searching;
        all.insert(all.end(), found.begin(), found.end());
        if (MovieJudging::hasExactTitle(all, wanted)) break;
    }
    inquiry->hits = MovieJudging::ranked(all, wanted);
}

Task<> fetchCandidates(InquiryPtr inquiry) {
    const std::size_t looks = inquiry->wanted.year ? looksWithYear : looksWithoutYear;
    for (std::size_t i = 0; i < std::min(looks, inquiry->hits.size()); i++) {
        const TMDBSearchHit hit = inquiry->hits[i];
        auto fetching = fetch(inquiry, hit.id);
        auto movie = co_await fetching;
        if (!movie) continue;
        inquiry->candidates.push_back(MovieJudging::candidate(
            std::move(*movie), hit.popularity.value_or(0.0), i, inquiry->wanted));
    }
}

/// A name with extra words behind the true title: shorter and shorter beginnings are tried.
Task<> tryShorterTitles(InquiryPtr inquiry) {
    const std::vector<std::string> titles = MovieJudging::shorterTitles(inquiry->wanted.title);
    // A film that gave no answer counts as seen: the next beginning doesn't ask for it again.
    std::set<std::int64_t> seen = inquiry->candidateIDs();
    for (const std::string& title : titles) {
        const std::size_t before = inquiry->candidates.size();
        auto searching = search(inquiry, title, inquiry->wanted.year);
        const auto hits = co_await searching;
        for (const TMDBSearchHit& hit : hits) {
            if (!MovieJudging::isBeginning(hit.anyTitle(), inquiry->wanted.title)) continue;
            if (!seen.insert(hit.id).second) continue;
            auto fetching = fetch(inquiry, hit.id);
            auto movie = co_await fetching;
            if (!movie) continue;
            inquiry->candidates.push_back(MovieJudging::shorterCandidate(
                std::move(*movie), hit.popularity.value_or(0.0), inquiry->wanted));
        }
        if (inquiry->candidates.size() > before) break;
    }
}

ResolvedFile chosen(const Inquiry& inquiry, ScannedFile file, Guess guess) {
    const auto pick = MovieJudging::pick(inquiry.candidates, inquiry.wanted);
    const Candidate& best = inquiry.candidates[pick.index];
    ResolvedFile result{std::move(file), std::move(guess), matchOf(best.movie), {}, false};
    if (pick.ambiguity) {
        result.verdict = Verdict::needsLook({*pick.ambiguity});
        result.ambiguous = true;
        return result;
    }
    result.match->cut = MovieJudging::longerCut(best, inquiry.wanted);
    const auto reasons = MovieJudging::reasons(best, inquiry.wanted, result.match->cut.has_value());
    result.verdict = reasons.empty() ? Verdict::certain() : Verdict::needsLook(reasons);
    return result;
}

}  // namespace

Match matchOf(const TMDBMovie& movie) {
    Match match;
    match.tmdbID = movie.id;
    match.kind = MediaKind::movie;
    match.title = movie.title;
    match.year = movie.year();
    match.runtimeMinutes = movie.runtime;
    match.posterPath = movie.poster_path;
    return match;
}

Task<ResolvedFile> fromTMDB(std::shared_ptr<TMDBClient> tmdb, ScannedFile file, Guess guess,
                            CancelToken cancel) {
    if (!tmdb) co_return unmatched(std::move(file), std::move(guess), VerdictWords::noKey);
    auto inquiry = std::make_shared<Inquiry>();
    inquiry->tmdb = std::move(tmdb);
    inquiry->cancel = cancel;
    inquiry->wanted = Wanted::of(file, guess);

    auto gathering = gatherHits(inquiry);
    co_await gathering;
    auto fetching = fetchCandidates(inquiry);
    co_await fetching;
    if (inquiry->wanted.year && !inquiry->hasExactCandidate()) {
        auto shortening = tryShorterTitles(inquiry);
        co_await shortening;
    }
    if (inquiry->candidates.empty()) {
        const std::string reason = inquiry->nothingFound();
        co_return unmatched(std::move(file), std::move(guess), reason);
    }
    co_return chosen(*inquiry, std::move(file), std::move(guess));
}

}  // namespace marlet::MovieResolver
