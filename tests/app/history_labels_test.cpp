// What the rows and days of History are called, and what divides them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>

#include "app/history_rows.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace std::chrono;

class HistoryLabels : public testing::Test {
protected:
    static HistoryEntry episode(int season, const std::string& result = "done") {
        HistoryEntry entry;
        entry.id = "season " + std::to_string(season);
        entry.date = Dates::now();
        entry.path = "/shows/" + entry.id + ".mp4";
        entry.title = "An Episode";
        entry.show = "A Show";
        entry.season = season;
        entry.episode = 1;
        entry.result = result;
        entry.batchID = "run 1";
        return entry;
    }
    static std::string weekday(sys_days day) {
        constexpr std::array names = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                      "Thursday", "Friday", "Saturday"};
        return names[std::chrono::weekday(day).c_encoding()];
    }
    OwnHome home_;
};

TEST_F(HistoryLabels, ADayOfThisYearHasNoYearAndThatOfAnotherHas) {
    const Moment now = Dates::now();
    const std::chrono::year thisYear{std::stoi(Dates::local(now, "yyyy"))};
    // One of the two is neither today nor yesterday, whenever this runs.
    for (const month_day day : {March / 4, September / 4}) {
        const sys_days there = thisYear / day.month() / day.day();
        const std::string name = day.month() == March ? "March 4" : "September 4";
        if (abs(sys_seconds(there) - now) > days(3)) {
            EXPECT_EQ(HistoryRows::dayLabel(there + 12h), weekday(there) + ", " + name);
        }
        const std::chrono::year before = thisYear - years(1);
        const sys_days then = before / day.month() / day.day();
        EXPECT_EQ(HistoryRows::dayLabel(then + 12h),
                  weekday(then) + ", " + name + ", " + std::to_string(static_cast<int>(before)));
    }
}

TEST_F(HistoryLabels, AnEntryWithTheResultCancelledShowsAsCancelled) {
    HistoryEntry entry = episode(1, "cancelled");
    entry.message = "Cancelled";
    const HistoryRow row = HistoryRows::row({entry});
    EXPECT_EQ(row.status, "Cancelled");
    EXPECT_THAT(row.line, testing::StartsWith("Cancelled: "));
    EXPECT_FALSE(row.done);
    EXPECT_TRUE(row.failed);
}

TEST_F(HistoryLabels, SeasonsOfOneShowFromOneRunAreRowsOfTheirOwn) {
    HistoryEntry none = episode(3);
    none.season.reset();
    HistoryEntry noneToo = none;
    noneToo.id = "none, too";
    const auto days =
        HistoryRows::build({episode(1), episode(2), none, episode(1), noneToo}, 0, "");
    ASSERT_EQ(days.size(), 1u);
    ASSERT_EQ(days[0].rows.size(), 3u);
    EXPECT_EQ(days[0].rows[0].sub, "Season 1 · 2 episodes");
    EXPECT_EQ(days[0].rows[1].sub, "Season 2 · 1 episode");
    EXPECT_EQ(days[0].rows[2].sub, "2 episodes") << "no season equals no season";
}

}  // namespace
}  // namespace marlet::test
