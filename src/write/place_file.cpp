#include "write/place_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

#include "foundation/durable.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr const char* cannotMove = "cannot move the file to its name";

/// For file systems without RENAME_NOREPLACE: a second name that can't replace anything, and
/// where there are no second names either (FAT), a look and a rename.
int renameWithoutFlag(const fs::path& from, const fs::path& to) {
    if (::link(from.c_str(), to.c_str()) == 0) return Sys::unlink(from);
    if (errno == EEXIST) return -1;
    if (isTaken(to)) {
        errno = EEXIST;
        return -1;
    }
    return Sys::rename(from, to);
}

int renameIfFree(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    const bool isUnknown = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    return isUnknown ? renameWithoutFlag(from, to) : -1;
}

}  // namespace

bool moveIfFree(const fs::path& from, const fs::path& to) {
    if (renameIfFree(from, to) != 0) {
        if (errno == EEXIST) return false;
        failWithErrno(cannotMove);
    }
    Durable::flushFolder(to.parent_path());
    return true;
}

bool isTaken(const fs::path& path) {
    return Sys::lstat(path).has_value();
}

fs::path partFile(const fs::path& folder) {
    return folder / (".marlet-" + newUUID().substr(0, 8) + ".part");
}

RemoveAtEnd::~RemoveAtEnd() {
    Sys::unlink(path_);
}

}  // namespace marlet
