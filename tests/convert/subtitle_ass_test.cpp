#include <gtest/gtest.h>

#include "convert/subtitle_text.h"

namespace marlet::test {
namespace {

std::string plain(const std::string& text) {
    return SubtitleText::assText("0,0,Default,,0,0,0,," + text);
}

TEST(AssText, LosesItsOverridesAndKeepsItsLines) {
    EXPECT_EQ(plain("{\\an8\\i1}Hello\\Nworld"), "Hello\nworld");
    EXPECT_EQ(plain("one\\ntwo\\hthree"), "one\ntwo three");
    EXPECT_EQ(plain("{a}{b}x{c{d}y}"), "xy}");
    EXPECT_EQ(plain("a {unclosed"), "a {unclosed");
    EXPECT_EQ(plain(""), "");
}

TEST(AssText, KeepsItsCommas) {
    EXPECT_EQ(plain("Well, yes, but"), "Well, yes, but");
}

TEST(AssText, OfADrawingIsEmpty) {
    EXPECT_EQ(plain("{\\p1}m 0 0 l 100 0 100 100{\\p0}"), "");
    EXPECT_EQ(plain("{\\p2\\bord0}m 0 0"), "");
    EXPECT_EQ(plain("{\\p4}m 0 0"), "") << "of any scale";
    EXPECT_EQ(plain("x{\\p1"), "");
    EXPECT_EQ(plain("{\\an7\\pos(0,0)\\p1}m 0 0 l 9 9"), "") << "behind other overrides";
}

TEST(AssText, WithAPositionIsNoDrawing) {
    EXPECT_EQ(plain("{\\pos(320,50)}Sign"), "Sign");
    EXPECT_EQ(plain("{\\p0}Sign"), "Sign");
    EXPECT_EQ(plain("C:\\p1"), "C:\\p1") << "no override";
}

TEST(AssText, WithTooFewFieldsStaysAsItIs) {
    EXPECT_EQ(SubtitleText::assText("Just, {\\i1}text\\N"), "Just, {\\i1}text\\N");
    EXPECT_EQ(SubtitleText::assText("1,2,3,4,5,6,7,8"), "1,2,3,4,5,6,7,8");
    EXPECT_EQ(SubtitleText::assText("1,2,3,4,5,6,7,8,9"), "9");
    EXPECT_EQ(SubtitleText::assText(""), "");
}

TEST(AssText, OfManyOpenBracesIsReadInOnePass) {
    const std::string braces(1'000'000, '{');
    EXPECT_EQ(plain(braces), braces);
}

}  // namespace
}  // namespace marlet::test
