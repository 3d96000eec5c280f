#include "convert/held_tools.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <optional>

#include "support/proc_file.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds betweenLooks{5};
constexpr auto longest = std::chrono::seconds(10);

std::string field(const std::string& status, const std::string& name) {
    const std::size_t at = status.find("\n" + name + ":\t");
    if (at == std::string::npos) return "";
    const std::size_t from = at + name.size() + 3;
    return status.substr(from, status.find('\n', from) - from);
}

/// A script of ours only waits once it listens for the signal that lets it go.
bool listens(const std::string& status) {
    const std::string mask = field(status, "SigCgt");
    const unsigned long caught = std::strtoul(mask.c_str(), nullptr, 16);
    return (caught >> (SIGUSR1 - 1) & 1) != 0;
}

bool waits(pid_t process, const std::string& text) {
    const std::string status = procFile(process, "status");
    if (field(status, "PPid") != std::to_string(::getpid()) || !listens(status)) return false;
    const std::string line = commandLineOf(process);
    return line.starts_with("/bin/sh ") && line.find(text) != std::string::npos;
}

std::optional<pid_t> waitingChild(const std::string& text) {
    for (const pid_t process : allProcesses())
        if (waits(process, text)) return process;
    return std::nullopt;
}

/// A tool may read and run what stands in "lib" beside its own "bin". The one process that the
/// script starts is there before it waits: a shell that is stopped in the middle of a start never
/// shows itself as stopped. From then on it doesn't mind being told to go on once too often.
void putHeld(const fs::path& helpers, const std::string& name, const std::string& program,
             const std::string& text) {
    const fs::path real = helpers / "lib" / program;
    if (!fs::exists(real)) fs::copy_file(builtProgram(program), real);
    const fs::path script = helpers / "bin" / ("held-" + name);
    writeFile(script, viewOf("#!/bin/sh\ncase \"$*\" in *'" + text +
                             "'*)\n  sleep 600 >/dev/null 2>&1 & s=$!\n"
                             "  go=; trap 'go=1' USR1\n"
                             "  while [ -z \"$go\" ]; do wait $s; done\n"
                             "  trap '' USR1; kill $s ;;\nesac\n"
                             "exec '" +
                             real.string() + "' \"$@\"\n"));
    fs::permissions(script, fs::perms::owner_all);
    fs::remove(helpers / name);
    fs::create_symlink(script, helpers / name);
}

}  // namespace

HeldTools::HeldTools(const fs::path& helpers, std::string text, std::function<void(pid_t tool)> act)
    : text_(std::move(text)) {
    fs::create_directories(helpers / "bin");
    fs::create_directories(helpers / "lib");
    putHeld(helpers, "MP4Box", "marlet-mux", text_);
    putHeld(helpers, "gpac", "marlet-audio", text_);
    thread_ = std::jthread([this, action = std::move(act)](const std::stop_token& stop) {
        while (!stop.stop_requested() && held_ == 0) {
            if (const auto process = waitingChild(text_)) held_ = *process;
            std::this_thread::sleep_for(betweenLooks);
        }
        if (held_ == 0) return;
        action(held_);
        // Told just before it waits, it would not wake.
        while (!stop.stop_requested() && waits(held_, text_)) {
            ::kill(held_, SIGUSR1);
            std::this_thread::sleep_for(betweenLooks);
        }
    });
}

HeldTools::~HeldTools() = default;

char stateOf(pid_t process) {
    const std::string state = field(procFile(process, "status"), "State");
    return state.empty() ? '\0' : state.front();
}

bool waitFor(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(betweenLooks);
    }
    return true;
}

}  // namespace marlet::test
