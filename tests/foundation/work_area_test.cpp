#include "foundation/work_area.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "foundation/bulk_file.h"
#include "foundation/dates.h"
#include "foundation/format_bytes.h"
#include "foundation/paths.h"
#include "foundation/text.h"
#include "support/temp_folder.h"

namespace marlet {

using Sys::Call;
using Sys::Fault;
using WorkArea::DryRun;
namespace fs = std::filesystem;

namespace {

const std::string ended = "its job has ended (lock released), no recovery pending";

/// Another program that holds the lock of a folder until it is killed.
class OtherProgram {
public:
    explicit OtherProgram(const fs::path& folder) {
        int ready[2];
        if (pipe(ready) != 0) return;
        child_ = fork();
        if (child_ == 0) {
            const int fd = ::open((folder / ".lock").c_str(), O_RDWR | O_CREAT, 0644);
            const char got = fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0 ? 'y' : 'n';
            if (write(ready[1], &got, 1) != 1) _exit(1);
            for (;;) ::pause();
        }
        char got = 'n';
        if (read(ready[0], &got, 1) == 1) holds_ = got == 'y';
        close(ready[0]);
        close(ready[1]);
    }
    ~OtherProgram() { kill(); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    bool holds() const { return holds_; }
    void kill() {
        if (child_ <= 0) return;
        ::kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
        child_ = -1;
    }

private:
    pid_t child_ = -1;
    bool holds_ = false;
};

}  // namespace

class WorkAreaTest : public testing::Test {
protected:
    fs::path makeFolder(const std::string& name = newUUID()) const {
        const fs::path folder = Paths::workDir() / name;
        create_directories(folder);
        return folder;
    }
    /// A folder whose job has ended: its lock file is there and nobody holds it.
    fs::path makeEnded() const {
        const fs::path folder = makeFolder();
        test::writeFile(folder / ".lock", {});
        return folder;
    }
    static void age(const fs::path& item, std::chrono::seconds age) {
        ASSERT_EQ(Sys::setModified(item, std::chrono::system_clock::now() - age), 0);
    }
    static void writeJournal(const std::string& text) {
        create_directories(Paths::documentsDir());
        test::writeFile(Paths::journalFile(), viewOf(text));
    }
    static void writeJournalFor(const fs::path& temp) {
        writeJournal(R"({"file": "/films/a.m4v", "temp": ")" + temp.string() + R"(", "size": 5})");
    }
    static void expectKept(const fs::path& folder, const std::string& reason) {
        const WorkArea::Report report = WorkArea::cleanUp(DryRun::No);
        ASSERT_EQ(report.kept.size(), 1U);
        EXPECT_TRUE(report.removable.empty());
        EXPECT_EQ(report.kept[0].name, folder.filename().string());
        EXPECT_EQ(report.kept[0].reason, reason);
        EXPECT_TRUE(exists(folder));
    }
    static void expectRemoved(const fs::path& folder, const std::string& reason) {
        const WorkArea::Report report = WorkArea::cleanUp(DryRun::No);
        ASSERT_EQ(report.removable.size(), 1U);
        EXPECT_TRUE(report.kept.empty());
        EXPECT_EQ(report.removable[0].name, folder.filename().string());
        EXPECT_EQ(report.removable[0].reason, reason);
        EXPECT_FALSE(exists(folder));
    }
    static std::string logText() { return textOf(test::readFile(Paths::cleanupLog())); }

    test::OwnHome home;
};

TEST_F(WorkAreaTest, AMissingOrEmptyWorkFolderGivesAnEmptyReport) {
    EXPECT_EQ(WorkArea::cleanUp(DryRun::No), WorkArea::Report());
    create_directories(Paths::workDir());
    EXPECT_EQ(WorkArea::cleanUp(DryRun::No), WorkArea::Report());
    EXPECT_EQ(WorkArea::usage(), WorkArea::Usage());
}

TEST_F(WorkAreaTest, WhatIsNoJobFolderIsNeitherTouchedNorReported) {
    const test::TempFolder elsewhere;
    elsewhere.write("precious", "x");
    const fs::path named = makeFolder("not a UUID");
    const fs::path link = Paths::workDir() / newUUID();
    create_directory_symlink(elsewhere.path(), link);
    const fs::path file = Paths::workDir() / newUUID();
    test::writeFile(file, viewOf("x"));
    EXPECT_TRUE(WorkArea::folders().empty());
    EXPECT_EQ(WorkArea::cleanUp(DryRun::No), WorkArea::Report());
    EXPECT_TRUE(exists(named) && is_symlink(link) && exists(file));
    EXPECT_TRUE(exists(elsewhere / "precious"));
}

TEST_F(WorkAreaTest, AFolderWhoseKindCantBeReadIsSkipped) {
    makeEnded();
    const Fault fault(Call::Stat, EIO, 1, true);
    EXPECT_TRUE(WorkArea::folders().empty());
}

TEST_F(WorkAreaTest, ALockHeldByALiveProcessKeepsTheFolderUntilThatProcessDies) {
    const fs::path folder = makeFolder();
    OtherProgram other(folder);
    ASSERT_TRUE(other.holds());
    EXPECT_TRUE(WorkArea::isHeld(folder));
    expectKept(folder, "in use by another running job");
    other.kill();
    EXPECT_FALSE(WorkArea::isHeld(folder));
    expectRemoved(folder, ended);
}

TEST_F(WorkAreaTest, ALockThatCantBeOpenedCountsAsHeld) {
    const fs::path folder = makeEnded();
    const Fault fault(Call::Open, EACCES, 1, true, folder / ".lock");
    expectKept(folder, "in use by another running job");
}

TEST_F(WorkAreaTest, ALockThatIsALinkIsNotFollowed) {
    const fs::path folder = makeFolder();
    create_symlink("/nowhere/at/all", folder / ".lock");
    expectKept(folder, "in use by another running job");
}

TEST_F(WorkAreaTest, AFolderThatThisProcessClaimsIsInUseUntilItIsReleased) {
    const fs::path folder = makeFolder();
    FileHandle lock = WorkArea::claim(folder);
    ASSERT_TRUE(lock.isOpen());
    EXPECT_TRUE(WorkArea::isHeld(folder));
    expectKept(folder, "in use by a running job");
    WorkArea::release(folder, std::move(lock));
    EXPECT_FALSE(WorkArea::isHeld(folder));
    expectRemoved(folder, ended);
}

TEST_F(WorkAreaTest, AClaimTakesALockThatOtherProgramsSee) {
    const fs::path folder = makeFolder();
    FileHandle lock = WorkArea::claim(folder);
    const FileHandle other(::open((folder / ".lock").c_str(), O_RDWR));
    EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), -1);
    WorkArea::release(folder, std::move(lock));
    EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(WorkAreaTest, AClaimLeavesNothingBesideItsLockFile) {
    const fs::path folder = makeFolder();
    WorkArea::release(folder, WorkArea::claim(folder));
    WorkArea::release(folder, WorkArea::claim(folder));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST_F(WorkAreaTest, ALockFileIsForItsOwnerToWriteAndForEverybodyToRead) {
    const fs::path folder = makeFolder();
    const mode_t mask = ::umask(0);  // nothing is taken off what the claim asks for
    WorkArea::release(folder, WorkArea::claim(folder));
    ::umask(mask);
    EXPECT_EQ(fs::status(folder / ".lock").permissions(), static_cast<fs::perms>(0644));
}

TEST_F(WorkAreaTest, AClaimWithoutALockFileStillWarnsThisProcessOff) {
    const fs::path folder = makeFolder();
    FileHandle lock;
    {
        const Fault fault(Call::Open, EROFS, 1, true);
        lock = WorkArea::claim(folder);
    }
    EXPECT_FALSE(lock.isOpen());
    EXPECT_FALSE(exists(folder / ".lock"));
    expectKept(folder, "in use by a running job");
    WorkArea::release(folder, std::move(lock));
    expectKept(folder, "changed recently");
}

TEST_F(WorkAreaTest, TheFolderOfTheJournalIsKeptEvenWithAReleasedLockAndDaysOld) {
    const fs::path folder = makeEnded();
    age(folder / ".lock", std::chrono::days(9));
    age(folder, std::chrono::days(9));
    writeJournalFor(folder / "candidate.m4v");
    expectKept(folder, "needed by a pending recovery");
}

TEST_F(WorkAreaTest, ThePendingRecoveryGoesBeforeTheRunningJob) {
    const fs::path folder = makeFolder();
    FileHandle lock = WorkArea::claim(folder);
    writeJournalFor(folder / "." / "candidate.m4v");
    expectKept(folder, "needed by a pending recovery");
    WorkArea::release(folder, std::move(lock));
}

TEST_F(WorkAreaTest, TheFolderOfTheJournalIsKnownUnderAnotherNameToo) {
    const fs::path folder = makeEnded();
    create_directory_symlink(Paths::workDir(), home.path() / "alias");
    writeJournalFor(home.path() / "alias" / folder.filename() / "candidate.m4v");
    expectKept(folder, "needed by a pending recovery");
}

TEST_F(WorkAreaTest, TheFolderOfTheJournalIsKeptWhereItsPathIsNoText) {
    const test::ScopedEnv caches("XDG_CACHE_HOME", (home.path() / "caf\xE9").string());
    const fs::path folder = makeEnded();
    const fs::path temp = folder / "candidate.m4v";
    writeJournal(R"({"file": "/a.m4v", "temp": ")" + Text::repairUtf8(viewOf(temp.native())) +
                 R"(", "tempHex": ")" + toHex(viewOf(temp.native())) + R"(", "size": 5})");
    expectKept(folder, "needed by a pending recovery");
}

TEST_F(WorkAreaTest, AJournalWhoseTempIsGoneProtectsNothing) {
    const fs::path folder = makeEnded();
    writeJournalFor(Paths::workDir() / newUUID() / "candidate.m4v");
    expectRemoved(folder, ended);
}

TEST_F(WorkAreaTest, AJournalThatCantBeReadCountsAsNone) {
    for (const std::string text :
         {"", "{", "[]", "5", R"({"temp": 5})", R"({"file": "/a"})", "{\"temp\": \"\xFF\xFE\"}"}) {
        const fs::path folder = makeEnded();
        writeJournal(text);
        expectRemoved(folder, ended);
    }
}

TEST_F(WorkAreaTest, ALockFreeFolderIsRemovedAfterHalfAnHourOfSilence) {
    const fs::path folder = makeFolder();
    test::writeFile(folder / "staged.m4v", viewOf("x"));
    age(folder / "staged.m4v", std::chrono::minutes(29));
    age(folder, std::chrono::minutes(29));
    expectKept(folder, "changed recently");
    age(folder / "staged.m4v", std::chrono::minutes(31));
    age(folder, std::chrono::minutes(31));
    expectRemoved(folder, "abandoned by an older run (untouched for 31 min), no recovery pending");
}

TEST_F(WorkAreaTest, AChangeDeepInsideAnOldFolderKeepsIt) {
    const fs::path folder = makeFolder();
    create_directories(folder / "a" / "b");
    test::writeFile(folder / "a" / "b" / "fresh", viewOf("x"));
    for (const char* old : {"a/b", "a", "."}) age(folder / old, std::chrono::hours(5));
    expectKept(folder, "changed recently");
}

TEST_F(WorkAreaTest, AnItemWhoseDateCantBeReadDoesNotCount) {
    const fs::path folder = makeFolder();
    test::writeFile(folder / "fresh", viewOf("x"));
    age(folder, std::chrono::hours(5));
    const Fault fault(Call::Stat, EIO, 1, true, folder / "fresh");
    EXPECT_LT(WorkArea::newestChange(folder),
              std::chrono::system_clock::now() - std::chrono::hours(4));
}

TEST_F(WorkAreaTest, AFolderWhoseOwnDateCantBeReadCountsAsChangedNow) {
    const auto before = std::chrono::system_clock::now();
    EXPECT_GE(WorkArea::newestChange(Paths::workDir() / "none"), before);
}

TEST_F(WorkAreaTest, ADryRunRemovesAndLogsNothingButReportsTheSame) {
    const fs::path folder = makeEnded();
    test::writeFile(folder / "staged.m4v", test::patterned(100'000));
    const WorkArea::Report planned = WorkArea::cleanUp(DryRun::Yes);
    EXPECT_TRUE(exists(folder));
    EXPECT_FALSE(exists(Paths::cleanupLog()));
    EXPECT_EQ(WorkArea::cleanUp(DryRun::No), planned);
    EXPECT_FALSE(exists(folder));
    EXPECT_EQ(planned.freed(), planned.removable[0].bytes);
    EXPECT_GE(planned.freed(), 100'000);
}

TEST_F(WorkAreaTest, ARemovalIsLoggedWithItsSizeAndReason) {
    const fs::path folder = makeEnded();
    test::writeFile(folder / "staged.m4v", test::patterned(2'000'000));
    const std::string size = formatBytes(WorkArea::size(folder));
    WorkArea::cleanUp(DryRun::No);
    const std::string text = logText();
    EXPECT_EQ(text.substr(19), "  removed work folder " + folder.filename().string() + " (" + size +
                                   "): " + ended + "\n");
    EXPECT_TRUE(Regex(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  )").matchesIn(text)) << text;
}

TEST_F(WorkAreaTest, TheLogGrowsLineByLine) {
    WorkArea::log("one");
    WorkArea::log("two");
    const auto lines = Text::split(logText(), '\n');
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].ends_with("  one"));
    EXPECT_TRUE(lines[1].ends_with("  two"));
}

TEST_F(WorkAreaTest, ALogThatCantBeWrittenFailsNothing) {
    create_directories(Paths::documentsDir().parent_path());
    test::writeFile(Paths::documentsDir(), viewOf("a file in the way"));
    EXPECT_NO_THROW(WorkArea::log("text"));
}

TEST_F(WorkAreaTest, ALogThatCantBeOpenedIsWrittenAnew) {
    WorkArea::log("old");
    const Fault fault(Call::Open, EACCES, 1, false, Paths::cleanupLog());
    WorkArea::log("new");
    EXPECT_TRUE(logText().ends_with("  new\n"));
    EXPECT_EQ(logText().find("old"), std::string::npos);
}

TEST_F(WorkAreaTest, SizeIsWhatIsAllocatedOnDisk) {
    const fs::path folder = makeFolder();
    create_directories(folder / "deep");
    test::writeFile(folder / "deep" / "full", test::patterned(1'000'000));
    test::writeFile(folder / "holes", {});
    fs::resize_file(folder / "holes", 1'000'000'000);
    create_symlink(folder / "deep" / "full", folder / "link");
    const std::int64_t bytes = WorkArea::size(folder);
    EXPECT_GE(bytes, 1'000'000);
    EXPECT_LT(bytes, 1'500'000);
    EXPECT_EQ(WorkArea::usage(), (WorkArea::Usage{bytes, 1}));
}

TEST_F(WorkAreaTest, ALinkInsideAFolderIsRemovedButNeverFollowed) {
    const test::TempFolder elsewhere;
    elsewhere.write("precious", "x");
    const fs::path folder = makeEnded();
    create_directory_symlink(elsewhere.path(), folder / "link");
    create_directory_symlink("..", folder / "loop");
    expectRemoved(folder, ended);
    EXPECT_TRUE(exists(elsewhere / "precious"));
}

TEST_F(WorkAreaTest, FoldersAreJudgedInTheOrderOfTheirNames) {
    const std::vector<std::string> names = {"00000000-0000-4000-8000-000000000000",
                                            "80000000-0000-4000-8000-000000000000",
                                            "F0000000-0000-4000-8000-000000000000"};
    for (const std::size_t i : {2, 0, 1}) makeFolder(names[i]);
    std::vector<std::string> kept;
    for (const auto& entry : WorkArea::cleanUp(DryRun::No).kept) kept.push_back(entry.name);
    EXPECT_EQ(kept, names);
}

TEST_F(WorkAreaTest, AWorkFolderIsMadeClaimedAndRemovedWithItsJob) {
    fs::path place;
    {
        WorkFolder folder;
        place = folder.path();
        EXPECT_FALSE(exists(place)) << "only create() touches the disk";
        folder.create();
        EXPECT_TRUE(is_directory(place));
        EXPECT_TRUE(isUUID(place.filename().string()));
        EXPECT_EQ(place.parent_path(), Paths::workDir());
        EXPECT_TRUE(WorkArea::isHeld(place));
        test::writeFile(place / "staged.m4v", viewOf("x"));
    }
    EXPECT_FALSE(exists(place));
    EXPECT_FALSE(WorkArea::isHeld(place));
}

TEST_F(WorkAreaTest, AWorkFolderThatARecoveryNeedsStaysAndIsReleased) {
    fs::path place;
    {
        WorkFolder folder;
        folder.create();
        folder.keep();
        place = folder.path();
    }
    EXPECT_TRUE(exists(place));
    EXPECT_FALSE(WorkArea::isHeld(place));
    expectRemoved(place, ended);
}

TEST_F(WorkAreaTest, AWorkFolderThatIsSetAsideIsNeverRemoved) {
    fs::path place;
    {
        WorkFolder folder;
        folder.create();
        test::writeFile(folder.path() / "staged.m4v", viewOf("x"));
        place = folder.setAside();
        EXPECT_NE(place, folder.path());
    }
    EXPECT_EQ(WorkArea::cleanUp(DryRun::No), WorkArea::Report());
    EXPECT_TRUE(exists(place / "staged.m4v"));
}

TEST_F(WorkAreaTest, AWorkFolderThatCantBeSetAsideIsKeptWhereItIs) {
    fs::path place;
    {
        WorkFolder folder;
        folder.create();
        const Fault fault(Call::Rename, EIO, 1, true, folder.path());
        place = folder.setAside();
        EXPECT_EQ(place, folder.path());
    }
    EXPECT_TRUE(exists(place));
    EXPECT_FALSE(WorkArea::isHeld(place));
}

TEST_F(WorkAreaTest, AWorkFolderThatCantBeMadeLeavesNothing) {
    {
        WorkFolder folder;
        const Fault fault(Call::Flush, EIO, 1, true);
        EXPECT_EQ(test::failureOf([&] { folder.create(); }),
                  "cannot flush folder: Input/output error");
    }
    EXPECT_TRUE(WorkArea::folders().empty());
}

TEST_F(WorkAreaTest, AWorkFolderThatWasNeverMadeLeavesTheDiskAlone) {
    { const WorkFolder folder; }
    EXPECT_FALSE(exists(Paths::workDir()));
}

}  // namespace marlet
