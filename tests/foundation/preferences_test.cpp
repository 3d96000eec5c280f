#include "foundation/preferences.h"

#include <gtest/gtest.h>

namespace marlet {

TEST(Preferences, AValueThatWasNeverSetIsAbsent) {
    const MemoryPreferences store;
    EXPECT_EQ(store.boolean("a"), std::nullopt);
    EXPECT_EQ(store.text("a"), std::nullopt);
    EXPECT_EQ(store.texts("a"), std::nullopt);
}

TEST(Preferences, WhatWasSetIsReadBackUntilItIsRemoved) {
    MemoryPreferences store;
    store.setBoolean("b", false);
    store.setText("t", "");
    store.setTexts("l", {"x", "y"});
    EXPECT_EQ(store.boolean("b"), false);
    EXPECT_EQ(store.text("t"), "");
    EXPECT_EQ(store.texts("l"), (std::vector<std::string>{"x", "y"}));
    store.remove("b");
    EXPECT_EQ(store.boolean("b"), std::nullopt);
}

TEST(Preferences, AValueOfAnotherTypeCountsAsAbsent) {
    MemoryPreferences store;
    store.setText("key", "true");
    EXPECT_EQ(store.boolean("key"), std::nullopt);
    EXPECT_EQ(store.texts("key"), std::nullopt);
    store.setBoolean("key", true);
    EXPECT_EQ(store.text("key"), std::nullopt);
}

TEST(Preferences, TheInstalledStoreIsTheOneInForce) {
    auto store = std::make_unique<MemoryPreferences>();
    store->setText("key", "here");
    Preferences::install(std::move(store));
    EXPECT_EQ(Preferences::current().text("key"), "here");
    Preferences::install(nullptr);
    EXPECT_EQ(Preferences::current().text("key"), std::nullopt);
}

}  // namespace marlet
