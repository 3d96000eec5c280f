#include "foundation/tool_log.h"

#include <gtest/gtest.h>

#include "foundation/dates.h"
#include "foundation/paths.h"
#include "foundation/text.h"
#include "support/temp_folder.h"

namespace marlet {

namespace {

std::string logText() {
    return textOf(test::readFile(Paths::logsDir() / "tools.log"));
}

}  // namespace

TEST(ToolLog, APathIsWrittenOnceAndASecondPathGetsASecondLine) {
    const test::OwnHome home;
    ToolLog::noteOnce("/opt/once/MP4Box");
    ToolLog::noteOnce("/opt/once/MP4Box");
    ToolLog::noteOnce("/opt/once/gpac");
    const auto lines = Text::split(logText(), '\n');
    ASSERT_EQ(lines.size(), 3U) << logText();
    EXPECT_TRUE(lines[0].ends_with("  runs /opt/once/MP4Box"));
    EXPECT_TRUE(lines[1].ends_with("  runs /opt/once/gpac"));
    EXPECT_EQ(lines[2], "");
}

TEST(ToolLog, ALineBeginsWithTheTimeInIso8601) {
    const test::OwnHome home;
    ToolLog::noteOnce("/opt/time/gpac");
    const std::string text = logText();
    EXPECT_TRUE(Dates::parseIso8601(text.substr(0, text.find(' '))).has_value()) << text;
}

TEST(ToolLog, ALineGoesBehindWhatAnEarlierRunWrote) {
    const test::OwnHome home;
    create_directories(Paths::logsDir());
    test::writeFile(Paths::logsDir() / "tools.log", viewOf("earlier\n"));
    ToolLog::noteOnce("/opt/behind/gpac");
    EXPECT_TRUE(logText().starts_with("earlier\n"));
    EXPECT_TRUE(logText().ends_with("  runs /opt/behind/gpac\n"));
}

TEST(ToolLog, ALogThatCantBeWrittenFailsNothing) {
    const test::OwnHome home;
    create_directories(Paths::documentsDir());
    test::writeFile(Paths::logsDir(), viewOf("a file where the folder should be"));
    EXPECT_NO_THROW(ToolLog::noteOnce("/opt/blocked/gpac"));
}

}  // namespace marlet
