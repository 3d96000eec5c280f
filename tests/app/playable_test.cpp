#include "app/playable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/text.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using testing::MatchesRegex;
using testing::StartsWith;

class PlayableTest : public testing::Test {
protected:
    std::vector<std::string> account(const std::string& name, const RealMovie& movie) {
        makeMovie(folder_ / name, movie);
        return Text::words(Playable::account(folder_ / name), '\n');
    }
    OwnHome home_;
    TempFolder folder_;
};

TEST_F(PlayableTest, AFilmGivesAPictureAndTenSecondsOfSoundAtEachPoint) {
    const auto lines = account("film.mp4", {.seconds = 20});
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_THAT(lines[0], MatchesRegex("playable true, duration 20\\.[0-9] s, tracks 2"));
    EXPECT_EQ(lines[1], "frame at 0.4 s: 64 x 36");
    // Mono of 16 kHz and 16 bits.
    EXPECT_THAT(lines[2], MatchesRegex("sound at 0\\.4 s: decoded 3[12][0-9]{4} bytes of the next "
                                       "10 s ok"));
    EXPECT_THAT(lines[9], MatchesRegex("frame at 19\\.[0-9] s: 64 x 36"));
    EXPECT_THAT(lines[10], MatchesRegex("sound at 19\\.[0-9] s: decoded [1-4][0-9]{4} bytes of the "
                                        "next 10 s ok"));
}

TEST_F(PlayableTest, AFilmWithoutSoundIsTriedForItsPictureAndSoundForItself) {
    const auto silent = account("silent.mp4", {.soundTracks = 0});
    ASSERT_EQ(silent.size(), 6u);
    for (std::size_t i = 1; i < silent.size(); i++) EXPECT_THAT(silent[i], StartsWith("frame at"));
    const auto blind = account("blind.m4v", {.video = false});
    ASSERT_EQ(blind.size(), 6u);
    for (std::size_t i = 1; i < blind.size(); i++) EXPECT_THAT(blind[i], StartsWith("sound at"));
}

TEST_F(PlayableTest, ANameThatLooksLikeAProtocolOrAnOptionIsAFile) {
    EXPECT_THAT(account("concat:-i x, 100%.mp4", {})[0], StartsWith("playable true"));
}

TEST_F(PlayableTest, WhatIsNoFilmIsNotPlayable) {
    EXPECT_EQ(Playable::account(folder_.write("x.mp4", std::string_view("no film at all"))),
              "playable false, duration 0.0 s, tracks 0\n");
    EXPECT_EQ(Playable::account(folder_ / "none.mp4"),
              "playable false, duration 0.0 s, tracks 0\n");
}

TEST_F(PlayableTest, APictureAndSoundThatCannotBeDecodedFail) {
    makeMovie(folder_ / "film.mp4", {.seconds = 4, .indexFirst = true});
    Bytes bytes = readFile(folder_ / "film.mp4");
    bytes.resize(bytes.size() / 4);
    writeFile(folder_ / "cut.mp4", bytes);
    const auto lines = Text::words(Playable::account(folder_ / "cut.mp4"), '\n');
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_THAT(lines[0], StartsWith("playable true"));
    EXPECT_THAT(lines[9], MatchesRegex("frame at 3\\.[0-9] s: FAILED"));
    EXPECT_THAT(lines[10],
                MatchesRegex("sound at 3\\.[0-9] s: decoded 0 bytes of the next 10 s FAILED"));
}

TEST_F(PlayableTest, WithoutFFmpegItSaysSo) {
    const ScopedEnv none("PATH", folder_.path().string());
    EXPECT_EQ(Playable::account(folder_ / "film.mp4"),
              "playable unknown: FFmpeg's programs ffprobe and ffmpeg aren't installed\n");
}

TEST_F(PlayableTest, ProgramsThatCannotBeStartedAreToldWithTheSystemsReason) {
    for (const char* name : {"ffprobe", "ffmpeg"}) {
        folder_.write(name, std::string_view("\x7f no program"));
        std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
    }
    const ScopedEnv bad("PATH", folder_.path().string());
    EXPECT_THAT(Playable::account(folder_ / "film.mp4"), StartsWith("playable unknown: "));
}

TEST(PlayableProbe, ACoverIsNoTrackAndNoPicture) {
    const auto probed = Playable::parseProbe(
        "codec_type=audio\nDISPOSITION:attached_pic=0\ncodec_type=video\n"
        "DISPOSITION:attached_pic=1\nduration=12.5\n");
    EXPECT_EQ(probed.tracks, 1);
    EXPECT_TRUE(probed.hasSound);
    EXPECT_FALSE(probed.hasPicture);
    EXPECT_EQ(probed.duration, 12.5);
}

TEST(PlayableProbe, ADurationThatIsNoneMakesNothingPlayable) {
    for (const char* duration : {"N/A", "-1", "0", "nan", "inf", "1e300", ""})
        EXPECT_FALSE(Playable::parseProbe(std::string("codec_type=audio\nduration=") + duration)
                         .isPlayable())
            << duration;
}

}  // namespace
}  // namespace marlet::test
