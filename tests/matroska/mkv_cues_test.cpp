// Cues let the reader leap over the clusters between the first and the last that they tell of.

#include <gtest/gtest.h>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;

Bytes damage() {
    return Bytes(40, 0x00);
}

/// A SeekHead's line.
Bytes seek(std::uint32_t id, std::uint64_t position) {
    return element(0x4DBB, {element(0x53AB, be32(id)), element(0x53AC, be64(position))});
}

/// A cue that tells of a cluster.
Bytes point(std::uint64_t position) {
    return element(
        0xBB, {number(0xB3, 0), element(0xB7, {number(0xF7, 1), element(0xF1, be64(position))})});
}

/// How many chapters are found in a file of SeekHead, tracks, a cluster, what is between, a
/// cluster, Cues and Chapters. `wrong` is added to what the Cues tell of the second cluster,
/// `wrongSeek` to what the SeekHead tells of the Cues.
std::size_t chaptersBehind(const Bytes& between, std::int64_t wrong = 0,
                           std::uint32_t seekFor = 0x1C53BB6B, std::int64_t wrongSeek = 0) {
    const Bytes track = tracks({entry(1, 2, "A_AC3")});
    const Bytes first = cluster(0, {simpleBlock(1, 0, bytesOf("a"))});
    const Bytes second = cluster(9, {simpleBlock(1, 0, bytesOf("b"))});
    const auto seekHead = [&](std::uint64_t position) {
        return element(0x114D9B74, {seek(seekFor, position)});
    };
    const std::uint64_t front = seekHead(0).size() + track.size() + first.size();
    const std::uint64_t secondAt = front + between.size();
    const std::uint64_t cuesAt = secondAt + second.size();
    const Bytes cues =
        element(0x1C53BB6B, {point(secondAt + static_cast<std::uint64_t>(wrong)), point(0)});
    const OpenMKV file(
        segment({seekHead(cuesAt + static_cast<std::uint64_t>(wrongSeek)), track, first, between,
                 second, cues, chapters({edition({atom(0, "One"), atom(5, "Two")})})}));
    return file->chapters().size();
}

TEST(MKVCues, WithoutThemTheWalkStepsFromClusterToCluster) {
    EXPECT_EQ(chaptersBehind({}, 0, 0x1254C367), 2U);
    EXPECT_EQ(chaptersBehind(damage(), 0, 0x1254C367), 0U);
}

TEST(MKVCues, TheWalkLeapsToTheLastClusterThatTheyTellOf) {
    EXPECT_EQ(chaptersBehind({}), 2U);
    EXPECT_EQ(chaptersBehind(damage()), 2U) << "what lies between is not looked at";
}

TEST(MKVCues, WhatTheSeekHeadTellsOfBetweenClustersIsReadOnTheWay) {
    const Bytes track = tracks({entry(1, 2, "A_AC3")});
    const Bytes clusters = joined({cluster(0, {simpleBlock(1, 0, bytesOf("a"))}), damage()});
    const Bytes titles = chapters({edition({atom(0, "One"), atom(5, "Two")})});
    const Bytes info = element(0x1549A966, {text(0x7BA9, "Odd")});
    const Bytes more = tracks({entry(2, 2, "A_AAC")});
    const Bytes last = cluster(9, {simpleBlock(1, 0, bytesOf("b"))});
    const auto seekHead = [](std::uint64_t titlesAt, std::uint64_t infoAt, std::uint64_t tracksAt,
                             std::uint64_t cuesAt) {
        return element(0x114D9B74, {seek(0x1043A770, titlesAt), seek(0x1549A966, infoAt),
                                    seek(0x1654AE6B, tracksAt), seek(0x1654AE6B, tracksAt),
                                    seek(0x1C53BB6B, cuesAt)});
    };
    const std::uint64_t titlesAt = seekHead(0, 0, 0, 0).size() + track.size() + clusters.size();
    const std::uint64_t infoAt = titlesAt + titles.size();
    const std::uint64_t tracksAt = infoAt + info.size();
    const std::uint64_t lastAt = tracksAt + more.size();
    const OpenMKV file(
        segment({seekHead(titlesAt, infoAt, tracksAt, lastAt + last.size()), track, clusters,
                 titles, info, more, last, element(0x1C53BB6B, {point(lastAt)})}));
    EXPECT_EQ(file->chapters().size(), 2U);
    EXPECT_EQ(file->title(), "Odd");
    EXPECT_EQ(file->tracks().size(), 2U);
}

TEST(MKVCues, ThoseThatTellOfAPlaceWithoutAClusterAreNotFollowed) {
    for (const std::int64_t wrong : {1, -1, 4, 1'000'000, -1'000'000}) {
        EXPECT_EQ(chaptersBehind({}, wrong), 2U) << wrong;
        EXPECT_EQ(chaptersBehind(damage(), wrong), 0U) << wrong;
    }
}

TEST(MKVCues, ASeekHeadThatTellsOfAPlaceWithoutCuesIsNotFollowed) {
    for (const std::int64_t wrong : {1, -1, 1'000'000, -1'000'000}) {
        EXPECT_EQ(chaptersBehind({}, 0, 0x1C53BB6B, wrong), 2U) << wrong;
        EXPECT_EQ(chaptersBehind(damage(), 0, 0x1C53BB6B, wrong), 0U) << wrong;
    }
}

}  // namespace
}  // namespace marlet::test
