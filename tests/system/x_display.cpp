#include "system/x_display.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace {

constexpr const char* program = "/usr/bin/Xvfb";

}  // namespace

std::optional<std::string> XDisplay::missing() {
    if (!std::filesystem::exists(program)) return "no Xvfb on this machine";
    return std::nullopt;
}

XDisplay::XDisplay()
    : server_(std::make_unique<Process>(
          program, std::vector<std::string>{"-displayfd", "1", "-screen", "0", "1280x900x24",
                                            "-nolisten", "tcp"})) {
    // It chooses a number that is free, and tells it when it listens.
    for (int i = 0; i < 30000; i++) {
        const std::string told = server_->output();
        if (const std::size_t end = told.find('\n'); end != std::string::npos) {
            name_ = ":" + told.substr(0, end);
            return;
        }
        if (server_->hasEnded()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    throw std::runtime_error("no X server: " + server_->errors());
}

}  // namespace marlet::test
