#include <gtest/gtest.h>

#include <thread>

#include "foundation/text.h"

namespace marlet {
namespace {

TEST(Regex, AMatchCarriesItsPlaceAndItsGroups) {
    const auto match = Regex(R"((\d+)x(\d+))").firstMatch("Show 2x07 end");
    ASSERT_TRUE(match);
    EXPECT_EQ(match->start, 5U);
    EXPECT_EQ(match->end, 9U);
    EXPECT_EQ(match->groups, (std::vector<std::string>{"2", "07"}));
}

TEST(Regex, PlacesAreBytesOfTheUtf8Text) {
    const std::string text = "é😀³ Amélie 7 fin";
    const auto match = Regex(R"(Am(é)lie (\d))").firstMatch(text);
    ASSERT_TRUE(match);
    EXPECT_EQ(text.substr(match->start, match->end - match->start), "Amélie 7");
    EXPECT_EQ(match->groups, (std::vector<std::string>{"é", "7"}));
}

TEST(Regex, PlacesAreRightBehindBytesThatAreNoText) {
    const std::string text = "\xFF\xE2\x82-7\xC3";
    const auto match = Regex(R"(-\d)").firstMatch(text);
    ASSERT_TRUE(match);
    EXPECT_EQ(text.substr(match->start, match->end - match->start), "-7");
}

TEST(Regex, AGroupThatTookNoPartIsEmptyAndKeepsItsPosition) {
    const auto match = Regex("(a)?(b)?(c)").firstMatch("c");
    ASSERT_TRUE(match);
    EXPECT_EQ(match->groups, (std::vector<std::string>{"", "", "c"}));
}

TEST(Regex, APatternThatDoesNotCompileMatchesNothing) {
    const Regex bad("(unclosed");
    EXPECT_FALSE(bad.firstMatch("(unclosed"));
    EXPECT_FALSE(bad.matchesIn("(unclosed"));
    EXPECT_EQ(bad.replaceAll("(unclosed", "x"), "(unclosed");
    EXPECT_EQ(bad.replaceFirst("(unclosed", "x"), "(unclosed");
}

TEST(Regex, NoMatchIsNothing) {
    EXPECT_FALSE(Regex("x").firstMatch("abc"));
    EXPECT_FALSE(Regex("x").firstMatch(""));
    EXPECT_TRUE(Regex("^$").matchesIn(""));
}

TEST(Regex, TheDialectHasLookBehindBoundariesAndInlineOptions) {
    EXPECT_EQ(Regex(R"((?<=\d)_(?=\d))").replaceAll("3_10 a_b", ":"), "3:10 a_b");
    EXPECT_TRUE(Regex(R"((?i)\bseason\b)").matchesIn("Show SEASON 2"));
    EXPECT_FALSE(Regex(R"(\bseason\b)").matchesIn("seasons"));
    EXPECT_TRUE(Regex(R"(\s)").matchesIn("a\u00A0b"));
}

TEST(Regex, CaseCanBeMadeNoDifference) {
    EXPECT_FALSE(Regex("heat").matchesIn("HEAT"));
    EXPECT_TRUE(Regex("heat", Regex::Case::Insensitive).matchesIn("HEAT"));
    EXPECT_TRUE(Regex("é", Regex::Case::Insensitive).matchesIn("É"));
}

TEST(Regex, EveryMatchIsReplacedAndGroupsCanBeNamedInTheReplacement) {
    EXPECT_EQ(Regex(R"(\bh[ .]?26([45])\b)").replaceAll("h.264 h 265 h266", "h26$1"),
              "h264 h265 h266");
    EXPECT_EQ(Regex("a").replaceAll("banana", ""), "bnn");
    EXPECT_EQ(Regex("é").replaceAll("é-é", "³"), "³-³");
    EXPECT_EQ(Regex("x").replaceAll("banana", "y"), "banana");
}

TEST(Regex, OnlyTheFirstMatchIsReplacedWhenAskedSo) {
    EXPECT_EQ(Regex(R"((?<=/)\d+x\d+(?=[A-Za-z.]))").replaceFirst("/9x9.jpg/8x8.jpg", "300x450"),
              "/300x450.jpg/8x8.jpg");
}

TEST(Regex, AMatchThatTakesTooLongCountsAsNone) {
    const Regex hostile("^(a+)+$");
    EXPECT_FALSE(hostile.firstMatch(std::string(40, 'a') + "b"));
    EXPECT_TRUE(hostile.firstMatch("aaa"));  // and the next text is matched as ever
}

TEST(Regex, TextsLongerThanAnyFileNameMatchToo) {
    const std::string text = std::string(10'000, 'x') + "7";
    const auto match = Regex(R"(\d)").firstMatch(text);
    ASSERT_TRUE(match);
    EXPECT_EQ(match->start, 10'000U);
}

TEST(Regex, ZerosInsideATextAreTextToo) {
    using namespace std::string_literals;
    EXPECT_EQ(Regex("b").replaceAll("a\0b"s, "c"), "a\0c"s);
}

TEST(Regex, OneObjectServesManyThreads) {
    const Regex pattern(R"((\d+))");
    std::vector<int> wrong(8, 0);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                const std::string number = std::to_string(t * 1000 + i);
                const auto match = pattern.firstMatch("n " + number);
                wrong[static_cast<std::size_t>(t)] += !match || match->groups[0] != number;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, std::vector<int>(8, 0));
}

TEST(Regex, AMovedPatternGoesOnMatching) {
    Regex first("a");
    Regex second = std::move(first);
    EXPECT_TRUE(second.matchesIn("a"));
    second = Regex("b");
    EXPECT_FALSE(second.matchesIn("a"));
}

}  // namespace
}  // namespace marlet
