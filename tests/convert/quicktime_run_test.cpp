// What happens while a QuickTime film is copied: a cancel, a pause, a source or a folder that
// changes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include "convert/quicktime_copy.h"
#include "foundation/syscalls.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Status = WriteOutcome::Status;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::array stages = {"Building the new file", "Writing details", "Verifying"};

TEST(QuickTimeCopy, ACancelAtAnyStageLeavesNothing) {
    for (const char* stage : stages) {
        SCOPED_TRACE(stage);
        Copy film;
        film.at(stage, [&] { film.control.cancel(); });
        expectCancelled(film, film.run());
    }
}

TEST(QuickTimeCopy, ACancelEndsTheToolAtWork) {
    Copy film;
    film.useTool("echo '(50/100)'; sleep 60");
    film.at(
        "Building the new file", [&] { film.control.cancel(); }, 0.2);
    expectCancelled(film, film.run());
}

TEST(QuickTimeCopy, APauseAtAnyStageHoldsItAndItGoesOnToItsEnd) {
    for (const char* stage : stages) {
        Copy film;
        std::jthread later;
        film.at(stage, [&] {
            film.control.pause();
            later = std::jthread([&] {
                // A copy that didn't hold would be at its end by then.
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                EXPECT_THAT(film.delivered(), IsEmpty()) << stage;
                film.control.resume();
            });
        });
        expectDone(film);
    }
}

TEST(QuickTimeCopy, ACancelWhileItIsSavedComesTooLate) {
    Copy film;
    film.at("Saving the new file", [&] { film.control.cancel(); });
    expectDone(film);
}

TEST(QuickTimeCopy, ASourceThatIsTouchedMeanwhileIsNotDelivered) {
    for (const char* stage : stages) {
        SCOPED_TRACE(stage);
        Copy film;
        touchSourceAt(film, stage);
        expectChangedMeanwhile(film);
    }
}

TEST(QuickTimeCopy, ASourceThatIsTouchedAtTheEndIsToldAndTheNewFileStays) {
    Copy film;
    touchSourceAt(film, "Saving the new file");
    EXPECT_EQ(film.run().message,
              "the original changed (it is not touched by Marlet; check what else is using it)");
    EXPECT_THAT(film.delivered(), ElementsAre("Movie.m4v"));
    EXPECT_FALSE(film.hasWorkFolders());
}

TEST(QuickTimeCopy, AnOutputFolderThatIsGoneIsMadeAgain) {
    Copy film;
    film.at("Verifying", [&] { fs::remove(film.output()); });
    expectDone(film);
}

TEST(QuickTimeCopy, AnOutputFolderThatCannotBeWrittenIsTold) {
    Copy film;
    std::optional<Sys::Fault> readOnly;
    film.at("Saving the new file",
            [&] { readOnly.emplace(Sys::Call::Open, EROFS, 1, true, film.output()); });
    std::optional<Sys::Fault> noNames;
    film.at("Verifying", [&] { noNames.emplace(Sys::Call::RenameIfFree, EROFS, 1, true); });
    const WriteOutcome outcome = film.run();
    EXPECT_THAT(outcome.message, StartsWith("saving the new file failed: "));
    EXPECT_THAT(outcome.message, EndsWith("Read-only file system"));
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

TEST(QuickTimeCopy, ATruncatedSourceEndsInASentence) {
    const Bytes whole = withSound({"-c:a", "aac", "-movflags", "faststart"});
    for (const double part : {0.1, 0.3, 0.6, 0.95}) {
        Bytes film = whole;
        film.resize(static_cast<std::size_t>(static_cast<double>(film.size()) * part));
        Copy cut(film);
        const WriteOutcome outcome = cut.run();
        EXPECT_EQ(outcome.status, Status::failed) << part;
        EXPECT_FALSE(outcome.message.empty());
        EXPECT_THAT(cut.delivered(), IsEmpty());
        EXPECT_TRUE(cut.isUntouched());
    }
}

}  // namespace
}  // namespace marlet::test
