#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <future>
#include <vector>

#include "foundation/bulk_file.h"
#include "foundation/digest.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
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

/// A source to copy, and a place to copy it to.
class FileOpsCopy : public testing::Test {
protected:
    fs::path source(const Bytes& content) const { return folder.write("source.m4v", content); }
    void copy(const Bytes& content) {
        FileOps::copy(source(content), target, control, [&](double it) { reports.push_back(it); });
    }
    /// Nothing of ours is left, and the source is as it was.
    void expectNothingLeft(const Bytes& content) const {
        EXPECT_FALSE(exists(partial));
        EXPECT_EQ(readFile(folder / "source.m4v"), content);
    }

    test::TempFolder folder;
    fs::path target = folder / "copy.m4v";
    fs::path partial = folder / "copy.m4v.partial";
    RunControl control;
    std::vector<double> reports;
};

TEST_F(FileOpsCopy, AWholeMultipleOfTheChunkEndsByTheReadThatReturnsNothing) {
    const Bytes content = patterned(2 * chunk);
    {
        const Fault extraRead(Call::Read, EIO, 2 * chunk / mebibyte + 1);
        EXPECT_EQ(failureOf([&] { copy(content); }), "read failed: Input/output error");
    }
    reports.clear();
    const Fault extraWrite(Call::Write, EIO, 2 * chunk / mebibyte + 1);
    copy(content);
    EXPECT_EQ(readFile(target), content);
    EXPECT_EQ(reports, (std::vector<double>{0.5, 1.0}));
}

TEST_F(FileOpsCopy, AChunkThatIsNotFullIsTheLast) {
    const Bytes content = patterned(2 * chunk + 1);
    copy(content);
    EXPECT_EQ(readFile(target), content);
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_DOUBLE_EQ(reports[0], static_cast<double>(chunk) / static_cast<double>(2 * chunk + 1));
    EXPECT_DOUBLE_EQ(reports[2], 1.0);
}

TEST_F(FileOpsCopy, AnEmptyFileGivesAnEmptyFileAndNoReport) {
    copy({});
    EXPECT_TRUE(exists(target));
    EXPECT_EQ(file_size(target), 0U);
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileOpsCopy, APartialFileOfAnEarlierCrashIsRemoved) {
    test::writeFile(partial, patterned(300));
    copy(patterned(100));
    EXPECT_EQ(readFile(target), patterned(100));
    EXPECT_FALSE(exists(partial));
}

TEST_F(FileOpsCopy, AnExistingDestinationIsReplacedOnlyAtTheFinalRename) {
    const Bytes old = patterned(50, 9);
    test::writeFile(target, old);
    {
        const Fault fault(Call::Rename, EACCES);
        EXPECT_EQ(failureOf([&] { copy(patterned(100)); }),
                  "cannot finish copy: Permission denied");
    }
    EXPECT_EQ(readFile(target), old);
    expectNothingLeft(patterned(100));
    copy(patterned(100));
    EXPECT_EQ(readFile(target), patterned(100));
}

TEST_F(FileOpsCopy, ACancelBeforeTheRenameLeavesTheDestinationAsItWas) {
    const Bytes old = patterned(50, 9);
    const Bytes content = patterned(chunk + 1);
    test::writeFile(target, old);
    int seen = 0;
    const auto cancelAtOnce = [&](double) {
        seen++;
        control.cancel();
    };
    EXPECT_THROW(FileOps::copy(source(content), target, control, cancelAtOnce), CancelError);
    EXPECT_EQ(seen, 1) << "the checkpoint stands at the head of every chunk";
    EXPECT_EQ(readFile(target), old);
    expectNothingLeft(content);
}

TEST_F(FileOpsCopy, APausedCopyHoldsAtTheNextChunkUntilItIsCancelled) {
    const Bytes content = patterned(2 * chunk);
    const fs::path from = source(content);
    std::promise<void> paused;
    int seen = 0;
    auto job = std::async(std::launch::async, [&] {
        FileOps::copy(from, target, control, [&](double) {
            control.pause();
            if (seen++ == 0) paused.set_value();
        });
    });
    paused.get_future().wait();
    control.cancel();
    EXPECT_THROW(job.get(), CancelError);
    EXPECT_EQ(seen, 1);
    EXPECT_FALSE(exists(target));
}

TEST_F(FileOpsCopy, TheModificationDateIsThatOfTheSource) {
    const fs::path from = source(patterned(10));
    const FileTime date{std::chrono::nanoseconds(1'234'567'890'123'456'789)};
    ASSERT_EQ(Sys::setModified(from, date), 0);
    FileOps::copy(from, target, control);
    EXPECT_EQ(FileOps::mtime(target), date);
}

TEST_F(FileOpsCopy, ADateThatCantBeSetFailsNothing) {
    const Fault fault(Call::SetModified, EPERM);
    copy(patterned(10));
    EXPECT_EQ(readFile(target), patterned(10));
}

TEST_F(FileOpsCopy, AShortReadIsNoEndOfFileAndAShortWriteIsContinued) {
    const Bytes content = patterned(chunk + 12345);
    const Sys::ShortTransfers shorter(70'001);
    copy(content);
    EXPECT_EQ(readFile(target), content);
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(FileOpsCopy, InterruptedReadsAndWritesAreRepeated) {
    const Fault reading(Call::Read, EINTR, 2);
    const Fault writing(Call::Write, EINTR, 2);
    copy(patterned(3 * mebibyte));
    EXPECT_EQ(readFile(target), patterned(3 * mebibyte));
}

TEST_F(FileOpsCopy, AMissingSourceIsTold) {
    EXPECT_EQ(failureOf([&] { FileOps::copy(folder / "none", target, control); }),
              "cannot open source: No such file or directory");
    EXPECT_FALSE(exists(partial));
    EXPECT_FALSE(exists(target));
}

TEST_F(FileOpsCopy, ACopyThatCantBeCreatedIsTold) {
    const fs::path from = source(patterned(10));
    EXPECT_EQ(failureOf([&] { FileOps::copy(from, folder / "no" / "copy", control); }),
              "cannot create copy: No such file or directory");
}

TEST_F(FileOpsCopy, AReadThatFailsIsTold) {
    const Bytes content = patterned(2 * chunk);
    const Fault fault(Call::Read, EIO, 20, false, folder / "source.m4v");
    EXPECT_EQ(failureOf([&] { copy(content); }), "read failed: Input/output error");
    EXPECT_FALSE(exists(target));
    expectNothingLeft(content);
}

TEST_F(FileOpsCopy, AWriteThatFailsIsTold) {
    const Bytes content = patterned(2 * chunk);
    const Fault fault(Call::Write, ENOSPC, 3, true);
    EXPECT_EQ(failureOf([&] { copy(content); }), "write failed: No space left on device");
    EXPECT_FALSE(exists(target));
    expectNothingLeft(content);
}

TEST_F(FileOpsCopy, AWriteThatFailsBeforeAReadIsTheOneThatIsTold) {
    const Fault writing(Call::Write, ENOSPC, 1, true);
    const Fault reading(Call::Read, EIO, 3, true);
    EXPECT_EQ(failureOf([&] { copy(patterned(4 * mebibyte)); }),
              "write failed: No space left on device");
}

TEST_F(FileOpsCopy, ACopyThatCantBeFlushedIsNoCopy) {
    const Fault fault(Call::Flush, EIO);
    EXPECT_EQ(failureOf([&] { copy(patterned(10)); }), "cannot finish copy: Input/output error");
    EXPECT_FALSE(exists(target));
    expectNothingLeft(patterned(10));
}

TEST_F(FileOpsCopy, TheFolderIsFlushedBehindTheRename) {
    const Fault fault(Call::Flush, EIO, 1, false, folder.path());
    EXPECT_EQ(failureOf([&] { copy(patterned(10)); }), "cannot finish copy: Input/output error");
}

TEST_F(FileOpsCopy, AFileSystemThatCantFlushFoldersFailsNothing) {
    const Fault fault(Call::Flush, EINVAL, 1, true, folder.path());
    EXPECT_EQ(failureOf([&] { copy(patterned(10)); }), "");
    EXPECT_EQ(readFile(target), patterned(10));
}

/// A copy that hashes what it reads.
class FileOpsStage : public FileOpsCopy {
protected:
    FileOps::Staged stage(const Bytes& content) {
        return FileOps::stage(source(content), target, control,
                              [&](double it) { reports.push_back(it); });
    }
};

TEST_F(FileOpsStage, TheDigestIsOfTheBytesThatWereReadAndWritten) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, mebibyte, chunk, 2 * chunk + 1}) {
        const Bytes content = patterned(size);
        const FileOps::Staged staged = stage(content);
        EXPECT_EQ(staged.bytes, size);
        EXPECT_EQ(staged.digest, sha256Hex(content)) << size;
        EXPECT_EQ(readFile(target), content) << size;
        fs::remove(target);
    }
}

TEST_F(FileOpsStage, ATargetThatExistsIsNeverOverwritten) {
    test::writeFile(target, viewOf("precious"));
    EXPECT_EQ(failureOf([&] { stage(patterned(10)); }),
              "cannot create the staged copy: File exists");
    EXPECT_EQ(textOf(readFile(target)), "precious");
}

TEST_F(FileOpsStage, AVideoThatCantBeOpenedIsTold) {
    EXPECT_EQ(failureOf([&] { FileOps::stage(folder / "none", target, control); }),
              "cannot open the video to read it: No such file or directory");
    EXPECT_FALSE(exists(target));
}

TEST_F(FileOpsStage, AFailureOnTheWayIsToldAndLeavesTheSourceAlone) {
    const Bytes content = patterned(2 * chunk);
    {
        const Fault fault(Call::Read, EIO, 1, false, folder / "source.m4v");
        EXPECT_EQ(failureOf([&] { stage(content); }), "read failed: Input/output error");
    }
    fs::remove(target);
    {
        const Fault fault(Call::Write, EDQUOT, 17, true);
        EXPECT_EQ(failureOf([&] { stage(content); }), "write failed: Disk quota exceeded");
    }
    EXPECT_EQ(readFile(folder / "source.m4v"), content);
}

TEST_F(FileOpsStage, ACancelEndsItAtTheHeadOfAChunk) {
    control.cancel();
    EXPECT_THROW(stage(patterned(10)), CancelError);
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileOpsStage, InACriticalSectionACancelStopsNothing) {
    const CriticalSection section(control);
    control.cancel();
    EXPECT_EQ(stage(patterned(10)).bytes, 10U);
}

TEST_F(FileOpsStage, ShortTransfersChangeNothing) {
    const Bytes content = patterned(mebibyte + 777);
    const Sys::ShortTransfers shorter(4099);
    EXPECT_EQ(stage(content).digest, sha256Hex(content));
    EXPECT_EQ(readFile(target), content);
}

TEST_F(FileOpsStage, NewFilesCanBeReadByAllAndWrittenByTheOwner) {
    const mode_t old = umask(0);
    stage(patterned(10));
    umask(old);
    EXPECT_EQ(fs::status(target).permissions(), static_cast<fs::perms>(0644));
}

}  // namespace marlet
