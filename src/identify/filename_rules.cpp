#include "identify/filename_rules.h"

#include <algorithm>
#include <array>
#include <utility>

#include "foundation/text.h"

namespace marlet::FilenameRules {
namespace {

/// What the rules read from: the name, the folders around it and the tags inside.
struct Source {
    std::string base;                  ///< the file's name without its extension
    std::string name;                  ///< base with blanks between its words
    std::vector<std::string> folders;  ///< nearest first
    ExistingTags tags;
    std::optional<int> season;      ///< what the folder says, else the tags
    std::optional<int> folderYear;  ///< of the nearest two folders
};

/// Nothing: the next rule is tried.
using Result = std::optional<Parse>;

Parse none() {
    return {std::nullopt, true, false};
}

std::string repaired(std::string_view text) {
    return Text::repairUtf8(viewOf(text));
}

/// Titles from tags become titles of guesses, so they must be text as well.
ExistingTags repaired(ExistingTags tags) {
    if (tags.show) tags.show = repaired(*tags.show);
    if (tags.title) tags.title = repaired(*tags.title);
    return tags;
}

/// What stands behind the last dot is an extension unless it holds a blank: "Mr. Nobody" has none.
std::string withoutExtension(std::string_view fileName) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == fileName.size()) {
        return std::string(fileName);
    }
    if (fileName.find(' ', dot) != std::string_view::npos) return std::string(fileName);
    return std::string(fileName.substr(0, dot));
}

/// A name without a blank has underscores or dots between its words.
std::string withBlanks(std::string name) {
    if (Text::contains(name, " ")) return name;
    std::replace(name.begin(), name.end(), '_', ' ');
    std::replace(name.begin(), name.end(), '.', ' ');
    return name;
}

std::vector<std::string> foldersOf(const std::filesystem::path& file) {
    std::vector<std::string> folders;
    for (const auto& part : file.parent_path()) folders.push_back(repaired(part.native()));
    std::reverse(folders.begin(), folders.end());
    return folders;
}

std::optional<int> yearOfFolders(const std::vector<std::string>& folders) {
    for (std::size_t i = 0; i < std::min<std::size_t>(folders.size(), 2); ++i) {
        if (const auto year = bracketYear(folders[i])) return year;
    }
    return std::nullopt;
}

Source sourceOf(const std::filesystem::path& file, const ExistingTags& tags) {
    std::string base = withoutExtension(repaired(file.filename().native()));
    std::string name = withBlanks(base);
    std::vector<std::string> folders = foldersOf(file);
    std::optional<int> season;
    if (!folders.empty()) season = seasonNumber(folders.front());
    if (!season) season = tags.season;
    const auto folderYear = yearOfFolders(folders);
    return {std::move(base), std::move(name), std::move(folders),
            repaired(tags),  season,          folderYear};
}

std::optional<int> yearOf(const std::string& show, const Source& source) {
    if (const auto year = bracketYear(show)) return year;
    return source.folderYear ? source.folderYear : source.tags.year;
}

std::string folderShow(const Source& source) {
    return showFromFolders(source.folders, source.tags);
}

Parse episodeOf(const std::string& show, std::optional<int> year, int season, int episode,
                std::optional<std::string> title) {
    Guess guess;
    guess.kind = MediaKind::tv;
    guess.title = stripYear(show);
    guess.year = year;
    guess.season = season;
    guess.episode = episode;
    guess.episodeTitle = std::move(title);
    return {std::move(guess), false, true};
}

struct Numbering {
    std::size_t start = 0;
    std::size_t end = 0;
    int season = 0;
    int episode = 0;
};

/// "S02E05", else "2x05". Digits of another alphabet are no numbers here.
std::optional<Numbering> explicitNumbering(const std::string& name) {
    static const std::array<Regex, 2> patterns{
        Regex(R"((?i)\b[sS](\d{1,2})[ ._-]?[eE](\d{1,3})\b)"),
        Regex(R"((?i)\b(\d{1,2})x(\d{2,3})\b)")};
    for (const Regex& pattern : patterns) {
        const auto match = pattern.firstMatch(name);
        if (!match) continue;
        const auto season = Text::integer(match->groups[0]);
        const auto episode = Text::integer(match->groups[1]);
        if (season && episode) return Numbering{match->start, match->end, *season, *episode};
    }
    return std::nullopt;
}

/// "Show S02E05 Title", "Show 2x05".
Result explicitRule(const Source& source) {
    const auto found = explicitNumbering(source.name);
    if (!found) return std::nullopt;
    std::string show = clean(std::string_view(source.name).substr(0, found->start));
    if (show.empty()) show = folderShow(source);
    if (show.empty()) return none();
    // The year of the tags is left out here, and only here, on purpose: numbering this plain is
    // taken at its word, with nothing added from elsewhere.
    auto year = bracketYear(show);
    if (!year) year = source.folderYear;
    return episodeOf(show, year, found->season, found->episode,
                     meaningful(clean(std::string_view(source.name).substr(found->end))));
}

/// "2-07 Title" in a folder of season 2.
Result seasonAndEpisodeRule(const Source& source) {
    static const Regex pattern(R"(^\s*(\d{1,2})\s*-\s*(\d{2,3})(?:\s*[-._)]\s*|\s+)(.*)$)");
    if (!source.season) return std::nullopt;
    const auto match = pattern.firstMatch(source.name);
    if (!match || Text::integer(match->groups[0]) != source.season) return std::nullopt;
    const auto episode = Text::integer(match->groups[1]);
    const std::string show = folderShow(source);
    if (!episode || show.empty()) return std::nullopt;
    return episodeOf(show, yearOf(show, source), *source.season, *episode,
                     meaningful(clean(match->groups[2])));
}

/// A number this large at the place of an episode is a year.
constexpr int firstYear = 1900;

/// "07 Title", "E07 - Title", "Episode 7 Title".
Result leadingNumberRule(const Source& source) {
    static const Regex pattern(R"(^\s*(?:E|Ep\.?|Episode\s*)?(\d{1,3})(?:\s*[-._)]\s*|\s+)(.*)$)");
    if (!source.season) return std::nullopt;
    const auto match = pattern.firstMatch(source.name);
    if (!match) return std::nullopt;
    const auto episode = Text::integer(match->groups[0]);
    if (!episode || *episode >= firstYear) return std::nullopt;
    const std::string show = folderShow(source);
    if (show.empty()) return none();
    return episodeOf(show, yearOf(show, source), *source.season, *episode,
                     meaningful(clean(match->groups[1])));
}

/// "show ep13": what follows is as often a remark as a title, so it is left alone.
Result episodeWordRule(const Source& source) {
    static const Regex pattern(R"((?i)\b(?:ep|episode)[ ._-]?(\d{1,3})\b)");
    if (!source.season) return std::nullopt;
    const auto match = pattern.firstMatch(source.name);
    if (!match) return std::nullopt;
    const auto episode = Text::integer(match->groups[0]);
    if (!episode) return std::nullopt;
    std::string show = clean(std::string_view(source.name).substr(0, match->start));
    if (show.empty()) show = folderShow(source);
    if (show.empty()) return none();
    return episodeOf(show, yearOf(show, source), *source.season, *episode, std::nullopt);
}

/// "Show - 07 - Title".
Result middleNumberRule(const Source& source) {
    static const Regex pattern(R"(^(.+?)\s*[-._]\s*(\d{1,3})\s*[-._]\s*(.+)$)");
    if (!source.season) return std::nullopt;
    const auto match = pattern.firstMatch(source.name);
    if (!match) return std::nullopt;
    const auto episode = Text::integer(match->groups[1]);
    const std::string show = clean(match->groups[0]);
    if (!episode || *episode >= firstYear || show.empty()) return std::nullopt;
    return episodeOf(show, yearOf(show, source), *source.season, *episode,
                     meaningful(clean(match->groups[2])));
}

/// Whether 106 may mean season 1, episode 6: it is no year and no round hundred.
bool isCompactNumber(int number) {
    constexpr int lastYear = 2027;
    const bool year = number >= firstYear && number <= lastYear;
    return !year && number >= 100 && number % 100 != 0;
}

/// "Show 106 Title". It may as well be a film, so that reading goes along.
Result compactRule(const Source& source) {
    static const Regex pattern(R"(^(.+?)[ ._-]+(\d{3,4})(?:[ ._-]+(.+))?$)");
    const auto match = pattern.firstMatch(source.name);
    if (!match) return std::nullopt;
    const auto number = Text::integer(match->groups[1]);
    if (!number || !isCompactNumber(*number)) return std::nullopt;
    TitleYear film = splitYear(clean(source.name));
    const std::string show = clean(match->groups[0]);
    if (film.year || show.empty()) return std::nullopt;
    Parse parse = episodeOf(show, std::nullopt, *number / 100, *number % 100,
                            meaningful(clean(match->groups[2])));
    parse.guess->compact = true;
    parse.guess->movieTitle = std::move(film.title);
    parse.confident = false;
    return parse;
}

/// The file says itself which episode it is.
Result tagsRule(const Source& source) {
    const ExistingTags& tags = source.tags;
    if (!tags.show || !tags.season || !tags.episode) return std::nullopt;
    Parse parse = episodeOf({}, tags.year, *tags.season, *tags.episode, tags.title);
    parse.guess->title = *tags.show;
    return parse;
}

/// Sets how far a film's name can be trusted: a scene release only by the year in it.
void judge(Parse& parse, const Source& source) {
    static const Regex bracketed(R"([\(\[][^\)\]]*[\)\]])");
    const std::vector<std::string> words = tokens(bracketed.replaceAll(source.name, " "));
    const auto junk = std::count_if(words.begin(), words.end(), [](const std::string& word) {
        return junkTokens.contains(word);
    });
    const auto separators = std::count_if(source.base.begin(), source.base.end(),
                                          [](char c) { return c == '.' || c == '_'; });
    const bool dotted = !Text::contains(source.base, " ") && separators >= 2;
    parse.messy = junk >= 2 || dotted;
    parse.confident = !parse.messy || parse.guess->year.has_value();
}

Result filmRule(const Source& source) {
    std::string text = clean(source.name);
    if (text.empty() && !source.folders.empty()) text = clean(source.folders.front());
    auto [title, year] = splitYear(text);
    if (!year) year = source.folderYear;
    if (!year) year = source.tags.year;
    if (title.empty()) return none();
    Parse parse;
    parse.guess.emplace();
    parse.guess->kind = MediaKind::movie;
    parse.guess->title = std::move(title);
    parse.guess->year = year;
    judge(parse, source);
    return parse;
}

/// In order; the first that gives a result ends the reading. The film rule always gives one.
constexpr std::array rules{
    explicitRule,     seasonAndEpisodeRule, leadingNumberRule, episodeWordRule,
    middleNumberRule, compactRule,          tagsRule,          filmRule};

}  // namespace

Parse parse(const std::filesystem::path& file, const ExistingTags& tags) {
    const Source source = sourceOf(file, tags);
    for (const auto rule : rules) {
        if (Result result = rule(source)) return *std::move(result);
    }
    return none();
}

std::optional<int> nameYear(std::string_view fileName) {
    return splitYear(clean(withBlanks(withoutExtension(repaired(fileName))))).year;
}

}  // namespace marlet::FilenameRules
