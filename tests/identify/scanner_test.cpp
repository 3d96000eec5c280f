#include "identify/scanner.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class ScannerTest : public testing::Test {
protected:
    void have(const std::vector<std::string>& names) {
        for (const std::string& name : names) library_.write(name, "");
    }
    /// The files found, as the paths below the library.
    Names found(const std::vector<std::string>& roots = {""}) const {
        std::vector<fs::path> paths;
        for (const std::string& root : roots) paths.push_back(library_ / root);
        Names names;
        for (const fs::path& file : Scanner::videoFiles(paths))
            names.push_back(file.lexically_relative(library_.path()).string());
        return names;
    }

    TempFolder library_;
};

TEST_F(ScannerTest, KeepsTheFourKindsOfFilesWhateverTheCaseOfTheirExtension) {
    have({"a.mp4", "b.m4v", "c.MKV", "d.Mov", "e.avi", "f.srt", "mp4"});
    EXPECT_EQ(found(), (Names{"a.mp4", "b.m4v", "c.MKV", "d.Mov"}));
}

TEST_F(ScannerTest, WalksFoldersToAnyDepth) {
    std::string deep;
    for (int i = 0; i < 200; i++) deep += "d/";
    have({"Show/Season 1/a.mp4", deep + "b.mp4"});
    EXPECT_EQ(found(), (Names{deep + "b.mp4", "Show/Season 1/a.mp4"}));
}

TEST_F(ScannerTest, LeavesOutAKeptOriginalInAFolderButTakesItWhenNamed) {
    have({"Movie.mkv", "Movie_original.mkv"});
    EXPECT_EQ(found(), Names{"Movie.mkv"});
    EXPECT_EQ(found({"Movie_original.mkv"}), Names{"Movie_original.mkv"});
}

TEST_F(ScannerTest, AFileListedTwiceAppearsOnce) {
    have({"in/a.mp4", "in/b.mp4"});
    EXPECT_EQ(found({"in/a.mp4", "in", "in/", "in/./a.mp4"}), (Names{"in/a.mp4", "in/b.mp4"}));
}

TEST_F(ScannerTest, NumbersInsideNamesCompareAsNumbers) {
    have({"Episode 10.mp4", "Episode 2.mp4", "episode 1.mp4"});
    EXPECT_EQ(found(), (Names{"episode 1.mp4", "Episode 2.mp4", "Episode 10.mp4"}));
}

TEST_F(ScannerTest, TheOrderIsThatOfTheNamesNotOfTheRoots) {
    have({"b/1.mp4", "a/2.mp4"});
    EXPECT_EQ(found({"b", "a"}), (Names{"a/2.mp4", "b/1.mp4"}));
}

TEST_F(ScannerTest, LeavesOutHiddenFilesAndFolders) {
    have({".hidden.mp4", ".folder/a.mp4", "._a.mp4", "b.mp4"});
    EXPECT_EQ(found(), Names{"b.mp4"});
}

TEST_F(ScannerTest, LeavesOutWhatIsInsideAPackage) {
    have({"Player.app/Contents/intro.mp4", "Photos.photoslibrary/clip.mov", "TV.TVLibrary/x.m4v",
          "Holiday.2019/clip.mov"});
    EXPECT_EQ(found(), Names{"Holiday.2019/clip.mov"});
}

TEST_F(ScannerTest, WhatDoesNotExistIsSkipped) {
    have({"a.mp4"});
    EXPECT_EQ(found({"none.mp4", "no folder", "a.mp4"}), Names{"a.mp4"});
    EXPECT_TRUE(Scanner::videoFiles({}).empty());
}

TEST_F(ScannerTest, AFileOfAnotherKindIsNotTakenEvenWhenNamed) {
    have({"a.avi"});
    EXPECT_TRUE(found({"a.avi"}).empty());
}

TEST_F(ScannerTest, AFolderThatIsNamedLikeAFilmIsWalked) {
    have({"Film.mp4/inside.mp4"});
    EXPECT_EQ(found(), Names{"Film.mp4/inside.mp4"});
}

TEST_F(ScannerTest, ALinkToAFolderIsNotFollowedAndOneToAFileIs) {
    have({"real/a.mp4"});
    fs::create_directory_symlink(library_ / "real", library_ / "real/loop");
    fs::create_directory_symlink("/", library_ / "root");
    fs::create_symlink(library_ / "real/a.mp4", library_ / "linked.mp4");
    fs::create_symlink(library_ / "gone.mp4", library_ / "broken.mp4");
    EXPECT_EQ(found(), (Names{"linked.mp4", "real/a.mp4"}));
}

TEST_F(ScannerTest, NamesOfAnyBytesAreKeptAsTheyAre) {
    const std::string longName = std::string(251, 'x') + ".mp4";
    have({"tab\tline\n.mp4", "bad\xFF\xC3.mp4", longName});
    Names names = found();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{"bad\xFF\xC3.mp4", "tab\tline\n.mp4", longName}));
}

TEST_F(ScannerTest, AnUnreadableFolderYieldsNothingAndTheOthersAreWalked) {
    if (::geteuid() == 0) {
        // Root reads everything: a folder whose name is too long to open stands for it.
        std::string deep;
        for (int i = 0; i < 20; i++) deep += std::string(250, 'd') + "/";
        EXPECT_TRUE(found({deep}).empty());
    }
    have({"closed/a.mp4", "open/b.mp4"});
    fs::permissions(library_ / "closed", fs::perms::none);
    const Names names = found();
    EXPECT_NE(std::find(names.begin(), names.end(), "open/b.mp4"), names.end());
    if (::geteuid() != 0) {
        EXPECT_EQ(names.size(), 1U);
    }
    fs::permissions(library_ / "closed", fs::perms::owner_all);
}

TEST(ScannerExtension, IsWithoutItsDotAndInLowerCase) {
    EXPECT_EQ(Scanner::extensionOf("/a/b.MKV"), "mkv");
    EXPECT_EQ(Scanner::extensionOf("/a/b.tar.Gz"), "gz");
    EXPECT_EQ(Scanner::extensionOf("/a.mp4/b"), "");
    EXPECT_EQ(Scanner::extensionOf("/a/b."), "");
}

}  // namespace
}  // namespace marlet::test
