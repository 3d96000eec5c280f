#include "screens/queue/queue_model.h"

#include "app/model_fixture.h"
#include "screens/base/qt_text.h"
#include "screens/queue/time_left.h"
#include "screens/staged_worker.h"

namespace marlet::test {
namespace {

using Status = WriteOutcome::Status;

constexpr const char* rawKept =
    "writing failed (pwrite: Input/output error). The verified copy is kept at /private/copy.mp4; "
    "Marlet finishes it the next time it opens";

class QueueScreen : public ModelTest {
protected:
    QueueScreen() {
        parts.worker = StagedWorker::of(staged);
        make();
        queue = std::make_unique<QueueModel>(*model);
        model->onChanged = [this] { queue->refresh(); };
    }
    ~QueueScreen() override {
        model->onChanged = nullptr;
        queue.reset();
    }

    void give(const std::vector<std::string>& names) {
        std::vector<WriteQueue::Job> jobs;
        for (const std::string& name : names) jobs.push_back(stagedJob(name));
        model->queue().add(std::move(jobs));
    }
    void untilFinished() {
        while (!model->queue().finished()) pause();
    }
    QVariant cell(int row, const char* name) {
        const QAbstractItemModel& jobs = *queue->jobs();
        return jobs.data(jobs.index(row, 0), jobs.roleNames().key(name));
    }
    std::string text(int row, const char* name) { return fromQt(cell(row, name).toString()); }
    std::vector<std::string> column(const char* name) {
        std::vector<std::string> texts;
        for (int row = 0; row < queue->jobs()->rowCount(); row++) texts.push_back(text(row, name));
        return texts;
    }
    static WriteOutcome failed(const std::string& message, Status status = Status::failed) {
        return {.status = status, .message = message};
    }

    std::shared_ptr<StagedWorker> staged = std::make_shared<StagedWorker>();
    std::unique_ptr<QueueModel> queue;
};

TEST_F(QueueScreen, WithoutJobsItIsEmpty) {
    EXPECT_EQ(queue->stage(), "empty");
    EXPECT_EQ(queue->title(), "");
}

TEST_F(QueueScreen, WaitingJobsTellHowManyTheyAre) {
    give({"a.mp4", "b.mp4"});
    EXPECT_EQ(queue->stage(), "waiting");
    EXPECT_EQ(queue->title(), "2 waiting");
    EXPECT_EQ(column("label"), (std::vector<std::string>{"Film a.mp4", "Film b.mp4"}));
    EXPECT_EQ(text(0, "second"), "details and cover art · a.mp4");
    EXPECT_EQ(text(0, "spoken"), "Film a.mp4, Waiting, details and cover art · a.mp4");
}

TEST_F(QueueScreen, FilesChangedInPlaceStayInTheFolderOfTheOriginal) {
    give({"a.mp4"});
    EXPECT_EQ(queue->detail(), "Files are changed in the folder of the original");
}

TEST_F(QueueScreen, NewFilesNameTheFolderTheyGoTo) {
    WriteQueue::Job job = stagedJob("a.mkv");
    job.request.mode = ConvertRequest{job.request.file, {}, {}, "/home of one/Desktop"};
    model->queue().add({job});
    EXPECT_EQ(queue->detail(), "New files go to Desktop");
    // Those changed in place need no word then.
    give({"b.mp4"});
    EXPECT_EQ(queue->detail(), "New files go to Desktop");
    WriteQueue::Job other = stagedJob("c.mp4");
    other.request.dropTracks = {2};
    other.request.outputDir = "/films";
    model->queue().add({other});
    EXPECT_EQ(queue->detail(), "New files go to several folders");
    queue->remove("job of a.mkv");
    EXPECT_EQ(queue->detail(), "New files go to the folder of the original");
}

TEST_F(QueueScreen, OneIsRemovedOrAllAre) {
    give({"a.mp4", "b.mp4", "c.mp4"});
    queue->remove("job of b.mp4");
    EXPECT_EQ(column("label"), (std::vector<std::string>{"Film a.mp4", "Film c.mp4"}));
    queue->removeAll();
    EXPECT_EQ(queue->stage(), "empty");
    EXPECT_EQ(queue->jobs()->rowCount(), 0);
}

TEST_F(QueueScreen, ARunTellsWhatItMakesHowManyAndWhatHappensNow) {
    staged->held = {"a.mp4"};
    give({"a.mp4", "b.mp4"});
    queue->start();
    EXPECT_EQ(queue->stage(), "running");
    EXPECT_EQ(queue->title(), "Making files Apple TV ready");
    EXPECT_EQ(queue->detail(), "2 files");
    EXPECT_EQ(queue->runningRow(), 0);
    staged->report("Copying", 0.5);
    while (queue->progress() == 0) pause();
    EXPECT_EQ(queue->now(), "Film a.mp4: Copying");
    EXPECT_DOUBLE_EQ(queue->progress(), 0.25);
    EXPECT_EQ(text(0, "kind"), "running");
    EXPECT_EQ(text(0, "second"), "details and cover art · Copying");
    EXPECT_DOUBLE_EQ(cell(0, "fraction").toDouble(), 0.5);
    staged->end();
    untilFinished();
    EXPECT_EQ(queue->runningRow(), -1);
}

TEST_F(QueueScreen, ARunThatRebuildsNothingIsCalledByWhatItDoes) {
    staged->held = {"a.mp4"};
    WriteQueue::Job job = stagedJob("a.mp4");
    job.request.fixLayout = false;
    model->queue().add({job});
    queue->start();
    EXPECT_EQ(queue->title(), "Writing details");
    staged->end();
    untilFinished();

    job = stagedJob("a.mp4");
    job.request.mode = WriteRequest::RestoreOriginal{};
    model->queue().add({job});
    queue->start();
    EXPECT_EQ(queue->title(), "Putting original details back");
    staged->end();
    untilFinished();
}

TEST_F(QueueScreen, NumbersStayForHalfASecond) {
    staged->held = {"a.mp4"};
    give({"a.mp4"});
    queue->start();
    staged->report("Copying", 0.25);
    while (queue->progress() == 0) pause();
    staged->report("Copying", 0.5);
    // It comes with the next turn of the event loop, and waits there.
    QCoreApplication::sendPostedEvents();
    queue->refresh();
    EXPECT_DOUBLE_EQ(queue->progress(), 0.25);
    EXPECT_DOUBLE_EQ(cell(0, "fraction").toDouble(), 0.25);
    while (queue->progress() < 0.5) pause();
    EXPECT_DOUBLE_EQ(cell(0, "fraction").toDouble(), 0.5);
    staged->end();
    untilFinished();
}

TEST_F(QueueScreen, DuringACriticalSectionPauseAndCancelAreLocked) {
    staged->held = {"a.mp4"};
    give({"a.mp4"});
    queue->start();
    EXPECT_FALSE(queue->locked());
    staged->setCritical(true);
    queue->pause();  // refused, and the lock shows at once
    EXPECT_TRUE(queue->locked());
    EXPECT_FALSE(queue->paused());
    queue->cancel();
    EXPECT_FALSE(queue->cancelling());
    staged->setCritical(false);
    while (queue->locked()) pause();
    queue->pause();
    EXPECT_TRUE(queue->paused());
    queue->resume();
    staged->end();
    untilFinished();
    EXPECT_EQ(queue->title(), "All done");
}

TEST_F(QueueScreen, TheLockIsSeenWithoutBeingTold) {
    staged->held = {"a.mp4"};
    give({"a.mp4"});
    queue->start();
    staged->setCritical(true);
    while (!queue->locked()) pause();
    staged->setCritical(false);
    staged->end();
    untilFinished();
    EXPECT_FALSE(queue->locked());
}

TEST_F(QueueScreen, PausedIsShownWhileTheNextJobRuns) {
    staged->held = {"a.mp4", "b.mp4"};
    give({"a.mp4", "b.mp4"});
    queue->start();
    queue->pause();
    EXPECT_TRUE(queue->paused());
    EXPECT_EQ(queue->detail(), "2 files");
    staged->end();
    while (queue->runningRow() != 1) pause();
    EXPECT_TRUE(queue->paused());
    EXPECT_EQ(text(1, "kind"), "running");
    staged->end();
    untilFinished();
    EXPECT_FALSE(queue->paused());
}

TEST_F(QueueScreen, CancelEndsTheRunAndNothingCountsAsFailed) {
    staged->held = {"b.mp4"};
    give({"a.mp4", "b.mp4", "c.mp4"});
    queue->start();
    while (queue->runningRow() != 1) pause();
    queue->cancel();
    EXPECT_TRUE(queue->cancelling());
    EXPECT_EQ(queue->title(), "Cancelling…");
    staged->endCancelled();
    untilFinished();
    EXPECT_FALSE(queue->cancelling());
    EXPECT_EQ(queue->title(), "Finished, 2 cancelled");
    EXPECT_EQ(queue->detail(), "1 done, 2 cancelled");
    EXPECT_TRUE(queue->canRetry());
    EXPECT_FALSE(queue->failures());
    EXPECT_EQ(text(0, "happened"), "Cancelled.");
    EXPECT_EQ(text(0, "next"), "Nothing was changed.");
    EXPECT_EQ(text(1, "technical"), "cancelled before it started");
}

TEST_F(QueueScreen, AllDoneSaysSoAndExplainsNothing) {
    staged->outcomes["a.mp4"] = {.status = Status::done,
                                 .before = 3.214,
                                 .after = 0.5,
                                 .message = "Details written",
                                 .output = "/films/a.mp4"};
    give({"a.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(queue->stage(), "finished");
    EXPECT_EQ(queue->title(), "All done");
    EXPECT_EQ(queue->detail(), "1 done");
    EXPECT_FALSE(queue->canRetry());
    EXPECT_TRUE(queue->canShow());
    EXPECT_EQ(queue->outputs(), QList<QUrl>{QUrl("file:///films/a.mp4")});
    EXPECT_EQ(text(0, "second"), "details and cover art · Details written");
    EXPECT_EQ(text(0, "happened") + text(0, "next"), "");
    EXPECT_EQ(text(0, "technical"), "Details written\nSound layout 3.21 s → 0.50 s");
}

TEST_F(QueueScreen, AFinishedRunWithOneFailureAndThreeDoneTellsBoth) {
    staged->outcomes["b.mp4"] = failed("another app has this file open for writing");
    give({"a.mp4", "b.mp4", "c.mp4", "d.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(queue->title(), "Finished, 1 failed");
    EXPECT_EQ(queue->detail(), "3 done, 1 failed (the originals are untouched)");
    EXPECT_TRUE(queue->failures());
}

TEST_F(QueueScreen, SkippedJobsAreCountedLast) {
    staged->outcomes["a.mp4"] = failed("no", Status::skipped);
    staged->outcomes["b.mp4"] = failed("no");
    give({"a.mp4", "b.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(queue->detail(), "0 done, 1 failed (the originals are untouched), 1 skipped");
}

TEST_F(QueueScreen, WhatFailedStandsFirstUnderItsHeading) {
    staged->outcomes["b.mp4"] = failed("no", Status::skipped);
    staged->outcomes["c.mp4"] = failed("no");
    staged->outcomes["d.mp4"] = failed("the file's identity changed during the write; check it");
    give({"a.mp4", "b.mp4", "c.mp4", "d.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(column("label"),
              (std::vector<std::string>{"Film d.mp4", "Film c.mp4", "Film b.mp4", "Film a.mp4"}));
    EXPECT_EQ(column("group"), (std::vector<std::string>{"Failed", "Failed", "Skipped", "Done"}));
}

TEST_F(QueueScreen, OneKindOfResultNeedsNoHeading) {
    give({"a.mp4", "b.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(column("group"), (std::vector<std::string>{"", ""}));
}

TEST_F(QueueScreen, AFailureSaysWhatHappenedWhatNextAndItsRawMessage) {
    staged->outcomes["a.mp4"] = {
        .status = Status::failed, .before = 2.5, .message = "Not enough free space: need 2 GB"};
    give({"a.mp4"});
    queue->start();
    untilFinished();
    EXPECT_EQ(text(0, "happened"), "There isn't enough free space.");
    EXPECT_EQ(text(0, "next"), "Free up some space, then press Retry.");
    EXPECT_EQ(text(0, "technical"), "Not enough free space: need 2 GB\nSound layout 2.50 s");
    EXPECT_EQ(text(0, "second"), "details and cover art");
    EXPECT_FALSE(cell(0, "damaged").toBool());
    EXPECT_FALSE(cell(0, "open").toBool());
    queue->toggle("job of a.mp4");
    EXPECT_TRUE(cell(0, "open").toBool());
    queue->toggle("job of a.mp4");
    EXPECT_FALSE(cell(0, "open").toBool());
}

TEST_F(QueueScreen, AFileThatMayBeDamagedShowsTheRawSentenceFirst) {
    const std::vector<std::string> sentences = {
        rawKept,
        "after writing, the sound layout measured 2.0 s and the original could not be put back; "
        "the original copy is at /private/original.mp4",
        "the file's identity changed during the write; check it"};
    for (const std::string& sentence : sentences) {
        staged->outcomes["a.mp4"] = failed(sentence, Status::stopped);
        give({"a.mp4", "b.mp4"});
        queue->start();
        untilFinished();
        EXPECT_TRUE(cell(0, "damaged").toBool());
        EXPECT_EQ(text(0, "happened"), sentence);
        EXPECT_NE(text(0, "next"), "The original was not changed.");
        // Then the head says nothing of untouched originals.
        EXPECT_EQ(queue->detail(), "0 done, 1 failed, 1 cancelled");
        queue->clearResults();
    }
}

TEST_F(QueueScreen, RetryRunsWhatFailedAgainInItsOldPlace) {
    staged->outcomes["b.mp4"] = failed("no");
    give({"a.mp4", "b.mp4"});
    queue->start();
    untilFinished();
    EXPECT_TRUE(queue->canRetry());
    staged->outcomes.clear();
    queue->retryFailed();
    EXPECT_EQ(queue->stage(), "running");
    untilFinished();
    EXPECT_EQ(queue->title(), "All done");
    EXPECT_EQ(column("label"), (std::vector<std::string>{"Film a.mp4", "Film b.mp4"}));
    EXPECT_EQ(text(1, "happened"), "");
    queue->clearResults();
    EXPECT_EQ(queue->stage(), "empty");
}

TEST_F(QueueScreen, AJobsFileIsTheOneItWrote) {
    staged->outcomes["a.mkv"] = {.status = Status::done, .output = "/elsewhere/a.m4v"};
    give({"a.mkv", "b.mp4"});
    EXPECT_EQ(queue->filesOf("job of b.mp4"), QList<QUrl>{QUrl("file:///films/b.mp4")});
    queue->start();
    untilFinished();
    EXPECT_EQ(queue->filesOf("job of a.mkv"), QList<QUrl>{QUrl("file:///elsewhere/a.m4v")});
    EXPECT_EQ(queue->filesOf("no such job"), QList<QUrl>());
}

TEST(TimeLeft, IsToldInRoundWords) {
    EXPECT_EQ(timeLeftWords(0), "10 seconds");
    EXPECT_EQ(timeLeftWords(11), "20 seconds");
    EXPECT_EQ(timeLeftWords(50), "50 seconds");
    EXPECT_EQ(timeLeftWords(51), "1 minute");
    EXPECT_EQ(timeLeftWords(89), "1 minute");
    EXPECT_EQ(timeLeftWords(170), "3 minutes");
    EXPECT_EQ(timeLeftWords(59.4 * 60), "59 minutes");
    EXPECT_EQ(timeLeftWords(59.6 * 60), "1 hour");
    EXPECT_EQ(timeLeftWords(64 * 60), "1 hour 5 minutes");
    EXPECT_EQ(timeLeftWords(119 * 60), "2 hours");
    EXPECT_EQ(timeLeftWords(27 * 3600), "27 hours");
}

TEST(TimeLeft, WhatIsNoTimeHasNoWords) {
    EXPECT_EQ(timeLeftWords(-1), "");
    EXPECT_EQ(timeLeftWords(1.0 / 0.0), "");
    EXPECT_EQ(timeLeftWords(0.0 / 0.0), "");
    EXPECT_EQ(timeLeftWords(1e12), "");
}

}  // namespace
}  // namespace marlet::test
