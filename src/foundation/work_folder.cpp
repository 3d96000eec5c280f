// How a job's folder comes and goes. Both ways lead through a folder beside the work area: what
// stands there is not a job folder yet, or no longer.

#include <cerrno>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/folder_tree.h"
#include "foundation/part_files.h"
#include "foundation/paths.h"
#include "foundation/work_area.h"
#include "foundation/work_lock.h"

namespace marlet::WorkArea {

namespace fs = std::filesystem;

namespace {

fs::path doorstep() {
    return Paths::workDir().parent_path() / "work-doorstep";
}

void removeForGood(const fs::path& folder) {
    PartFiles::removeNoted(folder);
    FolderTree::remove(folder);
}

}  // namespace

// One that is still on its way in holds its lock, but for a moment at its start; makeClaimed copes
// with losing it then.
void sweepDoorstep() {
    std::error_code failed;
    fs::directory_iterator item(doorstep(), failed);
    for (; !failed && item != fs::directory_iterator(); item.increment(failed))
        if (lockState(item->path()) != LockState::Held) removeForGood(item->path());
}

FileHandle makeClaimed(const fs::path& folder) {
    Durable::makeFolders(doorstep());
    Durable::makeFolders(folder.parent_path());
    sweepDoorstep();
    constexpr int attempts = 5;
    for (int i = 0; i < attempts; i++) {
        const fs::path incoming = doorstep() / newUUID();
        if (Sys::mkdir(incoming, 0700) != 0) failWithErrno("cannot create the work folder");
        FileHandle lock = makeWorkLock(incoming);
        if (!lock.isOpen() && errno == ENOENT) continue;  // another program swept it away
        markActive(folder);
        Durable::rename(incoming, folder);
        return lock;
    }
    throw MFError("cannot create the work folder: another program keeps removing it");
}

// The part first: no folder that is half gone has lost its note.
void discard(const fs::path& folder) {
    PartFiles::removeNoted(folder);
    try {
        Durable::makeFolders(doorstep());
        const fs::path outgoing = doorstep() / newUUID();
        if (Sys::rename(folder, outgoing) == 0) return removeForGood(outgoing);
    } catch (const MFError&) {
        // Then where it stands.
    }
    FolderTree::remove(folder);
}

}  // namespace marlet::WorkArea

namespace marlet {

namespace fs = std::filesystem;

WorkFolder::WorkFolder() : path_(Paths::workDir() / newUUID()) {}

WorkFolder::~WorkFolder() {
    if (!created_) return;
    if (!keep_) WorkArea::discard(path_);
    WorkArea::release(path_, std::move(lock_));
}

fs::path WorkFolder::setAside() {
    keep();
    const fs::path aside = path_.parent_path() / ("kept-" + path_.filename().string());
    if (Sys::rename(path_, aside) != 0) return path_;
    try {
        Durable::flushFolder(aside.parent_path());
    } catch (const MFError&) {
        // It has its new name all the same, for as long as the power stays on.
    }
    return aside;
}

void WorkFolder::create() {
    // From here on there may be something to remove, also when the making fails half-way.
    created_ = true;
    lock_ = WorkArea::makeClaimed(path_);
}

}  // namespace marlet
