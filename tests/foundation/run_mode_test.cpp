#include "foundation/run_mode.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace marlet {

using test::ScopedEnv;

TEST(RunMode, AnyArgumentThatStartsWithTwoDashesMakesTheRunAutomated) {
    RunMode::setArguments({"/films/a.mkv"});
    EXPECT_FALSE(RunMode::automated());
    RunMode::setArguments({"/films/a.mkv", "--quit"});
    EXPECT_TRUE(RunMode::automated());
    RunMode::setArguments({"-quit", "a--b"});
    EXPECT_FALSE(RunMode::automated());
}

TEST(RunMode, OnlyTheExactValueOneOfTheVariableMakesTheRunAutomated) {
    for (const auto& [value, expected] :
         {std::pair("1", true), std::pair("0", false), std::pair("true", false),
          std::pair("", false), std::pair("11", false)}) {
        const ScopedEnv variable("MARLET_NO_KEYCHAIN", value);
        RunMode::setArguments({});
        EXPECT_EQ(RunMode::automated(), expected) << value;
    }
}

TEST(RunMode, TheAnswerIsWorkedOutOnce) {
    RunMode::setArguments({});
    EXPECT_FALSE(RunMode::automated());
    const ScopedEnv variable("MARLET_NO_KEYCHAIN", "1");
    EXPECT_FALSE(RunMode::automated());
}

TEST(RunMode, ArgumentsAreFoundByTheirWholeName) {
    RunMode::setArguments({"--scan", "/films"});
    EXPECT_TRUE(RunMode::hasArgument("--scan"));
    EXPECT_FALSE(RunMode::hasArgument("--sca"));
    EXPECT_EQ(RunMode::arguments().size(), 2U);
}

TEST(RunMode, TheNameOfAnOptionEndsAtItsFirstEqualsSign) {
    RunMode::setArguments({"--apple-tv=no", "--sources=--tag=x"});
    EXPECT_TRUE(RunMode::hasArgument("--apple-tv"));
    EXPECT_TRUE(RunMode::hasArgument("--sources"));
    EXPECT_FALSE(RunMode::hasArgument("--tag"));
    EXPECT_FALSE(RunMode::hasArgument("--apple"));
}

}  // namespace marlet
