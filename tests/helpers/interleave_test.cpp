// How samples are put side by side: by presentation time, in slices, with sound kept apart.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "helpers/laid_out.h"
#include "support/box_reader.h"

namespace marlet::test {

namespace {

using testing::ElementsAre;

/// Which track each chunk belongs to, in the order of the file, from 1.
std::vector<int> orderOf(ByteView file, int tracks) {
    std::vector<std::pair<std::uint64_t, int>> chunks;
    for (int t = 0; t < tracks; t++)
        for (const StoredChunk& chunk : chunksOf(file, t)) chunks.push_back({chunk.offset, t + 1});
    std::sort(chunks.begin(), chunks.end());
    std::vector<int> order;
    for (const auto& chunk : chunks) order.push_back(chunk.second);
    return order;
}

Movie apart(std::vector<MovieTrack> tracks) {
    Movie movie;
    movie.layout = Movie::Layout::TrackByTrack;
    movie.tracks = std::move(tracks);
    return movie;
}

Bytes checkedLayout(const Movie& movie) {
    const Bytes file = buildMovie(movie);
    const Bytes result = laidOut(file);
    EXPECT_TRUE(samplesEqual(file, result, static_cast<int>(movie.tracks.size())));
    EXPECT_EQ(laidOut(result), result);
    return result;
}

}  // namespace

TEST(Interleave, TakesTheTracksOfASliceInTheOrderOfTheIndex) {
    const Bytes result =
        checkedLayout(apart({evenTrack("vide", 6, 10, 250), evenTrack("soun", 6, 10, 250),
                             evenTrack("text", 1, 10, 1500)}));
    EXPECT_THAT(orderOf(result, 3), ElementsAre(1, 2, 3, 1, 2, 1, 2));
}

TEST(Interleave, PlacesASoundTrackThatStartsLateWhereItPlays) {
    Movie movie = apart({evenTrack("vide", 6, 10, 500), evenTrack("soun", 2, 10, 500)});
    movie.tracks[1].edits = {{1500, -1}, {1000, 0}};
    EXPECT_THAT(orderOf(checkedLayout(movie), 2), ElementsAre(1, 1, 1, 1, 2, 1, 2, 1));
}

TEST(Interleave, PlacesASoundTrackWhoseHeadIsCutWhereItPlays) {
    Movie movie = apart({evenTrack("vide", 2, 10, 500), evenTrack("soun", 4, 10, 500)});
    movie.tracks[1].edits = {{1000, 1000}};
    const Bytes result = checkedLayout(movie);
    EXPECT_THAT(orderOf(result, 2), ElementsAre(2, 2, 1, 2, 1, 2));
    EXPECT_LE(soundLayout(result), 0.5) << "what is cut is not measured together either";
}

TEST(Interleave, KeepsSlicesOfSoundApartBesideALongStillPicture) {
    Movie movie = apart({evenTrack("vide", 1, 1000, 60'000), evenTrack("soun", 3000, 10, 20)});
    const Bytes result = checkedLayout(movie);
    EXPECT_DOUBLE_EQ(soundLayout(result), 0.5);
    EXPECT_EQ(chunksOf(result, 1).size(), 120U);
}

TEST(Interleave, KeepsSlicesOfSoundApartInAFileOfOneSoundTrack) {
    const Bytes result = checkedLayout(apart({evenTrack("soun", 500, 10, 20)}));
    EXPECT_DOUBLE_EQ(soundLayout(result), 0.5);
    // 20 slices, 19 gaps of 8 bytes.
    EXPECT_EQ(topBox(result, "mdat").size(), 8U + 500 * 10 + 19 * 8);
}

TEST(Interleave, LeavesNoGapWhereOtherTracksLieBetween) {
    const Bytes result =
        checkedLayout(apart({evenTrack("soun", 100, 10, 20), evenTrack("soun", 100, 10, 20)}));
    EXPECT_DOUBLE_EQ(soundLayout(result), 0.5);
    EXPECT_EQ(topBox(result, "mdat").size(), 8U + 2 * 100 * 10);
}

TEST(Interleave, LeavesNoGapBetweenSlicesOfPicture) {
    const Bytes result = checkedLayout(apart({evenTrack("vide", 100, 10, 40)}));
    EXPECT_EQ(topBox(result, "mdat").size(), 8U + 100 * 10);
}

TEST(Interleave, KeepsSlicesApartWhenOnlyEmptySamplesLieBetween) {
    const Bytes result =
        checkedLayout(apart({evenTrack("soun", 100, 10, 20), evenTrack("text", 20, 0, 100)}));
    EXPECT_DOUBLE_EQ(soundLayout(result), 0.5);
}

TEST(Interleave, LaysOutSoundThatIsLongerThanThePicture) {
    const Bytes result =
        checkedLayout(apart({evenTrack("vide", 50, 100, 40), evenTrack("soun", 500, 10, 20)}));
    EXPECT_LE(soundLayout(result), 0.5);
    EXPECT_EQ(chunksOf(result, 1).size(), 20U);
}

TEST(Interleave, KeepsASampleThatIsLongerThanASliceWhole) {
    Movie movie = apart({evenTrack("vide", 8, 10, 500), evenTrack("text", 3, 10, 1200)});
    EXPECT_THAT(orderOf(checkedLayout(movie), 2), ElementsAre(1, 2, 1, 1, 2, 1, 1, 2, 1, 1, 1));
}

TEST(Interleave, BearsTimesAtTheEndsOfTheirRange) {
    Movie movie = apart({evenTrack("soun", 3, 10, 0x7FFFFFFF), evenTrack("vide", 3, 10, 0)});
    movie.tracks[0].timescale = 1;
    movie.tracks[0].edits = {{0xFFFFFFFF, -1}, {0xFFFFFFFF, 0x7FFFFFFF}};
    movie.tracks[1].edits = {{1000, 0x7FFFFFFF}};
    const Bytes result = checkedLayout(movie);
    EXPECT_EQ(chunksOf(result, 0).size(), 3U);
    EXPECT_EQ(chunksOf(result, 1).size(), 1U);
}

}  // namespace marlet::test
