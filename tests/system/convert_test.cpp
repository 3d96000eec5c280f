// Real Matroska films of mkvmerge's own making become M4Vs through the real program, with each kind
// of media tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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

constexpr const char* lines = "1\n00:00:00,500 --> 00:00:01,500\nHello, it's me\n";
constexpr const char* chapters =
    "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One: the \"start\"\n"
    "CHAPTER02=00:00:01.250\nCHAPTER02NAME=Zwei Ä\n";

/// Picture, AC3 5.1 (English), FLAC 5.1 (French), AAC stereo (English commentary), Opus (German),
/// English and German subtitles, a forced one, and chapters.
void makeFilm(const fs::path& file) {
    const TempFolder parts;
    const auto part = [&](const std::string& name) { return (parts / name).string(); };
    ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=3", "-c:v", "libx264", "-bf",
            "2", "-pix_fmt", "yuv420p", part("v.mp4")});
    const std::string wide =
        "anoisesrc=duration=3:sample_rate=48000:amplitude=0.5,pan=5.1|c0=c0|c1=c0|c2=c0|c3=c0|c4="
        "c0|c5=c0";
    ffmpeg({"-f", "lavfi", "-i", wide, "-c:a", "ac3", part("a.ac3")});
    ffmpeg({"-f", "lavfi", "-i", wide, "-c:a", "flac", part("a.flac")});
    ffmpeg({"-f", "lavfi", "-i", "sine=500:duration=3:sample_rate=48000", "-ac", "2", "-c:a", "aac",
            part("a.aac")});
    ffmpeg({"-f", "lavfi", "-i", "sine=300:duration=3:sample_rate=48000", "-ac", "2", "-c:a",
            "libopus", part("a.opus")});
    parts.write("s.srt", std::string_view(lines));
    parts.write("c.txt", std::string_view(chapters));
    mkvmerge(file, {"--chapters",
                    part("c.txt"),
                    part("v.mp4"),
                    "--language",
                    "0:eng",
                    part("a.ac3"),
                    "--language",
                    "0:fre",
                    part("a.flac"),
                    "--language",
                    "0:eng",
                    "--track-name",
                    "0:Commentary: the \"director\" + cast",
                    part("a.aac"),
                    "--language",
                    "0:ger",
                    part("a.opus"),
                    "--language",
                    "0:eng",
                    part("s.srt"),
                    "--language",
                    "0:ger",
                    part("s.srt"),
                    "--language",
                    "0:eng",
                    "--forced-display-flag",
                    "0:1",
                    part("s.srt")});
}

/// The digest of one stream's frames as a decoder sees them.
std::string framesOf(const fs::path& file, const std::string& stream) {
    return ffmpeg({"-i", file.string(), "-map", "0:" + stream, "-c", "copy", "-f", "hash", "-hash",
                   "sha256", "-"});
}

class Convert : public testing::TestWithParam<Tools> {
protected:
    void SetUp() override { makeFilm(film_.source()); }

    ConversionRun film_{GetParam()};
};

TEST_P(Convert, AMatroskaFilmBecomesAnM4VWithDetailsAndCover) {
    const auto result = film_.convert();
    ASSERT_EQ(result.lines("RESULT done: Charade | New file Charade (1963).m4v · ").size(), 1U)
        << result.output;
    EXPECT_THAT(result.output, HasSubstr("frames identical to the original"));
    const fs::path made = film_.made();
    ASSERT_THAT(film_.delivered(), ElementsAre("Charade (1963).m4v"));
    film_.expectUntouched();
    EXPECT_LE(measureInterleave(made), 1.0);
    EXPECT_EQ(probeValue(made, "format_tags=title"), "Charade");

    const auto sounds = streamsOf(made, "a");
    ASSERT_GE(sounds.size(), 2U) << "the surround and a stereo track";
    EXPECT_EQ(sounds[0].codec, "ac3");
    EXPECT_EQ(std::ranges::count(sounds, true, &Stream::isDefault), 1);
    for (const Stream& sound : sounds) EXPECT_EQ(sound.language, "eng");
    const auto subtitles = streamsOf(made, "s");
    ASSERT_EQ(subtitles.size(), 2U) << "the full English one and the forced one";
    EXPECT_FALSE(subtitles[0].isDefault);
    EXPECT_TRUE(subtitles[1].isDefault) << "forced lines show by themselves";

    EXPECT_EQ(framesOf(made, "a:0"), framesOf(film_.source(), "a:0"));
    EXPECT_EQ(packetHashes(made).front(), packetHashes(film_.source()).front()) << "the picture";
    EXPECT_THAT(chaptersOf(made), ElementsAre(std::pair(0.0, std::string("One: the \"start\"")),
                                              std::pair(1.25, std::string("Zwei Ä"))));
}

TEST_P(Convert, SoundOfOtherLanguagesIsConvertedWhenItIsWanted) {
    const auto result = film_.convertKeeping({"French", "German"});
    const fs::path made = film_.made();
    ASSERT_TRUE(fs::exists(made)) << result.output;
    EXPECT_THAT(result.output, HasSubstr("converted sound 3.0"));
    const auto sounds = streamsOf(made, "a");
    ASSERT_EQ(sounds.size(), 3U);
    EXPECT_EQ(sounds[0].codec, "ac3");
    EXPECT_EQ(sounds[0].language, "fre");
    EXPECT_EQ(sounds[0].name, "French · Surround 5.1");
    EXPECT_EQ(sounds[1].codec, "aac");
    EXPECT_EQ(sounds[1].name, "French · Stereo");
    EXPECT_EQ(sounds[2].codec, "aac");
    EXPECT_EQ(sounds[2].language, "ger");
    film_.expectUntouched();
}

TEST_P(Convert, ASecondConversionGetsANumber) {
    film_.convert();
    EXPECT_THAT(film_.convert().output, HasSubstr("New file Charade (1963) 2.m4v"));
    EXPECT_EQ(film_.delivered().size(), 2U);
}

TEST_P(Convert, APictureThatStartsBehindTheSoundStaysInStep) {
    // FFmpeg's own Matroska files begin with the encoder's run-in of the sound.
    for (const char* delay : {"0", "0.4"}) {
        ffmpeg({"-f", "lavfi", "-itsoffset", delay, "-i", "testsrc=size=64x36:rate=25:duration=2",
                "-f", "lavfi", "-i", "sine=duration=3", "-c:v", "libx264", "-bf", "2", "-pix_fmt",
                "yuv420p", "-c:a", "aac", film_.source().string()});
        const auto result = film_.convert();
        EXPECT_EQ(result.lines("RESULT done").size(), 1U) << result.output;
    }
}

TEST_P(Convert, AVideoThatAppleTVCannotPlayIsNotAdded) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=1", "-c:v", "libvpx-vp9",
            film_.source().string()});
    const auto result = film_.convert();
    EXPECT_EQ(result.lines("NOTICE Not added: Charade (1963).mkv: ").size(), 1U) << result.output;
    EXPECT_THAT(film_.delivered(), IsEmpty());
    film_.expectUntouched();
}

TEST_P(Convert, ThePlanIsShownBeforeAnythingIsDone) {
    const auto result = film_.convert({"--plan-test", "--plan-only"});
    EXPECT_EQ(result.lines("PLAN progress ").size(), 2U) << result.output;
    // The first may be there before a frame was counted.
    const auto shown = result.lines("PLAN progress ");
    EXPECT_TRUE(!shown.empty() && shown.back().starts_with("PLAN progress 100% after "))
        << result.output;
    EXPECT_EQ(result.lines("plan: Charade (1963).mkv -> picture V_MPEG4/ISO/AVC copied; ").size(),
              1U)
        << result.output;
    EXPECT_THAT(film_.delivered(), IsEmpty());
    film_.expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Own, Convert, testing::Values(Tools::own));
INSTANTIATE_TEST_SUITE_P(Gpac, Convert, testing::Values(Tools::gpac));

class Diagnoses : public testing::Test {
protected:
    ProgramRun run_;
};

TEST_F(Diagnoses, WhatTheMatroskaReaderMakesOfAFile) {
    makeFilm(run_.library() / "a.mkv");
    const auto result = run_.marlet({"--mkv-in", (run_.library() / "a.mkv").string()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.lines("duration 3.").size(), 1U) << result.output;
    EXPECT_THAT(result.output, HasSubstr(" s, chapters 2 - One: the \"start\" - Zwei Ä\n"));
    EXPECT_EQ(result
                  .lines("track 1 type 1 V_MPEG4/ISO/AVC lang und default true forced false name "
                         "- ch 0 blocks 75")
                  .size(),
              1U)
        << result.output;
    EXPECT_EQ(result.lines("track 2 type 2 A_AC3 lang en ").size(), 1U);
}

TEST_F(Diagnoses, AFileThatIsNoMatroskaFileIsNotReadable) {
    writeFile(run_.library() / "a.mkv", bytesOf("no"));
    EXPECT_EQ(run_.marlet({"--mkv-in=" + (run_.library() / "a.mkv").string()}).output,
              "not readable\n");
}

TEST_F(Diagnoses, AWAVFileIsTriedWithTheSoundTool) {
    const Bundle bundle(Tools::own);
    run_.programs = bundle.program("marlet").parent_path();
    const fs::path wav = run_.library() / "a.wav";
    ffmpeg(
        {"-f", "lavfi", "-i", "sine=500:duration=1:sample_rate=44100", "-ac", "2", wav.string()});
    const auto result = run_.marlet({"--audio-test", wav.string()});
    EXPECT_EQ(
        result.lines("wav: 2 ch, 44100 Hz, 16-bit, float false, data 176400 bytes at ").size(), 1U)
        << result.output;
    EXPECT_EQ(result.lines("aac: in 2 ch, gain 1.0000, size ").size(), 1U) << result.output;
    EXPECT_EQ(probeValue(run_.library() / "a.test.m4a", "stream=codec_name"), "aac");
}

TEST_F(Diagnoses, WhatIsNoWAVFileFailsInWords) {
    writeFile(run_.library() / "a.wav", bytesOf("no"));
    EXPECT_EQ(run_.marlet({"--audio-test", (run_.library() / "a.wav").string()}).output,
              "failed: the decoded sound isn't a readable WAV file\n");
}

}  // namespace
}  // namespace marlet::test
