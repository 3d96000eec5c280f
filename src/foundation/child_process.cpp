#include "foundation/child_process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <string_view>
#include <system_error>

namespace marlet {

namespace {

namespace fs = std::filesystem;

/// Secrets of this process that no media tool has any use for.
constexpr std::string_view withheld[] = {"MARLET_TMDB_TOKEN="};

[[noreturn]] void failWithSystemError(int error) {
    throw std::system_error(error, std::generic_category());
}

struct Pipe {
    FileHandle readEnd;
    FileHandle writeEnd;
};

/// Off the numbers 0 to 2, which are free when this process was started without them: what the
/// child puts there must not overwrite the pipe itself.
FileHandle awayFromStandardStreams(int fd) {
    FileHandle low(fd);
    if (fd > STDERR_FILENO) return low;
    FileHandle moved(::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!moved.isOpen()) failWithSystemError(errno);
    return moved;
}

Pipe makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) failWithSystemError(errno);
    FileHandle writeEnd(ends[1]);
    Pipe pipe;
    pipe.readEnd = awayFromStandardStreams(ends[0]);
    pipe.writeEnd = awayFromStandardStreams(writeEnd.release());
    return pipe;
}

/// No signal is delivered to this thread while it lives, nor to a child made meanwhile.
class AllSignalsBlocked {
public:
    AllSignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

/// What execve takes: pointers into texts that live elsewhere, and a null at the end.
class PointerList {
public:
    void add(const std::string& text) { add(const_cast<char*>(text.c_str())); }
    void add(char* text) {
        pointers_.back() = text;
        pointers_.push_back(nullptr);
    }
    char* const* get() const { return pointers_.data(); }

private:
    std::vector<char*> pointers_{nullptr};
};

PointerList commandLine(const fs::path& program, const std::vector<std::string>& arguments) {
    PointerList list;
    list.add(program.native());
    for (const std::string& argument : arguments) list.add(argument);
    return list;
}

/// Where programs keep what is theirs. Without the second kind those places lie in the home (XDG
/// Base Directory Specification).
constexpr std::string_view homes[] = {"HOME=", "TMPDIR="};
constexpr std::string_view placesOutsideHome[] = {
    "XDG_CONFIG_HOME=", "XDG_CACHE_HOME=", "XDG_DATA_HOME=", "XDG_STATE_HOME=", "XDG_RUNTIME_DIR="};

bool isOneOf(std::string_view entry, std::span<const std::string_view> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return entry.starts_with(name); });
}

/// What a tool with a home of its own is told instead of where the person's is.
std::vector<std::string> ownPlaces(const fs::path& home) {
    std::vector<std::string> entries;
    if (home.empty()) return entries;
    for (const std::string_view name : homes) entries.push_back(std::string(name) + home.string());
    return entries;
}

/// This process's environment with these entries in place of what they replace.
PointerList environmentForTools(const std::vector<std::string>& own) {
    PointerList list;
    for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
        const bool replaced =
            !own.empty() && (isOneOf(*entry, homes) || isOneOf(*entry, placesOutsideHome));
        if (!replaced && !isOneOf(*entry, withheld)) list.add(*entry);
    }
    for (const std::string& entry : own) list.add(entry);
    return list;
}

/// All that the child needs, made before the fork.
struct Launch {
    const char* program;
    char* const* arguments;
    char* const* environment;
    int output;
    int errorPipe;
    pid_t parent;
    const ToolSandbox& sandbox;
};

// --- In the child, between fork and exec. Other threads' locks stay locked here for ever, so only
// --- calls that are safe in a signal handler may be made: system calls, no memory, no exceptions.

/// As a program expects them when a shell starts it.
void resetSignals() {
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number) ::sigaction(number, &standard, nullptr);
    // It leads a group in the background of the terminal: a question to the person must fail
    // rather than stop it for good.
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGTTIN, &ignored, nullptr);
    ::sigaction(SIGTTOU, &ignored, nullptr);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// 0, or the system's error.
int setUp(const Launch& launch) {
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) return errno;
    // The parent may have died before the kernel knew that it matters.
    if (::getppid() != launch.parent) return ESRCH;
    if (::setpgid(0, 0) != 0) return errno;
    if (::dup2(launch.output, STDOUT_FILENO) < 0) return errno;
    if (::dup2(launch.output, STDERR_FILENO) < 0) return errno;
    // All of this program's descriptors are close-on-exec; those of libraries may not be.
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    // An image of the film's contents is nothing to leave on the disk.
    const rlimit none{0, 0};
    if (::setrlimit(RLIMIT_CORE, &none) != 0) return errno;
    resetSignals();
    return launch.sandbox.enter();
}

[[noreturn]] void becomeProgram(const Launch& launch) {
    int error = setUp(launch);
    if (error == 0) {
        ::execve(launch.program, launch.arguments, launch.environment);
        error = errno;
    }
    [[maybe_unused]] const ssize_t written = ::write(launch.errorPipe, &error, sizeof error);
    ::_exit(127);
}

// --- In the parent again.

/// Waits until the child has become the program (the pipe closes by itself) or has failed to.
int launchError(int errorPipe) {
    int error = 0;
    ssize_t size = 0;
    do size = ::read(errorPipe, &error, sizeof error);
    while (size < 0 && errno == EINTR);
    if (size < 0) return errno;
    return size == sizeof error ? error : 0;
}

}  // namespace

ChildProcess::ChildProcess(const fs::path& program, const std::vector<std::string>& arguments,
                           const ToolSandbox& sandbox) {
    try {
        launch(program, arguments, sandbox);
    } catch (...) {
        reap();
        throw;
    }
}

void ChildProcess::launch(const fs::path& program, const std::vector<std::string>& arguments,
                          const ToolSandbox& sandbox) {
    Pipe output = makePipe();
    Pipe errors = makePipe();
    if (::fcntl(output.readEnd.get(), F_SETFL, O_NONBLOCK) != 0) failWithSystemError(errno);
    const PointerList commands = commandLine(program, arguments);
    const std::vector<std::string> own = ownPlaces(sandbox.home());
    const PointerList environment = environmentForTools(own);
    const Launch launch{program.c_str(),
                        commands.get(),
                        environment.get(),
                        output.writeEnd.get(),
                        errors.writeEnd.get(),
                        ::getpid(),
                        sandbox};
    {
        const AllSignalsBlocked blocked;
        pid_ = ::fork();
        if (pid_ == 0) becomeProgram(launch);
    }
    if (pid_ < 0) failWithSystemError(errno);
    errors.writeEnd.close();
    if (const int error = launchError(errors.readEnd.get()); error != 0) failWithSystemError(error);
    output_ = std::move(output.readEnd);
    // None on an old kernel, where waiting is coarser.
    end_ = FileHandle(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
}

ChildProcess::~ChildProcess() {
    reap();
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds atMost) {
    if (pid_ < 0) return true;
    pollfd end{end_.get(), POLLIN, 0};
    ::poll(&end, 1, static_cast<int>(atMost.count()));
    siginfo_t seen{};
    // Only looked at: until it is reaped, its number can't come to mean another process.
    const int result = ::waitid(P_PID, static_cast<id_t>(pid_), &seen, WEXITED | WNOHANG | WNOWAIT);
    if (result == 0 && seen.si_pid == 0) return false;
    reap();
    return true;
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0) ::kill(-pid_, number);
}

void ChildProcess::terminate(std::chrono::milliseconds grace) {
    signal(SIGTERM);
    signal(SIGCONT);  // a stopped process sees SIGTERM only once it goes on
    if (!waitForEnd(grace)) reap();
}

void ChildProcess::reap() {
    if (pid_ < 0) return;
    // The whole group: what the program started must not outlive it, and ends here at the latest.
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);  // before it leads a group of its own
    int status = 0;
    pid_t reaped = 0;
    do reaped = ::waitpid(pid_, &status, 0);
    while (reaped < 0 && errno == EINTR);
    if (reaped == pid_) status_ = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
    pid_ = -1;
}

}  // namespace marlet
