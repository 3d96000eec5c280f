#include "app/settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/paths.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

class SettingsTest : public testing::Test {
protected:
    SettingsTest() { reopen(); }
    ~SettingsTest() override { Preferences::install(std::make_unique<MemoryPreferences>()); }
    /// What a later run of the program finds.
    static void reopen() { Preferences::install(Settings::open()); }
    static void writeByHand(const std::string& lines) {
        const fs::path file = Paths::preferencesFile();
        fs::create_directories(file.parent_path());
        writeFile(file, viewOf("[General]\n" + lines));
        reopen();
    }
    OwnHome home_;
};

TEST_F(SettingsTest, AbsentSettingsHaveTheirDefaults) {
    EXPECT_TRUE(Settings::fixForAppleTV()) << "though a plain reading of an absent key is no";
    EXPECT_FALSE(Settings::allowLibraryWrites());
    EXPECT_FALSE(Settings::outputSameFolder());
    EXPECT_EQ(Settings::outputFolder(), home_.path() / "Desktop");
    EXPECT_EQ(Settings::artworkStyle(), ArtworkStyle::wide);
    EXPECT_EQ(Settings::keepLanguages(), "English");
}

TEST_F(SettingsTest, WhatIsStoredStaysForLaterRuns) {
    Settings::setFixForAppleTV(false);
    Preferences::current().setText("keepLanguages", "English, French");
    Preferences::current().setText("outputFolder", "/new = files; \"quoted\"");
    Preferences::current().setTexts("sourceOrder", {"tmdb"});
    reopen();
    EXPECT_FALSE(Settings::fixForAppleTV());
    EXPECT_EQ(Settings::keepLanguages(), "English, French");
    EXPECT_EQ(Settings::outputFolder(), "/new = files; \"quoted\"");
    EXPECT_EQ(Preferences::current().texts("sourceOrder"), Texts{"tmdb"});
    Preferences::current().setTexts("sourceOrder", {"tmdb", "itunes"});
    reopen();
    EXPECT_EQ(Preferences::current().texts("sourceOrder"), (Texts{"tmdb", "itunes"}));
    Preferences::current().remove("keepLanguages");
    reopen();
    EXPECT_EQ(Settings::keepLanguages(), "English");
}

TEST_F(SettingsTest, AValueThatIsNeitherYesNorNoFallsToTheDefault) {
    writeByHand("fixForAppleTV=maybe\nallowLibraryWrites=1\n");
    EXPECT_TRUE(Settings::fixForAppleTV());
    EXPECT_FALSE(Settings::allowLibraryWrites());
}

TEST_F(SettingsTest, AnEmptyOutputFolderCountsAsNone) {
    Preferences::current().setText("outputFolder", "");
    EXPECT_EQ(Settings::outputFolder(), home_.path() / "Desktop");
}

TEST_F(SettingsTest, OnlyTallIsTall) {
    Preferences::current().setText("artworkStyle", "tall");
    EXPECT_EQ(Settings::artworkStyle(), ArtworkStyle::tall);
    Preferences::current().setText("artworkStyle", "Tall");
    EXPECT_EQ(Settings::artworkStyle(), ArtworkStyle::wide);
}

TEST_F(SettingsTest, AFileThatIsNoSettingsFileGivesTheDefaults) {
    const fs::path file = Paths::preferencesFile();
    fs::create_directories(file.parent_path());
    writeFile(file, viewOf(std::string("\0\xFF[[=\n=\n", 9)));
    reopen();
    EXPECT_TRUE(Settings::fixForAppleTV());
    EXPECT_EQ(Settings::keepLanguages(), "English");
}

}  // namespace
}  // namespace marlet::test
