#include "write/delivery.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>

#include "foundation/errors.h"
#include "foundation/part_files.h"
#include "foundation/syscalls.h"
#include "support/temp_folder.h"
#include "write/place_file.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Deliver : public testing::Test {
protected:
    Deliver() : out_(folder_ / "out") { fs::create_directory(out_); }

    fs::path deliver(const StepProgress& progress = {}) {
        return Converter::deliver(built_, source_, stat_, out_, control_, progress);
    }
    std::string failure(const StepProgress& progress = {}) {
        try {
            deliver(progress);
            return "";
        } catch (const MFError& error) {
            return error.description();
        }
    }
    std::vector<std::string> delivered() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(out_))
            names.push_back(entry.path().filename().string());
        return names;
    }

    TempFolder folder_;
    fs::path source_ = folder_.write("Movie.mkv", "the source");
    fs::path built_ = folder_.write("built.mp4", "the new film");
    fs::path out_;
    RunControl control_;
    Converter::SrcStat stat_ = Converter::snapshot(source_);
};

TEST_F(Deliver, TheNewFileHasTheSourcesNameAndM4v) {
    EXPECT_EQ(deliver(), out_ / "Movie.m4v");
    EXPECT_EQ(textOf(readFile(out_ / "Movie.m4v")), "the new film");
    EXPECT_THAT(delivered(), ElementsAre("Movie.m4v"));
}

TEST_F(Deliver, ATakenNameGetsANumber) {
    const fs::path first = folder_.write("out/Movie.m4v", "mine");
    EXPECT_EQ(deliver(), out_ / "Movie 2.m4v");
    EXPECT_EQ(deliver(), out_ / "Movie 3.m4v");
    EXPECT_EQ(textOf(readFile(first)), "mine");
}

TEST_F(Deliver, ALinkThatLeadsNowhereTakesAName) {
    fs::create_symlink("nowhere", out_ / "Movie.m4v");
    EXPECT_EQ(deliver(), out_ / "Movie 2.m4v");
}

TEST_F(Deliver, ANameTakenWhileSavingIsNotReplaced) {
    // As late as a test can: the copy is made right after this report.
    const auto take = [&](const std::string&, double) { folder_.write("out/Movie.m4v", "mine"); };
    EXPECT_EQ(deliver(take), out_ / "Movie 2.m4v");
    EXPECT_EQ(textOf(readFile(out_ / "Movie.m4v")), "mine");
}

TEST_F(Deliver, TheSourceItselfIsNeverReplaced) {
    source_ = folder_.write("out/Film.m4v", "the source");
    stat_ = Converter::snapshot(source_);
    EXPECT_EQ(deliver(), out_ / "Film 2.m4v");
    EXPECT_EQ(textOf(readFile(source_)), "the source");
}

TEST_F(Deliver, ASourceThatChangedDuringTheWorkLeavesNothing) {
    folder_.write("Movie.mkv", "the source, longer");
    EXPECT_EQ(failure(), "the original changed while it was being converted; nothing was saved");
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(Deliver, ASourceOfAnotherDateChanged) {
    Sys::setModified(source_, Sys::stat(source_)->mtime + std::chrono::seconds(2));
    EXPECT_EQ(failure(), "the original changed while it was being converted; nothing was saved");
}

TEST_F(Deliver, ASourceThatIsGoneCannotBeRead) {
    fs::remove(source_);
    EXPECT_EQ(failure(), "the original can't be read");
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(Deliver, ASourceThatChangesDuringTheSaveIsToldAndTheFileStays) {
    const auto change = [&](const std::string&, double) { folder_.write("Movie.mkv", "changed"); };
    EXPECT_EQ(failure(change),
              "the original changed (it is not touched by Marlet; check what else is using it)");
    EXPECT_THAT(delivered(), ElementsAre("Movie.m4v"));
}

TEST_F(Deliver, ItReportsOnceAndCannotBePausedThen) {
    std::vector<std::pair<std::string, double>> reports;
    deliver([&](const std::string& label, double fraction) {
        reports.emplace_back(label, fraction);
        EXPECT_TRUE(RunControl::criticalActive());
        control_.cancel();
    });
    EXPECT_THAT(reports, ElementsAre(std::pair<std::string, double>("Saving the new file", 0.87)));
    EXPECT_THAT(delivered(), ElementsAre("Movie.m4v"));
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST_F(Deliver, AFailingCopyLeavesNoPart) {
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true);
    EXPECT_EQ(failure(), "saving the new file failed: write failed: No space left on device");
    EXPECT_THAT(delivered(), IsEmpty());
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST_F(Deliver, AMissingFolderIsAFailureOfSaving) {
    fs::remove(out_);
    EXPECT_EQ(failure(),
              "saving the new file failed: cannot create copy: No such file or directory");
}

TEST_F(Deliver, ACopyThatIsNotTheSameIsRemoved) {
    // A file that says it is empty is never the size of its copy.
    built_ = "/proc/self/status";
    EXPECT_EQ(failure(), "saving the new file failed: the saved file didn't match");
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(Deliver, ACopyThatCannotBeReadBackIsRemoved) {
    // The first reading is the copy's, the second the comparison's.
    const Sys::Fault fault(Sys::Call::Open, EIO, 2, false, built_);
    EXPECT_EQ(failure(),
              "saving the new file failed: cannot open file to compare: Input/output error");
    EXPECT_THAT(delivered(), IsEmpty());
}

/// Dies by a signal while it has a file in the output folder.
void dieAtWork(const fs::path& folder) {
    const pid_t pid = fork();
    if (pid == 0) {
        const PartFile part(folder, folder.parent_path());
        writeFile(part.path(), viewOf("half a film"));
        raise(SIGKILL);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
}

TEST_F(Deliver, WhatADeadRunLeftIsRemoved) {
    dieAtWork(out_);
    ASSERT_EQ(delivered().size(), 1U);
    deliver();
    EXPECT_THAT(delivered(), ElementsAre("Movie.m4v"));
}

TEST_F(Deliver, TheFolderOfADeadRunTellsWhatItLeft) {
    dieAtWork(out_);
    PartFiles::removeNoted(folder_.path());
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(Deliver, ACopyThatADeadRunBeganIsRemoved) {
    folder_.write("out/.marlet-0123ABCD.part.partial", "half a film");
    deliver();
    EXPECT_THAT(delivered(), ElementsAre("Movie.m4v"));
}

TEST_F(Deliver, WhatALivingRunIsAtWorkOnStays) {
    std::optional<PartFile> other(std::in_place, out_, folder_.path());
    writeFile(other->path(), viewOf("half a film"));
    const std::string name = other->path().filename();
    folder_.write("out/.marlet-0123ABCD.part", "of a dead run");
    deliver();
    // Which one is left over can't be told while somebody is at work.
    EXPECT_THAT(delivered(), UnorderedElementsAre("Movie.m4v", name, ".marlet-0123ABCD.part"));
    other.reset();
    deliver();
    EXPECT_THAT(delivered(), UnorderedElementsAre("Movie.m4v", "Movie 2.m4v"));
}

TEST_F(Deliver, OnlyFilesOfTheExactNameAreRemoved) {
    const std::vector<std::string> names = {
        ".marlet-0123abcd.part",  ".marlet-0123ABC.part",
        ".marlet-0123ABCDE.part", "marlet-0123ABCD.part",
        ".marlet-0123ABCD.mp4",   ".marlet-0123ABCG.part",
        ".marlet-.part",          ".marlet-0123ABCD.part.partial.m4v"};
    for (const std::string& name : names) folder_.write("out/" + name, "mine");
    deliver();
    for (const std::string& name : names) EXPECT_TRUE(fs::exists(out_ / name)) << name;
}

TEST_F(Deliver, AFolderAndALinkOfThatNameStay) {
    fs::create_directory(out_ / ".marlet-00000000.part");
    fs::create_symlink(source_, out_ / ".marlet-11111111.part");
    deliver();
    EXPECT_TRUE(fs::is_directory(out_ / ".marlet-00000000.part"));
    EXPECT_TRUE(fs::is_symlink(out_ / ".marlet-11111111.part"));
}

TEST_F(Deliver, AFolderThatCannotBeLockedIsDeliveredTo) {
    folder_.write("out/.marlet-0123ABCD.part", "perhaps of a living run");
    const Sys::Fault fault(Sys::Call::Lock, EBADF, 1, true);
    deliver();
    EXPECT_THAT(delivered(), UnorderedElementsAre("Movie.m4v", ".marlet-0123ABCD.part"));
}

TEST_F(Deliver, ANameTakenBetweenTheLookAndTheMoveSendsItToTheNext) {
    const Sys::Fault fault(Sys::Call::RenameIfFree, EEXIST);
    EXPECT_EQ(deliver(), out_ / "Movie 2.m4v");
    EXPECT_THAT(delivered(), ElementsAre("Movie 2.m4v"));
}

TEST_F(Deliver, AMoveThatFailsLeavesNothing) {
    const Sys::Fault fault(Sys::Call::RenameIfFree, EIO);
    EXPECT_EQ(failure(),
              "saving the new file failed: cannot move the file to its name: Input/output error");
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(Deliver, AFolderThatCannotBeFlushedLeavesNothing) {
    // The first flushing of the folder is the copy's.
    const Sys::Fault fault(Sys::Call::Flush, EIO, 2, true, out_);
    EXPECT_EQ(failure(), "saving the new file failed: cannot flush folder: Input/output error");
    EXPECT_THAT(delivered(), IsEmpty());
}

class MoveIfFree : public testing::Test {
protected:
    bool move() const { return moveIfFree(from_, to_); }
    std::string failure() const {
        try {
            move();
            return "";
        } catch (const MFError& error) {
            return error.description();
        }
    }

    TempFolder folder_;
    fs::path from_ = folder_.write("part", "the new film");
    fs::path to_ = folder_ / "Movie.m4v";
};

TEST_F(MoveIfFree, GivesTheFileItsName) {
    EXPECT_TRUE(move());
    EXPECT_EQ(textOf(readFile(to_)), "the new film");
    EXPECT_FALSE(fs::exists(from_));
}

TEST_F(MoveIfFree, NeverReplacesWhatIsThere) {
    folder_.write("Movie.m4v", "mine");
    EXPECT_FALSE(move());
    EXPECT_EQ(textOf(readFile(to_)), "mine");
    EXPECT_EQ(textOf(readFile(from_)), "the new film");
}

class MoveWithoutTheFlag : public MoveIfFree, public testing::WithParamInterface<int> {
protected:
    Sys::Fault unknown_{Sys::Call::RenameIfFree, GetParam(), 1, true};
};
INSTANTIATE_TEST_SUITE_P(Errors, MoveWithoutTheFlag, testing::Values(EINVAL, ENOSYS, EOPNOTSUPP));

TEST_P(MoveWithoutTheFlag, GivesTheFileItsName) {
    EXPECT_TRUE(move());
    EXPECT_EQ(textOf(readFile(to_)), "the new film");
    EXPECT_FALSE(fs::exists(from_));
}

TEST_P(MoveWithoutTheFlag, NeverReplacesWhatIsThere) {
    folder_.write("Movie.m4v", "mine");
    EXPECT_FALSE(move());
    EXPECT_EQ(textOf(readFile(to_)), "mine");
}

TEST_P(MoveWithoutTheFlag, AFirstNameThatStaysIsNoFailure) {
    const Sys::Fault fault(Sys::Call::Unlink, EIO);
    EXPECT_TRUE(move());
    EXPECT_EQ(textOf(readFile(to_)), "the new film");
}

TEST_P(MoveWithoutTheFlag, AFailingLinkIsToldWithTheSystemsWords) {
    const Sys::Fault fault(Sys::Call::Link, EIO);
    EXPECT_EQ(failure(), "cannot move the file to its name: Input/output error");
    EXPECT_FALSE(fs::exists(to_));
}

TEST_P(MoveWithoutTheFlag, WithoutLinksTheFileGetsItsNameToo) {
    const Sys::Fault fault(Sys::Call::Link, EPERM);
    EXPECT_TRUE(move());
    EXPECT_EQ(textOf(readFile(to_)), "the new film");
    EXPECT_FALSE(fs::exists(from_));
}

TEST_P(MoveWithoutTheFlag, WithoutLinksNothingIsReplacedEither) {
    folder_.write("Movie.m4v", "mine");
    const Sys::Fault fault(Sys::Call::Link, EPERM);
    EXPECT_FALSE(move());
    EXPECT_EQ(textOf(readFile(to_)), "mine");
}

TEST_P(MoveWithoutTheFlag, WithoutLinksAFailingRenameLeavesTheNameFree) {
    const Sys::Fault noLinks(Sys::Call::Link, EPERM);
    const Sys::Fault fault(Sys::Call::Rename, EIO);
    EXPECT_EQ(failure(), "cannot move the file to its name: Input/output error");
    EXPECT_FALSE(fs::exists(to_));
    EXPECT_TRUE(fs::exists(from_));
}

}  // namespace
}  // namespace marlet::test
