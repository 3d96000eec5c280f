#include "support/private_bus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace {

constexpr const char* daemon = "/usr/bin/dbus-daemon";

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

/// Between the moment that its place is there and the moment that it takes callers, it refuses
/// them.
bool takesCallers(const std::filesystem::path& socketFile) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = socketFile.string();
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool taken =
        ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    return taken;
}

}  // namespace

std::optional<std::string> PrivateBus::missing() {
    if (!std::filesystem::exists(daemon)) return "no dbus-daemon on this machine";
    return std::nullopt;
}

PrivateBus::PrivateBus() {
    const std::filesystem::path socket = folder_ / "bus";
    std::string text = configuration;
    text.replace(text.find("%PATH%"), 6, socket.string());
    const std::filesystem::path file = folder_.write("bus.conf", std::string_view(text));
    bus_ = std::make_unique<Process>(
        daemon,
        std::vector<std::string>{"--config-file=" + file.string(), "--nofork", "--nopidfile"});
    for (int i = 0; i < 30000; i++) {
        if (takesCallers(socket)) return;
        if (bus_->hasEnded()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    throw std::runtime_error("no message bus: " + bus_->errors());
}

std::string PrivateBus::address() const {
    return "unix:path=" + (folder_ / "bus").string();
}

}  // namespace marlet::test
