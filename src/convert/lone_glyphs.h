#pragma once

#include <string>
#include <vector>

#include "convert/picture_lines.h"

namespace marlet {

/// Signs that the engine doesn't know or can't tell from others, and that their shape tells for
/// certain: a music note at either end of a line, and a bar that stands alone, which is an I.
struct LoneGlyph {
    std::string text;
    double left = 0;  ///< in pixels of the line's picture
    double right = 0;
};

/// Takes them out of the line's picture and its glyphs. `isLatin`: the letters are such that a bar
/// is an I.
std::vector<LoneGlyph> takeLoneGlyphs(const GrayPicture& ink, PictureLine& line, bool isLatin);

/// A straight upright stroke of a letter's height, and nothing else.
bool isBar(const Glyph& glyph, int capital);

}  // namespace marlet
