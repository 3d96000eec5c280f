#include "app/review_list.h"

#include <unordered_set>

#include "identify/matcher.h"

namespace marlet {

namespace fs = std::filesystem;

std::vector<ResolvedFile> ReviewList::files() const {
    std::vector<ResolvedFile> all;
    all.reserve(fileCount());
    forEach([&](const ResolvedFile& file) { all.push_back(file); });
    return all;
}

const ResolvedFile* ReviewList::find(const fs::path& file) const {
    const auto found = places_.find(file.native());
    if (found == places_.end()) return nullptr;
    return &items_[found->second.item].files[found->second.file];
}

const LibraryItem* ReviewList::item(const std::string& id) const {
    const auto found = byID_.find(id);
    return found == byID_.end() ? nullptr : &items_[found->second];
}

const LibraryItem* ReviewList::itemOf(const fs::path& file) const {
    const auto found = places_.find(file.native());
    return found == places_.end() ? nullptr : &items_[found->second.item];
}

void ReviewList::add(const std::vector<ResolvedFile>& more) {
    std::vector<ResolvedFile> all = files();
    std::unordered_set<std::string> fresh;
    for (const ResolvedFile& file : more) {
        const std::string& location = file.file.url.native();
        if (!places_.contains(location) && fresh.insert(location).second) all.push_back(file);
    }
    regroup(all);
}

void ReviewList::remove(const std::set<fs::path>& gone) {
    std::vector<ResolvedFile> all = files();
    std::erase_if(all, [&](const ResolvedFile& each) { return gone.contains(each.file.url); });
    regroup(all);
}

void ReviewList::replace(const std::vector<ResolvedFile>& changed) {
    for (const ResolvedFile& file : changed) {
        const auto found = places_.find(file.file.url.native());
        if (found != places_.end()) items_[found->second.item].files[found->second.file] = file;
    }
    regroup(files());
}

bool ReviewList::isConfirmed(const ResolvedFile& file) const {
    return file.verdict.isCertain() || confirmed_.contains(file.file.url);
}

const ReviewList::Counts& ReviewList::counts() const {
    if (countedAt_ == revision_) return counts_;
    counts_ = {};
    forEach([&](const ResolvedFile& file) {
        const bool confirmed = isConfirmed(file);
        counts_.needsLook += confirmed ? 0 : 1;
        counts_.ready += confirmed && file.match ? 1 : 0;
    });
    countedAt_ = revision_;
    return counts_;
}

void ReviewList::regroup(const std::vector<ResolvedFile>& all) {
    revision_++;
    items_ = Matcher::group(all);
    places_.clear();
    byID_.clear();
    for (std::size_t i = 0; i < items_.size(); i++) {
        byID_.emplace(items_[i].id, i);
        for (std::size_t j = 0; j < items_[i].files.size(); j++)
            places_.emplace(items_[i].files[j].file.url.native(), Place{i, j});
    }
}

}  // namespace marlet
