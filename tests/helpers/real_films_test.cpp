// Real films, made by FFmpeg, judged by FFmpeg, AtomicParsley and mediainfo.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/laid_out.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Tracks one behind the other, as a careless writer stores them.
Bytes spoiled(const fs::path& film) {
    return storedTrackByTrack(readFile(film));
}

/// Without those of chapter tracks: FFmpeg takes their samples for the titles when it opens a file,
/// and whether it also gives them as packets depends on where they lie.
std::vector<std::string> mediaHashes(const fs::path& film) {
    std::vector<std::string> hashes = packetHashes(film);
    std::erase_if(hashes,
                  [](const std::string& line) { return line.find(",d,") != std::string::npos; });
    return hashes;
}

/// Lays the film out anew beside itself and judges the result; gives its path.
fs::path judged(const TempFolder& folder, const fs::path& film, const Bytes& bytes) {
    const fs::path bad = folder.write("bad" + film.extension().string(), bytes);
    const fs::path out = folder / ("out" + film.extension().string());
    Relayout::run({.input = bad, .output = out, .sliceMilliseconds = 500, .padding = 4096});
    const Bytes result = readFile(out);
    EXPECT_LE(soundLayout(result), 1.0);
    EXPECT_THAT(changedBoxes(bytes, result), IsEmpty());
    const int tracks = countOf(payloadOf(bytes, "moov"), "trak");
    EXPECT_TRUE(samplesEqual(bytes, result, tracks));
    EXPECT_EQ(mediaHashes(out), mediaHashes(film));
    return out;
}

/// Every packet's times, by track.
std::string packetTimes(const fs::path& film, const std::string& track) {
    return runTool({"ffprobe", "-v", "error", "-select_streams", track, "-show_entries",
                    "packet=pts,dts,duration,size,flags", "-of", "csv", film.string()});
}

void expectSameTimes(const fs::path& a, const fs::path& b, const std::vector<std::string>& tracks) {
    for (const std::string& track : tracks)
        EXPECT_EQ(packetTimes(a, track), packetTimes(b, track)) << track;
}

fs::path make(const TempFolder& folder, const std::string& name,
              const std::vector<std::string>& arguments) {
    const fs::path film = folder / name;
    std::vector<std::string> line = arguments;
    line.push_back(film.string());
    ffmpeg(line);
    return film;
}

}  // namespace

TEST(RealFilms, WithBFramesTwoLanguagesAndTags) {
    const TempFolder folder;
    const fs::path film = folder / "film.mp4";
    makeMovie(film, {.seconds = 6,
                     .soundTracks = 2,
                     .soundLanguages = {"eng", "deu"},
                     .tags = {{"title", "A Film"}, {"date", "1999"}},
                     .accountTags = true});
    const Bytes bad = spoiled(film);
    ASSERT_GT(soundLayout(bad), 5);
    const fs::path out = judged(folder, film, bad);
    expectSameTimes(film, out, {"v:0", "a:0", "a:1"});
    EXPECT_EQ(probeValue(out, "format_tags=title"), "A Film");
    EXPECT_EQ(probeValue(out, "stream_tags=language"), probeValue(film, "stream_tags=language"));
    EXPECT_THAT(runTool({"AtomicParsley", out.string(), "-t"}), HasSubstr("A Film"));
    const std::string account = runTool({"mediainfo", out.string()});
    EXPECT_THAT(account, HasSubstr("AVC"));
    EXPECT_THAT(account, HasSubstr("German"));
    EXPECT_THAT(account, Not(HasSubstr("truncated")));
}

TEST(RealFilms, WithHEVCAndDolbySound) {
    const TempFolder folder;
    const fs::path film =
        make(folder, "film.mp4",
             {"-f",      "lavfi",     "-i",           "testsrc2=size=64x36:rate=25:duration=4",
              "-f",      "lavfi",     "-i",           "sine=sample_rate=48000:duration=4",
              "-map",    "0",         "-map",         "1",
              "-map",    "1",         "-c:v",         "libx265",
              "-preset", "ultrafast", "-x265-params", "log-level=none:pools=1",
              "-tag:v",  "hvc1",      "-c:a:0",       "ac3",
              "-c:a:1",  "eac3",      "-b:a",         "96k"});
    const fs::path out = judged(folder, film, spoiled(film));
    expectSameTimes(film, out, {"v:0", "a:0", "a:1"});
}

TEST(RealFilms, WithChaptersAndText) {
    const TempFolder folder;
    const auto chapters =
        folder.write("chapters.txt",
                     ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=2000\ntitle=One\n"
                     "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2000\nEND=5000\ntitle=Two\n");
    const auto text = folder.write("text.srt",
                                   "1\n00:00:01,000 --> 00:00:01,500\nHello\n\n"
                                   "2\n00:00:04,000 --> 00:00:04,500\nGood-bye\n");
    const fs::path film = make(folder, "film.mp4",
                               {"-f",
                                "lavfi",
                                "-i",
                                "testsrc2=size=64x36:rate=25:duration=5",
                                "-f",
                                "lavfi",
                                "-i",
                                "sine=sample_rate=16000:duration=5",
                                "-i",
                                text.string(),
                                "-i",
                                chapters.string(),
                                "-map",
                                "0",
                                "-map",
                                "1",
                                "-map",
                                "2",
                                "-map_metadata",
                                "3",
                                "-c:v",
                                "libx264",
                                "-preset",
                                "ultrafast",
                                "-c:a",
                                "aac",
                                "-c:s",
                                "mov_text"});
    const fs::path out = judged(folder, film, spoiled(film));
    expectSameTimes(film, out, {"v:0", "a:0", "s:0"});
    const std::string titles =
        runTool({"ffprobe", "-v", "error", "-show_entries", "chapter=start,end:chapter_tags=title",
                 "-of", "csv", out.string()});
    EXPECT_THAT(titles, HasSubstr("One"));
    EXPECT_EQ(titles,
              runTool({"ffprobe", "-v", "error", "-show_entries",
                       "chapter=start,end:chapter_tags=title", "-of", "csv", film.string()}));
}

TEST(RealFilms, WithEditListsCoverArtAndSoundThatStartsLateAndEndsLate) {
    const TempFolder folder;
    const fs::path cover =
        make(folder, "cover.jpg", {"-f", "lavfi", "-i", "color=red:size=32x32", "-frames:v", "1"});
    const fs::path film = make(folder, "film.m4v",
                               {"-f",
                                "lavfi",
                                "-i",
                                "testsrc2=size=64x36:rate=25:duration=5",
                                "-itsoffset",
                                "1.3",
                                "-f",
                                "lavfi",
                                "-i",
                                "sine=sample_rate=48000:duration=7",
                                "-i",
                                cover.string(),
                                "-map",
                                "0",
                                "-map",
                                "1",
                                "-map",
                                "2",
                                "-c:v:0",
                                "libx264",
                                "-preset",
                                "ultrafast",
                                "-bf",
                                "3",
                                "-c:v:1",
                                "copy",
                                "-disposition:v:1",
                                "attached_pic",
                                "-c:a",
                                "aac",
                                "-f",
                                "mp4"});
    const fs::path out = judged(folder, film, spoiled(film));
    expectSameTimes(film, out, {"v:0", "a:0"});
    EXPECT_EQ(probeValue(out, "stream=start_time"), probeValue(film, "stream=start_time"));
}

TEST(RealFilms, OfQuickTimeWithUncompressedSound) {
    const TempFolder folder;
    const fs::path film =
        make(folder, "film.mov",
             {"-f",   "lavfi",     "-i",        "testsrc2=size=64x36:rate=25:duration=3",
              "-f",   "lavfi",     "-i",        "sine=sample_rate=16000:duration=3",
              "-map", "0",         "-map",      "1",
              "-c:v", "libx264",   "-preset",   "ultrafast",
              "-c:a", "pcm_s16le", "-timecode", "01:00:00:00"});
    const fs::path out = judged(folder, film, spoiled(film));
    EXPECT_EQ(ffmpeg({"-i", out.string(), "-map", "0:a", "-f", "hash", "-"}),
              ffmpeg({"-i", film.string(), "-map", "0:a", "-f", "hash", "-"}));
}

TEST(RealFilms, LoseATrackAndKeepTheOthersPackets) {
    const TempFolder folder;
    const fs::path film = folder / "film.mp4";
    makeMovie(film, {.seconds = 3, .soundTracks = 3, .soundLanguages = {"eng", "deu", "fra"}});
    const fs::path out = folder / "out.mp4";
    Relayout::run({.input = film, .output = out, .removedTracks = {3}});
    expectSameTimes(film, out, {"v:0", "a:0"});
    EXPECT_EQ(packetTimes(out, "a:1"), packetTimes(film, "a:2"));
    EXPECT_EQ(packetHashes(out).size(), 3U);
    EXPECT_THAT(probeValue(out, "stream_tags=language"), HasSubstr("fra"));
    EXPECT_THAT(probeValue(out, "stream_tags=language"), Not(HasSubstr("deu")));
}

TEST(RealFilms, InFragmentsAreRefused) {
    const TempFolder folder;
    const fs::path film = folder / "film.mp4";
    makeMovie(film, {.seconds = 1, .extraArguments = {"-movflags", "frag_keyframe+empty_moov"}});
    EXPECT_THAT(refusal(readFile(film)), HasSubstr("the file is fragmented ("));
}

}  // namespace marlet::test
