#include "identify/lengths.h"

#include <gtest/gtest.h>

#include <limits>

#include "identify/made_up_files.h"

namespace marlet {
namespace {

TEST(Lengths, ARuntimeOf60Gives9MinutesAndOneOf20Gives4) {
    EXPECT_EQ(Lengths::fits(69.0, 60, Lengths::episode), true);
    EXPECT_EQ(Lengths::fits(69.1, 60, Lengths::episode), false);
    EXPECT_EQ(Lengths::fits(51.0, 60, Lengths::episode), true);
    EXPECT_EQ(Lengths::fits(24.0, 20, Lengths::episode), true);
    EXPECT_EQ(Lengths::fits(24.1, 20, Lengths::episode), false);
}

TEST(Lengths, AFilmOf120MinutesAllows9Point6AndOneOf40Allows5) {
    EXPECT_EQ(Lengths::fits(129.6, 120, Lengths::film), true);
    EXPECT_EQ(Lengths::fits(129.7, 120, Lengths::film), false);
    EXPECT_EQ(Lengths::fits(35.0, 40, Lengths::film), true);
    EXPECT_EQ(Lengths::fits(45.1, 40, Lengths::film), false);
}

TEST(Lengths, WhatIsUnknownCantBeCompared) {
    EXPECT_EQ(Lengths::fits(std::nullopt, 60, Lengths::film), std::nullopt);
    EXPECT_EQ(Lengths::fits(60.0, std::nullopt, Lengths::film), std::nullopt);
    EXPECT_EQ(Lengths::fits(60.0, 0, Lengths::film), std::nullopt);
    EXPECT_EQ(Lengths::fits(60.0, -5, Lengths::film), std::nullopt);
}

TEST(Lengths, AFilesMinutesAreItsSecondsBy60) {
    EXPECT_EQ(Lengths::minutes(test::fileOf("/a.mp4", 22.5)), 22.5);
    EXPECT_EQ(Lengths::minutes(test::fileOf("/a.mp4")), std::nullopt);
    ScannedFile endless;
    endless.duration = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Lengths::minutes(endless), std::nullopt);
}

TEST(Lengths, TheFilesLengthIsToldToTheNearestMinute) {
    EXPECT_EQ(Lengths::difference(43.5, "database", 22),
              "Length differs: file 44 min, database 22 min");
    EXPECT_EQ(Lengths::difference(43.4, "Apple TV", 22),
              "Length differs: file 43 min, Apple TV 22 min");
}

}  // namespace
}  // namespace marlet
