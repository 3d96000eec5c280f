#include "write/delivery.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/temp_folder.h"

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

}  // namespace
}  // namespace marlet::test
