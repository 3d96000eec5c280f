#include <filesystem>

#include "app/model_fixture.h"
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
    model->restoreBatch({one, one});
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
    model->restoreBatch({failed, restored, entry("pointless.mp4", false), vanished});
    EXPECT_TRUE(model->queue().jobs().empty());
    EXPECT_FALSE(model->queue().active());
    EXPECT_EQ(model->notice, "Nothing to restore: no saved originals for those files.");
}

TEST_F(Restoring, AFailedEntryDoesNotHideTheDoneOneOfTheSameFile) {
    HistoryEntry failed = entry("a.mp4");
    failed.result = "failed";
    HistoryEntry done = failed;
    done.result = "done";
    model->restoreBatch({failed, done});
    untilEnded();
    EXPECT_EQ(model->queue().jobs().size(), 1u);
}

TEST_F(Restoring, AnEpisodeIsLabelledByItsShowAndNumber) {
    HistoryEntry episode = entry("a.mp4");
    episode.isMovie = false;
    episode.show = "A Show";
    episode.season = 2;
    episode.episode = 5;
    model->restoreBatch({episode});
    untilEnded();
    EXPECT_EQ(labels().at(0), "Restore original details · A Show · S2E5");
    EXPECT_EQ(model->queue().jobs()[0].show, "A Show");
    EXPECT_EQ(model->queue().jobs()[0].title, "Title of a.mp4");
}

TEST_F(Restoring, WhileJobsWaitARestoreIsAddedAndNotStarted) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    model->restoreBatch({entry("a.mp4")});
    model->restoreOriginal(file("b.mp4"));
    EXPECT_FALSE(model->queue().active());
    EXPECT_THAT(labels(),
                testing::ElementsAre("Charade", "Restore original details · Title of a.mp4",
                                     "Restore original details · b"));
}

TEST_F(Restoring, AFinishedQueueIsDismissedFirst) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    runQueue();
    model->restoreOriginal(library / "Charade (1963).mp4");
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Charade (1963)"));
}

TEST_F(Restoring, WhileTheQueueRunsNothingIsRestored) {
    model->restoreBatch({entry("a.mp4")});
    model->restoreBatch({entry("b.mp4")});
    model->restoreOriginal(file("c.mp4"));
    untilEnded();
    EXPECT_EQ(model->queue().jobs().size(), 1u);
}

TEST_F(Restoring, AFileInReviewIsNamedByItsMatchOrItsDraft) {
    add({file("Charade (1963).mp4"), file("Sintel (2010).mp4")});
    Async::wait(model->loadDrafts(*itemOf("Sintel (2010).mp4")));
    model->drafts().find(library / "Sintel (2010).mp4")->details.title = "Mine";
    model->restoreOriginal(library / "Charade (1963).mp4");
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Charade"));
    EXPECT_EQ(model->queue().jobs()[0].year, 1963);
    model->restoreOriginal(library / "Sintel (2010).mp4");
    untilEnded();
    EXPECT_THAT(labels(), testing::ElementsAre("Restore original details · Mine"));
}

TEST_F(Restoring, ARestoredFileStaysWhereItIsInReview) {
    add({file("Charade (1963).mp4")});
    model->restoreOriginal(library / "Charade (1963).mp4");
    untilEnded();
    EXPECT_NE(find("Charade (1963).mp4"), nullptr);
    model->queue().dismiss();
    EXPECT_EQ(model->fileCount(), 1);
}

}  // namespace
}  // namespace marlet::test
