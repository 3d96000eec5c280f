#include "sources/key_store.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/run_mode.h"
#include "sources/hidden_text.h"
#include "sources/keyring.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

class KeyStoreTest : public testing::Test {
protected:
    KeyStoreTest() {
        test::qtApp();
        RunMode::setArguments({});
    }
    ~KeyStoreTest() override { RunMode::setArguments({}); }
    // No test may ask the keyring of whoever runs it.
    test::ScopedEnv noBus_{"DBUS_SESSION_BUS_ADDRESS", ""};
};

TEST_F(KeyStoreTest, TheEnvironmentsTokenComesFirst) {
    const test::ScopedEnv token("MARLET_TMDB_TOKEN", "from-the-environment");
    EXPECT_EQ(KeyStore::builtIn(), "from-the-environment");
}

TEST_F(KeyStoreTest, AStrayLineEndIsNotPartOfTheToken) {
    const test::ScopedEnv token("MARLET_TMDB_TOKEN", " abc\n");
    EXPECT_EQ(KeyStore::builtIn(), "abc");
}

TEST_F(KeyStoreTest, AnEmptyTokenIsNone) {
    const test::ScopedEnv empty("MARLET_TMDB_TOKEN", "");
    const auto without = KeyStore::builtIn();
    const test::ScopedEnv blank("MARLET_TMDB_TOKEN", " \n");
    EXPECT_EQ(KeyStore::builtIn(), without);  // what this build carries, if anything
    EXPECT_NE(without, "");
}

TEST_F(KeyStoreTest, WithoutASessionBusThereIsNoKeyring) {
    EXPECT_FALSE(Keyring::isThere());
    EXPECT_FALSE(Keyring::read("tmdb"));
    EXPECT_FALSE(Keyring::write("tmdb", "abc"));
    EXPECT_FALSE(Keyring::remove("tmdb"));
    EXPECT_FALSE(KeyStore::keep("abc"));
    EXPECT_FALSE(KeyStore::forget());
}

TEST_F(KeyStoreTest, TheOriginOfTheTokenIsTold) {
    const bool carriesOne = KeyStore::builtIn().has_value();
    EXPECT_EQ(KeyStore::origin(),
              carriesOne ? KeyStore::Origin::compiledIn : KeyStore::Origin::none);
    const test::ScopedEnv token("MARLET_TMDB_TOKEN", "abc");
    EXPECT_EQ(KeyStore::origin(), KeyStore::Origin::environment);
}

TEST_F(KeyStoreTest, ABusThatNobodyAnswersOnGivesNoTokenWithoutAHang) {
    const test::ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    EXPECT_TRUE(Keyring::isThere());
    EXPECT_FALSE(Keyring::read("tmdb"));
}

TEST_F(KeyStoreTest, AnAutomatedRunNeitherReadsNorWritesTheKeyring) {
    const test::ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    RunMode::setArguments({"--scan"});
    EXPECT_TRUE(KeyStore::automated());
    EXPECT_FALSE(KeyStore::keep("abc"));
    EXPECT_FALSE(KeyStore::forget());
}

TEST_F(KeyStoreTest, AnEmptyTokenIsNotKept) {
    EXPECT_FALSE(KeyStore::keep("  "));
}

TEST_F(KeyStoreTest, ARunIsAutomatedByItsVariableOrAnOption) {
    EXPECT_FALSE(KeyStore::automated());
    RunMode::setArguments({"film.mp4"});
    EXPECT_FALSE(KeyStore::automated());
    RunMode::setArguments({"film.mp4", "--list"});
    EXPECT_TRUE(KeyStore::automated());
    const test::ScopedEnv variable("MARLET_NO_KEYCHAIN", "1");
    RunMode::setArguments({});
    EXPECT_TRUE(KeyStore::automated());
}

TEST(HiddenText, IsRevealedAsItWasAndStandsNowhereInTheProgram) {
    static constexpr HiddenText hidden("ni-nedis-tsetraug-ew-tahw");
    std::string text = hidden.reveal();
    // Written backwards here, so that this test's own copy is not what is found.
    std::string backwards = "what-we-guartest-siden-in";
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(text, backwards);
    const Bytes program = test::readFile("/proc/self/exe");
    EXPECT_EQ(std::search(program.begin(), program.end(), text.begin(), text.end()), program.end());
    // The search does find what stands there.
    const std::string_view plain = "a text of this program that nobody hides";
    EXPECT_NE(std::search(program.begin(), program.end(), plain.begin(), plain.end()),
              program.end());
}

TEST(HiddenText, MayBeEmpty) {
    static constexpr HiddenText hidden("");
    EXPECT_EQ(hidden.reveal(), "");
}

}  // namespace
}  // namespace marlet
