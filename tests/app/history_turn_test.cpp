#include "app/history_turn.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <cerrno>
#include <filesystem>
#include <functional>

#include "app/history.h"
#include "foundation/paths.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class HistoryTurnTest : public testing::Test {
protected:
    HistoryTurnTest() {
        fs::create_directories(Paths::documentsDir());
        patience_.sleep = [this](std::chrono::milliseconds time) { wait(time); };
    }
    void wait(std::chrono::milliseconds time) {
        waited_ += time;
        if (waited_ == endsAfter_) other_.close();
    }
    /// As another copy of the program takes it.
    bool otherTakes() {
        other_ = FileHandle(Sys::open(lock(), O_RDWR | O_CREAT, 0600));
        return Sys::flock(other_.get(), LOCK_EX | LOCK_NB) == 0;
    }
    static fs::path lock() { return Paths::documentsDir() / "history.lock"; }

    OwnHome home_;
    HistoryPatience patience_;
    FileHandle other_;
    std::chrono::milliseconds waited_{0};
    std::chrono::milliseconds endsAfter_{-1};
};

TEST_F(HistoryTurnTest, AnotherCopyIsWaitedFor) {
    ASSERT_TRUE(otherTakes());
    endsAfter_ = 7ms;
    const HistoryTurn turn(patience_);
    EXPECT_EQ(waited_, 7ms);
    EXPECT_FALSE(otherTakes());
    EXPECT_EQ(patience_.longest, 5s) << "that one didn't hang";
}

TEST_F(HistoryTurnTest, ATurnThatEndedIsTheNextOnes) {
    { const HistoryTurn turn(patience_); }
    EXPECT_TRUE(otherTakes());
}

TEST_F(HistoryTurnTest, OneThatHangsIsWaitedForInFullOnlyOnce) {
    ASSERT_TRUE(otherTakes());
    { const HistoryTurn turn(patience_); }
    EXPECT_EQ(waited_, 5s);
    waited_ = 0ms;
    { const HistoryTurn turn(patience_); }
    { const HistoryTurn turn(patience_); }
    EXPECT_EQ(waited_, 200ms);
}

TEST_F(HistoryTurnTest, OneThatCameBackIsWaitedForInFullAgain) {
    ASSERT_TRUE(otherTakes());
    { const HistoryTurn turn(patience_); }
    other_.close();
    { const HistoryTurn turn(patience_); }
    ASSERT_TRUE(otherTakes());
    waited_ = 0ms;
    { const HistoryTurn turn(patience_); }
    EXPECT_EQ(waited_, 5s);
}

TEST_F(HistoryTurnTest, OneThatHangsKeepsNoEntryOutOfTheFile) {
    ASSERT_TRUE(otherTakes());
    HistoryStore store;
    store.setPatience(patience_);
    for (const char* id : {"A", "B"}) {
        HistoryEntry entry;
        entry.id = id;
        store.append(entry);
    }
    EXPECT_EQ(waited_, 5100ms);
    EXPECT_EQ(HistoryStore().entries().size(), 2u);
}

TEST_F(HistoryTurnTest, AFolderThatTakesNoLockIsNotAskedForOne) {
    // As NFS answers for what is open for reading.
    const Sys::Fault fault(Sys::Call::Lock, EBADF, 1, true, Paths::documentsDir());
    const HistoryTurn turn(patience_);
    EXPECT_FALSE(otherTakes());
}

TEST_F(HistoryTurnTest, ItsFileIsThePersonsOwn) {
    const HistoryTurn turn(patience_);
    EXPECT_EQ(fs::status(lock()).permissions(), static_cast<fs::perms>(0600));
}

TEST_F(HistoryTurnTest, ALinkOfThatNameIsNotFollowed) {
    const fs::path elsewhere = Paths::documentsDir() / "elsewhere";
    fs::create_symlink(elsewhere, lock());
    const HistoryTurn turn(patience_);
    EXPECT_FALSE(fs::exists(elsewhere));
    EXPECT_EQ(waited_, 0ms);
}

TEST_F(HistoryTurnTest, WhereNoLockCanBeMadeNobodyWaits) {
    const Sys::Fault fault(Sys::Call::Lock, ENOLCK, 1, true);
    const HistoryTurn one(patience_);
    const HistoryTurn other(patience_);
    EXPECT_EQ(waited_, 0ms);
}

}  // namespace
}  // namespace marlet::test
