#include "convert/track_starts.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/mkv_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using mkv::cluster;
using mkv::simpleBlock;

const Bytes frame{1, 2, 3};

class TrackStartsTest : public testing::Test {
protected:
    TrackStarts startsOf(std::initializer_list<Bytes> clusters, const std::set<int>& tracks,
                         const Bytes& ofSound = {}) {
        Bytes body = mkv::info();
        append(body, mkv::tracks({mkv::entry(1, 1, "V_MPEG4/ISO/AVC"),
                                  mkv::entry(2, 2, "A_AAC", {ofSound}),
                                  mkv::entry(3, 2, "A_AAC", {ofSound})}));
        for (const Bytes& each : clusters) append(body, each);
        Bytes file = mkv::header();
        append(file, mkv::segment({body}));
        const auto mkv = MKVFile::open(folder_.write("a.mkv", file));
        return {*mkv, tracks, control_};
    }
    TempFolder folder_;
    RunControl control_;
};

TEST_F(TrackStartsTest, ATrackIsLateByItsDistanceFromTheEarliest) {
    const auto starts = startsOf(
        {cluster(100,
                 {simpleBlock(1, 0, frame), simpleBlock(2, 250, frame), simpleBlock(3, 1, frame)})},
        {1, 2, 3});
    EXPECT_EQ(starts.delayMs(1), 0);
    EXPECT_EQ(starts.delayMs(2), 250);
    EXPECT_EQ(starts.delayMs(3), 1);
    EXPECT_EQ(starts.beginMs(), 100);
}

TEST_F(TrackStartsTest, PicturesOutOfOrderCountByTheEarliest) {
    const auto starts = startsOf({cluster(0, {simpleBlock(1, 80, frame), simpleBlock(2, 0, frame),
                                              simpleBlock(1, 40, frame)})},
                                 {1, 2});
    EXPECT_EQ(starts.delayMs(1), 40);
}

TEST_F(TrackStartsTest, ATrackThatBeginsMuchLaterIsFound) {
    const auto starts = startsOf(
        {cluster(0, {simpleBlock(1, 0, frame)}), cluster(600'000, {simpleBlock(1, 0, frame)}),
         cluster(700'000, {simpleBlock(2, 0, frame)})},
        {1, 2});
    EXPECT_EQ(starts.delayMs(2), 700'000);
}

TEST_F(TrackStartsTest, TracksThatAreNotKeptDoNotCount) {
    const auto starts =
        startsOf({cluster(0, {simpleBlock(3, 0, frame), simpleBlock(1, 500, frame)})}, {1, 2});
    EXPECT_EQ(starts.delayMs(1), 0);
    EXPECT_EQ(starts.beginMs(), 500);
    EXPECT_EQ(starts.delayMs(2), 0) << "it has no frames";
}

TEST_F(TrackStartsTest, NegativeTimesAreBeforeTheStart) {
    const auto starts =
        startsOf({cluster(0, {simpleBlock(1, -20, frame), simpleBlock(2, 10, frame)})}, {1, 2});
    EXPECT_EQ(starts.delayMs(2), 30);
    EXPECT_EQ(starts.beginMs(), 0);
}

TEST_F(TrackStartsTest, ABlockWithoutFramesIsNoStart) {
    const Bytes broken = simpleBlock(2, 0, Bytes{5, 0xFF},
                                     mkv::keyframe | static_cast<std::uint8_t>(mkv::Lace::Xiph));
    const auto starts = startsOf(
        {cluster(0, {simpleBlock(1, 0, frame), broken, simpleBlock(2, 70, frame)})}, {1, 2});
    EXPECT_EQ(starts.delayMs(2), 70);
}

TEST_F(TrackStartsTest, TheRunInOfAnEncoderIsTakenOff) {
    const Bytes delay = mkv::number(0x56AA, 21'000'000);
    const auto starts = startsOf({cluster(0, {simpleBlock(1, 21, frame), simpleBlock(2, 21, frame),
                                              simpleBlock(3, 71, frame)})},
                                 {1, 2, 3}, delay);
    EXPECT_EQ(starts.delayMs(1), 21);
    EXPECT_EQ(starts.delayMs(2), 0);
    EXPECT_EQ(starts.delayMs(3), 50);
    const auto cut =
        startsOf({cluster(0, {simpleBlock(1, 0, frame), simpleBlock(2, 0, frame)})}, {1, 2}, delay);
    EXPECT_EQ(cut.delayMs(1), 0) << "what lies before 0 isn't heard";
}

TEST_F(TrackStartsTest, ACancelEndsTheReading) {
    control_.cancel();
    Bytes many;
    for (int i = 0; i < 1000; i++) append(many, simpleBlock(1, 0, frame));
    EXPECT_THROW(startsOf({cluster(0, {many})}, {1, 2}), CancelError);
}

}  // namespace
}  // namespace marlet::test
