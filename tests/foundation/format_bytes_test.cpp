#include "foundation/format_bytes.h"

#include <gtest/gtest.h>

#include <limits>

namespace marlet {
namespace {

TEST(FormatBytes, NothingIsZeroKilobytes) {
    EXPECT_EQ(formatBytes(0), "Zero KB");
}

TEST(FormatBytes, BelowAThousandBytesAreCounted) {
    EXPECT_EQ(formatBytes(1), "1 byte");
    EXPECT_EQ(formatBytes(2), "2 bytes");
    EXPECT_EQ(formatBytes(512), "512 bytes");
    EXPECT_EQ(formatBytes(999), "999 bytes");
}

TEST(FormatBytes, KilobytesHaveNoDecimals) {
    EXPECT_EQ(formatBytes(1'000), "1 KB");
    EXPECT_EQ(formatBytes(1'499), "1 KB");
    EXPECT_EQ(formatBytes(1'500), "2 KB");
    EXPECT_EQ(formatBytes(3'000), "3 KB");
    EXPECT_EQ(formatBytes(999'499), "999 KB");
}

TEST(FormatBytes, MegabytesHaveAtMostOneDecimal) {
    EXPECT_EQ(formatBytes(1'000'000), "1 MB");
    EXPECT_EQ(formatBytes(1'440'000), "1.4 MB");
    EXPECT_EQ(formatBytes(1'450'000), "1.5 MB");
    EXPECT_EQ(formatBytes(10'000'000), "10 MB");
    EXPECT_EQ(formatBytes(734'003'200), "734 MB");
}

TEST(FormatBytes, GigabytesAndUpHaveAtMostTwoDecimals) {
    EXPECT_EQ(formatBytes(4'294'967'296), "4.29 GB");
    EXPECT_EQ(formatBytes(5'529'600'000), "5.53 GB");
    EXPECT_EQ(formatBytes(1'500'000'000), "1.5 GB");
    EXPECT_EQ(formatBytes(2'000'000'000'000), "2 TB");
    EXPECT_EQ(formatBytes(1'010'000'000'000'000), "1.01 PB");
    EXPECT_EQ(formatBytes(std::numeric_limits<std::int64_t>::max()), "9.22 EB");
}

TEST(FormatBytes, WhatRoundsUpToAThousandIsOneOfTheNextUnit) {
    EXPECT_EQ(formatBytes(999'500), "1 MB");
    EXPECT_EQ(formatBytes(999'949'999), "999.9 MB");
    EXPECT_EQ(formatBytes(999'950'000), "1 GB");
    EXPECT_EQ(formatBytes(999'995'000'000), "1 TB");
}

TEST(FormatBytes, ANegativeSizeKeepsItsSign) {
    EXPECT_EQ(formatBytes(-1), "-1 byte");
    EXPECT_EQ(formatBytes(-3'000), "-3 KB");
    EXPECT_EQ(formatBytes(std::numeric_limits<std::int64_t>::min()), "-9.22 EB");
}

}  // namespace
}  // namespace marlet
