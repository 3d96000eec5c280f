#include "app/usage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "app/build_info.h"
#include "app/headless.h"
#include "app/updater.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Usage, HelpShowsEveryOptionInLinesOfAtMostEightyCharacters) {
    const std::string help = Usage::help();
    for (const Usage::Line& line : Usage::lines()) EXPECT_THAT(help, HasSubstr(line.option));
    for (const std::string& line : Text::split(help, '\n')) EXPECT_LE(line.size(), 80u) << line;
}

TEST(Usage, HelpLeavesNoOptionOut) {
    const auto names = Headless::optionNames();
    EXPECT_THAT(names, testing::SizeIs(testing::Ge(28u)));
    for (const std::string& name : names) {
        const auto isOfIt = [&](const Usage::Line& line) { return line.option == name; };
        EXPECT_EQ(std::ranges::count_if(Usage::lines(), isOfIt), 1) << name;
    }
}

TEST(Usage, TheManualAndTheReadmeTellEverySettingThatAPersonMayWrite) {
    const std::string manual = textOf(readFile(sourceTree() / "docs" / "man" / "marlet.1"));
    const std::string readme = textOf(readFile(sourceTree() / "README.md"));
    for (const std::string key :
         {"appearance", "artworkStyle", "keepLanguages", "outputFolder", "outputSameFolder",
          "fixForAppleTV", "allowLibraryWrites", "sourceOrder", "sourceOn.appleTV", "localModel",
          "localModelName"}) {
        EXPECT_THAT(manual, HasSubstr("\n.B " + key + "\n"));
        EXPECT_THAT(readme, HasSubstr("\n| `" + key + "` | "));
    }
}

TEST(Usage, TheManualAndTheReadmeTellEveryOption) {
    const std::string manual = textOf(readFile(sourceTree() / "docs" / "man" / "marlet.1"));
    const std::string readme = textOf(readFile(sourceTree() / "README.md"));
    for (const Usage::Line& line : Usage::lines()) {
        EXPECT_THAT(Text::replaceAll(manual, "\\-", "-"), HasSubstr(line.option));
        EXPECT_THAT(readme, HasSubstr(line.option));
    }
}

TEST(Usage, HelpAndVersionAreAnsweredWhereverTheyStandAndNothingElseIs) {
    EXPECT_EQ(Usage::answerAtOnce({"--scan", "--help"}), Usage::help());
    EXPECT_EQ(Usage::answerAtOnce({"--version", "--help"}), Usage::version());
    for (const char* other : {"--helpful", "--help=1", "-h", "help", "", "--versions"})
        EXPECT_FALSE(Usage::answerAtOnce({other})) << other;
}

TEST(BuildInfo, TheLinesTellVersionBuildAndDate) {
    EXPECT_THAT(BuildInfo::version(), MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
    EXPECT_EQ(BuildInfo::versionLine(),
              "Version " + BuildInfo::version() + " (build " + BuildInfo::build() + ")");
    EXPECT_THAT(Usage::version(), HasSubstr("marlet " + BuildInfo::version() + "\nBuilt "));
}

TEST(BuildInfo, TheDateIsThatOfTheProgramsFileAndWithoutItUnknown) {
    const TempFolder folder;
    const auto file = folder.write("program", std::string_view("x"));
    const std::chrono::sys_seconds noon =
        std::chrono::sys_days(std::chrono::July / 4 / 2026) + std::chrono::hours(12);
    std::filesystem::last_write_time(file, std::chrono::file_clock::from_sys(noon));
    EXPECT_EQ(BuildInfo::builtLine(file), "Built July 4, 2026");
    EXPECT_EQ(BuildInfo::builtLine(folder / "none"), "Build date unknown");
    EXPECT_FALSE(BuildInfo::builtDate(folder / "none"));
}

/// A platform's framework.
class NotingUpdater : public Updater {
public:
    explicit NotingUpdater(int& begun) : begun_(begun) {}
    bool canCheck() const override { return true; }
    void check() override {}
    std::string words() const override { return "could"; }

protected:
    void begin() override { begun_++; }

private:
    int& begun_;
};

class UpdaterTest : public testing::Test {
protected:
    ~UpdaterTest() override {
        Updater::install(nullptr);
        RunMode::setArguments({});
    }
    const ScopedEnv person_{"MARLET_NO_KEYCHAIN", ""};
};

TEST_F(UpdaterTest, OnThisSystemNothingIsCheckedBehindThePersonsBackAndItSaysSo) {
    EXPECT_FALSE(Updater::shared().canCheck());
    Updater::shared().check();
    EXPECT_EQ(Updater::shared().words(), "Updates come with those of your system.");
}

TEST_F(UpdaterTest, AnUpdaterIsStartedOnceAndNeverByAnAutomatedRun) {
    int begun = 0;
    Updater::install(std::make_unique<NotingUpdater>(begun));
    RunMode::setArguments({"--no-ai"});
    Updater::start();
    EXPECT_EQ(begun, 0);
    EXPECT_FALSE(Updater::isStarted());
    RunMode::setArguments({});
    Updater::start();
    Updater::start();
    EXPECT_EQ(begun, 1);
    EXPECT_TRUE(Updater::isStarted());
}

}  // namespace
}  // namespace marlet::test
