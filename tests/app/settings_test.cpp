#include "app/settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "identify/guess_model.h"
#include "sources/source_settings.h"
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
    EXPECT_FALSE(Settings::libraryWritesExplained());
    EXPECT_EQ(Settings::appearance(), Settings::Appearance::automatic);
    EXPECT_TRUE(Settings::appleTVOn());
    EXPECT_EQ(SourceSettings::order(),
              (std::vector{SourceID::appleTV, SourceID::tmdb, SourceID::itunes}));
    EXPECT_EQ(Settings::localModel(), "");
    EXPECT_EQ(Settings::localModelName(), "");
}

TEST_F(SettingsTest, TheFieldsOfTheLocalModelAreKeptAndAnEmptiedOneIsForgotten) {
    Settings::setLocalModel(" http://127.0.0.1:8080\n");
    Settings::setLocalModelName("small");
    reopen();
    EXPECT_EQ(Settings::localModel(), "http://127.0.0.1:8080");
    EXPECT_EQ(Settings::localModelName(), "small");
    EXPECT_TRUE(AIGuesser::isAvailable());
    Settings::setLocalModel("http://192.0.2.1");
    EXPECT_FALSE(AIGuesser::isAvailable());
    EXPECT_EQ(AIGuesser::availabilityNote(),
              "Only a model on this computer is asked: its address is 127.0.0.1, [::1] or "
              "localhost");
    Settings::setLocalModel("  ");
    reopen();
    EXPECT_EQ(Preferences::current().text("localModel"), std::nullopt);
    EXPECT_EQ(AIGuesser::availabilityNote(), "Off: no local model is set");
}

TEST_F(SettingsTest, TheSwitchOfAppleTVTakesItOutOfTheSourcesInUse) {
    using enum SourceID;
    const ScopedEnv person("MARLET_NO_KEYCHAIN", "");
    RunMode::setArguments({});
    EXPECT_EQ(SourceSettings::active(), (std::vector{appleTV, tmdb, itunes}));
    Settings::setAppleTVOn(false);
    reopen();
    EXPECT_FALSE(Settings::appleTVOn());
    EXPECT_EQ(SourceSettings::active(), (std::vector{tmdb, itunes}));
    Settings::setAppleTVOn(true);
    EXPECT_EQ(SourceSettings::active(), (std::vector{appleTV, tmdb, itunes}));
}

TEST_F(SettingsTest, OnlyTheNamedLooksAreLooks) {
    using enum Settings::Appearance;
    Preferences::current().setText("appearance", "Dark");
    EXPECT_EQ(Settings::appearance(), dark);
    Preferences::current().setText("appearance", "Light");
    EXPECT_EQ(Settings::appearance(), light);
    Preferences::current().setText("appearance", "dark");
    EXPECT_EQ(Settings::appearance(), automatic);
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

TEST_F(SettingsTest, LanguagesWrittenByHandNeedNoQuotes) {
    writeByHand("keepLanguages=English, French\n");
    EXPECT_EQ(Settings::keepLanguages(), "English, French");
    writeByHand("keepLanguages=\"German, French\"\n");
    EXPECT_EQ(Settings::keepLanguages(), "German, French");
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
