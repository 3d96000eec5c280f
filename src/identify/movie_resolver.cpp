#include "identify/movie_resolver.h"

#include <array>
#include <utility>

#include "foundation/text.h"
#include "identify/catalogue_words.h"
#include "identify/matcher.h"

namespace marlet {
namespace {

/// The first word that a name holds tells its edition.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> editions{{
    {"extended", "Extended cut"},
    {"director", "Director's cut"},
    {"unrated", "Unrated cut"},
    {"special edition", "Special edition"},
    {"special.", "Special edition"},
}};

}  // namespace

Task<ResolvedFile> Matcher::resolveMovie(ScannedFile file, Guess guess) {
    std::optional<ResolvedFile> miss;
    const std::vector<SourceID> asked = sources();
    for (const SourceID id : asked) {
        ResolvedFile result;
        if (id == SourceID::tmdb) {
            auto resolving = MovieResolver::fromTMDB(tmdb, file, guess, cancel);
            result = co_await resolving;
        } else if (ExternalSource* const source = external(id)) {
            auto resolving = MovieResolver::fromExternal(source, file, guess, cancel);
            result = co_await resolving;
        } else {
            continue;
        }
        if (result.match) co_return result;
        if (!miss || result.ambiguous) miss = std::move(result);
    }
    if (!miss) miss = unmatched(std::move(file), std::move(guess), VerdictWords::noSource);
    co_return std::move(*miss);
}

std::optional<std::string> Matcher::cutHint(const std::string& name) {
    const std::string text = Text::lower(name);
    for (const auto& [word, edition] : editions) {
        if (Text::contains(text, word)) return std::string(edition);
    }
    return std::nullopt;
}

std::string Matcher::thumbnail(const std::string& url) {
    static const Regex size(R"((?<=/)\d+x\d+(?=[A-Za-z.]))");
    return size.replaceFirst(url, "300x450");
}

}  // namespace marlet
