#pragma once

#include <string>
#include <vector>

#include "convert/lone_glyphs.h"
#include "convert/recognition_languages.h"

namespace marlet {

/// A word of a line, as it was read and mended.
struct LineWord {
    std::string text;
    double left = 0;  ///< in pixels of the line's picture
    bool hasBlankBefore = false;
};

/// The text of a line: its words, which come in the order in which they are read, with the lone
/// glyphs where they stand among them.
std::string lineText(const std::vector<LineWord>& words, const std::vector<LoneGlyph>& lone,
                     RecognitionLanguages::Script script);

}  // namespace marlet
