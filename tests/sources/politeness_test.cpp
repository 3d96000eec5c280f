#include "sources/politeness.h"

#include <gtest/gtest.h>

#include "support/clock_hands.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using namespace std::chrono_literals;
using Failure = Politeness::Failure;
using Times = std::vector<std::chrono::milliseconds>;

/// A clock that stands still, so that "the same moment" is one.
class StillClock {
public:
    std::chrono::milliseconds now{5s};
    Times slept;

private:
    Task<> note(std::chrono::milliseconds time, CancelToken cancel) {
        if (time > 0ms) slept.push_back(time);
        cancel.check();
        co_return;
    }
    Clock::Hooks hooks_{{},
                        [this] { return now; },
                        [this](std::chrono::milliseconds time, CancelToken cancel) {
                            return note(time, std::move(cancel));
                        }};
};

class PolitenessTest : public testing::Test {
protected:
    PolitenessTest() { test::qtApp(); }
    Times pauses(Failure failure, int count) {
        Times list;
        Politeness politeness(1s);
        for (int i = 0; i < count; i++) {
            politeness.failed(failure);
            list.push_back(politeness.blockedUntil() - clock_.now);
        }
        return list;
    }
    StillClock clock_;
};

TEST_F(PolitenessTest, TheFirstCallerDoesNotWait) {
    Politeness politeness(350ms);
    Async::wait(politeness.wait());
    EXPECT_TRUE(clock_.slept.empty());
}

TEST_F(PolitenessTest, CallersOfTheSameMomentQueueUpOneGapApart) {
    Politeness politeness(Politeness::appleTVGap);
    for (int i = 0; i < 4; i++) Async::wait(politeness.wait());
    EXPECT_EQ(clock_.slept, (Times{350ms, 700ms, 1050ms}));
}

TEST_F(PolitenessTest, WhoComesAfterTheGapDoesNotWait) {
    Politeness politeness(Politeness::itunesGap);
    Async::wait(politeness.wait());
    clock_.now += 400ms;
    Async::wait(politeness.wait());
    clock_.now += 1600ms;
    Async::wait(politeness.wait());
    EXPECT_EQ(clock_.slept, (Times{600ms}));
}

TEST_F(PolitenessTest, HardFailuresBlockForAMinuteDoublingToTenMinutes) {
    EXPECT_EQ(pauses(Failure::Hard, 8), (Times{60s, 120s, 240s, 480s, 600s, 600s, 600s, 600s}));
}

TEST_F(PolitenessTest, SoftFailuresBlockForAQuarterOfThat) {
    EXPECT_EQ(pauses(Failure::Soft, 8), (Times{15s, 30s, 60s, 120s, 240s, 480s, 480s, 480s}));
}

TEST_F(PolitenessTest, ABlockedServiceIsLeftAloneAndThenAskedOneGapApart) {
    Politeness politeness(1s);
    Async::wait(politeness.wait());
    politeness.failed(Failure::Hard);
    Async::wait(politeness.wait());
    Async::wait(politeness.wait());
    EXPECT_EQ(clock_.slept, (Times{60s, 61s}));
}

TEST_F(PolitenessTest, ASuccessStartsTheCountAnew) {
    Politeness politeness(1s);
    for (int i = 0; i < 4; i++) politeness.failed(Failure::Hard);
    politeness.succeeded();
    EXPECT_EQ(politeness.failures(), 0);
    politeness.failed(Failure::Hard);
    EXPECT_EQ(politeness.blockedUntil() - clock_.now, 60s);
}

TEST_F(PolitenessTest, ACancelledSleepJustEndsTheWait) {
    Politeness politeness(1s);
    Async::wait(politeness.wait());
    CancelToken cancel;
    cancel.cancel();
    EXPECT_NO_THROW(Async::wait(politeness.wait(cancel)));
}

TEST(PolitenessOnTheRealClock, TwoCallersOfOneMomentEndAGapApart) {
    test::qtApp();
    Politeness politeness(40ms);
    const auto before = Clock::steady();
    Task<> first = politeness.wait();
    Task<> second = politeness.wait();
    EXPECT_TRUE(first.isReady());
    EXPECT_FALSE(second.isReady());
    Async::wait(std::move(second));
    EXPECT_GE(Clock::steady() - before, 39ms);
}

}  // namespace
}  // namespace marlet
