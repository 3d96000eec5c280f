// A rebuild is killed at any moment: while it copies, while the media tool works, while it proves,
// and while it overwrites. After the next start the film is the original or the complete result.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <random>
#include <thread>

#include "foundation/paths.h"
#include "mp4/sound_layout.h"
#include "support/bad_films.h"
#include "support/media.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// Six tests of 50 moments each, so that they can run side by side.
constexpr int killsEach = 50;
constexpr const char* finished =
    "NOTICE A previous write to Film.mp4 was interrupted. It has been finished and checked byte "
    "for byte.\n";

class KilledRebuild : public testing::TestWithParam<unsigned> {
protected:
    KilledRebuild() {
        // Some megabytes, so that an overwrite takes a while.
        BadFilm film = badFilms().front();
        film.inputs[0] = "testsrc2=size=480x270:rate=25";
        film.arguments.insert(film.arguments.end(), {"-qp", "6"});
        makeBadFilm(film, folder_ / "original.mp4");
        original_ = readFile(folder_ / "original.mp4");
        folder_.write("request.json",
                      R"({"file":")" + film_.string() +
                          R"(","details":{"kind":"movie","title":"Charade","genre":"Drama"}})");
    }
    void layOut() { writeFile(film_, original_); }
    std::unique_ptr<Process> start() const {
        return std::make_unique<Process>(
            builtProgram("one_job"), std::vector<std::string>{(folder_ / "request.json").string()});
    }
    static std::string startAgain() {
        Process process(builtProgram("one_job"), {"--start"});
        EXPECT_EQ(process.wait(), 0);
        return process.output();
    }
    /// Waits until the overwrite has begun; false when the run ended before that was seen.
    static bool untilTheOverwrite(Process& process) {
        while (!process.hasEnded()) {
            if (fs::exists(Paths::journalFile())) return true;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return false;
    }

    OwnHome home_;
    TempFolder folder_;
    fs::path film_ = folder_ / "Film.mp4";
    Bytes original_;
};

TEST_P(KilledRebuild, LeavesTheFilmAsItWasOrCompleteAndTheMessageIsTrue) {
    layOut();
    const auto begun = Clock::now();
    {
        const auto process = start();
        ASSERT_EQ(process->wait(), 0);
        ASSERT_EQ(process->output().substr(0, 13), "RESULT done: ") << process->output();
    }
    const Seconds took = Clock::now() - begun;
    const Bytes complete = readFile(film_);
    ASSERT_LE(measureInterleave(film_), 1.0);

    std::mt19937 random(GetParam());
    std::uniform_real_distribution<double> moment(0, took.count() * 1.1);
    std::uniform_real_distribution<double> within(0, 0.04);  // seconds of the overwrite
    int untouched = 0;
    int finishedLater = 0;
    for (int i = 0; i < killsEach; i++) {
        layOut();
        {
            const auto process = start();
            // Every second kill falls into the overwrite, the shortest and most dangerous stretch.
            const bool inside = i % 2 == 1 && untilTheOverwrite(*process);
            std::this_thread::sleep_for(Seconds(inside ? within(random) : moment(random)));
            process->signal(SIGKILL);
            process->wait();
        }
        const bool hadJournal = fs::exists(Paths::journalFile());
        const std::string message = startAgain();
        const Bytes now = readFile(film_);
        ASSERT_TRUE(now == original_ || now == complete) << "neither, at the kill number " << i;
        ASSERT_EQ(message, hadJournal ? finished : "");
        if (hadJournal) {
            ASSERT_EQ(now, complete);
        }
        ASSERT_FALSE(fs::exists(Paths::journalFile()));
        ASSERT_TRUE(!fs::exists(Paths::workDir()) || fs::is_empty(Paths::workDir()));
        untouched += now == original_ ? 1 : 0;
        finishedLater += hadJournal ? 1 : 0;
    }
    // Kills that all fell before the first byte, or after the last, would prove little.
    EXPECT_GT(untouched, 0);
    EXPECT_GT(finishedLater, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledRebuild, testing::Values(101u, 102u, 103u, 104u, 105u, 106u));

}  // namespace
}  // namespace marlet::test
