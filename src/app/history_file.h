#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>

#include "app/history_entry.h"
#include "app/history_turn.h"
#include "foundation/syscalls.h"

namespace marlet {

/// History's file: a JSON array, newest entry first, that is replaced as a whole at each change.
/// Other running copies of the program may write it, too. Any thread; each call but put() and
/// putClear() may take as long as the disk does.
class HistoryFile {
public:
    struct Content {
        HistoryList entries;
        std::uint64_t revision = 0;  ///< a later content has a higher one
    };

    /// Hands a change over, to be written by the next write(). Changes keep their order.
    void put(HistoryEntry entry);
    void putClear();

    /// What the file holds, read when nobody has read it before.
    Content read();
    /// Writes what was handed over. Never fails: what could not be written is written with the next
    /// change. A file that could not be read is kept aside under another name first.
    Content write();
    /// The same, and not at all when somebody else is at the file for so long; nothing then.
    std::optional<Content> writeAtQuit(std::chrono::milliseconds patience);

    /// For other running copies, over the whole session.
    void setPatience(HistoryPatience patience);

private:
    using Change = HistoryList::Shared;  ///< an entry; null for all of them gone

    std::deque<Change> takeHanded();
    bool hasHanded();
    Content writeHanded();
    Content content();
    /// Takes in the file if it isn't the one that was last read or written, and gives it, opened.
    FileHandle look();
    void take(const FileHandle& handle, const Sys::FileStat& found);
    void apply(const std::deque<Change>& changes);
    void save(const FileHandle& old);
    /// A long file is not encoded again: new entries go in front of what stands in the old one,
    /// which was read as a whole before and is still the same. False when that can't be done.
    bool addToFile(const FileHandle& old);
    void replaceFile();

    std::timed_mutex writing_;  ///< guards all of these
    HistoryPatience patience_;
    bool isLoaded_ = false;
    HistoryList entries_;
    std::uint64_t revision_ = 0;
    bool isUnsaved_ = false;              ///< the file isn't yet what it is to be
    std::size_t unsaved_ = 0;             ///< of the newest ones, those not in the file
    bool damaged_ = false;                ///< the file exists but could not be read
    bool unreadable_ = false;             ///< this time; that says nothing about the file
    std::optional<Sys::FileStat> known_;  ///< the file as last read or written
    std::uint64_t entriesAt_ = 0;         ///< where its first entry begins

    std::mutex handing_;
    std::deque<Change> handed_;  ///< guarded by handing_
};

}  // namespace marlet
