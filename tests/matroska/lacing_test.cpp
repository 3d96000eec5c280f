#include "matroska/lacing.h"

#include <gtest/gtest.h>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;
using Kind = Lacing::Kind;
using Frames = std::vector<MKVBlock::Frame>;

Frames framesOf(Kind kind, const Bytes& payload) {
    return Lacing::frames(kind, payload, 1000, payload.size());
}

std::vector<Bytes> unequal() {
    return {Bytes(3, 'a'), Bytes(700, 'b'), Bytes(255, 'c'), Bytes(0), Bytes(1, 'd')};
}

TEST(Lacing, FramesOfEveryKindComeBackAsTheyWere) {
    const std::vector<Bytes> equal(8, Bytes(20, 'x'));
    for (const auto& [lace, frames] :
         {std::pair{Lace::Xiph, unequal()}, std::pair{Lace::EBML, unequal()},
          std::pair{Lace::Fixed, equal}, std::pair{Lace::Xiph, equal},
          std::pair{Lace::EBML, equal}}) {
        const OpenMKV file(soundFile({cluster(40, {lacedBlock(1, 2, lace, frames)})}));
        const auto blocks = file.blocks();
        ASSERT_EQ(blocks.size(), 1U);
        EXPECT_EQ(blocks[0].timeNs, 42'000'000);
        EXPECT_TRUE(blocks[0].isKeyframe);
        EXPECT_EQ(file->data(blocks[0]), frames);
    }
}

TEST(Lacing, ManyFramesAreReadToTheLast) {
    std::vector<Bytes> frames;
    for (std::size_t i = 0; i < 256; i++) frames.emplace_back(i * 3, static_cast<std::uint8_t>(i));
    for (const Lace lace : {Lace::Xiph, Lace::EBML}) {
        const OpenMKV file(soundFile({cluster(0, {lacedBlock(1, 0, lace, frames)})}));
        EXPECT_EQ(file.frames(), frames);
    }
}

TEST(Lacing, AGroupsBlockMayBeLaced) {
    const Bytes block = element(0xA1, blockBody(1, 0, 0x02, laced(Lace::Xiph, unequal())));
    const OpenMKV file(soundFile({cluster(0, {element(0xA0, {block})})}));
    EXPECT_EQ(file.frames(), unequal());
}

TEST(Lacing, EqualFramesShareThePayloadAndTheLastTakesTheRest) {
    Bytes payload(12, 'x');
    payload[0] = 2;
    EXPECT_EQ(framesOf(Kind::Fixed, payload), (Frames{{1001, 3}, {1004, 3}, {1007, 5}}));
}

TEST(Lacing, XiphSizesAreSumsThatEndBelow255) {
    Bytes payload(1 + 2 + 1 + 255 + 7 + 4, 'x');
    payload[0] = 2, payload[1] = 255, payload[2] = 0, payload[3] = 7;
    EXPECT_EQ(framesOf(Kind::Xiph, payload), (Frames{{1004, 255}, {1259, 7}, {1266, 4}}));
}

TEST(Lacing, EBMLSizesAreDifferencesFromTheMiddleOfTheirRange) {
    // 5 bytes, then 2 fewer, then 3 more in a wider number.
    Bytes payload = {3, 0x85, static_cast<std::uint8_t>(0x80 | (63 - 2)), 0x60, 0x02};
    payload.resize(5 + 5 + 3 + 6 + 1, 'x');
    EXPECT_EQ(framesOf(Kind::EBML, payload), (Frames{{1005, 5}, {1010, 3}, {1013, 6}, {1019, 1}}));
}

TEST(Lacing, OneFrameAloneIsTakenFromXiphAndFixedLaces) {
    const Bytes payload = {0, 'a', 'b'};
    EXPECT_EQ(framesOf(Kind::Xiph, payload), (Frames{{1001, 2}}));
    EXPECT_EQ(framesOf(Kind::Fixed, payload), (Frames{{1001, 2}}));
}

TEST(Lacing, AnEBMLLaceOfOneFrameIsAlwaysRefused) {
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{0, 0x82, 'a', 'b'}).empty());
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{0, 0x81, 'a', 'b'}).empty());
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{0, 0x84, 'a', 'b'}).empty())
        << "a size beyond the payload would leave one frame";
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{0, 'a', 'b'}).empty());
}

TEST(Lacing, SizesThatDoNotAddUpGiveNothing) {
    EXPECT_TRUE(framesOf(Kind::Xiph, Bytes{1, 200, 'a'}).empty()) << "more than there is";
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{1, 0xA0, 'a'}).empty());
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{2, 0x82, 0x81, 'a', 'b', 'c'}).empty()) << "below zero";
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{1, 0x00, 'a', 'b'}).empty()) << "no size";
    EXPECT_TRUE(framesOf(Kind::EBML, Bytes{2, 0x81, 0x00, 'a', 'b'}).empty()) << "no second size";
    EXPECT_TRUE(framesOf(Kind::Xiph, Bytes{5}).empty());
    EXPECT_TRUE(framesOf(Kind::Fixed, Bytes{}).empty());
}

TEST(Lacing, ABlockOfMoreFramesThanItsBytesHoldStillReachesTheBodyWithNone) {
    const Bytes bad = {200, 9, 9, 9};
    for (const std::uint8_t flags : {0x82, 0x86}) {
        const OpenMKV file(soundFile(
            {cluster(0, {simpleBlock(1, 7, bad, flags), simpleBlock(1, 8, bytesOf("next"))})}));
        const auto blocks = file.blocks();
        ASSERT_EQ(blocks.size(), 2U);
        EXPECT_TRUE(blocks[0].frames.empty());
        EXPECT_EQ(blocks[0].timeNs, 7'000'000);
        EXPECT_TRUE(file->data(blocks[0]).empty());
        EXPECT_EQ(blocks[1].frames.size(), 1U);
    }
}

TEST(Lacing, TheHeadMustLieInItsFirst4096Bytes) {
    // The first size takes 4094 bytes of the head, the second lies just inside.
    std::vector<Bytes> frames = {Bytes(255 * 4093, 'a'), Bytes(2, 'b'), Bytes(1, 'c')};
    const auto read = [&] {
        return OpenMKV(soundFile({cluster(0, {lacedBlock(1, 0, Lace::Xiph, frames)})})).frames();
    };
    EXPECT_EQ(read(), frames);
    frames[0].resize(255 * 4096);
    EXPECT_NE(read(), frames);
}

TEST(Lacing, TheHeadThatIsReadHoldsAllSizesAndLittleMore) {
    EXPECT_EQ(Lacing::headLength(Kind::Fixed, 7, 100'000), 2U);
    EXPECT_EQ(Lacing::headLength(Kind::EBML, 7, 100'000), 65U);
    EXPECT_LE(Lacing::headLength(Kind::Xiph, 255, 10'000'000), Lacing::longestHead);
    for (const std::size_t size : {0U, 254U, 255U, 5'000U}) {
        const std::vector<Bytes> frames = {Bytes(size), Bytes(size), Bytes(0)};
        const Bytes payload = laced(Lace::Xiph, frames);
        EXPECT_GE(Lacing::headLength(Kind::Xiph, 2, payload.size()), payload.size() - 2 * size);
    }
}

}  // namespace
}  // namespace marlet::test
