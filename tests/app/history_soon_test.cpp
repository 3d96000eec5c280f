// History read and written by workers, as the windows have it: nobody waits, and nothing is lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "app/history.h"
#include "app/history_entries.h"
#include "app/model_fixture.h"
#include "foundation/paths.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> titlesOf(const HistoryList& entries) {
    std::vector<std::string> titles;
    for (const HistoryEntry& each : entries) titles.push_back(each.title);
    return titles;
}

class HistorySoon : public testing::Test {
protected:
    HistorySoon() {
        qtApp();
        HistoryStore().append(doneEntry("Old"));
        store.emplace();
        store->onChanged = [this] { told++; };
    }
    ~HistorySoon() override { EXPECT_TRUE(Async::settle(20s)); }
    /// As a later run finds it.
    static std::vector<std::string> inFile() { return titlesOf(HistoryStore().entries()); }

    OwnHome home;
    std::optional<HistoryStore> store;
    int told = 0;
};

TEST_F(HistorySoon, NothingIsKnownUntilAWorkerHasReadTheFile) {
    EXPECT_THAT(store->known(), IsEmpty());
    EXPECT_FALSE(store->isLoaded());
    auto loading = store->load();
    EXPECT_FALSE(store->isLoaded()) << "nobody has waited";
    Async::wait(std::move(loading));
    EXPECT_TRUE(store->isLoaded());
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("Old"));
    EXPECT_EQ(told, 1);
    Async::wait(store->load());
    EXPECT_EQ(told, 1) << "once is enough";
}

TEST_F(HistorySoon, WhatIsAppendedBeforeTheFileWasReadComesOnTopOfWhatIsInThere) {
    auto loading = store->load();
    auto appending = store->appendSoon(doneEntry("New"));
    Async::wait(std::move(appending));
    Async::wait(std::move(loading));
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("New", "Old"));
    EXPECT_THAT(inFile(), ElementsAre("New", "Old"));
}

TEST_F(HistorySoon, WhatIsAppendedByARunThatNeverReadTheFileComesOnTopToo) {
    auto first = store->appendSoon(doneEntry("First"));
    auto second = store->appendSoon(doneEntry("Second"));
    EXPECT_THAT(store->known(), IsEmpty()) << "nobody has waited";
    Async::wait(std::move(first));
    Async::wait(std::move(second));
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("Second", "First", "Old"));
    EXPECT_THAT(inFile(), ElementsAre("Second", "First", "Old"));
}

TEST_F(HistorySoon, AnOlderContentThatComesBackLateIsPassedOver) {
    auto loading = store->load();
    // Waits for the worker's look at the file, whose answer is still on its way.
    store->append(doneEntry("New"));
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("New", "Old"));
    Async::wait(std::move(loading));
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("New", "Old"));
}

TEST_F(HistorySoon, ClearingHoldsForWhatWasThereAndNotForWhatComesLater) {
    auto clearing = store->clearSoon();
    auto appending = store->appendSoon(doneEntry("New"));
    Async::wait(std::move(clearing));
    Async::wait(std::move(appending));
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("New"));
    EXPECT_THAT(inFile(), ElementsAre("New"));
}

TEST_F(HistorySoon, TheEndOfTheProgramWritesWhatNoWorkerHasGotRoundTo) {
    auto appending = store->appendSoon(doneEntry("New"));
    store->keepNow();
    EXPECT_THAT(inFile(), ElementsAre("New", "Old"));
    Async::wait(std::move(appending));
    EXPECT_THAT(inFile(), ElementsAre("New", "Old")) << "once";
}

TEST_F(HistorySoon, AStoreThatGoesLosesNothingAndIsNotTouchedAfterwards) {
    auto loading = store->load();
    auto appending = store->appendSoon(doneEntry("New"));
    store.reset();
    EXPECT_THROW(Async::wait(std::move(loading)), CancelError);
    EXPECT_THROW(Async::wait(std::move(appending)), CancelError);
    ASSERT_TRUE(Async::settle(20s));
    EXPECT_THAT(inFile(), ElementsAre("New", "Old"));
    EXPECT_EQ(told, 0);
}

TEST_F(HistorySoon, WhatCouldNotBeWrittenIsWrittenWithTheNextEntry) {
    {
        const Sys::Fault full(Sys::Call::Write, ENOSPC, 1, true);
        Async::wait(store->appendSoon(doneEntry("First")));
    }
    EXPECT_THAT(titlesOf(store->known()), ElementsAre("First", "Old"));
    EXPECT_THAT(inFile(), ElementsAre("Old"));
    Async::wait(store->appendSoon(doneEntry("Second")));
    EXPECT_THAT(inFile(), ElementsAre("Second", "First", "Old"));
}

TEST_F(HistorySoon, WhatCouldNotBeWrittenIsTriedOnceMoreAtTheEnd) {
    {
        const Sys::Fault full(Sys::Call::Write, ENOSPC, 1, true);
        Async::wait(store->appendSoon(doneEntry("First")));
    }
    EXPECT_THAT(inFile(), ElementsAre("Old"));
    store->keepNow();
    EXPECT_THAT(inFile(), ElementsAre("First", "Old"));
}

class Tidying : public ModelTest {};

TEST_F(Tidying, WhatAKilledWriteLeftIsRemovedAtTheStart) {
    const fs::path folder = Paths::documentsDir();
    fs::create_directories(folder);
    const fs::path old = folder / ".history.json.8F1C6D0E-5B7A-4C11-9E0D-2A3B4C5D6E7F.tmp";
    const fs::path young = folder / ".history.json.8F1C6D0E-5B7A-4C11-9E0D-2A3B4C5D6E80.tmp";
    const fs::path poster = *HistoryPosters::save(viewOf("x"), "/a.jpg");
    const fs::path halfAPoster =
        HistoryPosters::dir() / "._a.jpg.8F1C6D0E-5B7A-4C11-9E0D-2A3B4C5D6E7F.tmp";
    for (const fs::path& file : {old, young, halfAPoster}) writeFile(file, viewOf("[half an en"));
    const auto ago = [](int minutes) {
        return FileTime(std::chrono::system_clock::now() - std::chrono::minutes(minutes));
    };
    for (const fs::path& file : {old, poster, halfAPoster})
        ASSERT_EQ(Sys::setModified(file, ago(31)), 0);
    ASSERT_EQ(Sys::setModified(young, ago(29)), 0);
    make();
    ASSERT_TRUE(Async::settle(20s));
    EXPECT_FALSE(fs::exists(old));
    EXPECT_FALSE(fs::exists(halfAPoster));
    EXPECT_TRUE(fs::exists(poster));
    EXPECT_TRUE(fs::exists(young)) << "a living copy may be writing it";
}

}  // namespace
}  // namespace marlet::test
