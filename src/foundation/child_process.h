#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/syscalls.h"
#include "foundation/tool_sandbox.h"

namespace marlet {

/// One running program: standard output and standard error are one pipe, standard input and the
/// working folder are this process's own. It leads a process group, so that what it starts itself
/// is paused and ended with it, and it dies with this process. Used by one thread, which must
/// outlive it (the kernel ties a child to the thread that made it).
class ChildProcess {
public:
    /// Returns once the program runs in its sandbox. Throws std::system_error with the system's
    /// error when it can't be started.
    ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const ToolSandbox& sandbox);
    /// Kills what still runs, and reaps it.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The read end of the pipe; reading it doesn't block.
    int output() const { return output_.get(); }
    pid_t pid() const { return pid_; }

    /// Waits for the end, at most so long; true when the program has ended.
    bool waitForEnd(std::chrono::milliseconds atMost);
    /// To the program and what it started; nothing once it has ended.
    void signal(int number) const;
    /// SIGTERM, also when it is stopped; SIGKILL if it doesn't heed it. Returns after its end.
    void terminate(std::chrono::milliseconds grace = std::chrono::seconds(5));
    /// After the end: the exit status, or the number of the signal that ended it.
    int status() const { return status_; }

private:
    void launch(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                const ToolSandbox& sandbox);
    void reap();

    FileHandle output_;
    FileHandle end_;  // a pidfd: becomes readable when the program ends
    pid_t pid_ = -1;  // -1 once reaped
    int status_ = -1;
};

}  // namespace marlet
