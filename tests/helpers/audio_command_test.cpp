#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/errors.h"
#include "helpers/sound_command.h"
#include "support/media.h"
#include "support/process.h"

namespace marlet::test {
namespace {

using Arguments = std::vector<std::string>;
using SoundCommand::Command;
using SoundCommand::Kind;
using testing::HasSubstr;

bool isRefused(const Arguments& arguments) {
    try {
        SoundCommand::parse(arguments);
    } catch (const MFError& error) {
        return error.description().starts_with("this program takes -i IN ffdec ");
    }
    return false;
}

/// One run of the program, confined by nothing but itself.
struct Launch {
    explicit Launch(const Arguments& arguments, const std::map<std::string, std::string>& more = {})
        : process(builtProgram("marlet-audio"), arguments, more), status(process.wait()) {}
    Process process;
    int status;
};

TEST(AudioCommand, TakesWhatMarletAsks) {
    EXPECT_EQ(SoundCommand::parse(
                  Arguments{"-i", "/w/t1.mkv", "ffdec", "resample:osfmt=s16", "-o", "/w/t1.wav"}),
              (Command{Kind::decode, "/w/t1.mkv", "/w/t1.wav"}));
    EXPECT_EQ(SoundCommand::parse(
                  Arguments{"-i", "a", "ffdec", "resample:osfmt=s16:osr=48000", "-o", "b"}),
              (Command{Kind::resample, "a", "b"}));
    EXPECT_EQ(SoundCommand::parse(Arguments{"-i", "a", "ffdec", "ffenc:c=ac3:b=640k", "-o", "b"}),
              (Command{Kind::ac3, "a", "b"}));
    EXPECT_EQ(SoundCommand::parse(Arguments{"-i", "a", "ffenc:c=aac:b=192k", "-o", "b:store=flat"}),
              (Command{Kind::aac, "a", "b"}));
    EXPECT_EQ(SoundCommand::parse(Arguments{"-i", "a", "ffenc:c=aac:b=128k", "-o", "b:store=flat"}),
              (Command{Kind::aacMono, "a", "b"}));
}

TEST(AudioCommand, ReadsNoPathAsAnOption) {
    EXPECT_EQ(SoundCommand::parse(Arguments{"-i", "-o", "ffdec", "resample:osfmt=s16", "-o", "-i"}),
              (Command{Kind::decode, "-o", "-i"}));
}

TEST(AudioCommand, TakesNothingElse) {
    EXPECT_TRUE(isRefused({}));
    EXPECT_TRUE(isRefused({"-version"}));
    EXPECT_TRUE(isRefused({"-i", "a", "-o", "b"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffdec", "-o", "b"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffdec", "resample:osfmt=s24", "-o", "b"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffdec", "resample:osfmt=s16", "-o", "b", "-y"}));
    EXPECT_TRUE(isRefused({"-x", "a", "ffdec", "resample:osfmt=s16", "-o", "b"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffdec", "resample:osfmt=s16", "b", "-o"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffenc:c=aac:b=192k", "-o", "b"}));
    EXPECT_TRUE(isRefused({"-i", "a", "ffenc:c=aac:b=320k", "-o", "b:store=flat"}));
}

TEST(AudioCommand, FFmpegOpensFilesOnlyAndAsksNothing) {
    for (const Kind kind : {Kind::decode, Kind::resample, Kind::ac3, Kind::aac, Kind::aacMono}) {
        const Arguments given = SoundCommand::forFFmpeg({kind, "http://in", "tcp://out"});
        const auto after = [&](const std::string& option) {
            const auto found = std::find(given.begin(), given.end(), option);
            return found == given.end() ? "" : *(found + 1);
        };
        EXPECT_THAT(given, testing::Contains("-nostdin"));
        EXPECT_EQ(after("-protocol_whitelist"), "file");
        EXPECT_EQ(after("-format_whitelist"), "matroska,flac,wav");
        EXPECT_EQ(after("-i"), "file:http://in");
        EXPECT_EQ(after("-map"), "0:a:0");
        EXPECT_EQ(given.back(), "file:tcp://out");
    }
}

TEST(AudioProgram, EveryStepOfAFilmsSound) {
    const TempFolder folder;
    const auto in = [&](const char* name) { return (folder / name).string(); };
    ffmpeg({"-f", "lavfi", "-i", "sine=440:d=1:r=96000", "-f", "lavfi", "-i", "color=s=16x16:d=1",
            "-ac", "6", "-c:a", "flac", "-metadata", "title=A film", in("film.mkv")});
    EXPECT_EQ(
        Launch({"-i", in("film.mkv"), "ffdec", "resample:osfmt=s16", "-o", in("96.wav")}).status,
        0);
    EXPECT_EQ(probeValue(in("96.wav"), "stream=codec_name,sample_rate,channels"),
              "pcm_s16le\n96000\n6");
    EXPECT_EQ(
        Launch({"-i", in("film.mkv"), "ffdec", "resample:osfmt=s16:osr=48000", "-o", in("48.wav")})
            .status,
        0);
    EXPECT_EQ(probeValue(in("48.wav"), "stream=sample_rate,channels"), "48000\n6");
    EXPECT_EQ(probeValue(in("48.wav"), "format_tags=title"), "");
    ffmpeg({"-i", in("48.wav"), in("48.flac")});
    EXPECT_EQ(
        Launch({"-i", in("48.flac"), "ffdec", "ffenc:c=ac3:b=640k", "-o", in("48.ac3")}).status, 0);
    EXPECT_EQ(probeValue(in("48.ac3"), "stream=codec_name,channels,bit_rate"), "ac3\n6\n640000");
    ffmpeg({"-i", in("48.wav"), "-ac", "2", in("2.wav")});
    const std::string m4a = in("2:odd.m4a");
    EXPECT_EQ(Launch({"-i", in("2.wav"), "ffenc:c=aac:b=192k", "-o", m4a + ":store=flat"}).status,
              0);
    EXPECT_EQ(probeValue(m4a, "stream=codec_name,channels"), "aac\n2");
    EXPECT_NEAR(std::stod(probeValue(m4a, "stream=duration")), 1, 0.03);
}

TEST(AudioProgram, AFailureIsALineAndAStatus) {
    const TempFolder folder;
    const std::string noise = folder.write("noise.mkv", std::string_view("no film")).string();
    const std::string out = (folder / "out.wav").string();
    const Launch undecodable({"-i", noise, "ffdec", "resample:osfmt=s16", "-o", out});
    EXPECT_NE(undecodable.status, 0);
    EXPECT_THAT(undecodable.process.errors(), HasSubstr("noise.mkv"));
    EXPECT_FALSE(std::filesystem::exists(out));
    const Launch unknown({"-h"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.process.errors(), testing::StartsWith("marlet-audio: this program takes "));
    const Launch alone({"-i", noise, "ffdec", "resample:osfmt=s16", "-o", out},
                       {{"PATH", "/nowhere"}});
    EXPECT_EQ(alone.status, 1);
    EXPECT_EQ(alone.process.errors(),
              "marlet-audio: ffmpeg could not be started: No such file or directory\n");
}

TEST(AudioProgram, AListOfOtherFilesIsNotFollowed) {
    const TempFolder folder;
    const std::string other = (folder / "other.wav").string();
    ffmpeg({"-f", "lavfi", "-i", "sine=440:d=1", other});
    const std::string out = (folder / "out.wav").string();
    for (const std::string& entry : {other, std::string("http://127.0.0.1:9/other.wav")}) {
        const std::string list =
            folder.write("t1.mkv", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + entry + "\n")
                .string();
        EXPECT_NE(Launch({"-i", list, "ffdec", "resample:osfmt=s16", "-o", out}).status, 0);
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}

}  // namespace
}  // namespace marlet::test
