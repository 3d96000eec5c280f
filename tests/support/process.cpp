#include "support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace marlet::test {

namespace {

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& over) {
    std::vector<std::string> all;
    for (char** each = environ; *each != nullptr; each++) {
        const std::string variable = *each;
        if (!over.contains(variable.substr(0, variable.find('=')))) all.push_back(variable);
    }
    for (const auto& [name, value] : over) all.push_back(name + "=" + value);
    return all;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (std::string& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

}  // namespace

Process::Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment) {
    std::vector<std::string> all = {program.string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentWith(environment);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, 1, (folder_ / "out").c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, (folder_ / "err").c_str(), flags, 0600);
    const int failed = posix_spawn(&pid_, program.c_str(), &actions, nullptr, pointers(all).data(),
                                   pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0)
        throw std::runtime_error("cannot run " + program.string() + ": " + std::strerror(failed));
}

Process::~Process() {
    if (hasEnded()) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

bool Process::hasEnded() {
    if (ended_) return true;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_) return false;
    ended_ = true;
    status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return true;
}

int Process::wait(std::chrono::seconds atMost) {
    const auto until = std::chrono::steady_clock::now() + atMost;
    while (!hasEnded()) {
        if (std::chrono::steady_clock::now() > until)
            throw std::runtime_error("a program did not end in time; it said: " + output() +
                                     errors());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return status_;
}

void Process::signal(int number) const {
    kill(pid_, number);
}

std::string Process::output() const {
    return textOf(readFile(folder_ / "out"));
}
std::string Process::errors() const {
    return textOf(readFile(folder_ / "err"));
}

}  // namespace marlet::test
