#include "foundation/syscalls.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/bulk_file.h"
#include "support/temp_folder.h"

namespace marlet {

using Sys::Call;
using Sys::Fault;
using test::failureOf;
using test::TempFolder;

TEST(Syscalls, AFailureReadsAsThePhraseAndTheSystemsText) {
    EXPECT_EQ(failureOf([] { failWith("cannot open it", ENOENT); }),
              "cannot open it: No such file or directory");
    EXPECT_EQ(failureOf([] {
                  errno = ENOSPC;
                  failWithErrno("write failed");
              }),
              "write failed: No space left on device");
    EXPECT_EQ(failureOf([] { failWith("odd", 99999); }), "odd: Unknown error 99999");
}

TEST(Syscalls, OnlyTheNthMatchingCallFailsUnlessTheFaultGoesOn) {
    const TempFolder folder;
    const auto file = folder.write("f", "x");
    {
        const Fault second(Call::Open, EACCES, 2);
        EXPECT_TRUE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
        EXPECT_FALSE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
        EXPECT_EQ(errno, EACCES);
        EXPECT_TRUE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
    }
    const Fault onwards(Call::Open, EACCES, 2, true);
    EXPECT_TRUE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
    EXPECT_FALSE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
    EXPECT_FALSE(FileHandle(Sys::open(file, O_RDONLY)).isOpen());
}

TEST(Syscalls, AFaultForOneFileLeavesTheOthersAlone) {
    const TempFolder folder;
    const auto bad = folder.write("bad", "x");
    const auto good = folder.write("good", "x");
    const FileHandle badFile(Sys::open(bad, O_RDONLY));
    const FileHandle goodFile(Sys::open(good, O_RDONLY));
    char byte = 0;
    const Fault fault(Call::Read, EIO, 1, true, bad);
    EXPECT_EQ(Sys::pread(goodFile.get(), &byte, 1, 0), 1);
    EXPECT_EQ(Sys::pread(badFile.get(), &byte, 1, 0), -1);
    EXPECT_EQ(errno, EIO);
}

TEST(Syscalls, ANameIsTakenOnlyWhileItIsFree) {
    const TempFolder folder;
    const auto from = folder.write("from", "new");
    const auto taken = folder.write("taken", "old");
    EXPECT_EQ(Sys::renameIfFree(from, taken), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(Sys::link(from, taken), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(test::readFile(taken), bytesOf("old"));
    EXPECT_EQ(Sys::link(from, folder / "second"), 0);
    EXPECT_EQ(Sys::renameIfFree(from, folder / "free"), 0);
    EXPECT_EQ(test::readFile(folder / "free"), bytesOf("new"));
    EXPECT_EQ(test::readFile(folder / "second"), bytesOf("new"));
}

TEST(Syscalls, CallsWithTwoPathsFailByEitherOfThem) {
    const TempFolder folder;
    const auto from = folder.write("from", "new");
    for (const auto& path : {from, folder / "to"}) {
        const Fault noRename(Call::RenameIfFree, EINVAL, 1, true, path);
        const Fault noLink(Call::Link, EPERM, 1, true, path);
        EXPECT_EQ(Sys::renameIfFree(from, folder / "to"), -1);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(Sys::link(from, folder / "to"), -1);
        EXPECT_EQ(errno, EPERM);
    }
}

TEST(Syscalls, AFaultIsFoundThroughALinkToItsFile) {
    const TempFolder folder;
    create_directory(folder / "real");
    const auto file = folder.write("real/f", "x");
    create_directory_symlink(folder / "real", folder / "link");
    const Fault fault(Call::Read, EIO, 1, true, folder / "link" / "f");
    const FileHandle handle(Sys::open(file, O_RDONLY));
    char byte = 0;
    EXPECT_EQ(Sys::pread(handle.get(), &byte, 1, 0), -1);
}

TEST(Syscalls, ARenameIsMatchedByEitherEnd) {
    const TempFolder folder;
    const auto from = folder.write("from", "x");
    const auto to = folder / "to";
    {
        const Fault fault(Call::Rename, EXDEV, 1, false, to);
        EXPECT_EQ(Sys::rename(from, to), -1);
    }
    {
        const Fault fault(Call::Rename, EXDEV, 1, false, from);
        EXPECT_EQ(Sys::rename(from, to), -1);
    }
    EXPECT_EQ(Sys::rename(from, to), 0);
}

TEST(Syscalls, EveryKindOfCallCanBeMadeToFail) {
    const TempFolder folder;
    const auto file = folder.write("f", "x");
    const FileHandle handle(Sys::open(file, O_RDWR));
    const int fd = handle.get();
    char byte = 'y';
    const std::vector<std::pair<Call, std::function<bool()>>> calls = {
        {Call::Open, [&] { return FileHandle(Sys::open(file, O_RDONLY)).isOpen(); }},
        {Call::Read, [&] { return Sys::pread(fd, &byte, 1, 0) == 1; }},
        {Call::Write, [&] { return Sys::pwrite(fd, &byte, 1, 0) == 1; }},
        {Call::Truncate, [&] { return Sys::ftruncate(fd, 1) == 0; }},
        {Call::Flush, [&] { return Sys::fsync(fd) == 0; }},
        {Call::Rename, [&] { return Sys::rename(file, file) == 0; }},
        {Call::Lock, [&] { return Sys::flock(fd, 8 /* unlock */) == 0; }},
        {Call::SetModified, [&] { return Sys::setModified(file, FileTime{}) == 0; }},
        {Call::Stat, [&] { return Sys::stat(file) && Sys::lstat(file) && Sys::fstat(fd); }},
        {Call::Space, [&] { return Sys::availableBytes(file).has_value(); }},
        {Call::MakeFolder, [&] { return Sys::mkdir(folder / "d", 0700) == 0; }},
        {Call::Unlink, [&] { return Sys::rmdir(folder / "d") == 0; }},
    };
    for (const auto& [kind, call] : calls) {
        {
            const Fault fault(kind, EIO);
            EXPECT_FALSE(call()) << static_cast<int>(kind);
            EXPECT_EQ(errno, EIO) << static_cast<int>(kind);
        }
        EXPECT_TRUE(call()) << static_cast<int>(kind);
    }
}

TEST(Syscalls, AnInterruptedCallIsRepeated) {
    const TempFolder folder;
    const auto file = folder.write("f", "x");
    const Fault opening(Call::Open, EINTR);
    const Fault reading(Call::Read, EINTR);
    const Fault writing(Call::Write, EINTR);
    const Fault flushing(Call::Flush, EINTR);
    const Fault cutting(Call::Truncate, EINTR);
    const FileHandle handle(Sys::open(file, O_RDWR));
    ASSERT_TRUE(handle.isOpen());
    char byte = 0;
    EXPECT_EQ(Sys::pread(handle.get(), &byte, 1, 0), 1);
    EXPECT_EQ(Sys::pwrite(handle.get(), &byte, 1, 0), 1);
    EXPECT_EQ(Sys::fsync(handle.get()), 0);
    EXPECT_EQ(Sys::ftruncate(handle.get(), 0), 0);
}

TEST(Syscalls, StatFollowsALinkAndLstatDoesNot) {
    const TempFolder folder;
    const auto file = folder.write("f", "12345");
    create_symlink(file, folder / "link");
    const auto followed = Sys::stat(folder / "link");
    const auto link = Sys::lstat(folder / "link");
    ASSERT_TRUE(followed && link);
    EXPECT_TRUE(followed->isRegular);
    EXPECT_EQ(followed->size, 5U);
    EXPECT_TRUE(link->isLink);
    EXPECT_FALSE(link->isRegular);
    EXPECT_FALSE(Sys::stat(folder / "missing").has_value());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(Sys::stat(folder.path())->isFolder);
}

TEST(Syscalls, ATimeBefore1970IsSetToTheNanosecond) {
    const TempFolder folder;
    const auto file = folder.write("f", "");
    const FileTime time{std::chrono::nanoseconds(-1'500'000'001)};
    ASSERT_EQ(Sys::setModified(file, time), 0);
    EXPECT_EQ(Sys::stat(file)->mtime, time);
}

TEST(Syscalls, DescriptorsAreNotInheritedByPrograms) {
    const TempFolder folder;
    const FileHandle handle(Sys::open(folder.write("f", ""), O_RDONLY));
    EXPECT_EQ(fcntl(handle.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(FileHandle, ClosesItsDescriptorOnEveryWayOut) {
    const TempFolder folder;
    const auto file = folder.write("f", "");
    int fd = -1;
    {
        const FileHandle handle = FileHandle::open(file, O_RDONLY, "cannot open");
        fd = handle.get();
        EXPECT_NE(fcntl(fd, F_GETFD), -1);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST(FileHandle, MovingHandsTheDescriptorOver) {
    const TempFolder folder;
    const auto file = folder.write("f", "");
    FileHandle first = FileHandle::open(file, O_RDONLY, "cannot open");
    const int fd = first.get();
    FileHandle second = FileHandle::open(file, O_RDONLY, "cannot open");
    const int replaced = second.get();
    second = std::move(first);
    EXPECT_EQ(second.get(), fd);
    EXPECT_EQ(fcntl(replaced, F_GETFD), -1);
}

TEST(FileHandle, OpeningFailsWithThePhrase) {
    const TempFolder folder;
    EXPECT_EQ(failureOf([&] { FileHandle::open(folder / "no", O_RDONLY, "cannot open it"); }),
              "cannot open it: No such file or directory");
}

}  // namespace marlet
