#include "foundation/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

#include "foundation/tool_double.h"

namespace marlet {

using test::eventually;
using test::isGone;
using test::ToolDouble;

namespace {

class ChildProcessTest : public testing::Test {
protected:
    ChildProcess& start(const ToolDouble::Arguments& arguments) {
        return child_.emplace(ToolDouble::program(), arguments,
                              ToolSandbox(ToolDouble::program(), tool_.confinement()));
    }

    ToolDouble tool_;
    std::optional<ChildProcess> child_;
};

}  // namespace

TEST_F(ChildProcessTest, AShortWaitForALongRunSaysThatItGoesOn) {
    start({"hold"});
    EXPECT_FALSE(child_->waitForEnd(std::chrono::milliseconds(0)));
    EXPECT_FALSE(child_->waitForEnd(std::chrono::milliseconds(1)));
}

TEST_F(ChildProcessTest, AnEndStaysAnEnd) {
    start({"exit", "5"});
    ASSERT_TRUE(child_->waitForEnd(std::chrono::seconds(30)));
    EXPECT_TRUE(child_->waitForEnd(std::chrono::milliseconds(0)));
    EXPECT_EQ(child_->status(), 5);
    child_->signal(SIGTERM);  // nobody is there any more
    child_->terminate();
    EXPECT_EQ(child_->status(), 5);
}

TEST_F(ChildProcessTest, AProgramThatIgnoresItsTerminationIsKilled) {
    start({"deaf", "ready", tool_.in("pid"), "hold"});
    ASSERT_GT(tool_.processOf("pid"), 0);
    child_->terminate(std::chrono::milliseconds(10));
    EXPECT_EQ(child_->status(), SIGKILL);
}

TEST_F(ChildProcessTest, GoingAwayLeavesNoProcessBehind) {
    const pid_t pid = start({"child", tool_.in("pid"), "hold"}).pid();
    const pid_t itsChild = tool_.processOf("pid");
    child_.reset();
    EXPECT_EQ(::kill(pid, 0), -1);
    EXPECT_TRUE(eventually([&] { return isGone(itsChild); }));
}

TEST_F(ChildProcessTest, AProgramStartedWithoutStandardStreamsStillGetsItsOutput) {
    const pid_t program = ::fork();
    ASSERT_GE(program, 0);
    if (program == 0) {
        for (const int fd : {0, 1, 2}) ::close(fd);
        start({"print", "heard", "exit", "0"}).waitForEnd(std::chrono::seconds(30));
        char text[16] = {};
        const bool heard = ::read(child_->output(), text, sizeof text) == 5;
        ::_exit(heard && std::string(text) == "heard" ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
}

}  // namespace marlet
