#include "foundation/work_area.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <set>
#include <system_error>

#include "foundation/dates.h"
#include "foundation/folder_tree.h"
#include "foundation/line_log.h"
#include "foundation/paths.h"
#include "foundation/work_lock.h"

namespace marlet::WorkArea {

namespace fs = std::filesystem;

namespace {

std::mutex activeLock;

std::set<fs::path>& active() {  // guarded by activeLock
    static std::set<fs::path> folders;
    return folders;
}

}  // namespace

std::int64_t Report::freed() const {
    std::int64_t sum = 0;
    for (const Entry& entry : removable) sum += entry.bytes;
    return sum;
}

std::vector<fs::path> folders() {
    const fs::path area = Paths::workDir();
    const fs::path home = Paths::standardised(area);
    std::vector<fs::path> found;
    std::error_code failed;
    fs::directory_iterator item(area, failed);
    for (; !failed && item != fs::directory_iterator(); item.increment(failed)) {
        const fs::path& path = item->path();
        if (!isUUID(path.filename().string())) continue;
        const auto kind = Sys::lstat(path);
        if (!kind || !kind->isFolder) continue;
        if (Paths::standardised(path).parent_path() != home) continue;
        found.push_back(path);
    }
    std::ranges::sort(found);
    return found;
}

void markActive(const fs::path& folder) {
    const std::lock_guard guard(activeLock);
    active().insert(Paths::standardised(folder));
}

FileHandle claim(const fs::path& folder) {
    markActive(folder);
    FileHandle lock(Sys::open(workLockFile(folder), O_RDWR | O_NOFOLLOW));
    if (!lock.isOpen() && errno == ENOENT) return makeWorkLock(folder);
    if (lock.isOpen()) Sys::flock(lock.get(), LOCK_EX | LOCK_NB);
    return lock;
}

void release(const fs::path& folder, FileHandle lock) {
    if (lock.isOpen()) {
        Sys::flock(lock.get(), LOCK_UN);
        lock.close();
    }
    const std::lock_guard guard(activeLock);
    active().erase(Paths::standardised(folder));
}

LockState lockState(const fs::path& folder) {
    if (!Sys::lstat(workLockFile(folder)) && errno == ENOENT) return LockState::None;
    const FileHandle lock(Sys::open(workLockFile(folder), O_RDWR | O_NOFOLLOW));
    if (!lock.isOpen() || Sys::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) return LockState::Held;
    Sys::flock(lock.get(), LOCK_UN);
    return LockState::Released;
}

bool isClaimed(const fs::path& folder) {
    const std::lock_guard guard(activeLock);
    return active().contains(Paths::standardised(folder));
}

bool isHeld(const fs::path& folder) {
    return isClaimed(folder) || lockState(folder) == LockState::Held;
}

std::int64_t size(const fs::path& folder) {
    std::int64_t sum = 0;
    FolderTree::forEach(folder, [&](const fs::path&, const Sys::FileStat& item) {
        if (item.isRegular) sum += static_cast<std::int64_t>(item.allocatedBytes);
    });
    return sum;
}

FileTime newestChange(const fs::path& folder) {
    const auto own = Sys::stat(folder);
    FileTime newest = own ? own->mtime : std::chrono::system_clock::now();
    FolderTree::forEach(folder, [&](const fs::path&, const Sys::FileStat& item) {
        newest = std::max(newest, item.mtime);
    });
    return newest;
}

Usage usage() {
    Usage sum;
    for (const fs::path& folder : folders()) {
        sum.bytes += size(folder);
        sum.folders++;
    }
    return sum;
}

void log(const std::string& text) {
    appendToLog(Paths::cleanupLog(),
                Dates::local(Dates::now(), "yyyy-MM-dd HH:mm:ss") + "  " + text);
}

}  // namespace marlet::WorkArea
