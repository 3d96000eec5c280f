#include "foundation/syscalls.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "foundation/errors.h"
#include "foundation/sys_faults.h"

namespace marlet {

namespace Sys {

namespace fs = std::filesystem;

namespace {

/// Runs the call unless a fault stands in its way, and again for as long as a signal interrupts.
template <typename Target, typename Body>
auto run(Call kind, const Target& target, Body body) -> decltype(body()) {
    for (;;) {
        decltype(body()) result = -1;
        if (const int error = Faults::errorFor(kind, target); error != 0)
            errno = error;
        else
            result = body();
        if (result >= 0 || errno != EINTR) return result;
    }
}

FileTime timeOf(const timespec& time) {
    return FileTime(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

FileStat recordOf(const struct stat& from) {
    FileStat record;
    record.inode = from.st_ino;
    record.device = from.st_dev;
    record.size = static_cast<std::uint64_t>(from.st_size);
    record.mtime = timeOf(from.st_mtim);
    record.isRegular = S_ISREG(from.st_mode);
    record.isFolder = S_ISDIR(from.st_mode);
    record.isLink = S_ISLNK(from.st_mode);
    // st_blocks counts units of 512 bytes whatever the file system's block is.
    record.allocatedBytes = static_cast<std::uint64_t>(from.st_blocks) * 512;
    return record;
}

template <typename Target, typename Body>
std::optional<FileStat> statWith(const Target& target, Body body) {
    struct stat found {};
    if (run(Call::Stat, target, [&] { return body(&found); }) != 0) return std::nullopt;
    return recordOf(found);
}

off_t offset(std::uint64_t value) {
    return static_cast<off_t>(value);
}

}  // namespace

std::optional<FileStat> stat(const fs::path& path) {
    return statWith(path, [&](struct stat* out) { return ::stat(path.c_str(), out); });
}

std::optional<FileStat> lstat(const fs::path& path) {
    return statWith(path, [&](struct stat* out) { return ::lstat(path.c_str(), out); });
}

std::optional<FileStat> fstat(int fd) {
    return statWith(fd, [&](struct stat* out) { return ::fstat(fd, out); });
}

int open(const fs::path& path, int flags, mode_t mode) {
    return run(Call::Open, path, [&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); });
}

ssize_t pread(int fd, void* buffer, std::size_t count, std::uint64_t at) {
    return run(Call::Read, fd, [&] {
        return ::pread(fd, buffer, std::min(count, Faults::mostPerTransfer()), offset(at));
    });
}

ssize_t pwrite(int fd, const void* buffer, std::size_t count, std::uint64_t at) {
    return run(Call::Write, fd, [&] {
        return ::pwrite(fd, buffer, std::min(count, Faults::mostPerTransfer()), offset(at));
    });
}

int ftruncate(int fd, std::uint64_t size) {
    return run(Call::Truncate, fd, [&] { return ::ftruncate(fd, offset(size)); });
}

int fsync(int fd) {
    return run(Call::Flush, fd, [&] { return ::fsync(fd); });
}

int rename(const fs::path& from, const fs::path& to) {
    const Faults::Ends ends{from, to};
    return run(Call::Rename, ends, [&] { return ::rename(from.c_str(), to.c_str()); });
}

int renameIfFree(const fs::path& from, const fs::path& to) {
    const Faults::Ends ends{from, to};
    return run(Call::RenameIfFree, ends, [&] {
        return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    });
}

int link(const fs::path& from, const fs::path& to) {
    const Faults::Ends ends{from, to};
    return run(Call::Link, ends, [&] { return ::link(from.c_str(), to.c_str()); });
}

int unlink(const fs::path& path) {
    return run(Call::Unlink, path, [&] { return ::unlink(path.c_str()); });
}

int rmdir(const fs::path& path) {
    return run(Call::Unlink, path, [&] { return ::rmdir(path.c_str()); });
}

int mkdir(const fs::path& path, mode_t mode) {
    return run(Call::MakeFolder, path, [&] { return ::mkdir(path.c_str(), mode); });
}

int flock(int fd, int operation) {
    return run(Call::Lock, fd, [&] { return ::flock(fd, operation); });
}

int setModified(const fs::path& path, FileTime time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    timespec times[2]{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = whole.time_since_epoch().count();
    times[1].tv_nsec = (time - whole).count();
    return run(Call::SetModified, path,
               [&] { return ::utimensat(AT_FDCWD, path.c_str(), times, 0); });
}

int clone(int to, int from) {
    return run(Call::Clone, to, [&] { return ::ioctl(to, FICLONE, from); });
}

ssize_t copyFileRange(int from, std::uint64_t fromAt, int to, std::uint64_t toAt,
                      std::size_t count) {
    const auto body = [&] {
        off64_t in = offset(fromAt);
        off64_t out = offset(toAt);
        return ::copy_file_range(from, &in, to, &out, std::min(count, Faults::mostPerTransfer()),
                                 0);
    };
    // It shares blocks, reads and writes at once: a fault of any of the three stops it.
    return run(Call::Clone, to,
               [&] { return run(Call::Read, from, [&] { return run(Call::Write, to, body); }); });
}

std::optional<std::uint64_t> availableBytes(const fs::path& path) {
    struct statvfs found {};
    if (run(Call::Space, path, [&] { return ::statvfs(path.c_str(), &found); }) != 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(found.f_bavail) * found.f_frsize;
}

void readAhead(int fd, std::uint64_t at, std::uint64_t count) {
    posix_fadvise(fd, offset(at), offset(count), POSIX_FADV_WILLNEED);
}

void dropCache(int fd, std::uint64_t at, std::uint64_t count) {
    posix_fadvise(fd, offset(at), offset(count), POSIX_FADV_DONTNEED);
}

void startFlush(int fd, std::uint64_t at, std::uint64_t count) {
    sync_file_range(fd, offset(at), offset(count), SYNC_FILE_RANGE_WRITE);
}

void flushAndDropCache(int fd, std::uint64_t at, std::uint64_t count) {
    sync_file_range(
        fd, offset(at), offset(count),
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
    dropCache(fd, at, count);
}

std::uint64_t cacheShare() {
    const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
    return pages <= 0 || size <= 0
               ? 0
               : static_cast<std::uint64_t>(pages) / 4 * static_cast<std::uint64_t>(size);
}

}  // namespace Sys

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = other.release();
    }
    return *this;
}

void FileHandle::close() {
    // Linux frees the descriptor even when close is interrupted: a second close could hit a file
    // that another thread has just opened.
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

FileHandle FileHandle::open(const std::filesystem::path& path, int flags, const std::string& phrase,
                            mode_t mode) {
    FileHandle handle(Sys::open(path, flags, mode));
    if (!handle.isOpen()) failWithErrno(phrase);
    return handle;
}

void failWith(const std::string& phrase, int error) {
    // Untranslated: other code recognises phrases in these sentences.
    const char* text = ::strerrordesc_np(error);
    throw MFError(phrase + ": " +
                  (text != nullptr ? std::string(text) : "Unknown error " + std::to_string(error)));
}

void failWithErrno(const std::string& phrase) {
    failWith(phrase, errno);
}

}  // namespace marlet
