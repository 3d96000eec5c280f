#include "foundation/paths.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace marlet {

using test::OwnHome;
using test::ScopedEnv;

TEST(Paths, ATestBuildHasAFolderNameOfItsOwn) {
    EXPECT_EQ(Paths::folderName("io.github.marlet.Marlet"), "Marlet");
    EXPECT_EQ(Paths::folderName("io.github.marlet.Marlet.dev"), "Marlet Dev");
    EXPECT_EQ(Paths::folderName("io.github.marlet.Marlet.fresh"), "Marlet Fresh");
}

TEST(Paths, AMissingApplicationIdentifierGivesThePlainName) {
    EXPECT_EQ(Paths::folderName(""), "Marlet");
    EXPECT_EQ(Paths::folderName("dev"), "Marlet");
    EXPECT_EQ(Paths::folderName("a.development"), "Marlet");
}

TEST(Paths, AFreshBuildNeverTouchesARealHistory) {
    EXPECT_NE(Paths::documentsDir("a.b.fresh"), Paths::documentsDir("a.b"));
    EXPECT_NE(Paths::documentsDir("a.b.fresh"), Paths::documentsDir("a.b.dev"));
    EXPECT_EQ(Paths::documentsDir("a.b.fresh").filename(), "Marlet Fresh");
}

TEST(Paths, EveryPlaceLiesInItsXdgFolder) {
    const ScopedEnv data("XDG_DATA_HOME", "/x/data");
    const ScopedEnv cache("XDG_CACHE_HOME", "/x/cache");
    const ScopedEnv config("XDG_CONFIG_HOME", "/x/config");
    const std::string name = Paths::folderName();
    const std::string documents = "/x/data/" + name;
    EXPECT_EQ(Paths::documentsDir(), documents);
    EXPECT_EQ(Paths::logsDir(), documents + "/logs");
    EXPECT_EQ(Paths::journalFile(), documents + "/pending-write.json");
    EXPECT_EQ(Paths::restoreDir(), documents + "/restore");
    EXPECT_EQ(Paths::historyFile(), documents + "/history.json");
    EXPECT_EQ(Paths::historyPostersDir(), documents + "/history-posters");
    EXPECT_EQ(Paths::cleanupLog(), documents + "/cleanup.log");
    EXPECT_EQ(Paths::workDir(), "/x/cache/" + name + "/work");
    EXPECT_EQ(Paths::tmdbCacheDir(), "/x/cache/" + name + "/tmdb");
    EXPECT_EQ(Paths::sourceCacheDir(), "/x/cache/" + name + "/sources");
    EXPECT_EQ(Paths::preferencesFile(), "/x/config/" + name + "/" + name + ".conf");
}

TEST(Paths, ARelativeOrEmptyXdgValueCountsAsUnset) {
    const ScopedEnv home("HOME", "/people/somebody");
    const ScopedEnv data("XDG_DATA_HOME", "data");
    const ScopedEnv cache("XDG_CACHE_HOME", "");
    const ScopedEnv config("XDG_CONFIG_HOME", "../config");
    const std::string name = Paths::folderName();
    EXPECT_EQ(Paths::documentsDir(), "/people/somebody/.local/share/" + name);
    EXPECT_EQ(Paths::workDir(), "/people/somebody/.cache/" + name + "/work");
    EXPECT_EQ(Paths::preferencesFile(), "/people/somebody/.config/" + name + "/" + name + ".conf");
}

TEST(Paths, AHomeThatIsNotAbsoluteIsTakenFromTheUserDatabase) {
    const ScopedEnv home("HOME", "somewhere");
    EXPECT_TRUE(Paths::homeDir().is_absolute());
}

TEST(Paths, TheWorkAreaStaysApartFromWhatMustSurvive) {
    const OwnHome home;
    const auto relative = Paths::workDir().lexically_relative(Paths::documentsDir());
    EXPECT_EQ(*relative.begin(), "..");
}

TEST(Paths, TheApplicationsFolderHoldsTheRunningProgram) {
    EXPECT_TRUE(exists(Paths::applicationDir() / "foundation_tests"));
}

TEST(Paths, AStandardisedPathIsAbsoluteAndNormalWithoutATrailingSlash) {
    EXPECT_EQ(Paths::standardised("/a/./b//c/../d/"), "/a/b/d");
    EXPECT_EQ(Paths::standardised("/a/b/.."), "/a");
    EXPECT_EQ(Paths::standardised("/"), "/");
    EXPECT_EQ(Paths::standardised("/.."), "/");
    EXPECT_EQ(Paths::standardised("x"), std::filesystem::current_path() / "x");
}

TEST(Paths, StandardisingLeavesSymbolicLinksAlone) {
    const test::TempFolder folder;
    std::filesystem::create_directory_symlink("/tmp", folder / "link");
    EXPECT_EQ(Paths::standardised(folder / "link"), folder.path() / "link");
}

}  // namespace marlet
