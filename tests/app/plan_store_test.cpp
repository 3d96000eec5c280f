#include "app/plan_store.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "convert/pgs_film.h"
#include "foundation/errors.h"
#include "foundation/preferences.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

/// Holds every analysis until it is let go.
class HeldBuilder {
public:
    std::optional<ConvertPlan> operator()(const std::string& file) {
        std::unique_lock lock(mutex_);
        begun_.push_back(file);
        changed_.notify_all();
        changed_.wait(lock, [&] { return open_ || free_ > 0; });
        if (!open_) free_--;
        return ConvertPlan{};
    }
    void letOneGo() {
        const std::lock_guard lock(mutex_);
        free_++;
        changed_.notify_all();
    }
    void letAllGo() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    std::vector<std::string> begun() {
        const std::lock_guard lock(mutex_);
        return begun_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> begun_;
    int free_ = 0;
    bool open_ = false;
};

class Plans : public testing::Test {
protected:
    Plans() {
        qtApp();
        Preferences::install(std::make_unique<MemoryPreferences>());
        store = std::make_unique<PlanStore>(
            [held = held](const PlanStore::Order& order) -> std::optional<ConvertPlan> {
                if (order.depth == PlanStore::Order::Depth::Frames) return ConvertPlan{};
                return (*held)(order.file.string());
            });
    }
    ~Plans() override {
        held->letAllGo();
        store.reset();
        EXPECT_TRUE(Async::settle(20s));
    }
    void untilBegun(std::size_t count) {
        while (held->begun().size() < count) Async::wait(Async::sleep(1ms));
    }
    void finish(const std::string& file) { Async::wait(store->finish(file)); }
    /// A stopped reading gives its place back when it ends, and nobody waits for that.
    void untilFree(int places) {
        while (store->freePlaces() < places) Async::wait(Async::sleep(1ms));
        EXPECT_EQ(store->freePlaces(), places);
    }

    std::shared_ptr<HeldBuilder> held = std::make_shared<HeldBuilder>();
    std::unique_ptr<PlanStore> store;
};

TEST_F(Plans, AThirdWaitsAtTheGateUntilOneOfTheFirstTwoEnds) {
    for (const char* file : {"/a.mkv", "/b.mkv", "/c.mkv"}) store->analyse(file);
    untilBegun(2);
    EXPECT_EQ(store->freePlaces(), 0);
    EXPECT_TRUE(store->isLoading("/c.mkv"));
    held->letOneGo();
    untilBegun(3);
    EXPECT_EQ(held->begun().back(), "/c.mkv");
    held->letAllGo();
    for (const char* file : {"/a.mkv", "/b.mkv", "/c.mkv"}) {
        finish(file);
        EXPECT_NE(store->find(file), nullptr);
    }
    EXPECT_EQ(store->freePlaces(), 2);
}

TEST_F(Plans, ACancelWhileWaitingFreesNothingTwice) {
    for (const char* file : {"/a.mkv", "/b.mkv", "/c.mkv", "/d.mkv"}) store->analyse(file);
    untilBegun(2);
    store->stop("/c.mkv");
    store->stop("/c.mkv");
    EXPECT_EQ(store->freePlaces(), 0);
    held->letAllGo();
    for (const char* file : {"/a.mkv", "/b.mkv", "/d.mkv"}) finish(file);
    EXPECT_EQ(store->freePlaces(), 2);
    EXPECT_EQ(held->begun().size(), 3u) << "the stopped one was never read";
    EXPECT_EQ(store->find("/c.mkv"), nullptr);
}

TEST_F(Plans, AStoppedAnalysisKeepsItsPlaceUntilItsReadingHasEnded) {
    store->analyse("/a.mkv");
    store->analyse("/b.mkv");
    untilBegun(2);
    store->stop("/a.mkv");
    store->analyse("/c.mkv");
    EXPECT_EQ(store->freePlaces(), 0);
    held->letAllGo();
    finish("/b.mkv");
    finish("/c.mkv");
    EXPECT_EQ(store->find("/a.mkv"), nullptr) << "its plan is nobody's";
    untilFree(2);
}

TEST_F(Plans, AFileStoppedAndAnalysedAnewWaitsForItsOwnAnalysis) {
    store->analyse("/a.mkv");
    untilBegun(1);
    store->stop("/a.mkv");
    store->analyse("/a.mkv");
    untilBegun(2);
    held->letOneGo();
    held->letOneGo();
    finish("/a.mkv");
    EXPECT_NE(store->find("/a.mkv"), nullptr);
    untilFree(2);
}

TEST_F(Plans, WhoeverWaitsForAnAnalysisIsLetGoWhenItIsStopped) {
    store->analyse("/a.mkv");
    auto waiting = store->finish("/a.mkv");
    store->stop("/a.mkv");
    Async::wait(std::move(waiting));
    EXPECT_FALSE(store->isLoading("/a.mkv"));
}

TEST_F(Plans, ThousandsOfStoppedFilesInLineAreWalkedAndNotNested) {
    std::vector<std::string> files;
    for (int i = 0; i < 20000; i++) files.push_back("/" + std::to_string(i) + ".mkv");
    for (const std::string& file : files) store->analyse(file);
    untilBegun(2);
    for (const std::string& file : files) store->stop(file);
    held->letAllGo();
    store->analyse("/last.mkv");
    finish("/last.mkv");
    EXPECT_NE(store->find("/last.mkv"), nullptr);
    EXPECT_EQ(held->begun().size(), 3u);
}

TEST_F(Plans, AStoreThatGoesLetsGoThoseAtWorkAndThoseInLine) {
    for (const char* file : {"/a.mkv", "/b.mkv", "/c.mkv"}) store->analyse(file);
    untilBegun(2);
    auto waiting = store->finish("/c.mkv");
    store.reset();
    EXPECT_TRUE(waiting.isReady());
    held->letAllGo();
    EXPECT_TRUE(Async::settle(20s));
    EXPECT_EQ(held->begun().size(), 2u);
}

TEST_F(Plans, OnlyMatroskaFilesHavePlans) {
    store->analyse("/a.mp4");
    store->analyse("/a.mov");
    EXPECT_FALSE(store->isLoading("/a.mp4"));
    EXPECT_FALSE(store->isLoading("/a.mov"));
    EXPECT_TRUE(PlanStore::needsPlan("/A.MKV"));
}

TEST_F(Plans, AFileWithAPlanOrATaskIsNotAnalysedAgainUntilItIsForgotten) {
    held->letAllGo();
    store->analyse("/a.mkv");
    store->analyse("/a.mkv");
    finish("/a.mkv");
    store->analyse("/a.mkv");
    EXPECT_EQ(held->begun().size(), 1u);
    store->forget("/a.mkv");
    EXPECT_EQ(store->find("/a.mkv"), nullptr);
    store->analyse("/a.mkv");
    finish("/a.mkv");
    EXPECT_EQ(held->begun().size(), 2u);
}

TEST_F(Plans, AnAnalysisThatThrowsLeavesNoPlanAndGivesItsPlaceBack) {
    PlanStore failing([](const auto&) -> std::optional<ConvertPlan> { throw MFError("broken"); });
    for (const char* file : {"/a.mkv", "/b.mkv", "/c.mkv"}) {
        failing.analyse(file);
        Async::wait(failing.finish(file));
        EXPECT_EQ(failing.find(file), nullptr);
        EXPECT_FALSE(failing.isLoading(file));
    }
    EXPECT_EQ(failing.freePlaces(), 2);
}

TEST_F(Plans, ThePreferredLanguagesAreThoseOfTheSettingAtThatTime) {
    std::string seen;
    PlanStore reading([&](const PlanStore::Order& order) {
        seen = order.languages;
        return std::optional(ConvertPlan{});
    });
    reading.analyse("/a.mkv");
    Async::wait(reading.finish("/a.mkv"));
    EXPECT_EQ(seen, "English");
    Preferences::current().setText("keepLanguages", "English, French");
    reading.analyse("/b.mkv");
    Async::wait(reading.finish("/b.mkv"));
    EXPECT_EQ(seen, "English, French");
}

ConvertPlan twoSounds() {
    ConvertPlan plan;
    plan.audio.resize(2);
    plan.audio[0].track.number = 2;
    plan.audio[1].track.number = 3;
    plan.audio[0].keep = true;
    plan.audio[1].unsupportedReason = "no way";
    plan.subs.push_back({.id = "mkv4"});
    return plan;
}

/// Two stages; the second waits until it is let go, and says how far it is.
class Stages : public Plans {
protected:
    Stages() {
        store = std::make_unique<PlanStore>(
            [held = held, stopped = stopped](const PlanStore::Order& order) {
                ConvertPlan plan = twoSounds();
                if (order.depth == PlanStore::Order::Depth::Frames) {
                    order.progress(0.25);
                    (*held)(order.file.string());
                    *stopped = !order.progress(0.5);
                    plan.duration = 60;
                }
                return std::optional(plan);
            });
    }
    std::shared_ptr<std::atomic<bool>> stopped = std::make_shared<std::atomic<bool>>(false);
};

TEST_F(Stages, TheFirstPlanIsThereWhileTheFramesAreRead) {
    bool told = false;
    store->onChanged = [&] { told = true; };
    store->analyse("/a.mkv");
    untilBegun(1);
    ASSERT_NE(store->find("/a.mkv"), nullptr);
    EXPECT_FALSE(store->find("/a.mkv")->duration);
    EXPECT_TRUE(told);
    EXPECT_TRUE(store->isLoading("/a.mkv"));
    EXPECT_EQ(store->analysisProgress("/a.mkv"), 0.25);
    held->letAllGo();
    finish("/a.mkv");
    EXPECT_EQ(store->find("/a.mkv")->duration, 60);
    EXPECT_FALSE(store->analysisProgress("/a.mkv"));
}

TEST_F(Stages, WhatAPersonTickedStaysWhenThePlanIsMadeAnew) {
    store->analyse("/a.mkv");
    untilBegun(1);
    EXPECT_TRUE(store->setKeepSound("/a.mkv", 2, false));
    EXPECT_TRUE(store->setKeepSubtitle("/a.mkv", "mkv4", true));
    held->letAllGo();
    finish("/a.mkv");
    const ConvertPlan& plan = *store->find("/a.mkv");
    EXPECT_EQ(plan.duration, 60);
    EXPECT_FALSE(plan.audio[0].keep);
    EXPECT_TRUE(plan.audio[0].touched);
    EXPECT_TRUE(plan.subs[0].keep);
}

TEST_F(Stages, ATrackThatIsNotThereOrCannotBeKeptIsNotTicked) {
    held->letAllGo();
    store->analyse("/a.mkv");
    finish("/a.mkv");
    EXPECT_FALSE(store->setKeepSound("/a.mkv", 9, true));
    EXPECT_FALSE(store->setKeepSound("/a.mkv", 3, true));
    EXPECT_FALSE(store->setKeepSubtitle("/a.mkv", "mkv9", true));
    EXPECT_FALSE(store->setKeepSound("/b.mkv", 2, true));
}

TEST_F(Stages, AStopEndsTheReadingOfTheFrames) {
    store->analyse("/a.mkv");
    untilBegun(1);
    store->stop("/a.mkv");
    EXPECT_FALSE(store->analysisProgress("/a.mkv"));
    held->letAllGo();
    untilFree(2);
    EXPECT_TRUE(*stopped);
    EXPECT_FALSE(store->find("/a.mkv")->duration);
}

TEST_F(Stages, FramesThatCannotBeReadLeaveThePlanOfTheFirstStage) {
    PlanStore failing([](const PlanStore::Order& order) {
        if (order.depth == PlanStore::Order::Depth::Frames) throw MFError("broken");
        return std::optional(twoSounds());
    });
    auto planning = failing.planFor("/a.mkv");
    const auto plan = Async::wait(std::move(planning));
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->audio.size(), 2u);
}

TEST_F(Stages, APlanIsBuiltOnDemandAndForMatroskaFilesAlone) {
    held->letAllGo();
    auto planning = store->planFor("/a.mkv");
    EXPECT_TRUE(Async::wait(std::move(planning)));
    auto none = store->planFor("/a.mp4");
    EXPECT_FALSE(Async::wait(std::move(none)));
}

/// The real builder on a film with picture subtitles.
class PicturePlans : public Plans {
protected:
    using Depth = PlanStore::Order::Depth;
    std::optional<ConvertPlan> built(Depth depth, std::function<bool(double)> progress = {}) const {
        return PlanStore::build({file, "English", depth, std::move(progress)});
    }
    TempFolder folder;
    const std::filesystem::path file = folder.write("film.mkv", filmWithPictures());
};

TEST_F(PicturePlans, OnlyTheSecondStageLooksAtThePictures) {
    const auto first = built(Depth::Tracks);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->subs.size(), 3u);
    EXPECT_FALSE(first->subs.at(0).isForced);
    const auto second = built(Depth::Frames);
    ASSERT_TRUE(second);
    ASSERT_EQ(second->subs.size(), 4u);
    EXPECT_TRUE(second->subs.at(0).isForced);
    EXPECT_EQ(second->subs.at(3).id, "pgsforced4");
}

TEST_F(PicturePlans, OneProgressRunsOverTheFramesAndThePictures) {
    std::vector<double> shares;
    built(Depth::Frames, [&](double share) {
        shares.push_back(share);
        return true;
    });
    EXPECT_TRUE(std::ranges::is_sorted(shares));
    ASSERT_FALSE(shares.empty());
    EXPECT_LT(shares.front(), 0.5);
    EXPECT_GT(shares.back(), 0.5);
    EXPECT_LE(shares.back(), 1.0);
}

TEST_F(PicturePlans, AStopEndsTheReadingOfThePictures) {
    int asked = 0;
    const auto plan = built(Depth::Frames, [&](double share) {
        asked += share >= 0.5 ? 1 : 0;
        return share < 0.5;
    });
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(plan->subs.size(), 3u) << "half a count tells nothing";
}

TEST_F(PicturePlans, WhatAPersonTickedStaysWhenThePicturesWereLookedAt) {
    store = std::make_unique<PlanStore>([held = held](const PlanStore::Order& order) {
        if (order.depth == Depth::Frames) (*held)(order.file.string());
        return PlanStore::build(order);
    });
    store->analyse(file);
    untilBegun(1);
    ASSERT_NE(store->find(file), nullptr);
    ASSERT_TRUE(store->setKeepSubtitle(file, "mkv2", false));
    held->letAllGo();
    finish(file.string());
    const SubChoice& choice = store->find(file)->subs.at(0);
    EXPECT_TRUE(choice.isForced) << "what was found out about it is news";
    EXPECT_EQ(choice.label, "English · Foreign parts only");
    EXPECT_FALSE(choice.keep);
    EXPECT_TRUE(choice.touched);
    EXPECT_TRUE(store->find(file)->subs.at(3).keep);
}

}  // namespace
}  // namespace marlet::test
