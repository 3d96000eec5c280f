#include "mp4/summary.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/digest.h"
#include "foundation/errors.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

/// A sound track of three samples in two chunks: what the tests below change one part of.
struct Sound {
    Bytes stsd = stsdBox("mp4a");
    Bytes stsz = stszBox({10, 20, 30});
    Bytes stts = sttsBox({{3, 100}});
    Bytes stsc = stscBox({{1, 2}, {2, 1}});
    Bytes offsets = stcoBox({1000, 2000});
    Bytes more;  ///< further tables

    Bytes tables() const { return joined({stsd, stsz, stts, stsc, offsets, more}); }
    Bytes trak() const { return box("trak", {tkhdBox(1), mdiaBox("soun", 1000, 300, {tables()})}); }
    Bytes moov() const { return joined({mvhdBox(1000, 300), trak()}); }
};

Track onlyTrack(const Bytes& moov, Detail detail = Detail::No) {
    const MP4Summary summary = parseSummary(moov, detail);
    EXPECT_EQ(summary.tracks.size(), 1U);
    return summary.tracks.empty() ? Track() : summary.tracks.front();
}

std::string failureOf(const Bytes& moov, Detail detail = Detail::No) {
    try {
        parseSummary(moov, detail);
    } catch (const MFError& error) {
        return error.description();
    }
    return "";
}

using Numbers = std::vector<std::uint32_t>;

TEST(Summary, JoinsTheSampleTablesOfATrack) {
    const Track track = onlyTrack(Sound().moov());
    EXPECT_EQ(track.sizes, (Numbers{10, 20, 30}));
    EXPECT_EQ(track.durations, (Numbers{100, 100, 100}));
    EXPECT_EQ(track.chunks, (std::vector<Chunk>{{1000, 0, 2}, {2000, 2, 1}}));
    EXPECT_EQ(track.handler, "soun");
    EXPECT_EQ(track.timescale, 1000U);
}

TEST(Summary, WithoutDetailTheCostlyFieldsStayEmpty) {
    Sound sound;
    sound.more = joined({cttsBox({{3, 5}}), stssBox({1})});
    const Track track = onlyTrack(sound.moov());
    EXPECT_TRUE(track.codec.empty() && track.stsd.empty() && track.stsdDigest.empty());
    EXPECT_TRUE(track.ctts.empty() && track.sync.empty() && track.chapRefs.empty());
}

TEST(Summary, WithDetailTheCostlyFieldsAreRead) {
    Sound sound;
    sound.more = joined({cttsBox({{1, 5}, {2, 7}}), stssBox({1, 3})});
    const Track track = onlyTrack(sound.moov(), Detail::Yes);
    EXPECT_EQ(track.codec, "mp4a");
    EXPECT_EQ(box("stsd", track.stsd), sound.stsd);
    EXPECT_EQ(track.stsdDigest, sha256Hex(track.stsd));
    EXPECT_EQ(track.ctts, (std::vector<std::int64_t>{5, 7, 7}));
    EXPECT_EQ(track.sync, (Numbers{1, 3}));
    EXPECT_TRUE(track.elstDigest.empty());
}

TEST(Summary, CompositionOffsetsAreSignedFromVersion1On) {
    Sound sound;
    sound.more = cttsBox({{1, 0xFFFFFFFF}}, 0);
    EXPECT_EQ(onlyTrack(sound.moov(), Detail::Yes).ctts, (std::vector<std::int64_t>{4294967295}));
    sound.more = cttsBox({{1, 0xFFFFFFFF}}, 1);
    EXPECT_EQ(onlyTrack(sound.moov(), Detail::Yes).ctts, (std::vector<std::int64_t>{-1}));
}

TEST(Summary, WithoutDetailOnlySoundTracksAreKept) {
    const Bytes video = box("trak", {tkhdBox(1), mdiaBox("vide", 1000, 300, {Sound().tables()})});
    const Bytes moov = joined({mvhdBox(1000, 300), video, Sound().trak()});
    EXPECT_EQ(onlyTrack(moov).index, 1);
    EXPECT_EQ(parseSummary(moov, Detail::Yes).tracks.size(), 2U);
}

TEST(Summary, ATrackWithoutMediaHeaderIsLeftOutAndStillCounts) {
    const Bytes headless = box("trak", {tkhdBox(1), box("mdia", {hdlrBox("soun")})});
    const Bytes moov = joined({mvhdBox(1000, 300), headless, Sound().trak()});
    EXPECT_EQ(onlyTrack(moov).index, 1);
    EXPECT_EQ(onlyTrack(moov, Detail::Yes).index, 1);
}

TEST(Summary, ATrackWithoutHandlerIsLeftOut) {
    const Bytes headless = box("trak", {tkhdBox(1), box("mdia", {mdhdBox(1000, 300)})});
    EXPECT_TRUE(parseSummary(headless, Detail::Yes).tracks.empty());
}

TEST(Summary, ReadsTheTrackHeader) {
    const Bytes tkhd = tkhdBox(7, 0x0F, 2);
    const Bytes moov = box("trak", {tkhd, mdiaBox("soun", 1000, 300, {Sound().tables()}, "fra")});
    const Track track = onlyTrack(moov);
    EXPECT_EQ(track.id, 7U);
    EXPECT_EQ(track.tkhdFlags, 0x0FU);
    EXPECT_EQ(track.altGroup, 2);
    EXPECT_EQ(track.tkhdCreated, 0x11111111U);
    EXPECT_EQ(track.tkhdModified, 0x22222222U);
    EXPECT_EQ(track.tkhdRest, Bytes(tkhd.begin() + 8 + 32, tkhd.end()));
    EXPECT_EQ(track.mdhdCreated, 0x33333333U);
    EXPECT_EQ(track.mdhdModified, 0x44444444U);
    EXPECT_EQ(track.language, "fra");
    EXPECT_EQ(track.langRaw, ('f' - 0x60) << 10 | ('r' - 0x60) << 5 | ('a' - 0x60));
}

TEST(Summary, ReadsTheWideHeadersOfVersion1) {
    const Bytes tkhd = fullBox("tkhd", 1, 1,
                               joined({be64(0x100000001), be64(0x100000002), be32(9), Bytes(4),
                                       be64(300), Bytes(8), be16(0), be16(4), Bytes(40)}));
    const Bytes mdhd = fullBox("mdhd", 1, 0,
                               joined({be64(0x200000001), be64(0x200000002), be32(48000),
                                       be64(0x300000000), be16(0x55C4), be16(6)}));
    const Bytes mdia =
        box("mdia", {mdhd, hdlrBox("soun"), box("minf", {box("stbl", Sound().tables())})});
    const Track track = onlyTrack(box("trak", {tkhd, mdia}));
    EXPECT_EQ(track.tkhdCreated, 0x100000001U);
    EXPECT_EQ(track.tkhdModified, 0x100000002U);
    EXPECT_EQ(track.id, 9U);
    EXPECT_EQ(track.altGroup, 4);
    EXPECT_EQ(track.tkhdRest.size(), 44U);
    EXPECT_EQ(track.mdhdCreated, 0x200000001U);
    EXPECT_EQ(track.mdhdModified, 0x200000002U);
    EXPECT_EQ(track.timescale, 48000U);
    EXPECT_EQ(track.language, "und");
    EXPECT_EQ(track.mdhdPredefined, 6);
}

TEST(Summary, ATrackHeaderMayBeMissingOrShort) {
    const Bytes mdia = mdiaBox("soun", 1000, 300, {Sound().tables()});
    EXPECT_EQ(onlyTrack(box("trak", {mdia})).id, 0U);
    EXPECT_TRUE(onlyTrack(box("trak", {box("tkhd", Bytes(10)), mdia})).tkhdRest.empty());
}

TEST(Summary, ATimescaleOf0IsStoredAs1) {
    const Bytes moov = box("trak", {mdiaBox("soun", 0, 300, {Sound().tables()})});
    EXPECT_EQ(onlyTrack(moov).timescale, 1U);
}

TEST(Summary, AMovieTimescaleOf0GivesTheRawDuration) {
    EXPECT_EQ(parseSummary(mvhdBox(0, 300), Detail::No).duration, 300);
    EXPECT_EQ(parseSummary(mvhdBox(600, 300), Detail::No).duration, 0.5);
    EXPECT_EQ(parseSummary(Bytes(), Detail::No).duration, 0);
}

TEST(Summary, AWideMovieHeaderHasItsDurationBehindItsTimescale) {
    const Bytes mvhd = fullBox("mvhd", 1, 0, joined({Bytes(16), be32(10), be64(0x100000000)}));
    EXPECT_EQ(parseSummary(mvhd, Detail::No).duration, 429496729.6);
}

TEST(Summary, TheFileSizeComesFromTheFileSystem) {
    const TempFolder folder;
    const auto file = folder.write("a.mp4", Bytes(77));
    EXPECT_EQ(parseSummary(Sound().moov(), file, Detail::No).fileSize, 77U);
    EXPECT_EQ(parseSummary(Sound().moov(), Detail::No).fileSize, 0U);
    EXPECT_THROW(parseSummary(Sound().moov(), folder / "none.mp4", Detail::No), MFError);
}

// --- sample tables ---

TEST(SampleTables, AUniformSizeIsRepeatedForEverySample) {
    Sound sound;
    sound.stsz = stszBox(1024, 3);
    EXPECT_EQ(onlyTrack(sound.moov()).sizes, (Numbers{1024, 1024, 1024}));
}

TEST(SampleTables, ADeltaWithItsTopBitSetCountsAsNoTime) {
    Sound sound;
    sound.stts = sttsBox({{1, 100}, {1, 0x80000000}, {1, 0xFFFFFFFF}});
    EXPECT_EQ(onlyTrack(sound.moov()).durations, (Numbers{100, 0, 0}));
}

TEST(SampleTables, TimesAndSizesNeedNotBeOfOneLength) {
    Sound sound;
    sound.stts = sttsBox({{1, 100}});
    EXPECT_EQ(onlyTrack(sound.moov()).durations.size(), 1U);
}

TEST(SampleTables, The64BitOffsetsWinOverThe32BitOnes) {
    Sound sound;
    sound.more = co64Box({0x100000000, 0x200000000});
    const Track track = onlyTrack(sound.moov());
    EXPECT_EQ(track.chunks, (std::vector<Chunk>{{0x100000000, 0, 2}, {0x200000000, 2, 1}}));
}

TEST(SampleTables, OfTwoTablesOfATypeTheLastWins) {
    Sound sound;
    sound.more = stszBox({1, 2, 3});
    EXPECT_EQ(onlyTrack(sound.moov()).sizes, (Numbers{1, 2, 3}));
}

TEST(SampleTables, ChunksThatNoOffsetStandsForAreSkipped) {
    Sound sound;
    sound.stsc = stscBox({{1, 1}, {2, 1}, {50, 200}});
    EXPECT_EQ(onlyTrack(sound.moov()).chunks, (std::vector<Chunk>{{1000, 0, 1}, {2000, 1, 1}}));
}

TEST(SampleTables, ARowThatNamesMoreChunksThanThereAreGivesOnlyThoseThereAre) {
    Sound sound;
    sound.stsc = stscBox({{1, 1}, {4'000'000'000, 9}});
    EXPECT_EQ(onlyTrack(sound.moov()).chunks.size(), 2U);
}

TEST(SampleTables, SamplesThatNoChunkClaimsAreAccepted) {
    Sound sound;
    sound.offsets = stcoBox({1000});
    EXPECT_EQ(onlyTrack(sound.moov()).chunks, (std::vector<Chunk>{{1000, 0, 2}}));
}

TEST(SampleTables, AFirstChunkNumberOf0IsABadTable) {
    Sound sound;
    sound.stsc = stscBox({{0, 1}, {2, 1}});
    EXPECT_EQ(failureOf(sound.moov()), "bad stsc");
}

TEST(SampleTables, ATableMayOverrunItsBoxInsideTheIndex) {
    Sound sound;
    // Two sizes in the box and a count of three: the third is the first word of the box behind.
    sound.stsz = patched(stszBox({10, 20}), 16, be32(3));
    const Track track = onlyTrack(sound.moov());
    EXPECT_EQ(track.sizes, (Numbers{10, 20, static_cast<std::uint32_t>(sound.stts.size())}));
}

TEST(SampleTables, ATrackWithoutSampleTableFails) {
    const Bytes mdia = box("mdia", {mdhdBox(1000, 300), hdlrBox("soun"), box("minf", Bytes())});
    EXPECT_EQ(failureOf(box("trak", {mdia})), "track without sample table");
}

TEST(SampleTables, EachMissingTableIsAnIncompleteSampleTable) {
    for (Bytes Sound::*table : {&Sound::stsz, &Sound::stts, &Sound::stsc, &Sound::offsets}) {
        Sound sound;
        sound.*table = Bytes();
        EXPECT_EQ(failureOf(sound.moov()), "incomplete sample table");
    }
}

TEST(SampleTables, ASizeTablePastTheBufferIsBad) {
    Sound sound;
    sound.stsz = patched(sound.stsz, 16, be32(5000));
    EXPECT_EQ(failureOf(sound.moov()), "bad stsz");
}

TEST(SampleTables, AUniformSizeTableOfTooManySamplesIsBad) {
    Sound sound;
    sound.stsz = stszBox(4, 67'108'865);
    EXPECT_EQ(failureOf(sound.moov()), "bad stsz");
    sound.stsz = stszBox(4, 4'294'967'295);
    EXPECT_EQ(failureOf(sound.moov()), "bad stsz");
}

TEST(SampleTables, ATimeTablePastTheBufferIsBad) {
    Sound sound;
    sound.stts = patched(sound.stts, 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "bad stts");
}

TEST(SampleTables, ATimeEntryBeyondTheSampleCountPlus16777216IsBad) {
    Sound sound;
    sound.stts = sttsBox({{3 + 0x1000000, 1}});
    EXPECT_EQ(failureOf(sound.moov()), "");
    sound.stts = sttsBox({{3 + 0x1000001, 1}});
    EXPECT_EQ(failureOf(sound.moov()), "bad stts");
}

TEST(SampleTables, TimeEntriesThatTogetherClaimTooManySamplesAreBad) {
    Sound sound;
    sound.stts = sttsBox({{0x1000000, 1}, {0x1000000, 1}, {0x1000000, 1}, {0x1000000, 1}, {1, 1}});
    EXPECT_EQ(failureOf(sound.moov()), "bad stts");
}

TEST(SampleTables, ManyTracksThatEachClaimManySamplesAreBad) {
    Sound sound;
    sound.stsz = stszBox(4, 60'000'000);
    sound.stts = sttsBox({{60'000'000, 1}});
    EXPECT_EQ(failureOf(joined({sound.trak(), sound.trak()})), "bad stsz");
}

TEST(SampleTables, AnOffsetTablePastTheBufferIsBad) {
    Sound sound;
    sound.offsets = patched(sound.offsets, 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "bad chunk offsets");
    sound.offsets = patched(co64Box({1, 2}), 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "bad chunk offsets");
}

TEST(SampleTables, AChunkTablePastTheBufferIsBad) {
    Sound sound;
    sound.stsc = patched(sound.stsc, 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "bad stsc");
}

TEST(SampleTables, ChunkRowsThatLeadBackEndlesslyAreBad) {
    Sound sound;
    sound.offsets = stcoBox(Numbers(2000, 1000));
    std::vector<ChunkRow> rows;
    for (int i = 0; i < 100'000; i++) {
        rows.push_back({1, 0});
        rows.push_back({2001, 0});
    }
    sound.stsc = stscBox(rows);
    EXPECT_EQ(failureOf(sound.moov()), "bad stsc");
}

TEST(SampleTables, MillionsOfChunksWithoutSamplesAreBad) {
    Sound sound;
    sound.stsc = stscBox({{1, 0}});
    sound.offsets = fullBox("stco", 0, 0, joined({be32(12'000'000), Bytes(48'000'000)}));
    EXPECT_EQ(failureOf(sound.moov()), "bad stsc");
}

TEST(SampleTables, ChunksThatClaimMoreSamplesThanThereAreAreInconsistent) {
    Sound sound;
    sound.stsc = stscBox({{1, 2}});
    EXPECT_EQ(failureOf(sound.moov()), "sample table inconsistent");
    sound.stsc = stscBox({{1, 0xFFFFFFFF}});
    EXPECT_EQ(failureOf(sound.moov()), "sample table inconsistent");
}

TEST(SampleTables, ACompositionTableIsJudgedLikeATimeTableButOnlyInDetail) {
    Sound sound;
    sound.more = patched(cttsBox({{3, 5}}), 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "");
    EXPECT_EQ(failureOf(sound.moov(), Detail::Yes), "bad ctts");
    sound.more = cttsBox({{3 + 0x1000001, 5}});
    EXPECT_EQ(failureOf(sound.moov(), Detail::Yes), "bad ctts");
}

TEST(SampleTables, ASyncTablePastTheBufferIsBadButOnlyInDetail) {
    Sound sound;
    sound.more = patched(stssBox({1}), 12, be32(4'000'000'000));
    EXPECT_EQ(failureOf(sound.moov()), "");
    EXPECT_EQ(failureOf(sound.moov(), Detail::Yes), "bad stss");
}

TEST(SampleTables, AnIndexCutAnywhereEndsInASentenceOrASummary) {
    Sound sound;
    sound.more = joined({cttsBox({{3, 5}}), stssBox({1})});
    const Bytes whole = joined({sound.moov(), udtaBox({textItem("©nam", "Title")})});
    const std::vector<std::string> sentences = {"",
                                                "track without sample table",
                                                "incomplete sample table",
                                                "bad stsz",
                                                "bad stts",
                                                "bad ctts",
                                                "bad chunk offsets",
                                                "bad stsc",
                                                "bad stss"};
    for (std::size_t length = 0; length < whole.size(); length++) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::string failure = failureOf(cut, Detail::Yes);
        EXPECT_NE(std::find(sentences.begin(), sentences.end(), failure), sentences.end())
            << length << ": " << failure;
    }
}

// --- references ---

TEST(Summary, ReadsTheChapterReferencesOfATrack) {
    const Bytes trak =
        box("trak", {box("tref", {box("chap", joined({be32(3), be32(4), Bytes(2)}))}),
                     mdiaBox("soun", 1000, 300, {Sound().tables()})});
    EXPECT_EQ(onlyTrack(trak, Detail::Yes).chapRefs, (Numbers{3, 4}));
}

// --- the picture's end ---

Bytes videoTrak(std::string_view codec, std::uint32_t flags, const Bytes& edits = {},
                std::uint32_t duration = 5000) {
    Sound tables;
    tables.stsd = stsdBox(codec);
    return box("trak",
               {tkhdBox(1, flags), edits, mdiaBox("vide", 1000, duration, {tables.tables()})});
}

TEST(VideoEnd, IsTheMediaDurationWithoutAnEditList) {
    EXPECT_EQ(parseSummary(videoTrak("avc1", 1), Detail::No).videoEnd, 5.0);
}

TEST(VideoEnd, IsTheLargestOfAllVideoTracks) {
    const Bytes moov = joined(
        {videoTrak("avc1", 1), videoTrak("hvc1", 1, {}, 9000), videoTrak("avc1", 1, {}, 7000)});
    EXPECT_EQ(parseSummary(moov, Detail::No).videoEnd, 9.0);
}

TEST(VideoEnd, IgnoresADisabledTrackAndACoverStoredAsATrack) {
    const Bytes moov = joined({videoTrak("avc1", 2), videoTrak("jpeg", 1), videoTrak("png ", 1)});
    EXPECT_FALSE(parseSummary(moov, Detail::No).videoEnd);
}

TEST(VideoEnd, IsAbsentWithoutATrackHeaderOrASampleDescription) {
    const Bytes noHeader = box("trak", {mdiaBox("vide", 1000, 5000, {Sound().tables()})});
    EXPECT_FALSE(parseSummary(noHeader, Detail::No).videoEnd);
    Sound tables;
    tables.stsd = Bytes();
    const Bytes noEntry =
        box("trak", {tkhdBox(1, 1), mdiaBox("vide", 1000, 5000, {tables.tables()})});
    EXPECT_FALSE(parseSummary(noEntry, Detail::No).videoEnd);
}

TEST(VideoEnd, CountsAnEmptyEditAndTheRealOne) {
    const Bytes edits = box("edts", {elstBox({{10'000, -1}, {60'000, 0}})});
    const Bytes moov = joined({mvhdBox(1000, 70'000), videoTrak("avc1", 1, edits)});
    const MP4Summary summary = parseSummary(moov, Detail::Yes);
    EXPECT_EQ(summary.videoEnd, 70.0);
    EXPECT_EQ(summary.tracks.at(0).presOffset, 10.0);
    EXPECT_EQ(summary.tracks.at(0).elstDigest.size(), 64U);
}

// --- edit lists ---

std::optional<EditTimes> timesOf(const Bytes& elst) {
    const Bytes trak = box("edts", {elst});
    return editTimes(trak, 0, static_cast<std::int64_t>(trak.size()), 1000, 100);
}

TEST(EditTimes, GiveNothingWithoutAnEditList) {
    EXPECT_FALSE(timesOf(Bytes()));
}

TEST(EditTimes, OfAnEmptyEditListAre0) {
    const auto times = timesOf(elstBox({}));
    ASSERT_TRUE(times);
    EXPECT_EQ(times->offset, 0);
    EXPECT_EQ(times->length, 0);
}

TEST(EditTimes, TheFirstRealEditSetsTheOffset) {
    const auto times =
        timesOf(elstBox({{2000, -1}, {1000, -1}, {5000, 50}, {4000, 900}, {1000, -1}}));
    ASSERT_TRUE(times);
    EXPECT_EQ(times->offset, 3.0 - 0.5);
    EXPECT_EQ(times->length, 13.0);
}

TEST(EditTimes, WithoutARealEditTheOffsetIsTheLeadIn) {
    EXPECT_EQ(timesOf(elstBox({{2000, -1}}))->offset, 2.0);
}

TEST(EditTimes, AnEntryPastTheBoxIsSkippedWithAllAfterIt) {
    const Bytes elst = patched(elstBox({{2000, 0}}), 12, be32(4'000'000'000));
    EXPECT_EQ(timesOf(joined({elst, Bytes(100)}))->length, 2.0);
}

TEST(EditTimes, Version1HasWideEntries) {
    const Bytes elst = fullBox(
        "elst", 1, 0,
        joined({be32(2), be64(1000), be64(~0ULL), be32(0), be64(8000), be64(200), be32(0)}));
    const auto times = timesOf(elst);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->offset, -1.0);
    EXPECT_EQ(times->length, 9.0);
}

}  // namespace
}  // namespace marlet::test
