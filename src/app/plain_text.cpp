#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "app/write_queue.h"
#include "foundation/text.h"

namespace marlet::PlainText {

namespace {

struct Row {
    /// Alternatives; in each, all phrases must be there.
    std::vector<std::vector<std::string_view>> phrases;
    std::string_view happened;  ///< empty: the message itself, first letter upper case
    std::string_view next;
};

/// The three outcomes in which the person's file is not as it was: nothing may tell otherwise.
const std::vector<Row>& damage() {
    static const std::vector<Row> rows = {
        {{{"marlet finishes it the next time it opens"}},
         "",
         "Don't move the file. Open Marlet again: it finishes the write and checks it."},
        {{{"the original could not be put back"}},
         "",
         "Open Marlet again: it puts the original back and checks it."},
        {{{"identity changed during the write"}}, "", "Check the file by playing it."},
    };
    return rows;
}

const std::vector<Row>& table() {
    static const std::vector<Row> rows = {
        {{{"could not make this file apple tv-safe"}},
         "The sound couldn't be made Apple TV-safe, even with the finest settings.",
         "The original was not changed. You can still play it on the Mac."},
        {{{"no room for the new details"}},
         "There's no room for the new details in this file.",
         "Turn on “Fix for Apple TV” in Settings and add it again."},
        {{{"media library", "off in settings"}},
         "This file is in your Media Library, which is locked.",
         "Turn on “Allow changes to my Media Library” in Settings, or add a copy instead."},
        {{{"open for writing"}},
         "Another app is still using this file (a download that hasn't finished?).",
         "Wait until it has finished, then press Retry."},
        {{{"not enough free space"}},
         "There isn't enough free space.",
         "Free up some space, then press Retry."},
        {{{"verification failed"}, {"didn't match"}, {"doesn't match"}},
         "Marlet checked the new file against the original and found a difference, so it wasn't "
         "saved.",
         "The original was not changed. Press Retry; if it happens again the file may be damaged."},
        {{{"restore point"}},
         "Marlet couldn't save a copy of the original details first, so it changed nothing.",
         "Check there is free space on this Mac and press Retry."},
        {{{"changed while"}},
         "The file changed while Marlet was working on it.",
         "Wait until whatever is using it has finished, then press Retry."},
        {{{"never re-encodes"}, {"can't play it"}},
         "",
         "Marlet never re-encodes video, so this file can't be converted."},
        {{{"can't be tagged in place"}},
         "This kind of file can't be changed in place.",
         "Marlet makes a new .m4v instead."},
        {{{"cancelled"}}, "Cancelled.", "Nothing was changed."},
    };
    return rows;
}

bool holds(const std::string& text, const Row& row) {
    for (const auto& alternative : row.phrases) {
        bool all = true;
        for (const std::string_view phrase : alternative) all = all && Text::contains(text, phrase);
        if (all) return true;
    }
    return false;
}

/// The first of the rows that fits; null without one.
const Row* find(const std::vector<Row>& rows, const std::string& lower) {
    for (const Row& row : rows)
        if (holds(lower, row)) return &row;
    return nullptr;
}

}  // namespace

Explanation explain(const std::string& text) {
    const std::string lower = Text::lower(text);
    const Row* row = find(damage(), lower);
    if (row == nullptr) row = find(table(), lower);
    if (row == nullptr) return {text, "The original was not changed."};
    return {row->happened.empty() ? Text::upperFirst(text) : std::string(row->happened),
            std::string(row->next)};
}

bool tellsOfDamage(const std::string& text) {
    return find(damage(), Text::lower(text)) != nullptr;
}

}  // namespace marlet::PlainText
