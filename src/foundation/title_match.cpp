#include "foundation/title_match.h"

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "foundation/text.h"

namespace marlet::TitleMatch {
namespace {

struct Replacement {
    std::string_view what;
    std::string_view with;
};

/// Signs that a title may spell out, then the apostrophes, which join ("Ain't" is "aint").
constexpr std::array<Replacement, 7> signs{{
    {"&", " and "},
    {"¹", " 1"},
    {"²", " 2"},
    {"³", " 3"},
    {"'", ""},
    {"’", ""},
    {"`", ""},
}};

constexpr std::array<std::string_view, 3> articles{"the ", "a ", "an "};

bool isKept(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

std::string versusAsVs(std::string text) {
    static const Regex versus(R"(\bversus\b)");
    if (!Text::contains(text, "versus")) return text;
    return versus.replaceAll(text, "vs");
}

std::set<std::string> distinctWords(std::string_view normalised) {
    const std::vector<std::string> words = Text::words(normalised);
    return {words.begin(), words.end()};
}

}  // namespace

std::string normalise(std::string_view title) {
    std::string text = Text::fold(title);
    for (const auto& [what, with] : signs) text = Text::replaceAll(std::move(text), what, with);
    text = versusAsVs(std::move(text));
    for (char& c : text) {
        if (!isKept(c)) c = ' ';
    }
    // The article is looked for before the blanks go: one behind a bracket or quote is kept.
    std::string_view rest = text;
    const auto article = std::find_if(articles.begin(), articles.end(), [&](std::string_view word) {
        return rest.starts_with(word);
    });
    if (article != articles.end()) rest.remove_prefix(article->size());
    return Text::trim(Text::collapseSpace(rest));
}

double similarity(std::string_view a, std::string_view b) {
    const std::string first = normalise(a);
    const std::string second = normalise(b);
    if (first.empty() || second.empty()) return 0.0;
    if (first == second) return 1.0;
    const std::set<std::string> left = distinctWords(first);
    const std::set<std::string> right = distinctWords(second);
    const auto shared = std::count_if(
        left.begin(), left.end(), [&](const std::string& word) { return right.contains(word); });
    return 2.0 * static_cast<double>(shared) / static_cast<double>(left.size() + right.size());
}

bool isPrefix(std::string_view a, std::string_view b) {
    const std::vector<std::string> part = Text::words(normalise(a));
    const std::vector<std::string> whole = Text::words(normalise(b));
    if (part.empty() || part.size() >= whole.size()) return false;
    return std::equal(part.begin(), part.end(), whole.begin());
}

double score(std::string_view wanted, std::string_view found) {
    constexpr double prefixScore = 0.85;
    const double words = similarity(wanted, found);
    return isPrefix(wanted, found) ? std::max(words, prefixScore) : words;
}

}  // namespace marlet::TitleMatch
