#include "mp4/avc_config.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/avc_builder.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

constexpr std::uint8_t main = 77;
constexpr std::uint8_t high = 100;
constexpr std::uint8_t high10 = 110;
constexpr std::uint8_t high422 = 122;
constexpr std::uint8_t high444 = 244;

using Format = std::optional<AVCConfig::SampleFormat>;

std::vector<int> bitsOf(const Bytes& bytes, int count) {
    SPSBits reader(bytes);
    std::vector<int> bits;
    for (int i = 0; i < count; i++) bits.push_back(reader.bit());
    return bits;
}

/// What is left of the bytes behind the removal of emulation prevention.
Bytes unescaped(const Bytes& bytes, std::size_t count) {
    SPSBits reader(bytes);
    Bytes out;
    for (std::size_t i = 0; i < count; i++) {
        int value = 0;
        for (int bit = 0; bit < 8; bit++) value = value << 1 | reader.bit();
        out.push_back(static_cast<std::uint8_t>(value));
    }
    EXPECT_FALSE(reader.isBad());
    reader.bit();
    EXPECT_TRUE(reader.isBad()) << "more bytes than expected";
    return out;
}

TEST(SPSBits, AreReadFromTheHighestOn) {
    EXPECT_EQ(bitsOf({0xA5, 0x80}, 9), (std::vector<int>{1, 0, 1, 0, 0, 1, 0, 1, 1}));
}

TEST(SPSBits, AreZeroPastTheEnd) {
    SPSBits bits(Bytes{0xFF});
    for (int i = 0; i < 8; i++) EXPECT_EQ(bits.bit(), 1);
    EXPECT_FALSE(bits.isBad());
    EXPECT_EQ(bits.bit(), 0);
    EXPECT_EQ(bits.bit(), 0);
    EXPECT_TRUE(bits.isBad());
    EXPECT_EQ(SPSBits({}).bit(), 0);
}

TEST(SPSBits, DropA3BehindTwoZeros) {
    EXPECT_EQ(unescaped({0, 0, 3, 1}, 3), (Bytes{0, 0, 1}));
    EXPECT_EQ(unescaped({9, 0, 0, 3, 0, 0, 3, 2}, 6), (Bytes{9, 0, 0, 0, 0, 2}));
    EXPECT_EQ(unescaped({0, 0, 0, 3, 7}, 4), (Bytes{0, 0, 0, 7}));
}

TEST(SPSBits, KeepA3ElsewhereAndTheOneBehindADropped3) {
    EXPECT_EQ(unescaped({0, 3, 0, 3}, 4), (Bytes{0, 3, 0, 3}));
    EXPECT_EQ(unescaped({0, 0, 3, 3}, 3), (Bytes{0, 0, 3}));
}

TEST(SPSBits, CountZerosAnewBehindADropped3) {
    EXPECT_EQ(unescaped({0, 0, 3, 0, 3}, 4), (Bytes{0, 0, 0, 3}));
}

TEST(SPSBits, ALast3BehindTwoZerosEndsTheBytes) {
    EXPECT_EQ(unescaped({5, 0, 0, 3}, 3), (Bytes{5, 0, 0}));
}

TEST(ExpGolomb, NumbersComeBackAsTheyWereWritten) {
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max() - 1;
    // Nothing here holds two zero bytes and a 3, or the writer would have to escape it.
    for (const std::uint32_t value : {0U, 1U, 2U, 3U, 6U, 7U, 254U, 255U, 65'534U, most}) {
        BitWriter writer;
        writer.bit(1).ue(value).bit(1);
        SPSBits bits(writer.bytes());
        EXPECT_EQ(bits.bit(), 1);
        EXPECT_EQ(bits.ue(), value);
        EXPECT_EQ(bits.bit(), 1);
        EXPECT_FALSE(bits.isBad());
    }
}

TEST(ExpGolomb, MissingBitsReadAsZero) {
    SPSBits cut(Bytes{0x01});  // seven zeros, the 1, and none of the seven bits behind it
    EXPECT_EQ(cut.ue(), 127U);
    EXPECT_TRUE(cut.isBad());
    SPSBits zeros(Bytes{0x00});  // the end stops the counting
    EXPECT_EQ(zeros.ue(), 255U);
    EXPECT_TRUE(zeros.isBad());
    SPSBits nothing({});
    EXPECT_EQ(nothing.ue(), 0U);
    EXPECT_TRUE(nothing.isBad());
}

TEST(ExpGolomb, CountingStopsAt32Zeros) {
    SPSBits bits(Bytes{0, 0, 0, 0, 0x80, 0, 0, 1, 0xFF});
    EXPECT_EQ(bits.ue(), 0xFFFF'FFFFULL + 0x8000'0001ULL);
    EXPECT_TRUE(bits.isBad());
    EXPECT_EQ(bits.bit(), 1) << "the 32 bits that follow are the number's";
}

TEST(AVCBitDepth, IsTheLumaDepthOfTheFirstSet) {
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord({high10, 1, 10, 10})), 10);
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord({high10, 1, 9, 8})), 9);
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord({high422, 2, 8, 8})), 8);
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord(
                  high10, {sequenceSet({high10, 1, 8, 8}), sequenceSet({high10, 1, 10, 10})}, {})),
              8);
}

TEST(AVCBitDepth, AHigh10RecordMayHaveEightBits) {
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord({high10, 1, 8, 8})), 8);
}

TEST(AVCBitDepth, SkipsTheColourPlaneFlagOf444) {
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord({high444, 3, 12, 12})), 12);
}

TEST(AVCBitDepth, OfAProfileThatCarriesNoneIs8) {
    // The bits that would say 10 are there, and aren't looked at.
    for (const std::uint8_t profile : {66, 77, 88, 144})
        EXPECT_EQ(AVCConfig::bitDepth(avcRecord({profile, 1, 10, 10})), 8) << int{profile};
}

TEST(AVCBitDepth, OfEveryProfileThatCarriesOneIsRead) {
    for (const std::uint8_t profile :
         {44, 83, 86, 100, 110, 118, 122, 128, 134, 135, 138, 139, 244})
        EXPECT_EQ(AVCConfig::bitDepth(avcRecord({profile, 1, 10, 10})), 10) << int{profile};
}

TEST(AVCBitDepth, IsNothingForWhatIsNoRecord) {
    const Bytes record = avcRecord({high10, 1, 10, 10});
    EXPECT_EQ(AVCConfig::bitDepth({}), std::nullopt);
    EXPECT_EQ(AVCConfig::bitDepth(ByteView(record).first(8)), std::nullopt);
    EXPECT_EQ(AVCConfig::bitDepth(patched(record, 0, Bytes{2})), std::nullopt);
}

TEST(AVCBitDepth, IsNothingWithoutAWholeSet) {
    const Bytes record = avcRecord({high10, 1, 10, 10});
    EXPECT_EQ(AVCConfig::bitDepth(patched(record, 5, Bytes{0xE0})), std::nullopt) << "no sets";
    EXPECT_EQ(AVCConfig::bitDepth(patched(record, 6, be16(4))), std::nullopt) << "too short";
    EXPECT_EQ(AVCConfig::bitDepth(patched(record, 6, be16(500))), std::nullopt) << "cut";
    const std::size_t length = BigEndian::u16(record, 6);
    EXPECT_EQ(AVCConfig::bitDepth(ByteView(record).first(8 + length)), 10);
    EXPECT_EQ(AVCConfig::bitDepth(ByteView(record).first(7 + length)), std::nullopt);
}

TEST(AVCBitDepth, OfASetThatEndsEarlyReadsZeros) {
    EXPECT_EQ(AVCConfig::bitDepth(avcRecord(high10, {Bytes{0x67, high10, 0, 40, 0xC0}}, {})),
              8 + 63)
        << "one set, of id 0 and chroma 0, then six zeros up to the end";
}

TEST(SampleFormat, IsWhatTheSetSays) {
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({high, 1, 8, 8})), (Format{{1, 8, 8}}));
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({high422, 2, 10, 9})), (Format{{2, 10, 9}}));
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({high444, 3, 14, 13})), (Format{{3, 14, 13}}));
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({high, 0, 8, 8})), (Format{{0, 8, 8}}));
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({144, 3, 8, 8})), (Format{{3, 8, 8}}));
}

TEST(SampleFormat, IsNothingForAProfileWhoseSetsDontSayIt) {
    EXPECT_EQ(AVCConfig::sampleFormat(sequenceSet({main, 1, 8, 8})), std::nullopt);
}

TEST(SampleFormat, IsNothingForACutSet) {
    EXPECT_EQ(AVCConfig::sampleFormat({}), std::nullopt);
    EXPECT_EQ(AVCConfig::sampleFormat(Bytes{0x67, high, 0, 40}), std::nullopt);
    EXPECT_EQ(AVCConfig::sampleFormat(Bytes{0x67, high, 0, 40, 0xA0}), std::nullopt);
    EXPECT_EQ(AVCConfig::sampleFormat(Bytes{0x67, high, 0, 40, 0, 0, 0, 0, 0, 0}), std::nullopt);
}

}  // namespace
}  // namespace marlet::test
