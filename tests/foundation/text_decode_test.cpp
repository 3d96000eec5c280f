#include <gtest/gtest.h>

#include <string>

#include "foundation/text.h"

namespace marlet::test {
namespace {

using namespace std::string_literals;

std::string decoded(const std::string& bytes) {
    return Text::decodeFile(viewOf(bytes));
}

TEST(TextFile, OfUtf8StaysAsItIs) {
    EXPECT_EQ(decoded("Käse – 日本"), "Käse – 日本");
    EXPECT_EQ(decoded(""), "");
}

TEST(TextFile, LosesItsByteOrderMark) {
    EXPECT_EQ(decoded("\xEF\xBB\xBFKäse"), "Käse");
    EXPECT_EQ(decoded("\xEF\xBB\xBF"), "");
}

TEST(TextFile, OfUtf16IsReadInTheOrderThatItsMarkTells) {
    EXPECT_EQ(decoded("\xFF\xFEK\0\xE4\0"s), "Kä");
    EXPECT_EQ(decoded("\xFE\xFF\0K\0\xE4"s), "Kä");
    EXPECT_EQ(decoded("\xFF\xFE\x3D\xD8\x00\xDE"s), "😀");
    EXPECT_EQ(decoded("\xFF\xFE"), "");
}

TEST(TextFile, OfCutUtf16GivesWhatCanBeRead) {
    EXPECT_EQ(decoded("\xFF\xFEK\0\xE4"s).substr(0, 1), "K");
    EXPECT_EQ(decoded("\xFF\xFEK\0\x3D\xD8L\0"s), "K\uFFFDL");
}

TEST(TextFile, OfOtherBytesIsWindows1252) {
    EXPECT_EQ(decoded("K\xE4se \x80 \x93quoted\x94"), "Käse € “quoted”");
    EXPECT_EQ(decoded("\xEF\xBB\xBFK\xE4se"), "Käse") << "a mark before other bytes";
}

TEST(Text, ALetterAndItsMarkAreOnePieceWhenComposed) {
    EXPECT_EQ(Text::compose("Ame\u0301lie"), "Amélie");
    EXPECT_EQ(Text::compose("Amélie"), "Amélie");
    EXPECT_EQ(Text::compose("plain"), "plain");
}

}  // namespace
}  // namespace marlet::test
