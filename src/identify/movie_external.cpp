#include <algorithm>

#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/catalogue_words.h"
#include "identify/external_match.h"
#include "identify/lengths.h"
#include "identify/matcher.h"
#include "identify/movie_judging.h"
#include "identify/movie_resolver.h"

namespace marlet::MovieResolver {
namespace {

using MovieJudging::Wanted;

constexpr std::size_t looks = 3;

/// Films that bear the title; those of about the wanted year first, in the source's order.
std::vector<ExtMovie> namesakes(std::vector<ExtMovie> films, const Wanted& wanted) {
    std::erase_if(films, [&](const ExtMovie& film) {
        return TitleMatch::score(wanted.title, film.title) < MovieJudging::exactTitle;
    });
    std::stable_partition(films.begin(), films.end(), [&](const ExtMovie& film) {
        return MovieJudging::closeYears(wanted.year, film.year);
    });
    return films;
}

/// The verdict on a film taken; nothing when it isn't.
std::optional<Verdict> judge(const ExtMovie& film, const Wanted& wanted) {
    if (!MovieJudging::yearFits(wanted, film.year)) return std::nullopt;
    const auto lengthFits = Lengths::fits(wanted.minutes, film.minutes, Lengths::film);
    if (lengthFits == true) return Verdict::certain();
    if (lengthFits == false || !wanted.year) return std::nullopt;
    return Verdict::needsLook({VerdictWords::noLength});
}

}  // namespace

Task<ResolvedFile> fromExternal(ExternalSource* source, ScannedFile file, Guess guess,
                                CancelToken cancel) {
    const SourceID id = source->id();
    const Wanted wanted = Wanted::of(file, guess);
    auto searching = Asking::answer(source->searchMovies(wanted.title, cancel), cancel);
    auto found = co_await searching;
    const std::vector<ExtMovie> films =
        namesakes(std::move(found).value_or(std::vector<ExtMovie>{}), wanted);
    for (std::size_t i = 0; i < std::min(looks, films.size()); i++) {
        auto filling = Asking::answer(source->movieDetails(films[i], cancel), cancel);
        const auto filled = co_await filling;
        const ExtMovie& film = filled ? *filled : films[i];
        if (const auto verdict = judge(film, wanted)) {
            co_return ResolvedFile{std::move(file), std::move(guess),
                                   ExternalMatch::ofFilm(film, id), *verdict, false};
        }
    }
    const std::string reason =
        "No film called " + VerdictWords::quoted(wanted.title) + " on " + displayName(id);
    co_return unmatched(std::move(file), std::move(guess), reason);
}

}  // namespace marlet::MovieResolver
