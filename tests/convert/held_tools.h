#pragma once

#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace marlet::test {

/// Marlet's own media tools in the helpers folder, where one call waits at its start: the first
/// whose arguments hold a text. It waits until `act` has been called, which happens on a thread of
/// its own with the waiting process, and goes on then; a stopped one once it is continued.
class HeldTools {
public:
    HeldTools(const std::filesystem::path& helpers, std::string text,
              std::function<void(pid_t tool)> act);
    /// Ends the waiting, when the call never came.
    ~HeldTools();
    HeldTools(const HeldTools&) = delete;
    HeldTools& operator=(const HeldTools&) = delete;

    bool wasHeld() const { return held_ != 0; }

private:
    std::string text_;
    std::atomic<pid_t> held_{0};
    std::jthread thread_;
};

/// The letter of a process's state as the kernel tells it ("T" is stopped); 0: there is none.
char stateOf(pid_t process);
/// Polls until it holds; false after ten seconds, which is far beyond what anything here takes.
bool waitFor(const std::function<bool()>& condition);

}  // namespace marlet::test
