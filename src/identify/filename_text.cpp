// The part of FilenameRules that works on pieces of a name: cleaning, years, bare words.
#include <algorithm>

#include "foundation/text.h"
#include "identify/filename_rules.h"

namespace marlet::FilenameRules {

const std::set<std::string, std::less<>> editionTokens{
    "final",      "extended", "unrated",   "remastered",  "imax",
    "theatrical", "uncut",    "directors", "director",    "cut",
    "special",    "edition",  "restored",  "anniversary", "version"};

const std::set<std::string, std::less<>> junkTokens = [] {
    std::set<std::string, std::less<>> all{
        "1080p",     "720p",  "480p",   "576p",   "2160p",  "4k",    "uhd",   "hdr",      "hdr10",
        "hdr10plus", "dv",    "hd",     "sd",     "bluray", "bdrip", "brrip", "webrip",   "web",
        "dl",        "webdl", "hdtv",   "dvdrip", "bd",     "x264",  "x265",  "h264",     "h265",
        "hevc",      "avc",   "10bit",  "aac",    "ac3",    "dts",   "ddp",   "dd",       "atmos",
        "truehd",    "remux", "proper", "repack", "yify",   "yts",   "rarbg", "internal", "multi",
        "dual",      "hq",    "mkv",    "mp4",    "m4v",    "mov"};
    all.insert(editionTokens.begin(), editionTokens.end());
    return all;
}();

namespace {

// What a pattern can't match without is looked for first: most names lack most of it, and a look
// through the bytes costs a fraction of a search.

bool hasOneOf(std::string_view text, std::string_view characters) {
    return text.find_first_of(characters) != std::string_view::npos;
}

/// Whether `\d` could match: an ASCII digit, or any byte of another alphabet.
bool mayHaveDigit(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (static_cast<unsigned char>(c) & 0x80) != 0;
    });
}

/// "(1080p HD)", "[BluRay x264]".
std::string withoutQualityBrackets(std::string text) {
    static const Regex pattern(
        R"([\(\[]\s*(?:\d{3,4}p|4K|UHD|HD|HDR|BluRay|WEB[- ]?DL|WEBRip|x26[45]|HEVC)[^\)\]]*[\)\]])",
        Regex::Case::Insensitive);
    return hasOneOf(text, "([") ? pattern.replaceAll(text, " ") : text;
}

/// "DDP5.1": the digits of a sound format must never be read as numbers.
std::string withoutAudioTags(std::string text) {
    static const Regex pattern(
        R"((?i)\b(?:dd|ddp|dts|aac|ac3|eac3|truehd|atmos)[ ._-]?[257][ ._]?[01]\b)");
    return hasOneOf(text, "257") && hasOneOf(text, "01") ? pattern.replaceAll(text, " ") : text;
}

/// Undoes the way a colon reaches a file name: "2001_ A Space Odyssey", "3_10 to Yuma".
std::string withColonsBack(std::string text) {
    static const Regex betweenDigits(R"((?<=\d)_(?=\d))");
    if (!Text::contains(text, " ") || !Text::contains(text, "_")) return text;
    text = Text::replaceAll(std::move(text), "_ ", ": ");
    if (Text::contains(text, "_")) text = betweenDigits.replaceAll(text, ":");
    return Text::replaceAll(std::move(text), "_", " ");
}

/// From the first quality word to the end, everything goes.
std::string withoutQualityTail(std::string text) {
    static const Regex pattern(
        R"((?i)(?:^|\s)(?:\d{3,4}p|4K|UHD|HDR10?|BluRay|BDRip|BRRip|WEB[- ]?DL|WEBRip|HDTV|DVDRip)"
        R"(|x26[45]|h[ .]?26[45]|HEVC|REMUX|PROPER|REPACK)(?:\s|$).*$)");
    return pattern.replaceAll(text, " ");
}

const Regex& bracketedYear() {
    static const Regex pattern(R"([\(\[]((?:19|20)\d{2})[\)\]])");
    return pattern;
}

/// A year that may stand bare in a name: 1900 to 2029. 2049 stays in the title.
std::optional<int> bareYear(std::string_view word) {
    static const Regex pattern(R"(^(?:19\d\d|20[0-2]\d)$)");
    if (!word.starts_with("19") && !word.starts_with("20")) return std::nullopt;
    return pattern.matchesIn(word) ? Text::integer(word) : std::nullopt;
}

bool isEdition(std::string_view word) {
    return editionTokens.contains(Text::lower(word));
}

/// Never cuts a title down to one word: "Uncut Gems" and "Final Cut" are films.
std::string dropTrailingEdition(std::string_view text) {
    std::vector<std::string> words = Text::words(text);
    while (words.size() >= 3 && isEdition(words.back())) words.pop_back();
    return Text::join(words, " ");
}

}  // namespace

std::string clean(std::string_view piece) {
    std::string text = withoutQualityBrackets(std::string(piece));
    text = withoutAudioTags(std::move(text));
    text = withColonsBack(std::move(text));
    text = withoutQualityTail(std::move(text));
    return Text::trim(Text::collapseSpace(text), "-.:");
}

TitleYear splitYear(std::string_view whole) {
    std::string text(whole);
    if (const auto match = bracketedYear().firstMatch(text)) {
        const auto year = Text::integer(match->groups[0]);
        if (year) {
            text.replace(match->start, match->end - match->start, " ");
            text = Text::trim(Text::collapseSpace(text));
            if (!text.empty()) return {dropTrailingEdition(text), year};
        }
    }
    // From the last word down to the second: a title can begin with a year, or be one.
    std::vector<std::string> words = Text::words(text);
    for (std::size_t i = words.size(); i-- > 1;) {
        if (const auto year = bareYear(words[i])) {
            words.resize(i);
            return {Text::join(words, " "), year};
        }
        if (!isEdition(words[i])) break;
    }
    return {text, std::nullopt};
}

std::string stripYear(std::string_view text) {
    static const Regex pattern(R"(\s*[\(\[]?\b(19|20)\d{2}\b[\)\]]?\s*$)");
    if (!mayHaveDigit(text)) return Text::trim(text);
    const std::string left = pattern.replaceAll(text, "");
    return left.empty() ? std::string(text) : Text::trim(left);
}

std::optional<int> bracketYear(std::string_view text) {
    if (!hasOneOf(text, "([")) return std::nullopt;
    const auto match = bracketedYear().firstMatch(text);
    return match ? Text::integer(match->groups[0]) : std::nullopt;
}

std::optional<int> seasonNumber(std::string_view folder) {
    static const Regex pattern(R"((?i)^\s*(?:season|series|s)\s*0*(\d{1,2})\s*$)");
    if (!mayHaveDigit(folder)) return std::nullopt;
    const auto match = pattern.firstMatch(folder);
    return match ? Text::integer(match->groups[0]) : std::nullopt;
}

std::string showFromFolders(const std::vector<std::string>& folders, const ExistingTags& tags) {
    if (tags.show && !tags.show->empty()) return *tags.show;
    if (folders.size() < 2) return {};
    return clean(seasonNumber(folders[0]) ? folders[1] : folders[0]);
}

std::vector<std::string> tokens(std::string_view text) {
    static const Regex numbering(
        R"(\bs\d{1,2}\s?e\d{1,3}\b|\b\d{1,2}x\d{2,3}\b|\b(?:ep|episode|e)\s?\d{1,3}\b)");
    static const Regex audio(
        R"(\b(?:dd|ddp|dts|aac|ac3|eac3|truehd|atmos)[ ._-]?[257][ ._]?[01]\b)");
    static const Regex avc(R"(\bh[ ._-]?26([45])\b)");
    std::string bare = Text::fold(text);
    if (mayHaveDigit(bare)) bare = numbering.replaceAll(bare, " ");
    if (hasOneOf(bare, "257") && hasOneOf(bare, "01")) bare = audio.replaceAll(bare, " ");
    if (Text::contains(bare, "26")) bare = avc.replaceAll(bare, "h26$1");
    for (char& c : bare) {
        const bool kept = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        if (!kept) c = ' ';
    }
    return Text::words(bare);
}

std::optional<std::string> meaningful(std::string_view text) {
    const std::vector<std::string> all = tokens(text);
    const bool says = std::any_of(
        all.begin(), all.end(), [](const std::string& word) { return !junkTokens.contains(word); });
    return says ? std::optional(std::string(text)) : std::nullopt;
}

}  // namespace marlet::FilenameRules
