#include <gtest/gtest.h>

#include "write/in_place_tracks.h"

namespace marlet::test {

namespace {

using Kind = InPlaceTrack::Kind;

InPlaceTrack sound(std::string language, int channels, std::string codec, std::string name = "") {
    InPlaceTrack track;
    track.language = std::move(language);
    track.channels = channels;
    track.codec = std::move(codec);
    track.name = std::move(name);
    return track;
}

InPlaceTrack subtitle(std::string language, std::string name = "") {
    InPlaceTrack track = sound(std::move(language), 0, "tx3g", std::move(name));
    track.kind = Kind::subtitle;
    return track;
}

TEST(TrackLayout, ReadsAsAPersonSaysIt) {
    const auto layout = [](int channels) { return sound("eng", channels, "mp4a").layout(); };
    EXPECT_EQ(layout(1), "Mono");
    EXPECT_EQ(layout(2), "Stereo");
    EXPECT_EQ(layout(6), "Surround 5.1");
    EXPECT_EQ(layout(7), "Surround 5.1");
    EXPECT_EQ(layout(8), "Surround 7.1");
    EXPECT_EQ(layout(24), "Surround 7.1");
    EXPECT_EQ(layout(0), "0 channels");
    EXPECT_EQ(layout(4), "4 channels");
}

TEST(TrackLabel, TellsLanguageLayoutAndCodecOfSound) {
    EXPECT_EQ(sound("eng", 6, "ac-3").label(), "English · Surround 5.1 · AC3");
    EXPECT_EQ(sound("fre", 2, "mp4a").label(), "French · Stereo · AAC");
    EXPECT_EQ(sound("und", 8, "ec-3").label(), "Unknown · Surround 7.1 · E-AC3");
    EXPECT_EQ(sound("isl", 0, "raw ").label(), "ISL · raw");
    EXPECT_EQ(sound("eng", 0, "").label(), "English");
}

TEST(TrackLabel, TellsTheLanguageOfSubtitles) {
    EXPECT_EQ(subtitle("ger").label(), "German");
}

TEST(TrackLabel, SaysForcedForeignOrCommentaryWhenTheNameDoes) {
    EXPECT_EQ(subtitle("eng", "Forced").label(), "English (forced)");
    EXPECT_EQ(subtitle("eng", "Foreign parts").label(), "English (foreign)");
    EXPECT_EQ(subtitle("eng", "forced, FOREIGN").label(), "English (forced, foreign)");
    EXPECT_EQ(sound("eng", 2, "mp4a", "Commentary").label(), "English (commentary) · Stereo · AAC");
}

TEST(TrackLabel, TellsWhatElseTheNameSays) {
    EXPECT_EQ(sound("eng", 2, "mp4a", "Director's commentary").label(),
              "English (commentary) · Stereo · AAC · Director's commentary");
    EXPECT_EQ(subtitle("eng", "English SDH").label(), "English · SDH (for the hard of hearing)");
}

TEST(TrackLabel, SaysNothingTwice) {
    EXPECT_EQ(subtitle("fre", "Français").label(), "French");
    EXPECT_EQ(sound("eng", 6, "ac-3", "English · Surround 5.1").label(),
              "English · Surround 5.1 · AC3");
}

TEST(TrackSummary, CountsWhatStays) {
    EXPECT_EQ(
        InPlaceTracks::summary({sound("eng", 2, "mp4a"), sound("fre", 2, "mp4a"), subtitle("eng")}),
        "2 sounds, 1 subtitle");
    EXPECT_EQ(InPlaceTracks::summary({}), "0 sounds, 0 subtitles");
}

TEST(TrackSummary, TellsHowManyAreLeftOut) {
    std::vector<InPlaceTrack> tracks = {sound("eng", 2, "mp4a"), sound("fre", 2, "mp4a"),
                                        subtitle("eng"), subtitle("fre")};
    tracks[1].keep = false;
    EXPECT_EQ(InPlaceTracks::summary(tracks), "1 sound, 2 subtitles, 1 removed");
    tracks[2].keep = tracks[3].keep = false;
    EXPECT_EQ(InPlaceTracks::summary(tracks), "1 sound, 0 subtitles, 3 removed");
}

}  // namespace
}  // namespace marlet::test
