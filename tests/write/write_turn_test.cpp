#include "write/write_turn.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "foundation/errors.h"
#include "support/temp_folder.h"
#include "write/other_copy.h"

namespace marlet::test {
namespace {

TEST(WriteTurnTest, AnotherCopysChangeIsWaitedFor) {
    const OwnHome home;
    OtherCopysTurn other;
    RunControl control;
    std::promise<void> waits;
    auto waiting = std::async(std::launch::async, [&] {
        waits.set_value();
        const WriteTurn turn(control);
    });
    waits.get_future().wait();
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    other.end();
    waiting.get();
}

TEST(WriteTurnTest, ACancelEndsTheWait) {
    const OwnHome home;
    const OtherCopysTurn other;
    RunControl control;
    control.cancel();
    EXPECT_THROW(WriteTurn turn(control), CancelError);
}

TEST(WriteTurnTest, ACancelAtTheEndOfTheWaitHolds) {
    const OwnHome home;
    OtherCopysTurn other;
    RunControl control;
    auto waiting = std::async(std::launch::async, [&] { const WriteTurn turn(control); });
    while (!other.isWaitedFor()) std::this_thread::yield();
    control.cancel();
    other.end();
    EXPECT_THROW(waiting.get(), CancelError);
    EXPECT_TRUE(other.take());
}

TEST(WriteTurnTest, ACancelHoldsWhereNobodyIsWaitedFor) {
    const OwnHome home;
    RunControl control;
    control.cancel();
    EXPECT_THROW(WriteTurn turn(control), CancelError);
}

TEST(WriteTurnTest, APauseAtTheEndOfTheWaitHoldsAndKeepsNobodyElseWaiting) {
    const OwnHome home;
    OtherCopysTurn other;
    RunControl control;
    auto waiting = std::async(std::launch::async, [&] { const WriteTurn turn(control); });
    while (!other.isWaitedFor()) std::this_thread::yield();
    control.pause();
    other.end();
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    while (!other.take()) std::this_thread::yield();
    other.end();
    control.resume();
    waiting.get();
}

TEST(WriteTurnTest, ACancelInTheMiddleOfTheLastLookHolds) {
    const OwnHome home;
    RunControl control;
    EXPECT_THROW(WriteTurn turn(control, [&] { control.cancel(); }), CancelError);
    const OtherCopysTurn other;
}

TEST(WriteTurnTest, APauseInTheMiddleOfTheLastLookHoldsKeepsNobodyElseWaitingAndIsFollowedByALook) {
    const OwnHome home;
    RunControl control;
    int looks = 0;
    std::promise<void> paused;
    auto waiting = std::async(std::launch::async, [&] {
        const WriteTurn turn(control, [&] {
            if (++looks > 1) return;
            control.pause();
            paused.set_value();
        });
    });
    paused.get_future().wait();
    Durable::makeFolders(Paths::documentsDir());
    const FileHandle other(
        Sys::open(Paths::journalFile().replace_extension(".lock"), O_RDWR | O_CREAT, 0600));
    while (Sys::flock(other.get(), LOCK_EX | LOCK_NB) != 0) std::this_thread::yield();
    ASSERT_EQ(Sys::flock(other.get(), LOCK_UN), 0);
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    control.resume();
    waiting.get();
    EXPECT_EQ(looks, 2);
}

TEST(WriteTurnTest, ALastLookThatFailsGivesTheTurnBack) {
    const OwnHome home;
    RunControl control;
    EXPECT_THROW(WriteTurn turn(control, [] { throw MFError("not as it was"); }), MFError);
    const OtherCopysTurn other;
}

TEST(WriteTurnTest, WithoutWaitingItTellsWhetherAnotherCopyHasTheTurn) {
    const OwnHome home;
    OtherCopysTurn other;
    EXPECT_TRUE(WriteTurn().isOthers());
    other.end();
    const WriteTurn turn;
    EXPECT_FALSE(turn.isOthers());
    EXPECT_FALSE(other.take());
}

TEST(WriteTurnTest, ATurnThatEndedIsTheNextOnes) {
    const OwnHome home;
    RunControl control;
    { const WriteTurn turn(control); }
    const OtherCopysTurn other;
}

TEST(WriteTurnTest, WhereNoLockCanBeMadeNobodyWaits) {
    const OwnHome home;
    const Sys::Fault fault(Sys::Call::Lock, ENOLCK, 1, true);
    RunControl control;
    const WriteTurn one(control);
    const WriteTurn other(control);
}

}  // namespace
}  // namespace marlet::test
