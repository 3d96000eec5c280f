#include "foundation/core_dumps.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "support/temp_folder.h"

namespace marlet {
namespace {

/// The wait status of a child that does this, in a folder of its own.
int statusOf(const std::function<void()>& act) {
    const test::TempFolder folder;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chdir(folder.path().c_str()) != 0) ::_exit(99);
        act();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

void raiseLimit() {
    rlimit limit{};
    ::getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_CORE, &limit);
}

[[noreturn]] void crash() {
    ::signal(SIGSEGV, SIG_DFL);
    ::raise(SIGSEGV);
    ::_exit(98);
}

bool isLimitOf(rlim_t value) {
    rlimit limit{};
    return ::getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_cur == value &&
           limit.rlim_max == value;
}

TEST(CoreDumps, ACrashLeavesNoImageOfTheMemory) {
    const int with = statusOf([] {
        raiseLimit();
        CoreDumps::forbid();
        crash();
    });
    EXPECT_TRUE(WIFSIGNALED(with));
    EXPECT_FALSE(WCOREDUMP(with));
    const int without = statusOf([] {
        raiseLimit();
        crash();
    });
    if (!WCOREDUMP(without)) GTEST_SKIP() << "this system writes none anyway";
}

TEST(CoreDumps, TheLimitIsTheOneAtWhichNoCollectorIsStarted) {
    EXPECT_EQ(statusOf([] {
                  raiseLimit();
                  CoreDumps::forbid();
                  ::_exit(isLimitOf(1) ? 0 : 1);
              }),
              0);
}

TEST(CoreDumps, WhereTheLimitCannotBeRaisedTheProcessIsNotDumpable) {
    EXPECT_EQ(statusOf([] {
                  const rlimit none{0, 0};
                  ::setrlimit(RLIMIT_CORE, &none);
                  CoreDumps::forbid();
                  ::_exit(isLimitOf(0) && ::prctl(PR_GET_DUMPABLE) == 0 ? 0 : 1);
              }),
              0);
}

}  // namespace
}  // namespace marlet
