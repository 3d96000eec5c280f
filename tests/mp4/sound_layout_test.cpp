#include "mp4/sound_layout.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

/// A track of samples of 100 bytes, in chunks that lie where they are put.
Track soundOf(std::vector<std::uint32_t> durations, std::vector<Chunk> chunks) {
    Track track;
    track.handler = "soun";
    track.timescale = 1000;
    track.sizes.assign(durations.size(), 100);
    track.durations = std::move(durations);
    track.chunks = std::move(chunks);
    return track;
}

std::vector<std::uint32_t> samples(std::size_t count, std::uint32_t duration = 500) {
    return std::vector<std::uint32_t>(count, duration);
}

double measured(std::vector<Track> tracks, std::optional<double> videoEnd = {}) {
    MP4Summary summary;
    summary.tracks = std::move(tracks);
    summary.videoEnd = videoEnd;
    return measure(summary);
}

TEST(GapCap, IsFourTimesTheMostFrequentDuration) {
    EXPECT_EQ(gapCap({10, 20, 20, 30}), 80U);
    EXPECT_EQ(gapCap({4'000'000'000}), 16'000'000'000U);
}

TEST(GapCap, IgnoresSamplesWithoutDuration) {
    EXPECT_EQ(gapCap({0, 0, 0, 7}), 28U);
}

TEST(GapCap, WithoutAnyDurationNothingIsCapped) {
    EXPECT_EQ(gapCap({}), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(gapCap({0, 0}), std::numeric_limits<std::uint64_t>::max());
}

TEST(GapCap, IsFoundAmongAHundredThousandDifferentDurations) {
    std::vector<std::uint32_t> durations;
    for (std::uint32_t i = 1; i <= 100'000; i++) durations.push_back(i);
    durations.push_back(77);
    EXPECT_EQ(gapCap(durations), 308U);
}

TEST(Measure, AFileWithoutSoundMeasures0) {
    EXPECT_EQ(measured({}), 0);
}

TEST(Measure, AdjacentChunksOfATrackAddUp) {
    EXPECT_EQ(measured({soundOf(samples(4), {{1000, 0, 2}, {1200, 2, 2}})}), 2.0);
}

TEST(Measure, OneByteBetweenTwoChunksEndsTheStretch) {
    EXPECT_EQ(measured({soundOf(samples(4), {{1000, 0, 2}, {1201, 2, 2}})}), 1.0);
}

TEST(Measure, ChunksJoinInTheOrderOfTheFileNotOfTheTable) {
    EXPECT_EQ(measured({soundOf(samples(4), {{1200, 0, 2}, {1000, 2, 2}})}), 2.0);
}

TEST(Measure, TwoTracksAreNeverAdded) {
    const Track first = soundOf(samples(2), {{1000, 0, 2}});
    const Track second = soundOf(samples(3), {{1200, 0, 3}});
    EXPECT_EQ(measured({first, second}), 1.5);
}

TEST(Measure, IsRoundedToHundredths) {
    EXPECT_EQ(measured({soundOf({1004}, {{0, 0, 1}})}), 1.0);
    EXPECT_EQ(measured({soundOf({1006}, {{0, 0, 1}})}), 1.01);
}

TEST(Measure, Exactly1SecondIsFineAndAHundredthMoreIsNot) {
    EXPECT_FALSE(measured({soundOf({1000}, {{0, 0, 1}})}) > soundLayoutLimit);
    EXPECT_FALSE(measured({soundOf({1004}, {{0, 0, 1}})}) > soundLayoutLimit);
    EXPECT_TRUE(measured({soundOf({1010}, {{0, 0, 1}})}) > soundLayoutLimit);
}

TEST(Measure, OneLongSampleCountsAsFourOrdinaryOnes) {
    std::vector<std::uint32_t> durations = samples(10, 20);
    durations.push_back(60'000);
    EXPECT_EQ(measured({soundOf(durations, {{0, 10, 1}})}), 0.08);
}

TEST(Measure, SoundBehindThePictureCountsForNothing) {
    const auto durations = samples(400);
    const std::vector<Chunk> chunks = {{0, 0, 1}, {500, 200, 200}};
    Track track = soundOf(durations, chunks);
    EXPECT_EQ(measured({track}, 100.0), 0.5);
    EXPECT_EQ(measured({track}), 100.0);
}

TEST(Measure, AChunkThatEndsBehindThePictureCountsForThePartBeforeIt) {
    EXPECT_EQ(measured({soundOf(samples(10), {{0, 0, 10}})}, 3.25), 3.25);
}

TEST(Measure, ALateSoundTrackIsClippedByItsPresentationTime) {
    Track track = soundOf(samples(10), {{0, 0, 10}});
    track.presOffset = 8;
    EXPECT_EQ(measured({track}, 10.0), 2.0);
}

TEST(Measure, SoundThatStartsBehindThePictureCountsForNothing) {
    Track track = soundOf(samples(10), {{0, 0, 10}});
    track.presOffset = 20;
    EXPECT_EQ(measured({track}, 10.0), 0.0);
}

TEST(Measure, AChunkBeyondTheTimeTableCountsFor0AndStillMovesOn) {
    Track track = soundOf(samples(4), {{0, 0, 2}, {200, 4, 2}, {400, 2, 2}});
    track.sizes.assign(6, 100);
    EXPECT_EQ(measured({track}), 2.0);
    track.sizes.resize(4);
    EXPECT_EQ(measured({track}), 1.0) << "without sizes the chunk ends where it starts";
}

TEST(Measure, ChunksThatGoBackThroughTheSamplesAreMeasuredAlike) {
    EXPECT_EQ(measured({soundOf({100, 200, 300, 400}, {{0, 2, 2}, {900, 0, 2}})}), 0.7);
}

Movie film(Movie::Layout layout) {
    Movie movie;
    movie.tracks = {evenTrack("vide", 50, 40, 40), evenTrack("soun", 20, 30, 100, 2)};
    movie.layout = layout;
    return movie;
}

TEST(MeasureInterleave, AnInterleavedFileMeasuresOneChunk) {
    const TempFolder folder;
    const auto file = folder.write("a.mp4", buildMovie(film(Movie::Layout::Interleaved)));
    EXPECT_EQ(measureInterleave(file), 0.2);
}

TEST(MeasureInterleave, AFileWithItsSoundInOneBlockMeasuresItsWholeLength) {
    const TempFolder folder;
    const auto file = folder.write("a.mp4", buildMovie(film(Movie::Layout::TrackByTrack)));
    EXPECT_EQ(measureInterleave(file), 2.0);
}

TEST(MeasureInterleave, MovingTheChunksApartChangesTheMeasureAndNotTheSamples) {
    const TempFolder folder;
    const Bytes good = buildMovie(film(Movie::Layout::Interleaved));
    const Bytes bad = storedTrackByTrack(good);
    EXPECT_EQ(samplesOf(good, 1), samplesOf(bad, 1));
    EXPECT_EQ(measureInterleave(folder.write("a.mp4", bad)), 2.0);
}

}  // namespace
}  // namespace marlet::test
