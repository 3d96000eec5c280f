#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"
#include "support/temp_folder.h"
#include "write/journal.h"
#include "write/other_copy.h"
#include "write/tag_writer.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

/// What a crash in the middle of a write leaves: a half-written file, its verified copy in a job
/// folder, and the journal.
class Recovery : public testing::Test {
protected:
    Recovery() : job_(Paths::workDir() / newUUID()) {
        fs::create_directories(job_);
        writeFile(job_ / ".lock", {});
        writeFile(temp(), viewOf("the verified copy"));
        WriteJournal{file_, temp(), FileOps::size(temp())}.save();
    }
    fs::path temp() const { return job_ / "candidate.mp4"; }
    std::optional<std::string> recover() { return TagWriter::recoverInterruptedWrite(); }
    bool hasJournal() const { return fs::exists(Paths::journalFile()); }
    std::string film() const { return textOf(readFile(file_)); }

    OwnHome home_;
    TempFolder folder_;
    fs::path file_ = folder_.write("Film.mp4", "half the verif");
    fs::path job_;
};

constexpr const char* finished =
    "A previous write to Film.mp4 was interrupted. It has been finished and checked byte for byte.";
constexpr const char* copyGone =
    "A previous write to Film.mp4 was interrupted and its verified copy is gone. Check the file by "
    "playing it.";

TEST_F(Recovery, NoJournalIsSilent) {
    WriteJournal::remove();
    EXPECT_EQ(recover(), std::nullopt);
    EXPECT_EQ(film(), "half the verif");
}

TEST_F(Recovery, AnInterruptedWriteIsFinished) {
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(film(), "the verified copy");
    EXPECT_FALSE(hasJournal());
    EXPECT_FALSE(fs::exists(job_));
    EXPECT_EQ(recover(), std::nullopt);
}

TEST_F(Recovery, AFileThatIsLongerThanItsCopyIsCut) {
    writeFile(file_, viewOf("the verified copy and the tail of a longer original"));
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(film(), "the verified copy");
}

TEST_F(Recovery, AFullyWrittenFileIsNotWrittenAgain) {
    writeFile(file_, viewOf("the verified copy"));
    const auto date = FileOps::mtime(file_);
    const Sys::Fault fault(Sys::Call::Write, EIO, 1, true, file_);
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(FileOps::mtime(file_), date);
    EXPECT_FALSE(hasJournal());
}

TEST_F(Recovery, AFullyWrittenFileIsFlushedBeforeItsCopyGoes) {
    writeFile(file_, viewOf("the verified copy"));
    const Sys::Fault fault(Sys::Call::Flush, EIO, 1, true, file_);
    EXPECT_EQ(recover(),
              "A previous write to Film.mp4 was interrupted and finishing it failed (cannot flush "
              "file: Input/output error). The verified copy is at " +
                  temp().string() + ".");
    EXPECT_TRUE(hasJournal());
    EXPECT_TRUE(fs::exists(temp()));
}

TEST_F(Recovery, TheFileKeepsItsIdentity) {
    const auto before = Sys::stat(file_)->inode;
    recover();
    EXPECT_EQ(Sys::stat(file_)->inode, before);
}

TEST_F(Recovery, ACopyThatIsGoneIsToldOnce) {
    fs::remove_all(job_);
    EXPECT_EQ(recover(), copyGone);
    EXPECT_FALSE(hasJournal());
    EXPECT_EQ(recover(), std::nullopt);
    EXPECT_EQ(film(), "half the verif");
}

TEST_F(Recovery, ACopyOfAnotherSizeIsGoneAndNeverWritten) {
    writeFile(temp(), viewOf("a copy that was cut"));
    EXPECT_EQ(recover(), copyGone);
    EXPECT_EQ(film(), "half the verif");
    EXPECT_FALSE(hasJournal());
}

TEST_F(Recovery, ACopyThatCannotBeLookedAtIsNotTakenForGone) {
    {
        const Sys::Fault fault(Sys::Call::Stat, EIO, 1, true, temp());
        EXPECT_EQ(recover(),
                  "A previous write to Film.mp4 was interrupted and finishing it failed (the "
                  "verified copy can't be read). The verified copy is at " +
                      temp().string() + ".");
        EXPECT_EQ(film(), "half the verif");
        EXPECT_TRUE(hasJournal());
    }
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(film(), "the verified copy");
}

TEST_F(Recovery, AFailureIsToldAtEveryStartUntilItWorks) {
    const std::string told =
        "A previous write to Film.mp4 was interrupted and finishing it failed (write failed: "
        "Input/output error). The verified copy is at " +
        temp().string() + ".";
    {
        const Sys::Fault fault(Sys::Call::Write, EIO, 1, true, file_);
        EXPECT_EQ(recover(), told);
        EXPECT_TRUE(hasJournal());
        EXPECT_TRUE(fs::exists(temp()));
        EXPECT_EQ(recover(), told);
        // The clean-up of the same start leaves what the next one needs.
        WorkArea::cleanUp(WorkArea::DryRun::No);
        EXPECT_TRUE(fs::exists(temp()));
    }
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(film(), "the verified copy");
}

TEST_F(Recovery, AFileThatIsAwayIsAFailureAndKeepsTheCopy) {
    fs::remove(file_);
    EXPECT_EQ(recover(),
              "A previous write to Film.mp4 was interrupted and finishing it failed (cannot open "
              "video for writing: No such file or directory). The verified copy is at " +
                  temp().string() + ".");
    EXPECT_TRUE(hasJournal());
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(Recovery, AWriteThatCannotBeFlushedIsAFailure) {
    const Sys::Fault fault(Sys::Call::Flush, EIO, 1, true, file_);
    const auto told = recover();
    ASSERT_TRUE(told);
    EXPECT_NE(told->find("finishing it failed (write failed: Input/output error)"),
              std::string::npos);
    EXPECT_TRUE(hasJournal());
}

TEST_F(Recovery, AResultThatReadsBackDifferentlyIsAFailure) {
    // Another writer spoils the first byte for as long as it takes.
    std::atomic<bool> isOver = false;
    std::thread spoiler([&] {
        const FileHandle handle = FileHandle::open(file_, O_WRONLY, "test");
        while (!isOver) Sys::pwrite(handle.get(), "X", 1, 0);
    });
    std::optional<std::string> told;
    for (int i = 0; i < 200 && (!told || told == finished); i++) {
        writeFile(temp(), viewOf("the verified copy"));
        WriteJournal{file_, temp(), FileOps::size(temp())}.save();
        told = recover();
        fs::create_directories(job_);
    }
    isOver = true;
    spoiler.join();
    EXPECT_EQ(told,
              "A previous write to Film.mp4 was interrupted and finishing it failed (compare "
              "failed). The verified copy is at " +
                  temp().string() + ".");
    EXPECT_TRUE(hasJournal());
}

TEST_F(Recovery, AFolderHeldByALivingProgramIsLeftInSilence) {
    const FileHandle lock = FileHandle::open(job_ / ".lock", O_RDWR, "test");
    ASSERT_EQ(::flock(lock.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(recover(), std::nullopt);
    EXPECT_EQ(film(), "half the verif");
    EXPECT_TRUE(hasJournal());
    EXPECT_TRUE(fs::exists(temp()));
    ASSERT_EQ(::flock(lock.get(), LOCK_UN), 0);
    EXPECT_EQ(recover(), finished);
}

TEST_F(Recovery, AFileThatAnotherCopyIsChangingIsLeftInSilence) {
    OtherCopysTurn other;
    EXPECT_EQ(recover(), std::nullopt);
    EXPECT_EQ(film(), "half the verif");
    EXPECT_TRUE(hasJournal());
    EXPECT_TRUE(fs::exists(temp()));
    other.end();
    EXPECT_EQ(recover(), finished);
    EXPECT_TRUE(other.take());
}

TEST_F(Recovery, AJournalThatCannotBeReadStays) {
    writeFile(Paths::journalFile(), viewOf("{"));
    EXPECT_EQ(recover(), std::nullopt);
    EXPECT_TRUE(hasJournal());
    EXPECT_EQ(film(), "half the verif");
}

TEST_F(Recovery, AFolderThatIsNoJobFolderIsNeverRemoved) {
    const fs::path copy = folder_.write("My Films/candidate.mp4", "the verified copy");
    const fs::path mine = folder_.write("My Films/mine.txt", "mine");
    WriteJournal{file_, copy, FileOps::size(copy)}.save();
    EXPECT_EQ(recover(), finished);
    EXPECT_EQ(film(), "the verified copy");
    EXPECT_TRUE(fs::exists(mine));
    EXPECT_TRUE(fs::exists(copy));
    EXPECT_FALSE(fs::exists(copy.parent_path() / ".lock"));
}

TEST_F(Recovery, AFolderBelowAJobFolderIsNotRemovedEither) {
    fs::create_directory(job_ / "inner");
    writeFile(job_ / "inner/copy.mp4", viewOf("the verified copy"));
    WriteJournal{file_, job_ / "inner/copy.mp4", FileOps::size(job_ / "inner/copy.mp4")}.save();
    EXPECT_EQ(recover(), finished);
    EXPECT_TRUE(fs::exists(job_ / "inner"));
}

TEST_F(Recovery, ALinkInTheCopysPlaceIsNeverFollowed) {
    const fs::path secret = folder_.write("secret", "the verified copy");
    fs::remove(temp());
    fs::create_symlink(secret, temp());
    EXPECT_EQ(recover(), copyGone);
    EXPECT_EQ(film(), "half the verif");
}

TEST_F(Recovery, AnEmptyCopyIsNeverWritten) {
    writeFile(temp(), {});
    WriteJournal{file_, temp(), 0}.save();
    EXPECT_EQ(recover(), copyGone);
    EXPECT_EQ(film(), "half the verif");
}

TEST_F(Recovery, AJournalThatStaysKeepsTheCopyForTheNextStart) {
    {
        const Sys::Fault fault(Sys::Call::Unlink, EIO, 1, true, Paths::journalFile());
        EXPECT_EQ(recover(), finished);
        EXPECT_TRUE(fs::exists(temp()));
    }
    EXPECT_EQ(recover(), finished);
    EXPECT_FALSE(hasJournal());
}

TEST_F(Recovery, ANameThatIsNoTextIsToldAsText) {
    const fs::path odd = folder_.path() / std::string("\xFF.mp4");
    writeFile(odd, viewOf("half"));
    WriteJournal{odd, temp(), FileOps::size(temp())}.save();
    EXPECT_EQ(recover(),
              "A previous write to \xEF\xBF\xBD.mp4 was interrupted. It has been finished and "
              "checked byte for byte.");
    EXPECT_EQ(textOf(readFile(odd)), "the verified copy");
}

}  // namespace
}  // namespace marlet::test
