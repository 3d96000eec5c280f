// Files as FFmpeg writes them, judged by what FFmpeg and a naive reader say about them.

#include <gtest/gtest.h>

#include <numeric>

#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

RealMovie film() {
    RealMovie movie;
    movie.soundTracks = 2;
    movie.soundLanguages = {"eng", "fra"};
    movie.tags = {{"title", "A Title"}};
    return movie;
}

MP4Summary summaryOf(const std::filesystem::path& file, Detail detail) {
    return parseSummary(loadMoov(file), file, detail);
}

TEST(RealFiles, TheSummaryHasTheTracksAndSamplesThatAreThere) {
    const TempFolder folder;
    const auto file = folder / "film.mp4";
    makeMovie(file, film());
    const Bytes bytes = readFile(file);
    const MP4Summary summary = summaryOf(file, Detail::Yes);

    ASSERT_EQ(summary.tracks.size(), 3U);
    EXPECT_EQ(summary.fileSize, bytes.size());
    EXPECT_EQ(summary.tracks[0].codec, "avc1");
    EXPECT_EQ(summary.tracks[0].sizes.size(), 50U);
    EXPECT_FALSE(summary.tracks[0].ctts.empty()) << "B-frames are shown out of order";
    EXPECT_EQ(summary.tracks[1].language, "eng");
    EXPECT_EQ(summary.tracks[2].language, "fra");
    EXPECT_NEAR(summary.duration, 2, 0.1);
    EXPECT_NEAR(summary.videoEnd.value_or(0), 2, 0.1);
    for (int t = 0; t < 3; t++) {
        const Track& track = summary.tracks[static_cast<std::size_t>(t)];
        const auto samples = samplesOf(bytes, t);
        ASSERT_EQ(samples.size(), track.sizes.size());
        for (std::size_t i = 0; i < samples.size(); i++)
            ASSERT_EQ(samples[i].size(), track.sizes[i]);
        const auto chunks = chunksOf(bytes, t);
        ASSERT_EQ(chunks.size(), track.chunks.size());
        for (std::size_t i = 0; i < chunks.size(); i++) {
            EXPECT_EQ(chunks[i].offset, track.chunks[i].offset);
            EXPECT_EQ(chunks[i].sampleSizes.size(), track.chunks[i].count);
        }
    }
}

TEST(RealFiles, TheSummaryIsTheSameWhereverTheIndexStands) {
    const TempFolder folder;
    RealMovie movie = film();
    makeMovie(folder / "last.mp4", movie);
    movie.indexFirst = true;
    makeMovie(folder / "first.mp4", movie);
    const MP4Summary last = summaryOf(folder / "last.mp4", Detail::Yes);
    const MP4Summary first = summaryOf(folder / "first.mp4", Detail::Yes);
    EXPECT_EQ(last.ilst, first.ilst);
    EXPECT_EQ(last.tracks[1].sizes, first.tracks[1].sizes);
    EXPECT_EQ(last.tracks[1].stsdDigest, first.tracks[1].stsdDigest);
    EXPECT_EQ(measure(summaryOf(folder / "last.mp4", Detail::No)),
              measure(summaryOf(folder / "first.mp4", Detail::No)));
}

TEST(RealFiles, SoundStoredInOneBlockMeasuresItsLength) {
    const TempFolder folder;
    const auto file = folder / "film.mp4";
    RealMovie movie = film();
    movie.seconds = 4;
    makeMovie(file, movie);
    EXPECT_LT(measureInterleave(file), soundLayoutLimit);

    const auto before = packetHashes(file);
    writeFile(file, storedTrackByTrack(readFile(file)));
    EXPECT_EQ(packetHashes(file), before);
    EXPECT_NEAR(measureInterleave(file), 4, 0.15);
}

TEST(RealFiles, AccountItemsStandInTheTagBlock) {
    const TempFolder folder;
    RealMovie movie = film();
    movie.accountTags = true;
    movie.padding = 5000;
    makeMovie(folder / "bought.m4v", movie);
    std::vector<std::string> keys;
    for (const TagItem& item : summaryOf(folder / "bought.m4v", Detail::Yes).tags)
        keys.push_back(item.key);
    EXPECT_EQ(keys, (std::vector<std::string>{"©nam", "©too", "apID", "ownr", "purd", "akID"}));
    EXPECT_EQ(probeValue(folder / "bought.m4v", "format_tags=title"), "A Title");
    EXPECT_EQ(packetHashes(folder / "bought.m4v").size(), 3U);

    const auto top = TagRestore::topLevel(folder / "bought.m4v");
    ASSERT_GE(top.size(), 3U);
    EXPECT_EQ(top[1].type, "moov");
    EXPECT_EQ(top[2].type, "free");
    EXPECT_NEAR(static_cast<double>(top[2].size), 5000, 8);
}

TEST(RealFiles, ChaptersOfFFmpegAreRead) {
    const TempFolder folder;
    const auto list = folder.write("chapters.txt",
                                   ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\n"
                                   "title=One\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=1000\nEND=2000\n"
                                   "title=Two\n");
    RealMovie movie;
    movie.soundTracks = 1;
    makeMovie(folder / "plain.mp4", movie);
    ffmpeg({"-i", (folder / "plain.mp4").string(), "-i", list.string(), "-map", "0",
            "-map_chapters", "1", "-c", "copy", (folder / "film.mp4").string()});
    const MP4Summary summary = summaryOf(folder / "film.mp4", Detail::Yes);
    EXPECT_EQ(summary.chpl, (std::vector<Chapter>{{0, "One"}, {1000, "Two"}}));
    EXPECT_EQ(summary.tracks[0].chapRefs.size(), 1U);
}

}  // namespace
}  // namespace marlet::test
