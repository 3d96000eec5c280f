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
    static void reopen() {
        // Two open stores of one file share what they hold.
        Preferences::install(nullptr);
        Preferences::install(Settings::open());
    }
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
    EXPECT_TRUE(Settings::notifyAtEnd());
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

TEST_F(SettingsTest, WhatThePersonSetsIsStoredAtOnceUnderItsKeyAndStaysForLaterRuns) {
    Settings::setAppearance(Settings::Appearance::dark);
    Settings::setAllowLibraryWrites(true);
    Settings::setLibraryWritesExplained(true);
    Settings::setKeepLanguages(" English, French ");
    Settings::setOutputSameFolder(true);
    Settings::setOutputFolder("/films, new; \"mine\" ");
    Settings::setArtworkStyle(ArtworkStyle::tall);
    reopen();
    const Preferences& stored = Preferences::current();
    EXPECT_EQ(stored.text("appearance"), "Dark");
    EXPECT_EQ(stored.boolean("allowLibraryWrites"), true);
    EXPECT_EQ(stored.boolean("libraryWritesExplained"), true);
    EXPECT_EQ(stored.text("keepLanguages"), "English, French");
    EXPECT_EQ(stored.boolean("outputSameFolder"), true);
    EXPECT_EQ(stored.text("outputFolder"), "/films, new; \"mine\" ");
    EXPECT_EQ(stored.text("artworkStyle"), "tall");
    EXPECT_EQ(Settings::appearance(), Settings::Appearance::dark);
    EXPECT_TRUE(Settings::allowLibraryWrites());
    EXPECT_TRUE(Settings::libraryWritesExplained());
    EXPECT_TRUE(Settings::outputSameFolder());
    EXPECT_EQ(Settings::outputFolder(), "/films, new; \"mine\" ");
    EXPECT_EQ(Settings::artworkStyle(), ArtworkStyle::tall);
}

TEST_F(SettingsTest, WhatThePersonTakesBackIsTheDefaultAgain) {
    Settings::setAllowLibraryWrites(true);
    Settings::setAllowLibraryWrites(false);
    Settings::setOutputSameFolder(true);
    Settings::setOutputSameFolder(false);
    Settings::setOutputFolder("/films");
    Settings::setOutputFolder("");
    Settings::setKeepLanguages("French");
    Settings::setKeepLanguages("  ");
    Settings::setArtworkStyle(ArtworkStyle::tall);
    Settings::setArtworkStyle(ArtworkStyle::wide);
    reopen();
    EXPECT_FALSE(Settings::allowLibraryWrites());
    EXPECT_FALSE(Settings::outputSameFolder());
    EXPECT_EQ(Settings::outputFolder(), home_.path() / "Desktop");
    EXPECT_EQ(Settings::keepLanguages(), "English");
    EXPECT_EQ(Settings::artworkStyle(), ArtworkStyle::wide);
}

class LookOfARun : public SettingsTest {
protected:
    ~LookOfARun() override { RunMode::setArguments({}); }
    static Settings::Appearance with(std::vector<std::string> arguments) {
        RunMode::setArguments(std::move(arguments));
        return Settings::effectiveAppearance();
    }
};

TEST_F(LookOfARun, IsDarkForTheWordDarkAndLightForAnyOther) {
    using enum Settings::Appearance;
    Settings::setAppearance(dark);
    for (const char* other : {"light", "Dark", "Automatic", "x", ""})
        EXPECT_EQ(with({std::string("--appearance=") + other}), light) << other;
    EXPECT_EQ(with({"--appearance", "light"}), light);
    EXPECT_EQ(with({"--appearance", "--quit"}), light) << "the next argument, whatever it is";
    Settings::setAppearance(light);
    EXPECT_EQ(with({"--appearance", "dark"}), dark);
    EXPECT_EQ(with({"--quit", "--appearance=dark"}), dark);
    EXPECT_EQ(Settings::appearance(), light) << "an option is for its run alone";
}

TEST_F(LookOfARun, WithoutTheOptionIsTheStoredChoice) {
    using enum Settings::Appearance;
    for (const auto stored : {automatic, light, dark}) {
        Settings::setAppearance(stored);
        EXPECT_EQ(with({}), stored);
        EXPECT_EQ(with({"--quit", "--appearance"}), stored) << "it lacks its value";
    }
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

TEST_F(SettingsTest, AFolderWrittenByHandMayHoldCommasAndNeedsNoQuotes) {
    writeByHand("outputFolder=/films,new, and more\n[other]\noutputFolder=/a, b\n");
    EXPECT_EQ(Settings::outputFolder(), "/films,new, and more");
    writeByHand("[other]\noutputFolder=/a, b\n[General]\n outputFolder = /c, d \n");
    EXPECT_EQ(Settings::outputFolder(), "/c, d");
    writeByHand("outputFolder=\"/films, new\"\n");
    EXPECT_EQ(Settings::outputFolder(), "/films, new");
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
    Settings::setFixForAppleTV(false);
    EXPECT_FALSE(Settings::fixForAppleTV());
    reopen();
    EXPECT_FALSE(Settings::fixForAppleTV()) << "it took the place of what could not be read";
}

TEST_F(SettingsTest, WhatCannotBeStoredHoldsForThisRunAndNothingFails) {
    // A folder in the file's place: nobody, not even root, can write it.
    fs::create_directories(Paths::preferencesFile() / "in the way");
    reopen();
    EXPECT_EQ(Settings::keepLanguages(), "English");
    Settings::setKeepLanguages("French");
    Settings::setFixForAppleTV(false);
    EXPECT_EQ(Settings::keepLanguages(), "French");
    EXPECT_FALSE(Settings::fixForAppleTV());
    reopen();
    EXPECT_EQ(Settings::keepLanguages(), "English");
    EXPECT_TRUE(fs::is_directory(Paths::preferencesFile()));
}

}  // namespace
}  // namespace marlet::test
