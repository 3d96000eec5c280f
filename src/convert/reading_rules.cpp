#include "convert/reading_rules.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace marlet::ReadingRules {

namespace {

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

/// The engine knows two forms of what subtitles nearly always write in one.
void plainMarks(std::string& text) {
    replaceAll(text, "’", "'");
    // The end of a quote that opened below the line (‚Nein‘).
    if (text.find("‚") == std::string::npos) replaceAll(text, "‘", "'");
    replaceAll(text, "…", "...");
    replaceAll(text, "''", "\"");
}

/// German has „ “ and Polish „ ”; otherwise the straight mark is the one that subtitles use.
void plainQuotes(std::string& text, const std::string& language) {
    if (text.find("„") != std::string::npos) {
        if (language == "de-DE") replaceAll(text, "”", "“");
        return;
    }
    replaceAll(text, "“", "\"");
    replaceAll(text, "”", "\"");
}

/// A comma that nothing opens ("‚Wir"), which an accent of the line leaves at its edge.
void dropStrayCommas(std::string& text) {
    const bool hasEnd = text.find('\'') != std::string::npos || text.find("‘") != std::string::npos;
    if (!hasEnd) replaceAll(text, "‚", "");
}

bool isLetter(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x80 || (value >= 'A' && value <= 'Z') || (value >= 'a' && value <= 'z');
}

/// One letter read as two, the second with its accent ("UÜber"). Within a word both may be meant
/// ("CREÉIS").
void dropDoubledAccents(std::string& text) {
    constexpr std::pair<std::string_view, std::string_view> doubled[] = {
        {"AÄ", "Ä"}, {"OÖ", "Ö"}, {"UÜ", "Ü"}, {"AÀ", "À"}, {"EÉ", "É"},
        {"AÁ", "Á"}, {"OÓ", "Ó"}, {"UÚ", "Ú"}, {"IÍ", "Í"}};
    for (const auto& [from, to] : doubled)
        for (std::size_t at = text.find(from); at != std::string::npos;
             at = text.find(from, at + 1))
            if (at == 0 || !isLetter(text[at - 1])) text.replace(at, from.size(), to);
}

/// What makes an ordinal of a Roman number ("IIe siècle", "IInd").
bool isOrdinalEnd(std::string_view letters) {
    constexpr std::array<std::string_view, 10> ends{"e",   "è", "ème", "eme", "nd",
                                                    "nde", "d", "de",  "o",   "a"};
    return std::ranges::find(ends, letters) != ends.end();
}

/// "IIsa": of a small letter only the end of an ordinal stands behind a Roman number.
void mendDoubledI(std::string& text) {
    for (std::size_t at = text.find("II"); at != std::string::npos; at = text.find("II", at + 1)) {
        const bool isStart = at == 0 || text[at - 1] == ' ' || text[at - 1] == '"';
        const std::size_t next = at + 2;
        if (!isStart || next >= text.size() || text[next] < 'a' || text[next] > 'z') continue;
        std::size_t end = next;
        while (end < text.size() && isLetter(text[end])) end++;
        if (!isOrdinalEnd(std::string_view(text).substr(next, end - next))) text[at + 1] = 'l';
    }
}

/// Three dots and more, with blanks between some.
void joinDots(std::string& text) {
    for (std::size_t at = text.find('.'); at != std::string::npos; at = text.find('.', at + 1)) {
        std::size_t end = at;
        std::size_t dots = 0;
        for (std::size_t next = at; next < text.size() && (text[next] == '.' || text[next] == ' ');
             next++) {
            if (text[next] != '.') continue;
            dots++;
            end = next + 1;
        }
        if (dots < 3) continue;
        text.replace(at, end - at, "...");
        at += 2;
    }
}

}  // namespace

std::string mend(const std::string& line, const std::string& language) {
    // Their marks are their own, and none of the letters below is theirs.
    if (language == "zh-Hans" || language == "ja-JP") return line;
    std::string text = line;
    plainMarks(text);
    plainQuotes(text, language);
    dropStrayCommas(text);
    dropDoubledAccents(text);
    mendDoubledI(text);
    joinDots(text);
    return text;
}

}  // namespace marlet::ReadingRules
