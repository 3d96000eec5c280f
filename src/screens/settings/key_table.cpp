#include "screens/settings/key_table.h"

#include <QCoreApplication>

namespace marlet::KeyTable {

namespace {

constexpr const char* context = "KeyTable";

#define WORDS(text) QT_TRANSLATE_NOOP("KeyTable", text)

constexpr const char* anywhere = WORDS("Anywhere");
constexpr const char* review = WORDS("Review");
constexpr const char* inspector = WORDS("Inspector");
constexpr const char* picker = WORDS("Which one is this?");
constexpr const char* queue = WORDS("Queue");
constexpr const char* history = WORDS("History");
constexpr const char* settings = WORDS("Settings");

QString words(const char* text) {
    return QCoreApplication::translate(context, text);
}

}  // namespace

const std::vector<Entry>& entries() {
    static const std::vector<Entry> table = {
        {"frame", anywhere, "Ctrl+O", WORDS("Add files")},
        {"frame", anywhere, "Ctrl+Shift+O", WORDS("Add a folder")},
        {"frame", anywhere, "Ctrl+1", WORDS("Show Review")},
        {"frame", anywhere, "Ctrl+2", WORDS("Show Queue")},
        {"frame", anywhere, "Ctrl+3", WORDS("Show History")},
        {"frame", anywhere, "Ctrl+Alt+I", WORDS("Show or hide the inspector")},
        {"frame", anywhere, "Ctrl+,", WORDS("Settings")},
        {"frame", anywhere, "F1", WORDS("This list of keys")},
        {"frame", anywhere, "Ctrl+Q", WORDS("Quit, once no file is being changed")},
        {"parts", anywhere, "Escape", WORDS("Close a sheet or a question, changing nothing")},

        {"review", review, "Ctrl+F", WORDS("Search the list")},
        {"review", review, "Up", WORDS("The row above; Shift extends the selection")},
        {"review", review, "Down", WORDS("The row below; Shift extends the selection")},
        {"review", review, "Ctrl+A", WORDS("Select all rows")},
        {"review", review, "Return", WORDS("Show the row in the inspector")},
        {"review", review, "F2", WORDS("Choose another match")},
        {"review", review, "Ctrl+Return", WORDS("Add the selection to the queue")},
        {"review", review, "Ctrl+Shift+Return", WORDS("Accept the matches of the selection")},
        {"review", review, "Delete", WORDS("Remove the selection from Review")},
        {"review", review, "Shift+F10", WORDS("The row's menu")},

        {"inspector", inspector, "Ctrl+Z", WORDS("Take back the last edit")},
        {"inspector", inspector, "Ctrl+D",
         WORDS("What is in the file beside what will be written")},

        {"picker", picker, "Ctrl+F", WORDS("Go to the search field")},
        {"picker", picker, "Return", WORDS("Take the chosen one")},
        {"picker", picker, "Escape", WORDS("One step back")},

        {"queue", queue, "Ctrl+Return", WORDS("Start")},
        {"queue", queue, "Space", WORDS("Pause or go on")},
        {"queue", queue, "Return", WORDS("Show or hide a job's details")},
        {"queue", queue, "Delete", WORDS("Remove a job that waits")},
        {"queue", queue, "Shift+F10", WORDS("The job's menu")},

        {"history", history, "Ctrl+F", WORDS("Search History")},
        {"history", history, "Return", WORDS("Show or hide an entry's details")},
        {"history", history, "Shift+F10", WORDS("The entry's menu")},

        {"settings", settings, "Alt+Up", WORDS("Move a source of details up")},
        {"settings", settings, "Alt+Down", WORDS("Move a source of details down")},
    };
    return table;
}

std::vector<KeyRow> rows() {
    std::vector<KeyRow> rows;
    for (const Entry& entry : entries()) {
        const QString keys = QString::fromLatin1(entry.keys);
        KeyRow row;
        row.key = QString::number(rows.size());
        row.place = words(entry.place);
        row.caps = keys.split(QLatin1Char('+'));
        row.does = words(entry.does);
        row.spoken = keys + QStringLiteral(": ") + row.does;
        rows.push_back(row);
    }
    return rows;
}

#undef WORDS

}  // namespace marlet::KeyTable
