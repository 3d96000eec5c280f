#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/syscalls.h"
#include "foundation/uuid.h"

namespace marlet {

/// The folder below Paths::workDir in which every job has a folder of its own, named by a UUID;
/// decides folder by folder what may be removed, and says why.
namespace WorkArea {

struct Usage {
    std::int64_t bytes = 0;
    int folders = 0;
    bool operator==(const Usage&) const = default;
};

struct Entry {
    std::string name;
    std::int64_t bytes = 0;
    std::string reason;
    bool operator==(const Entry&) const = default;
};

struct Report {
    std::vector<Entry> removable;
    std::vector<Entry> kept;
    std::int64_t freed() const;
    bool operator==(const Report&) const = default;
};

/// The job folders: named by a UUID, no links, directly below the work folder.
std::vector<std::filesystem::path> folders();
/// Marks the folder as in use by this process and takes its lock ("<folder>/.lock", flock).
/// A handle that is not open means that only this process is warned off.
FileHandle claim(const std::filesystem::path& folder);
/// Makes a job folder (durably, with its parents) and claims it in one step: it gets its name only
/// when its lock is held, so that a crash at any moment leaves either no folder or one whose lock
/// says that its job has ended. Throws MFError.
FileHandle makeClaimed(const std::filesystem::path& folder);
/// Takes a folder out of the area in one step and removes it then, so that a crash never leaves a
/// half-removed one behind; before that the unfinished file that it notes (PartFiles). Never fails.
void discard(const std::filesystem::path& folder);
/// Removes what programs left that died while a folder of theirs was on its way in or out.
void sweepDoorstep();
/// Ends the claim: unlocks, closes, forgets the folder. The folder itself is the caller's to
/// remove.
void release(const std::filesystem::path& folder, FileHandle lock);
/// Whether this process claims the folder.
bool isClaimed(const std::filesystem::path& folder);
enum class LockState { None, Released, Held };
/// What the folder's lock file says; one that can't be opened counts as held. A claim of this very
/// process counts as held too.
LockState lockState(const std::filesystem::path& folder);
/// True when a living process holds the folder's lock (or this process claims the folder).
bool isHeld(const std::filesystem::path& folder);
/// Allocated bytes of all regular files in the tree.
std::int64_t size(const std::filesystem::path& folder);
/// The latest modification date in the tree, the folder's own included.
FileTime newestChange(const std::filesystem::path& folder);
Usage usage();
enum class DryRun { No, Yes };
Report cleanUp(DryRun dryRun);
/// Appends a line to "cleanup.log"; never fails.
void log(const std::string& text);

}  // namespace WorkArea

/// One job's folder: made and claimed by the constructor, removed (unless kept) and released by
/// the destructor.
class WorkFolder {
public:
    /// Decides the place only; nothing is on disk until create().
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Makes the folder durably, with its parents, and claims it.
    void create();
    /// The folder stays on disk when the job ends, since a recovery depends on it.
    void keep() { keep_ = true; }
    /// The folder stays with no journal to protect it: it is moved to a name that no clean-up looks
    /// at, and is the person's from then on. Gives its new place, the old one if it can't be moved.
    std::filesystem::path setAside();

private:
    std::filesystem::path path_;
    FileHandle lock_;
    bool created_ = false;
    bool keep_ = false;
};

}  // namespace marlet
