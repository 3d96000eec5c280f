#include <gtest/gtest.h>

#include "support/box_builder.h"
#include "verify/sample_descriptions.h"

namespace marlet::test {
namespace {

using Reasons = std::vector<std::string>;

/// A size in that many bytes of seven bits.
Bytes sizeOf(std::size_t size, int width) {
    Bytes bytes;
    for (int i = width - 1; i >= 0; i--)
        bytes.push_back(static_cast<std::uint8_t>((size >> (7 * i) & 0x7F) | (i > 0 ? 0x80U : 0U)));
    return bytes;
}

Bytes descriptor(std::uint8_t tag, const Bytes& body, int width = 1) {
    return joined({Bytes{tag}, sizeOf(body.size(), width), body});
}

/// What to write, and how.
struct Sound {
    std::uint16_t esID = 1;
    Bytes flagsAndMore = {0};  ///< the flag byte and the fields that it announces
    std::uint8_t objectType = 0x40;
    std::uint8_t streamType = 5;
    std::uint32_t bufferSize = 6144;
    std::uint32_t maxBitrate = 128'000;
    std::uint32_t avgBitrate = 96'000;
    Bytes decoderSpecific = {0x11, 0x90};
    Bytes slConfig = {2};
    int width = 1;  ///< bytes of each size
};

Bytes decoderConfig(const Sound& sound) {
    return joined({Bytes{sound.objectType, static_cast<std::uint8_t>(sound.streamType << 2 | 1)},
                   Bytes{static_cast<std::uint8_t>(sound.bufferSize >> 16)},
                   be16(static_cast<std::uint16_t>(sound.bufferSize)), be32(sound.maxBitrate),
                   be32(sound.avgBitrate), descriptor(5, sound.decoderSpecific, sound.width)});
}

Bytes esds(const Bytes& esDescriptor) {
    return joined({Bytes(4), esDescriptor});
}

Bytes esds(const Sound& sound) {
    return esds(descriptor(3,
                           joined({be16(sound.esID), sound.flagsAndMore,
                                   descriptor(4, decoderConfig(sound), sound.width),
                                   descriptor(6, sound.slConfig, sound.width)}),
                           sound.width));
}

TEST(ESDSReader, GivesEveryField) {
    const auto value = parseESDS(esds(Sound{}));
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(*value, (ESDS{1, 0x40, 5, 6144, 128'000, 96'000, {0x11, 0x90}, {2}}));
}

TEST(ESDSReader, ReadsSizesOfOneToFourBytes) {
    for (int width = 1; width <= 4; width++)
        EXPECT_EQ(parseESDS(esds(Sound{.width = width})), parseESDS(esds(Sound{}))) << width;
    const Sound longConfig{.decoderSpecific = Bytes(300, 0x12), .width = 2};
    EXPECT_EQ(parseESDS(esds(longConfig))->decoderSpecific.size(), 300U);
}

TEST(ESDSReader, SkipsWhatTheFlagsAnnounce) {
    const auto plain = parseESDS(esds(Sound{}));
    EXPECT_EQ(parseESDS(esds(Sound{.flagsAndMore = {0x80, 0, 7}})), plain);
    EXPECT_EQ(parseESDS(esds(Sound{.flagsAndMore = {0x40, 3, 'u', 'r', 'l'}})), plain);
    EXPECT_EQ(parseESDS(esds(Sound{.flagsAndMore = {0x20, 0, 9}})), plain);
    EXPECT_EQ(parseESDS(esds(Sound{.flagsAndMore = {0xFF, 0, 7, 1, 'u', 0, 9}})), plain);
}

TEST(ESDSReader, SkipsDescriptorsThatItDoesntKnow) {
    const Sound sound;
    const Bytes with = esds(
        descriptor(3, joined({be16(1), Bytes{0}, descriptor(0x10, {1, 2, 3}),
                              descriptor(4, joined({decoderConfig(sound), descriptor(0x14, {9})})),
                              descriptor(6, sound.slConfig)})));
    EXPECT_EQ(parseESDS(with), parseESDS(esds(sound)));
}

TEST(ESDSReader, GivesNothingWithoutADescriptorOfTheStreamOrOfItsDecoder) {
    EXPECT_EQ(parseESDS(esds(descriptor(4, decoderConfig({})))), std::nullopt);
    EXPECT_EQ(parseESDS(esds(descriptor(3, {0, 1, 0}))), std::nullopt);
    EXPECT_EQ(parseESDS(esds(descriptor(3, joined({Bytes{0, 1, 0}, descriptor(6, {2})})))),
              std::nullopt);
    EXPECT_EQ(parseESDS({}), std::nullopt);
}

TEST(ESDSReader, GivesNothingForBytesThatRunOffTheirEnd) {
    const Bytes whole = esds(Sound{});
    for (std::size_t length = 0; length < whole.size(); length++)
        EXPECT_EQ(parseESDS(ByteView(whole).first(length)), std::nullopt) << length;
    const Bytes endless = {0, 0, 0, 0, 3, 0x80, 0x80, 0x80, 0x80, 0x05};
    EXPECT_EQ(parseESDS(endless), std::nullopt) << "a size has four bytes at most";
}

TEST(ESDSComparison, SizesInAnotherFormMeanTheSame) {
    EXPECT_EQ(compareESDS(esds(Sound{}), esds(Sound{.width = 4})), Reasons{});
    EXPECT_EQ(compareESDS(esds(Sound{.width = 4}), esds(Sound{})), Reasons{});
}

TEST(ESDSComparison, ADifferenceIsToldWithBothSides) {
    const Reasons reasons = compareESDS(esds(Sound{}), esds(Sound{.esID = 0}));
    EXPECT_EQ(reasons, Reasons{"esds differs: original {" + parseESDS(esds(Sound{}))->text() +
                               "} vs rebuilt {" + parseESDS(esds(Sound{.esID = 0}))->text() + "}"});
    EXPECT_NE(parseESDS(esds(Sound{}))->text(), parseESDS(esds(Sound{.esID = 0}))->text());
}

TEST(ESDSComparison, EveryFieldCounts) {
    const std::vector<Sound> others = {
        {.esID = 2},          {.objectType = 0x67},
        {.streamType = 4},    {.bufferSize = 1},
        {.maxBitrate = 1},    {.avgBitrate = 1},
        {.slConfig = {2, 0}}, {.decoderSpecific = {0x12, 0x10}},
    };
    for (const Sound& other : others) EXPECT_EQ(compareESDS(esds(Sound{}), esds(other)).size(), 1U);
}

TEST(ESDSComparison, ASideThatCantBeReadIsAReason) {
    const Reasons refused = {"esds could not be decoded"};
    EXPECT_EQ(compareESDS(esds(Sound{}), Bytes(4)), refused);
    EXPECT_EQ(compareESDS(Bytes(4), esds(Sound{})), refused);
}

TEST(ESDSText, EndsWithTheAACProfileWhereTheBytesTellOne) {
    const auto textOf = [](const Sound& sound) { return parseESDS(esds(sound))->text(); };
    EXPECT_TRUE(textOf({}).ends_with(" AAC profile(AOT)=2")) << textOf({});
    // The escape: 31 in five bits, then 32 and six more bits.
    EXPECT_TRUE(textOf({.decoderSpecific = {0xF9, 0x40}}).ends_with(" AAC profile(AOT)=42"));
    EXPECT_EQ(textOf({.decoderSpecific = {0xF9}}).find("AOT"), std::string::npos);
    EXPECT_EQ(textOf({.decoderSpecific = {}}).find("AOT"), std::string::npos);
    EXPECT_EQ(textOf({.streamType = 4}).find("AOT"), std::string::npos)
        << "a picture has no AAC profile";
}

TEST(ESDSText, TellsLongBytesInPart) {
    const std::string text =
        parseESDS(esds(Sound{.decoderSpecific = Bytes(4000, 0x12), .width = 2}))->text();
    EXPECT_LT(text.size(), 400U);
    EXPECT_NE(text.find("…"), std::string::npos);
}

}  // namespace
}  // namespace marlet::test
