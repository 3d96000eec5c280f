#include "matroska/ebml.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

TEST(EBMLNumbers, AnIdKeepsItsMarkerAndIsOneToFourBytesWide) {
    EXPECT_EQ(EBML::readID(Bytes{0xA3}, 0), (EBML::ID{0xA3, 1}));
    EXPECT_EQ(EBML::readID(Bytes{0x42, 0x86}, 0), (EBML::ID{0x4286, 2}));
    EXPECT_EQ(EBML::readID(Bytes{0x2A, 0xD7, 0xB1}, 0), (EBML::ID{0x2AD7B1, 3}));
    EXPECT_EQ(EBML::readID(Bytes{0x1A, 0x45, 0xDF, 0xA3}, 0), (EBML::ID{0x1A45DFA3, 4}));
    EXPECT_FALSE(EBML::readID(Bytes{0x0F, 1, 1, 1, 1, 1, 1, 1}, 0));
    EXPECT_FALSE(EBML::readID(Bytes{0x00, 1, 1, 1}, 0));
}

TEST(EBMLNumbers, ASizeLosesItsMarkerAndIsOneToEightBytesWide) {
    EXPECT_EQ(EBML::readSize(Bytes{0x80}, 0), (EBML::Size{0, 1, false}));
    EXPECT_EQ(EBML::readSize(Bytes{0x40, 0x7F}, 0), (EBML::Size{127, 2, false}));
    EXPECT_EQ(EBML::readSize(Bytes{0x01, 0, 0, 0, 0, 0, 0, 5}, 0), (EBML::Size{5, 8, false}));
    EXPECT_FALSE(EBML::readSize(Bytes{0x00, 1, 1, 1, 1, 1, 1, 1, 1}, 0));
}

TEST(EBMLNumbers, ASizeOfAllOnesIsUnknownAtAnyWidth) {
    for (std::size_t width = 1; width <= 8; width++) {
        Bytes ones(width, 0xFF);
        ones[0] = static_cast<std::uint8_t>(0xFF >> (width - 1));
        EXPECT_TRUE(EBML::readSize(ones, 0)->isUnknown) << width;
        EXPECT_EQ(EBML::readSize(ones, 0)->width, width);
        ones.back() ^= 1;
        EXPECT_FALSE(EBML::readSize(ones, 0)->isUnknown) << width;
    }
}

TEST(EBMLNumbers, BytesThatEndTooEarlyAreRefused) {
    EXPECT_FALSE(EBML::readID(Bytes{}, 0));
    EXPECT_FALSE(EBML::readID(Bytes{0x1A, 0x45, 0xDF}, 0));
    EXPECT_FALSE(EBML::readSize(Bytes{0x40}, 0));
    EXPECT_FALSE(EBML::readSize(Bytes{0x80}, 1));
    EXPECT_FALSE(EBML::readSize(Bytes{0x80}, 99));
}

TEST(EBMLNumbers, AreReadAtAnyPlace) {
    const Bytes bytes = {0xFF, 0x42, 0x86, 0x81};
    EXPECT_EQ(EBML::readID(bytes, 1), (EBML::ID{0x4286, 2}));
    EXPECT_EQ(EBML::readSize(bytes, 3), (EBML::Size{1, 1, false}));
}

}  // namespace
}  // namespace marlet::test
