#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "app/history_entry.h"
#include "app/history_turn.h"
#include "foundation/bytes.h"
#include "foundation/syscalls.h"

namespace marlet {

/// The permanent record, newest first, in one file that is replaced as a whole at each append. Main
/// context only. Other running copies of the program may write the same file.
class HistoryStore {
public:
    static HistoryStore& shared();
    /// A JSON array of the entries, newest first.
    static std::filesystem::path file();

    /// Reads the file when it is first needed: a run that only looks at films doesn't wait for tens
    /// of thousands of entries.
    HistoryStore() = default;
    const HistoryList& entries() const;
    /// Never fails. A file that could not be read is kept aside under another name first.
    void append(HistoryEntry entry);
    void clear();
    std::string csv() const { return csvOf(entries()); }
    /// Of a copy of the entries, so that a worker can do it.
    static std::string csvOf(const HistoryList& entries);
    /// Told after each change.
    std::function<void()> onChanged;
    /// For other running copies, over the whole session.
    HistoryPatience patience;

private:
    void loadOnce() const;
    /// Takes in the file if it isn't the one that was last read or written, and gives it, opened.
    FileHandle look() const;
    void take(const FileHandle& handle, const Sys::FileStat& found) const;
    void save(const FileHandle& old);
    /// A long file is not encoded again: new entries go in front of what stands in the old one,
    /// which was read as a whole before and is still the same. False when that can't be done.
    bool addToFile(const FileHandle& old);
    void replaceFile();

    mutable bool loaded_ = false;
    mutable HistoryList entries_;
    mutable std::size_t unsaved_ = 0;             ///< of the newest ones, those not in the file
    mutable bool damaged_ = false;                ///< the file exists but could not be read
    mutable bool unreadable_ = false;             ///< this time; that says nothing about the file
    mutable std::optional<Sys::FileStat> known_;  ///< the file as last read or written
    mutable std::uint64_t entriesAt_ = 0;         ///< where its first entry begins
};

/// The small pictures that History shows.
namespace HistoryPosters {
std::filesystem::path dir();
/// The path of the saved picture; nothing on failure.
std::optional<std::string> save(ByteView data, const std::string& key);
/// Where save puts the picture of that key.
std::string pathFor(const std::string& key);
/// Removes those that are older than 180 days.
void prune();
}  // namespace HistoryPosters

}  // namespace marlet
