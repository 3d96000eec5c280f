#include "app/quit_gate.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>

#include "foundation/run_control.h"
#include "support/qt_app.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

/// Runs in a process of its own, which the gate ends.
void quitWhileAFileIsChanged() {
    qtApp();
    QuitGate gate;
    std::atomic<bool> entered = false;
    std::thread job([&] {
        RunControl control;
        {
            const CriticalSection changing(control);
            entered = true;
            std::this_thread::sleep_for(300ms);
            std::fputs("the file is complete", stderr);
        }
        std::this_thread::sleep_for(1h);
    });
    job.detach();
    while (!entered) std::this_thread::yield();
    std::raise(SIGTERM);
    QCoreApplication::exec();
}

void quitWithAJobOutsideItsCriticalSection() {
    qtApp();
    QuitGate gate;
    std::thread([] { std::this_thread::sleep_for(1h); }).detach();
    gate.requestQuit();
    QCoreApplication::exec();
}

TEST(QuitGateDeathTest, QuittingDuringACriticalSectionWaitsAndThenTheProgramEndsByItself) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(quitWhileAFileIsChanged(), testing::ExitedWithCode(0), "the file is complete");
}

void closeTheTerminal() {
    qtApp();
    QuitGate gate;
    std::raise(SIGPIPE);
    std::fputs("a reader that leaves ends nothing", stderr);
    std::raise(SIGHUP);
    QCoreApplication::exec();
}

TEST(QuitGateDeathTest, AClosedTerminalIsAWishToEndAndAReaderThatLeavesIsNone) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(closeTheTerminal(), testing::ExitedWithCode(0),
                "a reader that leaves ends nothing");
}

TEST(QuitGateDeathTest, AJobOutsideItsCriticalSectionIsAbandonedAtOnce) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(quitWithAJobOutsideItsCriticalSection(), testing::ExitedWithCode(0), "");
}

TEST(QuitGateDeathTest, AfterTheGateHasClosedNoJobCanEnterItsCriticalSection) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            RunControl::closeForQuit();
            std::thread([] {
                RunControl control;
                const CriticalSection changing(control);
                std::fputs("a file was changed", stderr);
                std::_Exit(1);
            }).detach();
            std::this_thread::sleep_for(100ms);
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace marlet::test
