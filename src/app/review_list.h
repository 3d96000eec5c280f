#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/records.h"

namespace marlet {

/// The rows of Review and what the person has accepted among them. Always grouped as a whole.
class ReviewList {
public:
    const std::vector<LibraryItem>& items() const { return items_; }
    /// Copies of the files of all items in order.
    std::vector<ResolvedFile> files() const;
    std::size_t fileCount() const { return places_.size(); }
    /// Another number after each change of the rows and of what is accepted.
    std::uint64_t revision() const { return revision_; }
    struct Counts {
        int ready = 0;      ///< files
        int needsLook = 0;  ///< files that nobody has accepted
    };
    /// Counted once for each revision.
    const Counts& counts() const;
    /// Visits the files of all items in order.
    template <typename Visit>
    void forEach(const Visit& visit) const {
        for (const LibraryItem& item : items_)
            for (const ResolvedFile& file : item.files) visit(file);
    }
    const ResolvedFile* find(const std::filesystem::path& file) const;
    const LibraryItem* item(const std::string& id) const;
    const LibraryItem* itemOf(const std::filesystem::path& file) const;

    /// A file that is there already keeps the record it has.
    void add(const std::vector<ResolvedFile>& more);
    void remove(const std::set<std::filesystem::path>& files);
    /// Swaps the records of these files, found by their location; others are passed over.
    void replace(const std::vector<ResolvedFile>& changed);

    void confirm(const std::filesystem::path& file) {
        if (confirmed_.insert(file).second) revision_++;
    }
    void forgetConfirmation(const std::filesystem::path& file) {
        if (confirmed_.erase(file) > 0) revision_++;
    }
    /// Whether the person has accepted it, whatever its verdict.
    bool isAccepted(const std::filesystem::path& file) const { return confirmed_.contains(file); }
    /// Nothing asks for a look, or the person has accepted it.
    bool isConfirmed(const ResolvedFile& file) const;
    /// Has a match and is confirmed.
    bool isReady(const ResolvedFile& file) const { return file.match && isConfirmed(file); }

private:
    struct Place {
        std::size_t item;
        std::size_t file;
    };
    void regroup(const std::vector<ResolvedFile>& files);

    std::vector<LibraryItem> items_;
    std::unordered_map<std::string, Place> places_;      ///< by location; follows items_
    std::unordered_map<std::string, std::size_t> byID_;  ///< follows items_
    std::set<std::filesystem::path> confirmed_;
    std::uint64_t revision_ = 0;
    mutable Counts counts_;
    mutable std::uint64_t countedAt_ = 0;
};

}  // namespace marlet
