#include <gtest/gtest.h>

#include "support/box_builder.h"
#include "verify/sample_descriptions.h"

namespace marlet::test {
namespace {

using Reasons = std::vector<std::string>;

/// As a program writes it that leaves reserved bits 0: 4:2:0, 8 bits, one byte of arrays.
const Bytes record = {1,  1,    0x60, 0,    0,    0,    0x90, 0, 0, 0,    0,    0,
                      30, 0x01, 0x00, 0x00, 0x01, 0x00, 0x00, 0, 0, 0x0F, 0x00, 0xAB};

Reasons withByte(std::size_t at, std::uint8_t value) {
    return compareHVCC(record, patched(record, at, Bytes{value}));
}

TEST(HEVCRecord, OnesInReservedBitsAreAccepted) {
    EXPECT_EQ(withByte(13, 0xF1), Reasons{});
    EXPECT_EQ(withByte(15, 0xFC), Reasons{});
    EXPECT_EQ(withByte(16, 0xFD), Reasons{});
    EXPECT_EQ(withByte(17, 0xF8), Reasons{});
    EXPECT_EQ(withByte(18, 0xF8), Reasons{});
    Bytes all = record;
    for (const auto& [at, value] : std::vector<std::pair<std::size_t, std::uint8_t>>{
             {13, 0xF1}, {15, 0xFC}, {16, 0xFD}, {17, 0xF8}, {18, 0xF8}})
        all = patched(all, at, Bytes{value});
    EXPECT_EQ(compareHVCC(record, all), Reasons{});
}

TEST(HEVCRecord, OtherReservedBitsAreRefused) {
    EXPECT_EQ(withByte(13, 0x71),
              Reasons{"hvcC: reserved bits at byte 13 are neither the original's nor all ones"});
    EXPECT_EQ(withByte(15, 0x80),
              Reasons{"hvcC: reserved bits at byte 15 are neither the original's nor all ones"});
    EXPECT_EQ(withByte(16, 0xF9),
              Reasons{"hvcC: reserved bits at byte 16 are neither the original's nor all ones"});
    EXPECT_EQ(withByte(17, 0x08),
              Reasons{"hvcC: reserved bits at byte 17 are neither the original's nor all ones"});
    EXPECT_EQ(withByte(18, 0xF0),
              Reasons{"hvcC: reserved bits at byte 18 are neither the original's nor all ones"});
}

TEST(HEVCRecord, OnesMayNotBecomeZeros) {
    EXPECT_EQ(compareHVCC(patched(record, 13, Bytes{0xF1}), record),
              Reasons{"hvcC: reserved bits at byte 13 are neither the original's nor all ones"});
}

TEST(HEVCRecord, TheOriginalsOwnReservedBitsMayStay) {
    const Bytes odd = patched(record, 13, Bytes{0x51});
    EXPECT_EQ(compareHVCC(odd, patched(odd, 17, Bytes{0xF8})), Reasons{});
}

TEST(HEVCRecord, BitsWithAMeaningMayNotChange) {
    const Reasons refused = {
        "hvcC differs in its profile, level, flags or parameter sets (not "
        "just the reserved bits)"};
    EXPECT_EQ(withByte(13, 0xF2), refused);
    EXPECT_EQ(withByte(15, 0xFD), refused);
    EXPECT_EQ(withByte(16, 0x02), refused);
    EXPECT_EQ(withByte(17, 0xFA), refused);
    EXPECT_EQ(withByte(18, 0xFA), refused);
    for (std::size_t at = 0; at < record.size(); at++) {
        const bool isPartlyReserved = at == 13 || (at >= 15 && at <= 18);
        if (isPartlyReserved) continue;
        EXPECT_EQ(withByte(at, static_cast<std::uint8_t>(~record[at])), refused) << at;
    }
}

TEST(HEVCRecord, AnotherLengthIsRefused) {
    const Reasons refused = {"hvcC differs in length or is too short to compare"};
    EXPECT_EQ(compareHVCC(record, joined({record, Bytes{0}})), refused);
    EXPECT_EQ(compareHVCC(record, ByteView(record).first(23)), refused);
    EXPECT_EQ(compareHVCC(ByteView(record).first(22), ByteView(record).first(22)), refused);
    EXPECT_EQ(compareHVCC({}, {}), refused);
    EXPECT_EQ(compareHVCC(ByteView(record).first(23), ByteView(record).first(23)), Reasons{});
}

}  // namespace
}  // namespace marlet::test
