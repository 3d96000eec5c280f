#include "foundation/work_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include "foundation/uuid.h"

namespace marlet::WorkArea {

namespace fs = std::filesystem;

fs::path workLockFile(const fs::path& folder) {
    return folder / ".lock";
}

FileHandle makeWorkLock(const fs::path& folder) {
    const fs::path unnamed = folder / (".lock-" + newUUID());
    FileHandle lock(Sys::open(unnamed, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0644));
    if (!lock.isOpen()) return lock;
    Sys::flock(lock.get(), LOCK_EX | LOCK_NB);
    if (Sys::rename(unnamed, workLockFile(folder)) != 0) {
        Sys::unlink(unnamed);
        lock.close();
    }
    return lock;
}

}  // namespace marlet::WorkArea
