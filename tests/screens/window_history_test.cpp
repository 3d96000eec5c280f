// The window and History: it counts and clears what workers read and write. Each test is a process
// of its own, with a window system.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "app/history.h"
#include "screens/bare_window.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

HistoryEntry film() {
    HistoryEntry entry;
    entry.id = "a";
    entry.path = "/films/a.mp4";
    entry.title = "Film";
    entry.result = "done";
    return entry;
}

void until(const std::function<bool()>& holds) {
    while (!holds()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void say(bool isRight, const char* text) {
    std::fputs(isRight ? text : "not so; ", stderr);
}

void count() {
    const OwnHome home;
    HistoryStore().append(film());
    Window window;
    const HistoryStore& history = window.model->history();
    say(window.screens->historyCount() == "0 items" && !history.isLoaded(), "nobody waits; ");
    until([&] { return window.screens->historyCount() == "1 item"; });
    std::fputs("one", stderr);
    std::_Exit(0);
}

TEST(WindowHistoryDeathTest, ItIsCountedOnceAWorkerHasReadIt) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(count(), testing::ExitedWithCode(0), "nobody waits; one$");
}

void clear() {
    const OwnHome home;
    HistoryStore().append(film());
    Window window;
    until([&] { return window.screens->historyCount() == "1 item"; });
    window.screens->answerClearHistory(true);
    say(window.screens->historyCount() == "1 item", "nobody waits; ");
    until([&] { return window.screens->historyCount() == "0 items"; });
    say(HistoryStore().entries().empty(), "none");
    std::_Exit(0);
}

TEST(WindowHistoryDeathTest, ItIsClearedByAWorker) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(clear(), testing::ExitedWithCode(0), "nobody waits; none$");
}

void quitSoon() {
    const OwnHome home;
    HistoryStore().append(film());
    Window window;
    window.gate->onEnd = [&] {
        window.model->keepNow();
        say(HistoryStore().entries().empty(), "none");
    };
    window.screens->answerClearHistory(true);
    window.screens->quit();
    QCoreApplication::exec();
}

TEST(WindowHistoryDeathTest, AProgramThatEndsBeforeTheWorkerIsDoneHasClearedItToo) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(quitSoon(), testing::ExitedWithCode(0), "none$");
}

}  // namespace
}  // namespace marlet::test
