// Preloaded into a program under test: counts the calls that change something on disk, ends the
// process by SIGKILL at the one asked for, and keeps a log of those that went well.
//   CRASH_AT=n       before the nth changing call
//   CRASH_TORN_AT=n  in the middle of the nth write: half of its bytes get through
//   CRASH_LOG=path   one line a call: name, tab, path[, tab, second path]
//   HOLD_FILE=path   as long as that file is there, a call that writes to a file whose path begins
//                    with what it holds waits; "path.held" is made when one does
// It acts in the program's own process alone: not in a media tool that it starts, nor in the child
// that is about to become one.
// Calls go straight to the kernel, so nothing of the C library has to be found again.
#include <signal.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

extern "C" long syscall(long number, ...) noexcept;

namespace {

constexpr int atWorkFolder = -100;            // AT_FDCWD
constexpr int writeOnlyCreateAppend = 02101;  // O_WRONLY | O_CREAT | O_APPEND
constexpr int createFlag = 0100;
constexpr int truncateFlag = 01000;
constexpr int removeFolderFlag = 0x200;
constexpr unsigned long cloneRequest = 0x40049409;  // FICLONE

long numberIn(const char* variable) {
    const char* text = std::getenv(variable);
    return text == nullptr ? 0 : std::atol(text);
}

[[noreturn]] void die() {
    for (;;) ::syscall(SYS_kill, ::syscall(SYS_getpid), SIGKILL);
}

const long owner = ::syscall(SYS_getpid);

/// The environment, and with it the shim, goes on to the media tools.
bool isMediaTool() {
    char path[4096];
    const long size = ::syscall(SYS_readlinkat, atWorkFolder, "/proc/self/exe", path, sizeof path);
    const std::string program(path, size > 0 ? static_cast<std::size_t>(size) : 0);
    for (const char* tool : {"/marlet-mux", "/marlet-audio", "/MP4Box", "/gpac"})
        if (program.ends_with(tool)) return true;
    return false;
}

bool isAtWork() {
    static const bool isTool = isMediaTool();
    return !isTool && ::syscall(SYS_getpid) == owner;
}

/// Called at the head of each changing call.
void count() {
    if (!isAtWork()) return;
    static std::atomic<long> calls{0};
    static const long last = numberIn("CRASH_AT");
    if (++calls == last) die();
}

bool isTorn() {
    if (!isAtWork()) return false;
    static std::atomic<long> writes{0};
    static const long last = numberIn("CRASH_TORN_AT");
    return ++writes == last;
}

std::string pathOf(int fd) {
    char link[4096];
    const std::string place = "/proc/self/fd/" + std::to_string(fd);
    const long size = ::syscall(SYS_readlinkat, atWorkFolder, place.c_str(), link, sizeof link);
    return size > 0 ? std::string(link, static_cast<std::size_t>(size)) : std::string();
}

std::string pathAt(int folder, const char* path) {
    return folder == atWorkFolder || path[0] == '/' ? std::string(path)
                                                    : pathOf(folder) + "/" + path;
}

void log(const std::string& line) {
    if (!isAtWork()) return;
    static const char* place = std::getenv("CRASH_LOG");
    if (place == nullptr) return;
    static const int fd =
        static_cast<int>(::syscall(SYS_openat, atWorkFolder, place, writeOnlyCreateAppend, 0600));
    const std::string text = line + "\n";
    ::syscall(SYS_write, fd, text.data(), text.size());
}

/// Gives the result on, and keeps errno through the logging.
template <typename Line>
long done(long result, Line line) {
    const int error = errno;
    if (result >= 0 && std::getenv("CRASH_LOG") != nullptr) log(line());
    errno = error;
    return result;
}

int openAt(int folder, const char* path, int flags, unsigned mode) {
    const bool changes = (flags & (createFlag | truncateFlag)) != 0;
    if (changes) count();
    const long fd = ::syscall(SYS_openat, folder, path, flags, mode);
    if (changes) done(fd, [&] { return "create\t" + pathAt(folder, path); });
    return static_cast<int>(fd);
}

unsigned modeFrom(int flags, va_list list) {
    return (flags & createFlag) != 0 ? va_arg(list, unsigned) : 0;
}

/// What the file that holds calls back says; empty without one.
std::string heldPlace(const char* file) {
    const long fd = ::syscall(SYS_openat, atWorkFolder, file, 0);
    if (fd < 0) return {};
    char text[4096];
    const long size = ::syscall(SYS_read, fd, text, sizeof text);
    ::syscall(SYS_close, fd);
    return {text, size > 0 ? static_cast<std::size_t>(size) : 0};
}

/// Called at the head of each call that writes to a file.
void waitWhileHeld(int fd) {
    static const char* const file = std::getenv("HOLD_FILE");
    if (file == nullptr || !isAtWork()) return;
    const int error = errno;
    const std::string path = pathOf(fd);
    for (std::string held = heldPlace(file); !held.empty() && path.starts_with(held);
         held = heldPlace(file)) {
        const std::string told = std::string(file) + ".held";
        ::syscall(SYS_close,
                  ::syscall(SYS_openat, atWorkFolder, told.c_str(), writeOnlyCreateAppend, 0600));
        const timespec pause{0, 2'000'000};
        ::syscall(SYS_nanosleep, &pause, nullptr);
    }
    errno = error;
}

long writeAt(int fd, const void* bytes, std::size_t size, long at) {
    const auto run = [&](std::size_t some) {
        return at < 0 ? ::syscall(SYS_write, fd, bytes, some)
                      : ::syscall(SYS_pwrite64, fd, bytes, some, at);
    };
    // What goes to the terminal or a pipe of the test changes no file.
    if (fd <= 2) return run(size);
    waitWhileHeld(fd);
    count();
    if (isTorn()) {
        run(size / 2);
        die();
    }
    return done(run(size), [&] { return "write\t" + pathOf(fd); });
}

int renameAt(int from, const char* old, int to, const char* fresh, unsigned flags) {
    count();
    return static_cast<int>(done(::syscall(SYS_renameat2, from, old, to, fresh, flags), [&] {
        return "rename\t" + pathAt(from, old) + "\t" + pathAt(to, fresh);
    }));
}

int unlinkAt(int folder, const char* path, int flags) {
    count();
    return static_cast<int>(done(::syscall(SYS_unlinkat, folder, path, flags),
                                 [&] { return "unlink\t" + pathAt(folder, path); }));
}

int truncate(int fd, long size) {
    count();
    return static_cast<int>(
        done(::syscall(SYS_ftruncate, fd, size), [&] { return "write\t" + pathOf(fd); }));
}

int flush(long number, int fd) {
    count();
    return static_cast<int>(done(::syscall(number, fd), [&] { return "flush\t" + pathOf(fd); }));
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const unsigned mode = modeFrom(flags, list);
    va_end(list);
    return openAt(atWorkFolder, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const unsigned mode = modeFrom(flags, list);
    va_end(list);
    return openAt(atWorkFolder, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const unsigned mode = modeFrom(flags, list);
    va_end(list);
    return openAt(folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const unsigned mode = modeFrom(flags, list);
    va_end(list);
    return openAt(folder, path, flags, mode);
}
long write(int fd, const void* bytes, std::size_t size) {
    return writeAt(fd, bytes, size, -1);
}
long pwrite(int fd, const void* bytes, std::size_t size, long at) {
    return writeAt(fd, bytes, size, at);
}
long pwrite64(int fd, const void* bytes, std::size_t size, long at) {
    return writeAt(fd, bytes, size, at);
}
int ftruncate(int fd, long size) noexcept {
    return truncate(fd, size);
}
int ftruncate64(int fd, long size) noexcept {
    return truncate(fd, size);
}
int rename(const char* from, const char* to) noexcept {
    return renameAt(atWorkFolder, from, atWorkFolder, to, 0);
}
int renameat(int a, const char* from, int b, const char* to) noexcept {
    return renameAt(a, from, b, to, 0);
}
int renameat2(int a, const char* from, int b, const char* to, unsigned flags) noexcept {
    return renameAt(a, from, b, to, flags);
}
int unlink(const char* path) noexcept {
    return unlinkAt(atWorkFolder, path, 0);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
    return unlinkAt(folder, path, flags);
}
int rmdir(const char* path) noexcept {
    return unlinkAt(atWorkFolder, path, removeFolderFlag);
}
int remove(const char* path) noexcept {
    const int result = unlinkAt(atWorkFolder, path, 0);
    return result != 0 && errno == EISDIR ? unlinkAt(atWorkFolder, path, removeFolderFlag) : result;
}
int symlink(const char* to, const char* path) noexcept {
    count();
    return static_cast<int>(done(::syscall(SYS_symlinkat, to, atWorkFolder, path),
                                 [&] { return std::string("create\t") + path; }));
}
int mkdir(const char* path, unsigned mode) noexcept {
    count();
    return static_cast<int>(done(::syscall(SYS_mkdirat, atWorkFolder, path, mode),
                                 [&] { return std::string("mkdir\t") + path; }));
}
int fsync(int fd) {
    return flush(SYS_fsync, fd);
}
int fdatasync(int fd) {
    return flush(SYS_fdatasync, fd);
}
int flock(int fd, int operation) noexcept {
    count();
    return static_cast<int>(::syscall(SYS_flock, fd, operation));
}
int utimensat(int folder, const char* path, const struct timespec* times, int flags) noexcept {
    count();
    return static_cast<int>(::syscall(SYS_utimensat, folder, path, times, flags));
}
long copy_file_range(int from, long* fromAt, int to, long* toAt, std::size_t size, unsigned flags) {
    waitWhileHeld(to);
    count();
    return done(::syscall(SYS_copy_file_range, from, fromAt, to, toAt, size, flags),
                [&] { return "write\t" + pathOf(to); });
}
int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list list;
    va_start(list, request);
    void* argument = va_arg(list, void*);
    va_end(list);
    if (request == cloneRequest) {
        waitWhileHeld(fd);
        count();
    }
    const long result = ::syscall(SYS_ioctl, fd, request, argument);
    if (request == cloneRequest) done(result, [&] { return "write\t" + pathOf(fd); });
    return static_cast<int>(result);
}

}  // extern "C"
