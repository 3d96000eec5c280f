#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <filesystem>
#include <system_error>

#include "foundation/durable.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"

namespace marlet::test {

/// The turn to change a file, as another copy of the program holds it.
class OtherCopysTurn {
public:
    OtherCopysTurn() {
        Durable::makeFolders(Paths::documentsDir());
        lock_ = FileHandle(Sys::open(name_, O_RDWR | O_CREAT, 0600));
        EXPECT_TRUE(take());
    }
    bool take() { return Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0; }
    /// Also where a program that was started meanwhile has inherited the descriptor.
    void end() { EXPECT_EQ(Sys::flock(lock_.get(), LOCK_UN), 0); }
    /// Whether this process has the lock open a second time.
    bool isWaitedFor() const {
        namespace fs = std::filesystem;
        int count = 0;
        std::error_code ignored;
        for (const auto& each : fs::directory_iterator("/proc/self/fd"))
            if (fs::read_symlink(each.path(), ignored) == fs::canonical(name_)) count++;
        return count > 1;
    }

private:
    std::filesystem::path name_ = Paths::journalFile().replace_extension(".lock");
    FileHandle lock_;
};

}  // namespace marlet::test
