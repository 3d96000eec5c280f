#include "app/history_rows.h"

#include <algorithm>
#include <map>

#include "app/history_row_details.h"
#include "app/write_queue.h"
#include "foundation/text.h"

namespace marlet::HistoryRows {

namespace {

bool sameGroup(const HistoryEntry& a, const HistoryEntry& b) {
    return a.show && a.show == b.show && a.season == b.season && a.batchID == b.batchID &&
           a.isRestore == b.isRestore;
}

/// Episodes of one season written in one run become one row; everything else stays alone.
std::vector<std::vector<HistoryEntry>> groupsOf(const std::vector<HistoryEntry>& day) {
    std::vector<std::vector<HistoryEntry>> groups;
    for (const HistoryEntry& entry : day) {
        const auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& each) {
            return sameGroup(each.front(), entry);
        });
        if (group == groups.end())
            groups.push_back({entry});
        else
            group->push_back(entry);
    }
    return groups;
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

std::string subLine(const std::vector<HistoryEntry>& entries) {
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

}  // namespace

std::vector<HistoryDay> build(const std::vector<HistoryEntry>& entries, int filter,
                              const std::string& query) {
    std::vector<std::pair<Moment, std::vector<HistoryEntry>>> byDay;
    std::map<Moment, std::size_t> place;
    for (const HistoryEntry& entry : entries) {
        const Moment day = Dates::startOfLocalDay(entry.date);
        const auto [found, isNew] = place.try_emplace(day, byDay.size());
        if (isNew) byDay.push_back({day, {}});
        byDay[found->second].second.push_back(entry);
    }

    const std::string wanted = Text::lower(Text::trim(query));
    std::vector<HistoryDay> days;
    for (const auto& [start, ofDay] : byDay) {
        HistoryDay day{start, {}, {}};
        for (auto& group : groupsOf(ofDay)) {
            HistoryRow made = row(std::move(group));
            if (kept(made, filter) && holds(made, wanted)) day.rows.push_back(std::move(made));
        }
        if (day.rows.empty()) continue;
        day.label = dayLabel(start);
        days.push_back(std::move(day));
    }
    return days;
}

HistoryRow row(std::vector<HistoryEntry> entries) {
    HistoryRow row;
    row.entries = std::move(entries);
    const HistoryEntry& first = row.entries.front();
    for (const HistoryEntry& entry : row.entries) row.time = std::max(row.time, entry.date);
    row.title = first.show.value_or(first.title);
    row.sub = subLine(row.entries);

    const auto unfinished = std::find_if(row.entries.begin(), row.entries.end(),
                                         [](const auto& entry) { return entry.result != "done"; });
    row.done = unfinished == row.entries.end();
    row.failed = !row.done;
    row.status = row.done ? "Done" : statusWord(*unfinished);
    row.line = row.done ? doneLine(first) : unfinishedLine(row.status, unfinished->message);
    row.details = historyRowDetails(row, row.done ? first : *unfinished);
    return row;
}

std::string dayLabel(Moment date) {
    const Moment day = Dates::startOfLocalDay(date);
    const Moment today = Dates::startOfLocalDay(Dates::now());
    if (day == today) return "Today";
    if (day == Dates::startOfLocalDay(today - std::chrono::hours(12))) return "Yesterday";
    const bool thisYear = Dates::local(date, "yyyy") == Dates::local(Dates::now(), "yyyy");
    return Dates::local(date, thisYear ? "EEEE, MMMM d" : "EEEE, MMMM d, yyyy");
}

}  // namespace marlet::HistoryRows
