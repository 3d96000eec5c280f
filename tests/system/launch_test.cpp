// What a start of the real program does once, and in which order.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <stdexcept>

#include "support/media.h"
#include "system/program_run.h"
#include "write/journal.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Starts of the program that find what an earlier one left.
class Launch : public testing::Test {
protected:
    Launch() {
        folder_ = fs::path(std::getenv("XDG_CACHE_HOME")) / "Marlet" / "work" /
                  "0F0E0D0C-0B0A-4908-8706-050403020100";
        fs::create_directories(folder_);
        writeFile(folder_ / ".lock", {});
    }
    std::string film() {
        const fs::path file = run_.library() / "Charade (1963).mp4";
        makeMovie(file);
        return file.string();
    }
    /// A start without any option, as a person's: a film is handed over. It is asked about only
    /// when everything that a launch does is done.
    std::unique_ptr<Process> launched() {
        auto process = run_.start("marlet", {film()});
        while (run_.catalogue().requestCount(".") == 0)
            if (process->hasEnded()) throw std::runtime_error("ended: " + process->errors());
        return process;
    }
    static void end(Process& process, int signal = SIGTERM) {
        EXPECT_FALSE(process.hasEnded());
        process.signal(signal);
        EXPECT_EQ(process.wait(), 0);
    }
    /// A write to a film that was cut off, with the copy that it was made from.
    fs::path cutOff(const Bytes& copy) {
        const fs::path film = run_.library() / "Film.mp4";
        writeFile(film, viewOf("half of it"));
        writeFile(folder_ / "copy.mp4", copy);
        WriteJournal{film, folder_ / "copy.mp4", copy.size()}.save();
        return film;
    }
    ProgramRun run_;
    fs::path folder_;
    const Bytes whole_ = bytesOf("the whole film");
};

TEST_F(Launch, WithoutAnyOptionTheProgramCleansTheWorkAreaAndWaits) {
    const auto process = launched();
    EXPECT_FALSE(fs::exists(folder_));
    end(*process, SIGINT);
}

TEST_F(Launch, AnOptionAloneMakesTheRunAutomatedAndNothingIsCleaned) {
    const auto process = run_.start("marlet", {"--no-ai", "--trace"});
    // Traced behind the place of the clean-up.
    while (!contains(process->errors(), "headless: entered")) ASSERT_FALSE(process->hasEnded());
    EXPECT_TRUE(fs::exists(folder_));
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait(), 0);
}

TEST_F(Launch, TheVariableAloneMakesTheRunAutomatedAndNothingIsCleaned) {
    run_.environment["MARLET_NO_KEYCHAIN"] = "1";
    const auto process = launched();
    EXPECT_TRUE(fs::exists(folder_));
    end(*process);
}

TEST_F(Launch, AnInterruptedWriteIsFinishedBeforeTheRunThatWasAskedFor) {
    const fs::path film = cutOff(whole_);
    const auto result = run_.marlet({"--tag", film.string(), "--match-only", "--quit"});
    EXPECT_EQ(readFile(film), whole_);
    EXPECT_FALSE(WriteJournal::load());
    EXPECT_EQ(result.errors,
              "NOTICE A previous write to Film.mp4 was interrupted. It has been finished and "
              "checked byte for byte.\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(Launch, AnInterruptedWriteIsFinishedAtAPersonsStartToo) {
    const fs::path film = cutOff(whole_);
    const auto process = launched();
    EXPECT_EQ(readFile(film), whole_);
    EXPECT_FALSE(WriteJournal::load());
    end(*process);
}

TEST_F(Launch, RecoveryComesBeforeTheCleanUpWhichThenFindsNoPendingOne) {
    cutOff(whole_);
    fs::remove(folder_ / "copy.mp4");
    // A recovery without a copy leaves the folder to the clean-up, and that one leaves alone what
    // a journal names.
    const auto process = launched();
    EXPECT_THAT(process->errors(), HasSubstr("its verified copy is gone"));
    EXPECT_FALSE(WriteJournal::load());
    EXPECT_FALSE(fs::exists(folder_));
    end(*process);
}

}  // namespace
}  // namespace marlet::test
