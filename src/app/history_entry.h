#pragma once

#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/dates.h"

namespace marlet {

/// What was done to one file. Stored as a JSON object under these names.
struct HistoryEntry {
    std::string id;  ///< UUID
    Moment date{};
    std::string path;
    std::string title;
    std::optional<std::string> show;
    std::optional<int> season;
    std::optional<int> episode;
    bool isMovie = false;
    std::string result;            ///< "done", "failed", "skipped", "stopped"
    std::optional<double> before;  ///< sound layout, seconds
    std::optional<double> after;
    std::vector<std::string> changes;
    std::string message;
    std::uint64_t size = 0;
    std::optional<std::string> batchID;
    std::optional<bool> isRestore;
    std::optional<std::string> posterPath;
    std::optional<int> year;
    std::optional<std::string> how;
    std::optional<std::string> summary;
    bool operator==(const HistoryEntry&) const = default;
};

/// Entries in an order. Each is shared and never changed: another list of the same entries costs a
/// pointer an entry, and a row on the screen stays whole when History is cleared below it.
class HistoryList {
public:
    using Shared = std::shared_ptr<const HistoryEntry>;

    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = HistoryEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = const HistoryEntry*;
        using reference = const HistoryEntry&;
        const_iterator() = default;
        explicit const_iterator(const Shared* at) : at_(at) {}
        reference operator*() const { return **at_; }
        pointer operator->() const { return at_->get(); }
        const_iterator& operator++() {
            ++at_;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(at_++); }
        bool operator==(const const_iterator&) const = default;

    private:
        const Shared* at_ = nullptr;
    };

    HistoryList() = default;
    HistoryList(const std::vector<HistoryEntry>& entries) { addAll(entries); }
    HistoryList(std::initializer_list<HistoryEntry> entries) { addAll(entries); }

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    const HistoryEntry& operator[](std::size_t index) const { return *entries_[index]; }
    const HistoryEntry& front() const { return *entries_.front(); }
    const_iterator begin() const { return const_iterator(entries_.data()); }
    const_iterator end() const { return const_iterator(entries_.data() + entries_.size()); }
    const std::vector<Shared>& shared() const { return entries_; }

    void add(Shared entry) { entries_.push_back(std::move(entry)); }
    void addInFront(Shared entry) { entries_.insert(entries_.begin(), std::move(entry)); }
    void clear() { entries_.clear(); }

private:
    void addAll(const auto& entries) {
        entries_.reserve(entries.size());
        for (const HistoryEntry& entry : entries)
            entries_.push_back(std::make_shared<const HistoryEntry>(entry));
    }

    std::vector<Shared> entries_;
};

}  // namespace marlet
