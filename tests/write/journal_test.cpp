#include "write/journal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <nlohmann/json.hpp>

#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

class Journal : public testing::Test {
protected:
    void put(const std::string& text) const {
        fs::create_directories(Paths::documentsDir());
        writeFile(Paths::journalFile(), viewOf(text));
    }
    OwnHome home_;
    TempFolder folder_;
    WriteJournal journal_{"/films/Film.mp4", "/jobs/ID/candidate.mp4", 5'000'000'000};
};

TEST_F(Journal, ReadsBackAsItWasSaved) {
    journal_.save();
    EXPECT_EQ(WriteJournal::load(), journal_);
}

TEST_F(Journal, IsAnObjectOfThreeKeys) {
    journal_.save();
    const auto json = nlohmann::json::parse(textOf(readFile(Paths::journalFile())));
    EXPECT_EQ(json, (nlohmann::json{{"file", "/films/Film.mp4"},
                                    {"temp", "/jobs/ID/candidate.mp4"},
                                    {"size", 5'000'000'000}}));
}

TEST_F(Journal, IsAbsentAfterItsRemoval) {
    journal_.save();
    WriteJournal::remove();
    EXPECT_FALSE(fs::exists(Paths::journalFile()));
    EXPECT_EQ(WriteJournal::load(), std::nullopt);
    EXPECT_NO_THROW(WriteJournal::remove());
}

TEST_F(Journal, ARemovalThatFailsIsTold) {
    journal_.save();
    const Sys::Fault fault(Sys::Call::Unlink, EIO);
    EXPECT_THROW(WriteJournal::remove(), MFError);
}

TEST_F(Journal, KeepsPathsThatAreNoText) {
    journal_.file = std::string("/films/\xFF\xFEtab\tline\n.mp4");
    journal_.temp = std::string("/jobs/ID/\xFF\xFEtab\tline\n.mp4");
    journal_.save();
    EXPECT_EQ(WriteJournal::load(), journal_);
}

TEST_F(Journal, KeepsNamesOf255Bytes) {
    journal_.file = "/films/" + std::string(251, 'n') + ".mp4";
    journal_.save();
    EXPECT_EQ(WriteJournal::load(), journal_);
}

TEST_F(Journal, WhatCannotBeDecodedIsNoJournal) {
    for (const char* text :
         {"", "{", "[]", "null", "{\"file\":1,\"temp\":\"/t\",\"size\":1}",
          "{\"file\":\"/f\",\"temp\":\"/t\"}", "{\"file\":\"/f\",\"temp\":\"/t\",\"size\":-1}",
          "{\"file\":\"/f\",\"temp\":\"/t\",\"size\":\"1\"}",
          "{\"file\":\"/f\",\"temp\":\"/t\",\"size\":1,\"fileHex\":\"zz\"}", "\xFF\xFE"}) {
        put(text);
        EXPECT_EQ(WriteJournal::load(), std::nullopt) << text;
    }
    put(std::string(100'000, '['));
    EXPECT_EQ(WriteJournal::load(), std::nullopt);
}

TEST_F(Journal, ItsCopyIsAPlainFileOfItsSize) {
    journal_.temp = folder_.write("copy.mp4", "12345");
    journal_.size = 5;
    EXPECT_TRUE(journal_.hasCopy());
    journal_.size = 6;
    EXPECT_FALSE(journal_.hasCopy());
    journal_.size = 5;
    fs::create_symlink(journal_.temp, folder_ / "link.mp4");
    journal_.temp = folder_ / "link.mp4";
    EXPECT_FALSE(journal_.hasCopy());
    journal_.temp = folder_.write("empty.mp4", "");
    journal_.size = 0;
    EXPECT_FALSE(journal_.hasCopy());
}

TEST_F(Journal, AnInterruptedSaveLeavesTheOldOne) {
    journal_.save();
    WriteJournal other = journal_;
    other.size = 7;
    const Sys::Fault fault(Sys::Call::Rename, EIO);
    EXPECT_THROW(other.save(), MFError);
    EXPECT_EQ(WriteJournal::load(), journal_);
}

}  // namespace
}  // namespace marlet::test
