#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/unfinished.h"
#include "app/unfinished_json.h"
#include "foundation/copy_lock.h"
#include "foundation/syscalls.h"

namespace marlet {

/// "unfinished.json" in the folder of what must survive. Each running copy of the program has a
/// file of its own, the second one "unfinished 2.json" and so on: held by a lock that dies with its
/// process, so that no copy ever writes over what another keeps, needs no merging while both run,
/// and a crash hands over by itself. A copy that starts takes over what ended ones left, and
/// removes their files once its own holds all of it.
///
/// May be called from any thread.
class UnfinishedShelf {
public:
    using Path = std::filesystem::path;
    static constexpr std::uint64_t maxFileSize = std::uint64_t{64} << 20U;

    /// What has no room in the file is left out, the oldest first. For tests: less than a file that
    /// can be read again.
    std::size_t mostBytes = maxFileSize;
    /// Of films that can't be looked at so many are remembered, the newest, and so many restores.
    static constexpr std::size_t mostAway = 1000;

    /// What changed since the last time.
    struct Delta {
        std::vector<UnfinishedFile> changed;
        std::vector<Path> gone;
        /// What these hold changed by our own hand: they are recognised anew.
        std::vector<Path> touched;
        std::vector<Path> queue;  ///< the files that wait or are being worked on, in order
        std::vector<UnfinishedRestore> restores;
        bool tellsLeft = true;  ///< knows what look() gave
    };
    struct Looked {
        std::set<Path> same;  ///< of the files on the shelf
        std::set<Path> away;  ///< can't be looked at
    };

    /// Takes a file of its own and reads what was left, without a look at any film. What can't be
    /// read counts as nothing. To be called once.
    void open();
    /// What was left, as far as those films are still the same. Films that can't be looked at, on
    /// a disk that isn't there say, keep their records for a later start; those of films that are
    /// other ones now are dropped. To be called once, and may take as long as a disk does.
    UnfinishedWork look();
    /// Hands a change over, to be written by the next write(). Changes keep their order.
    void put(Delta delta);
    /// Writes what was handed over, atomically, and again once the films that are new to it were
    /// looked at. Never fails: what couldn't be written is written with the next change.
    void write();
    /// The same without a look at any film, and not at all if the shelf is busy for so long.
    void writeAtQuit(std::chrono::milliseconds patience = std::chrono::seconds(2));
    Looked lookAt(const std::vector<Path>& files) const;

private:
    struct Record {
        std::string text;
        FilmMark mark;
        bool isQueued = false;   ///< was, and hasn't been brought back into the queue yet
        bool isLeft = false;     ///< nothing was done to the file in this run
        std::uint64_t due = 0;   ///< not 0: the film is to be looked at, and by which call
        std::int64_t since = 0;  ///< see UnfinishedJson::Marked
    };
    using Place = std::pair<const std::string, Record>;
    struct Left {
        Path file;
        CopyLock lock;
    };

    static Path fileOf(int number);
    /// False when nothing could be read.
    bool read(const Path& file);
    void takeHanded();
    void take(const Delta& delta);
    std::string text();
    /// Those that a file of that size has room for beside others; the oldest of them stay out.
    std::vector<const Place*> withRoom(const std::vector<const Place*>& places,
                                       std::size_t room) const;
    std::int64_t newSince();
    void keep(const std::string& text);

    /// Never held while a film is looked at: a disk that has gone may not answer for minutes.
    mutable std::timed_mutex writing_;
    Path file_;  ///< empty: nothing is kept
    CopyLock lock_;
    std::vector<Left> left_;  ///< of ended copies, until our own file holds what they did
    std::map<std::string, Record> records_;  ///< by location
    std::int64_t newest_ = 0;                ///< the latest `since`
    std::vector<Path> queue_;
    std::vector<UnfinishedRestore> restores_;
    std::vector<std::string> leftQueue_;  ///< locations of what waited in the queue, in its order
    std::vector<UnfinishedJson::Marked> leftFiles_;  ///< until look() is called
    std::vector<UnfinishedRestore> leftRestores_;    ///< until restores_ holds them
    std::vector<UnfinishedRestore> awayRestores_;    ///< files that can't be looked at
    std::uint64_t looks_ = 0;
    std::optional<std::string> written_;  ///< what our own file holds, if we know

    std::mutex handing_;
    std::deque<Delta> handed_;  ///< guarded by handing_; all else by writing_
};

}  // namespace marlet
