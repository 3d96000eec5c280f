#include "write/place_file.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/part_files.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr const char* cannotMove = "cannot move the file to its name";

bool isUnknownToFileSystem(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

/// Where there are no second names either: an empty file that nobody had before takes the name,
/// and only that one is replaced.
int renameOverPlaceholder(const fs::path& from, const fs::path& to) {
    FileHandle placeholder(Sys::open(to, O_WRONLY | O_CREAT | O_EXCL, 0644));
    if (!placeholder.isOpen()) return -1;
    placeholder.close();
    if (Sys::rename(from, to) == 0) return 0;
    const int error = errno;
    Sys::unlink(to);
    errno = error;
    return -1;
}

/// For file systems without RENAME_NOREPLACE: a second name can't replace anything.
int renameWithoutFlag(const fs::path& from, const fs::path& to) {
    if (Sys::link(from, to) == 0) {
        // The file has its name. What is left of the first one goes with the part's place.
        Sys::unlink(from);
        return 0;
    }
    const bool hasLinks = !isUnknownToFileSystem(errno) && errno != EPERM && errno != EMLINK;
    return hasLinks ? -1 : renameOverPlaceholder(from, to);
}

int renameIfFree(const fs::path& from, const fs::path& to) {
    if (Sys::renameIfFree(from, to) == 0) return 0;
    return isUnknownToFileSystem(errno) ? renameWithoutFlag(from, to) : -1;
}

std::vector<fs::path> partsIn(const fs::path& folder) {
    std::vector<fs::path> parts;
    std::error_code failed;
    for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        if (!PartFiles::isName(entry->path().filename().native())) continue;
        const auto found = Sys::lstat(entry->path());
        if (found && found->isRegular) parts.push_back(entry->path());
    }
    return parts;
}

/// Another run holds the lock alone only while it removes names; any other program that does must
/// not hold up a delivery.
void share(const FileHandle& folder) {
    constexpr int tries = 50;
    constexpr std::chrono::milliseconds pause{20};
    for (int i = 0; i < tries; i++) {
        if (Sys::flock(folder.get(), LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
        std::this_thread::sleep_for(pause);
    }
}

/// Gives the folder with this run's share of the lock.
FileHandle claim(const fs::path& folder) {
    FileHandle handle(Sys::open(folder, O_RDONLY | O_DIRECTORY));
    if (!handle.isOpen()) return handle;
    if (Sys::flock(handle.get(), LOCK_EX | LOCK_NB) == 0)
        for (const fs::path& part : partsIn(folder)) Sys::unlink(part);
    share(handle);
    return handle;
}

}  // namespace

void makeFoldersFor(const fs::path& folder, const std::string& phrase) {
    std::error_code failed;
    fs::create_directories(folder, failed);
    if (failed) failWith(phrase, failed.value());
}

bool moveIfFree(const fs::path& from, const fs::path& to) {
    if (renameIfFree(from, to) != 0) {
        if (errno == EEXIST) return false;
        failWithErrno(cannotMove);
    }
    try {
        Durable::flushFolder(to.parent_path());
    } catch (const MFError&) {
        // "Failed" is what the person reads, so nothing must be there.
        Sys::unlink(to);
        throw;
    }
    return true;
}

bool isTaken(const fs::path& path) {
    return Sys::lstat(path).has_value();
}

PartFile::PartFile(const fs::path& folder, const fs::path& jobFolder)
    : folder_(claim(folder)), path_(folder / PartFiles::newName()) {
    PartFiles::note(jobFolder, path_);
}

PartFile::~PartFile() {
    Sys::unlink(path_);
}

}  // namespace marlet
