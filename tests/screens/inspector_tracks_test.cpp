#include "screens/inspector_fixture.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::StartsWith;

TEST_F(InspectorScreen, TheTracksOfAnMP4CanBeLeftOut) {
    realFilm(false);
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->sounds()->count(), 2);
    EXPECT_EQ(tracks->noSounds(), QString());
    EXPECT_EQ(tracks->noSubtitles(), QStringLiteral("No subtitles in this file."));
    EXPECT_EQ(tracks->foot(), QStringLiteral("Untick a track to leave it out. Marlet then makes a "
                                             "new .m4v and leaves this file as it is."));
    EXPECT_EQ(tracks->leavesOut(), QString());
    const auto keys = column(tracks->sounds(), "key");
    tracks->keepSound(toQt(keys[1]), false);
    EXPECT_EQ(tracks->leavesOut(),
              QStringLiteral("1 track will be left out of a new .m4v saved in your output folder. "
                             "This file isn't touched, and the picture stays exactly the same."));
    tracks->keepSound(toQt(keys[0]), false);
    EXPECT_THAT(fromQt(tracks->leavesOut()), StartsWith("2 tracks will be left out"));
}

TEST_F(InspectorScreen, AFileWithoutSoundSaysSo) {
    place({resolved(file("x.mp4"), film())});
    auto* tracks = inspector->tracks();
    EXPECT_EQ(tracks->busy(), QStringLiteral("Reading the tracks…"));
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->noSounds(), QStringLiteral("No sound tracks."));
}

TEST_F(InspectorScreen, AMOVIsCopiedTrackForTrack) {
    place({resolved(file("x.mov"), film())});
    EXPECT_EQ(inspector->tracks()->foot(),
              QStringLiteral("A QuickTime file is copied track for track into a new .m4v. Nothing "
                             "is converted."));
}

TEST_F(InspectorScreen, AnMKVTellsItsPlan) {
    plans->put("x.mkv", StagedPlans::rich());
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty() && tracks->checking().isEmpty(); });
    EXPECT_EQ(tracks->picture(), QStringLiteral("HEVC"));
    EXPECT_EQ(tracks->pictureNote(), QStringLiteral("Copied as it is"));
    EXPECT_THAT(column(tracks->sounds(), "note"), Contains("Commentary, left out"));
    EXPECT_THAT(column(tracks->sounds(), "playsFirst"), Contains("true"));
    EXPECT_EQ(tracks->moreSounds(), QStringLiteral("2 more sound tracks, left out"));
    EXPECT_EQ(tracks->moreSubtitles(), QStringLiteral("2 other subtitles"));
    EXPECT_THAT(column(tracks->subtitles(), "note"), Contains("text from picture subtitles"));
    EXPECT_EQ(
        tracks->foot(),
        QStringLiteral("Picture quality stays exactly the same. Chapters, cover, description, "
                       "cast and ratings are included."));
    const int shown = tracks->sounds()->count();
    tracks->setOpen(true);
    EXPECT_EQ(tracks->sounds()->count(), shown + 2);
    const auto keys = column(tracks->sounds(), "key");
    tracks->keepSound(QStringLiteral("3"), false);
    const auto at = std::ranges::find(keys, "3") - keys.begin();
    EXPECT_EQ(column(tracks->sounds(), "note").at(static_cast<std::size_t>(at)), "Left out");
    tracks->keepSubtitle(QStringLiteral("mkv7"), false);
    EXPECT_THAT(column(tracks->subtitles(), "note"), Contains("Left out of the new file"));
}

TEST_F(InspectorScreen, APlanThatRefusesSaysWhyAndThatTheFileIsSkipped) {
    plans->put("x.mkv", StagedPlans::refused());
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->refusal(),
              QStringLiteral("VP9 video can't be played by Apple TV. This file is skipped."));
}

TEST_F(InspectorScreen, TheSecondLookTellsHowFarItIs) {
    plans->put("x.mkv", StagedPlans::rich(), StagedPlans::Ends::when_released);
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->checked() > 0.3; });
    EXPECT_EQ(tracks->checking(),
              QStringLiteral("Checking which subtitles are foreign-parts-only… 37 %"));
    plans->release();
    until([&] { return tracks->checking().isEmpty(); });
}

TEST_F(InspectorScreen, AnMKVThatCannotBeReadSaysSo) {
    place({resolved(file("x.mkv"), film())});
    until([&] { return !inspector->tracks()->refusal().isEmpty(); });
    EXPECT_EQ(inspector->tracks()->refusal(), QStringLiteral("This file can't be read."));
}

}  // namespace
}  // namespace marlet::test
