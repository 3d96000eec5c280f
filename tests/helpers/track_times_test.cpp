#include "helpers/track_times.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "foundation/errors.h"

namespace marlet::test {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t ms = 1'000'000;

/// Times rounded to milliseconds, as Matroska has them.
std::vector<std::int64_t> rounded(double rate, int frames) {
    std::vector<std::int64_t> times;
    for (int i = 0; i < frames; i++) times.push_back(std::llround(i * 1000 / rate) * ms);
    return times;
}

std::vector<double> presented(const TrackTimes& times) {
    std::vector<double> seconds;
    double at = -static_cast<double>(times.mediaStart);
    for (std::size_t i = 0; i < times.durations.size(); i++) {
        const double offset = times.offsets.empty() ? 0 : times.offsets[i];
        seconds.push_back((at + offset) / times.timescale);
        at += times.durations[i];
    }
    return seconds;
}

std::vector<SoundTimes::FrameTime> told(const std::vector<std::int64_t>& times) {
    return {times.begin(), times.end()};
}

}  // namespace

TEST(VideoTimes, GivesASteadyFilmItsExactRate) {
    const TrackTimes film = VideoTimes::make(rounded(24000.0 / 1001, 5000), std::nullopt);
    EXPECT_EQ(film.timescale, 24'000U);
    EXPECT_THAT(film.durations, Each(1001U));
    EXPECT_THAT(film.offsets, IsEmpty());
    EXPECT_EQ(film.length, 5000U * 1001);
    EXPECT_EQ(VideoTimes::make(rounded(25, 100), std::nullopt).timescale, 25'000U);
    EXPECT_THAT(VideoTimes::make(rounded(60, 100), std::nullopt).durations, Each(1000U));
    EXPECT_EQ(VideoTimes::make(rounded(15, 100), std::nullopt).timescale, 15'000U);
    EXPECT_THAT(VideoTimes::make(rounded(12000.0 / 1001, 100), std::nullopt).durations,
                Each(1001U));
}

TEST(VideoTimes, TellsTwentyFourFromItsNearNeighbour) {
    EXPECT_THAT(VideoTimes::make(rounded(24, 5000), std::nullopt).durations, Each(1000U));
}

TEST(VideoTimes, KeepsTheTimesOfAnUnsteadyFilm) {
    const std::vector<std::int64_t> times{100 * ms, 133 * ms, 250 * ms, 251 * ms, 900 * ms};
    const TrackTimes film = VideoTimes::make(times, 40 * ms);
    EXPECT_EQ(film.timescale, 90'000U);
    EXPECT_THAT(film.durations, ElementsAre(33 * 90, 117 * 90, 90, 649 * 90, 40 * 90));
    EXPECT_EQ(film.length, (800U + 40) * 90);
}

TEST(VideoTimes, PutsFramesInTheOrderOfDecoding) {
    // I P B B, decoded in this order.
    const std::vector<std::int64_t> times{0, 120 * ms, 40 * ms, 80 * ms};
    const TrackTimes film = VideoTimes::make(times, std::nullopt);
    EXPECT_EQ(film.timescale, 25'000U);
    EXPECT_EQ(film.mediaStart, 1000U);
    EXPECT_THAT(film.offsets, ElementsAre(1000, 3000, 0, 0));
    EXPECT_THAT(presented(film), ElementsAre(0, 0.12, 0.04, 0.08));
}

TEST(VideoTimes, KeepsFramesThatAreShownBeforeTheFirstDecodedOne) {
    // An open group: I, then B frames that lead it.
    const std::vector<std::int64_t> times{80 * ms, 0, 40 * ms, 120 * ms};
    EXPECT_THAT(presented(VideoTimes::make(times, std::nullopt)), ElementsAre(0.08, 0, 0.04, 0.12));
}

TEST(VideoTimes, TakesNegativeAndEqualTimes) {
    const TrackTimes film = VideoTimes::make({-20 * ms, -20 * ms, 7 * ms}, std::nullopt);
    EXPECT_THAT(film.durations, ElementsAre(1, 27 * 90 - 1, 27 * 90 - 1));
}

TEST(VideoTimes, RefusesTimesThatNoFilmHas) {
    EXPECT_THROW(VideoTimes::make({0, INT64_MAX}, std::nullopt), MFError);
    EXPECT_THROW(VideoTimes::make({INT64_MIN, INT64_MAX}, std::nullopt), MFError);
    EXPECT_THROW(VideoTimes::make({0, 900LL * 3600 * 1000 * ms}, std::nullopt), MFError);
}

TEST(VideoTimes, OfNoFramesAreNone) {
    EXPECT_EQ(VideoTimes::make({}, std::nullopt).length, 0U);
}

TEST(SoundTimes, FollowEachOtherWithoutAGapWhateverTheSourcesRounding) {
    const TrackTimes sound = SoundTimes::make(told(rounded(48000.0 / 1024, 3000)), 48'000, 1024);
    EXPECT_THAT(sound.durations, Each(1024U));
    EXPECT_EQ(sound.length, 3000U * 1024);
}

TEST(SoundTimes, GiveTheFramesOfALaceTheirLength) {
    const TrackTimes sound =
        SoundTimes::make({0, std::nullopt, std::nullopt, 96 * ms}, 48'000, 1536);
    EXPECT_THAT(sound.durations, Each(1536U));
}

TEST(SoundTimes, KeepAGap) {
    const TrackTimes sound = SoundTimes::make(told({0, 32 * ms, 500 * ms, 532 * ms}), 48'000, 1536);
    EXPECT_THAT(sound.durations, ElementsAre(1536, 468 * 48, 1536, 1536));
}

TEST(SoundTimes, NeverRunBackwards) {
    const TrackTimes sound = SoundTimes::make(told({100 * ms, 132 * ms, 0, 32 * ms}), 48'000, 1536);
    EXPECT_THAT(sound.durations, ElementsAre(1536, 1, 1, 1536));
}

TEST(SoundTimes, RefuseTimesThatNoFilmHas) {
    EXPECT_THROW(SoundTimes::make(told({0, INT64_MAX}), 48'000, 1536), MFError);
    EXPECT_THROW(SoundTimes::make(told({INT64_MIN, INT64_MAX}), 48'000, 1536), MFError);
}

}  // namespace marlet::test
