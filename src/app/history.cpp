#include "app/history.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "app/history_json.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/text.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

std::optional<Sys::FileStat> stamp() {
    return Sys::stat(Paths::historyFile());
}

bool sameStamp(const std::optional<Sys::FileStat>& a, const std::optional<Sys::FileStat>& b) {
    if (!a || !b) return !a && !b;
    return a->inode == b->inode && a->size == b->size && a->mtime == b->mtime;
}

/// A name beside the file that nothing has yet.
fs::path asideName(const fs::path& file) {
    const std::string day = Dates::local(Dates::now(), "yyyy-MM-dd HH-mm-ss");
    fs::path name = file.string() + ".damaged " + day;
    for (int n = 2; fs::symlink_status(name).type() != fs::file_type::not_found; n++)
        name = file.string() + ".damaged " + day + " " + std::to_string(n);
    return name;
}

}  // namespace

HistoryStore& HistoryStore::shared() {
    static HistoryStore store;
    return store;
}

const std::vector<HistoryEntry>& HistoryStore::entries() const {
    loadOnce();
    return entries_;
}

void HistoryStore::loadOnce() const {
    if (!loaded_) load();
}

void HistoryStore::load() const {
    loaded_ = true;
    stamp_ = stamp();
    entries_.clear();
    encoded_.clear();
    damaged_ = false;
    if (!stamp_) return;
    const std::optional<Bytes> text = FileOps::readSmall(Paths::historyFile(), maxFileSize);
    auto decoded = text ? HistoryJson::decode(*text) : std::nullopt;
    if (decoded)
        entries_ = std::move(*decoded);
    else
        damaged_ = true;
}

void HistoryStore::takeInWhatOthersWrote() {
    loadOnce();
    if (sameStamp(stamp_, stamp())) return;
    std::vector<HistoryEntry> mine = std::move(entries_);
    load();
    if (damaged_) {
        entries_ = std::move(mine);
        return;
    }
    std::set<std::string> known;
    for (const HistoryEntry& entry : entries_) known.insert(entry.id);
    std::erase_if(mine, [&](const HistoryEntry& entry) { return known.contains(entry.id); });
    entries_.insert(entries_.begin(), mine.begin(), mine.end());
    std::stable_sort(entries_.begin(), entries_.end(),
                     [](const HistoryEntry& a, const HistoryEntry& b) { return a.date > b.date; });
}

void HistoryStore::append(HistoryEntry entry) {
    takeInWhatOthersWrote();
    if (encoded_.size() == entries_.size())
        encoded_.insert(encoded_.begin(), HistoryJson::encode(entry));
    entries_.insert(entries_.begin(), std::move(entry));
    save();
    if (onChanged) onChanged();
}

void HistoryStore::clear() {
    loadOnce();  // a damaged file is kept aside
    entries_.clear();
    encoded_.clear();
    save();
    if (onChanged) onChanged();
}

void HistoryStore::encodeAll() {
    encoded_.clear();
    for (const HistoryEntry& entry : entries_) encoded_.push_back(HistoryJson::encode(entry));
}

void HistoryStore::save() {
    const fs::path file = Paths::historyFile();
    try {
        Durable::makeFolders(Paths::documentsDir());
        if (damaged_) Durable::rename(file, asideName(file));
        damaged_ = false;
        if (encoded_.size() != entries_.size()) encodeAll();
        Durable::writeFile(file, viewOf(HistoryJson::array(encoded_)));
    } catch (const MFError&) {
        // History never fails a job; what is in memory is written again at the next append.
    }
    stamp_ = stamp();
}

namespace {

std::string quoted(const std::string& text) {
    return "\"" + Text::replaceAll(text, "\"", "\"\"") + "\"";
}

template <typename T>
std::string decimal(const std::optional<T>& value) {
    return value ? std::to_string(*value) : std::string();
}

std::string seconds(const std::optional<double>& value) {
    return value ? Text::fixed(*value, 2) : std::string();
}

}  // namespace

std::string HistoryStore::csv() const {
    std::string text =
        "Date,File,Title,Show,Season,Episode,Result,Sound layout before (s),"
        "Sound layout after (s),What changed,Note\n";
    for (const HistoryEntry& entry : entries()) {
        text += Text::join(
            {Dates::iso8601(entry.date), quoted(entry.path), quoted(entry.title),
             quoted(entry.show.value_or("")), decimal(entry.season), decimal(entry.episode),
             entry.result, seconds(entry.before), seconds(entry.after),
             quoted(Text::join(entry.changes, "; ")), quoted(entry.message)},
            ",");
        text += "\n";
    }
    return text;
}

}  // namespace marlet
