#include <gtest/gtest.h>

#include <system_error>

#include "foundation/paths.h"
#include "foundation/tool_runner.h"
#include "support/temp_folder.h"

namespace marlet {

namespace {

namespace fs = std::filesystem;

/// A helpers folder with an `MP4Box` in it.
class Helpers {
public:
    test::TempFolder folder;
    MP4BoxLocator::HelpersAt at{folder.path()};

    fs::path addTool(const std::string& name) const {
        const fs::path file = folder.write(name, std::string_view("#!/bin/sh\n"));
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }
};

}  // namespace

TEST(MP4BoxLocator, TheHelpersLieBesideTheProgram) {
    EXPECT_FALSE(MP4BoxLocator::HelpersAt::isActive());
    EXPECT_EQ(MP4BoxLocator::helpersDir(), Paths::applicationDir() / "Contents" / "Helpers");
}

TEST(MP4BoxLocator, AFolderWithoutMp4boxGivesNeitherTool) {
    const Helpers helpers;
    helpers.addTool("gpac");
    EXPECT_EQ(MP4BoxLocator::find(), std::nullopt);
    EXPECT_EQ(ToolRunner::gpac(), std::nullopt);
}

TEST(MP4BoxLocator, AnExecutableMp4boxIsFoundAndNoted) {
    const test::OwnHome home;
    const Helpers helpers;
    const fs::path tool = helpers.addTool("MP4Box");
    EXPECT_EQ(MP4BoxLocator::find(), tool);
    EXPECT_NE(
        textOf(test::readFile(Paths::logsDir() / "tools.log")).find("  runs " + tool.string()),
        std::string::npos);
}

TEST(MP4BoxLocator, ALinkToAProgramCounts) {
    const Helpers helpers;
    fs::create_symlink("/bin/sh", helpers.folder / "MP4Box");
    EXPECT_EQ(MP4BoxLocator::find(), helpers.folder / "MP4Box");
}

TEST(MP4BoxLocator, WhatIsNoExecutableFileIsNotFound) {
    const Helpers helpers;
    fs::create_directory(helpers.folder / "MP4Box");
    EXPECT_EQ(MP4BoxLocator::find(), std::nullopt);
    fs::remove(helpers.folder / "MP4Box");
    fs::permissions(helpers.addTool("MP4Box"), fs::perms::owner_read);
    EXPECT_EQ(MP4BoxLocator::find(), std::nullopt);
}

TEST(MP4BoxLocator, TheCustomPathHasNoEffect) {
    const Helpers helpers;
    EXPECT_EQ(MP4BoxLocator::find("/bin/sh"), std::nullopt);
    const fs::path tool = helpers.addTool("MP4Box");
    EXPECT_EQ(MP4BoxLocator::find("/bin/sh"), tool);
}

TEST(MP4BoxLocator, AToolOfThePathIsNotTaken) {
    const Helpers helpers;
    const test::TempFolder elsewhere;
    fs::create_symlink("/bin/sh", elsewhere / "MP4Box");
    const test::ScopedEnv path("PATH", elsewhere.path().string());
    EXPECT_EQ(MP4BoxLocator::find(), std::nullopt);
}

TEST(ToolRunner, GpacCountsAsPresentWithMp4boxAndFailsToLaunchWhenItIsNot) {
    const Helpers helpers;
    helpers.addTool("MP4Box");
    const auto gpac = ToolRunner::gpac();
    ASSERT_EQ(gpac, helpers.folder / "gpac");
    RunControl control;
    EXPECT_THROW(ToolRunner::run(*gpac, {}, {}, control), std::system_error);
}

}  // namespace marlet
