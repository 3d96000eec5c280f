#include "app/write_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <future>
#include <mutex>
#include <thread>

#include "app/history.h"
#include "foundation/copy_lock.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/tool_runner.h"
#include "foundation/work_area.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;
using State = WriteQueue::Job::State;
using Status = WriteOutcome::Status;

/// A worker whose outcomes are told by file name, and which can be held in the middle of a job.
class ScriptedWorker {
public:
    WriteOutcome operator()(const WriteRequest& request, RunControl& control,
                            const StepProgress& progress) {
        const std::string name = request.file.filename().string();
        progress("working on " + name, 0.5);
        if (name == held) {
            std::unique_lock lock(mutex_);
            reached_ = true;
            changed_.notify_all();
            changed_.wait(lock, [&] { return go_; });
        }
        ran.push_back(name);
        sawPause.push_back(control.isPaused());
        try {
            if (checkpoints) control.checkpoint();
        } catch (const CancelError&) {
            return {.status = Status::cancelled,
                    .message = "cancelled; the file was left untouched"};
        }
        const auto told = outcomes.find(name);
        WriteOutcome outcome{.status = told == outcomes.end() ? Status::done : told->second};
        outcome.message = "told";
        outcome.before = 0.5;
        outcome.size = 7;
        return outcome;
    }
    void waitUntilHeld() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return reached_; });
    }
    void letGo() {
        const std::lock_guard lock(mutex_);
        go_ = true;
        changed_.notify_all();
    }

    std::string held;
    bool checkpoints = true;
    std::map<std::string, Status> outcomes;
    std::vector<std::string> ran;
    std::vector<bool> sawPause;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool reached_ = false;
    bool go_ = false;
};

WriteQueue::Job job(const std::string& name, std::uint64_t size = 100) {
    WriteQueue::Job job;
    job.id = newUUID();
    job.request.file = "/films/" + name;
    job.request.mode = WriteRequest::WriteDetails{};
    job.label = name;
    job.title = name;
    job.isMovie = true;
    job.size = size;
    return job;
}

class WriteQueueTest : public testing::Test {
protected:
    WriteQueueTest() {
        qtApp();
        queue_.onDone = [this](const auto& file) { done_.push_back(file.filename()); };
        queue_.onRemoved = [this](const auto& files) {
            for (const auto& file : files) removed_.push_back(file.filename());
        };
    }
    void addAll(std::initializer_list<const char*> names) {
        std::vector<WriteQueue::Job> jobs;
        for (const char* name : names) jobs.push_back(job(name));
        queue_.add(std::move(jobs));
    }
    void waitForEnd() {
        while (queue_.active()) Async::wait(Async::sleep(1ms));
    }
    void run() {
        queue_.start();
        waitForEnd();
    }
    std::vector<State> states() {
        std::vector<State> list;
        for (const auto& each : queue_.jobs()) list.push_back(each.state);
        return list;
    }

    OwnHome home_;
    HistoryStore history_;
    ScriptedWorker worker_;
    WriteQueue queue_{history_, [this](const auto& request, auto& control, const auto& progress) {
                          return worker_(request, control, progress);
                      }};
    std::vector<std::string> done_;
    std::vector<std::string> removed_;
};

TEST_F(WriteQueueTest, JobsRunOneAfterAnotherInOrderAndEachIsRecorded) {
    addAll({"a", "b"});
    run();
    EXPECT_EQ(worker_.ran, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(states(), (std::vector{State::done, State::done}));
    EXPECT_EQ(done_, (std::vector<std::string>{"a", "b"}));
    ASSERT_EQ(history_.entries().size(), 2u);
    const HistoryEntry& newest = history_.entries().front();
    EXPECT_EQ(newest.path, "/films/b");
    EXPECT_EQ(newest.result, "done");
    EXPECT_EQ(newest.message, "told");
    EXPECT_EQ(newest.batchID, queue_.batch());
    EXPECT_EQ(newest.before, 0.5);
    EXPECT_FALSE(newest.isRestore);
    EXPECT_TRUE(queue_.finished());
}

TEST_F(WriteQueueTest, AFileAddedTwiceBeforeTheRunIsOneJob) {
    addAll({"a"});
    addAll({"a", "b"});
    EXPECT_EQ(queue_.waitingCount(), 2);
}

TEST_F(WriteQueueTest, AddingToAFinishedQueueDismissesItFirstAndADoneFileIsNotReported) {
    worker_.outcomes = {{"b", Status::failed}};
    addAll({"a", "b"});
    run();
    addAll({"a"});
    EXPECT_EQ(queue_.jobs().size(), 1u);
    EXPECT_EQ(removed_, (std::vector<std::string>{"b"}));
    EXPECT_FALSE(queue_.finished());
}

TEST_F(WriteQueueTest, RemovingAWaitingJobReportsItsFile) {
    addAll({"a", "b"});
    queue_.remove(queue_.jobs()[0].id);
    EXPECT_EQ(queue_.jobs().size(), 1u);
    EXPECT_EQ(removed_, (std::vector<std::string>{"a"}));
}

TEST_F(WriteQueueTest, RemoveOnARunningOrFinishedJobDoesNothing) {
    worker_.held = "a";
    addAll({"a", "b"});
    queue_.start();
    worker_.waitUntilHeld();
    queue_.remove(queue_.jobs()[0].id);
    queue_.remove(queue_.jobs()[1].id);
    addAll({"c"});
    EXPECT_EQ(queue_.jobs().size(), 2u);
    worker_.letGo();
    waitForEnd();
    queue_.remove(queue_.jobs()[0].id);
    EXPECT_EQ(queue_.jobs().size(), 2u);
    EXPECT_TRUE(removed_.empty());
}

TEST_F(WriteQueueTest, CancelEndsTheRunningJobAndMarksAllLaterOnesWithoutHistory) {
    worker_.held = "a";
    addAll({"a", "b", "c"});
    queue_.start();
    worker_.waitUntilHeld();
    queue_.cancel();
    worker_.letGo();
    waitForEnd();
    EXPECT_EQ(states(), (std::vector{State::cancelled, State::cancelled, State::cancelled}));
    EXPECT_EQ(queue_.jobs()[1].outcome->message, "cancelled before it started");
    EXPECT_EQ(worker_.ran, (std::vector<std::string>{"a"}));
    EXPECT_TRUE(history_.entries().empty());
    EXPECT_EQ(queue_.failedJobs().size(), 3u);
}

TEST_F(WriteQueueTest, APauseHoldsOnlyTheJobThatWasRunningAndTheNextOneRuns) {
    worker_.held = "a";
    worker_.checkpoints = false;
    bool shownPaused = false;
    queue_.onChanged = [&] {
        const auto* now = queue_.current();
        if (now != nullptr && now->label == "b") shownPaused = queue_.paused();
    };
    addAll({"a", "b"});
    queue_.start();
    worker_.waitUntilHeld();
    queue_.pause();
    worker_.letGo();
    waitForEnd();
    EXPECT_TRUE(shownPaused);
    EXPECT_EQ(worker_.sawPause, (std::vector<bool>{true, false}));
    EXPECT_EQ(states(), (std::vector{State::done, State::done}));
    EXPECT_FALSE(queue_.paused());
}

TEST_F(WriteQueueTest, PauseAndCancelAreRefusedWhileAFileIsBeingChanged) {
    RunControl other;
    addAll({"a"});
    {
        const CriticalSection changing(other);
        queue_.pause();
        queue_.cancel();
        EXPECT_FALSE(queue_.paused());
    }
    run();
    EXPECT_EQ(states(), (std::vector{State::done}));
}

TEST_F(WriteQueueTest, AStoppedJobCountsAsFailedAndTheRestIsNotStarted) {
    worker_.outcomes = {{"a", Status::stopped}};
    addAll({"a", "b"});
    run();
    EXPECT_EQ(states(), (std::vector{State::failed, State::cancelled}));
    ASSERT_EQ(history_.entries().size(), 1u);
    EXPECT_EQ(history_.entries()[0].result, "stopped");
}

TEST_F(WriteQueueTest, AFailedJobDoesNotStopTheRunAndASkippedOneIsRecorded) {
    worker_.outcomes = {{"a", Status::failed}, {"b", Status::skipped}};
    addAll({"a", "b", "c"});
    run();
    EXPECT_EQ(states(), (std::vector{State::failed, State::skipped, State::done}));
    EXPECT_EQ(queue_.skippedCount(), 1);
    EXPECT_EQ(queue_.doneCount(), 1);
    EXPECT_EQ(history_.entries().size(), 3u);
}

TEST_F(WriteQueueTest, RetryMakesANewRunAndTheRetriedJobsEntryCarriesItsBatch) {
    worker_.outcomes = {{"a", Status::failed}};
    addAll({"a", "b"});
    run();
    const std::string first = queue_.batch();
    worker_.outcomes.clear();
    queue_.retryFailed();
    waitForEnd();
    EXPECT_NE(queue_.batch(), first);
    EXPECT_EQ(worker_.ran, (std::vector<std::string>{"a", "b", "a"}));
    EXPECT_EQ(history_.entries().front().batchID, queue_.batch());
    EXPECT_EQ(history_.entries().front().result, "done");
}

TEST_F(WriteQueueTest, TheTotalOfAnEmptyQueueIsOneSoThatAFractionCanBeComputed) {
    EXPECT_EQ(queue_.totalBytes(), 1.0);
    EXPECT_EQ(queue_.doneBytes(), 0.0);
}

TEST_F(WriteQueueTest, ARunningJobCountsByItsFractionAndTheSpeedIsZeroAtFirst) {
    worker_.held = "a";
    addAll({"a", "b"});
    queue_.start();
    worker_.waitUntilHeld();
    while (queue_.jobs()[0].fraction == 0) Async::wait(Async::sleep(1ms));
    EXPECT_EQ(queue_.jobs()[0].step, "working on a");
    EXPECT_EQ(queue_.doneBytes(), 50.0);
    EXPECT_EQ(queue_.totalBytes(), 200.0);
    EXPECT_EQ(queue_.speed(), 0.0);
    EXPECT_EQ(queue_.current()->label, "a");
    worker_.letGo();
    waitForEnd();
    EXPECT_EQ(queue_.doneBytes(), 200.0);
}

TEST_F(WriteQueueTest, TheListOfARunIsClosedToEveryChange) {
    worker_.held = "a";
    addAll({"a", "b"});
    queue_.start();
    worker_.waitUntilHeld();
    queue_.dismiss();
    queue_.clear();
    queue_.retryFailed();
    queue_.start();
    EXPECT_EQ(queue_.jobs().size(), 2u);
    worker_.letGo();
    waitForEnd();
    EXPECT_EQ(worker_.ran, (std::vector<std::string>{"a", "b"}));
}

TEST_F(WriteQueueTest, OfAFloodOfReportsOnlyTheLatestIsShown) {
    int shown = 0;
    WriteQueue queue(history_, [](const auto&, auto&, const StepProgress& progress) {
        for (int i = 0; i < 100000; i++) progress("block", i / 100000.0);
        return WriteOutcome{.status = Status::done};
    });
    queue.onChanged = [&] { shown++; };
    std::vector<WriteQueue::Job> jobs;
    jobs.push_back(job("a"));
    queue.add(std::move(jobs));
    queue.start();
    // Nothing is taken in while the main context is busy elsewhere.
    std::this_thread::sleep_for(100ms);
    while (queue.active()) Async::wait(Async::sleep(1ms));
    EXPECT_LT(shown, 10000);
    EXPECT_EQ(queue.jobs()[0].fraction, 1);
}

TEST_F(WriteQueueTest, WhatWasWrittenIsNotKeptInMemory) {
    WriteQueue::Job written = job("a");
    written.request.mode = WriteRequest::WriteDetails{{Atom{}}};
    WriteQueue::Job failed = job("b");
    failed.request.mode = WriteRequest::WriteDetails{{Atom{}}};
    worker_.outcomes = {{"b", Status::failed}};
    queue_.add({written, failed});
    run();
    const auto atoms = [&](int i) {
        const auto& mode = queue_.jobs()[static_cast<std::size_t>(i)].request.mode;
        return std::get<WriteRequest::WriteDetails>(mode).atoms.size();
    };
    EXPECT_EQ(atoms(0), 0u);
    EXPECT_EQ(atoms(1), 1u) << "a failed job may be tried again";
}

TEST_F(WriteQueueTest, AQueueThatGoesDuringARunTellsItsJobToEndAndIsNotTouchedAfterwards) {
    worker_.held = "a";
    auto queue = std::make_unique<WriteQueue>(
        history_, [this](const auto& request, auto& control, const auto& progress) {
            return worker_(request, control, progress);
        });
    std::vector<WriteQueue::Job> jobs;
    jobs.push_back(job("a"));
    jobs.push_back(job("b"));
    queue->add(std::move(jobs));
    queue->start();
    worker_.waitUntilHeld();
    queue.reset();
    worker_.letGo();
    EXPECT_TRUE(Async::settle(10s));
    EXPECT_EQ(worker_.ran, (std::vector<std::string>{"a"}));
    EXPECT_TRUE(history_.entries().empty());
}

TEST_F(WriteQueueTest, ARestoreIsMarkedInHistoryAndTellsNobodyThatAFileIsDone) {
    WriteQueue::Job restore = job("a");
    restore.request.mode = WriteRequest::RestoreOriginal{};
    std::vector<WriteQueue::Job> jobs;
    jobs.push_back(restore);
    worker_.outcomes = {{"a", Status::done}};
    queue_.add(std::move(jobs));
    run();
    EXPECT_EQ(history_.entries().front().isRestore, true);
    EXPECT_TRUE(done_.empty());
    worker_.outcomes = {{"a", Status::failed}};
    queue_.retryFailed();
    queue_.dismiss();
    EXPECT_TRUE(removed_.empty());
}

TEST_F(WriteQueueTest, AWorkerThatThrowsIsAFailedJobAndTheRunGoesOn) {
    WriteQueue queue(
        history_, [](const auto&, auto&, const auto&) -> WriteOutcome { throw MFError("broken"); });
    std::vector<WriteQueue::Job> jobs;
    jobs.push_back(job("a"));
    queue.add(std::move(jobs));
    queue.start();
    while (queue.active()) Async::wait(Async::sleep(1ms));
    EXPECT_EQ(queue.jobs()[0].state, State::failed);
    EXPECT_EQ(queue.jobs()[0].outcome->message, "broken");
}

TEST_F(WriteQueueTest, AConversionNeedsTheMediaTool) {
    const TempFolder empty;
    const MP4BoxLocator::HelpersAt none(empty.path());
    WriteQueue queue(history_);
    WriteQueue::Job convert = job("a.mkv");
    convert.request.mode = ConvertRequest{"/films/a.mkv", {}, {}, "/out"};
    std::vector<WriteQueue::Job> jobs;
    jobs.push_back(convert);
    queue.add(std::move(jobs));
    queue.start();
    while (queue.active()) Async::wait(Async::sleep(1ms));
    EXPECT_EQ(queue.jobs()[0].outcome->message,
              "the media tool (MP4Box) is missing from this copy of Marlet");
}

TEST_F(WriteQueueTest, TheNextJobBeginsWhenTheRecordOfTheOneBeforeIsInHistorysFile) {
    std::vector<std::size_t> recorded;
    WriteQueue queue(history_, [&](const auto&, auto&, const auto&) {
        recorded.push_back(HistoryStore().entries().size());
        return WriteOutcome{.status = Status::done};
    });
    queue.add({job("a"), job("b"), job("c")});
    queue.start();
    while (queue.active()) Async::wait(Async::sleep(1ms));
    EXPECT_EQ(recorded, (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(HistoryStore().entries().size(), 3u);
}

TEST_F(WriteQueueTest, AQueueThatGoesWhileARecordIsWrittenIsNotTouchedAfterwards) {
    std::filesystem::create_directories(Paths::documentsDir());
    CopyLock other(Paths::historyFile());
    ASSERT_EQ(other.take(), CopyLock::Holder::Us);
    history_.setPatience({.longest = 60s});
    {
        WriteQueue queue(history_, [](const auto&, auto&, const auto&) {
            return WriteOutcome{.status = Status::done};
        });
        queue.add({job("a")});
        queue.start();
        while (queue.doneCount() == 0) Async::wait(Async::sleep(1ms));
        EXPECT_TRUE(queue.active()) << "the record waits for the other copy";
    }
    other.release();
    EXPECT_TRUE(Async::settle(20s));
    EXPECT_EQ(HistoryStore().entries().size(), 1u);
}

TEST_F(WriteQueueTest, TheProgramDoesNotEndBetweenAChangeAndItsRecord) {
    std::promise<void> mayEnd;
    std::atomic<bool> hasChanged = false;
    WriteQueue queue(history_, [&](const auto&, RunControl& control, const auto&) {
        { const CriticalSection changing(control); }
        hasChanged = true;
        mayEnd.get_future().wait();
        return WriteOutcome{.status = Status::done};
    });
    queue.add({job("a")});
    queue.start();
    while (!hasChanged) Async::wait(Async::sleep(1ms));
    EXPECT_FALSE(RunControl::criticalActive());
    EXPECT_TRUE(RunControl::endMustWait());
    mayEnd.set_value();
    while (queue.active()) Async::wait(Async::sleep(1ms));
    EXPECT_FALSE(RunControl::endMustWait());
}

}  // namespace
}  // namespace marlet::test
