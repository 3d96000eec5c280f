#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>

#include "foundation/syscalls.h"
#include "write/film_job.h"
#include "write/guards.h"

namespace marlet::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Holds = OtherProgram::Holds;

class OpenForWriting : public testing::Test {
protected:
    TempFolder folder_;
    std::filesystem::path file_ = folder_.write("film.mp4", "a film");
};

TEST_F(OpenForWriting, NobodyIsNamedForAFileThatNobodyHolds) {
    EXPECT_THAT(TagWriter::openForWriting(file_), IsEmpty());
}

TEST_F(OpenForWriting, AProgramThatWritesIsNamed) {
    const OtherProgram other(file_, Holds::ForWriting);
    EXPECT_THAT(TagWriter::openForWriting(file_), ElementsAre(OtherProgram::name));
}

TEST_F(OpenForWriting, AWriterIsFoundThroughAnotherNameOfTheFile) {
    std::filesystem::create_hard_link(file_, folder_ / "other.mp4");
    const OtherProgram other(folder_ / "other.mp4", Holds::ForWriting);
    EXPECT_THAT(TagWriter::openForWriting(file_), ElementsAre(OtherProgram::name));
}

TEST_F(OpenForWriting, AProgramThatReadsIsNoWriter) {
    const OtherProgram other(file_, Holds::ForReading);
    EXPECT_THAT(TagWriter::openForWriting(file_), IsEmpty());
}

TEST_F(OpenForWriting, ThisProcessDoesNotCount) {
    const FileHandle own = FileHandle::open(file_, O_RDWR, "test");
    EXPECT_THAT(TagWriter::openForWriting(file_), IsEmpty());
    const OtherProgram other(file_, Holds::ForWriting);
    EXPECT_THAT(TagWriter::openForWriting(file_), ElementsAre(OtherProgram::name));
}

TEST_F(OpenForWriting, AFileThatIsNotThereHasNoWriter) {
    EXPECT_THAT(TagWriter::openForWriting(folder_ / "none.mp4"), IsEmpty());
}

bool hasLeases(const std::filesystem::path& file) {
    const FileHandle handle = FileHandle::open(file, O_RDONLY, "test");
    if (::fcntl(handle.get(), F_SETLEASE, F_RDLCK) != 0) return false;
    ::fcntl(handle.get(), F_SETLEASE, F_UNLCK);
    return true;
}

TEST_F(OpenForWriting, AWriterThatShowsNoDescriptorIsAnotherProgram) {
    if (!hasLeases(file_)) GTEST_SKIP() << "this file system has no leases";
    const OtherProgram other(file_, Holds::MappedForWriting);
    EXPECT_THAT(TagWriter::openForWriting(file_), ElementsAre("another program"));
}

TEST_F(OpenForWriting, TheLookLeavesNoLeaseBehind) {
    TagWriter::openForWriting(file_);
    const FileHandle handle(Sys::open(file_, O_WRONLY | O_NONBLOCK));
    EXPECT_TRUE(handle.isOpen());
}

TEST_F(OpenForWriting, ABrokenLeaseDoesNotEndTheProgram) {
    TagWriter::openForWriting(file_);
    EXPECT_EQ(::raise(SIGIO), 0);
}

}  // namespace
}  // namespace marlet::test
