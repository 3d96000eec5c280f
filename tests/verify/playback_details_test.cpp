#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/box_reader.h"
#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using RebuiltPlayback = RebuildVerifier;

TEST_F(RebuiltPlayback, AnotherTimeScaleIsAReason) {
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), 12, be32(1010)),
                ElementsAre("track 2 (soun mp4a): time scale differs"));
}

TEST_F(RebuiltPlayback, AnotherUseOfTheSampleDescriptionsIsAReason) {
    EXPECT_THAT(reasonsFor(tablePath(1, "stsc"), 16, be32(2)),
                ElementsAre("track 2 (soun mp4a): use of the sample descriptions differs"));
}

TEST_F(RebuiltPlayback, AKeyframeTableWithoutKeyframesIsNotTheSameAsNone) {
    Movie movie = film();
    movie.tracks[0].tables = {};
    const Bytes original = buildMovie(movie);
    movie.tracks[0].tables = {stssBox({})};
    EXPECT_THAT(verify(original, buildMovie(interleaved(movie))).reasons,
                ElementsAre("track 1 (vide avc1): keyframe table differs"));
}

TEST_F(RebuiltPlayback, MediaOutsideTheFileIsAReason) {
    Movie movie = film();
    movie.tracks[0].mediaInfo = {
        box("dinf", {fullBox("dref", 0, 0, joined({be32(1), fullBox("url ", 0, 1, Bytes())}))})};
    const Bytes original = buildMovie(movie);
    EXPECT_THAT(verify(original, buildMovie(interleaved(movie))).reasons, IsEmpty());
    movie.tracks[0].mediaInfo = {
        box("dinf", {fullBox("dref", 0, 0, joined({be32(1), fullBox("url ", 0, 0, Bytes())}))})};
    EXPECT_THAT(verify(original, buildMovie(interleaved(movie))).reasons,
                ElementsAre("track 1 (vide avc1): media data is said to lie outside the file"));
}

TEST_F(RebuiltPlayback, ALostOrOtherReferenceIsAReason) {
    const char* differ = "track 1 (vide avc1): references to other tracks differ";
    Movie movie = interleaved(film());
    movie.tracks[0].boxes = {};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, ElementsAre(differ));
    movie.tracks[0].boxes = {box("tref", {box("folw", be32(3))})};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, ElementsAre(differ));
    // One to a track that isn't there leads nowhere.
    movie.tracks[0].boxes = {box("tref", {box("chap", joined({be32(3), be32(77)}))})};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, IsEmpty());
}

TEST_F(RebuiltPlayback, ReferencesCountByPositionNotByNumber) {
    Bytes rebuilt = edited(rebuilt_, trackPath(2, {{"tkhd"}}), 12, be32(9));
    rebuilt = edited(rebuilt, trackPath(0, {{"tref"}, {"chap"}}), 0, be32(9));
    EXPECT_THAT(verify(original_, rebuilt).reasons, IsEmpty());
}

TEST_F(RebuiltPlayback, ATrackNumberUsedTwiceIsAReason) {
    for (const std::uint32_t number : {0U, 1U})
        EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 12, be32(number)),
                    ElementsAre("a track's number is missing or used twice"));
}

TEST_F(RebuiltPlayback, ATrackThatLeavesTheFilmIsAReason) {
    EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 0, be32(1)),
                ElementsAre("track 2 (soun mp4a): use in the film (a flag) differs"));
}

TEST_F(RebuiltPlayback, ALengthInAHeaderIsTheOriginalsOrThatOfTheTables) {
    const char* differ = "track 2 (soun mp4a): duration in its headers differs";
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), 16, be32(5000)), ElementsAre(differ));
    EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 20, be32(1000)), ElementsAre(differ));
    EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 20, be32(4000)), IsEmpty());
    const Bytes original = edited(original_, mediaPath(1, {{"mdhd"}}), 16, be32(5000));
    EXPECT_THAT(verify(original, rebuilt_).reasons, IsEmpty());
}

TEST_F(RebuiltPlayback, AnotherRateVolumeOrMatrixOfTheMovieIsAReason) {
    for (const std::size_t at : {20, 24, 36, 68})
        EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, at, be16(0x0203)),
                    ElementsAre("movie header rate, volume or matrix differ"));
    // The number for the next track, behind them, plays no part.
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 96, be32(7)), IsEmpty());
}

TEST_F(RebuiltPlayback, ANewContainerMaySayReferencesAndHeadersInItsOwnWay) {
    terms_.lenientSampleEntries = true;
    Movie movie = interleaved(film());
    movie.tracks[0].boxes = {};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, IsEmpty());
    EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 0, be32(1)), IsEmpty());
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 20, be32(0x20000)), IsEmpty());
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), 12, be32(1010)),
                ElementsAre("track 2 (soun mp4a): time scale differs"));
}

TEST_F(RebuiltPlayback, AFilmInFragmentsCanNotBeProved) {
    Movie movie = film();
    movie.boxes = {box("mvex", Bytes())};
    const Bytes fragmented = buildMovie(interleaved(movie));
    EXPECT_THAT(verify(fragmented, fragmented).reasons,
                ElementsAre("the file is in fragments, whose samples can't be compared"));
    EXPECT_THAT(verify(original_, fragmented).reasons,
                ElementsAre("the file is in fragments, whose samples can't be compared"));
}

TEST_F(RebuiltPlayback, SamplesOutsideTheMediaDataAreAReason) {
    const char* outside = "samples lie outside the media data (mdat)";
    const std::size_t header = rebuilt_.size() - payloadOf(rebuilt_, "mdat").size() - 8;
    EXPECT_THAT(verify(original_, patched(rebuilt_, header + 4, viewOf("junk"))).reasons,
                ElementsAre(outside));
    EXPECT_THAT(verify(original_, patched(rebuilt_, header, be32(5000))).reasons,
                ElementsAre(outside));
    // An original that is no better can't be asked for.
    const std::size_t own = original_.size() - payloadOf(original_, "mdat").size() - 8;
    EXPECT_THAT(verify(patched(original_, own + 4, viewOf("junk")),
                       patched(rebuilt_, header + 4, viewOf("junk")))
                    .reasons,
                IsEmpty());
}

TEST_F(RebuiltPlayback, AnEditListInOtherUnitsIsAReason) {
    Bytes rebuilt = edited(rebuilt_, {{"moov"}, {"mvhd"}}, 12, be32(1010));
    EXPECT_THAT(verify(original_, rebuilt).reasons,
                ElementsAre("track 1 (vide avc1): edit list differs"));
}

TEST_F(RebuiltPlayback, AnotherKindOfFileIsAReason) {
    EXPECT_THAT(verify(original_, patched(rebuilt_, 8, viewOf("qt  "))).reasons,
                ElementsAre("kind of file (ftyp) differs (isom vs qt  )"));
    EXPECT_THAT(verify(original_, patched(rebuilt_, 4, viewOf("free"))).reasons,
                ElementsAre("kind of file (ftyp) differs (isom vs )"));
}

TEST_F(RebuiltPlayback, TagsBehindAnotherHandlerAreAReason) {
    const Bytes rebuilt =
        edited(rebuilt_, {{"moov"}, {"udta"}, {"meta"}, {"hdlr"}}, 8, viewOf("mdta"));
    EXPECT_THAT(verify(original_, rebuilt).reasons,
                ElementsAre("handler of the iTunes metadata differs"));
}

TEST_F(RebuiltPlayback, AnotherHeaderOfTheMediaIsAReason) {
    Movie movie = film();
    movie.tracks[1].mediaInfo = {fullBox("smhd", 0, 0, Bytes(4))};
    const Bytes original = buildMovie(movie);
    movie.tracks[1].mediaInfo = {};
    EXPECT_THAT(verify(original, buildMovie(interleaved(movie))).reasons,
                ElementsAre("track 2 (soun mp4a): header of its kind of media differs"));
}

TEST_F(RebuiltPlayback, AnIndexThatOnlyForgivingReadersWalkIsAReason) {
    const char* malformed = "the index of the rebuilt file isn't well formed";
    // Sizes that run past the folder around them, and versions that nobody has.
    for (const BoxPath& path : {mediaPath(1), mediaPath(1, {{"minf"}}), tablePath(1, "stco"),
                                BoxPath{{"moov"}, {"udta"}, {"chpl"}}}) {
        const std::size_t size = payloadAt(rebuilt_, path) - 8;
        EXPECT_THAT(verify(original_, patched(rebuilt_, size, be16(1))).reasons,
                    Contains(malformed));
    }
    for (const char* table : {"stts", "stsc", "stsz", "stco"})
        EXPECT_THAT(reasonsFor(tablePath(1, table), 0, Bytes{9}), ElementsAre(malformed));
    const Bytes broken = edited(original_, tablePath(1, "stts"), 0, Bytes{9});
    EXPECT_THAT(verify(broken, edited(rebuilt_, tablePath(1, "stts"), 0, Bytes{9})).reasons,
                IsEmpty());
}

TEST_F(RebuiltPlayback, SamplesWithDataBesideThemCanNotBeProved) {
    Movie movie = film();
    movie.tracks[0].tables.push_back(fullBox("saio", 0, 0, joined({be32(1), be32(48)})));
    EXPECT_THAT(
        verify(buildMovie(movie), buildMovie(interleaved(movie))).reasons,
        ElementsAre("track 1 (vide avc1): samples have data beside them that can't be compared"));
}

}  // namespace
}  // namespace marlet::test
