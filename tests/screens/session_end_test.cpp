// The session's end, a signal and the window ask the same question. Each test is a process of its
// own, with a window system, that the quit gate ends.

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <csignal>
#include <cstdio>
#include <future>
#include <thread>

#include "app/app_model.h"
#include "app/quit_gate.h"
#include "foundation/preferences.h"
#include "foundation/run_control.h"
#include "screens/frame/screens.h"

namespace marlet::test {
namespace {

struct Window {
    Window() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        application.emplace(argc, argv);
        Preferences::install(std::make_unique<MemoryPreferences>());
        model.emplace();
        gate.emplace();
        screens.emplace(*model, *gate);
    }
    void endSession() {
        screens->endSession([] { std::fputs("asked to wait, ", stderr); });
    }

    int argc = 1;
    char name[7] = "marlet";
    char* argv[2] = {name, nullptr};
    std::optional<QGuiApplication> application;
    std::optional<AppModel> model;
    std::optional<QuitGate> gate;
    std::optional<Screens> screens;
};

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
