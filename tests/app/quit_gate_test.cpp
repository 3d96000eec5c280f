#include "app/quit_gate.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>

#include "foundation/run_control.h"
#include "support/qt_app.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

void askByItself(QuitGate& gate) {
    gate.requestQuit();
}

void askBySignal(QuitGate&) {
    std::raise(SIGTERM);
    // The handler has left its byte by now, which the gate reads here.
    QCoreApplication::processEvents();
}

/// Runs in a process of its own, which the gate ends.
void quitWhileAFileIsChanged(void (*ask)(QuitGate&)) {
    qtApp();
    QuitGate gate;
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
    gate.onWait = [] { std::fputs("told, ", stderr); };
    ask(gate);
    std::fputs("later, ", stderr);
    refused.set_value();
    QCoreApplication::exec();
}

void quitWithAJobOutsideItsCriticalSection() {
    qtApp();
    QuitGate gate;
    std::thread([] { std::this_thread::sleep_for(1h); }).detach();
    gate.requestQuit();
    QCoreApplication::exec();
}

TEST(QuitGateDeathTest, QuittingDuringACriticalSectionWaitsSaysSoAndThenTheProgramEndsByItself) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    for (const auto ask : {askByItself, askBySignal})
        EXPECT_EXIT(quitWhileAFileIsChanged(ask), testing::ExitedWithCode(0),
                    "^told, later, the file is complete$");
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

/// Whether a thread of this process waits for something, as the kernel tells it.
bool sleeps(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t name = text.rfind(") ");
    return name != std::string::npos && text[name + 2] == 'S';
}

void enterBehindTheClosedGate() {
    ASSERT_TRUE(RunControl::closeForQuit());
    std::atomic<pid_t> entering = 0;
    std::thread([&entering] {
        RunControl control;
        entering = gettid();
        // Nothing else lets this thread sleep from here on.
        const CriticalSection changing(control);
        std::fputs("a file was changed", stderr);
        std::_Exit(1);
    }).detach();
    while (entering == 0 || !sleeps(entering)) std::this_thread::yield();
    std::_Exit(0);
}

TEST(QuitGateDeathTest, AfterTheGateHasClosedNoJobCanEnterItsCriticalSection) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(enterBehindTheClosedGate(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace marlet::test
