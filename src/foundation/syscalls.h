#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// A file's modification time as the file system keeps it (nanoseconds since 1970).
using FileTime = std::chrono::sys_time<std::chrono::nanoseconds>;

/// The one thin layer through which every call on a person's file goes. Each function behaves
/// like the POSIX call of its name (negative result and errno), repeats after EINTR, and is the
/// place where tests make a call fail.
namespace Sys {

struct FileStat {
    std::uint64_t inode = 0;
    std::uint64_t device = 0;
    std::uint64_t size = 0;
    FileTime mtime{};
    bool isRegular = false;
    bool isFolder = false;
    bool isLink = false;
    std::uint64_t allocatedBytes = 0;
};

/// Follows links; nothing on failure (errno tells).
std::optional<FileStat> stat(const std::filesystem::path& path);
std::optional<FileStat> lstat(const std::filesystem::path& path);
std::optional<FileStat> fstat(int fd);

/// Always with O_CLOEXEC.
int open(const std::filesystem::path& path, int flags, mode_t mode = 0);
ssize_t pread(int fd, void* buffer, std::size_t count, std::uint64_t at);
ssize_t pwrite(int fd, const void* buffer, std::size_t count, std::uint64_t at);
int ftruncate(int fd, std::uint64_t size);
int fsync(int fd);
int rename(const std::filesystem::path& from, const std::filesystem::path& to);
/// renameat2 with RENAME_NOREPLACE: EEXIST when something has the name. EINVAL and its like where
/// the file system doesn't know the flag.
int renameIfFree(const std::filesystem::path& from, const std::filesystem::path& to);
/// A second name for a file, which replaces nothing.
int link(const std::filesystem::path& from, const std::filesystem::path& to);
int unlink(const std::filesystem::path& path);
int rmdir(const std::filesystem::path& path);
int mkdir(const std::filesystem::path& path, mode_t mode);
int flock(int fd, int operation);
int setModified(const std::filesystem::path& path, FileTime time);
/// FICLONE: the whole of `from` becomes the content of `to`, sharing its blocks.
int clone(int to, int from);
ssize_t copyFileRange(int from, std::uint64_t fromAt, int to, std::uint64_t toAt,
                      std::size_t count);
/// Bytes that this person may still write on the volume of the path; nothing on failure.
std::optional<std::uint64_t> availableBytes(const std::filesystem::path& path);
/// Asks for a range to be read into the page cache in the background.
void readAhead(int fd, std::uint64_t at, std::uint64_t count);
/// Sends a written range on its way to the disk without waiting for it.
void startFlush(int fd, std::uint64_t at, std::uint64_t count);
/// Drops a range from the page cache; the writing side is sent to the disk first.
void dropCache(int fd, std::uint64_t at, std::uint64_t count);
void flushAndDropCache(int fd, std::uint64_t at, std::uint64_t count);
/// Bytes of one file that may stay in the page cache when somebody reads them again soon: a quarter
/// of the machine's memory.
std::uint64_t cacheShare();

enum class Call {
    Open,
    Read,
    Write,
    Truncate,
    Flush,
    Rename,
    RenameIfFree,
    Link,
    Unlink,
    MakeFolder,
    Lock,
    SetModified,
    Clone,
    Stat,
    Space
};

/// While it lives, the nth matching call (from 1) and, if `forever`, all after it fail with
/// `error`. For tests; `path` empty means any file. A call on a descriptor is matched by the path
/// it was opened with, one with two paths by either. One fault at a time per kind of call. An EINTR
/// is repeated as the real one is.
class Fault {
public:
    Fault(Call call, int error, int nth = 1, bool forever = false,
          const std::filesystem::path& path = {});
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

private:
    Call call_;
};

/// While it lives, no read or write moves more than `most` bytes. For tests.
class ShortTransfers {
public:
    explicit ShortTransfers(std::size_t most);
    ~ShortTransfers();
    ShortTransfers(const ShortTransfers&) = delete;
    ShortTransfers& operator=(const ShortTransfers&) = delete;
};

}  // namespace Sys

/// Owns a descriptor and closes it on every way out.
class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int fd) : fd_(fd) {}
    ~FileHandle() { close(); }
    FileHandle(FileHandle&& other) noexcept : fd_(other.release()) {}
    FileHandle& operator=(FileHandle&& other) noexcept;

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }
    void close();

    /// Opens, or throws MFError "phrase: system text".
    static FileHandle open(const std::filesystem::path& path, int flags, const std::string& phrase,
                           mode_t mode = 0);

private:
    int fd_ = -1;
};

/// Throws MFError: the phrase, ": " and the system's text for `error` (errno by default).
[[noreturn]] void failWith(const std::string& phrase, int error);
[[noreturn]] void failWithErrno(const std::string& phrase);

}  // namespace marlet
