// The real program and a keyring on a message bus of the test's own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "support/private_keyring.h"
#include "system/program_run.h"
#include "system/token_search.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::Not;

constexpr const char* token = "kept-9d41c7-in-the-keyring";

class KeyringOnABus : public testing::Test {
protected:
    void SetUp() override {
        if (const auto reason = PrivateKeyring::missing()) GTEST_SKIP() << *reason;
        open({});
    }
    void open(const std::vector<std::string>& arguments) {
        keyring_ = std::make_unique<PrivateKeyring>(arguments);
        for (const auto& [name, value] : keyring_->environment()) run_.environment[name] = value;
        run_.environment["MARLET_TMDB_TOKEN"] = "";
    }
    std::string tool(const std::string& verb) const {
        const auto process = run_.start("key_tool", {verb});
        process->wait();
        return process->output();
    }
    /// The token goes in by a pipe: an argument would stand in the list of processes.
    std::string keep(const std::string& text, const std::string& verb = "keep") const {
        const TempFolder folder;
        const auto file = folder.write("token", std::string_view(text + "\n"));
        Process process("/bin/sh",
                        {"-c", "exec \"$0\" " + verb + " < \"$1\"",
                         builtProgram("key_tool").string(), file.string()},
                        run_.environment);
        process.wait();
        return process.output();
    }
    ProgramRun run_;
    std::unique_ptr<PrivateKeyring> keyring_;
};

TEST_F(KeyringOnABus, ATokenIsKeptFoundByLaterRunsAndGoneOnceRemoved) {
    EXPECT_EQ(tool("read"), "(none)\n");
    EXPECT_EQ(tool("origin"), "0\n");
    EXPECT_EQ(keep(token), "kept\n");
    EXPECT_EQ(tool("read"), std::string(token) + "\n");
    EXPECT_EQ(tool("origin"), "2\n");
    EXPECT_EQ(keep("another"), "kept\n");
    EXPECT_EQ(tool("read"), "another\n") << "there is one, not two";
    EXPECT_EQ(tool("forget"), "gone\n");
    EXPECT_EQ(tool("read"), "(none)\n");
    EXPECT_EQ(tool("forget"), "gone\n") << "none is what was wanted";
}

constexpr const char* keyringIsUsed = "The key in your keyring is used.\n";

TEST_F(KeyringOnABus, TheFieldOfTheSettingsTriesAndKeepsAndRemovesTheToken) {
    EXPECT_EQ(keep(" " + std::string(token), "enter"), std::string("Key works.\n") + keyringIsUsed);
    EXPECT_EQ(tool("try"), std::string("Key works.\n") + keyringIsUsed);
    EXPECT_EQ(tool("read"), std::string(token) + "\n");
    EXPECT_EQ(tool("remove"), "The key was removed from your keyring.\nNo key yet.\n");
    EXPECT_EQ(tool("try"), "No key yet.\nNo key yet.\n");
    EXPECT_THAT(filesHolding(homeFolder(), token), testing::IsEmpty());
}

TEST_F(KeyringOnABus, ATokenThatTmdbRejectsTakesNoGoodOnesPlace) {
    ASSERT_EQ(keep(token), "kept\n");
    run_.catalogue().fault(R"({"times":0,"status":401})");
    EXPECT_EQ(keep("typo", "enter"), std::string("TMDB rejected the key.\n") + keyringIsUsed);
    EXPECT_EQ(tool("read"), std::string(token) + "\n");
}

TEST_F(KeyringOnABus, ATokenThatCouldNotBeTriedIsKeptAndThatIsTold) {
    run_.environment["MARLET_TMDB_API"] = "http://127.0.0.1:9/3";
    EXPECT_EQ(keep(token, "enter"),
              std::string("TMDB couldn't be reached, so the key wasn't tried.\n") + keyringIsUsed);
    EXPECT_EQ(tool("read"), std::string(token) + "\n");
}

TEST_F(KeyringOnABus, TheProgramOfAPersonAsksTmdbWithTheTokenOfTheKeyring) {
    ASSERT_EQ(keep(token), "kept\n");
    writeFile(run_.library() / "Charade (1963).mp4", viewOf("no film, but a name"));
    // Ahead of the catalogues that need no key.
    const auto settings = std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "Marlet";
    std::filesystem::create_directories(settings);
    writeFile(settings / "Marlet.conf", viewOf("[General]\nsourceOrder=tmdb\n"));
    const auto process = run_.start("marlet", {run_.library().string()});
    for (int i = 0; i < 10000 && run_.catalogue().totalWithToken() == 0; i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_GT(run_.catalogue().totalWithToken(), 0);
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait(), 0);
    EXPECT_EQ(run_.catalogue().targetCount(token), 0);
    EXPECT_THAT(filesHolding(homeFolder(), token), testing::IsEmpty());
}

TEST_F(KeyringOnABus, AnAutomatedRunLeavesTheKeyringAlone) {
    ASSERT_EQ(keep(token), "kept\n");
    const std::size_t before = keyring_->calls().size();
    run_.scan();
    run_.environment["MARLET_NO_KEYCHAIN"] = "1";
    EXPECT_EQ(tool("read"), "(none)\n");
    EXPECT_EQ(keep("another"), "not kept\n");
    EXPECT_EQ(tool("forget"), "not gone\n");
    EXPECT_EQ(keyring_->calls().size(), before);
}

TEST_F(KeyringOnABus, TheVariableComesBeforeTheKeyring) {
    ASSERT_EQ(keep(token), "kept\n");
    run_.environment["MARLET_TMDB_TOKEN"] = "from-the-environment";
    EXPECT_EQ(tool("read"), "from-the-environment\n");
    EXPECT_EQ(tool("origin"), "1\n");
}

TEST_F(KeyringOnABus, ALockedKeyringKeepsNothingAndNothingIsStoredElsewhere) {
    keyring_.reset();
    open({"--locked"});
    EXPECT_EQ(keep(token), "not kept\n");
    EXPECT_EQ(tool("read"), "(none)\n");
    EXPECT_EQ(tool("forget"), "not gone\n");
    EXPECT_EQ(keep(token, "enter"),
              "The keyring didn't take the key, so it isn't stored anywhere. Is a keyring running "
              "and open?\nNo key yet.\n");
    EXPECT_EQ(tool("remove"),
              "The keyring couldn't be changed. Is it running and open?\nNo key yet.\n");
    EXPECT_THAT(keyring_->calls(), Contains("OpenSession"));
    EXPECT_THAT(filesHolding(homeFolder(), token), testing::IsEmpty());
}

}  // namespace
}  // namespace marlet::test
