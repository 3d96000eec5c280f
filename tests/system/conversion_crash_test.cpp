// The program is killed before every single call of a conversion that changes something on disk,
// and in the middle of its writes. After the next start the original is what it was, nothing
// half-made is left anywhere, and the new file is there whole or not at all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "foundation/paths.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/crash_run.h"
#include "system/film_to_convert.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int mostCalls = 1000;
constexpr int killsBetweenRepeats = 20;

class CrashedConversion : public testing::Test {
protected:
    CrashedConversion() {
        run_.setRequest(R"({"mode":"convert","outputDir":")" + output_.string() +
                        R"(","details":{"kind":"movie","title":"Charade"}})");
        date_ = fs::last_write_time(run_.film());
    }
    void learnResult() {
        const RunEnd end = run_.write();
        ASSERT_THAT(end.output, StartsWith("RESULT done: "));
        size_ = fs::file_size(made_);
        frames_ = packetHashes(made_);
        fs::remove(made_);
    }
    static bool isEmpty(const fs::path& folder) {
        return !fs::exists(folder) || fs::is_empty(folder);
    }
    void expectTidy() {
        EXPECT_EQ(run_.now(), film_);
        EXPECT_EQ(fs::last_write_time(run_.film()), date_);
        EXPECT_TRUE(isEmpty(Paths::workDir()));
        EXPECT_TRUE(isEmpty(Paths::workDir().parent_path() / "work-doorstep"));
    }
    void takeWholeFile() {
        EXPECT_EQ(fs::file_size(made_), size_);
        EXPECT_EQ(packetHashes(made_), frames_);
        fs::remove(made_);
    }
    void expectNothingOrWholeAfterStart() {
        EXPECT_THAT(processesLeftAt(run_.folder()), IsEmpty()) << "a media tool outlived it";
        const RunEnd end = run_.start();
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.output, "");
        expectTidy();
        if (fs::exists(made_)) takeWholeFile();
        EXPECT_TRUE(isEmpty(output_)) << "an unfinished file is left";
    }
    void expectNextRunGoesWell() {
        const RunEnd end = run_.write();
        EXPECT_THAT(end.output, StartsWith("RESULT done: "));
        expectTidy();
        takeWholeFile();
        EXPECT_TRUE(isEmpty(output_));
    }
    /// Kills at the first call, the second, ... until a run comes through; gives how many it took.
    int killEverywhere(const std::string& variable) {
        for (int n = 1; n < mostCalls; n++) {
            SCOPED_TRACE(variable + "=" + std::to_string(n));
            const RunEnd end = run_.write({{variable, std::to_string(n)}});
            if (!end.wasKilled()) {
                EXPECT_THAT(end.output, StartsWith("RESULT done: "));
                takeWholeFile();
                return n - 1;
            }
            expectNothingOrWholeAfterStart();
            if (n % killsBetweenRepeats == 0) expectNextRunGoesWell();
            if (HasFailure()) return n;
        }
        ADD_FAILURE() << "the run never ended";
        return 0;
    }

    const Bytes film_ = filmToConvert({.surround = false});
    CrashRun run_{film_, "Film.mkv"};
    fs::path output_ = run_.folder() / "output";
    fs::path made_ = output_ / "Film.m4v";
    fs::file_time_type date_;
    std::uintmax_t size_ = 0;
    std::vector<std::string> frames_;
};

TEST_F(CrashedConversion, SurvivesAKillBeforeAnyCall) {
    learnResult();
    EXPECT_GT(killEverywhere("CRASH_AT"), 60);
}

TEST_F(CrashedConversion, SurvivesAKillInsideAnyWrite) {
    learnResult();
    EXPECT_GT(killEverywhere("CRASH_TORN_AT"), 8);
}

TEST_F(CrashedConversion, TheNewFileIsOnTheDiskBeforeItHasItsName) {
    const fs::path log = run_.folder() / "calls.log";
    ASSERT_THAT(run_.write({{"CRASH_LOG", log.string()}}).output, StartsWith("RESULT done: "));
    bool isFlushed = false;
    bool isNamed = false;
    bool isNameFlushed = false;
    for (const LoggedCall& call : readLog(log)) {
        const bool isOfPart = call.path.parent_path() == output_;
        if (call.name == "write" && isOfPart) isFlushed = false;
        if (call.name == "flush" && isOfPart) isFlushed = true;
        if (call.name == "rename" && call.second == made_) {
            EXPECT_TRUE(isFlushed);
            isNamed = true;
        }
        if (call.name == "flush" && call.path == output_) isNameFlushed = isNamed;
    }
    EXPECT_TRUE(isNamed);
    EXPECT_TRUE(isNameFlushed);
}

}  // namespace
}  // namespace marlet::test
