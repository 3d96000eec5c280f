#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/history.h"

namespace marlet {

/// One line of the History tab: a film, or the episodes of one season from one run.
struct HistoryRow {
    std::vector<HistoryEntry> entries;
    std::string title;
    std::string sub;
    std::string line;
    bool done = false;
    bool failed = false;
    std::string status;
    Moment time{};
    std::vector<std::pair<std::string, std::string>> details;  ///< label and text

    const std::string& id() const { return entries.front().id; }
};

struct HistoryDay {
    Moment id{};  ///< start of the local day
    std::string label;
    std::vector<HistoryRow> rows;
};

namespace HistoryRows {

/// filter: 0 all rows, 1 those done, any other those not done.
std::vector<HistoryDay> build(const std::vector<HistoryEntry>& entries, int filter,
                              const std::string& query);
HistoryRow row(std::vector<HistoryEntry> entries);
/// "Today", "Yesterday", "Friday, November 20", with the year when it is another one.
std::string dayLabel(Moment date);

}  // namespace HistoryRows
}  // namespace marlet
