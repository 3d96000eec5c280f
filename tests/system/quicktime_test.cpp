// Real QuickTime films of FFmpeg's making become M4Vs through the real program, with each kind of
// media tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>

#include "mp4/sound_layout.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Tools = Bundle::Tools;
using Arguments = std::vector<std::string>;

const Arguments avc = {"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                       "2",    "-g",      "25",      "-pix_fmt",  "yuv420p"};
const Arguments hevc = {"-c:v",      "libx265",      "-preset",
                        "ultrafast", "-x265-params", "log-level=none:pools=1:bframes=2",
                        "-pix_fmt",  "yuv420p"};

Arguments with(Arguments list, const Arguments& more) {
    list.insert(list.end(), more.begin(), more.end());
    return list;
}

/// FFmpeg with three seconds of picture as stream 0, sound as 1 and other sound as 2.
void makeFilm(const fs::path& file, const Arguments& arguments, const std::string& soundDelay = "0",
              const std::string& pictureDelay = "0") {
    Arguments line = {"ffmpeg",
                      "-v",
                      "error",
                      "-y",
                      "-nostdin",
                      "-itsoffset",
                      pictureDelay,
                      "-f",
                      "lavfi",
                      "-i",
                      "testsrc2=size=64x36:rate=25:duration=3",
                      "-itsoffset",
                      soundDelay,
                      "-f",
                      "lavfi",
                      "-i",
                      "sine=frequency=440:sample_rate=48000:duration=3",
                      "-f",
                      "lavfi",
                      "-i",
                      "sine=frequency=220:sample_rate=44100:duration=3"};
    runTool(with(with(line, arguments), {file.string()}));
}

/// What a player sees of each packet of picture and sound: its time, its size and whether decoding
/// can start there.
std::vector<std::string> packetsOf(const fs::path& file, const std::string& stream) {
    std::istringstream text(
        runTool({"ffprobe", "-v", "error", "-select_streams", stream, "-show_entries",
                 "packet=pts_time,dts_time,duration_time,size,"
                 "flags",
                 "-of", "csv=p=0", file.string()}));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

/// What FFmpeg says when it decodes all of the film, and stops at the first error. Of every film
/// with a cover it says that the cover has no time scale.
std::string complaints(const fs::path& film) {
    return runTool(
        {"sh", "-c",
         "(ffmpeg -v warning -xerror -nostdin -i \"$0\" -map 0:v -map 0:a -f null - 2>&1 "
         "|| echo failed) | grep -v 'stream 0, timescale not set$'; :",
         film.string()});
}

std::string values(const fs::path& file, const std::string& stream, const std::string& entries) {
    return runTool({"ffprobe", "-v", "error", "-select_streams", stream, "-show_entries", entries,
                    "-of", "default=nw=1:nk=1", file.string()});
}

class QuickTime : public testing::TestWithParam<Tools> {
protected:
    void SetUp() override {
        if (GetParam() == Tools::gpac && !gpacOnPath())
            GTEST_SKIP() << "no GPAC 2.2 or newer on the PATH";
        bundle_ = std::make_unique<Bundle>(GetParam());
        run_.programs = bundle_->program("marlet").parent_path();
    }
    ProgramRun::Result convert() {
        bytes_ = readFile(file_);
        date_ = fs::last_write_time(file_);
        return run_.marlet({"--tag", file_.string(), "--confirm-all", "--quit", "--output-dir",
                            output_.path().string()});
    }
    void expectUntouched() {
        EXPECT_EQ(readFile(file_), bytes_);
        EXPECT_EQ(fs::last_write_time(file_), date_);
        EXPECT_EQ(std::distance(fs::directory_iterator(run_.library()), {}), 1);
    }
    Arguments delivered() {
        Arguments names;
        for (const auto& entry : fs::directory_iterator(output_.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }
    /// Copies the film and compares what players see of both.
    void expectCopied(const std::string& what, const Arguments& streams = {"v:0", "a:0"}) {
        const auto result = convert();
        ASSERT_EQ(result
                      .lines("RESULT done: Charade | New file Charade (1963).m4v · every sample "
                             "checked against the .mov")
                      .size(),
                  1U)
            << what << "\n"
            << result.output;
        EXPECT_THAT(delivered(), ElementsAre("Charade (1963).m4v"));
        expectUntouched();
        EXPECT_EQ(packetHashes(made()).front(), packetHashes(file_).front()) << what;
        for (const std::string& stream : streams) {
            EXPECT_EQ(packetsOf(made(), stream), packetsOf(file_, stream)) << what << stream;
            for (const char* entries :
                 {"stream=codec_name,codec_tag_string,width,height,channels,sample_rate",
                  "stream_disposition=default", "stream=sample_aspect_ratio,color_space",
                  "stream_tags=language"})
                EXPECT_EQ(values(made(), stream, entries), values(file_, stream, entries))
                    << what << stream;
        }
        EXPECT_EQ(complaints(made()), "") << what;
        EXPECT_LE(measureInterleave(made()), 1.0) << what;
        EXPECT_EQ(probeValue(made(), "format_tags=title"), "Charade");
        fs::remove(made());
    }
    void expectRefused(const std::string& sentence) {
        const auto result = convert();
        EXPECT_EQ(result.lines("RESULT failed: Charade | " + sentence).size(), 1U) << result.output;
        EXPECT_THAT(delivered(), IsEmpty());
        expectUntouched();
    }
    fs::path made() const { return output_ / "Charade (1963).m4v"; }

    ProgramRun run_;
    TempFolder output_;
    std::unique_ptr<Bundle> bundle_;
    fs::path file_ = run_.library() / "Charade (1963).mov";
    Bytes bytes_;
    fs::file_time_type date_;
};

TEST_P(QuickTime, H264WithEachKindOfSoundIsCopied) {
    for (const Arguments& sound :
         {Arguments{"-c:a", "aac"}, Arguments{"-c:a", "ac3", "-ac", "6"},
          Arguments{"-c:a", "eac3", "-ac", "6"}, Arguments{"-c:a", "aac", "-ar", "96000"}}) {
        makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc), sound));
        expectCopied(sound[1]);
    }
}

TEST_P(QuickTime, HEVCOfBothKindsIsCopied) {
    for (const char* tag : {"hvc1", "hev1"}) {
        makeFilm(file_,
                 with(with({"-map", "0", "-map", "1"}, hevc), {"-tag:v", tag, "-c:a", "aac"}));
        expectCopied(tag);
    }
}

TEST_P(QuickTime, TwoSoundsOfTwoLanguagesAreCopied) {
    makeFilm(file_, with(with({"-map", "0", "-map", "1", "-map", "2"}, avc),
                         {"-c:a", "aac", "-metadata:s:a:0", "language=eng", "-metadata:s:a:1",
                          "language=ger"}));
    expectCopied("two sounds", {"v:0", "a:0", "a:1"});
}

TEST_P(QuickTime, TheIndexMayStandFirstOrLast) {
    makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc),
                         {"-c:a", "aac", "-movflags", "faststart"}));
    expectCopied("index first");
}

TEST_P(QuickTime, TracksThatStartLateStayInStep) {
    for (const auto& [picture, sound] : {std::pair{"0", "0.4"}, std::pair{"0.4", "0.2"}}) {
        makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc), {"-c:a", "aac"}), sound,
                 picture);
        expectCopied(std::string(picture) + " and " + sound);
    }
}

TEST_P(QuickTime, ShapeAndColoursAreKept) {
    makeFilm(file_,
             with(with({"-map", "0", "-map", "1"}, avc),
                  {"-c:a", "aac", "-aspect", "16:9", "-color_primaries", "bt709", "-color_trc",
                   "bt709", "-colorspace", "bt709", "-movflags", "write_colr"}));
    expectCopied("shape and colours");
}

TEST_P(QuickTime, ChaptersAreCarriedOver) {
    const TempFolder parts;
    const fs::path chapters = parts.write(
        "c.txt", std::string_view(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1250\n"
                                  "title=One: the \"start\"\n[CHAPTER]\nTIMEBASE=1/1000\n"
                                  "START=1250\nEND=3000\ntitle=Zwei Ä\n"));
    makeFilm(
        file_,
        with(with({"-i", chapters.string(), "-map", "0", "-map", "1", "-map_chapters", "3"}, avc),
             {"-c:a", "aac"}));
    const auto result = convert();
    ASSERT_EQ(result.lines("RESULT done").size(), 1U) << result.output;
    EXPECT_EQ(probeValue(made(), "chapter=start_time:chapter_tags=title"),
              "0.000000\nOne: the \"start\"\n1.250000\nZwei Ä");
    EXPECT_EQ(packetsOf(made(), "v:0"), packetsOf(file_, "v:0"));
    EXPECT_EQ(packetsOf(made(), "a:0"), packetsOf(file_, "a:0"));
    expectUntouched();
}

TEST_P(QuickTime, SubtitlesAreCopied) {
    const TempFolder parts;
    const fs::path lines =
        parts.write("s.srt", std::string_view("1\n00:00:00,500 --> 00:00:01,500\nHello\n"));
    // QuickTime's own text, and the timed text of MP4s.
    for (const char* tag : {"text", "tx3g"}) {
        makeFilm(file_,
                 with(with({"-i", lines.string(), "-map", "0", "-map", "1", "-map", "3"}, avc),
                      {"-c:a", "aac", "-c:s", "mov_text", "-tag:s", tag, "-metadata:s:s:0",
                       "language=eng"}));
        expectCopied(tag, {"v:0", "a:0", "s:0"});
    }
}

TEST_P(QuickTime, TagsOfTheSourceAreNotKept) {
    makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc),
                         {"-c:a", "aac", "-metadata", "title=Old", "-metadata", "comment=Words"}));
    ASSERT_EQ(convert().lines("RESULT done").size(), 1U);
    EXPECT_EQ(probeValue(made(), "format_tags=title"), "Charade");
    EXPECT_EQ(probeValue(made(), "format_tags=comment"), "");
}

TEST_P(QuickTime, WhatWouldHaveToBeConvertedIsRefused) {
    makeFilm(file_, {"-map", "0", "-map", "1", "-c:v", "prores", "-c:a", "aac"});
    expectRefused(
        "the picture is apcn, not H.264 or HEVC: Apple TV can't play it, and Marlet never "
        "re-encodes video");
    makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc), {"-c:a", "pcm_s16le"}));
    expectRefused("the sound is sowt: only AAC, AC3 and E-AC3 are copied from a .mov");
    makeFilm(file_, with(with({"-map", "0", "-map", "1"}, avc),
                         {"-c:a", "aac", "-timecode", "00:00:00:00"}));
    expectRefused(
        "this .mov has extra tracks (timecode or similar); they can't be carried over yet");
}

INSTANTIATE_TEST_SUITE_P(Own, QuickTime, testing::Values(Tools::own));
INSTANTIATE_TEST_SUITE_P(Gpac, QuickTime, testing::Values(Tools::gpac));

}  // namespace
}  // namespace marlet::test
