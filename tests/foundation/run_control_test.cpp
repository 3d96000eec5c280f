#include "foundation/run_control.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

#include "foundation/errors.h"

namespace marlet {

namespace {

/// A job on another thread that comes to its checkpoint: true when it goes on, false when it ends.
std::future<bool> jobAtCheckpoint(RunControl& control) {
    return std::async(std::launch::async, [&control] {
        try {
            control.checkpoint();
            return true;
        } catch (const CancelError&) {
            return false;
        }
    });
}

}  // namespace

TEST(RunControl, AFreshOneHoldsAndStopsNothing) {
    RunControl control;
    EXPECT_FALSE(control.isPaused());
    EXPECT_FALSE(control.isCancelled());
    EXPECT_NO_THROW(control.checkpoint());
}

TEST(RunControl, APausedJobGoesOnWhenResumed) {
    RunControl control;
    control.pause();
    EXPECT_TRUE(control.isPaused());
    auto job = jobAtCheckpoint(control);
    control.resume();
    EXPECT_TRUE(job.get());
    EXPECT_FALSE(control.isPaused());
}

TEST(RunControl, APausedJobThatIsCancelledStopsAtItsParkedCheckpoint) {
    RunControl control;
    control.pause();
    auto job = jobAtCheckpoint(control);
    control.cancel();
    EXPECT_FALSE(job.get());
    EXPECT_TRUE(control.isPaused()) << "a cancel leaves the pause as it is";
}

TEST(RunControl, APausedAndCancelledJobGoesOnInACriticalSection) {
    RunControl control;
    control.pause();
    control.cancel();
    const CriticalSection section(control);
    EXPECT_NO_THROW(control.checkpoint());
}

TEST(RunControl, APausedJobThatBecomesCriticalFromAnotherThreadIsReleasedWithoutResume) {
    RunControl control;
    control.pause();
    auto job = jobAtCheckpoint(control);
    const CriticalSection section(control);
    EXPECT_TRUE(job.get());
    EXPECT_TRUE(control.isPaused());
}

TEST(RunControl, ACancelDuringACriticalSectionWaitsForItsEnd) {
    RunControl control;
    control.setCritical(true);
    control.cancel();
    EXPECT_NO_THROW(control.checkpoint());
    control.setCritical(false);
    EXPECT_THROW(control.checkpoint(), CancelError);
}

TEST(RunControl, CriticalActiveStaysTrueUntilEveryControlHasLeft) {
    RunControl first;
    RunControl second;
    EXPECT_FALSE(RunControl::criticalActive());
    first.setCritical(true);
    second.setCritical(true);
    first.setCritical(false);
    EXPECT_TRUE(RunControl::criticalActive());
    second.setCritical(false);
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST(RunControl, ACriticalSectionEndsWhateverWayItIsLeft) {
    RunControl control;
    try {
        const CriticalSection section(control);
        EXPECT_TRUE(RunControl::criticalActive());
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
    }
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST(RunControl, ACancelIsDescribedAsCancelled) {
    EXPECT_STREQ(CancelError().what(), "cancelled");
}

TEST(RunControl, AChangedFileHoldsTheEndUpUntilItsRecordIsInGoodHands) {
    RunControl unrecorded;
    {
        const CriticalSection changing(unrecorded);
        EXPECT_TRUE(RunControl::endMustWait());
    }
    EXPECT_FALSE(RunControl::endMustWait());
    RunControl control;
    control.expectRecord();
    EXPECT_FALSE(RunControl::endMustWait()) << "nothing was changed yet";
    for (int i = 0; i < 2; i++) const CriticalSection changing(control);
    EXPECT_FALSE(RunControl::criticalActive());
    EXPECT_TRUE(RunControl::endMustWait());
    control.settle();
    EXPECT_FALSE(RunControl::endMustWait());
    {
        RunControl abandoned;
        abandoned.expectRecord();
        const CriticalSection changing(abandoned);
    }
    EXPECT_FALSE(RunControl::endMustWait());
}

}  // namespace marlet
