#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace marlet::test {

/// One run of a real program, its output kept in files so that nothing can block.
class Process {
public:
    /// The environment is this one's with the given variables set over it.
    Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& environment = {});
    /// Kills what still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The exit status, or 128 plus the signal. Throws when it hasn't ended after the time.
    int wait(std::chrono::seconds atMost = std::chrono::seconds(60));
    bool hasEnded();
    void signal(int number) const;
    pid_t pid() const { return pid_; }
    std::string output() const;
    std::string errors() const;

private:
    TempFolder folder_;
    pid_t pid_ = -1;
    int status_ = 0;
    bool ended_ = false;
};

}  // namespace marlet::test
