#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/box_reader.h"
#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(RebuildVerifier, ARebuildThatOnlyMovedChunksIsProved) {
    const VerifyReport report = verify(original_, rebuilt_);
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, IsEmpty());
    EXPECT_EQ(report.before, 4.0);
    EXPECT_EQ(report.after, 0.1);
}

TEST_F(RebuildVerifier, OneFlippedByteOfASampleIsTheReasonOfThatTrackOnly) {
    const std::size_t place = chunksOf(rebuilt_, 1).at(7).offset + 11;
    EXPECT_THAT(verify(original_, flipped(rebuilt_, place)).reasons,
                ElementsAre("track 2 (soun mp4a): sample data differs"));
}

TEST_F(RebuildVerifier, EveryHeaderThatDiffersIsAReason) {
    const Bytes one = be32(1);
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"hdlr"}}), 8, viewOf("auxv")),
                ElementsAre("track 2 (soun mp4a): type differs (auxv)"));
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), 20, be16(0x10B5)),
                ElementsAre("track 2 (soun mp4a): language differs (English vs German)"));
    EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), 22, be16(7)),
                ElementsAre("track 2 (soun mp4a): language differs (English vs English)"));
    for (const std::size_t date : {4, 8}) {
        EXPECT_THAT(reasonsFor(mediaPath(1, {{"mdhd"}}), date, one),
                    ElementsAre("track 2 (soun mp4a): media header dates differ"));
        EXPECT_THAT(reasonsFor(trackPath(0, {{"tkhd"}}), date, one),
                    ElementsAre("track 1 (vide avc1): track header dates differ"));
    }
    for (const std::size_t rest : {32, 36, 40, 76, 80})
        EXPECT_THAT(reasonsFor(trackPath(0, {{"tkhd"}}), rest, be16(77)),
                    ElementsAre("track 1 (vide avc1): track header layer, volume, matrix or "
                                "display size differ"));
    EXPECT_THAT(reasonsFor(trackPath(0, {{"tkhd"}}), 0, be32(2)),
                ElementsAre("track 1 (vide avc1): enabled flag differs"));
    // The group lies in the bytes that are compared as a whole, too.
    EXPECT_THAT(reasonsFor(trackPath(1, {{"tkhd"}}), 34, be16(3)),
                ElementsAre("track 2 (soun mp4a): track header layer, volume, matrix or display "
                            "size differ",
                            "track 2 (soun mp4a): alternate group differs"));
}

TEST_F(RebuildVerifier, ADifferentCodecIsToldByHeaderAndDescription) {
    const auto reasons = reasonsFor(tablePath(1, "stsd"), 4, viewOf("alac"));
    EXPECT_THAT(reasons,
                ElementsAre("track 2 (soun mp4a): codec differs (alac)",
                            "track 2 (soun mp4a): codec configuration: sample entry type differs "
                            "(mp4a vs alac)"));
}

TEST_F(RebuildVerifier, EveryTableThatDiffersIsAReason) {
    EXPECT_THAT(reasonsFor(trackPath(0, {{"edts"}, {"elst"}}), 12, be32(100)),
                ElementsAre("track 1 (vide avc1): edit list differs"));
    EXPECT_THAT(reasonsFor(tablePath(0, "stsz"), 12, be32(301)),
                ElementsAre("track 1 (vide avc1): sample count or sizes differ"));
    EXPECT_THAT(reasonsFor(tablePath(0, "stts"), 12, be32(101)),
                ElementsAre("track 1 (vide avc1): sample timing differs"));
    EXPECT_THAT(reasonsFor(tablePath(0, "ctts"), 12, be32(201)),
                ElementsAre("track 1 (vide avc1): composition offsets differ"));
    EXPECT_THAT(reasonsFor(tablePath(0, "stss"), 12, be32(22)),
                ElementsAre("track 1 (vide avc1): keyframe table differs"));
}

TEST_F(RebuildVerifier, AllThatFailsCounts) {
    Bytes rebuilt = edited(rebuilt_, tablePath(0, "stss"), 12, be32(22));
    rebuilt = edited(rebuilt, tablePath(0, "ctts"), 12, be32(201));
    rebuilt = edited(rebuilt, mediaPath(1, {{"mdhd"}}), 4, be32(1));
    EXPECT_THAT(verify(original_, rebuilt).reasons,
                ElementsAre("track 1 (vide avc1): composition offsets differ",
                            "track 1 (vide avc1): keyframe table differs",
                            "track 2 (soun mp4a): media header dates differ"));
}

TEST_F(RebuildVerifier, ATrackThatBecameEnabledIsRefusedUnlessOnPurpose) {
    Movie off = film();
    off.tracks[1].flags = 2;
    const Bytes original = buildMovie(off);
    EXPECT_THAT(verify(original, rebuilt_).reasons,
                ElementsAre("track 2 (soun mp4a): enabled flag differs"));
    terms_.enabledOnPurpose = {1};
    EXPECT_THAT(verify(original, rebuilt_).reasons, IsEmpty());
    EXPECT_THAT(verify(original_, buildMovie(interleaved(off))).reasons,
                ElementsAre("track 2 (soun mp4a): enabled flag differs"));
}

TEST_F(RebuildVerifier, TheDurationsMayDifferByATenthOfASecond) {
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(4100)), IsEmpty());
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(4102)),
                ElementsAre("duration differs (4.00 s vs 4.10 s)"));
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(3800)),
                ElementsAre("duration differs (4.00 s vs 3.80 s)"));
}

TEST_F(RebuildVerifier, ADifferentNumberOfTracksEndsTheReport) {
    Movie fewer = interleaved(film());
    fewer.tracks.pop_back();
    fewer.tags.clear();
    const VerifyReport report = verify(original_, buildMovie(fewer));
    EXPECT_THAT(report.reasons, ElementsAre("track count differs (3 vs 2)"));
    EXPECT_EQ(report.after, 0);
}

TEST_F(RebuildVerifier, AWrongTableEndsTheRunBeforeAnyMediaIsRead) {
    progress_ = [](const std::string&, double) { ADD_FAILURE() << "media was read"; };
    Bytes rebuilt = edited(rebuilt_, tablePath(0, "stss"), 12, be32(22));
    rebuilt = flipped(rebuilt, chunksOf(rebuilt, 1).at(0).offset);
    const VerifyReport report = verify(original_, rebuilt);
    EXPECT_THAT(report.reasons, ElementsAre("track 1 (vide avc1): keyframe table differs"));
    EXPECT_EQ(report.after, 0);
}

TEST_F(RebuildVerifier, AStretchAboveTheLimitIsRefusedAlthoughAllSamplesAreEqual) {
    const VerifyReport report = verify(original_, original_);
    EXPECT_THAT(report.reasons, ElementsAre("rebuilt file still measures 4.00 s (limit 1.0 s)"));
    EXPECT_EQ(report.after, 4.0);
    terms_.maxAfter = 4.0;
    EXPECT_THAT(verify(original_, original_).reasons, IsEmpty());
}

TEST_F(RebuildVerifier, ProgressRunsFromFiftyFiveToEightyFivePercent) {
    std::vector<double> shares;
    progress_ = [&](const std::string& label, double share) {
        EXPECT_EQ(label, "Verifying");
        shares.push_back(share);
    };
    verify(original_, rebuilt_);
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_GE(shares.front(), 0.55);
    EXPECT_NEAR(shares.back(), 0.85, 1e-9);
}

/// An H.264 entry of 8-bit 4:2:0 High profile, with or without what the media tool adds.
Bytes withAvc(Bytes extension) {
    const Bytes set = {0x67, 0x64, 0x00, 0x0A, 0xAC, 0xD9, 0x5F, 0x88, 0x88, 0xC0, 0x44, 0x00};
    const Bytes record = joined({{1, 0x64, 0, 0x0A, 0xFF, 0xE1},
                                 be16(static_cast<std::uint16_t>(set.size())),
                                 set,
                                 {1},
                                 be16(2),
                                 {0x68, 0xEB},
                                 std::move(extension)});
    return box("avcC", record);
}

TEST_F(RebuildVerifier, AnEquivalentCodecConfigurationIsANote) {
    Movie before = film();
    before.tracks[0].entry = joined({Bytes(78), withAvc({})});
    Movie after = before;
    after.tracks[0].entry = joined({Bytes(78), withAvc({0xFD, 0xF8, 0xF8, 0})});
    const VerifyReport report = verify(buildMovie(before), buildMovie(interleaved(after)));
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, ElementsAre("track 1 (vide avc1): codec configuration rewritten by "
                                          "MP4Box, checked equivalent"));
}

TEST_F(RebuildVerifier, AnotherCodecConfigurationIsAReasonAndInANewContainerANote) {
    Movie before = film();
    before.tracks[0].entry = joined({Bytes(78), box("colr", viewOf("nclx"))});
    Movie after = before;
    after.tracks[0].entry = joined({Bytes(78), box("colr", viewOf("nclc"))});
    EXPECT_THAT(verify(buildMovie(before), buildMovie(interleaved(after))).reasons,
                ElementsAre("track 1 (vide avc1): codec configuration: avc1: box 'colr' differs"));
    terms_.lenientSampleEntries = true;
    const VerifyReport report = verify(buildMovie(before), buildMovie(interleaved(after)));
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, ElementsAre("track 1 (vide avc1): sample description rewritten for "
                                          "MP4 (avc1: box 'colr' differs)"));
}

TEST_F(RebuildVerifier, InANewContainerADecoderMustStillFindWhatItNeedsWhereThatIsAsked) {
    const Bytes dac3 = box("dac3", Bytes{0x10, 0x3D, 0x40});
    Movie before = film();
    before.tracks[1].codec = "ac-3";
    before.tracks[1].entry = joined({Bytes(28), dac3, box("chan", Bytes(12))});
    Movie after = before;
    after.tracks[1].entry = joined({Bytes(28), dac3});
    terms_.lenientSampleEntries = true;
    terms_.sameDecoders = true;
    EXPECT_THAT(verify(buildMovie(before), buildMovie(interleaved(after))).reasons, IsEmpty());
    after.tracks[1].entry = Bytes(28);
    EXPECT_THAT(verify(buildMovie(before), buildMovie(interleaved(after))).reasons,
                ElementsAre("track 2 (soun ac-3): codec configuration: ac-3: box 'dac3' missing in "
                            "rebuilt file"));
    terms_.sameDecoders = false;
    EXPECT_THAT(verify(buildMovie(before), buildMovie(interleaved(after))).reasons, IsEmpty());
}

class RebuildWithoutTracks : public RebuildVerifier {
protected:
    RebuildWithoutTracks() {
        Movie movie = film();
        movie.tracks[2] = evenTrack("soun", 120, 30, 50, 2);  // 6 s: longer than the picture
        movie.tracks[0].boxes = {};
        movie.userData = {};
        original_ = buildMovie(movie);
        movie.tracks.pop_back();
        rebuilt_ = buildMovie(interleaved(movie));
        terms_.keepIndices = {{0, 1}};
    }
};

TEST_F(RebuildWithoutTracks, TheTrackLeftOutIsNotLookedAt) {
    const VerifyReport report = verify(original_, rebuilt_);
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_EQ(report.before, 4.0);
}

TEST_F(RebuildWithoutTracks, TheDurationMayShrinkToTheEndOfThePicture) {
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(3901)), IsEmpty());
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(3898)),
                ElementsAre("duration differs (6.00 s vs 3.90 s)"));
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(6099)), IsEmpty());
    EXPECT_THAT(reasonsFor({{"moov"}, {"mvhd"}}, 16, be32(6102)),
                ElementsAre("duration differs (6.00 s vs 6.10 s)"));
}

TEST_F(RebuildWithoutTracks, WithoutAPictureTheDurationHasNoLowerBound) {
    Movie movie = film();
    movie.tracks = {evenTrack("soun", 80, 40, 50, 2), evenTrack("soun", 20, 40, 50, 2)};
    movie.userData = {};
    const Bytes original = buildMovie(movie);
    movie.tracks.erase(movie.tracks.begin());
    terms_.keepIndices = {{1}};
    Bytes rebuilt = buildMovie(interleaved(movie));
    // The samples of the second track, now the only one.
    const auto from = samplesOf(original, 1);
    std::size_t number = 0;
    for (const StoredChunk& chunk : chunksOf(rebuilt, 0)) {
        std::uint64_t at = chunk.offset;
        for (std::size_t i = 0; i < chunk.sampleSizes.size(); i++) {
            rebuilt = patched(rebuilt, at, from[number]);
            at += from[number++].size();
        }
    }
    EXPECT_THAT(verify(original, rebuilt).reasons, IsEmpty());
}

TEST_F(RebuildWithoutTracks, ATrackToKeepThatIsNotThereEndsTheReport) {
    for (const std::vector<int>& keep : {std::vector<int>{0, 3}, {0, -1}, {1, 1}}) {
        terms_.keepIndices = keep;
        EXPECT_THAT(verify(original_, rebuilt_).reasons,
                    ElementsAre("a track to keep isn't in the file"));
    }
}

TEST_F(RebuildWithoutTracks, TracksToKeepAreNamedByTheirPlaceAmongAllTracksOfTheIndex) {
    // A track without a media header is no track of the summary, and counts all the same.
    const auto hideHeader = [&](Bytes file, int track) {
        return edited(std::move(file), mediaPath(track), 4, viewOf("free"));
    };
    Movie movie = film();
    movie.tracks[0].boxes = {};
    movie.userData = {};
    movie.tracks[2] = movie.tracks[1];
    const Bytes original = hideHeader(buildMovie(movie), 1);
    terms_.keepIndices = {{0, 2}};
    movie.tracks.erase(movie.tracks.begin() + 1);
    Bytes rebuilt = buildMovie(interleaved(movie));
    const VerifyReport report = verify(original, rebuilt);
    EXPECT_THAT(report.reasons, ElementsAre("track 2 (soun mp4a): sample data differs"));
    terms_.keepIndices = {{0, 1}};
    EXPECT_THAT(verify(original, rebuilt).reasons,
                ElementsAre("a track to keep isn't in the file"));
}

}  // namespace
}  // namespace marlet::test
