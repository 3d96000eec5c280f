// Which tracks of the plan come into the film, which of them play, and what becomes of sound and
// lines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "convert/film_outcomes.h"
#include "convert/mkv_files.h"
#include "mp4/summary.h"
#include "support/media.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Status = WriteOutcome::Status;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(ConverterTracks, AMarkedSoundThatGivesNoTrackLeavesTheFirstAsDefault) {
    FilmConversion film;
    film.useTool("exit 1");
    film.plan().audio.resize(1);
    film.plan().audio[0].name = "English";
    film.plan().audio[0].isDefault = false;
    film.plan().audio.push_back({.track = 3, .language = "ger", .isDefault = true});
    EXPECT_THAT(film.arguments(), HasSubstr("#2:lang=eng:name=English:group=1\n"));
}

/// The plain film's picture, and a 5.1 track (2) of full scale in every channel.
Bytes loudFilm() {
    const TempFolder folder;
    const std::string sound = (folder / "loud.flac").string();
    ffmpeg({"-f", "lavfi", "-i", "sine=440:duration=2:sample_rate=48000", "-af",
            "volume=8,pan=5.1|FL=c0|FR=c0|FC=c0|LFE=c0|BL=c0|BR=c0", sound});
    const std::string plain = folder.write("plain.mkv", plainFilm()).string();
    merge(folder / "loud.mkv", {"-A", "-S", "--no-chapters", plain, "--language", "0:eng", sound});
    return readFile(folder / "loud.mkv");
}

TEST(ConverterTracks, SurroundSoundIsGivenAsAC3AndAsStereoInThisOrder) {
    FilmConversion film("Movie.mkv", loudFilm());
    film.useOwnTools();
    film.plan().audio = {{.track = 2,
                          .language = "eng",
                          .makeSurround = true,
                          .makeStereo = true,
                          .channels = 6,
                          .rate = 48000,
                          .isDefault = true}};
    {
        const ScopedEnv keep("MARLET_KEEP_WORK", "");
        const WriteOutcome outcome = film.run();
        ASSERT_EQ(outcome.status, Status::done) << outcome.message;
        EXPECT_THAT(
            outcome.changes,
            ElementsAre("converted to Movie.m4v", "stereo mix lowered by 7.8 dB to avoid clipping",
                        "video: 50 frames identical to the original",
                        StartsWith("converted sound 2."), StartsWith("converted sound 2.")));
        EXPECT_THAT(film.labels, Contains("Converting sound (English)"));
        std::vector<std::string> left;
        for (const auto& entry : std::filesystem::directory_iterator(film.workFolder() / "sound"))
            left.push_back(entry.path().filename().string());
        EXPECT_THAT(left, testing::UnorderedElementsAre("t2.ac3", "t2.m4a"));
        std::filesystem::remove_all(film.workFolder());
    }
    film.useTool("exit 1");
    const std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("/t2.ac3:lang=eng:name=English · Surround 5.1:group=1\n"));
    EXPECT_THAT(arguments, HasSubstr("/t2.m4a:lang=eng:name=English · Stereo:group=1:disable\n"));
}

TEST(ConverterTracks, AFilmWithoutChaptersGetsNoneThatTheToolFound) {
    FilmConversion film;
    film.plan().subs.clear();
    film.plan().audio.resize(1);
    film.plan().hasChapters = false;
    const TempFolder folder;
    const auto list = folder.write("c.txt", "CHAPTER01=00:00:00.000\nCHAPTER01NAME=Hidden\n");
    const auto built = folder.write("built.mp4", builtFilm(500, {"-chap", list.string()}));
    ASSERT_FALSE(parseSummary(loadMoov(built), built, Detail::Yes).chpl.empty());
    film.toolMakes({{0, readFile(built)}});
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    const auto& made = *outcome.output;
    EXPECT_TRUE(parseSummary(loadMoov(made), made, Detail::Yes).chpl.empty());
    EXPECT_EQ(IlstEditor::currentIlst(made), film.request.atoms);
}

TEST(ConverterTracks, ASubtitleThatEndsBeforeTheFilmBeginsIsLeftOutWithANote) {
    const TempFolder folder;
    const std::string plain = folder.write("plain.mkv", plainFilm()).string();
    merge(folder / "late.mkv", {"--sync", "0:2000", "--sync", "1:2000", "--sync", "2:2000", plain});
    FilmConversion film("Movie.mkv", readFile(folder / "late.mkv"));
    film.useOwnTools();
    film.plan().hasChapters = false;
    film.plan().subs.resize(1);
    film.plan().subs[0].name = "English";
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(outcome.changes, Contains("English: no subtitle lines could be read; left out"));
    EXPECT_THAT(probeValue(*outcome.output, "stream=codec_name"), Not(HasSubstr("mov_text")));
}

TEST(Converter, APictureSubtitleIsLeftOutWithANote) {
    FilmConversion film;
    film.useOwnTools();
    film.plan().subs[0].kind = static_cast<int>(SubKind::picture);
    film.plan().subs[0].name = "English";
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(outcome.changes, Contains("English: no subtitle lines could be read; left out"));
    EXPECT_EQ(probeValue(*outcome.output, "stream=codec_name").find("mov_text"),
              probeValue(*outcome.output, "stream=codec_name").rfind("mov_text"));
}

TEST(Converter, ASubtitleWithoutLinesIsLeftOutWithANote) {
    FilmConversion film;
    film.useOwnTools();
    ConvertPlanSnapshot::Sub gone{.id = "x", .track = 77, .name = "Ghost"};
    ConvertPlanSnapshot::Sub lost{
        .id = "y", .sidecar = film.beside("none.srt"), .kind = 2, .name = "Lost"};
    writeFile(film.beside("nonsense.srt"), bytesOf("--> nothing 12 \xFF\xFE"));
    ConvertPlanSnapshot::Sub nonsense{
        .id = "z", .sidecar = film.beside("nonsense.srt"), .kind = 2, .name = "Nonsense"};
    film.plan().subs = {gone, lost, nonsense};
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    for (const char* name : {"Ghost", "Lost", "Nonsense"})
        EXPECT_THAT(outcome.changes,
                    Contains(std::string(name) + ": no subtitle lines could be read; left out"));
    EXPECT_THAT(probeValue(*outcome.output, "stream=codec_name"), Not(HasSubstr("mov_text")));
}

TEST(Converter, SidecarsOfEveryEncodingAreRead) {
    FilmConversion film;
    film.useOwnTools();
    const std::string srt = "1\n00:00:00,100 --> 00:00:00,900\n";
    std::string wide = "\xFF\xFE";
    for (const char each : srt + "x") wide += std::string{each, '\0'};
    writeFile(film.beside("wide.srt"), bytesOf(wide));
    writeFile(film.beside("latin.srt"), bytesOf(srt + "caf\xE9\n"));
    film.plan().subs = {
        {.id = "a", .sidecar = film.beside("wide.srt"), .kind = 2, .language = "eng", .name = "A"},
        {.id = "b",
         .sidecar = film.beside("latin.srt"),
         .kind = 2,
         .language = "fre",
         .name = "B"}};
    const ScopedEnv keep("MARLET_KEEP_WORK", "");
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(textOf(readFile(film.workFolder() / "s2.srt")), HasSubstr("café"));
    EXPECT_THAT(textOf(readFile(film.workFolder() / "s1.srt")), HasSubstr("\nx\n"));
}

TEST(Converter, ASoundTrackThatIsNotThereFails) {
    FilmConversion film;
    film.useOwnTools();
    film.plan().audio[0] = {.track = 9, .language = "eng", .makeStereo = true, .channels = 2};
    expectFailure(film, "sound track 9 not found");
}

TEST(Converter, SurroundOfFourChannelsFails) {
    FilmConversion film;
    film.useOwnTools();
    film.plan().audio[0].copy = false;
    film.plan().audio[0].makeSurround = true;
    film.plan().audio[0].channels = 4;
    expectFailure(film, "surround conversion needs 6 or 8 channels");
}

TEST(Converter, WithoutTheSoundToolItSaysSo) {
    FilmConversion film;
    film.useTool("exit 1");
    film.plan().audio[0].copy = false;
    film.plan().audio[0].makeStereo = true;
    expectFailure(film, "the media tool (gpac) is missing from this copy of Marlet");
    EXPECT_THAT(film.labels, Contains("Converting sound (English)"));
}

TEST(Converter, ConvertedSoundIsAACOfItsLanguageAndNothingOfItIsLeft) {
    FilmConversion film;
    film.useOwnTools();
    film.plan().audio[0].copy = false;
    film.plan().audio[0].makeStereo = true;
    const ScopedEnv keep("MARLET_KEEP_WORK", "");
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(outcome.message, HasSubstr("converted sound 2."));
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(film.workFolder() / "sound"))
        left.push_back(entry.path().filename().string());
    EXPECT_THAT(left, ElementsAre("t2.m4a"));
}

TEST(Converter, ALateTrackIsToldAsADelay) {
    const TempFolder folder;
    const std::string plain = folder.write("plain.mkv", plainFilm()).string();
    merge(folder / "late.mkv", {"--sync", "1:300", plain});
    FilmConversion film("Movie.mkv", readFile(folder / "late.mkv"));
    film.plan().audio[0].name = "English";
    film.useTool("exit 1");
    const std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("#2:lang=eng:name=English:group=1:delay=300\n"));
    EXPECT_THAT(arguments, HasSubstr("#1:name=Video\n"));
}

TEST(Converter, LinesKeepTheirPlaceWhenTheWholeFilmBeginsLate) {
    const TempFolder folder;
    const std::string plain = folder.write("plain.mkv", plainFilm()).string();
    merge(folder / "late.mkv", {"--sync", "0:2000", "--sync", "1:2000", "--sync", "2:2000",
                                "--sync", "3:2000", "--sync", "4:2000", plain});
    FilmConversion film("Movie.mkv", readFile(folder / "late.mkv"));
    film.useOwnTools();
    film.plan().hasChapters = false;
    const ScopedEnv keep("MARLET_KEEP_WORK", "");
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(textOf(readFile(film.workFolder() / "s1.srt")),
                HasSubstr("00:00:00,500 --> 00:00:01,500"));
}

}  // namespace
}  // namespace marlet::test
