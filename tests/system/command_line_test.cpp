// The real program on real files and a real service on loopback.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "support/bad_films.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class CommandLine : public testing::Test {
protected:
    /// A two-second film: its length can't be the true one, so it asks for a look.
    fs::path film(const std::string& name, RealMovie movie = {}) {
        const fs::path file = run_.library() / name;
        fs::create_directories(file.parent_path());
        makeMovie(file, movie);
        return file;
    }
    ProgramRun::Result tag(const fs::path& file, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments = {"--tag", file.string(), "--quit"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_.marlet(arguments);
    }
    /// Tags a file that must come out unchanged, and gives what was printed.
    ProgramRun::Result tagUntouched(const fs::path& file) {
        const Bytes before = readFile(file);
        const ProgramRun::Result result = tag(file);
        EXPECT_EQ(readFile(file), before) << "the file was changed";
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(result.lines("RESULT").empty()) << result.output;
        return result;
    }
    ProgramRun run_;
};

TEST_F(CommandLine, AScanReportsFileGuessDatabaseAndMinutes) {
    film("Charade (1963).mp4");
    film("notes.mkv", {.seconds = 1});
    const auto lines = run_.scan();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "LOOK\tCharade (1963).mp4\tCharade [rules]\tCharade (1963)\t\t\t0\t113\t"
              "Length differs: file 0 min, database 113 min");
    EXPECT_THAT(lines[1], HasSubstr("LOOK\tnotes.mkv\tnotes [rules]\t"));
}

TEST_F(CommandLine, ANameWithTabsAndLineFeedsStaysOneLineOfNineFields) {
    film("Some\tOdd\nName (1999).mp4");
    const auto lines = run_.scan();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(std::count(lines[0].begin(), lines[0].end(), '\t'), 8);
}

TEST_F(CommandLine, AScanThatFindsNothingSaysSoOnStandardError) {
    const auto result = run_.marlet({"--scan", run_.library() / "not there", "--quit"});
    EXPECT_EQ(result.errors, "No movies or episodes found there.\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(CommandLine, EmptyAndTruncatedAndMadeUpFilesAreReportedAndNothingCrashes) {
    writeFile(run_.library() / "empty.mp4", {});
    writeFile(run_.library() / "noise.m4v",
              viewOf("this is no film at all, whatever its name says"));
    const Bytes whole = readFile(film("Sintel (2010).mp4"));
    writeFile(run_.library() / "cut.mp4", ByteView(whole).first(whole.size() / 3));
    EXPECT_EQ(run_.scan().size(), 4u);
}

TEST_F(CommandLine, AConfirmedFileGetsItsDetailsAndCoverAndKeepsMediaInodeAndAccountTags) {
    const fs::path file = film("Charade (1963).mp4", {.accountTags = true});
    const auto packets = packetHashes(file);
    const auto inode = inodeOf(file);
    const Bytes before = tagBlock(file);

    const auto result = tag(file, {"--confirm=Charade"});

    ASSERT_THAT(result.lines("RESULT"), ElementsAre(HasSubstr("RESULT done: Charade | Details "
                                                              "written | layout before ")));
    // FFmpeg shows the cover as one more track, behind those of the film.
    std::vector<std::string> packetsNow = packetHashes(file);
    packetsNow.resize(packets.size());
    EXPECT_EQ(packetsNow, packets);
    EXPECT_EQ(inodeOf(file), inode);
    EXPECT_EQ(probeValue(file, "format_tags=title"), "Charade");
    EXPECT_EQ(probeValue(file, "format_tags=date"), "1963-12-05T12:00:00Z");
    const std::string read = runTool({"AtomicParsley", file.string(), "-t"});
    EXPECT_THAT(read, HasSubstr("Atom \"©nam\" contains: Charade"));
    EXPECT_THAT(read, HasSubstr("Atom \"covr\" contains: 1 piece of artwork"));
    const std::string seen = runTool({"mediainfo", file.string()});
    EXPECT_THAT(seen, HasSubstr("Charade"));
    EXPECT_THAT(seen, HasSubstr("Cover                                    : Yes"));
    const std::string after = textOf(tagBlock(file));
    for (const Bytes& item : accountItems()) {
        EXPECT_TRUE(contains(textOf(before), textOf(item)));
        EXPECT_TRUE(contains(after, textOf(item)));
    }
}

TEST_F(CommandLine, RestoringTheLastRunGivesEachTagBlockBackByteForByte) {
    const fs::path one = film("Charade (1963).mp4", {.tags = {{"title", "Old one"}}});
    const fs::path two = film("Sintel (2010).m4v", {.indexFirst = true, .padding = 500000});
    const Bytes first = tagBlock(one);
    const Bytes second = tagBlock(two);
    const auto written =
        run_.marlet({"--tag", one.string(), "--tag", two.string(), "--confirm-all", "--quit"});
    ASSERT_EQ(written.lines("RESULT done").size(), 2u) << written.output;
    EXPECT_NE(tagBlock(one), first);

    const auto restored = run_.marlet({"--restore-last-batch"});

    EXPECT_EQ(restored.status, 0);
    EXPECT_THAT(restored.lines("RESTORE"),
                ElementsAre("RESTORE done: Restore original details · Sintel | Original details "
                            "restored",
                            "RESTORE done: Restore original details · Charade | Original details "
                            "restored"));
    EXPECT_EQ(tagBlock(one), first);
    EXPECT_EQ(tagBlock(two), second);
    // The newest entries are restores now: the run before them is taken again.
    EXPECT_EQ(run_.marlet({"--restore-last-batch"}).lines("RESTORE done").size(), 2u);
}

TEST_F(CommandLine, RestoringTakesTheNewestOfSeveralRunsAndLeavesTheFilesOfOlderOnesAlone) {
    const fs::path older = film("Charade (1963).mp4");
    const fs::path newer = film("Sintel (2010).mp4");
    const Bytes original = tagBlock(newer);
    ASSERT_EQ(tag(older, {"--confirm-all"}).lines("RESULT done").size(), 1u);
    ASSERT_EQ(tag(newer, {"--confirm-all"}).lines("RESULT done").size(), 1u);
    const Bytes tagged = readFile(older);
    ASSERT_NE(tagBlock(newer), original);

    const auto restored = run_.marlet({"--restore-last-batch"});

    EXPECT_THAT(restored.lines("RESTORE"),
                ElementsAre("RESTORE done: Restore original details · Sintel | Original details "
                            "restored"));
    EXPECT_EQ(tagBlock(newer), original);
    EXPECT_EQ(readFile(older), tagged);
}

TEST_F(CommandLine, RestoringWithoutAHistorySaysSo) {
    const auto result = run_.marlet({"--restore-last-batch"});
    EXPECT_EQ(result.output, "no run in History\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(CommandLine, AFileThatNeedsALookIsNotWritten) {
    const auto result = tagUntouched(film("Charade (1963).mp4"));
    EXPECT_THAT(result.lines("NOTICE"),
                ElementsAre("NOTICE 1 file still need a look and weren't added."));
    EXPECT_THAT(result.lines("matched: "),
                ElementsAre(HasSubstr("matched: Charade (1963).mp4 -> Charade TMDB LOOK: Length "
                                      "differs: file 0 min, database 113 min layout 0.")));
}

TEST_F(CommandLine, MatchOnlyWritesNothing) {
    const fs::path file = film("Charade (1963).mp4");
    const Bytes before = readFile(file);
    const auto result = tag(file, {"--confirm-all", "--match-only"});
    EXPECT_EQ(result.lines("matched: ").size(), 1u);
    EXPECT_TRUE(result.lines("RESULT").empty());
    EXPECT_EQ(readFile(file), before);
}

TEST_F(CommandLine, TheArtReportTellsTheChosenPictureAndTheGrid) {
    const auto result = tag(film("Charade (1963).mp4"), {"--art-report", "--match-only"});
    ASSERT_EQ(result.lines("ART Charade (1963).mp4 /").size(), 1u) << result.output;
    EXPECT_THAT(result.lines("ART")[0], HasSubstr("; grid order = /"));
    const auto none = tag(film("qqqq zzzz.mp4"), {"--art-report", "--match-only"});
    EXPECT_THAT(none.lines("ART"), ElementsAre("ART qqqq zzzz.mp4: no draft"));
}

TEST_F(CommandLine, WithoutAKeyNothingIsCheckedAndNothingIsWritten) {
    run_.environment.erase("MARLET_TMDB_TOKEN");
    run_.environment["MARLET_TMDB_TOKEN"] = "";
    const fs::path file = film("Charade (1963).mp4");
    EXPECT_THAT(run_.scan()[0], HasSubstr("Not checked against the database (no TMDB key)"));
    EXPECT_THAT(tagUntouched(file).lines("NOTICE"),
                ElementsAre("NOTICE Add your TMDB key in Settings first."));
}

TEST_F(CommandLine, AServiceThatIsDownIsToldAsUnreachable) {
    run_.environment["MARLET_TMDB_API"] = "http://127.0.0.1:9/3";
    const fs::path file = film("Charade (1963).mp4");
    EXPECT_THAT(run_.scan()[0], HasSubstr("\tCouldn't reach the database"));
    tagUntouched(file);
}

class BadService : public CommandLine, public testing::WithParamInterface<const char*> {};

TEST_P(BadService, IsToldAsUnreachableAndNothingIsWritten) {
    run_.catalogue().fault(GetParam());
    const fs::path file = film("Charade (1963).mp4");
    EXPECT_THAT(run_.scan()[0], HasSubstr("\tCouldn't reach the database"));
    tagUntouched(file);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, BadService,
    testing::Values(R"({"times":0,"status":401})", R"({"times":0,"status":500})",
                    R"({"times":0,"answer":"html"})", R"({"times":0,"answer":"half"})",
                    R"({"times":0,"answer":"types"})", R"({"times":0,"cut":"before"})",
                    R"({"times":0,"cut":"middle"})"));

TEST_F(CommandLine, AServiceThatAsksForPatienceOnceIsAskedAgain) {
    run_.catalogue().fault(R"({"times":1,"status":429})");
    film("Charade (1963).mp4");
    EXPECT_THAT(run_.scan()[0], HasSubstr("Charade (1963)\t\t\t0\t113"));
}

TEST_F(CommandLine, ASlowServiceIsWaitedFor) {
    run_.catalogue().fault(R"({"times":2,"delayMs":400})");
    film("Charade (1963).mp4");
    EXPECT_THAT(run_.scan()[0], HasSubstr("Charade (1963)\t\t\t0\t113"));
}

TEST_F(CommandLine, APictureThatIsNoPictureIsLeftOutAndTheDetailsAreStillWritten) {
    run_.catalogue().fault(R"({"path":"^/t/p/","times":0,"answer":"html"})");
    const fs::path file = film("Charade (1963).mp4");
    EXPECT_EQ(tag(file, {"--confirm-all"}).lines("RESULT done").size(), 1u);
    EXPECT_EQ(probeValue(file, "format_tags=title"), "Charade");
    EXPECT_THAT(runTool({"AtomicParsley", file.string(), "-t"}), testing::Not(HasSubstr("covr")));
}

TEST_F(CommandLine, DetailsThatCannotBeLoadedAreNeverWrittenAsEmptyOnes) {
    const fs::path file = film("Charade (1963).mp4");
    run_.scan();
    run_.catalogue().fault(R"({"path":"append_to_response","times":0,"status":500})");
    const Bytes before = readFile(file);
    const auto result = tag(file, {"--confirm-all"});
    EXPECT_THAT(
        result.lines("NOTICE"),
        ElementsAre("NOTICE Not added: Charade (1963).mp4: its details couldn't be loaded"));
    EXPECT_EQ(readFile(file), before);
}

TEST_F(CommandLine, AFileInAMediaLibraryIsRefusedByEveryScriptedRun) {
    const fs::path file = film("Media Library/Charade (1963).mp4");
    const Bytes before = readFile(file);
    EXPECT_THAT(tag(file, {"--confirm-all"}).lines("RESULT"),
                ElementsAre(HasSubstr("RESULT failed: Charade | This file is in your Media Library "
                                      "and “Allow changes to my Media Library” is off in "
                                      "Settings | layout before -")));
    EXPECT_EQ(readFile(file), before);
}

TEST_F(CommandLine, RestoreOriginalPutsTheDetailsBackInTheSameRun) {
    const fs::path file = film("Charade (1963).mp4");
    const Bytes before = tagBlock(file);
    const auto result = tag(file, {"--confirm-all", "--restore-original"});
    ASSERT_EQ(result.lines("RESULT done").size(), 2u) << result.output;
    EXPECT_THAT(result.lines("RESULT done")[1], HasSubstr("Original details restored"));
    EXPECT_EQ(tagBlock(file), before);
}

TEST_F(CommandLine, AfterAWriteTheSameFilesCanBeAddedAgainAndTheSecondTimeAreInReview) {
    const auto result = tag(film("Charade (1963).mp4"), {"--confirm-all", "--roundtrip"});
    EXPECT_EQ(result.lines("AFTER").size(), 2u) << result.output;
    EXPECT_EQ(result.lines("AFTER")[0], "AFTER ADD: review 1");
    EXPECT_EQ(result.lines("AFTER")[1], "AFTER ADD AGAIN: review 1 file(s), queue waiting 0");
}

TEST_F(CommandLine, ATagAndAScanInOneCommandOnlyTag) {
    const fs::path file = film("Charade (1963).mp4");
    const fs::path report = run_.library() / "r.tsv";
    const auto result =
        tag(file, {"--match-only", "--scan", run_.library().string(), "--report", report.string()});
    EXPECT_EQ(result.lines("matched: ").size(), 1u);
    EXPECT_FALSE(fs::exists(report));
}

TEST_F(CommandLine, AnMkvThatCanNotBeConvertedIsRefusedInWordsAndStaysAsItIs) {
    const fs::path file = run_.library() / "Charade (1963).mkv";
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=64x36:rate=25:duration=1", "-c:v", "mpeg2video",
            file.string()});
    const Bytes before = readFile(file);
    EXPECT_THAT(tag(file, {"--confirm-all"}).lines("NOTICE"),
                ElementsAre("NOTICE Not added: Charade (1963).mkv: MPEG-2 video: not an Apple TV "
                            "format, and Marlet never re-encodes video"));
    EXPECT_EQ(readFile(file), before);
}

TEST_F(CommandLine, NoFixIsStoredSoThatALaterRunLaysNothingOutAnewAndPutsAnUnfitFileBack) {
    const Bundle bundle{Bundle::Tools::own};
    run_.programs = bundle.program("marlet").parent_path();
    const fs::path fixed = run_.library() / "Charade (1963).mp4";
    const fs::path left = run_.library() / "Sintel (2010).mp4";
    makeBadFilm(badFilms().front(), fixed);
    fs::copy_file(fixed, left);
    const auto before = tag(fixed, {"--confirm-all"});
    ASSERT_EQ(before.lines("RESULT done: Charade | Details written; sound layout fixed (").size(),
              1u)
        << before.output;
    const Bytes bytes = readFile(left);

    run_.marlet({"--no-fix", "--restore-last-batch"});
    const auto after = tag(left, {"--confirm-all"});
    EXPECT_THAT(after.lines("RESULT"),
                ElementsAre(HasSubstr("RESULT failed: Sintel | after writing, the sound layout "
                                      "measured 10.0 s; the original was put back | ")));
    EXPECT_EQ(readFile(left), bytes);
}

TEST_F(CommandLine, OutputDirSwitchesAppleTVOffForLaterRunsAsWell) {
    film("Charade (1963).mp4");
    const auto asked = [&](const std::string& service) {
        // What was answered is kept, and not asked for again.
        fs::remove_all(fs::path(std::getenv("XDG_CACHE_HOME")));
        run_.catalogue().resetStats();
        run_.marlet({"--scan", run_.library(), "--apple-tv", "--quit"});
        return run_.catalogue().log(service).size();
    };
    ASSERT_GT(asked("/uts/"), 0u);
    run_.marlet({"--output-dir", run_.library(), "--restore-last-batch"});
    EXPECT_EQ(asked("/uts/"), 0u);
    EXPECT_GT(asked("/3/"), 0u);
}

TEST_F(CommandLine, ProgressIsTracedOnStandardErrorWhenAskedFor) {
    film("Charade (1963).mp4");
    const auto result = run_.marlet({"--scan", run_.library().string(), "--trace", "--quit"});
    EXPECT_EQ(result.errors,
              "headless: entered\nheadless: adding 1 roots\nheadless: scan done, 1 items\n");
}

TEST_F(CommandLine, AScanWithoutAPathDoesNothingAndASignalEndsTheProgram) {
    film("Charade (1963).mp4");
    const auto process = run_.start("marlet", {"--trace", "--scan"});
    while (!contains(process->errors(), "entered")) ASSERT_FALSE(process->hasEnded());
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait(), 0);
    EXPECT_EQ(process->errors(), "headless: entered\n");
    EXPECT_EQ(run_.catalogue().requestCount("."), 0);
}

}  // namespace
}  // namespace marlet::test
