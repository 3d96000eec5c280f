#include "helpers/relayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "helpers/laid_out.h"
#include "support/box_reader.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The file with something put in at a place behind all media, so that no offset changes.
Bytes withBoxes(Bytes file, const Bytes& boxes) {
    append(file, boxes);
    return file;
}

/// A file whose tables are replaced: ftyp, moov of these traks, mdat of these bytes. `tracks` are
/// made for media data that starts at `mediaAt`.
constexpr std::uint32_t mediaAt = 4096;
Bytes fileOf(const std::vector<Bytes>& traks, const Bytes& media, const Bytes& inMoov = {}) {
    const Bytes moov = box("moov", joined({mvhdBox(1000, 10'000), joined(traks), inMoov}));
    const Bytes ftyp = ftypBox();
    const std::size_t padding = mediaAt - 8 - ftyp.size() - moov.size();
    return joined({ftyp, moov, box("free", Bytes(padding - 8)), box("mdat", media)});
}

}  // namespace

TEST(Relayout, PutsSoundInSlicesBesideThePicture) {
    const Bytes file = buildMovie(badlyLaidOut());
    ASSERT_GT(soundLayout(file), 9);
    const Bytes result = laidOut(file);
    EXPECT_LE(soundLayout(result), 0.5);
    EXPECT_TRUE(samplesEqual(file, result, 2));
}

TEST(Relayout, MakesSlicesAsLongAsItIsTold) {
    const Bytes file = buildMovie(badlyLaidOut());
    EXPECT_DOUBLE_EQ(soundLayout(laidOut(file, {.sliceMilliseconds = 100})), 0.1);
    EXPECT_DOUBLE_EQ(soundLayout(laidOut(file, {.sliceMilliseconds = 1000})), 1.0);
}

TEST(Relayout, ChangesNoBoxOfTheIndexButItsChunkTables) {
    const Bytes file = buildMovie(badlyLaidOut());
    EXPECT_THAT(changedBoxes(file, laidOut(file)), IsEmpty());
}

TEST(Relayout, OfItsOwnResultGivesTheSameAgain) {
    const Bytes once = laidOut(buildMovie(badlyLaidOut()), {.padding = 64});
    EXPECT_EQ(laidOut(once, {.padding = 64}), once);
}

TEST(Relayout, PutsTheIndexInFrontAndAFreeBoxOfThePaddingsSizeBehindIt) {
    Movie movie = badlyLaidOut();
    movie.index = Movie::Index::Last;
    const Bytes result = laidOut(buildMovie(movie), {.padding = 5000});
    EXPECT_THAT(topTypes(result), ElementsAre("ftyp", "moov", "free", "mdat"));
    EXPECT_EQ(topBox(result, "free").size(), 5000U);
}

TEST(Relayout, MakesNoPaddingOfNoneAndTheSmallestBoxOfAFewBytes) {
    const Bytes file = buildMovie(badlyLaidOut());
    EXPECT_THAT(topTypes(laidOut(file)), ElementsAre("ftyp", "moov", "mdat"));
    EXPECT_EQ(topBox(laidOut(file, {.padding = 3}), "free").size(), 8U);
}

TEST(Relayout, KeepsNoOldPaddingAtTheTopLevel) {
    Movie movie = badlyLaidOut();
    movie.padding = 300;
    const Bytes file =
        withBoxes(buildMovie(movie), joined({box("skip", Bytes(9)), box("wide", ByteView())}));
    EXPECT_THAT(topTypes(laidOut(file)), ElementsAre("ftyp", "moov", "mdat"));
}

TEST(Relayout, KeepsUnknownTopLevelBoxesByteForByteInTheirOrderBehindTheMedia) {
    const Bytes uuid = box("uuid", Bytes(30, 7));
    const Bytes unknown = largeBox("abcd", Bytes(11, 9));
    const Bytes file =
        withBoxes(buildMovie(badlyLaidOut()), joined({uuid, box("free", Bytes(4)), unknown}));
    const Bytes result = laidOut(file, {.padding = 20});
    EXPECT_THAT(topTypes(result), ElementsAre("ftyp", "moov", "free", "mdat", "uuid", "abcd"));
    EXPECT_EQ(textOf(topBox(result, "uuid")), textOf(uuid));
    EXPECT_EQ(textOf(topBox(result, "abcd")), textOf(unknown));
}

TEST(Relayout, KeepsAFewBytesBehindTheLastBox) {
    const Bytes file = withBoxes(buildMovie(badlyLaidOut()), Bytes{1, 2, 3});
    const Bytes result = laidOut(file);
    EXPECT_EQ(Bytes(result.end() - 3, result.end()), (Bytes{1, 2, 3}));
}

TEST(Relayout, TakesAMediaBoxThatRunsToTheEndOfTheFile) {
    Bytes file = buildMovie(badlyLaidOut());
    const std::size_t mdat = file.size() - topBox(file, "mdat").size();
    file = patched(file, mdat, be32(0));
    const Bytes result = laidOut(file);
    EXPECT_TRUE(samplesEqual(file, result, 2));
    EXPECT_EQ(topBox(result, "mdat").size(), topBox(file, "mdat").size());
}

TEST(Relayout, JoinsSeveralMediaBoxesAndDropsWhatNoTableNames) {
    const Bytes first = sampleBytes(1, 0, 10);
    const Bytes second = sampleBytes(1, 1, 20);
    const std::uint32_t secondAt = mediaAt + 10 + 5 + 8;
    const Bytes trak =
        box("trak", {tkhdBox(1), mdiaBox("vide", 1000, 2000,
                                         {stsdBox("avc1"), sttsBox({{2, 1000}}), stscBox({{1, 1}}),
                                          stszBox({10, 20}), stcoBox({mediaAt, secondAt})})});
    const Bytes file =
        withBoxes(fileOf({trak}, joined({first, Bytes(5, 0xEE)})), box("mdat", second));
    const Bytes result = laidOut(file);
    EXPECT_THAT(topTypes(result), ElementsAre("ftyp", "moov", "mdat"));
    EXPECT_EQ(textOf(topBox(result, "mdat").subspan(8)), textOf(joined({first, second})));
    EXPECT_THAT(samplesOf(result, 0), ElementsAre(first, second));
}

TEST(Relayout, KeepsA64BitMediaHeader) {
    const Bytes sample = sampleBytes(1, 0, 10);
    const Bytes trak =
        box("trak", {tkhdBox(1), mdiaBox("vide", 1000, 1000,
                                         {stsdBox("avc1"), sttsBox({{1, 1000}}), stscBox({{1, 1}}),
                                          stszBox(10, 1), stcoBox({mediaAt + 8})})});
    Bytes file = fileOf({trak}, Bytes(18));
    file.resize(file.size() - 26);
    append(file, largeBox("mdat", sample));
    const Bytes result = laidOut(file);
    EXPECT_EQ(BigEndian::u32(topBox(result, "mdat"), 0), 1U);
    EXPECT_EQ(textOf(topBox(result, "mdat").subspan(16)), textOf(sample));
    EXPECT_THAT(samplesOf(result, 0), ElementsAre(sample));
}

TEST(Relayout, KeepsWideOffsetsWide) {
    Movie movie = badlyLaidOut();
    movie.wideOffsets = true;
    const Bytes file = buildMovie(movie);
    const Bytes result = laidOut(file);
    EXPECT_TRUE(chunksOf(result, 1).front().wide);
    EXPECT_TRUE(samplesEqual(file, result, 2));
    EXPECT_FALSE(chunksOf(laidOut(buildMovie(badlyLaidOut())), 1).front().wide);
}

TEST(Relayout, KeepsUnknownBoxesAndEndMarksInsideTheIndex) {
    const Bytes tables = joined({stsdBox("avc1"), box("zzzz", Bytes(6, 3)), sttsBox({{2, 1000}}),
                                 stcoBox({mediaAt, mediaAt + 10}), stscBox({{1, 1}}),
                                 box("sgpd", Bytes(13, 2)), stszBox(10, 2), Bytes{0, 0, 0, 0}});
    const Bytes trak =
        box("trak",
            {tkhdBox(1),
             largeBox("mdia", joined({mdhdBox(1000, 2000), hdlrBox("vide"),
                                      box("minf", {box("stbl", tables)}), box("what", Bytes(2))})),
             box("uuid", Bytes(20, 5))});
    const Bytes file =
        fileOf({trak}, joined({sampleBytes(1, 0, 10), sampleBytes(1, 1, 10)}),
               joined({box("iods", Bytes(9, 1)), box("abcd", Bytes(3)), Bytes{0, 0, 0, 0}}));
    const Bytes result = laidOut(file);
    EXPECT_THAT(changedBoxes(file, result), IsEmpty());
    EXPECT_TRUE(samplesEqual(file, result, 1));
}

TEST(Relayout, KeepsVersion1Headers) {
    const auto wideHeader = [](std::string_view type, ByteView rest) {
        return fullBox(type, 1, 7,
                       joined({be64(0x1111), be64(0x2222), Bytes(rest.begin(), rest.end())}));
    };
    const Bytes trak = box(
        "trak",
        {wideHeader("tkhd", joined({be32(1), be32(0), be64(2000), Bytes(60, 1)})),
         box("mdia",
             {wideHeader("mdhd", joined({be32(1000), be64(2000), be32(0x55C40000)})),
              hdlrBox("soun"),
              box("minf", {box("stbl", {stsdBox("mp4a"), sttsBox({{2, 1000}}), stscBox({{1, 2}}),
                                        stszBox(10, 2), stcoBox({mediaAt})})})})});
    const Bytes file = fileOf({trak}, joined({sampleBytes(1, 0, 10), sampleBytes(1, 1, 10)}));
    const Bytes result = laidOut(file);
    EXPECT_THAT(changedBoxes(file, result), IsEmpty());
    EXPECT_EQ(chunksOf(result, 0).size(), 2U) << "a second a sample, so a slice each";
    EXPECT_TRUE(samplesEqual(file, result, 1));
}

TEST(Relayout, KeepsEachSamplesDescription) {
    const auto described = [](std::vector<std::array<std::uint32_t, 3>> rows) {
        Bytes content = be32(static_cast<std::uint32_t>(rows.size()));
        for (const auto& row : rows)
            append(content, joined({be32(row[0]), be32(row[1]), be32(row[2])}));
        return fullBox("stsc", 0, 0, content);
    };
    const Bytes trak = box(
        "trak", {tkhdBox(1), mdiaBox("soun", 1000, 400,
                                     {stsdBox("mp4a"), sttsBox({{4, 100}}),
                                      described({{1, 1, 1}, {2, 2, 2}, {3, 1, 1}}), stszBox(10, 4),
                                      stcoBox({mediaAt, mediaAt + 10, mediaAt + 30})})});
    Bytes media;
    for (std::uint32_t i = 0; i < 4; i++) append(media, sampleBytes(1, i, 10));
    const Bytes file = fileOf({trak}, media);
    const Bytes result = laidOut(file);
    const ByteView stbl = payloadOf(
        payloadOf(payloadOf(payloadOf(payloadOf(result, "moov"), "trak"), "mdia"), "minf"), "stbl");
    EXPECT_EQ(textOf(payloadOf(stbl, "stsc")),
              textOf(joined({be32(0), be32(3), be32(1), be32(1), be32(1), be32(2), be32(2), be32(2),
                             be32(3), be32(1), be32(1)})));
    EXPECT_TRUE(samplesEqual(file, result, 1));
}

TEST(Relayout, TakesChunksThatDontAscend) {
    const Bytes trak = box(
        "trak",
        {tkhdBox(1), mdiaBox("soun", 1000, 3000,
                             {stsdBox("mp4a"), sttsBox({{3, 1000}}), stscBox({{1, 1}}),
                              stszBox(10, 3), stcoBox({mediaAt + 20, mediaAt, mediaAt + 10})})});
    const Bytes file = fileOf({trak}, sampleBytes(9, 9, 30));
    const Bytes result = laidOut(file);
    EXPECT_TRUE(samplesEqual(file, result, 1));
    const auto chunks = chunksOf(result, 0);
    EXPECT_LT(chunks[0].offset, chunks[1].offset);
    EXPECT_LT(chunks[1].offset, chunks[2].offset);
}

TEST(Relayout, TakesSamplesWithoutBytesAndTracksWithoutSamples) {
    Movie movie;
    movie.tracks = {evenTrack("vide", 10, 50, 400), evenTrack("text", 10, 0, 400),
                    evenTrack("sbtl", 0, 0, 0)};
    movie.tracks[1].sizes[4] = 12;
    const Bytes file = buildMovie(movie);
    const Bytes result = laidOut(file);
    EXPECT_TRUE(samplesEqual(file, result, 3));
    EXPECT_THAT(changedBoxes(file, result), IsEmpty());
}

TEST(Relayout, KeepsATrackThatHasNoMediaAsItIs) {
    Movie movie = badlyLaidOut(2);
    const Bytes bare = box("trak", {tkhdBox(9)});
    // Behind the media, so that the offsets stay true.
    movie.index = Movie::Index::Last;
    const Bytes last = buildMovie(movie);
    const Bytes file = joined(
        {Bytes(last.begin(), last.begin() + static_cast<std::ptrdiff_t>(
                                                last.size() - topBox(last, "moov").size())),
         box("moov",
             joined({Bytes(topBox(last, "moov").begin() + 8, topBox(last, "moov").end()), bare}))});
    const Bytes result = laidOut(file);
    EXPECT_THAT(changedBoxes(file, result), IsEmpty());
    EXPECT_TRUE(samplesEqual(file, result, 2));
}

TEST(Relayout, ReplacesAnOlderOutput) {
    const TempFolder folder;
    const auto input = folder.write("-rem", buildMovie(badlyLaidOut()));
    const auto output = folder.write("out.mp4", "an earlier try");
    Relayout::run({.input = input, .output = output});
    EXPECT_EQ(readFile(output), laidOut(readFile(input)));
}

TEST(Relayout, ReportsProgressThatNeverFallsAndEndsAtOne) {
    const TempFolder folder;
    std::vector<double> reports;
    Relayout::run(
        {.input = folder.write("in.mp4", buildMovie(badlyLaidOut())), .output = folder / "out.mp4"},
        [&](double fraction) { reports.push_back(fraction); });
    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_EQ(reports.back(), 1);
}

}  // namespace marlet::test
