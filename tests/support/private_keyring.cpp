#include "support/private_keyring.h"

#include <chrono>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* daemon = "/usr/bin/dbus-daemon";

/// Nothing of the machine's is started on it: it knows no services but those that come by.
constexpr const char* configuration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%PATH%</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

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
    if (!fs::exists(daemon)) return "no dbus-daemon on this machine";
    if (!isInstalled("libsecret-1.so.0")) return "no libsecret on this machine";
    return std::nullopt;
}

PrivateKeyring::PrivateKeyring(const std::vector<std::string>& arguments) {
    const fs::path socket = folder_ / "bus";
    std::string text = configuration;
    text.replace(text.find("%PATH%"), 6, socket.string());
    const fs::path file = folder_.write("bus.conf", std::string_view(text));
    bus_ = std::make_unique<Process>(
        daemon,
        std::vector<std::string>{"--config-file=" + file.string(), "--nofork", "--nopidfile"});
    waitUntil([&] { return fs::exists(socket) || bus_->hasEnded(); }, "no message bus");
    keyring_ = std::make_unique<Process>(builtProgram("secret_service"), arguments, environment());
    waitUntil([&] { return !calls().empty() || keyring_->hasEnded(); }, "no keyring");
    if (keyring_->hasEnded())
        throw std::runtime_error("no keyring: " + keyring_->errors() + bus_->errors());
}

std::map<std::string, std::string> PrivateKeyring::environment() const {
    return {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder_ / "bus").string()}};
}

std::vector<std::string> PrivateKeyring::calls() const {
    std::vector<std::string> names;
    std::istringstream output(keyring_->output());
    for (std::string line; std::getline(output, line);) names.push_back(line);
    return names;
}

}  // namespace marlet::test
