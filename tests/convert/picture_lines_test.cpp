// Ink falls into parts and lines, and what has no letter's shape does no harm.

#include "convert/picture_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/lone_glyphs.h"
#include "convert/picture_ink.h"

namespace marlet::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

GrayPicture empty(int width, int height) {
    GrayPicture ink{.width = width, .height = height};
    ink.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    return ink;
}
void fill(GrayPicture& ink, int left, int top, int width, int height) {
    for (int y = top; y < top + height; y++)
        for (int x = left; x < left + width; x++) ink.at(x, y) = 255;
}
/// Rows of squares, which do for letters.
GrayPicture rowsOf(const std::vector<int>& tops, int height = 40) {
    GrayPicture ink = empty(400, 1000);
    for (const int top : tops)
        for (int i = 0; i < 5; i++) fill(ink, 10 + 60 * i, top, 40, height);
    return ink;
}
/// Drawn row by row: "#" is ink, each character a square of so many pixels.
GrayPicture drawn(const std::vector<std::string>& rows, int scale) {
    GrayPicture ink =
        empty(static_cast<int>(rows[0].size()) * scale, static_cast<int>(rows.size()) * scale);
    for (std::size_t y = 0; y < rows.size(); y++)
        for (std::size_t x = 0; x < rows[y].size(); x++)
            if (rows[y][x] == '#')
                fill(ink, static_cast<int>(x) * scale, static_cast<int>(y) * scale, scale, scale);
    return ink;
}
const std::vector<std::string> eighthNote{"...#.", "...##", "...##", "...#.", "...#.",
                                          "...#.", ".###.", "####.", "###.."};

TEST(InkParts, ArePixelsThatTouchAlsoAtTheirCorners) {
    EXPECT_THAT(partsOf(drawn({"#.#", ".#.", "#.#"}, 3)), SizeIs(1));
    EXPECT_THAT(partsOf(drawn({"#.#", "#.#", "###"}, 3)), SizeIs(1)) << "they meet at the bottom";
    EXPECT_THAT(partsOf(drawn({"###", "..#", "#.#", "#.#", "###"}, 3)), SizeIs(1));
    EXPECT_THAT(partsOf(drawn({"#.#.#", "#.#.#", "#.#.#", "#.###", "###.."}, 3)), SizeIs(1));
    EXPECT_THAT(partsOf(drawn({"#.#", "#.#", "#.#"}, 3)), SizeIs(2));
    EXPECT_THAT(partsOf(drawn({"###", "...", "###"}, 3)), SizeIs(2));
}

TEST(InkParts, KnowTheirBoxAndTheirInk) {
    const auto parts = partsOf(drawn({"....", ".##.", ".#..", "...."}, 5));
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_EQ(parts[0].left, 5);
    EXPECT_EQ(parts[0].top, 5);
    EXPECT_EQ(parts[0].right, 15);
    EXPECT_EQ(parts[0].bottom, 15);
    EXPECT_EQ(parts[0].pixels, 75);
}

TEST(InkParts, OfEightPixelsAreSpecks) {
    GrayPicture ink = empty(20, 20);
    fill(ink, 2, 2, 4, 2);
    EXPECT_THAT(partsOf(ink), IsEmpty());
    ink.at(6, 2) = 255;
    EXPECT_THAT(partsOf(ink), SizeIs(1));
}

TEST(InkParts, ReachTheEdgesOfThePicture) {
    GrayPicture ink = empty(20, 20);
    fill(ink, 0, 0, 20, 20);
    const auto parts = partsOf(ink);
    ASSERT_THAT(parts, SizeIs(1));
    EXPECT_EQ(parts[0].pixels, 400);
    EXPECT_EQ(parts[0].right, 20);
    EXPECT_EQ(parts[0].bottom, 20);
}

TEST(InkParts, OfANoteAreToldFromThoseOfLetters) {
    const auto isNoteDrawn = [](const std::vector<std::string>& rows) {
        const GrayPicture ink = drawn(rows, 4);
        return isNote(ink, partsOf(ink).at(0));
    };
    EXPECT_TRUE(isNoteDrawn(eighthNote));
    EXPECT_FALSE(isNoteDrawn({"...#.", "...#.", "...#.", ".###.", "#..#.", "#..#.", ".###."}))
        << "a d has no flag";
    EXPECT_FALSE(isNoteDrawn({"#..", "#..", "#..", "#..", "#..", "#..", "###"})) << "an L";
    EXPECT_FALSE(isNoteDrawn({"#", "#", "#", "#", "#", "#"})) << "a bar";
}

TEST(PictureLines, AreFromTopToBottom) {
    EXPECT_THAT(linesOf(rowsOf({100})), SizeIs(1));
    const auto lines = linesOf(rowsOf({100, 200, 300}));
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(lines[0].glyphs.front().box.top, 100);
    EXPECT_EQ(lines[2].glyphs.front().box.top, 300);
    EXPECT_THAT(lines[0].glyphs, SizeIs(5));
}

TEST(PictureLines, OfAnEmptyPictureAreNone) {
    EXPECT_THAT(linesOf({}), IsEmpty());
    EXPECT_THAT(linesOf(empty(1, 1)), IsEmpty());
    EXPECT_THAT(linesOf(empty(300, 100)), IsEmpty());
    GrayPicture pixel = empty(1, 1);
    pixel.at(0, 0) = 255;
    EXPECT_THAT(linesOf(pixel), IsEmpty()) << "a speck";
}

TEST(PictureLines, HoldAccentsAndDotsOfTheirLetters) {
    GrayPicture ink = rowsOf({100, 200});
    fill(ink, 15, 84, 10, 10);   // above the first line
    fill(ink, 15, 184, 10, 10);  // above the second, as near to the first
    fill(ink, 70, 244, 10, 10);  // below the second
    const auto lines = linesOf(ink);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_THAT(lines[0].glyphs.front().parts, SizeIs(2));
    EXPECT_THAT(lines[1].glyphs.front().parts, SizeIs(2));
    EXPECT_EQ(lines[1].glyphs.front().box.top, 184);
    EXPECT_EQ(lines[1].glyphs.at(1).box.bottom, 254);
}

TEST(PictureLines, WhoseRowsOverlapAreCutWhereThereIsLeastInk) {
    GrayPicture ink = rowsOf({100, 150});
    fill(ink, 340, 100, 40, 40);
    fill(ink, 356, 140, 4, 12);  // a stem down to beside the letters below
    const auto lines = linesOf(ink);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_THAT(lines[0].glyphs, SizeIs(6));
    EXPECT_THAT(lines[1].glyphs, SizeIs(5));
}

TEST(PictureLines, OfNothingButDashesAreNone) {
    for (const int height : {2, 3, 9, 30}) {
        GrayPicture ink = empty(300, 100);
        fill(ink, 40, 40, 200, height);
        EXPECT_THAT(linesOf(ink), IsEmpty()) << height;
    }
    GrayPicture two = empty(300, 100);
    fill(two, 40, 20, 60, 8);
    fill(two, 40, 70, 60, 8);
    EXPECT_THAT(linesOf(two), IsEmpty());
}

TEST(PictureLines, OfWideWordsAloneAreThere) {
    GrayPicture ink = empty(300, 100);
    fill(ink, 40, 60, 200, 6);
    for (int x = 40; x < 240; x += 40) fill(ink, x, 30, 6, 30);
    EXPECT_THAT(linesOf(ink), SizeIs(1)) << "all in one part, as Arabic has it";
}

TEST(PictureLines, KeepTheDashesOfSpeakers) {
    GrayPicture ink = rowsOf({100, 200});
    fill(ink, 320, 118, 24, 5);
    fill(ink, 320, 218, 24, 5);
    const auto lines = linesOf(ink);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_THAT(lines[0].glyphs, SizeIs(6));
}

TEST(PictureLines, HaveCapitalsOfThirtyPixelsAndLightAroundThem) {
    const auto lines = linesOf(rowsOf({100}, 60));
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].capital, 60);
    EXPECT_EQ(lines[0].picture.height, 30 + 20);
    EXPECT_EQ(lines[0].picture.width, 280 / 2 + 20);
    EXPECT_EQ(lines[0].picture.at(0, 0), 255);
    EXPECT_EQ(lines[0].picture.at(12, 20), 0);
    EXPECT_EQ(linesOf(rowsOf({100}, 20)).at(0).picture.height, 20 + 20) << "never made larger";
}

TEST(PictureLines, OfMoreLinesThanAScreenHasAreNone) {
    GrayPicture ink = empty(100, 2000);
    for (int y = 0; y < 2000; y += 4) fill(ink, 0, y, 100, 2);
    EXPECT_THAT(linesOf(ink), IsEmpty());
    GrayPicture solid = empty(500, 2000);
    fill(solid, 0, 0, 12, 2000);
    for (int y = 0; y < 2000; y += 8)
        for (int x = 20; x < 500; x += 8) fill(solid, x, y, 6, 6);
    EXPECT_THAT(linesOf(solid), SizeIs(testing::Le(40U)));
}

TEST(PictureLines, LongerThanAnyLineOfTextAreLeftOut) {
    GrayPicture ink = empty(6000, 60);
    for (int x = 0; x < 6000; x += 12) fill(ink, x, 20, 8, 10);
    EXPECT_THAT(linesOf(ink), IsEmpty());
}

TEST(PictureLines, OfFullInkAreOne) {
    GrayPicture ink = empty(500, 300);
    fill(ink, 0, 0, 500, 300);
    EXPECT_THAT(linesOf(ink), SizeIs(1));
}

struct Lone {
    std::vector<std::string> taken;
    std::size_t left = 0;
};
Lone loneOf(const GrayPicture& ink, bool isLatin = true) {
    std::vector<PictureLine> lines = linesOf(ink);
    Lone lone;
    for (const LoneGlyph& each : takeLoneGlyphs(ink, lines.at(0), isLatin))
        lone.taken.push_back(each.text);
    lone.left = lines.at(0).glyphs.size();
    return lone;
}
/// Three squares, a bar and three squares more, the bar so far from its neighbours.
GrayPicture barAmongSquares(int before, int behind, int width = 6, int height = 40) {
    GrayPicture ink = empty(600, 100);
    for (int i = 0; i < 3; i++) fill(ink, 10 + 48 * i, 30, 40, 40);
    const int at = 10 + 48 * 2 + 40 + before;
    fill(ink, at, 70 - height, width, height);
    for (int i = 0; i < 3; i++) fill(ink, at + width + behind + 48 * i, 30, 40, 40);
    return ink;
}

TEST(LoneGlyphs, ABarWithBlanksAroundItIsAnI) {
    const Lone lone = loneOf(barAmongSquares(30, 30));
    EXPECT_THAT(lone.taken, testing::ElementsAre("I"));
    EXPECT_EQ(lone.left, 6U);
}

TEST(LoneGlyphs, ABarInOrAtAWordStays) {
    EXPECT_THAT(loneOf(barAmongSquares(8, 8)).taken, IsEmpty());
    EXPECT_THAT(loneOf(barAmongSquares(30, 8)).taken, IsEmpty()) << "l'eau, I'll, Ich";
    EXPECT_THAT(loneOf(barAmongSquares(8, 30)).taken, IsEmpty()) << "all";
}

TEST(LoneGlyphs, ABarOfOtherThanLatinLettersStays) {
    EXPECT_THAT(loneOf(barAmongSquares(30, 30), false).taken, IsEmpty());
}

TEST(LoneGlyphs, WhatIsTooWideTooLowOrTooHighIsNoBar) {
    EXPECT_THAT(loneOf(barAmongSquares(30, 30, 20)).taken, IsEmpty());
    EXPECT_THAT(loneOf(barAmongSquares(30, 30, 6, 20)).taken, IsEmpty());
    EXPECT_THAT(loneOf(barAmongSquares(30, 30, 6, 60)).taken, IsEmpty()) << "a | that is meant";
}

TEST(LoneGlyphs, ADashOfASpeakerStays) {
    GrayPicture ink = barAmongSquares(8, 8);
    for (std::size_t i = 0; i < ink.pixels.size(); i += 600)
        std::fill_n(ink.pixels.begin() + static_cast<std::ptrdiff_t>(i), 45, 0);
    fill(ink, 4, 50, 14, 5);
    EXPECT_THAT(loneOf(ink).taken, IsEmpty());
}

TEST(LoneGlyphs, ANoteAtEitherEndIsTakenAndWithinTheLineStays) {
    const GrayPicture note = drawn(eighthNote, 4);
    const auto with = [&](int at) {
        GrayPicture ink = empty(600, 100);
        for (int i = 0; i < 3; i++) fill(ink, 100 + 48 * i, 34, 40, 36);
        for (int i = 0; i < 3; i++) fill(ink, 320 + 48 * i, 34, 40, 36);
        for (int y = 0; y < note.height; y++)
            for (int x = 0; x < note.width; x++) ink.at(at + x, 34 + y) = note.at(x, y);
        return ink;
    };
    EXPECT_THAT(loneOf(with(20)).taken, testing::ElementsAre("♪"));
    EXPECT_THAT(loneOf(with(500)).taken, testing::ElementsAre("♪"));
    EXPECT_THAT(loneOf(with(270)).taken, IsEmpty());
    EXPECT_THAT(loneOf(with(20), false).taken, testing::ElementsAre("♪"));
}

PGSOCR::Image imageOf(int width, int height, std::uint8_t value) {
    return {.width = width,
            .height = height,
            .rgba = Bytes(static_cast<std::size_t>(width * height) * 4, value)};
}

TEST(PictureInk, OfPicturesOfOnePixelAndOfNoneIsAsLarge) {
    EXPECT_THAT(inkOf({}).pixels, IsEmpty());
    EXPECT_THAT(inkOf(imageOf(1, 1, 255)).pixels, SizeIs(1));
    EXPECT_THAT(inkOf(imageOf(1, 1, 0)).pixels, testing::ElementsAre(0));
    EXPECT_THAT(inkOf(imageOf(40, 3, 255)).pixels, SizeIs(120));
}

}  // namespace
}  // namespace marlet::test
