// Cancel and pause in each stage of a conversion, and what happens to the source and to the output
// folder meanwhile: the sentence is the promised one, and nothing half-made is left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "convert/film_outcomes.h"
#include "convert/film_stages.h"
#include "convert/held_tools.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Status = WriteOutcome::Status;

constexpr const char* changed =
    "the original changed while it was being converted; nothing was saved";
constexpr const char* changedAtTheEnd =
    "the original changed (it is not touched by Marlet; check what else is using it)";

/// One conversion after the other, each with something that happens at another stage.
class EveryStage : public testing::Test {
protected:
    using Check = std::function<void(StagedConversion& film, const Stage& stage)>;
    static void inEach(const Check& check) {
        for (const Stage& stage : allStages()) {
            SCOPED_TRACE(stage.name);
            StagedConversion film(stage);
            check(film, stage);
            film.expectTidy();
        }
    }
    /// All but the last, which comes too late to stop anything.
    static void inEachBeforeTheSaving(const Check& check) {
        inEach([&](StagedConversion& film, const Stage& stage) {
            if (!isSaving(stage)) check(film, stage);
        });
    }
};

void expectDone(StagedConversion& film, const WriteOutcome& outcome) {
    EXPECT_EQ(outcome.status, Status::done) << outcome.message;
    EXPECT_THAT(film.delivered(), ElementsAre("Movie.m4v"));
    EXPECT_TRUE(film.isUntouched());
}

void expectNothingSaved(StagedConversion& film, const WriteOutcome& outcome) {
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_FALSE(outcome.message.empty());
    EXPECT_FALSE(outcome.output);
    EXPECT_THAT(film.delivered(), IsEmpty());
}

TEST_F(EveryStage, ACancelLeavesNothingAndInTheLastOneComesTooLate) {
    inEach([](StagedConversion& film, const Stage& stage) {
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) { film.control.cancel(); });
        if (isSaving(stage)) return expectDone(film, outcome);
        expectCancelled(film, outcome);
    });
}

/// Lets a paused job go on, after a while in which one that didn't hold would have come to its end.
std::jthread resumeLater(StagedConversion& film, const std::atomic<bool>& hasEnded) {
    return std::jthread([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        EXPECT_FALSE(hasEnded);
        EXPECT_THAT(film.delivered(), IsEmpty());
        film.control.resume();
    });
}

TEST_F(EveryStage, APauseHoldsTheJobAndItsToolUntilItGoesOn) {
    inEach([](StagedConversion& film, const Stage& stage) {
        std::atomic<bool> hasEnded = false;
        std::jthread resumer;
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t tool) {
            film.control.pause();
            if (isSaving(stage)) return;  // nobody ever lets it go on
            if (tool != 0) {
                EXPECT_TRUE(waitFor([&] { return stateOf(tool) == 'T'; })) << "the tool runs on";
            }
            resumer = resumeLater(film, hasEnded);
        });
        hasEnded = true;
        expectDone(film, outcome);
    });
}

TEST_F(EveryStage, ASourceOfAnotherDateIsToldAndNothingIsSaved) {
    inEach([](StagedConversion& film, const Stage& stage) {
        const fs::path source = film.request.source;
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) {
            fs::last_write_time(source, fs::last_write_time(source) + std::chrono::seconds(2));
        });
        if (!isSaving(stage)) {
            EXPECT_EQ(outcome.message, changed);
            return expectNothingSaved(film, outcome);
        }
        // What was proved is what the source was.
        EXPECT_EQ(outcome.status, Status::failed);
        EXPECT_EQ(outcome.message, changedAtTheEnd);
        EXPECT_THAT(film.delivered(), ElementsAre("Movie.m4v"));
    });
}

// Before the proof the tools see what the source has become, and may fail in their own words.

TEST_F(EveryStage, ASourceThatGrowsIsNotSaved) {
    inEachBeforeTheSaving([](StagedConversion& film, const Stage& stage) {
        const fs::path source = film.request.source;
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) {
            std::ofstream(source, std::ios::app | std::ios::binary) << std::string(5000, 'x');
        });
        expectNothingSaved(film, outcome);
        if (!isWhileToolsRead(stage)) {
            EXPECT_EQ(outcome.message, changed);
        }
        EXPECT_EQ(fs::file_size(source), surroundFilm().size() + 5000);
    });
}

TEST_F(EveryStage, ASourceThatIsReplacedIsNotSaved) {
    inEachBeforeTheSaving([](StagedConversion& film, const Stage& stage) {
        const fs::path source = film.request.source;
        const fs::path other = film.beside("other.mkv");
        writeFile(other, plainFilm());
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) { fs::rename(other, source); });
        expectNothingSaved(film, outcome);
        if (!isWhileToolsRead(stage)) {
            EXPECT_EQ(outcome.message, changed);
        }
        EXPECT_EQ(readFile(source), plainFilm());
    });
}

TEST_F(EveryStage, ASourceThatIsCutIsNotSaved) {
    inEachBeforeTheSaving([](StagedConversion& film, const Stage& stage) {
        const fs::path source = film.request.source;
        const auto half = surroundFilm().size() / 2;
        const WriteOutcome outcome =
            film.runWith(stage, [&](pid_t) { fs::resize_file(source, half); });
        expectNothingSaved(film, outcome);
        EXPECT_EQ(fs::file_size(source), half);
    });
}

TEST_F(EveryStage, ASourceThatIsRemovedIsNotSaved) {
    inEachBeforeTheSaving([](StagedConversion& film, const Stage& stage) {
        const fs::path source = film.request.source;
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) { fs::remove(source); });
        expectNothingSaved(film, outcome);
        if (!isWhileToolsRead(stage)) {
            EXPECT_EQ(outcome.message, "the original can't be read");
        }
        EXPECT_FALSE(fs::exists(source));
    });
}

TEST_F(EveryStage, AnOutputFolderThatIsRemovedIsMadeAnewUnlessTheCopyHasBegun) {
    inEach([](StagedConversion& film, const Stage& stage) {
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) { fs::remove(film.output()); });
        if (!isSaving(stage)) return expectDone(film, outcome);
        EXPECT_EQ(outcome.message,
                  "saving the new file failed: cannot create copy: No such file or directory");
        EXPECT_FALSE(fs::exists(film.output()));
        EXPECT_TRUE(film.isUntouched());
    });
}

TEST_F(EveryStage, AFileInThePlaceOfTheOutputFolderIsTold) {
    inEach([](StagedConversion& film, const Stage& stage) {
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t) {
            fs::remove(film.output());
            writeFile(film.output(), bytesOf("mine"));
        });
        EXPECT_EQ(outcome.status, Status::failed);
        EXPECT_THAT(outcome.message,
                    StartsWith(isSaving(stage) ? "saving the new file failed: cannot create copy: "
                                               : "cannot create the output folder: "));
        EXPECT_EQ(readFile(film.output()), bytesOf("mine"));
        EXPECT_TRUE(film.isUntouched());
    });
}

// --- the stage that only a bad layout brings

class FinerSlices : public testing::Test {
protected:
    FinerSlices() {
        film_.plan().subs.clear();
        film_.plan().audio.resize(1);
        film_.plan().hasChapters = false;
        film_.toolMakes({{500, builtFilm(1300)}, {0, builtFilm(800)}});
    }
    static constexpr const char* label = "Building again with finer sound slices (250 ms)";
    FilmConversion film_;
};

TEST_F(FinerSlices, ACancelLeavesNothing) {
    film_.at(label, [&] { film_.control.cancel(); });
    const WriteOutcome outcome = film_.run();
    EXPECT_EQ(outcome.status, Status::cancelled);
    EXPECT_EQ(outcome.message, "cancelled; the original was not touched");
    EXPECT_THAT(film_.delivered(), IsEmpty());
    EXPECT_TRUE(film_.isUntouched());
}

TEST_F(FinerSlices, APauseHoldsTheJob) {
    std::atomic<bool> hasEnded = false;
    std::jthread resumer;
    film_.at(label, [&] {
        film_.control.pause();
        resumer = std::jthread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            EXPECT_FALSE(hasEnded);
            film_.control.resume();
        });
    });
    EXPECT_EQ(film_.run().status, Status::done);
    hasEnded = true;
    EXPECT_THAT(film_.delivered(), ElementsAre("Movie.m4v"));
    EXPECT_TRUE(film_.isUntouched());
}

TEST_F(FinerSlices, ASourceOfAnotherDateIsTold) {
    film_.at(label, [&] {
        fs::last_write_time(film_.request.source,
                            fs::last_write_time(film_.request.source) + std::chrono::seconds(2));
    });
    EXPECT_EQ(film_.run().message, changed);
    EXPECT_THAT(film_.delivered(), IsEmpty());
    EXPECT_FALSE(film_.hasWorkFolders());
}

TEST(ConversionJob, ThatWasCancelledBeforeItBeganDoesNothing) {
    StagedConversion film(allStages().front());
    film.control.cancel();
    EXPECT_EQ(film.run().message, "cancelled; the original was not touched");
    EXPECT_THAT(film.labels, IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

TEST(ConversionJob, ThatIsCancelledWhileItsToolIsHeldEndsTheTool) {
    for (const Stage& stage : allStages()) {
        if (stage.tool.empty()) continue;
        StagedConversion film(stage);
        const WriteOutcome outcome = film.runWith(stage, [&](pid_t tool) {
            film.control.pause();
            EXPECT_TRUE(waitFor([&] { return stateOf(tool) == 'T'; }));
            film.control.cancel();
            EXPECT_TRUE(waitFor([&] { return stateOf(tool) == '\0'; })) << stage.name;
        });
        EXPECT_EQ(outcome.status, Status::cancelled) << stage.name;
        EXPECT_TRUE(film.isUntouched());
        film.expectTidy();
    }
}

}  // namespace
}  // namespace marlet::test
