#include <gtest/gtest.h>

#include "verify/rebuild_verifier.h"

namespace marlet {
namespace {

TEST(Chapters, StartTimesNineMillisecondsApartMatchAndElevenDoNot) {
    EXPECT_TRUE(chaptersMatch({{1000, "One"}}, {{1009, "One"}}));
    EXPECT_TRUE(chaptersMatch({{1010, "One"}}, {{1000, "One"}}));
    EXPECT_FALSE(chaptersMatch({{1000, "One"}}, {{1011, "One"}}));
    EXPECT_FALSE(chaptersMatch({{1011, "One"}}, {{1000, "One"}}));
}

TEST(Chapters, AnotherTitleDoesNotMatch) {
    EXPECT_FALSE(chaptersMatch({{1000, "One"}}, {{1000, "Two"}}));
}

TEST(Chapters, AMissingChapterDoesNotMatch) {
    EXPECT_FALSE(chaptersMatch({{0, "One"}, {1000, "Two"}}, {{0, "One"}}));
    EXPECT_TRUE(chaptersMatch({}, {}));
}

}  // namespace
}  // namespace marlet
