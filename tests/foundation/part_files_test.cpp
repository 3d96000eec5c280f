#include "foundation/part_files.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

/// The folder of a job that has ended, and a person's folder with what it left there.
class NotedPart : public testing::Test {
protected:
    NotedPart() {
        WorkArea::release(job_, WorkArea::makeClaimed(job_));
        note(part_);
    }
    void note(const fs::path& path) const { PartFiles::note(job_, path); }
    static void start() { WorkArea::cleanUp(WorkArea::DryRun::No); }

    OwnHome home_;
    TempFolder folder_;
    fs::path job_ = Paths::workDir() / newUUID();
    fs::path part_ = folder_.write(PartFiles::newName(), "half a film");
};

TEST(PartName, IsOfEightDigitsAndMayBeThatOfAGrowingCopy) {
    EXPECT_TRUE(PartFiles::isName(PartFiles::newName()));
    EXPECT_NE(PartFiles::newName(), PartFiles::newName());
    EXPECT_TRUE(PartFiles::isName(".marlet-0123ABCD.part"));
    EXPECT_TRUE(PartFiles::isName(".marlet-0123ABCD.part.partial"));
    for (const char* other :
         {"", "Movie.m4v", ".marlet-.part", ".marlet-0123abcd.part", ".marlet-0123ABC.part",
          ".marlet-0123ABCDE.part", "xmarlet-0123ABCD.part",
          ".marlet-0123ABCD.part.partial.partial", ".marlet-0123ABCD.mp4v", ".partial"})
        EXPECT_FALSE(PartFiles::isName(other)) << other;
}

TEST_F(NotedPart, OfADeadJobGoesAtTheNextStart) {
    start();
    EXPECT_FALSE(fs::exists(part_));
    EXPECT_FALSE(fs::exists(job_));
}

TEST_F(NotedPart, GoesWithItsGrowingCopy) {
    const fs::path copy = folder_.write(part_.filename().string() + ".partial", "half");
    fs::remove(part_);
    start();
    EXPECT_FALSE(fs::exists(copy));
}

TEST_F(NotedPart, OfALivingJobStays) {
    const FileHandle lock = WorkArea::claim(job_);
    start();
    EXPECT_TRUE(fs::exists(part_));
    WorkArea::release(job_, FileHandle());
}

TEST_F(NotedPart, StaysInADryRun) {
    WorkArea::cleanUp(WorkArea::DryRun::Yes);
    EXPECT_TRUE(fs::exists(part_));
}

TEST_F(NotedPart, OfAFolderThatWasNotWhollyRemovedGoesWithTheRestOfIt) {
    const fs::path doorstep = Paths::workDir().parent_path() / "work-doorstep";
    fs::rename(job_, doorstep / newUUID());
    start();
    EXPECT_FALSE(fs::exists(part_));
    EXPECT_TRUE(fs::is_empty(doorstep));
}

TEST_F(NotedPart, ThatCannotBeRemovedIsNoFailure) {
    const Sys::Fault fault(Sys::Call::Unlink, EACCES, 1, true, part_);
    start();
    EXPECT_FALSE(fs::exists(job_));
}

TEST_F(NotedPart, IsNamedFromTheRootEvenWhenTheFolderWasNot) {
    note(fs::relative(part_));
    start();
    EXPECT_FALSE(fs::exists(part_));
}

TEST_F(NotedPart, OfAnotherNameIsNotRemovedWhateverTheNoteSays) {
    for (const char* name : {"Movie.m4v", ".marlet-0123ABCD.mp4", ".marlet-0123ABCD.partial"}) {
        const fs::path mine = folder_.write(name, "mine");
        note(mine);
        PartFiles::removeNoted(job_);
        EXPECT_TRUE(fs::exists(mine)) << name;
    }
}

TEST_F(NotedPart, IsNeitherAFolderNorALink) {
    const fs::path mine = folder_.write("Movie.m4v", "mine");
    const fs::path link = folder_ / ".marlet-00000000.part";
    const fs::path inner = folder_ / ".marlet-11111111.part";
    fs::create_symlink(mine, link);
    fs::create_directory(inner);
    for (const fs::path& each : {link, inner}) {
        note(each);
        PartFiles::removeNoted(job_);
        EXPECT_TRUE(fs::is_symlink(each) || fs::is_directory(each));
    }
    EXPECT_TRUE(fs::exists(mine));
}

TEST_F(NotedPart, ANoteThatCannotBeReadNamesNothing) {
    for (const char* text : {"", "\n", "relative/.marlet-0123ABCD.part"}) {
        writeFile(job_ / ".part", viewOf(text));
        PartFiles::removeNoted(job_);
    }
    fs::remove(job_ / ".part");
    PartFiles::removeNoted(job_);
    EXPECT_TRUE(fs::exists(part_));
}

TEST_F(NotedPart, WithoutRoomForTheNoteTheJobGoesOn) {
    const Sys::Fault full(Sys::Call::Write, ENOSPC, 1, true);
    EXPECT_NO_THROW(note(part_));
}

}  // namespace
}  // namespace marlet::test
