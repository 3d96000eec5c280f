#include <filesystem>
#include <future>

#include "app/model_fixture.h"
#include "foundation/errors.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using State = WriteQueue::Job::State;

class Restoring : public ModelTest {
protected:
    HistoryEntry entry(const std::string& name, bool hasPoint = true) {
        const fs::path path = file(name);
        if (hasPoint) RestorePoints::saveIfMissing(path, {}, 1);
        HistoryEntry entry;
        entry.path = path.string();
        entry.title = "Title of " + name;
        entry.isMovie = true;
        entry.result = "done";
        entry.year = 1999;
        return entry;
    }
    std::vector<std::string> labels() {
        std::vector<std::string> list;
        for (const auto& job : model->queue().jobs()) list.push_back(job.label);
        return list;
    }
    void untilEnded() {
        while (model->queue().active()) pause();
    }
};

TEST_F(Restoring, TwoEntriesForOnePathMakeOneJobWhichStartsAtOnce) {
    const HistoryEntry one = entry("a.mp4");
    Async::wait(model->restoreBatch({one, one}));
    EXPECT_TRUE(model->queue().active());
    untilEnded();
    ASSERT_EQ(model->queue().jobs().size(), 1u);
    const auto& job = model->queue().jobs()[0];
    EXPECT_EQ(job.label, "Restore original details · Title of a.mp4");
    EXPECT_EQ(job.how, "In place");
    EXPECT_EQ(job.year, 1999);
    EXPECT_TRUE(job.request.isRestore());
    EXPECT_EQ(history.entries().front().isRestore, true);
}

TEST_F(Restoring, FailedRestoredPointlessAndVanishedEntriesMakeNoJob) {
    HistoryEntry failed = entry("failed.mp4");
    failed.result = "failed";
    HistoryEntry restored = entry("restored.mp4");
    restored.isRestore = true;
    const HistoryEntry vanished = entry("vanished.mp4");
    fs::remove(vanished.path);
    Async::wait(model->restoreBatch({failed, restored, entry("pointless.mp4", false), vanished}));
    EXPECT_TRUE(model->queue().jobs().empty());
    EXPECT_FALSE(model->queue().active());
    EXPECT_EQ(model->notice, "Nothing to restore: no saved originals for those files.");
}

TEST_F(Restoring, AFailedEntryDoesNotHideTheDoneOneOfTheSameFile) {
    HistoryEntry failed = entry("a.mp4");
    failed.result = "failed";
    HistoryEntry done = failed;
    done.result = "done";
    Async::wait(model->restoreBatch({failed, done}));
    untilEnded();
    EXPECT_EQ(model->queue().jobs().size(), 1u);
}

TEST_F(Restoring, AnEpisodeIsLabelledByItsShowAndNumber) {
    HistoryEntry episode = entry("a.mp4");
    episode.isMovie = false;
    episode.show = "A Show";
    episode.season = 2;
    episode.episode = 5;
    Async::wait(model->restoreBatch({episode}));
    untilEnded();
    EXPECT_EQ(labels().at(0), "Restore original details · A Show · S2E5");
    EXPECT_EQ(model->queue().jobs()[0].show, "A Show");
    EXPECT_EQ(model->queue().jobs()[0].title, "Title of a.mp4");
}

TEST_F(Restoring, WhileJobsWaitARestoreIsAddedAndNotStarted) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    Async::wait(model->restoreBatch({entry("a.mp4")}));
    Async::wait(model->restoreOriginal(file("b.mp4")));
    EXPECT_FALSE(model->queue().active());
    EXPECT_THAT(labels(),
                testing::ElementsAre("Charade", "Restore original details · Title of a.mp4",
                                     "Restore original details · b"));
}

TEST_F(Restoring, AFinishedQueueIsDismissedFirst) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    runQueue();
    Async::wait(model->restoreOriginal(library / "Charade (1963).mp4"));
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Charade (1963)"));
}

TEST_F(Restoring, WhileTheQueueRunsNothingIsRestored) {
    Async::wait(model->restoreBatch({entry("a.mp4")}));
    Async::wait(model->restoreBatch({entry("b.mp4")}));
    Async::wait(model->restoreOriginal(file("c.mp4")));
    untilEnded();
    EXPECT_EQ(model->queue().jobs().size(), 1u);
}

TEST_F(Restoring, AQueueThatStartsWhileTheFilesAreLookedAtIsLeftAlone) {
    std::promise<void> mayEnd;
    const std::shared_future<void> end(mayEnd.get_future());
    parts.worker = [end](const WriteRequest&, auto&, const auto&) {
        end.wait();
        return WriteOutcome{.status = WriteOutcome::Status::done};
    };
    make();
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    auto restoring = model->restoreBatch({entry("a.mp4")});
    auto restoringOne = model->restoreOriginal(file("b.mp4"));
    model->queue().start();
    EXPECT_FALSE(Async::wait(std::move(restoring)));
    Async::wait(std::move(restoringOne));
    EXPECT_THAT(labels(), testing::ElementsAre("Charade"));
    mayEnd.set_value();
    untilEnded();
}

TEST_F(Restoring, AModelThatGoesWhileTheFilesAreLookedAtIsNotTouchedAfterwards) {
    auto restoring = model->restoreBatch({entry("a.mp4")});
    auto restoringOne = model->restoreOriginal(file("b.mp4"));
    model.reset();
    EXPECT_THROW(Async::wait(std::move(restoring)), CancelError);
    EXPECT_THROW(Async::wait(std::move(restoringOne)), CancelError);
}

TEST_F(Restoring, AFileInReviewIsNamedByItsMatchOrItsDraft) {
    add({file("Charade (1963).mp4"), file("Sintel (2010).mp4")});
    Async::wait(model->loadDrafts(*itemOf("Sintel (2010).mp4")));
    model->drafts().find(library / "Sintel (2010).mp4")->details.title = "Mine";
    Async::wait(model->restoreOriginal(library / "Charade (1963).mp4"));
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Charade"));
    EXPECT_EQ(model->queue().jobs()[0].year, 1963);
    Async::wait(model->restoreOriginal(library / "Sintel (2010).mp4"));
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Mine"));
}

TEST_F(Restoring, ARestoredFileStaysWhereItIsInReview) {
    add({file("Charade (1963).mp4")});
    Async::wait(model->restoreOriginal(library / "Charade (1963).mp4"));
    untilEnded();
    EXPECT_NE(find("Charade (1963).mp4"), nullptr);
    model->queue().dismiss();
    EXPECT_EQ(model->fileCount(), 1);
}

}  // namespace
}  // namespace marlet::test
