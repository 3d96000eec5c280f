// Words and lone glyphs make a line in the order in which it is read.

#include "convert/line_text.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

using RecognitionLanguages::Script;

TEST(LineText, OfWordsHasBlanksBetweenThem) {
    EXPECT_EQ(lineText({{"I", 10}, {"know", 30}, {"you.", 90}}, {}, Script::latin), "I know you.");
    EXPECT_EQ(lineText({}, {}, Script::latin), "");
}

TEST(LineText, HasLoneGlyphsWhereTheyStand) {
    EXPECT_EQ(
        lineText({{"Down", 30}, {"here", 90}}, {{"♪", 10, 20}, {"♪", 150, 160}}, Script::latin),
        "♪ Down here ♪");
    EXPECT_EQ(lineText({{"If", 10}, {"were", 60}}, {{"I", 40, 44}}, Script::latin), "If I were");
    EXPECT_EQ(lineText({}, {{"♪", 10, 20}}, Script::latin), "♪");
}

TEST(LineText, OfArabicBeginsAtTheRight) {
    EXPECT_EQ(lineText({{"أين", 200}, {"أنت", 100}}, {}, Script::arabic), "أين أنت");
    EXPECT_EQ(
        lineText({{"أين", 200}, {"أنت", 100}}, {{"♪", 10, 20}, {"♪", 300, 310}}, Script::arabic),
        "♪ أين أنت ♪");
}

TEST(LineText, OfAsianLettersHasBlanksWhereTheEngineSawThem) {
    EXPECT_EQ(lineText({{"你", 10}, {"好", 50}}, {}, Script::asian), "你好");
    EXPECT_EQ(lineText({{"어디", 10}, {.text = "있어", .left = 90, .hasBlankBefore = true}}, {},
                       Script::asian),
              "어디 있어");
    EXPECT_EQ(lineText({{"你", 30}, {"好", 50}}, {{"♪", 10, 20}}, Script::asian), "♪ 你好");
}

}  // namespace
}  // namespace marlet::test
