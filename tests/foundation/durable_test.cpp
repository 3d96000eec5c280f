#include "foundation/durable.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/bulk_file.h"
#include "foundation/syscalls.h"
#include "support/temp_folder.h"

namespace marlet {

using Sys::Call;
using Sys::Fault;
using test::failureOf;
using test::readFile;

namespace fs = std::filesystem;

class DurableTest : public testing::Test {
protected:
    /// The names in the folder, those of temporary files included.
    std::size_t namesLeft() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
    }
    test::TempFolder folder;
};

TEST_F(DurableTest, FoldersAreMadeWithTheirParentsForTheOwnerAlone) {
    const fs::path made = folder / "a" / "b" / "c";
    Durable::makeFolders(made);
    for (const fs::path& it : {made, made.parent_path(), made.parent_path().parent_path()})
        EXPECT_EQ(fs::status(it).permissions(), static_cast<fs::perms>(0700));
    EXPECT_NO_THROW(Durable::makeFolders(made)) << "what is there already is no failure";
    Durable::makeFolders(folder / "with slash" / "");
    EXPECT_TRUE(is_directory(folder / "with slash"));
}

TEST_F(DurableTest, EachParentThatGotANewNameIsFlushed) {
    const fs::path made = folder / "a" / "b";
    {
        const Fault fault(Call::Flush, EIO, 1, true, folder.path());
        EXPECT_EQ(failureOf([&] { Durable::makeFolders(made); }),
                  "cannot flush folder: Input/output error");
    }
    remove_all(folder / "a");
    const Fault fault(Call::Flush, EIO, 1, true, folder / "a");
    EXPECT_EQ(failureOf([&] { Durable::makeFolders(made); }),
              "cannot flush folder: Input/output error");
}

TEST_F(DurableTest, AFolderThatCantBeMadeIsTold) {
    const auto file = folder.write("file", "");
    EXPECT_EQ(failureOf([&] { Durable::makeFolders(file); }),
              "cannot create folder: Not a directory");
    EXPECT_EQ(failureOf([&] { Durable::makeFolders(file / "below"); }),
              "cannot create folder: Not a directory");
    create_symlink("nowhere", folder / "dangling");
    EXPECT_EQ(failureOf([&] { Durable::makeFolders(folder / "dangling"); }),
              "cannot create folder: File exists");
    const Fault fault(Call::MakeFolder, EROFS);
    EXPECT_EQ(failureOf([&] { Durable::makeFolders(folder / "new"); }),
              "cannot create folder: Read-only file system");
}

TEST_F(DurableTest, AFileIsWrittenOrReplacedWhole) {
    const fs::path file = folder / "history.json";
    Durable::writeFile(file, viewOf("first"));
    EXPECT_EQ(textOf(readFile(file)), "first");
    Durable::writeFile(file, viewOf("2"));
    EXPECT_EQ(textOf(readFile(file)), "2");
    EXPECT_EQ(namesLeft(), 1U);
}

TEST_F(DurableTest, AFailureBeforeTheRenameLeavesTheOldFileAndNoTemporaryOne) {
    const auto file = folder.write("history.json", "old");
    const std::vector<std::pair<Call, std::string>> steps = {
        {Call::Open, "cannot write file: Input/output error"},
        {Call::Write, "write failed: Input/output error"},
        {Call::Flush, "cannot write file: Input/output error"},
        {Call::Rename, "cannot write file: Input/output error"}};
    for (const auto& [call, sentence] : steps) {
        const Fault fault(call, EIO);
        EXPECT_EQ(failureOf([&] { Durable::writeFile(file, viewOf("new")); }), sentence);
        EXPECT_EQ(textOf(readFile(file)), "old");
        EXPECT_EQ(namesLeft(), 1U) << sentence;
    }
}

TEST_F(DurableTest, TheFolderIsFlushedBehindTheRename) {
    const fs::path file = folder / "f";
    const Fault fault(Call::Flush, EIO, 1, true, folder.path());
    EXPECT_EQ(failureOf([&] { Durable::writeFile(file, viewOf("x")); }),
              "cannot write file: Input/output error");
    EXPECT_EQ(failureOf([&] { Durable::rename(file, folder / "g"); }),
              "cannot rename file: Input/output error");
    EXPECT_EQ(failureOf([&] { Durable::remove(folder / "g"); }),
              "cannot flush folder: Input/output error");
}

TEST_F(DurableTest, ANameOfTheGreatestLengthCanBeWritten) {
    const fs::path file = folder / std::string(255, 'n');
    Durable::writeFile(file, viewOf("x"));
    EXPECT_EQ(textOf(readFile(file)), "x");
}

TEST_F(DurableTest, ARenameIntoAnotherFolderFlushesBoth) {
    folder.write("a/f", "x");
    create_directory(folder / "b");
    {
        const Fault fault(Call::Flush, EIO, 1, true, folder / "b");
        EXPECT_NE(failureOf([&] { Durable::rename(folder / "a" / "f", folder / "b" / "f"); }), "");
    }
    {
        const Fault fault(Call::Flush, EIO, 1, true, folder / "b");
        EXPECT_NE(failureOf([&] { Durable::rename(folder / "b" / "f", folder / "a" / "f"); }), "");
    }
    Durable::rename(folder / "a" / "f", folder / "b" / "f");
    EXPECT_TRUE(exists(folder / "b" / "f"));
}

TEST_F(DurableTest, ARenameThatCantBeFlushedIsFoundOutBeforehand) {
    const auto file = folder.write("f", "x");
    const Fault fault(Call::Open, EACCES, 1, true, folder.path());
    EXPECT_EQ(failureOf([&] { Durable::rename(file, folder / "g"); }),
              "cannot rename file: Permission denied");
    EXPECT_TRUE(exists(file));
}

TEST_F(DurableTest, RemovingWhatIsNotThereIsNoFailure) {
    EXPECT_NO_THROW(Durable::remove(folder / "none"));
    EXPECT_NO_THROW(Durable::remove(folder / "no" / "folder"));
    const auto file = folder.write("f", "x");
    {
        const Fault fault(Call::Unlink, EPERM);
        EXPECT_EQ(failureOf([&] { Durable::remove(file); }),
                  "cannot remove file: Operation not permitted");
    }
    Durable::remove(file);
    EXPECT_FALSE(exists(file));
}

TEST_F(DurableTest, LeftoversGoByTheirNameAndTheirAgeAndNothingElseDoes) {
    const std::string uuid = "8F1C6D0E-5B7A-4C11-9E0D-2A3B4C5D6E7F";
    const std::string leftover = ".history.json." + uuid + ".tmp";
    const FileTime limit{std::chrono::hours(1000)};
    const auto written = [&](const fs::path& name, int hoursBefore) {
        const auto file = folder.write(name, "x");
        EXPECT_EQ(Sys::setModified(file, limit - std::chrono::hours(hoursBefore)), 0);
        return file;
    };
    written(leftover, 1);
    written(".a." + uuid + ".tmp", 1);
    Durable::removeLeftovers(folder.path(), limit);
    EXPECT_EQ(namesLeft(), 0U);

    for (const std::string& other : std::initializer_list<std::string>{
             "history.json." + uuid + ".tmp", ".history.json.tmp", "." + uuid + ".tmp",
             ".history.json." + uuid, ".history.json.x" + uuid.substr(1) + ".tmp",
             ".history.json-" + uuid + ".tmp", "history.json", ".tmp"})
        written(other, 1);
    written(".b." + uuid + ".tmp", 0);
    fs::create_directory(folder / (".c." + uuid + ".tmp"));
    fs::create_symlink(folder / "history.json", folder / (".d." + uuid + ".tmp"));
    const std::size_t before = namesLeft();
    Durable::removeLeftovers(folder.path(), limit);
    EXPECT_EQ(namesLeft(), before);
    EXPECT_NO_THROW(Durable::removeLeftovers(folder / "none", limit));
}

TEST_F(DurableTest, AWriteThatWasCutOffLeavesOnlyWhatIsKnownAsALeftover) {
    const auto file = folder / (std::string(230, 'n') + ".json");
    {
        const Fault unlink(Call::Unlink, EPERM, 1, true);
        const Fault full(Call::Write, ENOSPC, 1, true);
        failureOf([&] { Durable::writeFile(file, viewOf("x")); });
    }
    EXPECT_EQ(namesLeft(), 1U);
    Durable::removeLeftovers(folder.path(), FileTime::max());
    EXPECT_EQ(namesLeft(), 0U);
}

TEST_F(DurableTest, FlushingTellsItsFailures) {
    EXPECT_EQ(failureOf([&] { Durable::flushFile(folder / "none"); }),
              "cannot flush file: No such file or directory");
    EXPECT_EQ(failureOf([&] { Durable::flushFolder(folder.write("f", "")); }),
              "cannot flush folder: Not a directory");
    const Fault fault(Call::Flush, EIO, 1, true);
    EXPECT_EQ(failureOf([&] { Durable::flushFile(folder / "f"); }),
              "cannot flush file: Input/output error");
}

TEST_F(DurableTest, AFileSystemThatCantFlushFoldersFailsNothing) {
    const Fault fault(Call::Flush, EINVAL, 1, true, folder.path());
    EXPECT_NO_THROW(Durable::flushFolder(folder.path()));
    EXPECT_NO_THROW(Durable::writeFile(folder / "f", viewOf("x")));
}

}  // namespace marlet
