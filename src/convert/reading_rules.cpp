#include "convert/reading_rules.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "convert/code_points.h"

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

bool isLetter(char32_t point) {
    return u_isalpha(static_cast<UChar32>(point)) != 0;
}
bool startsWithLetter(std::string_view text) {
    const std::u32string points = codePointsOf(text.substr(0, 4));
    return !points.empty() && isLetter(points.front());
}
bool endsWithLetter(std::string_view text) {
    const std::u32string points = codePointsOf(text);
    return !points.empty() && isLetter(points.back());
}

bool isAlone(std::string_view text, std::size_t at, std::string_view word) {
    return word == "OÖ" && !startsWithLetter(text.substr(at + word.size()));
}

/// One letter read as two, the second with its accent ("UÜber"). Within a word both may be meant
/// ("CREÉIS"), and alone (OÖ is Upper Austria).
void dropDoubledAccents(std::string& text) {
    constexpr std::pair<std::string_view, std::string_view> doubled[] = {
        {"AÄ", "Ä"}, {"OÖ", "Ö"}, {"UÜ", "Ü"}, {"AÀ", "À"}, {"EÉ", "É"},
        {"AÁ", "Á"}, {"OÓ", "Ó"}, {"UÚ", "Ú"}, {"IÍ", "Í"}};
    for (const auto& [from, to] : doubled)
        for (std::size_t at = text.find(from); at != std::string::npos;
             at = text.find(from, at + 1))
            if (!endsWithLetter(std::string_view(text).substr(0, at)) && !isAlone(text, at, from))
                text.replace(at, from.size(), to);
}

/// What stands behind a Roman number: the end of an ordinal ("IIème siècle", "IInd"), or a letter
/// that counts on ("Phase IIb"). French "IIs" is "Ils".
bool isNumberEnd(std::u32string_view letters) {
    constexpr std::array<std::u32string_view, 5> ends{U"ème", U"eme", U"nd", U"nde", U"de"};
    return (letters.size() == 1 && letters != U"s") ||
           std::ranges::find(ends, letters) != ends.end();
}

/// "IIsa": an l read as an I, where it can't be a Roman number.
void mendDoubledI(std::string& text) {
    for (std::size_t at = text.find("II"); at != std::string::npos; at = text.find("II", at + 1)) {
        if (endsWithLetter(std::string_view(text).substr(0, at))) continue;
        std::u32string letters = codePointsOf(std::string_view(text).substr(at + 2));
        letters.erase(std::ranges::find_if_not(letters, isLetter), letters.end());
        if (letters.empty() || letters.front() < U'a' || letters.front() > U'z') continue;
        if (!isNumberEnd(letters)) text[at + 1] = 'l';
    }
}

/// Dots side by side from here on.
std::size_t dotsAt(const std::string& text, std::size_t at) {
    return std::min(text.find_first_not_of('.', at), text.size()) - at;
}

/// Three dots and more, with blanks between single ones. A full stop or an ellipsis ahead of an
/// ellipsis is not part of it ("Well... ...maybe").
void joinDots(std::string& text) {
    for (std::size_t at = text.find('.'); at != std::string::npos; at = text.find('.', at)) {
        std::size_t dots = dotsAt(text, at);
        std::size_t end = at + dots;
        const bool isWhole = dots > 2;
        while (!isWhole) {
            const std::size_t next = std::min(text.find_first_not_of(' ', end), text.size());
            const std::size_t more = dotsAt(text, next);
            if (more == 0 || more > 2) break;
            dots += more;
            end = next + more;
        }
        if (dots > 2) {
            text.replace(at, end - at, "...");
            end = at + 3;
        }
        at = end;
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
