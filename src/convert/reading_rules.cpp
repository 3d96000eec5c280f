#include "convert/reading_rules.h"

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
    replaceAll(text, "‘", "'");
    replaceAll(text, "…", "...");
    replaceAll(text, "''", "\"");
}

/// German has „ “; elsewhere the straight mark is the one that subtitles use.
void plainQuotes(std::string& text, const std::string& language) {
    if (language == "de-DE" && text.find("„") != std::string::npos) return;
    replaceAll(text, "“", "\"");
    replaceAll(text, "”", "\"");
}

/// A comma that nothing opens ("‚Wir"), which an accent of the line leaves at its edge.
void dropStrayCommas(std::string& text) {
    if (text.find('\'') == std::string::npos) replaceAll(text, "‚", "");
}

/// One letter read as two, the second with its accent ("UÜber").
void dropDoubledAccents(std::string& text) {
    constexpr std::pair<std::string_view, std::string_view> doubled[] = {
        {"AÄ", "Ä"}, {"OÖ", "Ö"}, {"UÜ", "Ü"}, {"AÀ", "À"}, {"EÉ", "É"},
        {"AÁ", "Á"}, {"OÓ", "Ó"}, {"UÚ", "Ú"}, {"IÍ", "Í"}};
    for (const auto& [from, to] : doubled) replaceAll(text, from, to);
}

/// "IIsa": two capitals of a Roman number never stand ahead of a small letter.
void mendDoubledI(std::string& text) {
    for (std::size_t at = text.find("II"); at != std::string::npos; at = text.find("II", at + 1)) {
        const bool isStart = at == 0 || text[at - 1] == ' ' || text[at - 1] == '"';
        if (isStart && at + 2 < text.size() && text[at + 2] >= 'a' && text[at + 2] <= 'z')
            text[at + 1] = 'l';
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
