#pragma once

#include <chrono>
#include <string>

#include "app/history_entry.h"

namespace marlet::test {

/// A film that was written, as History keeps it.
inline HistoryEntry doneEntry(const std::string& title) {
    HistoryEntry entry;
    entry.id = "id of " + title;
    entry.date = Moment(std::chrono::seconds(1'700'000'000));
    entry.path = "/films/" + title + ".mp4";
    entry.title = title;
    entry.isMovie = true;
    entry.result = "done";
    entry.message = "Details written";
    entry.size = 1234;
    return entry;
}

}  // namespace marlet::test
