#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/private_bus.h"
#include "support/process.h"

namespace marlet::test {

/// A message bus of its own with a keyring on it that lives as long as this: programs that get its
/// environment find it where they look for the person's.
class PrivateKeyring {
public:
    /// With {"--locked"}, one that gives and takes nothing.
    explicit PrivateKeyring(const std::vector<std::string>& arguments = {});
    PrivateKeyring(const PrivateKeyring&) = delete;
    PrivateKeyring& operator=(const PrivateKeyring&) = delete;

    /// Why there can be none on this machine; nothing when there can.
    static std::optional<std::string> missing();
    std::map<std::string, std::string> environment() const;
    /// What it was asked so far, by the names of the calls.
    std::vector<std::string> calls() const;

private:
    PrivateBus bus_;
    std::unique_ptr<Process> keyring_;
};

}  // namespace marlet::test
