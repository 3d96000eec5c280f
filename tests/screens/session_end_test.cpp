// The session's end, a signal and the window ask the same question. Each test is a process of its
// own, with a window system, that the quit gate ends.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <future>
#include <thread>

#include "foundation/run_control.h"
#include "screens/bare_window.h"

namespace marlet::test {
namespace {

using Ask = void (*)(Window&);

void endWhileAFileIsChanged(Ask ask) {
    Window window;
    std::promise<void> entered;
    std::promise<void> refused;
    std::thread job([&] {
        RunControl control;
        {
            const CriticalSection changing(control);
            entered.set_value();
            refused.get_future().wait();
            std::fputs("the file is complete", stderr);
        }
        while (true) pause();
    });
    job.detach();
    entered.get_future().wait();
    ask(window);
    std::fputs(window.screens->quitWaits() ? "the window says so, " : "nothing is said, ", stderr);
    refused.set_value();
    QCoreApplication::exec();
}

void bySession(Window& window) {
    window.endSession();
}
void byWindow(Window& window) {
    window.screens->quit();
}
void bySignal(Window&) {
    std::raise(SIGTERM);
    QCoreApplication::processEvents();
}

TEST(SessionEndDeathTest, TheSessionIsAskedToWaitWhileAFileIsChangedAndTheWindowSaysSo) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(endWhileAFileIsChanged(bySession), testing::ExitedWithCode(0),
                "asked to wait, the window says so, the file is complete$");
}

TEST(SessionEndDeathTest, TheWindowSaysSoToWhoeverClosesItOrSendsASignal) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    for (const Ask ask : {&byWindow, &bySignal})
        EXPECT_EXIT(endWhileAFileIsChanged(ask), testing::ExitedWithCode(0),
                    "the window says so, the file is complete$");
}

void endSessionIdly() {
    Window window;
    window.endSession();
    QCoreApplication::processEvents();
    std::fputs(window.screens->quitWaits() ? "says so" : "stays", stderr);
    std::_Exit(3);
}

TEST(SessionEndDeathTest, OtherwiseTheSessionIsNotHeldUpAndTheProgramLeavesTheEndToIt) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(endSessionIdly(), testing::ExitedWithCode(3), "stays$");
}

}  // namespace
}  // namespace marlet::test
