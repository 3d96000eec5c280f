#include "foundation/file_ops.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "foundation/bulk_file.h"
#include "foundation/digest.h"
#include "foundation/errors.h"
#include "support/temp_folder.h"

namespace marlet {

using Sys::Call;
using Sys::Fault;
using test::chunk;
using test::failureOf;
using test::mebibyte;
using test::patterned;
using test::readFile;

namespace fs = std::filesystem;

class FileOpsTest : public testing::Test {
protected:
    Progress noting() {
        return [this](double it) { reports.push_back(it); };
    }

    test::TempFolder folder;
    RunControl control;
    std::vector<double> reports;
};

TEST_F(FileOpsTest, SizeAndDateOfAFileThatCantBeReadAreHarmless) {
    EXPECT_EQ(FileOps::size(folder / "none"), 0U);
    EXPECT_EQ(FileOps::mtime(folder / "none"), std::nullopt);
    const auto file = folder.write("f", "12345");
    EXPECT_EQ(FileOps::size(file), 5U);
    EXPECT_NE(FileOps::mtime(file), std::nullopt);
    const Fault fault(Call::Stat, EIO, 1, true);
    EXPECT_EQ(FileOps::size(file), 0U);
    EXPECT_EQ(FileOps::mtime(file), std::nullopt);
}

TEST_F(FileOpsTest, FreeSpaceOfAPlaceThatIsStillToBeMadeIsThatOfItsNearestParent) {
    EXPECT_GT(FileOps::freeSpace(folder.path(), true), 0);
    EXPECT_GT(FileOps::freeSpace(folder / "not" / "yet", false), 0);
    EXPECT_GT(FileOps::freeSpace(folder.write("file", "") / "below", true), 0);
}

TEST_F(FileOpsTest, FreeSpaceThatCantBeReadIsNone) {
    const Fault fault(Call::Space, EIO);
    EXPECT_EQ(FileOps::freeSpace(folder.path(), true), 0);
}

TEST_F(FileOpsTest, HashingGivesTheSameWithAndWithoutTheCache) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, chunk, chunk + mebibyte + 1}) {
        const Bytes content = patterned(size);
        const auto file = folder.write("f", content);
        EXPECT_EQ(FileOps::hashFile(file, FileOps::BypassCache::No, control), sha256Hex(content));
        EXPECT_EQ(FileOps::hashFile(file, FileOps::BypassCache::Yes, control), sha256Hex(content));
    }
}

TEST_F(FileOpsTest, HashingReportsEachChunkOnce) {
    FileOps::hashFile(folder.write("f", patterned(2 * chunk)), FileOps::BypassCache::No, control,
                      noting());
    EXPECT_EQ(reports, (std::vector<double>{0.5, 1.0}));
    reports.clear();
    FileOps::hashFile(folder.write("g", ""), FileOps::BypassCache::No, control, noting());
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileOpsTest, HashingTellsItsFailures) {
    const auto hash = [&](const fs::path& file) {
        FileOps::hashFile(file, FileOps::BypassCache::Yes, control);
    };
    EXPECT_EQ(failureOf([&] { hash(folder / "none"); }),
              "cannot open file to hash: No such file or directory");
    EXPECT_EQ(failureOf([&] { hash(folder.path()); }), "read failed: Is a directory");
    const auto file = folder.write("f", patterned(100));
    {
        const Fault fault(Call::Read, EIO);
        EXPECT_EQ(failureOf([&] { hash(file); }), "read failed: Input/output error");
    }
    control.cancel();
    EXPECT_THROW(hash(file), CancelError);
}

TEST_F(FileOpsTest, EqualFilesAreEqualToTheLastByte) {
    for (const std::size_t size : {std::size_t{1}, mebibyte, chunk, chunk + 1}) {
        Bytes content = patterned(size);
        const auto a = folder.write("a", content);
        const auto b = folder.write("b", content);
        EXPECT_TRUE(FileOps::filesEqual(a, b, control)) << size;
        content.back() ^= 1;
        test::writeFile(b, content);
        EXPECT_FALSE(FileOps::filesEqual(a, b, control)) << size;
    }
}

TEST_F(FileOpsTest, TwoEmptyFilesAreEqual) {
    EXPECT_TRUE(
        FileOps::filesEqual(folder.write("a", ""), folder.write("b", ""), control, noting()));
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileOpsTest, ADifferenceEndsTheComparison) {
    Bytes content = patterned(2 * chunk);
    const auto a = folder.write("a", content);
    content.front() ^= 1;
    EXPECT_FALSE(FileOps::filesEqual(a, folder.write("b", content), control, noting()));
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileOpsTest, FilesOfDifferentSizesAreUnequalEvenIfOneCannotBeOpened) {
    const auto a = folder.write("a", "123");
    EXPECT_FALSE(FileOps::filesEqual(a, folder / "none", control));
    const Fault fault(Call::Open, EACCES, 1, true);
    EXPECT_FALSE(FileOps::filesEqual(a, folder.write("b", "1234"), control));
}

TEST_F(FileOpsTest, ComparingTellsItsFailures) {
    const auto a = folder.write("a", "123");
    const auto b = folder.write("b", "123");
    const auto compare = [&] { FileOps::filesEqual(a, b, control); };
    for (const fs::path& file : {a, b}) {
        {
            const Fault fault(Call::Open, EACCES, 1, true, file);
            EXPECT_EQ(failureOf(compare), "cannot open file to compare: Permission denied");
        }
        const Fault fault(Call::Read, EIO, 1, true, file);
        EXPECT_EQ(failureOf(compare), "read failed: Input/output error");
    }
    control.cancel();
    EXPECT_THROW(compare(), CancelError);
}

TEST_F(FileOpsTest, ShortReadsOfOneSideDontLookLikeADifference) {
    const Bytes content = patterned(mebibyte + 5);
    const auto a = folder.write("a", content);
    const auto b = folder.write("b", content);
    const Sys::ShortTransfers shorter(99'991);
    EXPECT_TRUE(FileOps::filesEqual(a, b, control));
}

TEST_F(FileOpsTest, OverwritingWithAShorterFileLeavesExactlyItsLength) {
    const auto file = folder.write("film.m4v", patterned(2 * chunk + 100, 1));
    const auto with = folder.write("rebuilt.m4v", patterned(chunk + 3, 2));
    FileOps::overwriteInPlace(file, with, noting());
    EXPECT_EQ(readFile(file), patterned(chunk + 3, 2));
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(FileOpsTest, OverwritingKeepsTheFilesIdentity) {
    const auto file = folder.write("film.m4v", patterned(10, 1));
    create_hard_link(file, folder / "other name");
    const auto inode = Sys::stat(file)->inode;
    FileOps::overwriteInPlace(file, folder.write("rebuilt.m4v", patterned(chunk, 2)));
    EXPECT_EQ(Sys::stat(file)->inode, inode);
    EXPECT_EQ(readFile(folder / "other name"), patterned(chunk, 2));
}

TEST_F(FileOpsTest, OverwritingNeitherCreatesNorTruncatesBeforehand) {
    const auto with = folder.write("rebuilt.m4v", patterned(10, 2));
    EXPECT_EQ(failureOf([&] { FileOps::overwriteInPlace(folder / "none", with); }),
              "cannot open video for writing: No such file or directory");
    EXPECT_FALSE(exists(folder / "none"));
    const auto file = folder.write("film.m4v", patterned(100, 1));
    const Fault fault(Call::Read, EIO, 1, true, with);
    EXPECT_EQ(failureOf([&] { FileOps::overwriteInPlace(file, with); }),
              "read failed: Input/output error");
    EXPECT_EQ(readFile(file), patterned(100, 1));
}

TEST_F(FileOpsTest, OverwritingTellsItsFailures) {
    const auto file = folder.write("film.m4v", patterned(100, 1));
    const auto with = folder.write("rebuilt.m4v", patterned(50, 2));
    const auto overwrite = [&] { FileOps::overwriteInPlace(file, with); };
    EXPECT_EQ(failureOf([&] { FileOps::overwriteInPlace(file, folder / "none"); }),
              "cannot open rebuilt file: No such file or directory");
    {
        const Fault fault(Call::Write, ENOSPC);
        EXPECT_EQ(failureOf(overwrite), "write failed: No space left on device");
    }
    {
        const Fault fault(Call::Truncate, EPERM);
        EXPECT_EQ(failureOf(overwrite), "cannot set final size: Operation not permitted");
    }
    const Fault fault(Call::Flush, EIO);
    EXPECT_EQ(failureOf(overwrite), "write failed: Input/output error");
}

TEST_F(FileOpsTest, WritingNothingDoesNothing) {
    EXPECT_EQ(failureOf([] { FileOps::writeAll(-1, {}, 0); }), "");
    EXPECT_EQ(failureOf([] { FileOps::writeAll(-1, viewOf("x"), 0); }),
              "write failed: Bad file descriptor");
}

TEST_F(FileOpsTest, WritingAndReadingGoByPosition) {
    const auto file = folder.write("f", "0123456789");
    const FileHandle handle = FileHandle::open(file, O_RDWR, "cannot open");
    FileOps::writeAll(handle.get(), viewOf("ab"), 4);
    EXPECT_EQ(textOf(readFile(file)), "0123ab6789");
    Bytes buffer(8);
    EXPECT_EQ(FileOps::readFull(handle.get(), buffer, 6), 4U);
    EXPECT_EQ(textOf(ByteView(buffer).first(4)), "6789");
    EXPECT_EQ(FileOps::readFull(handle.get(), buffer, 10), 0U);
}

TEST_F(FileOpsTest, ASmallFileIsReadWholeAndALargerOneNotAtAll) {
    const auto file = folder.write("f", patterned(1000));
    EXPECT_EQ(FileOps::readSmall(file), patterned(1000));
    EXPECT_EQ(FileOps::readSmall(file, 1000), patterned(1000));
    EXPECT_EQ(FileOps::readSmall(file, 999), std::nullopt);
    EXPECT_EQ(FileOps::readSmall(folder.write("empty", "")), Bytes());
}

TEST_F(FileOpsTest, WhatIsNoReadableFileGivesNoSmallContent) {
    EXPECT_EQ(FileOps::readSmall(folder / "none"), std::nullopt);
    EXPECT_EQ(FileOps::readSmall(folder.path()), std::nullopt);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(FileOps::readSmall(folder / "pipe"), std::nullopt);
    const auto file = folder.write("f", "x");
    const Fault fault(Call::Read, EIO);
    EXPECT_EQ(FileOps::readSmall(file), std::nullopt);
}

TEST_F(FileOpsTest, AFileThatSaysItIsEmptyIsReadAllTheSame) {
    const auto content = FileOps::readSmall("/proc/self/status", 100'000);
    ASSERT_TRUE(content.has_value());
    EXPECT_TRUE(textOf(*content).starts_with("Name:"));
}

TEST_F(FileOpsTest, APrivateCopyIsTheSameWhicheverWayItIsMade) {
    const Bytes content = patterned(2 * chunk + 7);
    const auto from = folder.write("from", content);
    FileOps::cloneOrCopy(from, folder / "kernel", control, noting());
    EXPECT_EQ(readFile(folder / "kernel"), content);
    ASSERT_FALSE(reports.empty());
    EXPECT_DOUBLE_EQ(reports.back(), 1.0);
    reports.clear();
    const Fault noClone(Call::Clone, EOPNOTSUPP, 1, true);
    FileOps::cloneOrCopy(from, folder / "read", control, noting());
    EXPECT_EQ(readFile(folder / "read"), content);
    EXPECT_EQ(reports.size(), 3U);
}

TEST_F(FileOpsTest, AKernelCopyThatGivesUpHalfWayIsFinishedByReadingAndWriting) {
    const Bytes content = patterned(chunk + 7);
    const auto from = folder.write("from", content);
    const Sys::ShortTransfers shorter(mebibyte);
    const Fault fault(Call::Clone, EIO, 6, true);
    FileOps::cloneOrCopy(from, folder / "to", control);
    EXPECT_EQ(readFile(folder / "to"), content);
}

TEST_F(FileOpsTest, APrivateCopyNeverOverwritesAndLeavesNoHalf) {
    const auto from = folder.write("from", patterned(100));
    const auto taken = folder.write("taken", "precious");
    EXPECT_EQ(failureOf([&] { FileOps::cloneOrCopy(from, taken, control); }),
              "cannot create copy: File exists");
    EXPECT_EQ(textOf(readFile(taken)), "precious");
    EXPECT_EQ(failureOf([&] { FileOps::cloneOrCopy(folder / "none", folder / "to", control); }),
              "cannot open source: No such file or directory");
    {
        const Fault noClone(Call::Clone, EOPNOTSUPP, 1, true);
        const Fault fault(Call::Write, ENOSPC, 1, true);
        EXPECT_EQ(failureOf([&] { FileOps::cloneOrCopy(from, folder / "to", control); }),
                  "write failed: No space left on device");
    }
    EXPECT_FALSE(exists(folder / "to"));
    control.cancel();
    EXPECT_THROW(FileOps::cloneOrCopy(from, folder / "to", control), CancelError);
    EXPECT_FALSE(exists(folder / "to"));
}

}  // namespace marlet
