// When unfinished work is written, what stays when there is too much of it, and what becomes of an
// offer while it is taken.

#include <algorithm>
#include <filesystem>
#include <future>

#include "app/unfinished_fixture.h"
#include "app/unfinished_json.h"
#include "app/unfinished_shelf.h"
#include "app/unfinished_store.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* charade = "Charade (1963).mp4";
constexpr const char* sintel = "Sintel (2010).mp4";
constexpr const char* detour = "Detour (1945).mp4";

/// Jobs wait in the middle until they are let go, which they are at the latest with the test.
class HeldWorker {
public:
    ~HeldWorker() { letGo(); }
    void letGo() {
        if (!std::exchange(isLetGo_, true)) mayEnd_.set_value();
    }
    /// Those of this name alone, or all of them.
    WriteQueue::Worker worker(const std::string& only = {}) const {
        return [end = end_, only](const WriteRequest& request, auto&, const auto&) {
            if (only.empty() || request.file.filename() == only) end.wait();
            return WriteOutcome{.status = WriteOutcome::Status::done};
        };
    }

private:
    std::promise<void> mayEnd_;
    std::shared_future<void> end_{mayEnd_.get_future()};
    bool isLetGo_ = false;
};

class UnfinishedPace : public UnfinishedTest {
protected:
    ~UnfinishedPace() override { held.letGo(); }
    /// One film runs until it is let go, and another one before it ends at once.
    void runBoth() {
        parts.worker = held.worker(sintel);
        start();
        addConfirmed({charade, sintel});
        queue(charade);
        queue(sintel);
        while (keptQueue() < 2) pause();
        model->queue().start();
    }
    /// How many of the records are of files that wait in the queue.
    static int keptQueue() {
        const auto content = UnfinishedJson::decode(viewOf(kept()));
        if (!content) return 0;
        return static_cast<int>(std::ranges::count_if(
            content->files, [](const auto& each) { return each.file.isQueued; }));
    }

    HeldWorker held;
};

TEST_F(UnfinishedPace, WhileARunIsOnItsJobsAreWrittenNowAndThenAndAtItsEndAtOnce) {
    parts.unfinishedRunPause = 1h;
    runBoth();
    while (model->queue().doneCount() == 0) pause();
    for (int i = 0; i < 20; i++) pause();
    EXPECT_THAT(kept(), HasSubstr("Charade")) << "not for each job";
    held.letGo();
    while (model->queue().active()) pause();
    while (fs::exists(keptFile())) pause();
}

TEST_F(UnfinishedPace, AJobThatEndedIsForgottenWhileTheRunGoesOn) {
    parts.unfinishedRunPause = 1ms;
    runBoth();
    while (kept().find("Sintel") == std::string::npos ||
           kept().find("Charade") != std::string::npos)
        pause();
    held.letGo();
    while (model->queue().active()) pause();
}

TEST_F(UnfinishedPace, AProgramThatEndsInARunKnowsWhichJobsHaveEnded) {
    parts.unfinishedRunPause = 1h;
    runBoth();
    while (model->queue().doneCount() == 0) pause();
    model->keepNow();
    EXPECT_THAT(kept(), HasSubstr("Sintel"));
    EXPECT_THAT(kept(), Not(HasSubstr("Charade")));
    held.letGo();
    while (model->queue().active()) pause();
}

TEST_F(UnfinishedPace, WhatIsUrgentDoesNotWaitForTheRestBetweenTwoWrites) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    double duration = 1111;
    UnfinishedStore store({.file = [&](const fs::path& film) -> std::optional<UnfinishedFile> {
                               UnfinishedFile record{.resolved = {.file = {.url = film}},
                                                     .isAccepted = true};
                               record.resolved.file.duration = duration;
                               return record;
                           },
                           .queue = [] { return std::vector<fs::path>(); },
                           .restores = [] { return std::vector<UnfinishedRestore>(); }});
    store.pause = 1ms;
    store.leastRest = 1h;
    Async::wait(store.open());
    store.touch(library / charade);
    while (kept().find("\"duration\":1111") == std::string::npos) pause();
    duration = 2222;
    store.touch(library / charade);
    for (int i = 0; i < 20; i++) pause();
    EXPECT_THAT(kept(), HasSubstr("\"duration\":1111")) << "it rests";
    store.queueChanged(false);
    while (kept().find("\"duration\":2222") == std::string::npos) pause();
}

TEST_F(UnfinishedPace, AFailureWhileTheOfferIsTakenLeavesItAsItWas) {
    addConfirmed({charade});
    model->keepUnfinished();
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    UnfinishedStore store({.file = [](const fs::path&) { return std::nullopt; },
                           .queue = [] { return std::vector<fs::path>(); },
                           .restores = [] { return std::vector<UnfinishedRestore>(); }});
    Async::wait(store.open());
    ASSERT_TRUE(store.offer());
    const UnfinishedOffer before = *store.offer();
    auto failing = store.take([](const auto&) { throw std::runtime_error("for once"); });
    EXPECT_FALSE(store.offer()) << "on its way";
    EXPECT_THROW(Async::wait(std::move(failing)), std::runtime_error);
    EXPECT_EQ(store.offer(), before);
    EXPECT_EQ(Async::wait(store.take()).files.size(), 1U);
    EXPECT_FALSE(store.offer());
}

TEST_F(UnfinishedPace, AQueueThatStartsWhileFilmsAreLookedAtLeavesTheOfferAsItWas) {
    const fs::path restored = file(detour);
    RestorePoints::saveIfMissing(restored, {}, 1);
    addConfirmed({charade});
    queue(charade);
    Async::wait(model->restoreOriginal(restored));
    parts.worker = held.worker();
    restart();
    ASSERT_THAT(offered(), ElementsAre(detour, charade));
    const UnfinishedOffer before = *model->unfinishedOffer();
    addConfirmed({sintel});
    queue(sintel);
    auto resuming = model->resumeUnfinished();
    model->queue().start();
    Async::wait(std::move(resuming));
    EXPECT_EQ(model->toast(), "The queue is running. Resume when it's finished.");
    EXPECT_EQ(model->unfinishedOffer(), before);
    EXPECT_EQ(model->queue().jobs().size(), 1U);
    held.letGo();
    while (model->queue().active()) pause();
    Async::wait(model->resumeUnfinished());
    EXPECT_EQ(model->queue().waitingCount(), 2);
}

TEST_F(UnfinishedPace, FilesThatLeaveReviewTogetherLeaveTheOfferTogether) {
    addConfirmed({charade, sintel, detour});
    restart();
    ASSERT_EQ(offered().size(), 3U);
    add({library / charade, library / sintel, library / detour});
    model->removeFromReview({library / charade, library / detour});
    EXPECT_THAT(offered(), ElementsAre(sintel));
    model->removeFromReview({library / sintel});
    EXPECT_FALSE(model->unfinishedOffer());
    restart();
    EXPECT_FALSE(model->unfinishedOffer());
}

/// A record of a film that can't be looked at, whose person was at it so many days ago.
std::string awayLine(int number, int daysAgo) {
    const UnfinishedFile film{
        .resolved = {.file = {.url = "/nowhere/" + std::to_string(number) + ".mp4"}},
        .isAccepted = true};
    return UnfinishedJson::line(UnfinishedJson::encode(film), {}, false, 1'000'000 - daysAgo);
}

TEST_F(UnfinishedPace, OfTooManyFilmsThatAreAwayTheNewestStay) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    // The newest have the names that come last.
    constexpr int most = static_cast<int>(UnfinishedShelf::mostAway);
    std::vector<std::string> lines;
    for (int i = 0; i < most + 5; i++) lines.push_back(awayLine(10'000 + i, most + 5 - i));
    writeFile(keptFile(), viewOf(UnfinishedJson::document(lines)));
    start();
    addConfirmed({charade});
    model->keepUnfinished();
    EXPECT_EQ(UnfinishedJson::decode(viewOf(kept()))->files.size(), UnfinishedShelf::mostAway + 1);
    EXPECT_THAT(kept(), Not(HasSubstr("/nowhere/10004.mp4")));
    EXPECT_THAT(kept(), HasSubstr("/nowhere/10005.mp4"));
    EXPECT_THAT(kept(), HasSubstr("/nowhere/11004.mp4"));
}

TEST_F(UnfinishedPace, WhatHasNoRoomBesideNewerWorkIsTheOldest) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    writeFile(keptFile(),
              viewOf(UnfinishedJson::document({awayLine(1, 3), awayLine(2, 9), awayLine(3, 1)})));
    UnfinishedShelf shelf;
    shelf.open();
    shelf.look();
    const auto recordSize = awayLine(1, 3).size();
    shelf.mostBytes = 3 * (recordSize + 200) + 64;
    shelf.put({.changed = {{.resolved = {.file = {.url = file(charade)}}, .isAccepted = true}}});
    shelf.write();
    EXPECT_THAT(kept(), HasSubstr("Charade"));
    EXPECT_THAT(kept(), HasSubstr("/nowhere/1.mp4"));
    EXPECT_THAT(kept(), Not(HasSubstr("/nowhere/2.mp4")));
    EXPECT_THAT(kept(), HasSubstr("/nowhere/3.mp4"));
    EXPECT_LE(kept().size(), shelf.mostBytes);
}

}  // namespace
}  // namespace marlet::test
