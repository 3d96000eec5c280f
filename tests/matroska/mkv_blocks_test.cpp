#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;
using Texts = std::vector<std::string>;
using Times = std::vector<std::int64_t>;

Bytes blockOf(std::string_view data, std::int16_t time = 0, std::uint64_t track = 1) {
    return simpleBlock(track, time, viewOf(data));
}
Bytes group(std::initializer_list<Bytes> children) {
    return element(0xA0, children);
}
Bytes blockIn(std::string_view data, std::int16_t time = 0) {
    return element(0xA1, blockBody(1, time, 0, viewOf(data)));
}

TEST(MKVBlocks, ComeInFileOrderWithTheirTimes) {
    const OpenMKV file(soundFile(
        {cluster(1000, {blockOf("a", 0), blockOf("b", 40)}), cluster(2000, {blockOf("c", 5)})}));
    EXPECT_EQ(file.texts(), (Texts{"a", "b", "c"}));
    EXPECT_EQ(file.milliseconds(), (Times{1000, 1040, 2005}));
}

TEST(MKVBlocks, ANegativeRelativeTimeLiesBeforeTheCluster) {
    const OpenMKV file(
        soundFile({cluster(1000, {blockOf("a", -40)}), cluster(0, {blockOf("b", -7)})}));
    EXPECT_EQ(file.milliseconds(), (Times{960, -7}));
}

TEST(MKVBlocks, TimesAreInNanosecondsByTheScale) {
    const OpenMKV file(
        joined({header(), segment({element(0x1549A966, {number(0x2AD7B1, 1'000)}),
                                   tracks({entry(1, 2, "A")}), cluster(1000, {blockOf("a", 1)}),
                                   cluster(2, {group({blockIn("b"), number(0x9B, 3)})})})}));
    const auto blocks = file.blocks();
    EXPECT_EQ(blocks[0].timeNs, 1'001'000);
    EXPECT_EQ(blocks[1].timeNs, 2'000);
    EXPECT_EQ(blocks[1].durationNs, 3'000U);
}

TEST(MKVBlocks, AClustersTimeStartsAtZeroAndCountsFromWhereItStands) {
    const OpenMKV file(
        soundFile({cluster(1000, {blockOf("a")}),
                   element(0x1F43B675, {blockOf("b"), number(0xE7, 9), blockOf("c")})}));
    EXPECT_EQ(file.milliseconds(), (Times{1000, 0, 9}));
}

TEST(MKVBlocks, ASimpleBlockTellsItsKeyframeAndNoDuration) {
    const OpenMKV file(soundFile(
        {cluster(0, {group({blockIn("x"), number(0x9B, 3)}), simpleBlock(1, 0, bytesOf("a"), 0x80),
                     simpleBlock(1, 0, bytesOf("b"), 0)})}));
    const auto blocks = file.blocks();
    EXPECT_TRUE(blocks[1].isKeyframe);
    EXPECT_FALSE(blocks[2].isKeyframe);
    EXPECT_FALSE(blocks[1].durationNs);
}

TEST(MKVBlocks, AGroupsBlockHasItsDurationAndCountsAsKeyframe) {
    const OpenMKV file(
        soundFile({cluster(0, {group({blockIn("a", 3), number(0x9B, 40), number(0xFB, 1)}),
                               group({element(0x9B, {}), blockIn("b")}), group({blockIn("c")})})}));
    const auto blocks = file.blocks();
    ASSERT_EQ(blocks.size(), 3U);
    EXPECT_EQ(blocks[0].durationNs, 40'000'000U);
    EXPECT_TRUE(blocks[0].isKeyframe);
    EXPECT_EQ(blocks[1].durationNs, 0U) << "an empty one is there";
    EXPECT_FALSE(blocks[2].durationNs);
    EXPECT_EQ(file.texts(), (Texts{"a", "b", "c"}));
}

TEST(MKVBlocks, TheLastBlockOfAGroupWinsAndAGroupWithoutOneIsNothing) {
    const OpenMKV file(soundFile(
        {cluster(0, {group({number(0x9B, 40)}), group({}), group({blockIn("a"), blockIn("b")})})}));
    EXPECT_EQ(file.texts(), Texts{"b"});
}

TEST(MKVBlocks, ABlockWithoutAWholeHeadIsSkipped) {
    const OpenMKV file(
        soundFile({cluster(0, {element(0xA3, Bytes{}), element(0xA3, Bytes{0x81, 0, 0}),
                               element(0xA3, Bytes(9)), element(0xA3, Bytes{0x40, 0x01, 0, 0}),
                               blockOf("whole"), element(0xA3, Bytes{0x81, 0, 0, 0})})}));
    EXPECT_EQ(file.texts(), (Texts{"whole", ""}));
}

TEST(MKVBlocks, OfTracksThatNobodyAskedForAreSkipped) {
    const OpenMKV file(soundFile({cluster(
        0, {blockOf("a", 0, 1), blockOf("b", 1, 200), blockOf("c", 2, 3), blockOf("d", 3, 200)})}));
    const auto blocks = file.blocks(std::set<int>{200});
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].track, 200);
    EXPECT_EQ(blocks[1].timeNs, 3'000'000);
    EXPECT_TRUE(file.blocks(std::set<int>{}).empty());
}

TEST(MKVBlocks, WhatIsNoClusterIsSteppedOver) {
    const OpenMKV file(soundFile({cluster(0, {blockOf("a")}), element(0x1C53BB6B, Bytes(700, 0xA3)),
                                  element(0xEC, Bytes(3)), cluster(1, {blockOf("b")})}));
    EXPECT_EQ(file.texts(), (Texts{"a", "b"}));
}

TEST(MKVBlocks, AClusterOfUnknownSizeEndsWithTheNextClusterOrCues) {
    const Bytes open = endless(0x1F43B675, joined({number(0xE7, 5), blockOf("a")}));
    const Bytes second = endless(0x1F43B675, joined({number(0xE7, 7), blockOf("b")}), 8);
    const Bytes cues = element(0x1C53BB6B, Bytes(40, 0xA3));
    const OpenMKV file(soundFile({open, second, cues, cluster(9, {blockOf("c")})}));
    EXPECT_EQ(file.texts(), (Texts{"a", "b", "c"}));
    EXPECT_EQ(file.milliseconds(), (Times{5, 7, 9}));
}

TEST(MKVBlocks, TheWalkGoesOnBehindTagsThatEndAClusterOfUnknownSize) {
    for (const std::uint32_t id : {0x1254C367U, 0x1941A469U, 0x1043A770U, 0x114D9B74U}) {
        const OpenMKV file(soundFile({endless(0x1F43B675, joined({number(0xE7, 5), blockOf("a")})),
                                      element(id, Bytes(30, 0xEC)), cluster(9, {blockOf("b")})}));
        EXPECT_EQ(file.texts(), (Texts{"a", "b"})) << id;
    }
}

TEST(MKVBlocks, InfoAndTracksDoNotEndAClusterOfUnknownSize) {
    const OpenMKV file(soundFile({endless(
        0x1F43B675, joined({number(0xE7, 5), blockOf("a"), info(), tracks({}), blockOf("b")}))}));
    EXPECT_EQ(file.milliseconds(), (Times{5, 5}));
}

TEST(MKVBlocks, AnElementOfUnknownSizeEndsItsClusterAndInOneOfUnknownSizeTheWalk) {
    const Bytes bad = endless(0xA0, blockIn("x"));
    const Bytes last = cluster(9, {blockOf("b")});
    EXPECT_EQ(OpenMKV(soundFile({cluster(0, {blockOf("a"), bad, blockOf("y")}), last})).texts(),
              (Texts{"a", "b"}));
    EXPECT_EQ(OpenMKV(soundFile({endless(0x1F43B675, joined({blockOf("a"), bad})), last})).texts(),
              Texts{"a"});
    EXPECT_EQ(OpenMKV(soundFile({cluster(0, {blockOf("a")}), endless(0xEC, {}), last})).texts(),
              Texts{"a"});
}

TEST(MKVBlocks, AnUnknownSizeOfEightBytesIsUnknown) {
    const Bytes open = endless(0x1F43B675, joined({number(0xE7, 5), blockOf("a")}), 8);
    EXPECT_EQ(OpenMKV(soundFile({open})).milliseconds(), Times{5});
}

TEST(MKVBlocks, TheBodyStopsTheWalk) {
    for (const Bytes& first :
         {cluster(0, {blockOf("a"), blockOf("b")}),
          endless(0x1F43B675, joined({number(0xE7, 0), blockOf("a"), blockOf("b")}))}) {
        const OpenMKV file(soundFile({first, cluster(9, {blockOf("c")})}));
        int seen = 0;
        file->forEachBlock({}, {}, [&](const MKVBlock&) { return ++seen < 2; });
        EXPECT_EQ(seen, 2);
    }
}

TEST(MKVBlocks, ProgressIsToldAtEachClusterAndStopsTheWalk) {
    const OpenMKV file(soundFile({cluster(0, {blockOf("a")}), element(0xEC, {}),
                                  cluster(1, {blockOf("b")}), cluster(2, {blockOf("c")})}));
    std::vector<double> told;
    int seen = 0;
    file->forEachBlock(
        {},
        [&](double done) {
            told.push_back(done);
            return told.size() < 4;
        },
        [&](const MKVBlock&) { return ++seen > 0; });
    EXPECT_EQ(seen, 2);
    ASSERT_EQ(told.size(), 4U);
    EXPECT_EQ(told[0], static_cast<double>(*file->firstClusterOffset()) /
                           static_cast<double>(file->segmentEnd()));
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_LT(told.back(), 1.0);
}

TEST(MKVBlocks, AFileCutInTheMiddleOpensAndItsWalkEndsAtTheCut) {
    const Bytes whole = soundFile(
        {cluster(0, {blockOf("first"), blockOf("second", 1)}), cluster(9, {blockOf("third")})});
    const Bytes front = soundFile({});
    for (std::size_t length = front.size(); length < whole.size(); length++) {
        const OpenMKV file(ByteView(whole).first(length));
        ASSERT_TRUE(file) << length;
        const Texts texts = file.texts();
        ASSERT_LE(texts.size(), 3U);
        if (length > whole.size() - 5) {
            EXPECT_EQ(texts[1], "second");
        }
    }
    EXPECT_EQ(OpenMKV(ByteView(whole).first(whole.size() - 2)).texts(),
              (Texts{"first", "second", "thi"}));
}

TEST(MKVBlocks, StatsCountFramesAndTheirBytesByTrack) {
    const OpenMKV file(soundFile(
        {cluster(0, {blockOf("abc"), lacedBlock(1, 0, Lace::Xiph, {bytesOf("d"), bytesOf("ef")}),
                     blockOf("ghij", 0, 2), group({blockIn("k")})})}));
    const auto stats = file->blockStats();
    ASSERT_EQ(stats.size(), 2U);
    EXPECT_EQ(stats.at(1), (MKVFile::Stats{4, 7}));
    EXPECT_EQ(stats.at(2), (MKVFile::Stats{1, 4}));
}

TEST(MKVBlocks, StatsThatAreStoppedHoldWhatWasCounted) {
    const OpenMKV file(soundFile({cluster(0, {blockOf("a")}), cluster(1, {blockOf("b")})}));
    int asked = 0;
    const auto stats = file->blockStats([&](double) { return ++asked < 2; });
    EXPECT_EQ(stats.at(1), (MKVFile::Stats{1, 1}));
}

TEST(MKVBlocks, TimesThatNoNumberHoldsAreHeldAtItsEnds) {
    const Bytes scale = element(0x1549A966, {number(0x2AD7B1, 0x4000000000000000)});
    const OpenMKV file(
        joined({header(),
                segment({scale, tracks({entry(1, 2, "A")}),
                         cluster(0, {blockOf("a", -9), blockOf("b", 9)}),
                         cluster(0xFFFFFFFFFFFFFFFFU,
                                 {blockOf("c", 9), group({blockIn("d"), number(0x9B, 99)})})})}));
    const auto blocks = file.blocks();
    ASSERT_EQ(blocks.size(), 4U);
    EXPECT_EQ(blocks[0].timeNs, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(blocks[1].timeNs, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(blocks[2].timeNs, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(blocks[3].durationNs, std::numeric_limits<std::uint64_t>::max());
}

}  // namespace
}  // namespace marlet::test
