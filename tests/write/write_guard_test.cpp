#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "support/temp_folder.h"
#include "write/guards.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* refusal =
    "This file is in your Media Library and “Allow changes to my Media Library” is off in Settings";

std::string refusalOf(const fs::path& path) {
    try {
        WriteGuard::check(path);
        return "";
    } catch (const MFError& failure) {
        return failure.description();
    }
}

class WriteGuardTest : public testing::Test {
protected:
    WriteGuardTest() {
        Preferences::install(std::make_unique<MemoryPreferences>());
        RunMode::setArguments({});
    }
    static void allow(bool value) {
        Preferences::current().setBoolean("allowLibraryWrites", value);
    }
};

TEST_F(WriteGuardTest, AFileInTheMediaLibraryIsBlocked) {
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library/Movies/Alien/Alien.mp4"), refusal);
}

TEST_F(WriteGuardTest, TheMediaLibraryItselfIsBlocked) {
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library"), refusal);
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library/"), refusal);
}

TEST_F(WriteGuardTest, OtherFoldersPass) {
    EXPECT_EQ(refusalOf("/Volumes/Disk/Test Folder/Movies/x.mp4"), "");
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library Copy/x.mp4"), "");
    EXPECT_EQ(refusalOf("/Volumes/Disk/media library/x.mp4"), "");
}

TEST_F(WriteGuardTest, ThePersonCanAllowIt) {
    allow(true);
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library/x.mp4"), "");
    allow(false);
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library/x.mp4"), refusal);
}

TEST_F(WriteGuardTest, AnAutomatedRunNeverGetsPermission) {
    allow(true);
    RunMode::setArguments({"--tag"});
    EXPECT_EQ(refusalOf("/Volumes/Disk/Media Library/x.mp4"), refusal);
    EXPECT_EQ(refusalOf("/Volumes/Disk/Elsewhere/x.mp4"), "");
}

TEST_F(WriteGuardTest, ALinkIntoTheMediaLibraryIsBlocked) {
    const TempFolder folder;
    const fs::path film = folder.write("Media Library/Film.mp4", "film");
    fs::create_symlink(film, folder / "link.mp4");
    fs::create_directory_symlink(folder / "Media Library", folder / "shelf");
    EXPECT_EQ(refusalOf(folder / "link.mp4"), refusal);
    EXPECT_EQ(refusalOf(folder / "shelf/Film.mp4"), refusal);
    // Also for a name that doesn't exist yet.
    EXPECT_EQ(refusalOf(folder / "shelf/New/x"), refusal);
}

TEST_F(WriteGuardTest, ALinkOutOfTheMediaLibraryIsJudgedByWhereItLeads) {
    const TempFolder folder;
    const fs::path film = folder.write("Elsewhere/Film.mp4", "film");
    fs::create_directories(folder / "Media Library");
    fs::create_symlink(film, folder / "Media Library/link.mp4");
    EXPECT_EQ(refusalOf(folder / "Media Library/link.mp4"), "");
}

TEST_F(WriteGuardTest, DotsDoNotHideTheMediaLibrary) {
    EXPECT_EQ(refusalOf("/Volumes/Other/../Media Library/./x.mp4"), refusal);
    EXPECT_EQ(refusalOf("/Volumes/Media Library/../Other/x.mp4"), "");
}

}  // namespace
}  // namespace marlet::test
