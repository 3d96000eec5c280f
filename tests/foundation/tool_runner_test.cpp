#include "foundation/tool_runner.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <future>
#include <mutex>
#include <system_error>

#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/text.h"
#include "foundation/tool_double.h"

namespace marlet {

using test::eventually;
using test::isGone;
using test::stateOf;
using test::ToolDouble;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

/// Longer than two polls of a running tool.
constexpr std::chrono::milliseconds somePolls{450};

std::string failureOf(ToolDouble& tool, const ToolDouble::Arguments& arguments) {
    try {
        tool.run(arguments);
    } catch (const MFError& failure) {
        return failure.description();
    }
    return "no failure";
}

/// A run on a thread of its own, as a job has it.
std::future<std::string> started(ToolDouble& tool, const ToolDouble::Arguments& arguments) {
    return std::async(std::launch::async, [&tool, arguments] { return tool.run(arguments); });
}

std::string repeated(char letter, std::size_t times) {
    return std::string(times, letter);
}

}  // namespace

TEST(ToolRunner, BothStreamsComeBackAsOneTextUntrimmed) {
    ToolDouble tool;
    EXPECT_EQ(tool.run({"print", " one\n", "complain", "two\n", "print", "three \n"}),
              " one\ntwo\nthree \n");
}

TEST(ToolRunner, AToolThatWritesNothingGivesTheEmptyText) {
    ToolDouble tool;
    EXPECT_EQ(tool.run({}), "");
}

TEST(ToolRunner, AToolThatWritesNothingAndFailsLeavesTheMessageBare) {
    ToolDouble tool;
    EXPECT_EQ(failureOf(tool, {"exit", "2"}), "tool_double failed (exit 2): ");
}

TEST(ToolRunner, ArgumentsReachTheToolAsTheyStand) {
    ToolDouble tool;
    const std::string odd = "$HOME `ls` \"'; rm -rf * \n\\ é";
    EXPECT_EQ(tool.run({"print", odd}), odd);
}

TEST(ToolRunner, AFailedToolIsNamedWithItsStatusAndItsTrimmedOutput) {
    ToolDouble tool;
    EXPECT_EQ(failureOf(tool, {"print", "\n  bad file \n\n", "exit", "3"}),
              "tool_double failed (exit 3): bad file");
}

TEST(ToolRunner, AnEndByASignalReadsAsItsNumber) {
    ToolDouble tool;
    EXPECT_EQ(failureOf(tool, {"print", "working", "die", std::to_string(SIGKILL)}),
              "tool_double failed (exit 9): working");
}

TEST(ToolRunner, AFailureShowsNoColours) {
    ToolDouble tool;
    EXPECT_EQ(failureOf(tool, {"complain", "\x1B[31;1mbad\x1B[0m \x1B[mfile\x1B[0m", "exit", "1"}),
              "tool_double failed (exit 1): bad file");
}

TEST(ToolRunner, ASuccessLosesTheEndOfColourAndKeepsEveryOtherSequence) {
    ToolDouble tool;
    EXPECT_EQ(tool.run({"print", "\x1B[31;1mred\x1B[0m \x1B[00m\x1B[m"}),
              "\x1B[31;1mred \x1B[00m\x1B[m");
}

TEST(ToolRunner, ALongFailureIsCutAtItsFront) {
    ToolDouble tool;
    const std::string shown = repeated('b', 396) + "é fi";
    EXPECT_EQ(failureOf(tool, {"print", repeated('a', 700) + shown + "\n", "exit", "1"}),
              "tool_double failed (exit 1): " + shown);
}

TEST(ToolRunner, TheLowerRunGivesStatusAndTailWithoutAWord) {
    ToolDouble tool;
    const auto ended =
        ToolRunner::runToEnd(ToolDouble::program(), {"print", "\x1B[31mx\x1B[0m\n", "exit", "7"},
                             tool.confinement(), tool.control);
    EXPECT_EQ(ended, (ToolRunner::Ended{7, "\x1B[31mx\n"}));
}

TEST(ToolRunner, MoreOutputThanAPipeHoldsIsReadWhileTheToolRuns) {
    ToolDouble tool;
    ToolDouble::Arguments arguments;
    for (int i = 0; i < 4; ++i) {
        arguments.insert(arguments.end(), {"print", repeated('x', 100000)});
    }
    arguments.insert(arguments.end(), {"print", "the end"});
    const std::string tail = tool.run(arguments);
    EXPECT_EQ(tail.size(), 2000U);
    EXPECT_TRUE(tail.ends_with("xthe end"));
}

TEST(ToolRunner, ProgressArrivesWhileTheToolRuns) {
    ToolDouble tool;
    std::vector<double> seen;
    tool.run({"print", "(37/100)", "await", tool.in("seen"), "print", "(250/100)"},
             [&](double done) {
                 seen.push_back(done);
                 tool.signal("seen");  // the tool goes on only once this was reported
             });
    EXPECT_EQ(seen, (std::vector<double>{0.37, 1.0}));
}

TEST(ToolRunner, AToolThatIsMissingIsTheSystemsError) {
    ToolDouble tool;
    try {
        ToolRunner::run(tool.folder / "gpac", {}, {}, tool.control);
        FAIL() << "it ran";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::no_such_file_or_directory);
        EXPECT_STREQ(failure.what(), "No such file or directory");
    }
}

TEST(ToolRunner, AFileThatIsNoProgramIsTheSystemsError) {
    ToolDouble tool;
    const fs::path file = tool.folder.write("MP4Box", std::string_view("\x7F"
                                                                       "ELF, not really"));
    fs::permissions(file, fs::perms::owner_all);
    EXPECT_THROW(ToolRunner::run(file, {}, {}, tool.control), std::system_error);
    fs::permissions(file, fs::perms::owner_read);
    EXPECT_THROW(ToolRunner::run(file, {}, {}, tool.control), std::system_error);
}

TEST(ToolRunner, CancelEndsTheToolAndWaitsForItsEnd) {
    ToolDouble tool;
    auto run = started(tool, {"print", "lost", "ready", tool.in("pid"), "hold"});
    const pid_t pid = tool.processOf("pid");
    ASSERT_GT(pid, 0);
    tool.control.cancel();
    EXPECT_THROW(run.get(), CancelError);
    EXPECT_EQ(::kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(ToolRunner, AJobCancelledBeforeTheRunEndsAsCancelled) {
    ToolDouble tool;
    tool.control.cancel();
    EXPECT_THROW(tool.run({"hold"}), CancelError);
}

TEST(ToolRunner, CancelWhilePausedEndsTheStoppedTool) {
    ToolDouble tool;
    auto run = started(tool, {"ready", tool.in("pid"), "hold"});
    const pid_t pid = tool.processOf("pid");
    tool.control.pause();
    ASSERT_TRUE(eventually([&] { return stateOf(pid) == 'T'; }));
    tool.control.cancel();
    EXPECT_THROW(run.get(), CancelError);
    EXPECT_TRUE(isGone(pid));
}

TEST(ToolRunner, PauseStopsAndResumeContinuesExactlyOnceHoweverManyPollsPass) {
    ToolDouble tool;
    auto run =
        started(tool, {"count", "ready", tool.in("pid"), "await", tool.in("go on"), "counted"});
    const pid_t pid = tool.processOf("pid");
    tool.control.pause();
    ASSERT_TRUE(eventually([&] { return stateOf(pid) == 'T'; }));
    ::kill(pid, SIGCONT);  // a second stop would undo this
    std::this_thread::sleep_for(somePolls);
    EXPECT_NE(stateOf(pid), 'T');
    ::kill(pid, SIGSTOP);  // the resume must undo this, and once only
    ASSERT_TRUE(eventually([&] { return stateOf(pid) == 'T'; }));
    tool.control.resume();
    ASSERT_TRUE(eventually([&] { return stateOf(pid) != 'T'; }));
    std::this_thread::sleep_for(somePolls);
    tool.signal("go on");
    EXPECT_THAT(run.get(), HasSubstr("continued 2\n"));  // this test's and the resume's
}

TEST(ToolRunner, WhatTheToolStartedEndsWithIt) {
    ToolDouble tool;
    tool.run({"child", tool.in("pid"), "await", tool.in("pid")});
    EXPECT_TRUE(eventually([&] { return isGone(tool.processOf("pid")); }));
}

TEST(ToolRunner, AProcessThatKeepsTheOutputOpenHoldsNothingUp) {
    ToolDouble tool;
    EXPECT_THAT(tool.run({"stray", "print", "the end"}), HasSubstr("the end"));
}

TEST(ToolRunner, TheToolDiesWithTheProgram) {
    ToolDouble tool;
    const pid_t program = ::fork();
    ASSERT_GE(program, 0);
    if (program == 0) {
        try {
            tool.run({"ready", tool.in("pid"), "hold"});
        } catch (...) {
        }
        ::_exit(0);
    }
    const pid_t pid = tool.processOf("pid");
    ::kill(program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    EXPECT_TRUE(eventually([&] { return isGone(pid); }));
}

TEST(ToolRunner, TheEnvironmentIsInheritedWithoutTheServiceToken) {
    const test::ScopedEnv secret("MARLET_TMDB_TOKEN", "secret");
    const test::ScopedEnv plain("MARLET_TMDB_API", "somewhere");
    ToolDouble tool;
    const std::string shown = tool.run({"env", "MARLET_TMDB_TOKEN", "env", "MARLET_TMDB_API"});
    EXPECT_THAT(shown, HasSubstr("MARLET_TMDB_TOKEN=(none)"));
    EXPECT_THAT(shown, HasSubstr("MARLET_TMDB_API=somewhere"));
}

TEST(ToolRunner, NoDescriptorButTheStandardThreeReachesTheTool) {
    ToolDouble tool;
    const FileHandle leaky(::open("/dev/null", O_RDONLY));  // not close-on-exec
    ASSERT_TRUE(leaky.isOpen());
    EXPECT_EQ(tool.run({"descriptors"}), "fd 0\nfd 1\nfd 2\ndescriptors: ok\n");
}

TEST(ToolRunner, SignalsStandInTheToolAsAShellWouldLeaveThem) {
    sigset_t some;
    sigset_t before;
    ::sigemptyset(&some);
    ::sigaddset(&some, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &some, &before);
    const auto old = ::signal(SIGPIPE, SIG_IGN);
    ToolDouble tool;
    EXPECT_EQ(tool.run({"signals"}), "signals: ok\n");
    ::signal(SIGPIPE, old);
    sigset_t after;
    ::pthread_sigmask(SIG_SETMASK, &before, &after);
    EXPECT_EQ(::sigismember(&after, SIGTERM), 1);  // and here they stand as before
    EXPECT_EQ(::sigismember(&after, SIGINT), 0);
}

TEST(ToolRunner, AListingIsTheWholeOutputWithoutColoursWhateverTheStatus) {
    ToolDouble tool;
    const std::string line = "\x1B[32mTrack 1\x1B[0m \xC3\xA4\n";
    ToolDouble::Arguments arguments;
    for (int i = 0; i < 1000; i++) arguments.insert(arguments.end(), {"print", line});
    arguments.insert(arguments.end(), {"complain",
                                       "\xFF"
                                       "end",
                                       "exit", "3"});
    const std::string text =
        ToolRunner::listing(ToolDouble::program(), arguments, tool.confinement(), tool.control);
    EXPECT_EQ(text.size(),
              1000 * std::string("Track 1 \xC3\xA4\n").size() + 6);  // U+FFFD and "end"
    EXPECT_TRUE(text.starts_with("Track 1 ä\nTrack 1 ä\n"));
    EXPECT_TRUE(
        text.ends_with("\n\xEF\xBF\xBD"
                       "end"));
}

TEST(ToolRunner, ACancelEndsAListing) {
    ToolDouble tool;
    tool.control.cancel();
    EXPECT_THROW(ToolRunner::listing(ToolDouble::program(), {}, tool.confinement(), tool.control),
                 CancelError);
}

TEST(ToolRunner, ARunIsNotedInTheLogOnceForItsPath) {
    const test::OwnHome home;
    ToolDouble tool;
    const test::TempFolder own;  // a path that no other test has run
    fs::copy_file(ToolDouble::program(), own / "MP4Box");
    ToolRunner::run(own / "MP4Box", {}, {}, tool.control);
    ToolRunner::run(own / "MP4Box", {}, {}, tool.control);
    const auto lines = Text::words(textOf(test::readFile(Paths::logsDir() / "tools.log")), '\n');
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].ends_with("  runs " + (own / "MP4Box").string()));
}

}  // namespace marlet
