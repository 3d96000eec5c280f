// Runs a program and tells what it cost, in lines of "name value":
//
//   io_of RESULT PROGRAM [ARGUMENT...]
//
//   wall_ms, user_ms, system_ms   time, the children that the program waited for included
//   peak_kib                      the most memory that it or one of those children has held
//   rchar, wchar                  bytes that passed through its read and write calls
//   read_bytes, write_bytes       bytes that the disk had to move for it
//
// The exit status is that of the program. The kernel's counts (proc(5), /proc/PID/io) are those of
// the process until it is reaped, so they are read while it is a zombie.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
constexpr int unusable = 125;  // as env(1) and timeout(1) have it

struct Cost {
    double wallMs = 0;
    rusage used{};
    std::map<std::string, unsigned long long> io;
    int status = 0;
};

[[noreturn]] void failWith(const std::string& phrase, int error) {
    throw std::runtime_error(phrase + ": " + std::strerror(error));
}

pid_t start(char** arguments) {
    pid_t pid = -1;
    if (const int error = posix_spawnp(&pid, arguments[0], nullptr, nullptr, arguments, environ))
        failWith(std::string("cannot start ") + arguments[0], error);
    return pid;
}

void waitForZombie(pid_t pid) {
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOWAIT) != 0)
        if (errno != EINTR) failWith("cannot wait", errno);
}

std::map<std::string, unsigned long long> countsIn(std::ifstream& file) {
    std::map<std::string, unsigned long long> counts;
    std::string name;
    for (unsigned long long value = 0; file >> name >> value;)
        counts[name.substr(0, name.size() - 1)] = value;
    if (counts.empty()) throw std::runtime_error("this kernel does not count a process's bytes");
    return counts;
}

Cost run(char** arguments) {
    Cost cost;
    const auto began = Clock::now();
    const pid_t pid = start(arguments);
    // A zombie's counts belong to root: the file is opened while the program lives.
    std::ifstream counts("/proc/" + std::to_string(pid) + "/io");
    waitForZombie(pid);
    cost.wallMs = std::chrono::duration<double, std::milli>(Clock::now() - began).count();
    cost.io = countsIn(counts);
    if (wait4(pid, &cost.status, 0, &cost.used) != pid) failWith("cannot reap", errno);
    return cost;
}

double milliseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

void write(const Cost& cost, const std::string& file) {
    std::ofstream out(file);
    out << std::fixed;
    out.precision(3);
    out << "wall_ms " << cost.wallMs << "\nuser_ms " << milliseconds(cost.used.ru_utime)
        << "\nsystem_ms " << milliseconds(cost.used.ru_stime) << "\npeak_kib "
        << cost.used.ru_maxrss << '\n';
    for (const char* name : {"rchar", "wchar", "read_bytes", "write_bytes"})
        out << name << ' ' << cost.io.at(name) << '\n';
    out.close();
    if (!out) throw std::runtime_error("cannot write " + file);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::cerr << "usage: io_of RESULT PROGRAM [ARGUMENT...]\n";
        return unusable;
    }
    try {
        const Cost cost = run(arguments + 2);
        write(cost, arguments[1]);
        return WIFEXITED(cost.status) ? WEXITSTATUS(cost.status) : 128 + WTERMSIG(cost.status);
    } catch (const std::exception& error) {
        std::cerr << "io_of: " << error.what() << '\n';
        return unusable;
    }
}
