#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/syscalls.h"
#include "write/guards.h"

// Who has a file open for writing, from proc(5): /proc/PID/fd names the open files of a program,
// /proc/PID/fdinfo how they were opened. What may not be read is skipped: no look is no refusal.
namespace marlet::TagWriter {

namespace fs = std::filesystem;

namespace {

struct Identity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool operator==(const Identity&) const = default;
};

/// Without asking the file system behind it: a dead network drive must not hang the look around.
std::optional<Identity> identityOf(const fs::path& link) {
    struct statx found {};
    if (::statx(AT_FDCWD, link.c_str(), AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, STATX_INO, &found) !=
        0)
        return std::nullopt;
    return Identity{makedev(found.stx_dev_major, found.stx_dev_minor), found.stx_ino};
}

bool isNumber(const std::string& name) {
    return !name.empty() &&
           std::ranges::all_of(name, [](char each) { return each >= '0' && each <= '9'; });
}

/// The entries of a folder of /proc that are numbers; empty for one that may not be read.
std::vector<std::string> numbersIn(const fs::path& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), ::closedir);
    std::vector<std::string> numbers;
    if (!listing) return numbers;
    while (const dirent* entry = ::readdir(listing.get()))
        if (isNumber(entry->d_name)) numbers.emplace_back(entry->d_name);
    return numbers;
}

/// The "flags:" line of fdinfo holds open(2)'s flags in octal.
bool isOpenForWriting(const fs::path& fdinfo) {
    std::ifstream in(fdinfo);
    std::string key;
    std::string value;
    while (in >> key >> value) {
        if (key != "flags:") continue;
        unsigned flags = 0;
        std::from_chars(value.data(), value.data() + value.size(), flags, 8);
        return (flags & O_ACCMODE) != O_RDONLY;
    }
    return false;
}

bool hasOpenForWriting(const fs::path& process, const Identity& file) {
    return std::ranges::any_of(numbersIn(process / "fd"), [&](const std::string& number) {
        return identityOf(process / "fd" / number) == file &&
               isOpenForWriting(process / "fdinfo" / number);
    });
}

std::string nameOf(const fs::path& process) {
    std::ifstream in(process / "comm");
    std::string name;
    std::getline(in, name);
    return name;
}

/// All of them, this process included.
std::vector<std::string> writersInProc(const Identity& file) {
    std::vector<std::string> names;
    for (const std::string& process : numbersIn("/proc"))
        if (const fs::path folder = fs::path("/proc") / process; hasOpenForWriting(folder, file))
            names.push_back(nameOf(folder));
    return names;
}

/// A broken lease sends SIGIO, whose default is to end the process.
void ignoreLeaseSignal() {
    struct sigaction current {};
    if (::sigaction(SIGIO, nullptr, &current) != 0) return;
    if ((current.sa_flags & SA_SIGINFO) != 0 || current.sa_handler != SIG_DFL) return;
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGIO, &ignore, nullptr);
}

/// The kernel refuses a read lease with EAGAIN while anything holds the file for writing: a
/// program of another person or another container, or a writable mapping. Any other answer (not
/// the owner, no leases on this file system) says nothing.
bool isLeaseRefused(const fs::path& file) {
    ignoreLeaseSignal();
    const FileHandle handle(Sys::open(file, O_RDONLY | O_NONBLOCK));
    if (!handle.isOpen()) return false;
    if (::fcntl(handle.get(), F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    ::fcntl(handle.get(), F_SETLEASE, F_UNLCK);
    return false;
}

}  // namespace

std::vector<std::string> openForWriting(const fs::path& file) {
    const auto identity = identityOf(file);
    if (!identity) return {};
    std::vector<std::string> names = writersInProc(*identity);
    // With a writer of our own the lease would only find that one.
    if (names.empty() && isLeaseRefused(file)) return {"another program"};
    std::erase(names, nameOf("/proc/self"));
    return names;
}

}  // namespace marlet::TagWriter
