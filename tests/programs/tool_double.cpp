// Stands in for a media tool: does what its arguments say, one after the other, and tells how each
// went ("read: ok", "read: EACCES").
//   print TEXT, complain TEXT      on standard output, on standard error
//   exit N, die SIGNAL             the end
//   read P, list P, append P, create P, truncate P, cut P, rewrite P, remove P, folder P, chmod P,
//   run P link P TO, symlink P TO, rename P TO ready P                        writes its process id
//   to the file P hold                           waits for a signal for ever await P waits until
//   the file P is there count                          from now on counts SIGCONT; "counted" tells
//   deaf                           from now on ignores SIGTERM
//   env NAME, status FIELD, descriptors, signals, thread, socket, bus, namespace, reach PID, peek
//   PID child P                        starts a process that writes its id to P and holds stray
//   leaves a process that keeps the output open, out of every group
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Text = std::string;

volatile sig_atomic_t continued = 0;

int closed(int fd) {
    return fd < 0 ? -1 : ::close(fd);
}

int canOpen(const Text& path, int flags) {
    return closed(::open(path.c_str(), flags | O_CLOEXEC, 0644));
}

int ready(const Text& path) {
    // In one step, so that nobody reads half of it.
    const Text unfinished = path + ".new";
    std::ofstream(unfinished) << ::getpid();
    return ::rename(unfinished.c_str(), path.c_str());
}

[[noreturn]] void hold() {
    for (;;) ::pause();
}

int awaitFile(const Text& path) {
    while (!fs::exists(path)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return 0;
}

int listFolder(const Text& path) {
    DIR* const folder = ::opendir(path.c_str());
    return folder == nullptr ? -1 : ::closedir(folder);
}

int print(int stream, const Text& text) {
    return ::write(stream, text.data(), text.size()) < 0 ? -1 : 0;
}

int showEnvironment(const Text& name) {
    const char* const value = std::getenv(name.c_str());
    return print(1, name + "=" + (value == nullptr ? "(none)" : value) + "\n");
}

int showStatus(const Text& field) {
    std::ifstream status("/proc/self/status");
    for (Text line; std::getline(status, line);) {
        if (line.starts_with(field + ":")) return print(1, line + "\n");
    }
    return -1;
}

int showDescriptors(const Text&) {
    for (int fd = 0; fd < 1024; ++fd) {
        if (::fcntl(fd, F_GETFD) >= 0) print(1, "fd " + std::to_string(fd) + "\n");
    }
    return 0;
}

int showSignals(const Text&) {
    for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGCHLD}) {
        struct sigaction now {};
        ::sigaction(number, nullptr, &now);
        if (now.sa_handler != SIG_DFL) print(1, "not standard: " + std::to_string(number) + "\n");
    }
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < 32; ++number) {
        if (::sigismember(&blocked, number) == 1) print(1, "blocked\n");
    }
    return 0;
}

int startChild(const Text& path) {
    const pid_t child = ::fork();
    if (child != 0) return child < 0 ? -1 : 0;
    ready(path);
    hold();
}

int leaveStray(const Text&) {
    const pid_t child = ::fork();
    if (child != 0) return child < 0 ? -1 : 0;
    ::setsid();
    ::alarm(60);  // not for ever
    hold();
}

int startThread(const Text&) {
    std::thread([] {}).join();
    return 0;
}

int peek(const Text& pid) {
    char byte = 0;
    iovec here{&byte, 1};
    iovec there{&byte, 1};  // an address that means something in this process at least
    return ::process_vm_readv(std::atoi(pid.c_str()), &here, 1, &there, 1, 0) < 0 ? -1 : 0;
}

const std::map<Text, std::function<int(const Text&)>> withOne = {
    {"print", [](const Text& text) { return print(1, text); }},
    {"complain", [](const Text& text) { return print(2, text); }},
    {"read", [](const Text& path) { return canOpen(path, O_RDONLY); }},
    {"list", listFolder},
    {"append", [](const Text& path) { return canOpen(path, O_WRONLY | O_APPEND); }},
    {"create", [](const Text& path) { return canOpen(path, O_WRONLY | O_CREAT | O_EXCL); }},
    {"truncate", [](const Text& path) { return ::truncate(path.c_str(), 0); }},
    {"cut", [](const Text& path) { return canOpen(path, O_RDONLY | O_TRUNC); }},
    {"rewrite", [](const Text& path) { return canOpen(path, O_WRONLY | O_TRUNC); }},
    {"remove", [](const Text& path) { return ::unlink(path.c_str()); }},
    {"folder", [](const Text& path) { return ::mkdir(path.c_str(), 0700); }},
    {"chmod", [](const Text& path) { return ::chmod(path.c_str(), 0777); }},
    {"run",
     [](const Text& path) { return ::execl(path.c_str(), path.c_str(), "print", "ran", nullptr); }},
    {"ready", ready},
    {"await", awaitFile},
    {"env", showEnvironment},
    {"status", showStatus},
    {"child", startChild},
    {"reach", [](const Text& pid) { return ::kill(std::atoi(pid.c_str()), 0); }},
    {"peek", peek},
    {"exit", [](const Text& status) -> int { ::_exit(std::atoi(status.c_str())); }},
    {"die", [](const Text& number) { return ::raise(std::atoi(number.c_str())); }},
};

const std::map<Text, std::function<int(const Text&)>> withNone = {
    {"hold", [](const Text&) -> int { hold(); }},
    {"count",
     [](const Text&) {
         return ::signal(SIGCONT, [](int) { continued = continued + 1; }) == SIG_ERR;
     }},
    {"counted",
     [](const Text&) { return print(1, "continued " + std::to_string(continued) + "\n"); }},
    {"deaf", [](const Text&) { return ::signal(SIGTERM, SIG_IGN) == SIG_ERR ? -1 : 0; }},
    {"descriptors", showDescriptors},
    {"signals", showSignals},
    {"thread", startThread},
    {"socket", [](const Text&) { return closed(::socket(AF_INET, SOCK_STREAM, 0)); }},
    {"bus", [](const Text&) { return closed(::socket(AF_UNIX, SOCK_STREAM, 0)); }},
    {"namespace", [](const Text&) { return ::unshare(CLONE_NEWUSER); }},
    {"stray", leaveStray},
};

const std::map<Text, std::function<int(const Text&, const Text&)>> withTwo = {
    {"link", [](const Text& from, const Text& to) { return ::link(from.c_str(), to.c_str()); }},
    {"symlink",
     [](const Text& from, const Text& to) { return ::symlink(from.c_str(), to.c_str()); }},
    {"rename", [](const Text& from, const Text& to) { return ::rename(from.c_str(), to.c_str()); }},
};

void tell(const Text& verb, int result) {
    static const Text quiet[] = {"print", "complain"};
    for (const Text& one : quiet) {
        if (verb == one) return;
    }
    print(1, verb + ": " + (result == 0 ? "ok" : ::strerrorname_np(errno)) + "\n");
}

}  // namespace

int main(int count, char** arguments) {
    for (int at = 1; at < count; ++at) {
        const Text verb = arguments[at];
        const int left = count - at - 1;
        errno = 0;
        if (const auto none = withNone.find(verb); none != withNone.end()) {
            tell(verb, none->second({}));
        } else if (const auto one = withOne.find(verb); one != withOne.end() && left >= 1) {
            tell(verb, one->second(arguments[at + 1]));
            at += 1;
        } else if (const auto two = withTwo.find(verb); two != withTwo.end() && left >= 2) {
            tell(verb, two->second(arguments[at + 1], arguments[at + 2]));
            at += 2;
        } else {
            std::cerr << "tool_double: what is " << verb << "?\n";
            return 64;
        }
    }
    return 0;
}
