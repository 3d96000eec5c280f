#include "foundation/tool_output.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marlet {

namespace {

std::vector<double> progressOf(const std::vector<std::string>& chunks) {
    std::vector<double> seen;
    ToolOutput output([&](double done) { seen.push_back(done); });
    for (const std::string& chunk : chunks) output.take(chunk);
    return seen;
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string out;
    for (std::size_t i = 0; i < times; ++i) out += text;
    return out;
}

}  // namespace

TEST(ToolOutput, AMarkIsItsPartOfAHundred) {
    EXPECT_EQ(progressOf({"Writing: |=== | (37/100)\r"}), std::vector<double>{0.37});
}

TEST(ToolOutput, OfTwoMarksInAChunkTheFirstCounts) {
    EXPECT_EQ(progressOf({"(12/100)\r(37/100)\r"}), std::vector<double>{0.12});
}

TEST(ToolOutput, AMarkAboveTheWholeIsTheWhole) {
    EXPECT_EQ(progressOf({"(250/100)"}), std::vector<double>{1.0});
}

TEST(ToolOutput, AMarkOfMoreDigitsThanANumberHoldsIsTheWhole) {
    EXPECT_EQ(progressOf({"(" + repeated("9", 400) + "/100)"}), std::vector<double>{1.0});
}

TEST(ToolOutput, EachChunkReportsOnceAndAChunkWithoutAMarkNothing) {
    EXPECT_EQ(progressOf({"(0/100)", "no mark", "(7/10)", "(/100)", "7/100", "(100/100)"}),
              (std::vector<double>{0.0, 1.0}));
}

TEST(ToolOutput, AMarkThatIsCutBetweenTwoChunksIsNone) {
    EXPECT_TRUE(progressOf({"(37", "/100)"}).empty());
}

TEST(ToolOutput, AChunkThatIsNotUtf8AsAWholeIsDroppedAndNotSearched) {
    ToolOutput output;
    output.take("before ");
    output.take("caf\xC3");  // cut in the middle of a character
    output.take("\xA9 after");
    output.take("good");
    EXPECT_EQ(output.tail(), "before good");
    EXPECT_TRUE(progressOf({"(37/100) \xFF"}).empty());
}

TEST(ToolOutput, OnlyTheLastTwoThousandCharactersAreKept) {
    ToolOutput output;
    for (int i = 0; i < 30; ++i) output.take(repeated("0123456789", 10));
    EXPECT_EQ(output.tail().size(), 2000U);
    output.take("the end");
    EXPECT_EQ(output.tail().size(), 2000U);
    EXPECT_TRUE(output.tail().ends_with("789the end"));
}

TEST(ToolOutput, CharactersAreCountedNotBytesAndNoneIsCut) {
    ToolOutput output;
    output.take(repeated("é", 1500));
    output.take(repeated("𝄞", 1500));
    EXPECT_EQ(output.tail(), repeated("é", 500) + repeated("𝄞", 1500));
}

TEST(ToolOutput, MarksThatPileUpOnOneLetterKeepTheTailFlatToo) {
    ToolOutput output;
    output.take("a");
    for (int i = 0; i < 50; ++i) output.take(repeated("\u0301", 1000));
    EXPECT_EQ(output.tail(), repeated("\u0301", 2000));
}

TEST(ToolOutput, ProgressIsReportedOutsideTheLock) {
    ToolOutput* itself = nullptr;
    std::string seen;
    ToolOutput output([&](double) { seen = itself->tail(); });
    itself = &output;
    output.take("(5/100)");
    EXPECT_EQ(seen, "(5/100)");
}

TEST(ToolOutput, TheLastCharactersOfAShortTextAreAllOfIt) {
    EXPECT_EQ(ToolOutput::lastCharacters("héé", 9), "héé");
    EXPECT_EQ(ToolOutput::lastCharacters("héé", 2), "éé");
    EXPECT_EQ(ToolOutput::lastCharacters("héé", 0), "");
    EXPECT_EQ(ToolOutput::lastCharacters("", 3), "");
}

}  // namespace marlet
