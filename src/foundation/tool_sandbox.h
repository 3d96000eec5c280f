#pragma once

#include <cstdint>
#include <filesystem>

#include "foundation/syscalls.h"
#include "foundation/tool_runner.h"

namespace marlet {

/// What keeps a media tool, which reads files from anywhere, away from all that it has no business
/// with. Made ready in the parent, put on in the child.
///
/// Files: Landlock, where the kernel has it. Programs, libraries and their data can be read, what
/// the confinement names can be read or written, nothing else can be opened at all. Network,
/// signals and sockets of other processes: Landlock again, as far as the kernel goes, and a filter
/// of system calls. A path that can't be opened gives no rule: the tool then fails on it by itself.
class ToolSandbox {
public:
    /// Throws std::system_error when the kernel has Landlock and refuses it, or the home can't be
    /// made.
    ToolSandbox(const std::filesystem::path& tool, const ToolRunner::Confinement& confinement);

    /// The tool's own home; empty without.
    const std::filesystem::path& home() const { return home_; }

    /// In the child, between fork and exec: system calls only. 0, or the system's error.
    int enter() const noexcept;

    /// The version of Landlock that the kernel offers, 0 without.
    static int landlockVersion();

private:
    void allowSystem();
    void allowTool(const std::filesystem::path& tool);
    void allow(const std::filesystem::path& path, std::uint64_t rights);

    std::filesystem::path home_;
    std::uint64_t handled_ = 0;  // the rights over files that the kernel knows
    FileHandle rules_;           // closed without Landlock
};

}  // namespace marlet
