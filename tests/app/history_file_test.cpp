// The file of History as others left it, as others write it at the same time, and as it can't be
// written.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "app/history.h"
#include "app/history_entries.h"
#include "app/history_json.h"
#include "foundation/paths.h"
#include "foundation/text.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* oldEntry =
    R"({"id":"A","date":"2020-01-02T03:04:05Z","path":"/a.mp4","title":"Old","isMovie":true,)"
    R"("result":"done","changes":["x"],"message":"","size":1})";

class HistoryFile : public testing::Test {
protected:
    HistoryFile() { fs::create_directories(Paths::documentsDir()); }

    void write(const std::string& text) { writeFile(HistoryStore::file(), viewOf(text)); }
    /// The old entry with one piece of it replaced.
    void writeWith(const std::string& what, const std::string& with) {
        const std::string text = Text::replaceAll(oldEntry, what, with);
        ASSERT_NE(text, oldEntry) << what;
        write("[" + text + "]");
    }
    std::string text() { return textOf(readFile(HistoryStore::file())); }
    /// The titles as a program that knows nothing but JSON reads them.
    std::string titles() {
        std::string all;
        for (const auto& each : nlohmann::json::parse(text()))
            all += each["title"].get<std::string>() + " ";
        return all;
    }
    std::size_t filesAside() {
        const auto names = namesIn(Paths::documentsDir());
        return static_cast<std::size_t>(std::ranges::count_if(names, [](const std::string& name) {
            return name.starts_with("history.json.damaged ");
        }));
    }
    void expectReplaced() {
        HistoryStore store;
        EXPECT_TRUE(store.entries().empty());
        store.append(doneEntry("New"));
        EXPECT_EQ(titles(), "New ");
        EXPECT_EQ(filesAside(), 1u);
    }
    OwnHome home_;
};

TEST_F(HistoryFile, NewEntriesGoInFrontOfWhatStandsThereHoweverItIsWritten) {
    for (const std::string before : {"[", "\xEF\xBB\xBF [\r\n\t", "[\n  "}) {
        write(before + oldEntry + "\n]  \n");
        HistoryStore store;
        store.append(doneEntry("Second"));
        store.append(doneEntry("Third"));
        EXPECT_EQ(titles(), "Third Second Old ");
        EXPECT_EQ(HistoryStore().entries().size(), 3u);
        EXPECT_EQ(filesAside(), 0u);
    }
}

TEST_F(HistoryFile, WhatANewerVersionAddedToAnEntryStaysWhenAnotherEntryIsAppended) {
    writeWith("\"size\":1", "\"size\":1,\"rating\":{\"stars\":[1,{\"of\":5}]}");
    HistoryStore().append(doneEntry("New"));
    EXPECT_TRUE(Text::contains(text(), R"("rating":{"stars":[1,{"of":5}]})"));
    EXPECT_EQ(HistoryStore().entries().size(), 2u);
}

TEST_F(HistoryFile, TheEmptyListAndTheFirstEntryMakeAValidFile) {
    write(" [ ] ");
    HistoryStore store;
    store.append(doneEntry("First"));
    EXPECT_EQ(titles(), "First ");
    store.clear();
    store.append(doneEntry("Other"));
    EXPECT_EQ(titles(), "Other ");
}

TEST_F(HistoryFile, OneOfNoBytesIsDamaged) {
    write("");
    expectReplaced();
}

TEST_F(HistoryFile, OneThatIsCutOffIsDamaged) {
    write("[" + std::string(oldEntry) + "," + oldEntry + "]");
    fs::resize_file(HistoryStore::file(), text().size() - 20);
    expectReplaced();
}

TEST_F(HistoryFile, OneWithTextBehindItsListIsDamaged) {
    write("[" + std::string(oldEntry) + "] []");
    expectReplaced();
}

TEST_F(HistoryFile, OneOf100MegabytesOfNothingIsDamaged) {
    write("");
    fs::resize_file(HistoryStore::file(), 100 * 1024 * 1024);
    expectReplaced();
}

TEST_F(HistoryFile, OneThatIsTooLargeIsKeptAsideUnread) {
    write("");
    fs::resize_file(HistoryStore::file(), std::uintmax_t{1} << 31U);
    expectReplaced();
}

TEST_F(HistoryFile, OneOfManyOpenBracketsIsDamaged) {
    write(std::string(1'000'000, '['));
    expectReplaced();
}

TEST_F(HistoryFile, BracketsUnderAnUnknownKeyArePassedOverHoweverDeep) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    writeWith("\"size\":1", "\"size\":1,\"later\":" + deep);
    EXPECT_EQ(HistoryStore().entries().size(), 1u);
}

TEST_F(HistoryFile, APipeOfItsNameHoldsNobodyUp) {
    ASSERT_EQ(mkfifo(HistoryStore::file().c_str(), 0600), 0);
    expectReplaced();
}

TEST_F(HistoryFile, AnEntryWithAWrongTypeMakesItDamaged) {
    const std::pair<const char*, const char*> wrong[] = {
        {"\"A\"", "1"},
        {"\"2020-01-02T03:04:05Z\"", "\"yesterday\""},
        {"\"2020-01-02T03:04:05Z\"", "1577934245"},
        {"\"isMovie\":true", "\"isMovie\":1"},
        {"\"result\":\"done\"", "\"result\":null"},
        {"[\"x\"]", "\"x\""},
        {"[\"x\"]", "[1]"},
        {"[\"x\"]", "[[\"x\"]]"},
        {"[\"x\"]", "{}"},
        {"\"size\":1", "\"size\":-1"},
        {"\"size\":1", "\"size\":\"1\""},
        {"\"size\":1", "\"size\":1.5"},
        {"\"size\":1", "\"size\":1,\"season\":1.5"},
        {"\"size\":1", "\"size\":1,\"season\":3000000000"},
        {"\"size\":1", "\"size\":1,\"year\":[1999]"},
        {"\"size\":1", "\"size\":1,\"after\":\"0.5\""},
        {"\"size\":1", "\"size\":1,\"pathBytes\":\"2g\""},
        {"\"size\":1", "\"size\":1,\"pathBytes\":[]"},
    };
    for (const auto& [what, with] : wrong) {
        writeWith(what, with);
        EXPECT_TRUE(HistoryStore().entries().empty()) << with;
    }
    write("[" + std::string(oldEntry) + ", 5]");
    EXPECT_TRUE(HistoryStore().entries().empty());
    write(oldEntry);
    EXPECT_TRUE(HistoryStore().entries().empty());
}

TEST_F(HistoryFile, AnEntryThatLacksWhatEveryEntryHasMakesItDamaged) {
    for (const char* key :
         {"id", "date", "path", "title", "isMovie", "result", "changes", "message", "size"}) {
        writeWith("\"" + std::string(key) + "\":", "\"other\":");
        EXPECT_TRUE(HistoryStore().entries().empty()) << key;
    }
}

TEST_F(HistoryFile, AbsentAndNullAreTheSameAndWholeNumbersMayHaveAPoint) {
    writeWith("\"size\":1", "\"size\":2.0,\"season\":3.0,\"episode\":null,\"before\":4");
    const HistoryStore store;
    ASSERT_EQ(store.entries().size(), 1u);
    EXPECT_EQ(store.entries()[0].size, 2u);
    EXPECT_EQ(store.entries()[0].season, 3);
    EXPECT_EQ(store.entries()[0].episode, std::nullopt);
    EXPECT_EQ(store.entries()[0].before, 4.0);
}

TEST_F(HistoryFile, TextOfNoEncodingIsWrittenReadably) {
    HistoryEntry odd = doneEntry("Odd");
    odd.id = odd.title = odd.result = odd.message = "a\xff";
    odd.show = odd.batchID = odd.posterPath = odd.how = odd.summary =
        odd.changes.emplace_back("\xff");
    HistoryStore().append(odd);
    const HistoryStore again;
    ASSERT_EQ(again.entries().size(), 1u);
    EXPECT_EQ(again.entries()[0].title, "a\uFFFD");
    EXPECT_EQ(again.entries()[0].show, "\uFFFD");
}

TEST_F(HistoryFile, AFailureOfAnyStepIsSwallowedAndTheEntryIsWrittenWithTheNextOne) {
    int n = 0;
    std::string expected;
    for (const Sys::Call call : {Sys::Call::Open, Sys::Call::Write, Sys::Call::Flush,
                                 Sys::Call::Rename, Sys::Call::Read, Sys::Call::Lock}) {
        HistoryStore store;
        const std::size_t before = store.entries().size();
        const std::string title = std::to_string(n++);
        {
            const Sys::Fault fault(call, EACCES, 1, true);
            EXPECT_NO_THROW(store.append(doneEntry(title + "a")));
            EXPECT_EQ(store.entries().size(), before + 1);
        }
        store.append(doneEntry(title + "b"));
        expected = title + "b " + title + "a " + expected;
        EXPECT_EQ(titles(), expected);
        EXPECT_EQ(filesAside(), 0u);
    }
}

TEST_F(HistoryFile, AShortageOrADiskThatDoesNotAnswerIsNoDamage) {
    for (const int error : {EMFILE, ENFILE, ENOMEM, EIO})
        for (const Sys::Call call : {Sys::Call::Open, Sys::Call::Stat, Sys::Call::Read}) {
            write("[" + std::string(oldEntry) + "]");
            const std::string before = text();
            HistoryStore store;
            {
                const Sys::Fault fault(call, error, 1, true, HistoryStore::file());
                EXPECT_TRUE(store.entries().empty());
                store.append(doneEntry("New"));
                EXPECT_EQ(store.entries().size(), 1u);
            }
            EXPECT_EQ(text(), before) << error;
            store.append(doneEntry("Last"));
            EXPECT_EQ(titles(), "Last New Old ") << error;
            EXPECT_EQ(filesAside(), 0u);
        }
}

TEST_F(HistoryFile, DamageIsNotForgottenOverAShortage) {
    write("half a fi");
    HistoryStore store;
    EXPECT_TRUE(store.entries().empty());
    {
        const Sys::Fault fault(Sys::Call::Open, EMFILE, 1, true, HistoryStore::file());
        store.append(doneEntry("New"));
        EXPECT_EQ(filesAside(), 0u);
    }
    store.append(doneEntry("Last"));
    EXPECT_EQ(titles(), "Last New ");
    EXPECT_EQ(filesAside(), 1u);
}

TEST_F(HistoryFile, WhatCannotBeReadJustNowIsClearedAllTheSame) {
    write("[" + std::string(oldEntry) + "]");
    HistoryStore store;
    {
        const Sys::Fault fault(Sys::Call::Read, EIO, 1, true, HistoryStore::file());
        store.clear();
    }
    EXPECT_EQ(titles(), "");
    EXPECT_EQ(filesAside(), 0u);
    store.append(doneEntry("New"));
    EXPECT_EQ(titles(), "New ");
}

TEST_F(HistoryFile, AFullDiskLeavesTheOldFileAsItWas) {
    HistoryStore store;
    store.append(doneEntry("Old"));
    const std::string before = text();
    {
        const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true);
        store.append(doneEntry("New"));
        EXPECT_EQ(text(), before);
        EXPECT_EQ(filesAside(), 0u);
    }
    HistoryStore().append(doneEntry("Other"));
    store.append(doneEntry("Last"));
    EXPECT_EQ(titles(), "Last New Other Old ");
}

TEST_F(HistoryFile, AnEntryThatGotThereBeforeAFailureIsNotWrittenTwice) {
    HistoryStore store;
    store.append(doneEntry("Old"));
    {
        // The folder's, behind the file's own and the renaming.
        const Sys::Fault fault(Sys::Call::Flush, EIO, 2, true);
        store.append(doneEntry("New"));
    }
    store.append(doneEntry("Last"));
    EXPECT_EQ(titles(), "Last New Old ");
}

TEST_F(HistoryFile, TwoRunningCopiesAtOnceLoseNothing) {
    constexpr int each = 20;
    const auto append = [](const std::string& name) {
        HistoryStore store;
        for (int i = 0; i < each; i++) {
            store.append(doneEntry(name + std::to_string(i)));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    };
    std::thread other(append, "Other");
    append("One");
    other.join();
    EXPECT_EQ(HistoryStore().entries().size(), 2u * each);
}

TEST_F(HistoryFile, WhatAnotherCopyClearedDoesNotComeBack) {
    HistoryStore one;
    HistoryStore other;
    one.append(doneEntry("Gone"));
    EXPECT_EQ(other.entries().size(), 1u);
    one.clear();
    other.append(doneEntry("New"));
    EXPECT_EQ(titles(), "New ");
}

TEST_F(HistoryFile, WhatAnotherCopyDamagedOrRemovedIsWrittenWholeAgain) {
    HistoryStore store;
    store.append(doneEntry("First"));
    write("half a fi");
    store.append(doneEntry("Second"));
    EXPECT_EQ(titles(), "Second First ");
    EXPECT_EQ(filesAside(), 1u);
    fs::remove(HistoryStore::file());
    store.append(doneEntry("Third"));
    EXPECT_EQ(titles(), "Third Second First ");
}

TEST_F(HistoryFile, OneThatNobodyChangedIsNotReadAgain) {
    HistoryStore store;
    store.append(doneEntry("First"));
    {
        // What can't be copied from it is written anew.
        const Sys::Fault fault(Sys::Call::Read, EIO, 1, true, HistoryStore::file());
        store.append(doneEntry("Second"));
    }
    EXPECT_EQ(titles(), "Second First ");
}

TEST_F(HistoryFile, ARowStaysWholeWhenHistoryIsCleared) {
    HistoryStore store;
    store.append(doneEntry("Film"));
    const HistoryList kept = store.entries();
    store.clear();
    EXPECT_EQ(kept.front().title, "Film");
}

}  // namespace
}  // namespace marlet::test
