#include "app/history_rows.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

HistoryEntry film(const std::string& title, const std::string& result = "done") {
    HistoryEntry entry;
    entry.id = title;
    entry.date = Dates::now();
    entry.path = "/films/" + title + ".mp4";
    entry.title = title;
    entry.isMovie = true;
    entry.result = result;
    entry.batchID = "run 1";
    return entry;
}

HistoryEntry episode(int number, const std::string& batch, const std::string& result = "done") {
    HistoryEntry entry = film("Episode " + std::to_string(number), result);
    entry.id += batch;
    entry.isMovie = false;
    entry.show = "A Show";
    entry.season = 2;
    entry.episode = number;
    entry.batchID = batch;
    return entry;
}

std::vector<HistoryEntry> season(const std::string& batch) {
    std::vector<HistoryEntry> list;
    for (int n = 1; n <= 10; n++) list.push_back(episode(n, batch));
    return list;
}

std::string detail(const HistoryRow& row, const std::string& label) {
    for (const auto& [name, text] : row.details())
        if (name == label) return text;
    return "(none)";
}

class HistoryRowsTest : public testing::Test {
protected:
    std::vector<HistoryRow> rows(const std::vector<HistoryEntry>& entries, int filter = 0,
                                 const std::string& query = "") {
        std::vector<HistoryRow> all;
        for (const HistoryDay& day : HistoryRows::build(entries, filter, query))
            all.insert(all.end(), day.rows.begin(), day.rows.end());
        return all;
    }
    OwnHome home_;
};

TEST_F(HistoryRowsTest, TenEpisodesOfOneSeasonFromOneRunMakeOneRowThatGivesTheNumberTen) {
    const auto all = rows(season("run 1"));
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].title, "A Show");
    EXPECT_EQ(all[0].sub, "Season 2 · 10 episodes");
}

TEST_F(HistoryRowsTest, TheSameEpisodesFromTwoRunsMakeTwoRowsAndARestoreOfThemAThird) {
    auto entries = season("run 1");
    for (HistoryEntry& each : season("run 2")) entries.push_back(each);
    EXPECT_EQ(rows(entries).size(), 2u);
    for (HistoryEntry each : season("run 2")) {
        each.isRestore = true;
        entries.push_back(each);
    }
    const auto all = rows(entries);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[2].line, "Original details put back");
}

TEST_F(HistoryRowsTest, OneFailureAmongTenEpisodesShowsTheRowAsFailed) {
    auto entries = season("run 1");
    entries[4].result = "failed";
    entries[4].message = "verification failed: media data differs";
    const HistoryRow row = rows(entries).at(0);
    EXPECT_FALSE(row.done);
    EXPECT_TRUE(row.failed);
    EXPECT_EQ(row.status, "Failed");
    EXPECT_EQ(row.line,
              "Failed: the new file didn't match the original, so it wasn't saved. Your file is "
              "unchanged.");
    EXPECT_EQ(detail(row, "Technical"), "verification failed: media data differs");
}

TEST_F(HistoryRowsTest, FilmsStayAloneEvenWhenTheyShareARun) {
    EXPECT_EQ(rows({film("One"), film("Two")}).size(), 2u);
}

TEST_F(HistoryRowsTest, AnEntryWithTheResultStoppedShowsAsFailed) {
    HistoryEntry stopped = film("Film", "stopped");
    stopped.message = "curl has this file open for writing; left untouched.";
    const HistoryRow row = HistoryRows::row({stopped});
    EXPECT_EQ(row.status, "Failed");
    EXPECT_EQ(row.line,
              "Failed: another app is still using this file (a download that hasn't finished?). "
              "Wait until it has finished, then press Retry.");
}

TEST_F(HistoryRowsTest, ASkippedEntrySaysSkippedAndKeepsMarletsCapital) {
    HistoryEntry skipped = film("Film", "skipped");
    skipped.message = "a restore point couldn't be saved and verified (x); nothing was written";
    EXPECT_EQ(HistoryRows::row({skipped}).line,
              "Skipped: Marlet couldn't save a copy of the original details first, so it changed "
              "nothing. Check there is free space on this Mac and press Retry.");
}

TEST_F(HistoryRowsTest, TheFilterTwoWithAQueryKeepsOnlyRowsThatAreNotDoneAndHoldTheQuery) {
    const std::vector<HistoryEntry> entries = {film("Alpha"), film("Alphabet", "failed"),
                                               film("Beta", "failed")};
    const auto all = rows(entries, 2, "  ALPHA ");
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].title, "Alphabet");
    EXPECT_EQ(rows(entries, 1).size(), 1u);
    EXPECT_EQ(rows(entries, 0).size(), 3u);
}

TEST_F(HistoryRowsTest, TheQueryAlsoSearchesThePathsOfTheEntries) {
    EXPECT_EQ(rows({film("Alpha")}, 0, "/films/").size(), 1u);
}

TEST_F(HistoryRowsTest, ADayLeftWithoutRowsIsDropped) {
    EXPECT_TRUE(HistoryRows::build({film("Alpha")}, 2, "").empty());
}

TEST_F(HistoryRowsTest, DaysComeInTheOrderOfTheEntriesWithTheirLabels) {
    HistoryEntry old = film("Old");
    old.date = Moment(std::chrono::seconds(946'728'000));  // 2000-01-01 12:00 UTC
    HistoryEntry yesterday = film("Yesterday's");
    yesterday.date = Dates::startOfLocalDay(Dates::now()) - std::chrono::hours(1);
    const auto days = HistoryRows::build({film("New"), yesterday, old}, 0, "");
    ASSERT_EQ(days.size(), 3u);
    EXPECT_EQ(days[0].label, "Today");
    EXPECT_EQ(days[1].label, "Yesterday");
    EXPECT_EQ(days[2].label, "Saturday, January 1, 2000");
}

TEST_F(HistoryRowsTest, DoneLinesTellHowItWasDone) {
    HistoryEntry plain = film("Film");
    EXPECT_EQ(HistoryRows::row({plain}).line, "Tagged · details and cover updated in place");
    plain.summary = "2 sound removed";
    EXPECT_EQ(HistoryRows::row({plain}).line, "Tagged · 2 sound removed");
    plain.how = "New .m4v";
    EXPECT_EQ(HistoryRows::row({plain}).line, "New .m4v file · details and cover added");
    plain.changes = {"title: a → b", "converted to AAC"};
    EXPECT_EQ(HistoryRows::row({plain}).line, "New .m4v file · converted to AAC");
    EXPECT_EQ(detail(HistoryRows::row({plain}), "Picture"), "Copied exactly, not re-encoded");
    EXPECT_EQ(detail(HistoryRows::row({plain}), "Saved to"), "films");
}

TEST_F(HistoryRowsTest, WhatChangedIsListedOnceWithoutItsValues) {
    HistoryEntry entry = film("Film");
    entry.changes = {
        "title: Old → New",          "long description changed",
        "description changed",       "cast and crew updated",
        "media kind: (set) → (set)", "sound interleaved in 250 ms slices to stay under the limit"};
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Changed"), "Title, description, cast and crew");
}

TEST_F(HistoryRowsTest, TheSoundLayoutIsToldAgainstTheLimit) {
    HistoryEntry entry = film("Film");
    entry.before = 3;
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Apple TV layout"), "3.00 s (over the limit)");
    entry.after = 1.0;
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Apple TV layout"), "1.00 s (good)");
}

TEST_F(HistoryRowsTest, EpisodesOfARowAreNumbered) {
    EXPECT_EQ(detail(HistoryRows::row({episode(1, "a"), episode(2, "a")}), "Episodes"),
              "S02E01 Episode 1, S02E02 Episode 2");
}

TEST_F(HistoryRowsTest, ARowSaysThatItCanBeRestoredOnlyWhenARestorePointStands) {
    const HistoryEntry entry = film("Film");
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Original details"), "(none)");
    RestorePoints::saveIfMissing(entry.path, {}, 1);
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Original details"),
              "Saved, can be restored from the right-click menu");
}

TEST_F(HistoryRowsTest, AFilmShowsItsYearAndTheLatestDateIsTheRowsTime) {
    HistoryEntry dated = film("Film");
    dated.year = 1963;
    EXPECT_EQ(HistoryRows::row({dated}).sub, "1963");
    HistoryEntry first = episode(1, "a");
    HistoryEntry second = episode(2, "a");
    second.date += std::chrono::hours(1);
    EXPECT_EQ(HistoryRows::row({first, second}).time, second.date);
    EXPECT_EQ(HistoryRows::row({first}).sub, "Season 2 · 1 episode");
}

TEST_F(HistoryRowsTest, EpisodesJoinTheirRowHoweverTheyAreMixedWithOthers) {
    std::vector<HistoryEntry> entries;
    for (int n = 1; n <= 3; n++) {
        entries.push_back(episode(n, "run 1"));
        entries.push_back(film("Film " + std::to_string(n)));
        entries.push_back(episode(n, "run 2"));
    }
    const auto all = rows(entries);
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all[0].entries.size(), 3u);
    EXPECT_EQ(all[1].title, "Film 1");
    EXPECT_EQ(all[2].entries.size(), 3u);
    EXPECT_EQ(all[4].title, "Film 3");
}

TEST_F(HistoryRowsTest, EpisodesOfAnotherSeasonOrOfNoneMakeRowsOfTheirOwn) {
    HistoryEntry second = episode(2, "run 1");
    HistoryEntry third = episode(3, "run 1");
    HistoryEntry fourth = episode(4, "run 1");
    second.season = 3;
    third.season.reset();
    fourth.season.reset();
    const auto all = rows({episode(1, "run 1"), second, third, fourth});
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[2].sub, "2 episodes");
    EXPECT_EQ(detail(all[2], "Episodes"), "E03 Episode 3, E04 Episode 4");
}

TEST_F(HistoryRowsTest, ADayThatComesAgainLaterInTheListIsOneDay) {
    HistoryEntry old = film("Old");
    old.date = Moment(std::chrono::seconds(946'728'000));
    const auto days = HistoryRows::build({film("New"), old, film("Newer")}, 0, "");
    ASSERT_EQ(days.size(), 2u);
    EXPECT_EQ(days[0].rows.size(), 2u);
}

TEST_F(HistoryRowsTest, TheLastSecondOfADayAndTheFirstOfTheNextAreNotTheSameDay) {
    HistoryEntry early = film("Early");
    early.date = Dates::startOfLocalDay(Moment(std::chrono::seconds(946'728'000)));
    HistoryEntry late = film("Late");
    late.date = early.date - std::chrono::seconds(1);
    EXPECT_EQ(HistoryRows::build({early, late}, 0, "").size(), 2u);
    EXPECT_EQ(HistoryRows::build({late, early}, 0, "").size(), 2u);
}

TEST_F(HistoryRowsTest, ADateOfThisYearIsLabelledWithoutTheYear) {
    const std::string year = Dates::local(Dates::now(), "yyyy");
    for (const char* day : {"-03-15", "-06-15", "-09-15"}) {
        const auto date = Dates::parseIso8601(year + day + "T12:00:00Z");
        ASSERT_TRUE(date);
        // "Today" or "Yesterday".
        const auto ago = Dates::now() - *date;
        if (ago > -std::chrono::days(1) && ago < std::chrono::days(3)) continue;
        EXPECT_EQ(HistoryRows::dayLabel(*date), Dates::local(*date, "EEEE, MMMM d"));
    }
}

TEST_F(HistoryRowsTest, AnUnfinishedConversionTellsOfThePictureButNotWhereItWasSaved) {
    HistoryEntry entry = film("Film", "failed");
    entry.how = "New .m4v";
    const HistoryRow row = HistoryRows::row({entry});
    EXPECT_EQ(detail(row, "Picture"), "Copied exactly, not re-encoded");
    EXPECT_EQ(detail(row, "Saved to"), "(none)");
}

TEST_F(HistoryRowsTest, ACancelledEntrySaysSo) {
    HistoryEntry entry = film("Film", "cancelled");
    entry.message = "cancelled";
    const HistoryRow row = HistoryRows::row({entry});
    EXPECT_EQ(row.status, "Cancelled");
    EXPECT_EQ(row.line, "Cancelled: cancelled. Nothing was changed.");
}

TEST_F(HistoryRowsTest, TheDetailsOfAFailedRowComeInTheirOrder) {
    auto entries = season("run 1");
    entries[1].result = "failed";
    entries[1].message = "not enough free space";
    entries[0].after = 1;
    entries[0].changes = {"title: a → b"};
    RestorePoints::saveIfMissing(entries[5].path, {}, 1);
    std::vector<std::string> labels;
    const HistoryRow row = rows(entries).at(0);
    for (const auto& [label, text] : row.details()) labels.push_back(label);
    EXPECT_EQ(labels, (std::vector<std::string>{"Episodes", "File", "What happened", "What to do",
                                                "Technical", "Changed", "Apple TV layout",
                                                "Original details"}));
}

TEST_F(HistoryRowsTest, ARestorePointOfARestoredFileIsNotOffered) {
    HistoryEntry entry = film("Film");
    entry.isRestore = true;
    RestorePoints::saveIfMissing(entry.path, {}, 1);
    EXPECT_EQ(detail(HistoryRows::row({entry}), "Original details"), "(none)");
}

}  // namespace
}  // namespace marlet::test
