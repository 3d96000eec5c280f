// Real QuickTime films of FFmpeg's making become M4Vs through the real program, with each kind of
// media tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "mp4/sound_layout.h"
#include "support/media.h"
#include "system/conversion_run.h"
#include "system/film_readers.h"

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
    Arguments line = {"-itsoffset", pictureDelay,
                      "-f",         "lavfi",
                      "-i",         "testsrc2=size=64x36:rate=25:duration=3",
                      "-itsoffset", soundDelay,
                      "-f",         "lavfi",
                      "-i",         "sine=frequency=440:sample_rate=48000:duration=3",
                      "-f",         "lavfi",
                      "-i",         "sine=frequency=220:sample_rate=44100:duration=3"};
    ffmpeg(with(with(line, arguments), {file.string()}));
}

class QuickTime : public testing::TestWithParam<Tools> {
protected:
    /// Copies the film and compares what players see of both.
    void expectCopied(const std::string& what, const Arguments& streams = {"v:0", "a:0"}) {
        const auto result = film_.convert();
        ASSERT_EQ(result
                      .lines("RESULT done: Charade | New file Charade (1963).m4v · every sample "
                             "checked against the .mov")
                      .size(),
                  1U)
            << what << "\n"
            << result.output;
        EXPECT_THAT(film_.delivered(), ElementsAre("Charade (1963).m4v"));
        film_.expectUntouched();
        EXPECT_EQ(packetHashes(made()).front(), packetHashes(file_).front()) << what;
        for (const std::string& stream : streams) {
            EXPECT_EQ(packetsOf(made(), stream), packetsOf(file_, stream)) << what << stream;
            for (const char* entries :
                 {"stream=codec_name,codec_tag_string,width,height,channels,sample_rate",
                  "stream_disposition=default", "stream=sample_aspect_ratio,color_space",
                  "stream_tags=language"})
                EXPECT_EQ(probeValue(made(), entries, stream), probeValue(file_, entries, stream))
                    << what << stream;
        }
        EXPECT_EQ(complaintsOf(made()), "") << what;
        EXPECT_LE(measureInterleave(made()), 1.0) << what;
        EXPECT_EQ(probeValue(made(), "format_tags=title"), "Charade");
        fs::remove(made());
    }
    void expectRefused(const std::string& sentence) {
        const auto result = film_.convert();
        EXPECT_EQ(result.lines("RESULT failed: Charade | " + sentence).size(), 1U) << result.output;
        EXPECT_THAT(film_.delivered(), IsEmpty());
        film_.expectUntouched();
    }
    fs::path made() const { return film_.made(); }

    ConversionRun film_{GetParam(), "Charade (1963).mov"};
    const fs::path file_ = film_.source();
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
    const auto result = film_.convert();
    ASSERT_EQ(result.lines("RESULT done").size(), 1U) << result.output;
    EXPECT_EQ(probeValue(made(), "chapter=start_time:chapter_tags=title"),
              "0.000000\nOne: the \"start\"\n1.250000\nZwei Ä");
    EXPECT_EQ(packetsOf(made(), "v:0"), packetsOf(file_, "v:0"));
    EXPECT_EQ(packetsOf(made(), "a:0"), packetsOf(file_, "a:0"));
    film_.expectUntouched();
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
    ASSERT_EQ(film_.convert().lines("RESULT done").size(), 1U);
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
