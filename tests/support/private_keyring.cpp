#include "support/private_keyring.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

void waitUntil(const std::function<bool()>& reached, const std::string& what) {
    for (int i = 0; i < 30000; i++) {
        if (reached()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    throw std::runtime_error(what);
}

bool isInstalled(const std::string& library) {
    for (const char* folder : {"/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu",
                               "/usr/lib64", "/usr/lib", "/lib"})
        if (fs::exists(fs::path(folder) / library)) return true;
    return false;
}

}  // namespace

std::optional<std::string> PrivateKeyring::missing() {
    if (const auto why = PrivateBus::missing()) return why;
    if (!isInstalled("libsecret-1.so.0")) return "no libsecret on this machine";
    return std::nullopt;
}

PrivateKeyring::PrivateKeyring(const std::vector<std::string>& arguments) {
    keyring_ = std::make_unique<Process>(builtProgram("secret_service"), arguments, environment());
    waitUntil([&] { return !calls().empty() || keyring_->hasEnded(); }, "no keyring");
    if (keyring_->hasEnded())
        throw std::runtime_error("no keyring: " + keyring_->errors() + bus_.errors());
}

std::map<std::string, std::string> PrivateKeyring::environment() const {
    return {{"DBUS_SESSION_BUS_ADDRESS", bus_.address()}};
}

std::vector<std::string> PrivateKeyring::calls() const {
    std::vector<std::string> names;
    std::istringstream output(keyring_->output());
    for (std::string line; std::getline(output, line);) names.push_back(line);
    return names;
}

}  // namespace marlet::test
