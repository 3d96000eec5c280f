#include "foundation/bytes.h"

#include <gtest/gtest.h>

#include <limits>

namespace marlet {

constexpr std::int64_t farAway = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t farBefore = std::numeric_limits<std::int64_t>::min();

TEST(Bytes, ASliceIsClampedToWhatIsThere) {
    const Bytes data = {1, 2, 3, 4};
    EXPECT_EQ(textOf(slice(data, 1, 3)), "\x02\x03");
    EXPECT_EQ(slice(data, -5, 2).size(), 2U);
    EXPECT_EQ(slice(data, 2, farAway).size(), 2U);
    EXPECT_TRUE(slice(data, 3, 1).empty());
    EXPECT_TRUE(slice(data, farAway, farBefore).empty());
    EXPECT_TRUE(slice({}, 0, 1).empty());
}

TEST(Bytes, Latin1BecomesUtf8AndComesBack) {
    Bytes all;
    for (int byte = 0; byte < 256; byte++) all.push_back(static_cast<std::uint8_t>(byte));
    EXPECT_EQ(utf8ToLatin1(latin1ToUtf8(all)), all);
    EXPECT_EQ(latin1ToUtf8(Bytes{0xA9, 'n', 'a', 'm'}), "©nam");
}

TEST(Bytes, WhatLatin1LacksIsOneQuestionMarkACharacter) {
    EXPECT_EQ(textOf(utf8ToLatin1("a€b")), "a?b");
    EXPECT_EQ(textOf(utf8ToLatin1("😀")), "?");
    EXPECT_EQ(textOf(utf8ToLatin1("é")), "\xE9");
}

TEST(Bytes, BrokenUtf8DoesNotReachPastTheText) {
    EXPECT_EQ(textOf(utf8ToLatin1("\xC3")), "?");
    EXPECT_EQ(textOf(utf8ToLatin1("\xF0\x9F")), "?");
    EXPECT_EQ(textOf(utf8ToLatin1("\x80z")), "?z");
}

TEST(Bytes, HexIsLowerCaseTwoDigitsAByte) {
    EXPECT_EQ(toHex(Bytes{0x00, 0x0F, 0xAB}), "000fab");
}

TEST(BigEndian, NumbersAreReadFromTheirOffset) {
    const Bytes data = {0xFF, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08};
    EXPECT_EQ(BigEndian::u16(data, 1), 0x0102);
    EXPECT_EQ(BigEndian::u32(data, 1), 0x01020304U);
    EXPECT_EQ(BigEndian::u64(data, 1), 0x0102030405060708U);
    EXPECT_EQ(BigEndian::fourCC(Bytes{0xA9, 'd', 'a', 'y'}, 0), "©day");
}

TEST(BigEndian, WhatLiesPastTheEndReadsAsZeroOrEmpty) {
    const Bytes data = {0x11, 0x22, 0x33, 0x44, 0x55};
    EXPECT_EQ(BigEndian::u16(data, 4), 0);
    EXPECT_EQ(BigEndian::u32(data, 2), 0U);
    EXPECT_EQ(BigEndian::fourCC(data, 2), "");
    for (const std::int64_t at : {std::int64_t{-1}, std::int64_t{5}, farAway, farBefore}) {
        EXPECT_EQ(BigEndian::u16(data, at), 0);
        EXPECT_EQ(BigEndian::u32(data, at), 0U);
        EXPECT_EQ(BigEndian::u64(data, at), 0U) << at;
        EXPECT_EQ(BigEndian::fourCC(data, at), "");
    }
}

TEST(BigEndian, AHalfOfALongNumberPastTheEndIsZero) {
    const Bytes data = {0x11, 0x22, 0x33, 0x44, 0x55};
    EXPECT_EQ(BigEndian::u64(data, 0), 0x1122334400000000U);
    EXPECT_EQ(BigEndian::u64(data, -4), 0x11223344U);
}

TEST(BigEndian, WhatIsPutReadsBack) {
    Bytes out;
    BigEndian::put16(out, 0xBEEF);
    BigEndian::put32(out, 0x01020304);
    BigEndian::put64(out, 0xA1A2A3A4A5A6A7A8);
    ASSERT_EQ(out.size(), 14U);
    EXPECT_EQ(BigEndian::u16(out, 0), 0xBEEF);
    EXPECT_EQ(BigEndian::u32(out, 2), 0x01020304U);
    EXPECT_EQ(BigEndian::u64(out, 6), 0xA1A2A3A4A5A6A7A8U);
}

}  // namespace marlet
