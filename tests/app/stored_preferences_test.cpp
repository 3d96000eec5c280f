#include "app/stored_preferences.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Never within a test.
constexpr std::chrono::milliseconds never = 24h;

class StoredPreferencesTest : public testing::Test {
protected:
    std::string inFile() const { return fs::exists(file_) ? textOf(readFile(file_)) : ""; }
    bool isInFile(const std::string& text) const {
        return inFile().find(text) != std::string::npos;
    }
    /// As a later run finds it.
    std::optional<std::string> later(const std::string& key) const {
        return StoredPreferences(file_, never).text(key);
    }

    TempFolder folder_;
    fs::path file_ = folder_ / "marlet" / "marlet.conf";
};

TEST_F(StoredPreferencesTest, AProgramThatIsKilledLosesAtMostWhatWasSetInTheLastHalfSecond) {
    static_assert(StoredPreferences::longestPause <= 500ms);
    // Never ended, as that of a killed program isn't.
    auto* const killed = new StoredPreferences(file_, 1ms);
    killed->setText("keepLanguages", "French");
    while (!isInFile("French")) std::this_thread::yield();
    killed->setText("keepLanguages", "German");
    while (!isInFile("German")) std::this_thread::yield();
    delete killed;
}

TEST_F(StoredPreferencesTest, WhatIsTypedHoldsAtOnceAndIsNotWrittenLetterByLetter) {
    StoredPreferences store(file_, never);
    for (const char* typed : {"F", "Fr", "French"}) {
        store.setText("keepLanguages", typed);
        EXPECT_EQ(store.text("keepLanguages"), typed);
    }
    EXPECT_EQ(inFile(), "");
    store.flush();
    EXPECT_EQ(later("keepLanguages"), "French");
}

TEST_F(StoredPreferencesTest, TheEndOfTheStoreWritesWhatIsLeft) {
    {
        StoredPreferences store(file_, never);
        store.setBoolean("fixForAppleTV", false);
        store.setTexts("sourceOrder", {"tmdb", "itunes"});
    }
    const StoredPreferences later(file_, never);
    EXPECT_EQ(later.boolean("fixForAppleTV"), false);
    EXPECT_EQ(later.texts("sourceOrder"), (std::vector<std::string>{"tmdb", "itunes"}));
}

TEST_F(StoredPreferencesTest, WhatIsRemovedIsAbsentAtOnceAndLater) {
    StoredPreferences store(file_, never);
    store.setText("keepLanguages", "French");
    store.flush();
    store.remove("keepLanguages");
    EXPECT_EQ(store.text("keepLanguages"), std::nullopt);
    EXPECT_EQ(later("keepLanguages"), "French");
    store.flush();
    EXPECT_EQ(later("keepLanguages"), std::nullopt);
}

TEST_F(StoredPreferencesTest, WhatAnotherCopyStoredMeanwhileStaysAndIsSeen) {
    StoredPreferences one(file_, never);
    StoredPreferences other(file_, never);
    one.setText("keepLanguages", "French");
    one.setText("appearance", "Dark");
    one.flush();
    EXPECT_EQ(other.text("keepLanguages"), std::nullopt);
    other.setText("appearance", "Light");
    other.flush();
    EXPECT_EQ(other.text("keepLanguages"), "French");
    EXPECT_EQ(later("keepLanguages"), "French");
    EXPECT_EQ(later("appearance"), "Light") << "the one who spoke last";
}

TEST_F(StoredPreferencesTest, WhatCouldNotBeWrittenIsWrittenWithTheNextChange) {
    StoredPreferences store(file_, never);
    // A folder in the file's place: nobody, not even root, can write it.
    fs::create_directories(file_ / "in the way");
    store.setText("keepLanguages", "French");
    store.flush();
    EXPECT_EQ(store.text("keepLanguages"), "French");
    fs::remove_all(file_);
    store.setText("appearance", "Dark");
    store.flush();
    EXPECT_EQ(later("keepLanguages"), "French");
    EXPECT_EQ(later("appearance"), "Dark");
}

TEST_F(StoredPreferencesTest, ManyThreadsMayReadAndSet) {
    StoredPreferences store(file_, 1ms);
    std::vector<std::thread> threads;
    for (int n = 0; n < 4; n++)
        threads.emplace_back([&store, key = "key" + std::to_string(n)] {
            for (int i = 0; i < 50; i++) {
                store.setText(key, std::to_string(i));
                EXPECT_EQ(store.text(key), std::to_string(i));
            }
        });
    for (std::thread& each : threads) each.join();
    store.flush();
    for (int n = 0; n < 4; n++) EXPECT_EQ(later("key" + std::to_string(n)), "49");
}

}  // namespace
}  // namespace marlet::test
