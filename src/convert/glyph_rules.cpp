#include "convert/glyph_rules.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "convert/code_points.h"
#include "convert/lone_glyphs.h"

namespace marlet {

namespace {

constexpr std::u32string_view flatCapitals = U"BDEFHKLMNPRTXYZ";
constexpr std::u32string_view straightAscenders = U"bdhk";
/// What the engine takes a bar for.
constexpr std::u32string_view bars = U"Il1|!][iíìït";

/// How many shapes a character has that don't stand one above the other; 0: it depends.
std::size_t shapesOf(char32_t letter) {
    switch (letter) {
        case U'"':
        case U'“':
        case U'”':
        case U'„':
        case U'«':
        case U'»':
            return 2;
        case U'…':
            return 3;
        case U'%':
            return 0;
        default:
            return 1;
    }
}

bool isDigit(char32_t letter) {
    return letter >= U'0' && letter <= U'9';
}

/// Beside a digit, or a mark with one on its other side ("7:15").
bool isInNumber(const std::u32string& letters, std::size_t at) {
    const auto isDigitAt = [&](std::size_t i) { return i < letters.size() && isDigit(letters[i]); };
    if (isDigitAt(at + 1) || (at > 0 && isDigitAt(at - 1))) return true;
    const auto isMark = [](char32_t letter) {
        return letter == U':' || letter == U'.' || letter == U',';
    };
    return (at > 1 && isMark(letters[at - 1]) && isDigitAt(at - 2)) ||
           (at + 2 < letters.size() && isMark(letters[at + 1]) && isDigitAt(at + 2));
}

int middle(std::vector<int> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

bool isDot(const Glyph& glyph, int capital) {
    const InkPart& box = glyph.box;
    return glyph.parts.size() == 1 && box.height() * 3 < capital && box.width() * 3 < capital &&
           std::abs(box.width() - box.height()) * 4 <= box.height() + 4;
}

/// So many dots in a row at one height, at the end or at the beginning.
std::size_t dotsAt(const std::vector<Glyph>& glyphs, int capital, bool isEnd) {
    std::size_t dots = 0;
    while (dots < glyphs.size()) {
        const Glyph& next = isEnd ? glyphs[glyphs.size() - 1 - dots] : glyphs[dots];
        const Glyph& last = isEnd ? glyphs.back() : glyphs.front();
        if (!isDot(next, capital) ||
            std::abs(next.box.bottom - last.box.bottom) > last.box.height() / 2)
            break;
        dots++;
    }
    return dots;
}

/// 1 for a stroke that rises to the right, -1 for one that falls, 0 for any other.
int leanOf(const GrayPicture& ink, const InkPart& part) {
    const auto centre = [&](int from, int to) {
        double sum = 0;
        double pixels = 0;
        for (int y = from; y < to; y++) {
            for (int x = part.left; x < part.right; x++) {
                if (ink.at(x, y) < 128) continue;
                sum += x;
                pixels++;
            }
        }
        return pixels > 0 ? sum / pixels : 0;
    };
    const int third = std::max(part.height() / 3, 1);
    const double lean =
        centre(part.top, part.top + third) - centre(part.bottom - third, part.bottom);
    if (lean * 4 > part.width()) return 1;
    return lean * 4 < -part.width() ? -1 : 0;
}

/// An accent lost: what stands above the letter tells which.
char32_t withAccent(const GrayPicture& ink, char32_t letter, const Glyph& glyph) {
    static constexpr std::size_t capitals = 5;
    static constexpr std::u32string_view plain = U"AEIOUaeou";
    static constexpr std::u32string_view dotted = U"ÄËÏÖÜäëöü";
    static constexpr std::u32string_view acute = U"ÁÉÍÓÚáéóú";
    static constexpr std::u32string_view grave = U"ÀÈÌÒÙ";
    // Two dots are told from one stroke by their number, so that a stroke may be mended, too.
    std::size_t at = plain.find(letter);
    if (at == plain.npos) at = acute.find(letter);
    if (at == plain.npos) return letter;
    const InkPart& base = glyph.parts.front();
    std::vector<InkPart> above;
    for (std::size_t i = 1; i < glyph.parts.size(); i++) {
        const InkPart& part = glyph.parts[i];
        if (part.bottom > base.top + base.height() / 8 || part.pixels * 10 > base.pixels * 6)
            return letter;
        above.push_back(part);
    }
    if (above.size() == 2) {
        const bool areSideBySide =
            above[0].right <= above[1].left || above[1].right <= above[0].left;
        const bool areAlike = std::abs(above[0].top - above[1].top) * 4 <= above[0].height() + 4;
        return areSideBySide && areAlike ? dotted[at] : letter;
    }
    // One stroke: only where the engine saw none, over a capital, which it has less room for.
    if (above.size() != 1 || plain[at] != letter || at >= capitals) return letter;
    const int lean = leanOf(ink, above.front());
    return lean > 0 ? acute[at] : lean < 0 ? grave[at] : letter;
}

}  // namespace

GlyphRules::Word GlyphRules::match(const TextRecogniser::Word& read, std::vector<Glyph> glyphs,
                                   int capital) {
    Word word{.letters = codePointsOf(read.text), .glyphs = std::move(glyphs), .capital = capital};
    std::size_t shapes = 0;
    bool isCertain = true;
    std::vector<Glyph> first;  // of each letter
    for (const char32_t letter : word.letters) {
        const std::size_t own = shapesOf(letter);
        isCertain = isCertain && own > 0;
        if (shapes < word.glyphs.size()) {
            first.push_back(word.glyphs[shapes]);
            // A quotation mark ends where its second stroke does.
            first.back().box.right =
                word.glyphs[std::min(shapes + std::max<std::size_t>(own, 1), word.glyphs.size()) -
                            1]
                    .box.right;
        }
        shapes += own;
    }
    word.isMatched = isCertain && shapes == word.glyphs.size() && !word.letters.empty();
    if (word.isMatched) word.glyphs = std::move(first);
    return word;
}

void GlyphRules::learn(const Word& word) {
    if (!word.isMatched) return;
    for (std::size_t i = 0; i < word.letters.size(); i++) {
        if (word.glyphs[i].parts.size() != 1) continue;
        if (flatCapitals.find(word.letters[i]) != flatCapitals.npos)
            capitals_.push_back(word.glyphs[i].box.height());
        if (straightAscenders.find(word.letters[i]) != straightAscenders.npos)
            ascenders_.push_back(word.glyphs[i].box.height());
    }
}

void GlyphRules::learnGap(const Word& before, const Word& word) {
    if (before.glyphs.empty() || word.glyphs.empty()) return;
    gaps_.push_back(word.glyphs.front().box.left - before.glyphs.back().box.right);
}

/// An I is as high as capitals are, an l as b, d, h and k. Where the line doesn't tell, or both are
/// the same in its typeface, the engine's word stands. So does a 1 of a number, which is a bar in
/// some typefaces.
char32_t GlyphRules::barLetter(const Word& word, std::size_t at) const {
    const char32_t read = word.letters[at];
    if (read == U'1' && isInNumber(word.letters, at)) return read;
    // Within a word the engine knows better, but of III it makes lll.
    const bool isSure = read == U'I' || read == U'l';
    if (isSure && at > 0 && word.letters.find_first_not_of(bars) != word.letters.npos) return read;
    if (capitals_.empty() || ascenders_.empty()) return read;
    const int capital = middle(capitals_);
    const int ascender = middle(ascenders_);
    if ((ascender - capital) * 100 < capital * 3) return read;
    const int toCapital = std::abs(word.glyphs[at].box.height() - capital);
    const int toAscender = std::abs(word.glyphs[at].box.height() - ascender);
    if (toCapital + 1 < toAscender) return U'I';
    if (toAscender + 1 < toCapital) return U'l';
    return read;
}

bool GlyphRules::hasGapBefore(const Word& word, std::size_t at) const {
    // Digits and marks stand apart by themselves.
    if (u_isalpha(static_cast<UChar32>(word.letters[at])) == 0 ||
        u_isalpha(static_cast<UChar32>(word.letters[at - 1])) == 0)
        return false;
    const int gap = word.glyphs[at].box.left - word.glyphs[at - 1].box.right;
    return gap * 100 > word.capital * 42 && (gaps_.empty() || gap * 100 > middle(gaps_) * 70);
}

std::string GlyphRules::mended(const Word& word) const {
    std::u32string text = word.letters;
    if (word.isMatched) {
        std::u32string made;
        for (std::size_t i = 0; i < text.size(); i++) {
            const Glyph& glyph = word.glyphs[i];
            if (i > 0 && hasGapBefore(word, i)) made += U' ';
            char32_t letter = text[i];
            if (bars.find(letter) != bars.npos && isBar(glyph, word.capital)) {
                letter = barLetter(word, i);
            } else if (glyph.parts.size() == 2 || glyph.parts.size() == 3) {
                letter = withAccent(ink_, letter, glyph);
            }
            made += letter;
        }
        text = std::move(made);
    }
    // Three dots are read as one or two, now and then.
    if (dotsAt(word.glyphs, word.capital, true) == 3 && !text.ends_with(U"...") &&
        text.ends_with(U'.')) {
        while (text.ends_with(U'.')) text.pop_back();
        text += U"...";
    }
    if (dotsAt(word.glyphs, word.capital, false) == 3 && !text.starts_with(U"...") &&
        text.starts_with(U'.') && text.size() > 3) {
        text.erase(0, text.find_first_not_of(U'.'));
        text.insert(0, U"...");
    }
    return utf8Of(text);
}

}  // namespace marlet
