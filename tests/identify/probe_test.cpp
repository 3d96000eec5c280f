#include "identify/probe.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Kind = TrackInfo::Kind;

Bytes integerItem(std::string_view type, std::uint32_t value) {
    return tagItem(type, 21, be32(value));
}

/// The film below with these tag items, read from a file of that name.
ScannedFile probed(const std::vector<Bytes>& tags, const std::string& name = "a.mp4") {
    Movie movie;
    movie.tracks = {evenTrack("vide", 50, 40, 40), evenTrack("soun", 20, 30, 100, 2)};
    movie.tracks[1].language = "fra";
    movie.tags = tags;
    const TempFolder folder;
    return Probe::read(folder.write(name, buildMovie(movie)));
}

TEST(Probe, AFourByteCodeBecomesFourCharacters) {
    EXPECT_EQ(Probe::fourCC(0xA96E616D), "©nam");
    EXPECT_EQ(Probe::fourCC(0x61766331), "avc1");
    EXPECT_EQ(Probe::fourCC(0x00414243), std::string("\0ABC", 4));
}

TEST(Probe, GivesLengthTracksAndSoundLayoutOfAMovie) {
    const ScannedFile file = probed({});
    EXPECT_EQ(file.duration, 2.0);
    EXPECT_EQ(file.tracks,
              (std::vector<TrackInfo>{{Kind::video, "avc1", std::nullopt, std::nullopt},
                                      {Kind::audio, "mp4a", "fra", std::nullopt}}));
    EXPECT_EQ(file.interleave, 0.2);
    EXPECT_EQ(file.tags, ExistingTags());
}

TEST(Probe, GivesThePathAsGivenAndTheSize) {
    const TempFolder folder;
    const auto path = folder.write("a.mp4", Bytes(123)).parent_path() / "." / "a.mp4";
    const ScannedFile file = Probe::read(path);
    EXPECT_EQ(file.url.native(), path.native());
    EXPECT_EQ(file.size, 123);
}

TEST(Probe, MeasuresTheSoundLayoutOfMp4AndM4vOnly) {
    EXPECT_TRUE(probed({}, "a.M4V").interleave);
    const ScannedFile mov = probed({}, "a.mov");
    EXPECT_FALSE(mov.interleave);
    EXPECT_EQ(mov.tracks.size(), 2U);
}

TEST(Probe, ReadsTheFiveTagsThatIdentify) {
    const ScannedFile file =
        probed({textItem("©nam", "Pilot"), textItem("tvsh", "Show"), integerItem("tvsn", 3),
                integerItem("tves", 12), textItem("©day", "1999-03-31")});
    EXPECT_EQ(file.tags, (ExistingTags{"Pilot", "Show", 3, 12, 1999}));
}

TEST(Probe, NumbersAreReadInAnyWidthAndAsText) {
    EXPECT_EQ(probed({tagItem("tvsn", 21, Bytes{7})}).tags.season, 7);
    EXPECT_EQ(probed({tagItem("tvsn", 0, be64(8))}).tags.season, 8);
    EXPECT_EQ(probed({textItem("tvsn", " 9 ")}).tags.season, 9);
    EXPECT_EQ(probed({tagItem("tvsn", 21, Bytes{0xFF})}).tags.season, -1);
}

TEST(Probe, ANumberThatIsNoneStaysAbsent) {
    EXPECT_FALSE(probed({textItem("tvsn", "three")}).tags.season);
    EXPECT_FALSE(probed({tagItem("tvsn", 21, Bytes())}).tags.season);
    EXPECT_FALSE(probed({tagItem("tvsn", 21, Bytes(9, 1))}).tags.season);
    EXPECT_FALSE(probed({tagItem("tvsn", 21, be64(0x100000000))}).tags.season);
}

TEST(Probe, ATextThatIsEmptyIsNotAbsent) {
    EXPECT_EQ(probed({textItem("©nam", "")}).tags.title, "");
    EXPECT_FALSE(probed({box("©nam", Bytes())}).tags.title);
}

TEST(Probe, ALaterItemWins) {
    EXPECT_EQ(probed({textItem("©nam", "First"), textItem("©nam", "Second")}).tags.title, "Second");
}

TEST(Probe, ADateThatHasNoFourDigitsSetsNoYear) {
    for (const char* date : {"20", "", "May 1999", "19x9"})
        EXPECT_FALSE(probed({textItem("©day", date)}).tags.year) << date;
    EXPECT_EQ(probed({textItem("©day", "1999")}).tags.year, 1999);
}

TEST(Probe, BadTextIsRepaired) {
    EXPECT_EQ(probed({textItem("©nam", "a\xFF")}).tags.title, "a\uFFFD");
}

/// A file of one track whose boxes a test sets.
ScannedFile trackProbed(const Bytes& trak, const Bytes& more = {}) {
    const TempFolder folder;
    return Probe::read(folder.write("a.mov", box("moov", {trak, more})));
}

Bytes trakOf(std::string_view handler, const Bytes& mdhd) {
    return box("trak", {box("mdia", {mdhd, hdlrBox(handler)})});
}

Bytes mdhdWithLanguage(std::uint16_t code) {
    return patched(mdhdBox(1000, 300), 8 + 20, be16(code));
}

TEST(Probe, TheHandlerTellsTheKindOfATrack) {
    const std::vector<std::pair<std::string, Kind>> kinds = {
        {"vide", Kind::video},    {"soun", Kind::audio},    {"sbtl", Kind::subtitle},
        {"subt", Kind::subtitle}, {"text", Kind::subtitle}, {"clcp", Kind::subtitle},
        {"tmcd", Kind::other}};
    for (const auto& [handler, kind] : kinds)
        EXPECT_EQ(trackProbed(trakOf(handler, mdhdBox(1, 1))).tracks.at(0).kind, kind) << handler;
}

TEST(Probe, ATrackThatTellsNothingIsStillATrack) {
    const ScannedFile file = trackProbed(box("trak", Bytes()));
    EXPECT_EQ(file.tracks,
              (std::vector<TrackInfo>{{Kind::other, "?", std::nullopt, std::nullopt}}));
}

TEST(Probe, AnUnknownLanguageIsAbsent) {
    const auto languageOf = [](std::uint16_t code) {
        return trackProbed(trakOf("soun", mdhdWithLanguage(code))).tracks.at(0).language;
    };
    EXPECT_EQ(languageOf(0x55C4), std::nullopt) << "und";
    EXPECT_EQ(languageOf(0), std::nullopt);
    EXPECT_EQ(languageOf(0x7FFF), std::nullopt);
    EXPECT_EQ(languageOf(0x3FF), std::nullopt);
    EXPECT_EQ(languageOf(2), "deu") << "QuickTime's own number";
    EXPECT_EQ(languageOf(0x15C7), "eng");
}

TEST(Probe, ALengthThatIsNotPositiveOrNotKnownIsAbsent) {
    const auto durationOf = [](const Bytes& mvhd) {
        return trackProbed(box("trak", Bytes()), mvhd).duration;
    };
    EXPECT_EQ(durationOf(Bytes()), std::nullopt);
    EXPECT_EQ(durationOf(mvhdBox(1000, 0)), std::nullopt);
    EXPECT_EQ(durationOf(mvhdBox(1000, 0xFFFFFFFF)), std::nullopt);
    EXPECT_EQ(durationOf(mvhdBox(1000, 2500)), 2.5);
}

TEST(Probe, QuickTimeUserTextsAreRead) {
    const auto text = [](std::string_view value) {
        return joined({be16(static_cast<std::uint16_t>(value.size())), be16(0), bytesOf(value)});
    };
    const Bytes udta = box("udta", {box("©nam", text("Clip")), box("©day", text("2004-05-06"))});
    const ScannedFile file = trackProbed(box("trak", Bytes()), udta);
    EXPECT_EQ(file.tags.title, "Clip");
    EXPECT_EQ(file.tags.year, 2004);
}

TEST(Probe, AnUnreadableFileHasSize0AndNoTracks) {
    const TempFolder folder;
    for (const char* name : {"none.mp4", "none.mkv", "none.mov"}) {
        const ScannedFile file = Probe::read(folder / name);
        EXPECT_EQ(file.size, 0);
        EXPECT_TRUE(file.tracks.empty());
        EXPECT_FALSE(file.duration || file.interleave);
    }
}

TEST(Probe, AFileThatIsNoMovieHasItsSizeAndNothingElse) {
    const TempFolder folder;
    for (const char* name : {"a.mp4", "a.mkv", "a.mov"}) {
        const ScannedFile file = Probe::read(folder.write(name, Bytes(100, 0x5A)));
        EXPECT_EQ(file.size, 100);
        EXPECT_TRUE(file.tracks.empty());
    }
}

TEST(Probe, AnIndexThatCannotBeMeasuredStillNamesItsTracks) {
    const Bytes trak = box("trak", {mdiaBox("soun", 1000, 300, {stsdBox("mp4a")})});
    const TempFolder folder;
    const ScannedFile file = Probe::read(folder.write("a.mp4", box("moov", {trak})));
    EXPECT_EQ(file.tracks.at(0).codec, "mp4a");
    EXPECT_FALSE(file.interleave);
}

TEST(Probe, APipeThatIsNamedLikeAFilmHoldsNothingUp) {
    const TempFolder folder;
    for (const char* name : {"a.mp4", "a.mkv"}) {
        ASSERT_EQ(::mkfifo((folder / name).c_str(), 0600), 0);
        EXPECT_EQ(Probe::read(folder / name).size, 0);
    }
}

TEST(ProbeOfRealFiles, SaysWhatFFmpegWrote) {
    const TempFolder folder;
    RealMovie movie;
    movie.soundTracks = 2;
    movie.soundLanguages = {"eng", "deu"};
    movie.tags = {{"title", "Pilot"},
                  {"show", "A Show"},
                  {"season_number", "2"},
                  {"episode_sort", "5"},
                  {"date", "2001-02-03"}};
    makeMovie(folder / "a.m4v", movie);
    const ScannedFile file = Probe::read(folder / "a.m4v");
    EXPECT_NEAR(file.duration.value_or(0), 2, 0.1);
    EXPECT_EQ(file.tags, (ExistingTags{"Pilot", "A Show", 2, 5, 2001}));
    EXPECT_EQ(file.tracks,
              (std::vector<TrackInfo>{{Kind::video, "avc1", std::nullopt, std::nullopt},
                                      {Kind::audio, "mp4a", "eng", std::nullopt},
                                      {Kind::audio, "mp4a", "deu", std::nullopt}}));
    EXPECT_LE(file.interleave.value_or(9), 1.0);
}

TEST(ProbeOfRealFiles, TellsSoundStoredInOneBlock) {
    const TempFolder folder;
    RealMovie movie;
    movie.seconds = 3;
    makeMovie(folder / "a.mp4", movie);
    writeFile(folder / "a.mp4", storedTrackByTrack(readFile(folder / "a.mp4")));
    EXPECT_GT(Probe::read(folder / "a.mp4").interleave.value_or(0), 2.5);
}

TEST(ProbeOfRealFiles, ReadsQuickTime) {
    const TempFolder folder;
    RealMovie movie;
    movie.tags = {{"title", "Clip"}};
    makeMovie(folder / "a.mov", movie);
    const ScannedFile file = Probe::read(folder / "a.mov");
    EXPECT_EQ(file.tags.title, "Clip");
    ASSERT_EQ(file.tracks.size(), 2U);
    EXPECT_EQ(file.tracks[1].kind, Kind::audio);
    EXPECT_FALSE(file.interleave);
}

TEST(ProbeOfRealFiles, ReadsMatroska) {
    const TempFolder folder;
    RealMovie movie;
    movie.soundLanguages = {"fre"};
    movie.tags = {{"title", "A Film"}};
    makeMovie(folder / "a.mkv", movie);
    const ScannedFile file = Probe::read(folder / "a.mkv");
    EXPECT_NEAR(file.duration.value_or(0), 2, 0.1);
    EXPECT_EQ(file.tags.title, "A Film");
    ASSERT_EQ(file.tracks.size(), 2U);
    EXPECT_EQ(file.tracks[0].codec, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(file.tracks[1].codec, "A_AAC");
    EXPECT_EQ(file.tracks[1].language, "fre");
}

}  // namespace
}  // namespace marlet::test
