#pragma once

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/tool_runner.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// Waits until it holds; false after half a minute.
template <class Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// The stand-in for a media tool, with a folder that it may write.
class ToolDouble {
public:
    using Arguments = std::vector<std::string>;

    TempFolder folder;
    RunControl control;

    static std::filesystem::path program() { return builtProgram("tool_double"); }

    std::string run(const Arguments& arguments, const Progress& progress = {}) {
        return ToolRunner::run(program(), arguments, confinement(), control, progress);
    }
    ToolRunner::Confinement confinement() const {
        return {.reads = reads_, .writes = {folder.path()}};
    }
    void mayRead(std::filesystem::path path) { reads_.push_back(std::move(path)); }

    std::string in(const std::string& name) const { return (folder / name).string(); }

    /// The process id that "ready NAME" or "child NAME" wrote; 0 when it never came.
    pid_t processOf(const std::string& name) const {
        pid_t pid = 0;
        eventually([&] { return static_cast<bool>(std::ifstream(in(name)) >> pid); });
        return pid;
    }
    void signal(const std::string& name) const { folder.write(name, std::string_view()); }

private:
    std::vector<std::filesystem::path> reads_;
};

/// 'R', 'S', 'T' (stopped), 'Z'; 0 for a process that is gone.
inline char stateOf(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string number;
    std::string name;
    char state = 0;
    stat >> number >> name >> state;
    return state;
}

inline bool isGone(pid_t pid) {
    const char state = stateOf(pid);
    return state == 0 || state == 'Z' || state == 'X';
}

}  // namespace marlet::test
