// What scripts rely on: modes that end by themselves, lines, JSON and the exit status.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "foundation/text.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Arguments = std::vector<std::string>;

class ScriptedRun : public testing::Test {
protected:
    /// A two-second film: its length can't be the true one, so it asks for a look.
    std::string film(const std::string& name, RealMovie movie = {}) {
        const fs::path file = run_.library() / name;
        fs::create_directories(file.parent_path());
        makeMovie(file, movie);
        return file.string();
    }
    ProgramRun::Result marlet(const Arguments& arguments) { return run_.marlet(arguments); }
    int strictly(Arguments arguments) {
        arguments.insert(arguments.end(), {"--strict-exit", "--quit"});
        return marlet(arguments).status;
    }
    /// The lines of a run with "--json"; each must be an object.
    std::vector<json> objects(Arguments arguments) {
        arguments.insert(arguments.end(), {"--json", "--quit"});
        std::vector<json> all;
        for (const std::string& line : Text::words(marlet(arguments).output, '\n')) {
            all.push_back(json::parse(line));
            EXPECT_TRUE(all.back().at("event").is_string()) << line;
        }
        return all;
    }
    static fs::path home() { return fs::path(std::getenv("HOME")); }
    ProgramRun run_;
};

TEST_F(ScriptedRun, HelpAndVersionEndWithZeroAndCreateNothing) {
    const auto help = marlet({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: marlet"));
    const auto version = marlet({"--scan", run_.library(), "--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, StartsWith("marlet "));
    EXPECT_EQ(help.errors + version.errors, "");
    for (const char* place : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        EXPECT_FALSE(fs::exists(fs::path(std::getenv(place)) / "Marlet")) << place;
}

TEST_F(ScriptedRun, HelpThatCannotBeWrittenIsAnError) {
    const auto bash = std::make_unique<Process>(
        "/bin/bash", Arguments{"-c", builtProgram("marlet").string() + " --help >/dev/full"});
    EXPECT_EQ(bash->wait(), 1);
}

TEST_F(ScriptedRun, TheFirstModeInTheirOrderRunsAndTheOthersDoNot) {
    const std::string file = film("Charade (1963).mp4");
    const fs::path report = run_.library() / "r.tsv";
    Arguments all = {"--restore-last-batch",
                     "--playable=" + file,
                     "--audio-test=" + file,
                     "--mkv-in=" + file,
                     "--test-key",
                     "--virtual=none.map",
                     "--tag=" + file,
                     "--scan=" + file,
                     "--report=" + report.string(),
                     "--match-only",
                     "--quit"};
    const Arguments starts = {
        "no run in History\n", "playable true",    "failed: ",         "not readable\n",
        "Key works.\n",        "can't read map\n", "matched: Charade", "verdict\tfile\t"};
    for (const std::string& start : starts) {
        const auto result = marlet(all);
        EXPECT_EQ(result.status, 0);
        const bool isScan = all.front().starts_with("--scan");
        EXPECT_EQ(fs::exists(report), isScan) << start;
        const std::string text = isScan ? textOf(readFile(report)) : result.output;
        EXPECT_THAT(text, StartsWith(start));
        for (const std::string& other : starts) EXPECT_EQ(contains(text, other), other == start);
        all.erase(all.begin());
    }
}

TEST_F(ScriptedRun, ADiagnosisEndsTheProgramWithoutBeingToldTo) {
    const std::string file = film("x.mp4");
    for (const char* option : {"--playable", "--audio-test", "--mkv-in", "--virtual"})
        EXPECT_EQ(marlet({option, file}).status, 0) << option;
    EXPECT_EQ(marlet({"--test-key"}).status, 0);
}

TEST_F(ScriptedRun, TheKeyIsTriedWithOneSearch) {
    EXPECT_EQ(marlet({"--test-key"}).output, "Key works.\n");
    EXPECT_EQ(run_.catalogue().requestCount("."), 1);
    EXPECT_EQ(run_.catalogue().targetCount("search/movie.*query=Alien"), 1);
    run_.catalogue().fault(R"({"times":0,"status":401})");
    fs::remove_all(fs::path(std::getenv("XDG_CACHE_HOME")));
    EXPECT_EQ(marlet({"--test-key"}).output, "TMDB rejected the key.\n");
    run_.environment["MARLET_TMDB_TOKEN"] = "";
    EXPECT_EQ(marlet({"--test-key"}).output, "No key yet.\n");
}

TEST_F(ScriptedRun, WithIgnoreTagsTheReportIsScoredPrintedAndWritten) {
    film("Movies/Charade (1963).mp4", {.tags = {{"title", "Sintel"}}});
    const std::string report = run_.library() / "scored.txt";
    const auto result =
        marlet({"--scan", run_.library(), "--ignore-tags", "--report", report, "--quit"});
    EXPECT_EQ(result.output,
              "TOTAL 1\nRIGHT_BUT_ASKED 1\n\nRIGHT_BUT_ASKED\tMovies/Charade (1963).mp4\t"
              "truth: Charade (1963)\tgot: Charade (1963) id196301\t0\t"
              "Length differs: file 0 min, database 113 min\n");
    EXPECT_EQ(textOf(readFile(report)) + "\n", result.output);
    EXPECT_EQ(marlet({"--scan", run_.library(), "--ignore-tags", "--quit"}).output, "");
    EXPECT_EQ(
        marlet({"--scan", run_.library(), "--ignore-tags=1", "--report", report, "--quit"}).output,
        result.output)
        << "a flag is there with a value, too, and the tags are ignored";
}

TEST_F(ScriptedRun, AReportThatCannotBeWrittenIsNotReportedAtAll) {
    film("Charade (1963).mp4");
    const auto result =
        marlet({"--scan", run_.library(), "--report", run_.library() / "no/r.tsv", "--quit"});
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(ScriptedRun, HistoryIsWrittenAsATableAloneAndAfterAWrite) {
    const std::string csv = run_.library() / "history.csv";
    EXPECT_EQ(marlet({"--history-csv", csv}).status, 0);
    EXPECT_EQ(Text::split(textOf(readFile(csv)), '\n').size(), 2u);
    marlet({"--tag", film("Charade (1963).mp4"), "--confirm-all", "--history-csv", csv, "--quit"});
    EXPECT_THAT(textOf(readFile(csv)), HasSubstr("\"Charade\",\"\",,,done,"));
    const auto failed = marlet({"--history-csv", run_.library() / "no/h.csv"});
    EXPECT_EQ(failed.errors,
              "marlet: can't write " + (run_.library() / "no/h.csv").string() + "\n");
    EXPECT_EQ(failed.status, 0);
}

TEST_F(ScriptedRun, WithoutStrictExitTheStatusIsZeroWhateverHappened) {
    const std::string file = film("Media Library/Charade (1963).mp4");
    EXPECT_EQ(marlet({"--tag", file, "--confirm-all", "--quit"}).lines("RESULT failed").size(), 1u);
    EXPECT_EQ(marlet({"--tag", file, "--confirm-all", "--quit"}).status, 0);
    EXPECT_EQ(marlet({"--scan", run_.library() / "none", "--quit"}).status, 0);
}

TEST_F(ScriptedRun, TheStrictStatusOfAScanTellsOfLooksMissingPathsAndUnwrittenReports) {
    EXPECT_EQ(strictly({"--scan", run_.library()}), 0) << "nothing there, nothing to look at";
    film("Charade (1963).mp4");
    EXPECT_EQ(strictly({"--scan", run_.library()}), 1);
    EXPECT_EQ(strictly({"--scan", run_.library(), "--scan", run_.library() / "none"}), 2);
    EXPECT_EQ(strictly({"--scan", run_.library(), "--report", run_.library() / "no/r.tsv"}), 2);
}

TEST_F(ScriptedRun, TheStrictStatusOfAWriteTellsOfLooksFailuresAndBadOptions) {
    const std::string file = film("Charade (1963).mp4");
    EXPECT_EQ(strictly({"--tag", file, "--match-only"}), 1);
    EXPECT_EQ(strictly({"--tag", file, "--match-only", "--confirm-all"}), 0);
    EXPECT_EQ(strictly({"--tag", file}), 1);
    EXPECT_EQ(strictly({"--tag", file, "--confirm-all"}), 0);
    EXPECT_EQ(strictly({"--restore-last-batch"}), 0);
    EXPECT_EQ(strictly({"--tag", file, "--confirm-all", "--drop=Charade:9"}), 2);
    EXPECT_EQ(strictly({"--tag", file, "--tag", file + ".none.mp4", "--confirm-all"}), 2);
    EXPECT_EQ(strictly({"--tag", film("Media Library/Sintel (2010).mp4"), "--confirm-all"}), 2);
    EXPECT_EQ(strictly({"--tag", film("qqqq zzzz.mp4"), "--confirm-all"}), 1)
        << "without a match a yes is not enough";
}

TEST_F(ScriptedRun, TheStrictStatusOfTheOtherModesTellsOfTheirFailures) {
    const std::string file = film("x.mkv");
    EXPECT_EQ(strictly({"--restore-last-batch"}), 2);
    EXPECT_EQ(strictly({"--playable", file}), 0);
    EXPECT_EQ(strictly({"--playable", file + ".none"}), 2);
    EXPECT_EQ(strictly({"--mkv-in", file}), 0);
    EXPECT_EQ(strictly({"--mkv-in", file + ".none"}), 2);
    EXPECT_EQ(strictly({"--audio-test", file}), 2);
    EXPECT_EQ(strictly({"--virtual", file}), 2);
    EXPECT_EQ(strictly({"--test-key"}), 0);
    EXPECT_EQ(strictly({"--history-csv", run_.library() / "no/h.csv"}), 2);
}

TEST_F(ScriptedRun, ARunThatWasEndedBeforeItWasDoneIsNoSuccess) {
    run_.catalogue().fault(R"({"times":0,"delayMs":20000})");
    const auto process = run_.start(
        "marlet", {"--scan", film("Charade (1963).mp4"), "--strict-exit", "--trace", "--quit"});
    while (!contains(process->errors(), "adding")) ASSERT_FALSE(process->hasEnded());
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait(), 2);
}

TEST_F(ScriptedRun, AScanInJsonTellsTheFactsOfTheReport) {
    film("Charade (1963).mp4");
    film("The Tin Observatory/Season 1/01 First Light.mp4");
    const auto lines = objects({"--scan", run_.library()});
    ASSERT_EQ(lines.size(), 2u);
    const json& episode = lines[0];
    EXPECT_EQ(episode["event"], "file");
    EXPECT_EQ(episode["verdict"], "LOOK");
    EXPECT_EQ(episode["guess"]["episodeTitle"], "First Light");
    EXPECT_EQ(episode["guess"]["origin"], "rules");
    EXPECT_EQ(episode["match"]["kind"], "tv");
    EXPECT_EQ(episode["match"]["season"], 1);
    EXPECT_EQ(episode["match"]["minutes"], 22);
    EXPECT_EQ(lines[1]["file"], (run_.library() / "Charade (1963).mp4").string());
    EXPECT_EQ(lines[1]["match"]["title"], "Charade");
    EXPECT_EQ(lines[1]["match"]["year"], 1963);
    EXPECT_EQ(lines[1]["match"]["source"], "TMDB");
    EXPECT_TRUE(lines[1]["match"]["season"].is_null());
    EXPECT_THAT(lines[1]["reasons"], ElementsAre("Length differs: file 0 min, database 113 min"));
}

TEST_F(ScriptedRun, AWriteInJsonTellsTheFactsOfItsLines) {
    const std::string file = film("Charade (1963).mp4");
    const auto lines = objects({"--tag", file, "--tag", film("qqqq zzzz.mp4"), "--confirm=Charade",
                                "--art-report", "--restore-original", "--roundtrip"});
    std::vector<std::string> events;
    for (const json& each : lines) events.push_back(each["event"]);
    EXPECT_THAT(events, ElementsAre("art", "art", "matched", "matched", "notice", "result",
                                    "result", "result", "addedAgain", "addedOnceMore"));
    EXPECT_TRUE(lines[1]["grid"].is_null());
    EXPECT_TRUE(lines[3]["match"].is_null());
    EXPECT_THAT(lines[4]["text"], HasSubstr("1 file still need a look"));
    EXPECT_EQ(lines[5]["state"], "done");
    EXPECT_EQ(lines[5]["label"], "Charade");
    EXPECT_EQ(lines[5]["file"], file);
    EXPECT_EQ(lines[5]["message"], "Details written");
    EXPECT_TRUE(lines[5]["layoutBefore"].is_number());
    EXPECT_FALSE(lines[5]["changes"].empty());
    EXPECT_EQ(lines[5]["output"], file) << "written in place";
    EXPECT_EQ(lines[9]["review"], 2);
}

TEST_F(ScriptedRun, ARestoreInJsonTellsItsJobsOrTheProblem) {
    EXPECT_EQ(objects({"--restore-last-batch"}),
              (std::vector<json>{{{"event", "problem"}, {"text", "no run in History"}}}));
    marlet({"--tag", film("Charade (1963).mp4"), "--confirm-all", "--quit"});
    const auto lines = objects({"--restore-last-batch"});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]["event"], "restored");
    EXPECT_EQ(lines[0]["message"], "Original details restored");
}

TEST_F(ScriptedRun, ARunWhoseFilesAreGoneLeavesNothingToRestoreWhichIsToldInWordsAndInJson) {
    const std::string file = film("Charade (1963).mp4");
    ASSERT_EQ(strictly({"--tag", file, "--confirm-all"}), 0);
    fs::remove(file);
    const std::string text = "Nothing to restore: no saved originals for those files.";
    const auto words = marlet({"--restore-last-batch"});
    EXPECT_EQ(words.output, "NOTICE " + text + "\n");
    EXPECT_EQ(words.status, 0);
    EXPECT_EQ(objects({"--restore-last-batch"}),
              (std::vector<json>{{{"event", "notice"}, {"text", text}}}));
    EXPECT_EQ(strictly({"--restore-last-batch"}), 2);
}

TEST_F(ScriptedRun, ANameThatIsNotUtf8IsStillALineOfJson) {
    fs::rename(film("x.mp4"), run_.library() / "Charade \xff\n (1963).mp4");
    const auto lines = objects({"--scan", run_.library()});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0]["file"].get<std::string>(), HasSubstr("Charade \xef\xbf\xbd\n (1963)"));
}

TEST_F(ScriptedRun, PlansInJsonTellWhetherTheyArePossible) {
    const auto lines = objects({"--tag", film("Charade (1963).mkv"), "--plan-test", "--plan-only"});
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["which"], "first");
    EXPECT_EQ(lines[1]["which"], "final");
    EXPECT_EQ(lines[1]["fraction"], 1);
    EXPECT_EQ(lines[2]["event"], "plan");
    EXPECT_EQ(lines[2]["possible"], true);
}

}  // namespace
}  // namespace marlet::test
