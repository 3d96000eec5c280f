#include "verify/conversion_test.h"

namespace marlet::test {
namespace {

/// A sound track converted from source track 3, of that length in ms.
class ConvertedSound : public ConversionTest {
protected:
    ConvertedSound() { movie_.tracks[1] = converted("mp4a", aacEntry(2)); }
    static MovieTrack converted(std::string_view codec, const Bytes& entry, int length = 320) {
        MovieTrack track = evenTrack("soun", 1, 40, static_cast<std::uint32_t>(length));
        track.codec = codec;
        track.entry = entry;
        track.altGroup = 1;
        track.mediaInfo = {hereBox()};
        track.edits = {{static_cast<std::uint32_t>(length), 0}};
        return track;
    }
    void expectAAC(int channels) {
        expected_[1] = {.kind = Expected::Kind::audioAAC, .source = 3, .channels = channels};
    }
};

TEST_F(ConvertedSound, AACOfTheRightChannelsAndLengthIsProved) {
    expectAAC(2);
    const Report report = verify();
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, Contains("converted sound 0.32 s vs source 0.32 s"));
}

TEST_F(ConvertedSound, OtherChannelsAreRefused) {
    expectAAC(1);
    EXPECT_THAT(reasons(), ElementsAre("AAC track 2 has 2 channels, expected 1"));
    movie_.tracks[1] = converted("mp4a", aacEntry(1));  // its field says 2
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConvertedSound, AC3HasSixChannelsWhateverItsFieldSays) {
    expected_[1] = {.kind = Expected::Kind::audioAC3, .source = 3};
    movie_.tracks[1] = converted("ac-3", ac3Entry(true));
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[1] = converted("ac-3", ac3Entry(false));
    EXPECT_THAT(reasons(), ElementsAre("AC3 track 2 has 2 channels, expected 6"));
}

TEST_F(ConvertedSound, ATenthOfASecondIsANoteAndTwoAreAReason) {
    expectAAC(2);
    movie_.tracks[1] = converted("mp4a", aacEntry(2), 220);
    const Report shorter = verify();
    EXPECT_THAT(shorter.reasons, IsEmpty());
    EXPECT_THAT(shorter.notes, Contains("converted sound 0.22 s vs source 0.32 s"));
    movie_.tracks[1] = converted("mp4a", aacEntry(2), 120);
    EXPECT_THAT(reasons(), ElementsAre("converted sound is 0.12 s, its source is 0.32 s"));
}

TEST_F(ConvertedSound, WhatATrackWaitsAtItsStartIsNotItsLength) {
    expectAAC(2);
    for (SourceFrame& frame : source_.other) frame.ms += 500;
    movie_.tracks[1].edits = {{500, -1}, {320, 0}};
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConvertedSound, AnEncodersRunInMayBeCutOff) {
    expectAAC(2);
    movie_.tracks[1] = converted("mp4a", aacEntry(2), 364);
    movie_.tracks[1].edits = {{320, 44}};
    EXPECT_THAT(reasons(), IsEmpty());
}

// --- kinds ---

TEST_F(ConversionTest, EveryTrackIsOfItsKind) {
    using Kind = Expected::Kind;
    const std::vector<std::pair<Kind, std::string>> others = {
        {Kind::audioCopy, "track 1 should be sound"},
        {Kind::audioAAC, "track 1 should be AAC"},
        {Kind::audioAC3, "track 1 should be AC3"},
        {Kind::sub, "track 1 should be a subtitle"}};
    for (const auto& [kind, sentence] : others) {
        expected_[0].kind = kind;
        EXPECT_THAT(reasons(), Contains(sentence));
    }
    expected_[0].kind = Kind::video;
    expected_[1].kind = Kind::video;
    EXPECT_THAT(reasons(), Contains("track 2 should be the video"));
    expected_[1] = {.kind = Kind::audioAAC, .source = 2, .channels = 6};
    EXPECT_THAT(reasons(), ElementsAre("track 2 should be AAC"));
}

// --- subtitles ---

MovieTrack subtitle(std::uint32_t displayFlags, std::uint32_t flags) {
    MovieTrack track = evenTrack("sbtl", 1, 10, 320);
    track.codec = "tx3g";
    track.entry = joined({Bytes(8), be32(displayFlags), Bytes(26)});
    track.mediaInfo = {hereBox()};
    track.flags = flags;
    track.altGroup = 2;
    return track;
}

TEST_F(ConversionTest, TheForcedFlagAgrees) {
    expected_.push_back({.kind = Expected::Kind::sub});
    movie_.tracks.push_back(subtitle(0, 2));
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[2] = subtitle(0x40000000, 2);
    EXPECT_THAT(reasons(), ElementsAre("subtitle track 3: forced flag is set"));
    expected_[2].forced = true;
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[2] = subtitle(0, 2);
    EXPECT_THAT(reasons(), ElementsAre("subtitle track 3: forced flag is missing"));
}

// --- alternate groups ---

TEST_F(ConversionTest, OneTrackOfAGroupOfSoundIsEnabled) {
    movie_.tracks.push_back(movie_.tracks[1]);
    expected_.push_back(expected_[1]);
    EXPECT_THAT(reasons(), ElementsAre("alternate group 1 has 2 enabled tracks"));
    movie_.tracks[1].flags = 2;
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[2].flags = 2;
    EXPECT_THAT(reasons(), ElementsAre("alternate group 1 has 0 enabled tracks"));
    movie_.tracks[1].altGroup = 0;
    movie_.tracks[2].altGroup = 0;
    EXPECT_THAT(reasons(), ElementsAre("no sound track is enabled"));
}

TEST_F(ConversionTest, AGroupOfSubtitlesHasOneEnabledAtMost) {
    for (int i = 0; i < 2; i++) {
        expected_.push_back({.kind = Expected::Kind::sub});
        movie_.tracks.push_back(subtitle(0, 2));
    }
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[2].flags = 3;
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[3].flags = 3;
    EXPECT_THAT(reasons(), ElementsAre("alternate group 2 has 2 enabled tracks"));
}

// --- languages ---

TEST_F(ConversionTest, ALanguageIsJudgedByItsFirstPart) {
    for (const char* language : {"eng", "en", "en-GB", "eng-US", "English"}) {
        expected_[1].language = language;
        EXPECT_THAT(reasons(), IsEmpty()) << language;
    }
    expected_[1].language = "fre";
    EXPECT_THAT(reasons(), ElementsAre("track 2: language is not fre"));
    movie_.tracks[1].language = "fra";
    EXPECT_THAT(reasons(), IsEmpty());
    expected_[1].language = "zh-Hans";
    EXPECT_THAT(reasons(), ElementsAre("track 2: language is not zh-Hans"));
    expected_[1].language = "";
    EXPECT_THAT(reasons(), IsEmpty());
}

// --- starts ---

TEST_F(ConversionTest, ACopyStartsFromThePictureAsInTheSource) {
    for (SourceFrame& frame : source_.sound) frame.ms += 300;
    EXPECT_THAT(reasons(), ElementsAre("track 2: starts 0.000 s from the picture, in the source "
                                       "0.300 s"));
    movie_.tracks[1].edits = {{302, -1}, {320, 0}};
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[1].edits = {{303, -1}, {320, 0}};
    EXPECT_THAT(reasons(), ElementsAre("track 2: starts 0.303 s from the picture, in the source "
                                       "0.300 s"));
}

TEST_F(ConvertedSound, StartsWithinFortyMillisecondsOfTheSource) {
    expectAAC(2);
    for (SourceFrame& frame : source_.other) frame.ms += 40;
    EXPECT_THAT(reasons(), IsEmpty());
    for (SourceFrame& frame : source_.other) frame.ms += 1;
    EXPECT_THAT(reasons(), ElementsAre("track 2: starts 0.000 s from the picture, in the source "
                                       "0.041 s"));
}

// --- chapters ---

TEST_F(ConversionTest, ChaptersAreCarriedOver) {
    movie_.userData.clear();
    EXPECT_THAT(reasons(), ElementsAre("chapters were not carried over"));
    plan_.hasChapters = false;
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConversionTest, ChaptersAreComparedByCountTitlesAndStarts) {
    const auto told = [&](std::vector<std::pair<std::uint64_t, std::string>> chapters) {
        movie_.userData = {chplBox(chapters)};
        return reasons();
    };
    const auto differ = ElementsAre("chapter titles or times differ from the original");
    EXPECT_THAT(told({{10, "One"}, {150, "Two"}}), IsEmpty());
    EXPECT_THAT(told({{11, "One"}, {160, "Two"}}), differ);
    EXPECT_THAT(told({{0, "One"}, {160, "Tow"}}), differ);
    EXPECT_THAT(told({{0, "One"}}), differ);
    EXPECT_THAT(told({{0, "One"}, {160, "Two"}, {200, "Three"}}), differ);
}

TEST_F(ConversionTest, AChapterTextTrackIsProvedAsWell) {
    MovieTrack text = textTrack({"One", "Other"}, 160);
    text.mediaInfo = {hereBox()};
    movie_.tracks.push_back(text);
    movie_.tracks[0].boxes = {box("tref", {box("chap", be32(3))})};
    EXPECT_THAT(reasons(), ElementsAre("chapter titles or times differ from the original"));
    movie_.tracks.back() = textTrack({"One", "Two"}, 160);
    movie_.tracks.back().mediaInfo = {hereBox()};
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.userData.clear();
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[0].boxes.clear();
    EXPECT_THAT(reasons(), ElementsAre("chapter titles or times differ from the original"))
        << "text that no track names for it holds no chapters";
}

}  // namespace
}  // namespace marlet::test
