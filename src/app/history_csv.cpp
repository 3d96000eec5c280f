#include "app/history.h"
#include "foundation/text.h"

namespace marlet {

namespace {

void addQuoted(std::string& line, const std::string& text) {
    line += '"';
    for (const char c : text) {
        if (c == '"') line += '"';
        line += c;
    }
    line += '"';
}

std::string decimal(const std::optional<int>& value) {
    return value ? std::to_string(*value) : std::string();
}

std::string seconds(const std::optional<double>& value) {
    return value ? Text::fixed(*value, 2) : std::string();
}

}  // namespace

std::string HistoryStore::csvOf(const HistoryList& entries) {
    std::string text =
        "Date,File,Title,Show,Season,Episode,Result,Sound layout before (s),"
        "Sound layout after (s),What changed,Note\n";
    for (const HistoryEntry& entry : entries) {
        text += Dates::iso8601(entry.date) + ",";
        for (const std::string& each : {entry.path, entry.title, entry.show.value_or("")}) {
            addQuoted(text, each);
            text += ',';
        }
        text += decimal(entry.season) + "," + decimal(entry.episode) + "," + entry.result + "," +
                seconds(entry.before) + "," + seconds(entry.after) + ",";
        addQuoted(text, Text::join(entry.changes, "; "));
        text += ',';
        addQuoted(text, entry.message);
        text += '\n';
    }
    return text;
}

}  // namespace marlet
