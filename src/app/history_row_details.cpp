#include "app/history_row_details.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "app/write_queue.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"
#include "write/restore_points.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string twoDigits(char letter, const std::optional<int>& number) {
    if (!number) return {};
    char text[16] = "";
    std::snprintf(text, sizeof text, "%c%02d", letter, *number);
    return text;
}

std::string numbered(const HistoryEntry& entry) {
    const std::string number = twoDigits('S', entry.season) + twoDigits('E', entry.episode);
    return number.empty() ? entry.title : number + " " + entry.title;
}

std::string episodes(const HistoryRow& row) {
    std::vector<std::string> list;
    for (const HistoryEntry& entry : row.entries) list.push_back(numbered(entry));
    return Text::join(list, ", ");
}

bool isInternal(const std::string& change) {
    static constexpr std::array internal = {"converted", "sound interleaved", "left out",
                                            "media kind"};
    return std::any_of(internal.begin(), internal.end(),
                       [&](const char* start) { return Text::startsWith(change, start); });
}

/// "long description changed" and "title: Old → New" as the bare things: "description", "title".
std::string changedThing(const std::string& change) {
    std::string thing = Text::lower(Text::trim(change.substr(0, change.find(':'))));
    for (const char* tail : {" changed", " updated", " added"})
        if (Text::endsWith(thing, tail)) thing.resize(thing.size() - std::string_view(tail).size());
    return thing == "long description" ? "description" : thing;
}

std::string changed(const HistoryRow& row) {
    std::vector<std::string> things;
    for (const HistoryEntry& entry : row.entries)
        for (const std::string& change : entry.changes) {
            const std::string thing = changedThing(change);
            if (thing.empty() || isInternal(thing)) continue;
            if (std::find(things.begin(), things.end(), thing) == things.end())
                things.push_back(thing);
        }
    return Text::upperFirst(Text::join(things, ", "));
}

std::string layoutWords(double seconds) {
    return Text::fixed(seconds, 2) +
           (seconds <= soundLayoutLimit ? " s (good)" : " s (over the limit)");
}

bool canBeRestored(const HistoryRow& row) {
    return std::any_of(row.entries.begin(), row.entries.end(), [](const HistoryEntry& entry) {
        return !entry.isRestore.value_or(false) && RestorePoints::exists(entry.path);
    });
}

}  // namespace

Pairs historyRowDetails(const HistoryRow& row) {
    Pairs details;
    const HistoryEntry& first = row.entries.front();
    const bool isNewFile = first.how == "New .m4v";
    if (row.entries.size() > 1) details.emplace_back("Episodes", episodes(row));
    details.emplace_back("File", fs::path(first.path).filename().string());
    if (row.failed) {
        const std::string& message = row.told().message;
        const PlainText::Explanation words = PlainText::explain(message);
        details.emplace_back("What happened", words.happened);
        details.emplace_back("What to do", words.next);
        details.emplace_back("Technical", message);
    }
    if (row.done && isNewFile)
        details.emplace_back("Saved to", fs::path(first.path).parent_path().filename().string());
    if (const std::string things = changed(row); !things.empty())
        details.emplace_back("Changed", things);
    if (const auto layout = first.after ? first.after : first.before)
        details.emplace_back("Apple TV layout", layoutWords(*layout));
    if (isNewFile) details.emplace_back("Picture", "Copied exactly, not re-encoded");
    if (canBeRestored(row))
        details.emplace_back("Original details",
                             "Saved, can be restored from the right-click menu");
    return details;
}

}  // namespace marlet
