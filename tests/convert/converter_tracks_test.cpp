// Which tracks of the plan come into the film, and which of them play.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/film_conversion.h"
#include "convert/mkv_files.h"
#include "mp4/summary.h"
#include "support/media.h"

namespace marlet::test {
namespace {

using Status = WriteOutcome::Status;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

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
    runTool({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=440:duration=2:sample_rate=48000",
             "-af", "volume=8,pan=5.1|FL=c0|FR=c0|FC=c0|LFE=c0|BL=c0|BR=c0", sound});
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
        EXPECT_THAT(outcome.changes,
                    testing::ElementsAre("converted to Movie.m4v",
                                         "stereo mix lowered by 7.8 dB to avoid clipping",
                                         "video: 50 frames identical to the original",
                                         testing::StartsWith("converted sound 2."),
                                         testing::StartsWith("converted sound 2.")));
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

}  // namespace
}  // namespace marlet::test
