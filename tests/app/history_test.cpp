#include "app/history.h"
#include "app/history_entries.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "foundation/paths.h"
#include "foundation/text.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

HistoryEntry full() {
    HistoryEntry all = doneEntry("Pilot");
    all.show = "A Show";
    all.season = 1;
    all.episode = 2;
    all.isMovie = false;
    all.before = 0.5;
    all.after = 0.46;
    all.changes = {"title: Old → New", "cast and crew updated"};
    all.batchID = "B";
    all.isRestore = true;
    all.posterPath = "/posters/a.jpg";
    all.year = 1999;
    all.how = "Changed in place";
    all.summary = "details and cover art";
    return all;
}

class History : public testing::Test {
protected:
    void writeFile(const std::string& text) {
        fs::create_directories(Paths::documentsDir());
        test::writeFile(Paths::historyFile(), viewOf(text));
    }
    OwnHome home_;
};

TEST_F(History, WhatWasAppendedIsReadBackNewestFirst) {
    {
        HistoryStore store;
        store.append(doneEntry("First"));
        store.append(full());
    }
    const HistoryStore again;
    ASSERT_EQ(again.entries().size(), 2u);
    EXPECT_EQ(again.entries()[0], full());
    EXPECT_EQ(again.entries()[1], doneEntry("First"));
}

TEST_F(History, TheFileIsReadWhenItIsFirstNeededSoThatAScanDoesNotWaitForIt) {
    const HistoryStore store;
    HistoryStore().append(doneEntry("Later"));
    EXPECT_EQ(store.entries().size(), 1u);
}

TEST_F(History, ClearingBeforeAnythingWasReadStillKeepsADamagedFileAside) {
    writeFile("{");
    HistoryStore().clear();
    std::size_t files = 0;  // the fresh one and the damaged one; the lock lies beside them
    for (const auto& each : fs::directory_iterator(Paths::documentsDir()))
        files += each.path().filename().string().starts_with("history.json") ? 1 : 0;
    EXPECT_EQ(files, 2u);
    EXPECT_TRUE(HistoryStore().entries().empty());
}

TEST_F(History, AnOldFileWithoutTheNewerFieldsLoadsWithThoseEmpty) {
    writeFile(R"([{"id":"A","date":"2020-01-02T03:04:05Z","path":"/a.mp4","title":"Old",
        "isMovie":true,"result":"done","changes":[],"message":"","size":1}])");
    const HistoryStore store;
    ASSERT_EQ(store.entries().size(), 1u);
    const HistoryEntry& old = store.entries().front();
    EXPECT_FALSE(old.batchID || old.isRestore || old.posterPath || old.year || old.how ||
                 old.summary);
}

TEST_F(History, AMalformedFileGivesAnEmptyListAndTheFirstAppendMakesAFreshValidFile) {
    writeFile("{ not a list");
    {
        HistoryStore store;
        EXPECT_TRUE(store.entries().empty());
        store.append(doneEntry("New"));
    }
    const HistoryStore again;
    ASSERT_EQ(again.entries().size(), 1u);
    EXPECT_EQ(again.entries().front().title, "New");
}

TEST_F(History, AFileThatCannotBeDecodedIsKeptAsideBeforeItIsReplaced) {
    writeFile("precious but odd");
    HistoryStore store;
    store.append(doneEntry("New"));
    int kept = 0;
    for (const auto& item : fs::directory_iterator(Paths::documentsDir()))
        if (item.path() != Paths::historyFile() &&
            textOf(readFile(item.path())) == "precious but odd")
            kept++;
    EXPECT_EQ(kept, 1);
}

TEST_F(History, AnEntryWithAWrongTypeMakesTheWholeFileDamaged) {
    writeFile(R"([{"id":1}])");
    const HistoryStore store;
    EXPECT_TRUE(store.entries().empty());
}

TEST_F(History, EntriesThatAnotherRunningCopyAppendedAreKept) {
    HistoryStore one;
    HistoryStore other;
    one.append(doneEntry("FromOne"));
    other.append(doneEntry("FromOther"));
    EXPECT_EQ(HistoryStore().entries().size(), 2u);
}

TEST_F(History, AFailureToWriteIsSwallowedAndTheEntryStaysInMemory) {
    fs::create_directories(Paths::documentsDir().parent_path());
    test::writeFile(Paths::documentsDir(), viewOf("a file where the folder should be"));
    HistoryStore store;
    store.append(doneEntry("Kept"));
    EXPECT_EQ(store.entries().size(), 1u);
}

TEST_F(History, ClearingWritesTheEmptyList) {
    HistoryStore store;
    store.append(doneEntry("Gone"));
    store.clear();
    EXPECT_TRUE(HistoryStore().entries().empty());
    EXPECT_TRUE(fs::exists(Paths::historyFile()));
}

TEST_F(History, APathThatIsNoValidTextComesBackByteForByte) {
    HistoryEntry odd = doneEntry("Odd");
    odd.path = "/films/\xff\xfe.mp4";
    HistoryStore().append(odd);
    EXPECT_EQ(HistoryStore().entries().front().path, odd.path);
}

TEST_F(History, TheCsvStartsWithItsHeaderAndEndsWithALineFeed) {
    EXPECT_EQ(HistoryStore().csv(),
              "Date,File,Title,Show,Season,Episode,Result,Sound layout before (s),Sound layout "
              "after (s),What changed,Note\n");
}

TEST_F(History, AnEpisodeFillsEveryColumnOfTheCsv) {
    HistoryStore store;
    store.append(full());
    EXPECT_TRUE(Text::endsWith(
        store.csv(),
        "\n2023-11-14T22:13:20Z,\"/films/Pilot.mp4\",\"Pilot\",\"A Show\",1,2,done,0.50,0.46,"
        "\"title: Old → New; cast and crew updated\",\"Details written\"\n"));
}

TEST_F(History, ADoubleQuoteInATitleIsDoubledInTheCsv) {
    HistoryStore store;
    store.append(doneEntry("The \"Best\" Film"));
    EXPECT_TRUE(Text::contains(store.csv(), "\"The \"\"Best\"\" Film\""));
}

TEST_F(History, AMovieHasEmptyShowSeasonAndEpisodeInTheCsvTheShowBeingTwoQuotes) {
    HistoryStore store;
    store.append(doneEntry("Film"));
    EXPECT_TRUE(Text::contains(store.csv(), "\"Film\",\"\",,,done,"));
}

TEST_F(History, APosterThatIs181DaysOldIsRemovedAndAYoungerOneStays) {
    const auto old = HistoryPosters::save(viewOf("old"), "/old.jpg");
    const auto young = HistoryPosters::save(viewOf("young"), "/young.jpg");
    ASSERT_TRUE(old && young);
    const auto days = [](int n) {
        return FileTime(std::chrono::system_clock::now() - std::chrono::days(n));
    };
    ASSERT_EQ(Sys::setModified(*old, days(181)), 0);
    ASSERT_EQ(Sys::setModified(*young, days(179)), 0);
    HistoryPosters::prune();
    EXPECT_FALSE(fs::exists(*old));
    EXPECT_TRUE(fs::exists(*young));
}

TEST_F(History, AFileThatDoesNotStandDirectlyInThePosterFolderIsNotTouched) {
    ASSERT_TRUE(HistoryPosters::save(viewOf("x"), "/x.jpg"));
    const fs::path deep = Paths::historyPostersDir() / "deeper" / "old.jpg";
    fs::create_directories(deep.parent_path());
    test::writeFile(deep, viewOf("old"));
    ASSERT_EQ(Sys::setModified(deep, FileTime(std::chrono::hours(1))), 0);
    ASSERT_EQ(Sys::setModified(deep.parent_path(), FileTime(std::chrono::hours(1))), 0);
    HistoryPosters::prune();
    EXPECT_TRUE(fs::exists(deep));
}

TEST_F(History, APosterIsNamedByItsKeyWithoutSlashes) {
    EXPECT_EQ(HistoryPosters::pathFor("/a/b.jpg"),
              (Paths::historyPostersDir() / "_a_b.jpg").string());
    EXPECT_EQ(HistoryPosters::pathFor("/b.png"),
              (Paths::historyPostersDir() / "_b.png.jpg").string());
}

TEST_F(History, AJpgAnywhereInAPostersKeyGoesAndOneIsAppended) {
    EXPECT_EQ(HistoryPosters::pathFor("/a.jpg.b.jpg"),
              (HistoryPosters::dir() / "_a.b.jpg").string());
}

TEST_F(History, APosterThatCannotBeSavedGivesNone) {
    EXPECT_EQ(HistoryPosters::save(viewOf("x"), std::string(300, 'k')), std::nullopt);
    const Sys::Fault full(Sys::Call::Write, ENOSPC, 1, true);
    EXPECT_EQ(HistoryPosters::save(viewOf("x"), "/x.jpg"), std::nullopt);
}

TEST_F(History, AnOldLinkAmongThePostersDoesNotTakeItsTargetAlong) {
    ASSERT_TRUE(HistoryPosters::save(viewOf("x"), "/x.jpg"));
    const fs::path film = home_.path() / "film.mp4";
    test::writeFile(film, viewOf("film"));
    ASSERT_EQ(Sys::setModified(film, FileTime(std::chrono::hours(1))), 0);
    fs::create_symlink(film, HistoryPosters::dir() / "link.jpg");
    HistoryPosters::prune();
    EXPECT_TRUE(fs::exists(film));
    EXPECT_TRUE(fs::is_symlink(HistoryPosters::dir() / "link.jpg"));
}

TEST_F(History, PruningWithoutAFolderDoesNothing) {
    HistoryPosters::prune();
    EXPECT_FALSE(fs::exists(HistoryPosters::dir()));
}

TEST_F(History, CellsOfTheCsvStayAsTheyAre) {
    HistoryStore store;
    store.append(doneEntry("=1+1, two\nlines"));
    EXPECT_TRUE(Text::contains(store.csv(), ",\"=1+1, two\nlines\",\"\",,,done,,,"));
}

}  // namespace
}  // namespace marlet::test
