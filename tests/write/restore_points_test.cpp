#include "write/restore_points.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>

#include "foundation/dates.h"
#include "foundation/digest.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "write/restore_manifest.h"
#include "write/small_film.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class RestorePointsTest : public testing::Test {
protected:
    OwnHome home_;
    fs::path file_ = "/films/Some Film.m4v";
    std::vector<Atom> tags_ = {
        IlstEditor::text("©nam", "Old"), IlstEditor::text("apID", "someone@example.com"),
        IlstEditor::integer("hdvd", 2, 1), IlstEditor::text("ownr", "Some One"),
        IlstEditor::freeform("Key", "Value")};

    fs::path block() { return RestorePoints::folder(file_) / "ilst.bin"; }
    fs::path manifest() { return RestorePoints::folder(file_) / "manifest.json"; }

    bool save(const std::vector<Atom>& atoms) {
        return RestorePoints::saveIfMissing(file_, atoms, 1234);
    }
    std::string verifyFailure(const std::vector<Atom>& current, bool created) {
        return failureOf([&] { RestorePoints::verifySaved(file_, current, created); });
    }
    static std::string failureOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const MFError& error) {
            return error.description();
        }
        return {};
    }
    static std::vector<fs::path> entriesOf(const fs::path& folder) {
        std::vector<fs::path> entries;
        for (const auto& entry : fs::directory_iterator(folder)) entries.push_back(entry.path());
        return entries;
    }
};

TEST_F(RestorePointsTest, TheFolderIsKeyedByTheStandardisedPath) {
    EXPECT_EQ(RestorePoints::root(), Paths::restoreDir());
    EXPECT_EQ(RestorePoints::folder(file_),
              Paths::restoreDir() / sha256Hex(viewOf("/films/Some Film.m4v")).substr(0, 20));
    EXPECT_EQ(RestorePoints::folder("/films/../films/./Some Film.m4v"),
              RestorePoints::folder(file_));
    EXPECT_NE(RestorePoints::folder("/films/Other.m4v"), RestorePoints::folder(file_));
}

TEST_F(RestorePointsTest, AccountTagsAreNeverSavedAndComeBackAtTheirPlaces) {
    EXPECT_FALSE(RestorePoints::exists(file_));
    EXPECT_TRUE(save(tags_));
    EXPECT_TRUE(RestorePoints::exists(file_));
    EXPECT_EQ(readFile(block()), IlstEditor::ilstBox({tags_[0], tags_[2], tags_[4]}));
    for (const auto& file : entriesOf(RestorePoints::folder(file_))) {
        const std::string content = textOf(readFile(file));
        EXPECT_EQ(content.find("someone@example.com"), content.npos);
        EXPECT_EQ(content.find("Some One"), content.npos);
    }
    EXPECT_EQ(RestorePoints::originalAtoms(file_, tags_), tags_);
    EXPECT_EQ(verifyFailure(tags_, true), "");
}

TEST_F(RestorePointsTest, TheManifestTellsWhatWasSaved) {
    const Moment before = Dates::now();
    save(tags_);
    const json document = json::parse(textOf(readFile(manifest())));
    EXPECT_EQ(document.size(), 5U);
    EXPECT_EQ(document["path"], "/films/Some Film.m4v");
    EXPECT_EQ(document["fileSize"], 1234U);
    EXPECT_EQ(document["ilstSHA256"], sha256Hex(readFile(block())));
    EXPECT_EQ(document["carried"],
              (json::array({{{"name", "apID"}, {"index", 1}}, {{"name", "ownr"}, {"index", 3}}})));
    const auto date = Dates::parseIso8601(document["date"].get<std::string>());
    ASSERT_TRUE(date);
    EXPECT_GE(*date, before);
    EXPECT_LE(*date, Dates::now());
    EXPECT_NE(textOf(readFile(manifest())).find("\n  \"path\""), std::string::npos);
}

TEST_F(RestorePointsTest, AnAccountTagThatTheFileLostIsNotBroughtBack) {
    save(tags_);
    std::vector<Atom> now = tags_;
    now.erase(now.begin() + 3);
    EXPECT_EQ(RestorePoints::originalAtoms(file_, now),
              (std::vector<Atom>{tags_[0], tags_[1], tags_[2], tags_[4]}));
}

TEST_F(RestorePointsTest, AccountTagsComeFromTheFileAsItIsNow) {
    save(tags_);
    const Atom other = IlstEditor::text("apID", "another@example.com");
    EXPECT_EQ(RestorePoints::originalAtoms(file_, {other}),
              (std::vector<Atom>{tags_[0], other, tags_[2], tags_[4]}));
}

TEST_F(RestorePointsTest, APlaceBeyondTheListIsItsEnd) {
    save({tags_[1], tags_[3], IlstEditor::text("purd", "2020"), tags_[0]});
    const Atom bought = IlstEditor::text("purd", "2020");
    EXPECT_EQ(RestorePoints::originalAtoms(file_, {bought}), (std::vector<Atom>{tags_[0], bought}));
}

TEST_F(RestorePointsTest, ASecondSaveChangesNothing) {
    save(tags_);
    const Bytes savedBlock = readFile(block());
    const Bytes savedManifest = readFile(manifest());
    EXPECT_FALSE(save({IlstEditor::text("©nam", "New")}));
    EXPECT_EQ(readFile(block()), savedBlock);
    EXPECT_EQ(readFile(manifest()), savedManifest);
}

TEST_F(RestorePointsTest, AnUntaggedFileHasAnEmptyBlock) {
    EXPECT_TRUE(save({}));
    EXPECT_EQ(readFile(block()), IlstEditor::ilstBox({}));
    EXPECT_EQ(verifyFailure({}, true), "");
    EXPECT_EQ(verifyFailure({}, false), "");
}

TEST_F(RestorePointsTest, OneChangedByteIsDamage) {
    save(tags_);
    Bytes bytes = readFile(block());
    bytes.back() ^= 1;
    writeFile(block(), bytes);
    EXPECT_EQ(verifyFailure(tags_, true), "the saved original is damaged");
    EXPECT_EQ(verifyFailure(tags_, false), "the saved original is damaged");
}

TEST_F(RestorePointsTest, WithoutARestorePointThereIsNoOriginal) {
    EXPECT_EQ(verifyFailure(tags_, false), "there is no saved original for this file");
}

TEST_F(RestorePointsTest, ABlockWithoutAManifestStandsButStopsEveryWrite) {
    save(tags_);
    fs::remove(manifest());
    EXPECT_FALSE(save(tags_));
    EXPECT_FALSE(fs::exists(manifest()));
    EXPECT_EQ(verifyFailure(tags_, false), "there is no saved original for this file");
}

TEST_F(RestorePointsTest, AManifestThatCanNotBeDecodedIsNoOriginal) {
    save(tags_);
    const json good = json::parse(textOf(readFile(manifest())));
    std::vector<std::string> bad = {"", "not json", "[]", "null", "{}"};
    for (const auto& [key, value] : good.items()) {
        json document = good;
        document.erase(key);
        bad.push_back(document.dump());
        document[key] = json::object();
        bad.push_back(document.dump());
    }
    json document = good;
    document["carried"][0]["index"] = -1;
    bad.push_back(document.dump());
    document = good;
    document["date"] = "yesterday";
    bad.push_back(document.dump());
    for (const std::string& text : bad) {
        writeFile(manifest(), viewOf(text));
        EXPECT_EQ(verifyFailure(tags_, false), "there is no saved original for this file") << text;
    }
}

TEST_F(RestorePointsTest, ANewRestorePointMustReadBackIdentically) {
    save(tags_);
    std::vector<Atom> other = tags_;
    other[0] = IlstEditor::text("©nam", "Other");
    EXPECT_EQ(verifyFailure(other, true), "the saved copy doesn't read back identically");
}

TEST_F(RestorePointsTest, TwoAccountTagsOfOneNameDoNotReadBack) {
    const std::vector<Atom> twice = {IlstEditor::text("apID", "a"), IlstEditor::text("apID", "b")};
    save(twice);
    EXPECT_EQ(verifyFailure(twice, true), "the saved copy doesn't read back identically");
}

TEST_F(RestorePointsTest, AnOlderRestorePointMayDifferButNotBeEmpty) {
    save(tags_);
    EXPECT_EQ(verifyFailure({IlstEditor::text("©nam", "New")}, false), "");
    fs::remove_all(RestorePoints::folder(file_));
    save({});
    EXPECT_EQ(verifyFailure(tags_, false), "the older saved copy is empty");
}

TEST_F(RestorePointsTest, AFolderWithoutABlockIsFilled) {
    fs::create_directories(RestorePoints::folder(file_));
    writeFile(manifest(), viewOf("left behind"));
    EXPECT_TRUE(save(tags_));
    EXPECT_EQ(verifyFailure(tags_, true), "");
}

TEST_F(RestorePointsTest, WhatACrashLeftUnderTheTemporaryNameIsReplaced) {
    fs::path unfinished = RestorePoints::folder(file_);
    unfinished += ".new";
    fs::create_directories(unfinished);
    writeFile(unfinished / "ilst.bin", viewOf("half of a block"));
    EXPECT_TRUE(save(tags_));
    EXPECT_EQ(verifyFailure(tags_, true), "");
    EXPECT_EQ(entriesOf(RestorePoints::root()),
              std::vector<fs::path>{RestorePoints::folder(file_)});
}

TEST_F(RestorePointsTest, APathThatIsNotUtf8StillGivesAManifest) {
    file_ = "/films/bad \xFF\xFE name\t\n.m4v";
    EXPECT_TRUE(save(tags_));
    EXPECT_EQ(verifyFailure(tags_, true), "");
    EXPECT_EQ(json::parse(textOf(readFile(manifest())))["path"],
              "/films/bad \uFFFD\uFFFD name\t\n.m4v");
}

TEST_F(RestorePointsTest, FailuresOfTheFileSystemPassThroughAndLeaveNoHalf) {
    using Sys::Call;
    const std::vector<std::pair<Call, int>> calls = {{Call::MakeFolder, EACCES},
                                                     {Call::Write, ENOSPC},
                                                     {Call::Flush, EIO},
                                                     {Call::Rename, EACCES}};
    for (const auto& [call, error] : calls) {
        for (int nth = 1; nth <= 12; nth++) {
            std::string failure;
            {
                const Sys::Fault fault(call, error, nth);
                failure = failureOf([&] { save(tags_); });
            }
            if (failure.empty()) {
                EXPECT_EQ(verifyFailure(tags_, true), "");
                EXPECT_GT(nth, 1) << "the fault was never met";
            } else {
                EXPECT_NE(failure.find(std::strerror(error)), failure.npos) << failure;
                // Whole or not at all: a failed flush after the rename leaves a whole one.
                const bool stands = RestorePoints::exists(file_);
                EXPECT_EQ(stands ? verifyFailure(tags_, true) : "", "");
            }
            fs::remove_all(RestorePoints::root());
        }
    }
}

TEST_F(RestorePointsTest, ARestorePointThatCanNotBeLookedAtIsNotOverwritten) {
    save(tags_);
    const Bytes saved = readFile(block());
    {
        const Sys::Fault fault(Sys::Call::Stat, EACCES, 1, true);
        EXPECT_EQ(failureOf([&] { save({}); }),
                  "cannot look for the saved original: Permission denied");
    }
    EXPECT_EQ(readFile(block()), saved);
}

}  // namespace
}  // namespace marlet::test
