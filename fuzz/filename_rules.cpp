// Any bytes as a path and tags: reading them ends, and what comes out is text.
#include <cstdlib>
#include <string_view>

#include "foundation/text.h"
#include "identify/filename_rules.h"

namespace {

using namespace marlet;

/// Longer than any path that a system gives; patterns are bounded in time, not in memory.
constexpr std::size_t longestPath = 4096;

void check(bool holds) {
    if (!holds) std::abort();
}

void checkText(const std::optional<std::string>& text) {
    if (text) check(Text::repairUtf8(viewOf(*text)) == *text);
}

/// The next line of the input; the path stands last because it may hold line ends.
std::string_view line(std::string_view& input) {
    const std::string_view first = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(input.size(), first.size() + 1));
    return first;
}

std::optional<std::string> textOrNone(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional(std::string(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > longestPath) return 0;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    ExistingTags tags;
    tags.show = textOrNone(line(input));
    tags.title = textOrNone(line(input));
    tags.season = Text::integer(line(input));
    tags.episode = Text::integer(line(input));
    tags.year = Text::integer(line(input));

    const FilenameRules::Parse parse = FilenameRules::parse(std::string(input), tags);
    if (!parse.guess) {
        check(parse.messy && !parse.confident);
        return 0;
    }
    const Guess& guess = *parse.guess;
    checkText(guess.title);
    checkText(guess.episodeTitle);
    checkText(guess.movieTitle);
    check((guess.kind == MediaKind::tv) == (guess.season && guess.episode));
    check(guess.compact == guess.movieTitle.has_value());
    FilenameRules::nameYear(input);
    return 0;
}
