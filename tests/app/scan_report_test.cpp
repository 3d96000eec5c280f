#include <filesystem>

#include "app/headless.h"
#include "app/model_fixture.h"
#include "foundation/text.h"

namespace marlet::test {
namespace {

constexpr const char* header =
    "verdict\tfile\tfile_guess\tdatabase_title\tS/E\tdb_episode_title\tfile_min\tdb_min\treasons";

class ScanReport : public ModelTest {
protected:
    ScanReport() : root_("MARLET_TEST_LIBRARY", library.path().string() + "/") {}
    ScopedEnv root_;
};

TEST_F(ScanReport, WithoutFilesItIsTheHeaderWithoutALineFeed) {
    EXPECT_EQ(Headless::report(*model), header);
}

TEST_F(ScanReport, AnEpisodeHasItsNumberAndItsTitles) {
    add({file("The Tin Observatory/Season 1/01 First Light.mp4")});
    const auto lines = Text::split(Headless::report(*model), '\n');
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], header);
    const auto fields = Text::split(lines[1], '\t');
    ASSERT_EQ(fields.size(), 9u);
    EXPECT_EQ(fields[1], "The Tin Observatory/Season 1/01 First Light.mp4");
    EXPECT_EQ(fields[2], "The Tin Observatory | First Light [rules]");
    EXPECT_EQ(fields[3], "The Tin Observatory (2017)");
    EXPECT_EQ(fields[4], "S1E1");
    EXPECT_EQ(fields[5], "First Light");
    EXPECT_EQ(fields[6], "") << "a length that is not known";
    EXPECT_EQ(fields[7], "22");
}

TEST_F(ScanReport, AFileWithoutAMatchLeavesTheDatabasesFieldsEmpty) {
    add({file("qqqq zzzz S02.mp4")});
    const auto lines = Text::split(Headless::report(*model), '\n');
    const auto fields = Text::split(lines.at(1), '\t');
    ASSERT_EQ(fields.size(), 9u);
    EXPECT_EQ(fields[0], "LOOK");
    EXPECT_EQ(fields[3], "");
    EXPECT_EQ(fields[5], "");
    EXPECT_EQ(fields[7], "");
    EXPECT_FALSE(fields[8].empty());
}

TEST_F(ScanReport, WhatAPersonAcceptedStillTellsItsReasons) {
    add({file("Charade (1963).mp4")});
    model->confirm(library / "Charade (1963).mp4");
    const auto fields = Text::split(Headless::report(*model), '\t');
    EXPECT_EQ(fields.back(), "Couldn't compare the length");
}

TEST_F(ScanReport, WithoutALibraryNothingIsTakenOffThePaths) {
    const ScopedEnv none("MARLET_TEST_LIBRARY", "");
    add({file("Charade (1963).mp4")});
    EXPECT_THAT(Headless::report(*model),
                testing::HasSubstr((library / "Charade (1963).mp4").string()));
}

TEST_F(ScanReport, AReportThatCannotBeWrittenIsSwallowed) {
    EXPECT_FALSE(Headless::writeReport(library / "no such folder" / "r.tsv", *model));
    EXPECT_FALSE(Headless::writeReport("", *model));
    EXPECT_FALSE(std::filesystem::exists(library / "no such folder"));
}

}  // namespace
}  // namespace marlet::test
