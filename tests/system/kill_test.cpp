// Whatever moment a run is killed at, each file is the original or the complete result.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

// Four tests of 50 moments each, so that they can run side by side.
constexpr int killsEach = 50;

class KilledRun : public testing::TestWithParam<unsigned> {
protected:
    KilledRun() {
        fs::create_directories(originals_.path());
        makeMovie(originals_ / "Charade (1963).mp4", {.accountTags = true});
        makeMovie(originals_ / "Sintel (2010).m4v", {.indexFirst = true, .padding = 600000});
        makeMovie(originals_ / "Detour (1945).mp4", {.tags = {{"title", "Old"}}});
        for (const auto& each : fs::directory_iterator(originals_.path()))
            names_.push_back(each.path().filename());
        arguments_ = {"--confirm-all", "--quit"};
        for (const std::string& name : names_) {
            arguments_.push_back("--tag");
            arguments_.push_back(run_.library() / name);
        }
    }
    void layOut() {
        for (const std::string& name : names_)
            fs::copy_file(originals_ / name, run_.library() / name,
                          fs::copy_options::overwrite_existing);
        fs::remove_all(data() / "restore");
    }
    static fs::path data() { return fs::path(std::getenv("XDG_DATA_HOME")) / "Marlet"; }
    static fs::path work() { return fs::path(std::getenv("XDG_CACHE_HOME")) / "Marlet" / "work"; }

    ProgramRun run_;
    TempFolder originals_;
    std::vector<std::string> names_;
    std::vector<std::string> arguments_;
};

TEST_P(KilledRun, LeavesEachFileAsItWasOrCompleteAfterTheNextStart) {
    layOut();
    const auto begun = std::chrono::steady_clock::now();
    const auto whole = run_.marlet(arguments_);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    ASSERT_EQ(whole.lines("RESULT done").size(), names_.size()) << whole.output;
    std::map<std::string, Bytes> complete;
    std::map<std::string, Bytes> original;
    for (const std::string& name : names_) {
        complete[name] = readFile(run_.library() / name);
        original[name] = readFile(originals_ / name);
        ASSERT_NE(complete[name], original[name]);
    }

    std::mt19937 random(GetParam());
    std::uniform_real_distribution<double> moment(0, took.count() * 1.1);
    int untouched = 0;
    int changed = 0;
    for (int i = 0; i < killsEach; i++) {
        layOut();
        const std::chrono::duration<double> after(moment(random));
        {
            const auto process = run_.start("marlet", arguments_);
            std::this_thread::sleep_for(after);
            process->signal(SIGKILL);
            process->wait();
        }
        const auto next = run_.oneJob({"--start"});
        ASSERT_EQ(next.status, 0);
        for (const std::string& name : names_) {
            const Bytes now = readFile(run_.library() / name);
            if (now == original[name])
                untouched++;
            else if (now == complete[name])
                changed++;
            else
                FAIL() << name << " is neither after a kill at " << after.count() << " s";
        }
        if (fs::exists(data() / "history.json")) {
            const std::string text = textOf(readFile(data() / "history.json"));
            ASSERT_TRUE(nlohmann::json::accept(text)) << text;
        }
        ASSERT_FALSE(fs::exists(data() / "pending-write.json"));
        ASSERT_TRUE(!fs::exists(work()) || fs::is_empty(work())) << after.count();
    }
    // A test that only ever killed before the first write, or after the last, would prove little.
    EXPECT_GT(untouched, 0);
    EXPECT_GT(changed, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledRun,
                         testing::Values(20261121u, 20261122u, 20261123u, 20261124u));

}  // namespace
}  // namespace marlet::test
