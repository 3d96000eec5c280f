#pragma once

#include <vector>

#include "convert/ink_parts.h"
#include "convert/text_recogniser.h"

namespace marlet {

/// What stands in a line above one stretch of its baseline: a letter with its accents mostly.
struct Glyph {
    InkPart box;                 ///< in pixels of the ink, like its parts
    std::vector<InkPart> parts;  ///< the largest first
    double left = 0;             ///< in pixels of the line's own picture
    double right = 0;
};

/// A line of letters as the engine reads it best: dark on light, capitals of one height.
struct PictureLine {
    GrayPicture picture;
    std::vector<Glyph> glyphs;  ///< from left to right
    int capital = 1;            ///< about the height of a capital, in pixels of the ink
};

/// The lines of letters, the top one first; `ink` is 255 where letters are. None of a picture that
/// falls into more lines than a screen has.
std::vector<PictureLine> linesOf(const GrayPicture& ink);

/// Takes a glyph that stands alone out of the line's picture. It stays among the glyphs.
void erase(PictureLine& line, const Glyph& glyph);

}  // namespace marlet
