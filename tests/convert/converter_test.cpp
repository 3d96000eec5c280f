#include "convert/converter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "convert/convert_wording.h"
#include "convert/film_outcomes.h"
#include "convert/mkv_files.h"
#include "mp4/sound_layout.h"
#include "support/media.h"
#include "support/mkv_builder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Status = WriteOutcome::Status;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// The picture and the English sound alone, which builtFilm holds.
void keepPictureAndSound(FilmConversion& film) {
    film.plan().subs.clear();
    film.plan().audio.resize(1);
    film.plan().hasChapters = false;
}

TEST(Converter, MakesANewFileAndTellsWhatItIs) {
    FilmConversion film;
    film.useOwnTools();
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    const fs::path made = film.output() / "Movie.m4v";
    EXPECT_EQ(outcome.output, made);
    EXPECT_EQ(outcome.size, fs::file_size(made));
    EXPECT_FALSE(outcome.rebuilt);
    EXPECT_FALSE(outcome.before);
    EXPECT_LE(*outcome.after, 1.0);
    EXPECT_EQ(outcome.changes.front(), "converted to Movie.m4v");
    EXPECT_THAT(outcome.message, StartsWith("New file Movie.m4v · video: 50 frames identical"));
    EXPECT_THAT(film.labels,
                ElementsAre("Preparing the tracks", "Preparing subtitles", "Building the new file",
                            "Writing details", "Verifying", "Saving the new file", "Done"));
    EXPECT_THAT(film.delivered(), ElementsAre("Movie.m4v"));
    EXPECT_TRUE(film.isUntouched());
    EXPECT_EQ(IlstEditor::currentIlst(made), film.request.atoms);
    EXPECT_LE(measureInterleave(made), 1.0);
}

TEST(Converter, ANameThatIsTakenGetsANumber) {
    FilmConversion film;
    film.useOwnTools();
    writeFile(film.output() / "Movie.m4v", bytesOf("mine"));
    EXPECT_EQ(film.run().output, film.output() / "Movie 2.m4v");
    EXPECT_EQ(readFile(film.output() / "Movie.m4v"), bytesOf("mine"));
}

TEST(Converter, AnOutputFolderThatIsMissingIsMade) {
    FilmConversion film;
    film.useOwnTools();
    film.request.outputDir = film.output() / "new" / "films";
    EXPECT_EQ(film.run().output, film.output() / "new" / "films" / "Movie.m4v");
}

TEST(Converter, AnOutputFolderThatCannotBeMadeIsTold) {
    FilmConversion film;
    film.useOwnTools();
    writeFile(film.beside("file"), bytesOf("x"));
    film.request.outputDir = film.beside("file") / "films";
    EXPECT_THAT(film.run().message, StartsWith("cannot create the output folder: "));
    EXPECT_TRUE(film.isUntouched());
}

TEST(Converter, ASourceOfAnyNameConverts) {
    for (const char* name :
         {"A: b #2 \"c\".mkv", "-x:name=Y+Z.mkv", "Ä 😀.mkv", "two\nlines.mkv", "#1.mkv"}) {
        FilmConversion film(name);
        film.useOwnTools();
        const WriteOutcome outcome = film.run();
        EXPECT_EQ(outcome.status, Status::done) << outcome.message;
        EXPECT_EQ(film.delivered().size(), 1u);
    }
}

TEST(Converter, OnlyTheLinkIsNamedToTheToolAndNamesAreCleaned) {
    FilmConversion film("A: b.mkv");
    film.useTool("exit 1");
    film.plan().audio[0].name = "Director: \"one\" + two";
    film.plan().subs[0].name = "Signs: all";
    const std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("/source.mkv#1:name=Video\n"));
    EXPECT_THAT(arguments,
                HasSubstr("/source.mkv#2:lang=eng:name=Director - one ＋ two:group=1\n"));
    EXPECT_THAT(arguments, HasSubstr("/s1.srt:lang=eng:name=Signs - all:hdlr=sbtl"));
    EXPECT_THAT(arguments, Not(HasSubstr("A: b")));
    EXPECT_THAT(arguments, HasSubstr("-chap\n"));
    EXPECT_LT(arguments.find("-chap\n"), arguments.find("-inter\n"));
    EXPECT_THAT(arguments, EndsWith("/built.mp4\n"));
}

TEST(Converter, WithoutASubtitleThereIsNoGroupOfThem) {
    FilmConversion film;
    film.useTool("exit 1");
    film.plan().subs.clear();
    EXPECT_THAT(film.arguments(), Not(HasSubstr(":group=2")));
}

TEST(Converter, TheFirstForcedSubtitleShowsAndWithoutOneNone) {
    FilmConversion film;
    film.useTool("exit 1");
    std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("hdlr=sbtl:group=2:disable\n"));
    EXPECT_THAT(arguments, HasSubstr("hdlr=sbtl:txtflags=0x40000000:group=2\n"));
    film.plan().subs.push_back(film.plan().subs[1]);
    EXPECT_THAT(film.arguments(), HasSubstr("txtflags=0x40000000:group=2:disable\n"));
    film.plan().subs.resize(1);
    arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("group=2:disable\n"));
    EXPECT_THAT(arguments, Not(HasSubstr("group=2\n")));
}

TEST(Converter, TheFirstSoundMarkedDefaultPlaysAndWithoutAMarkTheFirst) {
    FilmConversion film;
    film.useTool("exit 1");
    film.plan().audio[0].name = "English";
    film.plan().audio.push_back(film.plan().audio[0]);
    film.plan().audio[1].track = 3;
    film.plan().audio[0].isDefault = false;
    film.plan().audio[1].isDefault = true;
    std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("#2:lang=eng:name=English:group=1:disable\n"));
    EXPECT_THAT(arguments, HasSubstr("#3:lang=eng:name=English:group=1\n"));
    film.plan().audio[1].isDefault = false;
    arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("#2:lang=eng:name=English:group=1\n"));
    EXPECT_THAT(arguments, HasSubstr("#3:lang=eng:name=English:group=1:disable\n"));
}

TEST(Converter, AFirstBuildOverTheLimitIsBuiltAgainInFinerSlices) {
    FilmConversion film;
    keepPictureAndSound(film);
    film.toolMakes({{500, builtFilm(1300)}, {0, builtFilm(800)}});
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(outcome.changes,
                testing::Contains("sound interleaved in 250 ms slices to stay under the limit"));
    EXPECT_THAT(film.labels, testing::Contains("Building again with finer sound slices (250 ms)"));
}

TEST(Converter, ThreeBuildsOverTheLimitAreGivenUp) {
    FilmConversion film;
    keepPictureAndSound(film);
    const Bytes built = builtFilm(1300);
    const std::string layout = [&] {
        const TempFolder folder;
        return ConvertWording::notFixable(measureInterleave(folder.write("b.mp4", built)));
    }();
    film.toolMakes({{0, built}});
    expectFailure(film, layout);
    EXPECT_THAT(layout, HasSubstr("the longest stretch with sound stored together is still 1."));
    EXPECT_THAT(layout, EndsWith(" s (the limit is 1.0 s). The original was not touched."));
    EXPECT_THAT(film.labels, testing::Contains("Building again with finer sound slices (100 ms)"));
}

TEST(Converter, WithoutTheToolItSaysSo) {
    FilmConversion film;
    expectFailure(film, "the media tool (MP4Box) is missing from this copy of Marlet");
}

TEST(Converter, NothingGoesIntoALockedMediaLibrary) {
    FilmConversion film;
    film.useOwnTools();
    film.request.outputDir = film.output() / "Media Library";
    expectFailure(film,
                  "This file is in your Media Library and “Allow changes to my Media Library” is "
                  "off in Settings");
}

TEST(Converter, WhatIsNoMatroskaFileFails) {
    FilmConversion film("Movie.mkv", bytesOf("not much of a film"));
    film.useOwnTools();
    expectFailure(film, "this file isn't a Matroska file Marlet can read yet");
}

TEST(Converter, WithoutAPlanItFails) {
    FilmConversion film;
    film.useOwnTools();
    film.request.plan.reset();
    expectFailure(film, "no plan for this file");
}

TEST(Converter, AFullWorkDiskIsToldWithTheNeed) {
    FilmConversion film;
    film.useOwnTools();
    film.plan().duration.reset();
    const Sys::Fault full(Sys::Call::Space, EIO, 1, true);
    expectFailure(film,
                  "Not enough free space on the internal disk for the temporary files (need about "
                  "5.53 GB).");
}

TEST(Converter, AFullOutputFolderIsTold) {
    FilmConversion film;
    film.useOwnTools();
    const Sys::Fault full(Sys::Call::Space, EIO, 2);
    expectFailure(film, "Not enough free space in the output folder.");
}

TEST(Converter, TheToolMustNumberTheTracksAsMatroskaDoes) {
    FilmConversion film;
    film.listing = "\\033[37m- Track 1 type: Audio - Codec x\\033[0m\\n";
    film.useTool("exit 1");
    expectFailure(film, "track 1 is not the kind of track Marlet expected (Audio)");
    film.listing = "- Track 1 type: Video\\n- Track 2 \\033[32mtype: Text\\033[0m\\n";
    film.useTool("exit 1");
    expectFailure(film, "track 2 is not the kind of track Marlet expected (Text)");
}

TEST(Converter, ATrackThatTheToolDoesNotListIsNoFault) {
    FilmConversion film;
    film.listing = "- Track 7 type: Text\\n";
    film.useTool("echo oh no; exit 3");
    expectFailure(film, "MP4Box failed (exit 3): oh no");
}

TEST(Converter, AToolThatMakesNothingOrALinkFails) {
    FilmConversion film;
    film.useTool("exit 0");
    expectFailure(film, "MP4Box produced no output");
    film.useTool(": > \"$out\"");
    expectFailure(film, "MP4Box produced no output");
    film.useTool("mkdir \"$out\"");
    expectFailure(film, "MP4Box produced no output");
    film.useTool("ln -s '" + film.request.source.string() + "' \"$out\"; exit 0");
    expectFailure(film, "MP4Box produced no output");
}

TEST(Converter, AToolCannotWriteTheOriginalOrBesideIt) {
    FilmConversion film;
    film.useTool(
        "for each; do case $each in *source.mkv*) link=${each%%#*};; esac; done\n"
        "echo x >> \"$link\"; echo x > '" +
        film.beside("new").string() + "'\nexit 5");
    EXPECT_THAT(film.run().message, StartsWith("MP4Box failed (exit 5): "));
    EXPECT_TRUE(film.isUntouched());
    EXPECT_FALSE(fs::exists(film.beside("new")));
}

TEST(Converter, AToolThatCannotBeStartedFailsInTheSystemsWords) {
    FilmConversion film;
    film.useTool("");
    film.at("Preparing subtitles", [&] { fs::remove(MP4BoxLocator::helpersDir() / "MP4Box"); });
    expectFailure(film, "No such file or directory");
}

TEST(Converter, DetailsThatDoNotComeBackAsTheyWereAreNotSaved) {
    FilmConversion film;
    film.useOwnTools();
    film.request.atoms[0].name = "©xyz";  // its bytes say ©nam
    expectFailure(film, "the details were not written exactly; nothing was saved");
}

TEST(Converter, AFilmThatIsNotTheSourceIsNotSaved) {
    FilmConversion film;
    keepPictureAndSound(film);
    Bytes built = builtFilm(500);
    built[built.size() / 2] ^= 0xFF;
    film.toolMakes({{0, built}});
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, StartsWith("verification failed: "));
    EXPECT_THAT(outcome.message, HasSubstr("frames differ from the original"));
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

TEST(Converter, AFileThatGrewItsSlicesMeanwhileIsNotSaved) {
    FilmConversion film;
    keepPictureAndSound(film);
    film.useOwnTools();
    const Bytes other = builtFilm(1300);
    film.at("Verifying", [&] { writeFile(film.workFolder() / "built.mp4", other); });
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, StartsWith("the new file measures 1."));
    EXPECT_THAT(outcome.message, EndsWith(" s (limit 1.0 s); nothing was saved"));
    EXPECT_THAT(film.delivered(), IsEmpty());
}

TEST(Converter, ASourceThatIsTouchedMeanwhileIsNotDelivered) {
    FilmConversion film;
    film.useOwnTools();
    touchSourceAt(film, "Verifying");
    expectChangedMeanwhile(film);
}

TEST(Converter, ACancelAtAnyStageLeavesNothing) {
    for (const char* stage : {"Preparing the tracks", "Preparing subtitles",
                              "Building the new file", "Writing details", "Verifying"}) {
        SCOPED_TRACE(stage);
        FilmConversion film;
        film.useOwnTools();
        film.at(stage, [&] { film.control.cancel(); });
        expectCancelled(film, film.run());
    }
}

TEST(Converter, ACancelEndsTheToolAtWork) {
    FilmConversion film;
    film.useTool("echo '(50/100)'; sleep 60");
    film.at(
        "Building the new file", [&] { film.control.cancel(); }, 0.41);
    expectCancelled(film, film.run());
}

TEST(Converter, TheWorkFolderStaysWhenItIsAskedFor) {
    FilmConversion film;
    film.useOwnTools();
    const ScopedEnv keep("MARLET_KEEP_WORK", "0");
    EXPECT_EQ(film.run().status, Status::done);
    ASSERT_TRUE(film.hasWorkFolders());
    EXPECT_TRUE(fs::exists(film.workFolder() / "built.mp4"));
    EXPECT_TRUE(fs::is_symlink(film.workFolder() / "source.mkv"));
}

TEST(Converter, ATruncatedSourceGivesAProvedFileOrASentence) {
    for (const double part : {0.3, 0.6, 0.95}) {
        Bytes film = plainFilm();
        film.resize(static_cast<std::size_t>(static_cast<double>(film.size()) * part));
        FilmConversion cut("Movie.mkv", film);
        cut.useOwnTools();
        const WriteOutcome outcome = cut.run();
        EXPECT_TRUE(outcome.status == Status::done || !outcome.message.empty());
        EXPECT_EQ(cut.delivered().size(), outcome.status == Status::done ? 1u : 0u);
        EXPECT_TRUE(cut.isUntouched());
    }
}

/// A picture and a sound track in a made-up file, and what stands in its cluster.
Bytes hostile(std::initializer_list<Bytes> blocks, std::initializer_list<Bytes> more = {}) {
    Bytes body = mkv::info();
    Bytes entries = mkv::entry(1, 1, "V_MPEG4/ISO/AVC");
    append(entries, mkv::entry(2, 2, "A_AAC"));
    for (const Bytes& each : more) append(entries, each);
    append(body, mkv::tracks({entries}));
    append(body, mkv::cluster(0, blocks));
    Bytes file = mkv::header();
    append(file, mkv::segment({body}));
    return file;
}

TEST(Converter, HostileFilesEndInASentence) {
    const Bytes frame(40, 0x21);
    Bytes tracks;
    for (std::uint64_t i = 3; i < 1003; i++) append(tracks, mkv::entry(i, 2, "A_AC3"));
    const Bytes picture = mkv::simpleBlock(1, 0, frame);
    const std::vector<Bytes> films = {
        hostile({}),                                                  // no frames at all
        hostile({picture, mkv::simpleBlock(2, 0, frame)}),            // no configuration
        hostile({picture, mkv::simpleBlock(2, -500, frame)}),         // before the start
        hostile({picture, mkv::simpleBlock(2, 0, frame)}, {tracks}),  // a thousand tracks
        hostile({picture, mkv::simpleBlock(2, 0, Bytes{0xFF, 0xFF},
                                           mkv::keyframe | static_cast<std::uint8_t>(
                                                               mkv::Lace::Xiph))}),  // broken lace
    };
    for (const Bytes& bytes : films) {
        FilmConversion film("Movie.mkv", bytes);
        film.useOwnTools();
        if (!film.request.plan) film.request.plan = ConvertPlanSnapshot{.video = 1};
        const WriteOutcome outcome = film.run();
        EXPECT_EQ(outcome.status, Status::failed);
        EXPECT_FALSE(outcome.message.empty());
        EXPECT_THAT(film.delivered(), IsEmpty());
        EXPECT_TRUE(film.isUntouched());
    }
}

TEST(ConvertWording, AMixIsLoweredByItsGainInDecibels) {
    EXPECT_EQ(ConvertWording::mixLowered(0.5), "stereo mix lowered by 6.0 dB to avoid clipping");
    EXPECT_EQ(ConvertWording::mixLowered(0), "stereo mix lowered by 80.0 dB to avoid clipping");
}

}  // namespace
}  // namespace marlet::test
