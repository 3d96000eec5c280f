#include "foundation/languages.h"

#include <algorithm>
#include <string_view>

#include "foundation/icu_text.h"
#include "foundation/text.h"

namespace marlet::Lang {

namespace {

struct Row {
    std::vector<std::string> codes;  ///< the first of three letters is the canonical one
    std::string name;
};

const std::vector<Row>& rows() {
    static const std::vector<Row> table{
        {{"eng", "en"}, "English"},
        {{"fre", "fra", "fr"}, "French"},
        {{"ger", "deu", "de"}, "German"},
        {{"spa", "es"}, "Spanish"},
        {{"ita", "it"}, "Italian"},
        {{"por", "pt"}, "Portuguese"},
        {{"jpn", "ja"}, "Japanese"},
        {{"kor", "ko"}, "Korean"},
        {{"chi", "zho", "zh"}, "Chinese"},
        {{"rus", "ru"}, "Russian"},
        {{"dut", "nld", "nl"}, "Dutch"},
        {{"swe", "sv"}, "Swedish"},
        {{"nor", "no", "nob"}, "Norwegian"},
        {{"dan", "da"}, "Danish"},
        {{"fin", "fi"}, "Finnish"},
        {{"pol", "pl"}, "Polish"},
        {{"tur", "tr"}, "Turkish"},
        {{"ara", "ar"}, "Arabic"},
        {{"heb", "he"}, "Hebrew"},
        {{"hin", "hi"}, "Hindi"},
        {{"cze", "ces", "cs"}, "Czech"},
        {{"hun", "hu"}, "Hungarian"},
        {{"gre", "ell", "el"}, "Greek"},
        {{"tha", "th"}, "Thai"},
        {{"ukr", "uk"}, "Ukrainian"},
        {{"vie", "vi"}, "Vietnamese"},
        {{"und"}, "Unknown"},
    };
    return table;
}

/// What a language calls itself, as track names have it.
constexpr std::string_view nativeWords[] = {
    "francais",  "français",   "espanol", "español", "deutsch", "italiano", "portugues",
    "português", "nederlands", "svenska", "norsk",   "dansk",   "suomi",    "polski",
    "turkce",    "türkçe",     "русский", "日本語",  "한국어",  "中文"};

constexpr std::string_view formatWords[] = {"srt",  "ass",       "ssa",     "pgs",  "bd",
                                            "sub",  "subrip",    "vobsub",  "utf8", "utf-8",
                                            "text", "subtitles", "subtitle"};

constexpr std::size_t codeLength = 3;

/// All words in one pattern: no word can come to stand out of the rest of another, since both its
/// ends are word boundaries.
std::string wordPattern() {
    std::string pattern;
    const auto add = [&](std::string_view word) {
        pattern += pattern.empty() ? "\\b(?:" : "|";
        pattern.append("\\Q").append(word).append("\\E");
    };
    for (const std::string_view word : formatWords) add(word);
    for (const Row& row : rows()) {
        add(row.name);
        for (const std::string& code : row.codes)
            if (code.size() == codeLength) add(code);
    }
    for (const std::string_view word : nativeWords) add(word);
    return pattern + ")\\b";
}

std::string withoutKnownWords(const std::string& name) {
    static const Regex words(wordPattern(), Regex::Case::Insensitive);
    static const Regex edges("^[\\s\\-–:·|/()\\[\\]]+|[\\s\\-–:·|/()\\[\\]]+$");
    return edges.replaceAll(words.replaceAll(name, ""), "");
}

bool isForTheHardOfHearing(const std::string& lowered) {
    return lowered == "cc" || Text::contains(lowered, "sdh") ||
           Text::contains(lowered, "hearing") || Text::contains(lowered, "closed caption");
}

std::string upper(std::string_view text) {
    return IcuText::utf8(IcuText::utf16(text).toUpper(icu::Locale::getRoot()));
}

}  // namespace

std::optional<std::string> code(const std::string& text) {
    std::string wanted = Text::lower(Text::trim(text));
    if (wanted.empty()) return std::nullopt;
    for (const Row& row : rows()) {
        const bool isCode =
            std::find(row.codes.begin(), row.codes.end(), wanted) != row.codes.end();
        if (!isCode && wanted != Text::lower(row.name)) continue;
        return *std::find_if(row.codes.begin(), row.codes.end(), [](const std::string& candidate) {
            return candidate.size() == codeLength;
        });
    }
    if (Text::characterCount(wanted) == codeLength) return wanted;
    return std::nullopt;
}

std::string name(const std::string& code) {
    const std::string wanted = Text::lower(code);
    for (const Row& row : rows())
        if (std::find(row.codes.begin(), row.codes.end(), wanted) != row.codes.end())
            return row.name;
    return upper(code);
}

bool same(const std::string& a, const std::string& b) {
    return code(a).value_or(a) == code(b).value_or(b);
}

std::string firstPart(const std::string& tag) {
    return tag.substr(0, tag.find('-'));
}

std::vector<std::string> parseList(const std::string& text) {
    std::string even = text;
    for (const std::string_view divider : {";", "/"}) even = Text::replaceAll(even, divider, ",");
    std::vector<std::string> codes;
    for (const std::string& piece : Text::words(even, ','))
        if (auto found = code(piece)) codes.push_back(*std::move(found));
    return codes;
}

std::optional<std::string> descriptor(const std::optional<std::string>& name,
                                      const std::string& /*language*/) {
    if (!name || Text::trim(*name).empty()) return std::nullopt;
    std::string rest = withoutKnownWords(*name);
    const std::string lowered = Text::lower(rest);
    if (lowered.empty()) return std::nullopt;
    if (isForTheHardOfHearing(lowered)) return "SDH (for the hard of hearing)";
    // Forced tracks are told apart by other means than a label.
    if (Text::contains(lowered, "forced") || Text::contains(lowered, "foreign"))
        return std::nullopt;
    return rest;
}

}  // namespace marlet::Lang
