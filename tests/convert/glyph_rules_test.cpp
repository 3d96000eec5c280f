// Letters are mended by their shapes, to letters of the same shape only.

#include "convert/glyph_rules.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

constexpr int capital = 100;
constexpr int ascender = 110;
constexpr int small = 72;
constexpr int baseline = 200;

/// A line of shapes side by side, drawn as full rectangles.
class ShapedLine {
public:
    ShapedLine() : ink_{.width = 2000, .height = 300} {
        ink_.pixels.resize(static_cast<std::size_t>(ink_.width) *
                           static_cast<std::size_t>(ink_.height));
    }

    /// A shape of its own on the baseline, as far from the last one as letters are.
    ShapedLine& shape(int width, int height, int gap = 8) {
        at_ += gap;
        const InkPart part = draw(at_, baseline - height, width, height);
        glyphs_.push_back({.box = part, .parts = {part}});
        at_ += width;
        return *this;
    }
    ShapedLine& bar(int height, int gap = 8) { return shape(16, height, gap); }
    /// Of so little ink that it isn't straight.
    ShapedLine& slanted(int height) {
        shape(20, height);
        glyphs_.back().box.pixels /= 2;
        return *this;
    }
    ShapedLine& letters(int count, int height = small) {
        for (int i = 0; i < count; i++) shape(60, height);
        return *this;
    }
    ShapedLine& dots(int count) {
        for (int i = 0; i < count; i++) shape(14, 14, 20);
        return *this;
    }
    /// Something above the last shape; it leans by so many pixels a row.
    ShapedLine& above(int left, int width, int height, int lean = 0) {
        Glyph& glyph = glyphs_.back();
        const InkPart& base = glyph.parts.front();
        const int top = base.top - height - 8;
        InkPart part{.left = base.left + left,
                     .top = top,
                     .right = base.left + left + width + std::abs(lean) * height,
                     .bottom = top + height,
                     .pixels = width * height};
        for (int y = 0; y < height; y++) {
            const int shift = lean > 0 ? (height - 1 - y) * lean : -y * lean;
            for (int x = 0; x < width; x++) ink_.at(part.left + shift + x, top + y) = 255;
        }
        glyph.box.top = std::min(glyph.box.top, top);
        glyph.parts.push_back(part);
        return *this;
    }

    /// What becomes of the shapes when this was read; with `isKnown` the line tells how high its
    /// capitals and ascenders are.
    std::string mended(const std::string& read, int ascenders = ascender, bool isKnown = true) {
        GlyphRules rules(ink_);
        if (isKnown) {
            ShapedLine other;
            rules.learn(other.shape(60, capital).shape(60, ascenders).word("Hd"));
        }
        return rules.mended(word(read));
    }

private:
    GlyphRules::Word word(const std::string& read) const {
        return GlyphRules::match({.text = read}, glyphs_, capital);
    }
    InkPart draw(int left, int top, int width, int height) {
        for (int y = top; y < top + height; y++)
            for (int x = left; x < left + width; x++) ink_.at(x, y) = 255;
        return {.left = left,
                .top = top,
                .right = left + width,
                .bottom = top + height,
                .pixels = width * height};
    }

    GrayPicture ink_;
    std::vector<Glyph> glyphs_;
    int at_ = 50;
};

TEST(GlyphRules, ABarAsHighAsACapitalAtTheStartIsAnI) {
    for (const std::string read : {"lch", "1ch", "]ch", "[ch", "!ch", "|ch", "Ich"})
        EXPECT_EQ(ShapedLine().bar(capital).letters(2).mended(read), "Ich") << read;
    EXPECT_EQ(ShapedLine().bar(capital).shape(12, 30).bar(ascender).bar(ascender).mended("l'll"),
              "I'll");
    EXPECT_EQ(ShapedLine().bar(capital).letters(1).mended("ls"), "Is");
}

TEST(GlyphRules, ABarAsHighAsAnAscenderAtTheStartIsAnL) {
    EXPECT_EQ(ShapedLine().bar(ascender).letters(3).mended("Iove"), "love");
    EXPECT_EQ(ShapedLine().bar(ascender).shape(12, 30).letters(3).mended("I'eau"), "l'eau");
    EXPECT_EQ(ShapedLine().bar(ascender).shape(12, 30).letters(3).mended("l'eau"), "l'eau");
}

TEST(GlyphRules, WithinAWordABarReadAsAMarkIsMendedAndALetterStays) {
    EXPECT_EQ(ShapedLine().letters(2).bar(ascender).letters(1).mended("he1p"), "help");
    EXPECT_EQ(ShapedLine().letters(2).bar(ascender).letters(1).mended("he]p"), "help");
    EXPECT_EQ(ShapedLine().letters(2).bar(capital).letters(1).mended("help"), "help");
    EXPECT_EQ(ShapedLine().letters(1, capital).bar(capital).letters(1).mended("McI"), "McI")
        << "no bar at the end";
}

TEST(GlyphRules, BarsOfARomanNumberAreCapitals) {
    EXPECT_EQ(ShapedLine().bar(capital).bar(capital).bar(capital).mended("lll"), "III");
    EXPECT_EQ(ShapedLine().bar(capital).bar(capital).mended("Il"), "II");
    EXPECT_EQ(ShapedLine().bar(capital).bar(ascender).bar(ascender).mended("III"), "Ill");
    EXPECT_EQ(ShapedLine().letters(1, capital).bar(capital).bar(capital).mended("VII"), "VII");
}

TEST(GlyphRules, AOneOfANumberStaysEvenWhereItIsABar) {
    EXPECT_EQ(ShapedLine().bar(capital).letters(3, capital).mended("1980"), "1980");
    EXPECT_EQ(ShapedLine().bar(capital).bar(capital).mended("11"), "11");
    EXPECT_EQ(ShapedLine().letters(1, capital).shape(12, 60).bar(capital).mended("7:1"), "7:1");
    EXPECT_EQ(ShapedLine().bar(capital).dots(1).letters(1, capital).mended("1.5"), "1.5");
}

TEST(GlyphRules, WhatIsNoBarStays) {
    EXPECT_EQ(ShapedLine().slanted(capital).letters(2).mended("lch"), "lch") << "italic";
    EXPECT_EQ(ShapedLine().letters(1, capital).letters(2).mended("1ch"), "1ch") << "wide";
    EXPECT_EQ(ShapedLine().bar(capital / 2).letters(2).mended("1ch"), "1ch") << "low";
    EXPECT_EQ(ShapedLine().bar(2 * capital).letters(2).mended("]ch"), "]ch") << "high";
}

TEST(GlyphRules, BarsOfALineThatTellsNoHeightsStay) {
    EXPECT_EQ(ShapedLine().bar(capital).letters(2).mended("lch", ascender, false), "lch");
    EXPECT_EQ(ShapedLine().bar(capital).letters(2).mended("lch", capital), "lch")
        << "both are as high in this typeface";
    EXPECT_EQ(ShapedLine().bar((capital + ascender) / 2).letters(2).mended("lch"), "lch")
        << "between the two";
}

TEST(GlyphRules, AWordOfOtherThanItsLettersShapesStays) {
    EXPECT_EQ(ShapedLine().bar(capital).letters(3).mended("lch"), "lch");
    EXPECT_EQ(ShapedLine().bar(capital).mended("lch"), "lch");
    EXPECT_EQ(ShapedLine().mended("lch"), "lch");
    EXPECT_EQ(ShapedLine().bar(capital).letters(2).mended(""), "");
}

TEST(GlyphRules, TwoDotsAboveAVowelAreRead) {
    const auto dotted = [](int height) {
        return ShapedLine().letters(1, height).above(10, 12, 12).above(36, 12, 12).letters(1);
    };
    EXPECT_EQ(dotted(capital).mended("Ub"), "Üb");
    EXPECT_EQ(dotted(small).mended("on"), "ön");
    EXPECT_EQ(dotted(small).mended("ón"), "ön") << "one stroke was read";
    EXPECT_EQ(dotted(small).mended("nn"), "nn") << "no vowel";
    EXPECT_EQ(dotted(small).mended("ön"), "ön");
}

TEST(GlyphRules, AStrokeAboveACapitalIsReadAsItLeans) {
    const auto stroked = [](int height, int lean) {
        return ShapedLine().letters(1, height).above(10, 10, 14, lean).letters(1);
    };
    EXPECT_EQ(stroked(capital, 2).mended("Et"), "Ét");
    EXPECT_EQ(stroked(capital, -2).mended("Et"), "Èt");
    EXPECT_EQ(stroked(capital, 0).mended("Et"), "Et") << "neither";
    EXPECT_EQ(stroked(capital, 2).mended("Èt"), "Èt") << "the engine saw one";
    EXPECT_EQ(stroked(small, 2).mended("et"), "et") << "it is good at small letters";
    EXPECT_EQ(stroked(capital, 2).mended("Nt"), "Nt") << "no vowel";
}

TEST(GlyphRules, WhatStandsTooLowOrIsTooLargeIsNoAccent) {
    EXPECT_EQ(ShapedLine().letters(1, capital).above(0, 60, 80).letters(1).mended("Et"), "Et");
    EXPECT_EQ(ShapedLine()
                  .letters(1, capital)
                  .above(10, 12, 12)
                  .above(10, 40, 12)
                  .letters(1)
                  .mended("Ob"),
              "Ob")
        << "one over the other";
}

TEST(GlyphRules, AWideGapBetweenLettersIsABlank) {
    EXPECT_EQ(ShapedLine().letters(2).shape(60, small, 60).letters(1).mended("soam"), "so am");
    EXPECT_EQ(ShapedLine().letters(2).shape(60, small, 30).letters(1).mended("soam"), "soam");
    EXPECT_EQ(ShapedLine().letters(2).shape(60, capital, 60).mended("so7"), "so7");
    EXPECT_EQ(ShapedLine().letters(2, capital).shape(60, capital, 60).mended("107"), "107");
    EXPECT_EQ(ShapedLine().letters(2).shape(16, 14, 60).mended("so."), "so.");
}

TEST(GlyphRules, AnEllipsisOfThreeDotsHasThree) {
    EXPECT_EQ(ShapedLine().letters(2).dots(3).mended("so."), "so...");
    EXPECT_EQ(ShapedLine().letters(2).dots(3).mended("so.."), "so...");
    EXPECT_EQ(ShapedLine().letters(2).dots(3).mended("so..."), "so...");
    EXPECT_EQ(ShapedLine().dots(3).letters(3).mended(".and"), "...and");
}

TEST(GlyphRules, DotsThatAreNotThreeStay) {
    EXPECT_EQ(ShapedLine().letters(2).dots(1).mended("so."), "so.");
    EXPECT_EQ(ShapedLine().letters(2).dots(2).mended("so."), "so.");
    EXPECT_EQ(ShapedLine().letters(2).dots(3).mended("so"), "so") << "none was read";
    EXPECT_EQ(ShapedLine().letters(2).dots(1).mended("so..."), "so...");
    EXPECT_EQ(ShapedLine().dots(1).letters(2, capital).mended(".45"), ".45");
}

TEST(GlyphRules, AQuotationMarkHasTwoShapes) {
    EXPECT_EQ(ShapedLine().shape(10, 30).shape(10, 30).bar(capital).letters(2).mended("\"lch"),
              "\"lch")
        << "a letter behind a mark counts as within";
    EXPECT_EQ(ShapedLine().shape(10, 30).shape(10, 30).bar(capital).letters(2).mended("\"1ch"),
              "\"Ich");
    EXPECT_EQ(ShapedLine().shape(10, 30).bar(capital).letters(2).mended("\"1ch"), "\"1ch");
}

}  // namespace
}  // namespace marlet::test
