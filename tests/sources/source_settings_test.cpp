#include "sources/source_settings.h"

#include <gtest/gtest.h>

#include "foundation/preferences.h"
#include "foundation/run_mode.h"

namespace marlet {
namespace {

using enum SourceID;
using List = std::vector<SourceID>;

class SourceSettingsTest : public testing::Test {
protected:
    SourceSettingsTest() {
        Preferences::install(std::make_unique<MemoryPreferences>());
        RunMode::setArguments({});
    }
    ~SourceSettingsTest() override {
        Preferences::install(std::make_unique<MemoryPreferences>());
        RunMode::setArguments({});
    }
};

TEST_F(SourceSettingsTest, TheEmptyOrderIsAppleTvTmdbItunes) {
    EXPECT_EQ(SourceSettings::normalised({}), (List{appleTV, tmdb, itunes}));
    EXPECT_EQ(SourceSettings::order(), (List{appleTV, tmdb, itunes}));
}

TEST_F(SourceSettingsTest, RepeatsAreDroppedAndMissingSourcesAddedAtTheEnd) {
    EXPECT_EQ(SourceSettings::normalised({itunes, itunes}), (List{itunes, appleTV, tmdb}));
    EXPECT_EQ(SourceSettings::normalised({tmdb, itunes, tmdb, appleTV}),
              (List{tmdb, itunes, appleTV}));
}

TEST_F(SourceSettingsTest, TheStoredOrderIsReadBackAndUnknownNamesAreDropped) {
    SourceSettings::setOrder({tmdb, appleTV, itunes});
    EXPECT_EQ(Preferences::current().texts("sourceOrder"),
              (std::vector<std::string>{"tmdb", "appleTV", "itunes"}));
    EXPECT_EQ(SourceSettings::order(), (List{tmdb, appleTV, itunes}));
    Preferences::current().setTexts("sourceOrder", {"netflix", "itunes", "", "TMDB"});
    EXPECT_EQ(SourceSettings::order(), (List{itunes, appleTV, tmdb}));
}

TEST_F(SourceSettingsTest, AnUnsetAppleTvSwitchMeansOn) {
    EXPECT_EQ(SourceSettings::active(), (List{appleTV, tmdb, itunes}));
    Preferences::current().setBoolean("sourceOn.appleTV", true);
    EXPECT_EQ(SourceSettings::active(), (List{appleTV, tmdb, itunes}));
}

TEST_F(SourceSettingsTest, AppleTvSwitchedOffIsLeftOut) {
    Preferences::current().setBoolean("sourceOn.appleTV", false);
    EXPECT_EQ(SourceSettings::active(), (List{tmdb, itunes}));
}

TEST_F(SourceSettingsTest, OtherSourcesHaveNoSwitch) {
    Preferences::current().setBoolean("sourceOn.tmdb", false);
    Preferences::current().setBoolean("sourceOn.itunes", false);
    EXPECT_EQ(SourceSettings::active(), (List{appleTV, tmdb, itunes}));
}

TEST_F(SourceSettingsTest, AnAutomatedRunLeavesAppleTvOutUnlessToldOtherwise) {
    RunMode::setArguments({"--scan", "/films"});
    EXPECT_EQ(SourceSettings::active(), (List{tmdb, itunes}));
    RunMode::setArguments({"--scan", "/films", "--apple-tv"});
    EXPECT_TRUE(SourceSettings::allowAppleTVInTests());
    EXPECT_EQ(SourceSettings::active(), (List{appleTV, tmdb, itunes}));
}

TEST_F(SourceSettingsTest, AllowingAppleTvDoesNotOverrideItsSwitch) {
    RunMode::setArguments({"--apple-tv"});
    Preferences::current().setBoolean("sourceOn.appleTV", false);
    EXPECT_EQ(SourceSettings::active(), (List{tmdb, itunes}));
}

TEST_F(SourceSettingsTest, SourcesOnTheCommandLineAreTheWholeList) {
    RunMode::setArguments({"--scan", "--sources=itunes,nonsense,appleTV"});
    EXPECT_EQ(SourceSettings::active(), (List{itunes, appleTV}));
    RunMode::setArguments({"--sources="});
    EXPECT_EQ(SourceSettings::active(), List{});
    RunMode::setArguments({"--sources"});
    EXPECT_FALSE(SourceSettings::testSources());
}

}  // namespace
}  // namespace marlet
