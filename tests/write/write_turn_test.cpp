#include "write/write_turn.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <future>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

/// As another copy of the program holds it.
class Taken {
public:
    Taken() {
        Durable::makeFolders(Paths::documentsDir());
        const auto name = Paths::journalFile().replace_extension(".lock");
        lock_ = FileHandle(Sys::open(name, O_RDWR | O_CREAT, 0600));
        EXPECT_EQ(Sys::flock(lock_.get(), LOCK_EX | LOCK_NB), 0);
    }
    void end() { lock_.close(); }

private:
    FileHandle lock_;
};

TEST(WriteTurnTest, AnotherCopysChangeIsWaitedFor) {
    const OwnHome home;
    Taken other;
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
    const Taken other;
    RunControl control;
    control.cancel();
    EXPECT_THROW(WriteTurn turn(control), CancelError);
}

TEST(WriteTurnTest, ATurnThatEndedIsTheNextOnes) {
    const OwnHome home;
    RunControl control;
    { const WriteTurn turn(control); }
    const Taken other;
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
