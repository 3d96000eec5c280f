#include "app/review_list.h"

#include <algorithm>

#include "identify/matcher.h"

namespace marlet {

namespace fs = std::filesystem;

std::vector<ResolvedFile> ReviewList::files() const {
    std::vector<ResolvedFile> all;
    for (const LibraryItem& item : items_)
        all.insert(all.end(), item.files.begin(), item.files.end());
    return all;
}

const ResolvedFile* ReviewList::find(const fs::path& file) const {
    for (const LibraryItem& item : items_)
        for (const ResolvedFile& each : item.files)
            if (each.file.url == file) return &each;
    return nullptr;
}

const LibraryItem* ReviewList::item(const std::string& id) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&](const LibraryItem& each) { return each.id == id; });
    return found == items_.end() ? nullptr : &*found;
}

const LibraryItem* ReviewList::itemOf(const fs::path& file) const {
    for (const LibraryItem& item : items_)
        for (const ResolvedFile& each : item.files)
            if (each.file.url == file) return &item;
    return nullptr;
}

void ReviewList::add(const std::vector<ResolvedFile>& more) {
    std::vector<ResolvedFile> all = files();
    all.insert(all.end(), more.begin(), more.end());
    regroup(all);
}

void ReviewList::remove(const std::set<fs::path>& gone) {
    std::vector<ResolvedFile> all = files();
    std::erase_if(all, [&](const ResolvedFile& each) { return gone.contains(each.file.url); });
    regroup(all);
}

bool ReviewList::replace(const fs::path& file, const ResolvedFile& resolved) {
    std::vector<ResolvedFile> all = files();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const ResolvedFile& each) { return each.file.url == file; });
    if (found == all.end()) return false;
    *found = resolved;
    regroup(all);
    return true;
}

bool ReviewList::isConfirmed(const ResolvedFile& file) const {
    return file.verdict.isCertain() || confirmed_.contains(file.file.url);
}

void ReviewList::regroup(const std::vector<ResolvedFile>& all) {
    items_ = Matcher::group(all);
}

}  // namespace marlet
