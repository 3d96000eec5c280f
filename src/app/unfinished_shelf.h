#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/unfinished.h"
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

    /// What changed since the last time.
    struct Delta {
        std::vector<UnfinishedFile> changed;
        std::vector<Path> gone;
        /// What these hold changed by our own hand: they are recognised anew.
        std::vector<Path> touched;
        std::vector<Path> queue;  ///< the files that wait or are being worked on, in order
        std::vector<UnfinishedRestore> restores;
    };

    /// Takes a file of its own and gives what was left, as far as those films are still the same.
    /// What can't be read counts as nothing. To be called once.
    UnfinishedWork open();
    /// Hands a change over, to be written by the next write(). Changes keep their order.
    void put(Delta delta);
    /// Writes what was handed over, atomically. Never fails: what couldn't be written is written
    /// with the next change.
    void write();
    /// Those of the files on the shelf that are still what they were.
    std::set<Path> unchanged(const std::vector<Path>& files) const;

private:
    struct Record {
        std::string text;
        std::optional<FilmMark> mark;  ///< taken when it is first written
        bool isQueued = false;         ///< was, and hasn't been brought back into the queue yet
    };
    struct Left {
        Path file;
        FileHandle lock;
    };

    static Path fileOf(int number);
    static FileHandle lockOf(int number);
    void take(const Delta& delta);
    std::string text();
    void addLine(std::vector<std::string>& lines, std::size_t& size, const Path& file,
                 bool isQueued);
    void keep(const std::string& text);

    mutable std::mutex writing_;
    Path file_;  ///< empty: nothing is kept
    FileHandle lock_;
    std::vector<Left> left_;  ///< of ended copies, until our own file holds what they did
    std::map<std::string, Record> records_;  ///< by location
    std::vector<Path> queue_;
    std::vector<UnfinishedRestore> restores_;
    std::optional<std::string> written_;  ///< what our own file holds, if we know

    std::mutex handing_;
    std::deque<Delta> handed_;  ///< guarded by handing_; all else by writing_
};

}  // namespace marlet
