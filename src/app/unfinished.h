#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "app/draft_corrections.h"
#include "app/plan_ticks.h"
#include "foundation/records.h"
#include "foundation/syscalls.h"

namespace marlet {

/// What tells a file from what stands under its name later, as far as it is known. Not its inode:
/// FAT, FUSE and network file systems give another number at each mount.
struct FilmMark {
    std::optional<std::uint64_t> size;
    std::optional<std::int64_t> modified;  ///< nanoseconds since 1970
    bool operator==(const FilmMark&) const = default;

    static FilmMark of(const Sys::FileStat& found);
    /// Nothing that is known of the film speaks against what was found.
    bool fits(const Sys::FileStat& found) const;
};

/// One file that waits for the queue or that a person corrected, with all that this person did.
struct UnfinishedFile {
    ResolvedFile resolved;
    bool isQueued = false;
    bool isAccepted = false;  ///< the person chose the match, or said yes to it
    DraftCorrections draft;
    std::vector<int> dropped;  ///< Track::index of an MP4's tracks that are left out
    PlanTicks ticks;
    bool isCorrected() const {
        return isAccepted || !draft.empty() || !dropped.empty() || !ticks.empty();
    }
    bool operator==(const UnfinishedFile&) const = default;
};

/// Original details that were to come back.
struct UnfinishedRestore {
    std::filesystem::path file;
    Details details;  ///< what its job is named after
    std::optional<int> year;
    bool operator==(const UnfinishedRestore&) const = default;
};

struct UnfinishedWork {
    std::vector<UnfinishedFile> files;  ///< those of the queue first and in its order
    std::vector<UnfinishedRestore> restores;
    bool empty() const { return files.empty() && restores.empty(); }
    bool operator==(const UnfinishedWork&) const = default;
};

}  // namespace marlet
