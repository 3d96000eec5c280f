// Two copies of the program at once, as one person may have them on one machine.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "foundation/work_area.h"
#include "support/media.h"
#include "support/proc_file.h"
#include "system/program_run.h"
#include "write/journal.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class TwoCopies : public testing::Test {
protected:
    static fs::path data() { return fs::path(std::getenv("XDG_DATA_HOME")) / "Marlet"; }
    static fs::path work() { return fs::path(std::getenv("XDG_CACHE_HOME")) / "Marlet" / "work"; }
    std::vector<std::string> films(const std::string& part, int count) {
        std::vector<std::string> files;
        for (int i = 0; i < count; i++) {
            const fs::path folder = run_.library() / (part + std::to_string(i));
            fs::create_directories(folder);
            files.push_back(folder / "Charade (1963).mp4");
            makeMovie(files.back());
        }
        return files;
    }
    std::unique_ptr<Process> write(const std::vector<std::string>& files) {
        std::vector<std::string> arguments{"--confirm-all", "--quit"};
        for (const std::string& file : files) arguments.insert(arguments.end(), {"--tag", file});
        return run_.start("marlet", arguments);
    }
    /// A copy that a person starts, and ends as soon as it has cleaned up.
    void startAndEnd() {
        fs::remove(data() / "unfinished.lock");
        const auto copy = run_.start("marlet", {});
        // The first thing after the clean-up.
        while (!fs::exists(data() / "unfinished.lock") && !copy->hasEnded())
            std::this_thread::sleep_for(2ms);
        copy->signal(SIGTERM);
        EXPECT_EQ(copy->wait(), 0) << copy->errors();
    }
    /// A copy that is stopped in the middle of a job, outside of the change itself.
    std::unique_ptr<Process> stoppedInAJob(const std::string& film) {
        for (int i = 0; i < 100; i++) {
            auto copy = write({film});
            while (namesIn(work()).empty() && !copy->hasEnded()) std::this_thread::yield();
            copy->signal(SIGSTOP);
            while (!isStopped(copy->pid()) && !copy->hasEnded()) std::this_thread::yield();
            const bool isAtWork = WorkArea::folders().size() == 1 &&
                                  WorkArea::isHeld(WorkArea::folders().front()) &&
                                  !WriteJournal::load();
            if (isAtWork && !copy->hasEnded()) return copy;
            copy->signal(SIGCONT);
            copy->wait();
        }
        return nullptr;
    }
    static bool isStopped(pid_t process) {
        const std::string stat = procFile(process, "stat");
        return contains(stat, ") T ");
    }
    static std::string log() {
        const fs::path file = data() / "cleanup.log";
        return fs::exists(file) ? textOf(readFile(file)) : std::string();
    }
    ProgramRun run_;
};

TEST_F(TwoCopies, ARunningJobsFolderIsLeftAloneAndRemovedWhenItsProgramWasKilled) {
    const fs::path folder = run_.library() / "long";
    fs::create_directories(folder);
    makeMovie(folder / "Charade (1963).mp4", {.seconds = 120});
    const auto busy = stoppedInAJob(folder / "Charade (1963).mp4");
    ASSERT_NE(busy, nullptr);
    const std::string job = namesIn(work()).front();

    startAndEnd();
    EXPECT_TRUE(fs::exists(work() / job));
    EXPECT_EQ(log(), "") << "nothing was removed";
    const WorkArea::Report report = WorkArea::cleanUp(WorkArea::DryRun::Yes);
    ASSERT_EQ(report.kept.size(), 1U);
    EXPECT_EQ(report.kept[0].name, job);
    EXPECT_EQ(report.kept[0].reason, "in use by another running job");

    busy->signal(SIGKILL);
    busy->wait();
    startAndEnd();
    EXPECT_FALSE(fs::exists(work() / job));
    EXPECT_TRUE(contains(log(), "removed work folder " + job + " (")) << log();
    EXPECT_TRUE(contains(log(), "): its job has ended (lock released), no recovery pending"));
}

TEST_F(TwoCopies, HistoryOfNeitherIsLostWhenBothWriteAtTheSameTime) {
    const auto mine = films("mine", 8);
    const auto theirs = films("theirs", 8);
    const auto one = write(mine);
    const auto other = write(theirs);
    EXPECT_EQ(one->wait(), 0) << one->errors();
    EXPECT_EQ(other->wait(), 0) << other->errors();

    std::set<std::string> expected(mine.begin(), mine.end());
    expected.insert(theirs.begin(), theirs.end());
    std::set<std::string> done;
    std::set<std::string> runs;
    const auto history = nlohmann::json::parse(readFile(data() / "history.json"));
    for (const auto& entry : history) {
        EXPECT_EQ(entry.at("result"), "done") << entry;
        done.insert(entry.at("path").get<std::string>());
        runs.insert(entry.at("batchID").get<std::string>());
    }
    EXPECT_EQ(history.size(), expected.size());
    EXPECT_EQ(done, expected);
    EXPECT_EQ(runs.size(), 2U);
    EXPECT_TRUE(namesIn(work()).empty());
}

}  // namespace
}  // namespace marlet::test
