#include "app/history_rows.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "app/history_row_details.h"
#include "app/write_queue.h"
#include "foundation/text.h"

namespace marlet {

const HistoryEntry& HistoryRow::told() const {
    const auto unfinished = std::find_if(entries.begin(), entries.end(),
                                         [](const auto& entry) { return entry.result != "done"; });
    return unfinished == entries.end() ? entries.front() : *unfinished;
}

std::vector<std::pair<std::string, std::string>> HistoryRow::details() const {
    return historyRowDetails(*this);
}

namespace HistoryRows {

namespace {

/// Everything that entries of one row have in common.
using GroupKey = std::tuple<std::string_view, std::optional<int>, std::optional<std::string_view>,
                            std::optional<bool>>;

GroupKey keyOf(const HistoryEntry& entry) {
    return {*entry.show, entry.season, entry.batchID, entry.isRestore};
}

/// Episodes of one season written in one run become one row; everything else stays alone.
std::vector<HistoryList> groupsOf(const HistoryList& day) {
    std::vector<HistoryList> groups;
    std::map<GroupKey, std::size_t> place;
    for (const HistoryList::Shared& entry : day.shared()) {
        std::size_t at = groups.size();
        if (entry->show) at = place.try_emplace(keyOf(*entry), at).first->second;
        if (at == groups.size()) groups.emplace_back();
        groups[at].add(entry);
    }
    return groups;
}

struct Day {
    Moment start{};
    HistoryList entries;
};

/// In the order in which the days first appear.
std::vector<Day> daysOf(const HistoryList& entries) {
    std::vector<Day> days;
    std::map<Moment, std::size_t> place;
    Moment start{};
    Moment next{};  // the day after: neighbours mostly share a day, which is found once
    std::size_t at = 0;
    for (const HistoryList::Shared& entry : entries.shared()) {
        if (entry->date < start || entry->date >= next) {
            start = Dates::startOfLocalDay(entry->date);
            // No day is as long, and none as short as half of it.
            next = Dates::startOfLocalDay(start + std::chrono::hours(36));
            at = place.try_emplace(start, days.size()).first->second;
            if (at == days.size()) days.push_back({start, {}});
        }
        days[at].entries.add(entry);
    }
    return days;
}

bool kept(const HistoryRow& row, int filter) {
    return filter == 0 || (filter == 1 ? row.done : !row.done);
}

bool holds(const HistoryRow& row, const std::string& query) {
    if (query.empty()) return true;
    std::vector<std::string> pieces = {row.title, row.sub, row.line};
    for (const HistoryEntry& entry : row.entries) {
        pieces.push_back(entry.path);
        pieces.push_back(entry.title);
    }
    return Text::contains(Text::lower(Text::join(pieces, " ")), query);
}

std::string subLine(const HistoryList& entries) {
    const HistoryEntry& first = entries.front();
    if (!first.show) return first.year ? std::to_string(*first.year) : std::string();
    std::string sub;
    if (first.season) sub = "Season " + std::to_string(*first.season) + " · ";
    sub += std::to_string(entries.size()) + " episode";
    return entries.size() == 1 ? sub : sub + "s";
}

std::string statusWord(const HistoryEntry& entry) {
    if (entry.result == "skipped") return "Skipped";
    if (entry.result == "cancelled") return "Cancelled";
    return "Failed";
}

bool speaksOfDifference(const std::string& message) {
    const std::string lower = Text::lower(message);
    return Text::contains(lower, "verification failed") || Text::contains(lower, "didn't match") ||
           Text::contains(lower, "doesn't match");
}

std::string unfinishedLine(const std::string& status, const std::string& message) {
    const PlainText::Explanation told = PlainText::explain(message);
    std::string what = speaksOfDifference(message)
                           ? "the new file didn't match the original, so it wasn't saved."
                           : told.happened;
    if (!Text::startsWith(what, "Marlet")) what = Text::lowerFirst(what);
    const bool unchanged = Text::contains(told.next, "not changed");
    return status + ": " + what + (unchanged ? " Your file is unchanged." : " " + told.next);
}

std::string doneLine(const HistoryEntry& first) {
    if (first.isRestore.value_or(false)) return "Original details put back";
    if (first.how == "New .m4v") {
        for (const std::string& change : first.changes)
            if (Text::startsWith(change, "converted to")) return "New .m4v file · " + change;
        return "New .m4v file · details and cover added";
    }
    const std::string summary = first.summary.value_or("");
    if (summary.empty() || summary == "details and cover art")
        return "Tagged · details and cover updated in place";
    return "Tagged · " + summary;
}

/// What the labels of all days are told against, looked up once.
struct Now {
    Moment today = Dates::startOfLocalDay(Dates::now());
    Moment yesterday = Dates::startOfLocalDay(today - std::chrono::hours(12));
    std::string year = Dates::local(today, "yyyy");
};

std::string labelOf(Moment day, const Now& now) {
    if (day == now.today) return "Today";
    if (day == now.yesterday) return "Yesterday";
    const bool thisYear = Dates::local(day, "yyyy") == now.year;
    return Dates::local(day, thisYear ? "EEEE, MMMM d" : "EEEE, MMMM d, yyyy");
}

}  // namespace

std::vector<HistoryDay> build(const HistoryList& entries, int filter, const std::string& query) {
    const std::string wanted = Text::lower(Text::trim(query));
    const Now now;
    std::vector<HistoryDay> days;
    for (const Day& each : daysOf(entries)) {
        HistoryDay day{each.start, {}, {}};
        for (HistoryList& group : groupsOf(each.entries)) {
            HistoryRow made = row(std::move(group));
            if (kept(made, filter) && holds(made, wanted)) day.rows.push_back(std::move(made));
        }
        if (day.rows.empty()) continue;
        day.label = labelOf(each.start, now);
        days.push_back(std::move(day));
    }
    return days;
}

HistoryRow row(HistoryList entries) {
    HistoryRow row;
    row.entries = std::move(entries);
    const HistoryEntry& first = row.entries.front();
    const HistoryEntry& told = row.told();
    for (const HistoryEntry& entry : row.entries) row.time = std::max(row.time, entry.date);
    row.title = first.show.value_or(first.title);
    row.sub = subLine(row.entries);
    row.done = told.result == "done";
    row.failed = !row.done;
    row.status = row.done ? "Done" : statusWord(told);
    row.line = row.done ? doneLine(first) : unfinishedLine(row.status, told.message);
    return row;
}

std::string dayLabel(Moment date) {
    return labelOf(Dates::startOfLocalDay(date), {});
}

}  // namespace HistoryRows
}  // namespace marlet
