#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/history.h"

namespace marlet {

/// One line of the History tab: a film, or the episodes of one season from one run.
struct HistoryRow {
    HistoryList entries;
    std::string title;
    std::string sub;
    std::string line;
    bool done = false;
    bool failed = false;
    std::string status;
    Moment time{};

    const std::string& id() const { return entries.front().id; }
    /// The entry that the status and the line speak of: the first that is not done, if there is
    /// one.
    const HistoryEntry& told() const;
    /// Label and text of each detail, made when a row is opened: it looks for restore points.
    std::vector<std::pair<std::string, std::string>> details() const;
};

struct HistoryDay {
    Moment id{};  ///< start of the local day
    std::string label;
    std::vector<HistoryRow> rows;
};

namespace HistoryRows {

/// filter: 0 all rows, 1 those done, any other those not done.
std::vector<HistoryDay> build(const HistoryList& entries, int filter, const std::string& query);
HistoryRow row(HistoryList entries);
/// "Today", "Yesterday", "Friday, November 20", with the year when it is another one.
std::string dayLabel(Moment date);

}  // namespace HistoryRows
}  // namespace marlet
