#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/records.h"

namespace marlet {

/// The rows of Review and what the person has accepted among them. Always grouped as a whole.
class ReviewList {
public:
    const std::vector<LibraryItem>& items() const { return items_; }
    /// The files of all items in order.
    std::vector<ResolvedFile> files() const;
    const ResolvedFile* find(const std::filesystem::path& file) const;
    const LibraryItem* item(const std::string& id) const;
    const LibraryItem* itemOf(const std::filesystem::path& file) const;

    void add(const std::vector<ResolvedFile>& more);
    void remove(const std::set<std::filesystem::path>& files);
    /// Swaps one file's record; false when Review doesn't hold it.
    bool replace(const std::filesystem::path& file, const ResolvedFile& resolved);

    void confirm(const std::filesystem::path& file) { confirmed_.insert(file); }
    void forgetConfirmation(const std::filesystem::path& file) { confirmed_.erase(file); }
    /// Nothing asks for a look, or the person has accepted it.
    bool isConfirmed(const ResolvedFile& file) const;
    /// Has a match and is confirmed.
    bool isReady(const ResolvedFile& file) const { return file.match && isConfirmed(file); }

private:
    void regroup(const std::vector<ResolvedFile>& files);

    std::vector<LibraryItem> items_;
    std::set<std::filesystem::path> confirmed_;
};

}  // namespace marlet
