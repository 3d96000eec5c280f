// Disks that are full, read-only or broken while a film is converted: every sentence is true, and
// nothing half-made is left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "convert/film_conversion.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"
#include "support/media.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Status = WriteOutcome::Status;

/// The picture and the English sound, so that a run is short.
class LeanConversion : public FilmConversion {
public:
    LeanConversion() {
        useOwnTools();
        plan().subs.resize(1);
        plan().audio.resize(1);
    }
};

// --- a disk that breaks at any call

struct BrokenCall {
    const char* name;
    Sys::Call call;
    int error;
};
std::string nameOf(const testing::TestParamInfo<BrokenCall>& info) {
    return info.param.name;
}

class BrokenDisk : public testing::TestWithParam<BrokenCall> {
protected:
    enum class Fails { Once, ForGood };
    /// Converts with the fault; gives whether it went well all the same.
    static bool convertWith(int nth, Fails fails) {
        SCOPED_TRACE("call number " + std::to_string(nth) +
                     (fails == Fails::Once ? " once" : " for good"));
        static const std::vector<std::string> whole = framesOfWhole();
        LeanConversion film;
        WriteOutcome outcome;
        {
            const Sys::Fault fault(GetParam().call, GetParam().error, nth, fails == Fails::ForGood);
            outcome = film.run();
        }
        EXPECT_FALSE(RunControl::criticalActive());
        WorkArea::cleanUp(WorkArea::DryRun::No);
        EXPECT_TRUE(film.isUntouched());
        if (outcome.status == Status::done) {
            EXPECT_THAT(film.delivered(), ElementsAre("Movie.m4v"));
            EXPECT_EQ(packetHashes(film.output() / "Movie.m4v"), whole);
            return true;
        }
        EXPECT_EQ(outcome.status, Status::failed);
        EXPECT_FALSE(outcome.message.empty());
        EXPECT_THAT(film.delivered(), IsEmpty()) << outcome.message;
        return false;
    }

private:
    static std::vector<std::string> framesOfWhole() {
        LeanConversion film;
        EXPECT_EQ(film.run().status, Status::done);
        return packetHashes(film.output() / "Movie.m4v");
    }
};

TEST_P(BrokenDisk, GivesASentenceAndNothingElseOrTheWholeFilm) {
    bool hasFailed = false;
    // One that stays broken from a call on lets a run go well only when that call never comes.
    for (int nth = 1, step = 1; !convertWith(nth, Fails::ForGood) && !HasFailure(); nth += step) {
        convertWith(nth, Fails::Once);
        // Of many calls of a kind, those in a row mostly read or write the same place.
        step = 1 + nth / 4;
        ASSERT_LT(nth, 5000) << "no run ever goes well";
        hasFailed = true;
    }
    EXPECT_TRUE(hasFailed) << "no fault was met";
}

INSTANTIATE_TEST_SUITE_P(Disk, BrokenDisk,
                         testing::Values(BrokenCall{"Open", Sys::Call::Open, EIO},
                                         BrokenCall{"Read", Sys::Call::Read, EIO},
                                         BrokenCall{"Full", Sys::Call::Write, ENOSPC},
                                         BrokenCall{"Flush", Sys::Call::Flush, EIO},
                                         BrokenCall{"Rename", Sys::Call::Rename, EIO},
                                         BrokenCall{"Name", Sys::Call::RenameIfFree, EIO},
                                         BrokenCall{"Folder", Sys::Call::MakeFolder, ENOSPC},
                                         BrokenCall{"Stat", Sys::Call::Stat, EIO},
                                         BrokenCall{"Space", Sys::Call::Space, EIO}),
                         nameOf);

/// These are forgiven, whenever they come.
class ForgivingDisk : public BrokenDisk {};
TEST_P(ForgivingDisk, GivesTheWholeFilm) {
    for (const int nth : {1, 3, 8}) {
        EXPECT_TRUE(convertWith(nth, Fails::Once)) << nth;
        EXPECT_TRUE(convertWith(nth, Fails::ForGood)) << nth;
    }
}
INSTANTIATE_TEST_SUITE_P(Disk, ForgivingDisk,
                         testing::Values(BrokenCall{"Unlink", Sys::Call::Unlink, EIO},
                                         BrokenCall{"Lock", Sys::Call::Lock, ENOLCK},
                                         BrokenCall{"Date", Sys::Call::SetModified, EPERM}),
                         nameOf);

TEST(BrokenConversion, APartThatCouldNotBeRemovedAtOnceGoesWithTheJob) {
    LeanConversion film;
    std::optional<Sys::Fault> broken;
    std::optional<Sys::Fault> stuck;
    film.at("Saving the new file", [&] {
        broken.emplace(Sys::Call::RenameIfFree, EIO, 1, true);
        stuck.emplace(Sys::Call::Unlink, EBUSY);
    });
    EXPECT_EQ(film.run().message,
              "saving the new file failed: cannot move the file to its name: Input/output error");
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

// --- real disks

/// A disk in memory of so many bytes, mounted in the place of a folder.
class SmallDisk {
public:
    SmallDisk(fs::path folder, std::size_t bytes) : folder_(std::move(folder)) {
        isThere_ = ::mount("none", folder_.c_str(), "tmpfs", 0,
                           ("size=" + std::to_string(bytes)).c_str()) == 0;
    }
    ~SmallDisk() { remove(); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isThere() const { return isThere_; }
    void remove() {
        if (isThere_) ::umount2(folder_.c_str(), MNT_DETACH);
        isThere_ = false;
    }
    void makeReadOnly() const {
        EXPECT_EQ(::mount("none", folder_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    }
    /// Leaves room for so many bytes.
    void fill(std::uint64_t left) const {
        const std::uint64_t free = fs::space(folder_).available;
        writeFile(folder_ / "other.bin", Bytes(free - left, 1));
    }

private:
    const fs::path folder_;
    bool isThere_ = false;
};

class RealDisk : public testing::Test {
protected:
    static constexpr std::size_t size = 8 * 1024 * 1024;
    void SetUp() override {
        if (!disk_.isThere()) GTEST_SKIP() << "no disk can be mounted here";
    }
    LeanConversion film_;
    SmallDisk disk_{film_.output(), size};
};

TEST_F(RealDisk, AnOutputFolderThatIsFullFromTheStartIsTold) {
    disk_.fill(20'000);
    EXPECT_EQ(film_.run().message, "Not enough free space in the output folder.");
    EXPECT_THAT(film_.delivered(), ElementsAre("other.bin"));
    EXPECT_TRUE(film_.isUntouched());
}

TEST_F(RealDisk, AnOutputFolderThatFillsUpMeanwhileIsToldAndHoldsNoPart) {
    for (const char* stage : {"Preparing the tracks", "Verifying", "Saving the new file"}) {
        film_.at(stage, [&] { disk_.fill(20'000); });
        const WriteOutcome outcome = film_.run();
        EXPECT_EQ(outcome.status, Status::failed);
        EXPECT_EQ(outcome.message,
                  "saving the new file failed: write failed: No space left on device");
        EXPECT_THAT(film_.delivered(), ElementsAre("other.bin"));
        EXPECT_TRUE(film_.isUntouched());
        fs::remove(film_.output() / "other.bin");
    }
}

TEST_F(RealDisk, AnOutputFolderThatIsReadOnlyIsTold) {
    for (const char* stage : {"Preparing the tracks", "Verifying", "Saving the new file"}) {
        film_.at(stage, [&] { disk_.makeReadOnly(); });
        EXPECT_EQ(film_.run().message,
                  "saving the new file failed: cannot create copy: Read-only file system");
        EXPECT_THAT(film_.delivered(), IsEmpty());
        EXPECT_TRUE(film_.isUntouched());
        EXPECT_EQ(::mount("none", film_.output().c_str(), "tmpfs", MS_REMOUNT, nullptr), 0);
    }
}

TEST_F(RealDisk, AnOutputDiskThatGoesAwayMeanwhileDoesNoHarm) {
    // The folder that it was mounted on is there, and is what the person chose.
    film_.at("Verifying", [&] { disk_.remove(); });
    EXPECT_EQ(film_.run().status, Status::done);
    EXPECT_THAT(film_.delivered(), ElementsAre("Movie.m4v"));
    EXPECT_TRUE(film_.isUntouched());
}

TEST_F(RealDisk, AWorkDiskThatFillsUpMeanwhileIsTold) {
    disk_.remove();
    const fs::path area = fs::path(std::getenv("XDG_CACHE_HOME"));
    fs::create_directories(area);
    for (const char* stage : {"Preparing the tracks", "Preparing subtitles",
                              "Building the new file", "Writing details"}) {
        const SmallDisk work(area, size);
        ASSERT_TRUE(work.isThere());
        film_.at(stage, [&] { work.fill(0); });
        const WriteOutcome outcome = film_.run();
        if (outcome.status == Status::done) {
            // All that was left to do needed no room there.
            EXPECT_STREQ(stage, "Writing details");
            EXPECT_THAT(film_.delivered(), ElementsAre("Movie.m4v"));
        } else {
            EXPECT_EQ(outcome.status, Status::failed);
            EXPECT_THAT(outcome.message, testing::HasSubstr("No space left on device")) << stage;
            EXPECT_THAT(film_.delivered(), IsEmpty());
        }
        EXPECT_TRUE(film_.isUntouched());
    }
}

}  // namespace
}  // namespace marlet::test
