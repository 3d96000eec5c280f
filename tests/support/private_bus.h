#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// A message bus of its own that lives as long as this. It starts nothing: it knows no services but
/// those that come by.
class PrivateBus {
public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Why there can be none on this machine; nothing when there can.
    static std::optional<std::string> missing();
    /// As in DBUS_SESSION_BUS_ADDRESS.
    std::string address() const;
    std::string errors() const { return bus_->errors(); }

private:
    TempFolder folder_;
    std::unique_ptr<Process> bus_;
};

}  // namespace marlet::test
