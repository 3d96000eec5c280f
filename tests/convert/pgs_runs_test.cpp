#include "convert/pgs_runs.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "convert/pgs_parser.h"
#include "support/pgs_builder.h"

namespace marlet::test {
namespace {

using PGSParser::decodeRLE;

Bytes row(std::initializer_list<std::pair<int, std::uint8_t>> runs) {
    Bytes out;
    for (const auto& [length, colour] : runs)
        out.insert(out.end(), static_cast<std::size_t>(length), colour);
    return out;
}

TEST(PGSRunLengths, AByteThatIsNotZeroIsOnePixel) {
    EXPECT_EQ(decodeRLE(Bytes{7, 9}, 3, 1), (Bytes{7, 9, 0}));
}

TEST(PGSRunLengths, ShortRunsOfColourZeroTakeTwoBytes) {
    EXPECT_EQ(decodeRLE(Bytes{5, 0x00, 0x03, 6}, 6, 1), (Bytes{5, 0, 0, 0, 6, 0}));
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0x3F, 6}, 64, 1), row({{63, 0}, {1, 6}}));
}

TEST(PGSRunLengths, LongRunsOfColourZeroTakeThree) {
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0x41, 0x2C, 9}, 302, 1), row({{300, 0}, {1, 9}, {1, 0}}));
}

TEST(PGSRunLengths, ShortRunsOfAColourTakeThree) {
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0x85, 0x07}, 6, 1), row({{5, 7}, {1, 0}}));
}

TEST(PGSRunLengths, LongRunsOfAColourTakeFour) {
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0xC1, 0x2C, 7}, 301, 1), row({{300, 7}, {1, 0}}));
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0xFF, 0xFF, 7}, 16'384, 1), row({{16'383, 7}, {1, 0}}));
}

TEST(PGSRunLengths, RunsOfNoPixelsDrawNone) {
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0x40, 0x00, 1}, 2, 1), (Bytes{1, 0}));
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0x80, 0x09, 1}, 2, 1), (Bytes{1, 0}));
    EXPECT_EQ(decodeRLE(Bytes{0x00, 0xC0, 0x00, 0x09, 1}, 2, 1), (Bytes{1, 0}));
}

TEST(PGSRunLengths, RowsThatEndEarlyLeaveZeros) {
    EXPECT_EQ(decodeRLE(Bytes{1, 0, 0, 0, 0, 2, 3}, 3, 3), (Bytes{1, 0, 0, 0, 0, 0, 2, 3, 0}));
}

TEST(PGSRunLengths, PixelsPastTheRowAreDropped) {
    EXPECT_EQ(decodeRLE(Bytes{1, 2, 3, 4, 0, 0, 5}, 2, 2), (Bytes{1, 2, 5, 0}));
    EXPECT_EQ(decodeRLE(Bytes{1, 0x00, 0xFF, 0xFF, 7, 8, 0, 0, 5}, 2, 2), (Bytes{1, 7, 5, 0}));
}

TEST(PGSRunLengths, RowsPastThePictureAreDropped) {
    EXPECT_EQ(decodeRLE(Bytes{1, 0, 0, 2, 0, 0, 3}, 1, 2), (Bytes{1, 2}));
}

TEST(PGSRunLengths, DataThatStopEarlyLeaveTheRestAtZero) {
    const Bytes whole{1, 0x00, 0x85, 7, 0, 0, 0x00, 0xC0, 0x43, 9, 0, 0};
    const Bytes picture = decodeRLE(whole, 70, 3);
    ASSERT_EQ(picture.size(), 210U);
    for (std::size_t length = 0; length < whole.size(); length++) {
        const Bytes cut = decodeRLE(ByteView(whole).first(length), 70, 3);
        ASSERT_EQ(cut.size(), picture.size()) << length;
        for (std::size_t i = 0; i < cut.size(); i++)
            EXPECT_TRUE(cut[i] == picture[i] || cut[i] == 0) << length << " at " << i;
    }
    EXPECT_EQ(decodeRLE({}, 2, 2), Bytes(4));
}

TEST(PGSRunLengths, ASizeOfNoPixelsGivesNone) {
    for (const auto& [width, height] : {std::pair(0, 5), {5, 0}, {-1, 5}, {5, -1}})
        EXPECT_TRUE(decodeRLE(Bytes{1, 2}, width, height).empty());
}

TEST(PGSRunLengths, SizesBeyondAnyScreenAreRefused) {
    EXPECT_TRUE(decodeRLE(Bytes{1}, 65'535, 65'535).empty());
    EXPECT_EQ(decodeRLE(Bytes{1}, 7680, 4320).size(), PGSParser::mostPixels);
    EXPECT_TRUE(decodeRLE(Bytes{1}, 7680, 4321).empty());
}

TEST(PGSRunLengths, WhatTheEncoderOfTheseTestsMakesComesBack) {
    Bytes indices;
    std::uint32_t random = 1;
    while (indices.size() < std::size_t{700} * 40) {
        random = random * 1'664'525 + 1'013'904'223;
        const std::size_t longest = random % 3 == 0 ? 3 : random % 3 == 1 ? 80 : 1500;
        const auto colour = static_cast<std::uint8_t>(random >> 24 & 3);
        indices.insert(indices.end(), 1 + (random >> 8) % longest, colour);
    }
    indices.resize(std::size_t{700} * 40);
    EXPECT_EQ(decodeRLE(pgs::runs(indices, 700), 700, 40), indices);
}

TEST(PGSRunLengths, ReachAsFarAsTheyDraw) {
    using Extent = PGSRuns::Extent;
    const auto extent = [](const Bytes& runs) { return PGSRuns::extent(runs, 100, 50); };
    EXPECT_EQ(extent({}), Extent());
    EXPECT_EQ(extent({0, 0, 0, 0}), Extent()) << "empty rows";
    EXPECT_EQ(extent({1, 2, 0, 0, 3, 0, 0}), (Extent{2, 2}));
    EXPECT_EQ(extent({0, 0, 0, 0, 3}), (Extent{1, 3}));
    EXPECT_EQ(extent({0x00, 0xFF, 0xFF, 7}), (Extent{100, 1})) << "no further than the row";
    Bytes rows;
    for (int i = 0; i < 60; i++) append(rows, Bytes{1, 0, 0});
    EXPECT_EQ(extent(rows), (Extent{1, 50})) << "no further than the picture";
}

}  // namespace
}  // namespace marlet::test
