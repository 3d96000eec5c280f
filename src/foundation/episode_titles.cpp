#include <array>
#include <utility>

#include "foundation/text.h"
#include "foundation/title_match.h"

namespace marlet::EpisodeTitles {
namespace {

constexpr std::array<std::pair<std::string_view, int>, 4> partNumbers{{
    {"one", 1},
    {"two", 2},
    {"1", 1},
    {"2", 2},
}};

/// "X, Part 1", "X: Pt. Two", "X (part 2)".
const Regex& spelledPart() {
    static const Regex pattern(R"(^(.*?)[\s,:\-–]*\(?\s*\b(?:part|pt\.?)\s*(one|two|\d)\s*\)?\s*$)",
                               Regex::Case::Insensitive);
    return pattern;
}

/// "X (1)".
const Regex& bracketedPart() {
    static const Regex pattern(R"(^(.*?)\s*\(\s*(\d)\s*\)\s*$)");
    return pattern;
}

}  // namespace

std::optional<PartStem> partStem(std::string_view title) {
    const std::string text = Text::lower(title);
    auto match = spelledPart().firstMatch(text);
    if (!match) match = bracketedPart().firstMatch(text);
    if (!match) return std::nullopt;
    for (const auto& [word, part] : partNumbers) {
        if (match->groups[1] != word) continue;
        std::string stem = TitleMatch::normalise(match->groups[0]);
        if (stem.empty()) return std::nullopt;
        return PartStem{std::move(stem), part};
    }
    return std::nullopt;
}

std::optional<std::string> displayStem(std::string_view title) {
    for (const Regex* const pattern : {&spelledPart(), &bracketedPart()}) {
        const auto match = pattern->firstMatch(title);
        if (!match) continue;
        std::string stem = Text::trim(match->groups[0]);
        if (!stem.empty()) return stem;
    }
    return std::nullopt;
}

}  // namespace marlet::EpisodeTitles
