#include "sources/async.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <atomic>
#include <thread>

#include "foundation/errors.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using namespace std::chrono_literals;

class AsyncTest : public testing::Test {
protected:
    AsyncTest() { test::qtApp(); }
};

/// Counts how many run at once and in which order they start.
struct Meter {
    int running = 0;
    int most = 0;
    std::vector<std::size_t> started;
    std::vector<Gate> gates = std::vector<Gate>(16);
};

Task<> measured(std::shared_ptr<Meter> meter, std::size_t index) {
    meter->started.push_back(index);
    meter->most = std::max(meter->most, ++meter->running);
    co_await meter->gates[index];
    meter->running--;
}

Task<> failing(std::string text) {
    co_await Async::sleep(1ms);
    throw MFError(text);
}

Task<int> doubled(int value) {
    co_await Async::sleep(1ms);
    co_return value * 2;
}

Task<std::unique_ptr<int>> movable() {
    co_return std::make_unique<int>(7);
}

TEST_F(AsyncTest, WaitingGivesTheValueOfATaskThatTakesTime) {
    EXPECT_EQ(Async::wait(doubled(21)), 42);
}

TEST_F(AsyncTest, WaitingGivesAValueThatCanOnlyBeMoved) {
    EXPECT_EQ(*Async::wait(movable()), 7);
}

TEST_F(AsyncTest, WaitingThrowsWhatTheTaskThrows) {
    try {
        Async::wait(failing("no such show"));
        FAIL();
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "no such show");
    }
}

TEST_F(AsyncTest, WaitingEndsWithACancelWhenTheApplicationQuits) {
    CancelToken cancel;
    Async::post([] { QCoreApplication::exit(0); });
    EXPECT_THROW(Async::wait(Async::sleep(60s, cancel)), CancelError);
    cancel.cancel();  // ends the sleeper that stayed behind
    // Qt remembers a quit until the application's own loop has run.
    Async::post([] { QCoreApplication::exit(0); });
    QCoreApplication::exec();
}

TEST_F(AsyncTest, ASleepEndsAsSoonAsItIsCancelled) {
    CancelToken cancel;
    Async::post([cancel] { cancel.cancel(); });
    EXPECT_THROW(Async::wait(Async::sleep(60s, cancel)), CancelError);
}

TEST_F(AsyncTest, ASleepOnACancelledTokenNeverStarts) {
    CancelToken cancel;
    cancel.cancel();
    Task<> sleeping = Async::sleep(60s, cancel);
    EXPECT_TRUE(sleeping.isReady());
    EXPECT_THROW(Async::wait(std::move(sleeping)), CancelError);
}

TEST_F(AsyncTest, CancellingResumesTheWaitersBeforeItReturns) {
    CancelToken cancel;
    Task<> sleeping = Async::sleep(60s, cancel);
    EXPECT_FALSE(sleeping.isReady());
    cancel.cancel();
    EXPECT_TRUE(sleeping.isReady());
}

TEST_F(AsyncTest, ACancelCallIsMadeOnceAndAtOnceOnACancelledToken) {
    CancelToken cancel;
    int calls = 0;
    const auto kept = cancel.onCancel([&calls] { calls++; });
    {
        const auto dropped = cancel.onCancel([&calls] { calls += 100; });
    }
    cancel.cancel();
    cancel.cancel();
    EXPECT_EQ(calls, 1);
    const auto late = cancel.onCancel([&calls] { calls++; });
    EXPECT_EQ(calls, 2);
    EXPECT_THROW(cancel.check(), CancelError);
}

TEST_F(AsyncTest, WorkRunsOnAnotherThreadAndComesBackToThisOne) {
    const auto here = std::this_thread::get_id();
    const auto there =
        Async::wait(Async::onWorker<std::thread::id>([] { return std::this_thread::get_id(); }));
    EXPECT_NE(here, there);
}

Task<std::thread::id> threadAfterWork() {
    co_await Async::onWorker<void>([] {});
    co_return std::this_thread::get_id();
}

TEST_F(AsyncTest, TheCodeBehindAWorkerRunsOnTheMainContext) {
    EXPECT_EQ(Async::wait(threadAfterWork()), std::this_thread::get_id());
}

TEST_F(AsyncTest, AWorkersFailureIsCarriedOver) {
    EXPECT_THROW(Async::wait(Async::onWorker<int>([]() -> int { throw MFError("bad stsz"); })),
                 MFError);
    EXPECT_THROW(Async::wait(Async::onWorker<void>([] { throw CancelError(); })), CancelError);
}

TEST_F(AsyncTest, NothingOfAWorkersJobOutlivesTheWaitForIt) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    std::function<void()> work = [held = std::move(held)] {};
    Async::wait(Async::onWorker<void>(std::move(work)));
    EXPECT_TRUE(watch.expired());
}

TEST_F(AsyncTest, SettlingWaitsForAWorkerWhoseTaskWasDropped) {
    auto ended = std::make_shared<std::atomic<bool>>(false);
    {
        auto dropped = Async::onWorker<void>([ended] {
            std::this_thread::sleep_for(5ms);
            *ended = true;
        });
    }
    EXPECT_TRUE(Async::settle(10s));
    EXPECT_TRUE(*ended);
}

TEST_F(AsyncTest, ForEachStartsInOrderAndKeepsToItsWidth) {
    auto meter = std::make_shared<Meter>();
    Task<> all = Async::forEach(5, 2, [meter](std::size_t i) { return measured(meter, i); });
    EXPECT_EQ(meter->started, (std::vector<std::size_t>{0, 1}));
    meter->gates[1].open();
    EXPECT_EQ(meter->started, (std::vector<std::size_t>{0, 1, 2}));
    for (const std::size_t i : {2U, 0U, 3U}) meter->gates[i].open();
    EXPECT_FALSE(all.isReady());
    meter->gates[4].open();
    EXPECT_TRUE(all.isReady());
    EXPECT_EQ(meter->started, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(meter->most, 2);
}

Task<> failFirst(std::shared_ptr<Meter> meter, std::size_t index) {
    co_await measured(meter, index);
    if (index == 0) throw MFError("first");
    throw MFError("later");
}

TEST_F(AsyncTest, ForEachThrowsTheFirstFailureAfterThoseUnderWayHaveEnded) {
    auto meter = std::make_shared<Meter>();
    Task<> all = Async::forEach(5, 2, [meter](std::size_t i) { return failFirst(meter, i); });
    meter->gates[0].open();
    EXPECT_FALSE(all.isReady());
    EXPECT_EQ(meter->started.size(), 2U);
    meter->gates[1].open();
    EXPECT_EQ(meter->started.size(), 2U);
    try {
        Async::wait(std::move(all));
        FAIL();
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "first");
    }
}

TEST_F(AsyncTest, ForEachOfNothingEndsAtOnceAndOfManyUsesNoStack) {
    EXPECT_TRUE(Async::forEach(0, 4, [](std::size_t) { return Async::sleep(0ms); }).isReady());
    EXPECT_TRUE(Async::forEach(200000, 4, [](std::size_t) { return Async::sleep(0ms); }).isReady());
}

TEST_F(AsyncTest, ForEachWithAStartThatThrowsAtOnceCountsThatAsAFailure) {
    Task<> all = Async::forEach(3, 1, [](std::size_t) -> Task<> { throw MFError("at once"); });
    EXPECT_THROW(Async::wait(std::move(all)), MFError);
}

TEST_F(AsyncTest, AnOpenGateLetsEveryLaterWaiterThrough) {
    Gate gate;
    const Gate same = gate;
    EXPECT_FALSE(same.isOpen());
    gate.open();
    EXPECT_TRUE(same.isOpen());
}

}  // namespace
}  // namespace marlet
