#pragma once

#include <string>
#include <vector>

#include "convert/picture_lines.h"
#include "convert/text_recogniser.h"

namespace marlet {

/// Mends the words of one line by the shapes of their letters, where a word has as many letters as
/// the picture has shapes: an I and an l by their height, accents that were overlooked, blanks and
/// dots of an ellipsis that were lost. A letter is only ever changed to one of its own shape.
class GlyphRules {
public:
    struct Word {
        std::u32string letters;
        std::vector<Glyph> glyphs;  ///< one a letter, or what was found
        bool isMatched = false;     ///< one a letter
        int capital = 1;
    };
    static Word match(const TextRecogniser::Word& read, std::vector<Glyph> glyphs, int capital);

    explicit GlyphRules(const GrayPicture& ink) : ink_(ink) {}
    /// Learns how high capitals and ascenders are in this line.
    void learn(const Word& word);
    /// Learns how far apart two words are.
    void learnGap(const Word& before, const Word& word);
    /// UTF-8; may hold a blank.
    std::string mended(const Word& word) const;

private:
    char32_t barLetter(const Word& word, std::size_t at) const;
    bool hasGapBefore(const Word& word, std::size_t at) const;

    const GrayPicture& ink_;
    std::vector<int> capitals_;   // heights
    std::vector<int> ascenders_;  // heights
    std::vector<int> gaps_;       // between words
};

}  // namespace marlet
