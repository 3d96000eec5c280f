#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "foundation/paths.h"
#include "support/box_builder.h"
#include "system/crash_run.h"
#include "write/ilst_editor.h"
#include "write/restore_points.h"

// The program is killed before every single call that changes something on disk, and in the middle
// of every write. After the next start the film holds one of its two whole states, nothing is left
// behind, and the same write then goes well.
namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* finished =
    "NOTICE A previous write to Film.mp4 was interrupted. It has been finished and checked byte "
    "for byte.\n";
constexpr int mostCalls = 1000;

Movie film() {
    Movie movie;
    movie.tracks = {evenTrack("vide", 20, 60, 100), evenTrack("soun", 20, 20, 100)};
    movie.tags = {textItem("©nam", "Old"), tagItem("apID", 1, viewOf("buyer@example.org"))};
    movie.padding = 4000;
    return movie;
}
Movie growingFilm() {
    Movie movie = film();
    movie.index = Movie::Index::Last;
    movie.padding = 0;
    return movie;
}
Movie filmOverTheLimit() {
    Movie movie = film();
    for (MovieTrack& track : movie.tracks) track.samplesPerChunk = 20;
    return movie;
}

constexpr const char* details =
    R"({"details":{"kind":"movie","title":"A much longer title than before","genre":"Drama"}})";
constexpr const char* detailsWithoutFix =
    R"({"fixLayout":false,"details":{"kind":"movie","title":"A much longer title than before"}})";
constexpr const char* restoring = R"({"mode":"restoreOriginal"})";

class CrashTest : public testing::Test {
protected:
    void begin(const Movie& movie, const char* request) {
        run_ = std::make_unique<CrashRun>(buildMovie(movie));
        run_->setRequest(request);
        before_ = run_->now();
    }
    /// Learns what a run that goes well makes of the film.
    void learnResult() {
        result_ = resultOf([&] { return run_->write(); });
        ASSERT_NE(result_, before_);
    }
    Bytes resultOf(const std::function<RunEnd()>& action) {
        const RunEnd end = action();
        EXPECT_THAT(end.output, StartsWith("RESULT done: "));
        Bytes result = run_->now();
        run_->reset();
        return result;
    }

    /// Kills at the first call, the second, ... until a run comes through; gives how many it took.
    int killEverywhere(const std::string& variable, const std::function<void()>& afterKill) {
        for (int n = 1; n < mostCalls; n++) {
            run_->reset();
            SCOPED_TRACE(variable + "=" + std::to_string(n));
            const RunEnd end = run_->write({{variable, std::to_string(n)}});
            if (!end.wasKilled()) {
                EXPECT_EQ(end.status, 0) << end.output;
                return n - 1;
            }
            afterKill();
            if (HasFailure()) return n;
        }
        ADD_FAILURE() << "the run never ended";
        return 0;
    }

    void expectWholeAfterStart() {
        const RunEnd end = run_->start();
        EXPECT_EQ(end.status, 0);
        EXPECT_THAT(end.output, AnyOf("", finished));
        expectWhole();
        expectTidy();
        expectWholeRestorePoint();
    }
    void expectWhole() {
        const Bytes now = run_->now();
        EXPECT_TRUE(now == before_ || now == result_) << "the film is neither";
    }
    void expectTidy() {
        EXPECT_FALSE(fs::exists(Paths::journalFile()));
        if (fs::exists(Paths::workDir())) {
            EXPECT_TRUE(fs::is_empty(Paths::workDir()));
        }
        if (!fs::exists(Paths::cachesDir())) return;
        // Nor a copy of a film on its way in or out.
        for (const auto& entry : fs::recursive_directory_iterator(Paths::cachesDir()))
            EXPECT_NE(entry.path().extension(), ".mp4") << entry.path();
    }
    void expectWholeRestorePoint() {
        const fs::path folder = RestorePoints::folder(run_->film());
        if (!fs::exists(folder)) return;
        const auto current = IlstEditor::currentIlst(run_->film());
        EXPECT_NO_THROW(RestorePoints::verifySaved(run_->film(), current, false));
    }
    void expectSecondWriteGoesWell() {
        const RunEnd end = run_->write();
        EXPECT_THAT(end.output, StartsWith("RESULT done: "));
        EXPECT_EQ(run_->now(), result_);
        expectTidy();
    }

    void killEverywhereAndCheck() {
        learnResult();
        const auto check = [&] {
            expectWholeAfterStart();
            expectSecondWriteGoesWell();
        };
        // Fewer would mean that the shim isn't at work.
        EXPECT_GT(killEverywhere("CRASH_AT", check), 30);
        EXPECT_GT(killEverywhere("CRASH_TORN_AT", check), 3);
    }

    std::unique_ptr<CrashRun> run_;
    Bytes before_;
    Bytes result_;
};

TEST_F(CrashTest, AWriteIntoThePaddingSurvivesAKillAtAnyCall) {
    begin(film(), details);
    killEverywhereAndCheck();
}

TEST_F(CrashTest, AWriteThatMakesTheFileGrowSurvivesAKillAtAnyCall) {
    begin(growingFilm(), details);
    killEverywhereAndCheck();
    EXPECT_GT(result_.size(), before_.size());
}

TEST_F(CrashTest, PuttingTheOriginalDetailsBackSurvivesAKillAtAnyCall) {
    begin(growingFilm(), details);
    ASSERT_THAT(run_->write().output, StartsWith("RESULT done: "));
    run_->setRequest(restoring);
    run_->remember();
    before_ = run_->now();
    killEverywhereAndCheck();
    EXPECT_LT(result_.size(), before_.size());
}

TEST_F(CrashTest, APutBackOfABadLayoutSurvivesAKillAtAnyCall) {
    begin(filmOverTheLimit(), detailsWithoutFix);
    // What stands in the file in between is what a copy would be.
    const fs::path copies = run_->folder() / "copies";
    run_->setRequest(R"({"copyTo":")" + copies.string() + R"(",)" +
                     std::string(detailsWithoutFix).substr(1));
    ASSERT_THAT(run_->write().output, StartsWith("RESULT done: "));
    result_ = readFile(copies / "Film (Marlet).mp4");
    run_->setRequest(detailsWithoutFix);
    const auto check = [&] {
        expectWholeAfterStart();
        const Bytes settled = run_->now();
        EXPECT_THAT(run_->write().output, testing::HasSubstr("; the original was put back | "));
        EXPECT_EQ(run_->now(), settled);
        expectTidy();
    };
    EXPECT_GT(killEverywhere("CRASH_AT", check), 40);
    EXPECT_GT(killEverywhere("CRASH_TORN_AT", check), 5);
}

TEST_F(CrashTest, ARebuildSurvivesAKillAtAnyCall) {
    begin(filmOverTheLimit(), details);
    learnResult();
    const auto check = [&] {
        expectWholeAfterStart();
        expectTidy();
    };
    EXPECT_GT(killEverywhere("CRASH_AT", check), 40);
    EXPECT_GT(killEverywhere("CRASH_TORN_AT", check), 3);
}

TEST_F(CrashTest, ANewFileWithoutATrackIsThereWholeOrNotAtAll) {
    begin(film(), details);
    const fs::path output = run_->folder() / "output";
    run_->setRequest(R"({"dropTracks":[1],"outputDir":")" + output.string() + R"(",)" +
                     std::string(details).substr(1));
    ASSERT_THAT(run_->write().output, StartsWith("RESULT done: "));
    const fs::path made = output / "Film.m4v";
    const Bytes whole = readFile(made);
    fs::remove_all(output);
    const auto check = [&] {
        run_->start();
        EXPECT_EQ(run_->now(), before_);
        expectTidy();
        if (fs::exists(made)) {
            EXPECT_EQ(readFile(made), whole);
        }
        fs::remove(made);
        if (fs::exists(output)) {
            EXPECT_TRUE(fs::is_empty(output)) << "the start left an unfinished file";
        }
        EXPECT_THAT(run_->write().output, StartsWith("RESULT done: "));
        for (const auto& entry : fs::directory_iterator(output)) EXPECT_EQ(entry.path(), made);
        fs::remove_all(output);
    };
    EXPECT_GT(killEverywhere("CRASH_AT", check), 30);
}

/// The number of the first changing call on the film itself, counted as the shim does.
int killInsideTheWrite(CrashRun& run) {
    // The last torn write that leaves a journal is the film's own.
    for (int n = 1; n < mostCalls; n++) {
        run.reset();
        if (!run.write({{"CRASH_TORN_AT", std::to_string(n)}}).wasKilled()) return 0;
        if (fs::exists(Paths::journalFile())) return n;
    }
    return 0;
}

TEST_F(CrashTest, ARecoverySurvivesAKillAtAnyCall) {
    begin(growingFilm(), details);
    learnResult();
    const int inside = killInsideTheWrite(*run_);
    ASSERT_GT(inside, 0);
    int kills = 0;
    for (const char* variable : {"CRASH_AT", "CRASH_TORN_AT"})
        for (int n = 1; n < mostCalls; n++) {
            SCOPED_TRACE(std::string(variable) + "=" + std::to_string(n));
            run_->reset();
            run_->write({{"CRASH_TORN_AT", std::to_string(inside)}});
            ASSERT_NE(run_->now(), before_);
            ASSERT_NE(run_->now(), result_);
            if (!run_->start({{variable, std::to_string(n)}}).wasKilled()) break;
            kills++;
            const RunEnd end = run_->start();
            EXPECT_THAT(end.output, AnyOf("", finished));
            EXPECT_EQ(run_->now(), result_);
            expectTidy();
            if (HasFailure()) return;
        }
    EXPECT_GT(kills, 5);
}

TEST_F(CrashTest, ACopySurvivesAKillAtAnyCallAndTheOriginalIsNeverTouched) {
    begin(film(), details);
    const fs::path copies = run_->folder() / "copies";
    run_->setRequest(R"({"copyTo":")" + copies.string() + R"(",)" + std::string(details).substr(1));
    const fs::path copy = copies / "Film (Marlet).mp4";
    result_ = before_;
    const auto check = [&] {
        run_->start();
        expectWhole();
        expectTidy();
        fs::remove_all(copies);
    };
    ASSERT_THAT(run_->write().output, StartsWith("RESULT done: "));
    const Bytes whole = readFile(copy);
    fs::remove_all(copies);
    const auto wholeOrAbsent = [&] {
        if (fs::exists(copy)) {
            EXPECT_EQ(readFile(copy), whole);
        }
        check();
    };
    EXPECT_GT(killEverywhere("CRASH_AT", wholeOrAbsent), 30);
}

// --- a loss of power
// ------------------------------------------------------------------------------

/// What a loss of power could take: changes that no flush has followed. A new name lives in its
/// folder, and is safe only when the folder was flushed behind it.
class Unflushed {
public:
    void see(const LoggedCall& call) {
        if (call.name == "write") {
            data_.insert(call.path);
        } else if (call.name == "create" || call.name == "mkdir") {
            names_.insert(call.path.parent_path());
        } else if (call.name == "unlink") {
            data_.erase(call.path);
            names_.erase(call.path);
            names_.insert(call.path.parent_path());
        } else if (call.name == "rename") {
            if (data_.erase(call.path) > 0) data_.insert(call.second);
            if (names_.erase(call.path) > 0) names_.insert(call.second);
            names_.insert(call.path.parent_path());
            names_.insert(call.second.parent_path());
        } else if (call.name == "flush") {
            data_.erase(call.path);
            names_.erase(call.path);
        }
    }
    bool holds(const fs::path& path) const { return data_.contains(path) || names_.contains(path); }
    std::set<fs::path> all() const {
        std::set<fs::path> both = data_;
        both.insert(names_.begin(), names_.end());
        return both;
    }

private:
    std::set<fs::path> data_;   // files with bytes on their way
    std::set<fs::path> names_;  // folders with names on their way
};

class PowerLossTest : public CrashTest {
protected:
    std::vector<LoggedCall> logged() {
        const fs::path log = run_->folder() / "calls.log";
        fs::remove(log);
        const RunEnd end = run_->write({{"CRASH_LOG", log.string()}});
        EXPECT_EQ(end.status, 0);
        return readLog(log);
    }
    bool isOnFilm(const LoggedCall& call) const {
        return call.name == "write" && call.path == run_->film();
    }
    void expectAllFlushedBeforeTheFilmChanges(const std::vector<LoggedCall>& calls) {
        Unflushed unflushed;
        std::set<std::string> named;
        for (const LoggedCall& call : calls) {
            if (isOnFilm(call)) break;
            // Nothing relies on the log of the media tools.
            if (call.path.parent_path() == Paths::logsDir() || call.path == Paths::logsDir())
                continue;
            unflushed.see(call);
            for (const fs::path& path : {call.path, call.second})
                named.insert(path.filename().string());
        }
        EXPECT_THAT(unflushed.all(), IsEmpty());
        // The log is one of a write: all that it relies on was made.
        for (const char* name : {"Film.mp4", "candidate.mp4", "pending-write.json"})
            EXPECT_TRUE(named.contains(name)) << name;
    }
    void expectFilmFlushedBeforeItsWayBackGoes(const std::vector<LoggedCall>& calls) {
        Unflushed unflushed;
        bool sawRemoval = false;
        bool wasWritten = false;
        for (const LoggedCall& call : calls) {
            wasWritten = wasWritten || isOnFilm(call);
            const bool isJournal = call.path == Paths::journalFile();
            if (call.name == "unlink" && isJournal) {
                sawRemoval = true;
                EXPECT_FALSE(unflushed.holds(run_->film()));
            }
            // The copies go only when the journal is gone for good.
            if (wasWritten && call.name == "unlink" && call.path.extension() == ".mp4") {
                EXPECT_FALSE(unflushed.holds(Paths::documentsDir()));
            }
            unflushed.see(call);
        }
        EXPECT_TRUE(sawRemoval);
    }
};

TEST_F(PowerLossTest, AnOverwriteHasAllFlushedBeforeItAndTheFilmBeforeItsWayBackGoes) {
    begin(filmOverTheLimit(), details);
    const std::vector<LoggedCall> calls = logged();
    expectAllFlushedBeforeTheFilmChanges(calls);
    expectFilmFlushedBeforeItsWayBackGoes(calls);
    // What the media tool wrote is no call of the program: its flush has to be one.
    const auto filmWrite = std::ranges::find_if(calls, [&](const auto& c) { return isOnFilm(c); });
    const auto toolFlush = std::ranges::find_if(calls, [&](const LoggedCall& call) {
        return call.name == "flush" && call.path.filename().string().ends_with(".rebuilt.mp4");
    });
    EXPECT_LT(toolFlush - calls.begin(), filmWrite - calls.begin());
}

TEST_F(PowerLossTest, EverythingIsFlushedBeforeTheFilmChanges) {
    for (const Movie& movie : {film(), growingFilm()}) {
        begin(movie, details);
        const auto calls = logged();
        expectAllFlushedBeforeTheFilmChanges(calls);
        expectFilmFlushedBeforeItsWayBackGoes(calls);
    }
}

TEST_F(PowerLossTest, TheSameHoldsForPuttingTheOriginalDetailsBack) {
    begin(growingFilm(), details);
    ASSERT_THAT(run_->write().output, StartsWith("RESULT done: "));
    run_->setRequest(restoring);
    const auto calls = logged();
    expectAllFlushedBeforeTheFilmChanges(calls);
    expectFilmFlushedBeforeItsWayBackGoes(calls);
}

TEST_F(PowerLossTest, TheSameHoldsForAPutBack) {
    begin(filmOverTheLimit(), detailsWithoutFix);
    const auto calls = logged();
    expectAllFlushedBeforeTheFilmChanges(calls);
    expectFilmFlushedBeforeItsWayBackGoes(calls);
}

}  // namespace
}  // namespace marlet::test
