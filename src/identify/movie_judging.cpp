#include "identify/movie_judging.h"

#include <algorithm>
#include <cstdlib>
#include <set>

#include "foundation/text.h"
#include "foundation/title_match.h"
#include "identify/catalogue_words.h"
#include "identify/file_names.h"
#include "identify/lengths.h"
#include "identify/matcher.h"

namespace marlet::MovieJudging {
namespace {

using Candidates = std::vector<Candidate>;

/// A film less popular than this share of its namesakes isn't taken for its length alone.
constexpr double popularShare = 0.2;
/// A file this many times as long as the film is no cut of it.
constexpr double longestCut = 1.5;

bool isExact(const Candidate& candidate) {
    return candidate.titleScore >= exactTitle;
}

std::optional<bool> lengthFits(const TMDBMovie& movie, const Wanted& wanted) {
    return Lengths::fits(wanted.minutes, movie.runtime, Lengths::film);
}

double rank(const TMDBSearchHit& hit, const Wanted& wanted) {
    return TitleMatch::score(wanted.title, hit.anyTitle()) +
           (closeYears(wanted.year, hit.year()) ? 0.5 : 0.0);
}

std::size_t bestScore(const Candidates& candidates) {
    const auto best =
        std::max_element(candidates.begin(), candidates.end(),
                         [](const Candidate& a, const Candidate& b) { return a.score < b.score; });
    return static_cast<std::size_t>(best - candidates.begin());
}

std::vector<std::size_t> exactOnes(const Candidates& candidates) {
    std::vector<std::size_t> exact;
    for (std::size_t i = 0; i < candidates.size(); i++) {
        if (isExact(candidates[i])) exact.push_back(i);
    }
    return exact;
}

/// The one exact candidate whose length fits, unless it is too obscure beside the others.
std::optional<std::size_t> onlyFitting(const Candidates& all,
                                       const std::vector<std::size_t>& exact) {
    std::optional<std::size_t> fitting;
    double mostPopular = 0.0;
    for (const std::size_t i : exact) {
        mostPopular = std::max(mostPopular, all[i].popularity);
        if (all[i].runtimeOK != true) continue;
        if (fitting) return std::nullopt;
        fitting = i;
    }
    if (fitting && all[*fitting].popularity < popularShare * mostPopular) return std::nullopt;
    return fitting;
}

std::size_t likeliest(const Candidates& all, const std::vector<std::size_t>& exact) {
    const auto isLess = [&](std::size_t a, std::size_t b) {
        const bool fitsA = all[a].runtimeOK == true;
        const bool fitsB = all[b].runtimeOK == true;
        return fitsA != fitsB ? fitsB : all[a].popularity < all[b].popularity;
    };
    return *std::max_element(exact.begin(), exact.end(), isLess);
}

std::string ambiguityOf(const Candidates& all, const std::vector<std::size_t>& exact,
                        const std::string& title) {
    std::vector<int> years;
    for (const std::size_t i : exact) {
        if (const auto year = all[i].movie.year()) years.push_back(*year);
    }
    std::sort(years.begin(), years.end());
    std::vector<std::string> texts;
    for (const int year : years) texts.push_back(std::to_string(year));
    return "More than one film is called " + VerdictWords::quoted(title) + " (" +
           Text::join(texts, ", ") + "). Check which one this is.";
}

}  // namespace

Wanted Wanted::of(const ScannedFile& file, const Guess& guess) {
    return {guess.title, guess.year, Lengths::minutes(file), FileNames::name(file.url)};
}

bool closeYears(std::optional<int> a, std::optional<int> b) {
    return a && b && std::abs(static_cast<long>(*a) - static_cast<long>(*b)) < 2;
}

bool yearFits(const Wanted& wanted, std::optional<int> year) {
    return !wanted.year || closeYears(wanted.year, year);
}

std::vector<std::string> queries(const Wanted& wanted) {
    std::vector<std::string> list{wanted.title};
    const std::string noColon = Text::replaceAll(wanted.title, ":", " ");
    if (noColon != wanted.title) list.push_back(noColon);
    if (wanted.year) list.push_back(wanted.title + " " + std::to_string(*wanted.year));
    return list;
}

std::vector<TMDBSearchHit> ranked(const std::vector<TMDBSearchHit>& hits, const Wanted& wanted) {
    struct Ranked {
        TMDBSearchHit hit;
        double rank;
    };
    std::vector<Ranked> list;
    std::set<std::int64_t> seen;
    for (const TMDBSearchHit& hit : hits) {
        if (TitleMatch::score(wanted.title, hit.anyTitle()) < likeTitle) continue;
        if (seen.insert(hit.id).second) list.push_back({hit, rank(hit, wanted)});
    }
    std::stable_sort(list.begin(), list.end(),
                     [](const Ranked& a, const Ranked& b) { return a.rank > b.rank; });
    std::vector<TMDBSearchHit> result;
    for (Ranked& entry : list) result.push_back(std::move(entry.hit));
    return result;
}

bool hasExactTitle(const std::vector<TMDBSearchHit>& hits, const Wanted& wanted) {
    return std::any_of(hits.begin(), hits.end(), [&](const TMDBSearchHit& hit) {
        return TitleMatch::score(wanted.title, hit.anyTitle()) >= exactTitle;
    });
}

Candidate candidate(TMDBMovie movie, double popularity, std::size_t position,
                    const Wanted& wanted) {
    Candidate result;
    result.titleScore = TitleMatch::score(wanted.title, movie.title);
    result.yearOK = yearFits(wanted, movie.year());
    result.runtimeOK = lengthFits(movie, wanted);
    result.score = result.titleScore - 0.01 * static_cast<double>(position);
    if (result.yearOK) result.score += 0.4;
    if (result.runtimeOK == true) result.score += 0.4;
    if (result.runtimeOK == false) result.score -= 0.2;
    result.popularity = popularity;
    result.movie = std::move(movie);
    return result;
}

Candidate shorterCandidate(TMDBMovie movie, double popularity, const Wanted& wanted) {
    Candidate result;
    result.titleScore = 0.95;
    result.yearOK = closeYears(wanted.year, movie.year());
    result.runtimeOK = lengthFits(movie, wanted);
    result.score = result.yearOK ? 1.35 : 0.95;
    if (result.runtimeOK == true) result.score += 0.4;
    result.popularity = popularity;
    result.movie = std::move(movie);
    return result;
}

std::vector<std::string> shorterTitles(const std::string& title) {
    std::vector<std::string> words = Text::words(TitleMatch::normalise(title));
    std::vector<std::string> list;
    while (words.size() > 1) {
        words.pop_back();
        list.push_back(Text::join(words, " "));
    }
    return list;
}

bool isBeginning(const std::string& found, const std::string& title) {
    const std::vector<std::string> part = Text::words(TitleMatch::normalise(found));
    const std::vector<std::string> whole = Text::words(TitleMatch::normalise(title));
    return !part.empty() && part.size() <= whole.size() &&
           std::equal(part.begin(), part.end(), whole.begin());
}

Pick pick(const Candidates& candidates, const Wanted& wanted) {
    const std::size_t best = bestScore(candidates);
    if (wanted.year) return {best, std::nullopt};
    const std::vector<std::size_t> exact = exactOnes(candidates);
    if (const auto fitting = onlyFitting(candidates, exact)) return {*fitting, std::nullopt};
    if (exact.size() < 2) return {best, std::nullopt};
    return {likeliest(candidates, exact), ambiguityOf(candidates, exact, wanted.title)};
}

std::optional<std::string> longerCut(const Candidate& chosen, const Wanted& wanted) {
    if (chosen.runtimeOK != false || chosen.titleScore < 0.95) return std::nullopt;
    if (!wanted.year || chosen.movie.year() != wanted.year) return std::nullopt;
    const double runtime = *chosen.movie.runtime;
    if (*wanted.minutes <= runtime || *wanted.minutes >= runtime * longestCut) return std::nullopt;
    return Matcher::cutHint(wanted.fileName).value_or("Extended cut");
}

std::vector<std::string> reasons(const Candidate& chosen, const Wanted& wanted, bool isCut) {
    std::vector<std::string> list;
    const std::string& found = chosen.movie.title;
    const bool longerName =
        wanted.year && chosen.yearOK && TitleMatch::isPrefix(wanted.title, found);
    if (!isExact(chosen) && !longerName) {
        list.push_back("Closest match is " + VerdictWords::quoted(found) +
                       ", which isn't an exact name match");
    }
    if (!chosen.yearOK) {
        const auto year = chosen.movie.year();
        list.push_back("Year differs: file " + std::to_string(wanted.year.value_or(0)) +
                       ", database " + (year ? std::to_string(*year) : "unknown"));
    }
    if (!chosen.runtimeOK) {
        list.push_back(VerdictWords::noLength);
    } else if (chosen.runtimeOK == false && !isCut) {
        list.push_back(Lengths::difference(*wanted.minutes, "database", *chosen.movie.runtime));
    }
    return list;
}

}  // namespace marlet::MovieJudging
