#include "convert/lone_glyphs.h"

#include <limits>

namespace marlet {

namespace {

/// How far it is to the next glyph on either side, in pixels of the ink.
int roomAround(const PictureLine& line, std::size_t i) {
    int room = std::numeric_limits<int>::max();
    if (i > 0) room = line.glyphs[i].box.left - line.glyphs[i - 1].box.right;
    if (i + 1 < line.glyphs.size())
        room = std::min(room, line.glyphs[i + 1].box.left - line.glyphs[i].box.right);
    return room;
}

}  // namespace

bool isBar(const Glyph& glyph, int capital) {
    if (glyph.parts.size() != 1) return false;
    const InkPart& box = glyph.box;
    return box.height() * 10 >= capital * 8 && box.height() * 10 <= capital * 13 &&
           box.width() * 100 <= box.height() * 30 &&
           box.pixels * 100 >= box.width() * box.height() * 88;
}

std::vector<LoneGlyph> takeLoneGlyphs(const GrayPicture& ink, PictureLine& line, bool isLatin) {
    std::vector<LoneGlyph> lone;
    std::vector<Glyph> rest;
    const std::size_t count = line.glyphs.size();
    for (std::size_t i = 0; i < count; i++) {
        const Glyph& glyph = line.glyphs[i];
        const bool isAlone = count > 1 && roomAround(line, i) * 4 > line.capital;
        const bool isWord = count > 1 && roomAround(line, i) * 100 > line.capital * 42;
        const bool isAtEnd = i == 0 || i + 1 == count;
        const char* text = nullptr;
        if (isAlone && isAtEnd && glyph.parts.size() == 1 && isNote(ink, glyph.box)) text = "♪";
        if (isWord && isLatin && isBar(glyph, line.capital)) text = "I";
        if (text == nullptr) {
            rest.push_back(glyph);
            continue;
        }
        lone.push_back({text, glyph.left, glyph.right});
        erase(line, glyph);
    }
    line.glyphs = std::move(rest);
    return lone;
}

}  // namespace marlet
