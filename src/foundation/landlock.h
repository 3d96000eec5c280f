#pragma once

#include <cstdint>

/// The kernel's interface to Landlock. The distribution's header may be older than the kernel, so
/// what it knows is told here (Linux, include/uapi/linux/landlock.h, versions 1 to 7).
namespace marlet::Landlock {

// Rights over files.
inline constexpr std::uint64_t execute = 1U << 0;
inline constexpr std::uint64_t writeFile = 1U << 1;
inline constexpr std::uint64_t readFile = 1U << 2;
inline constexpr std::uint64_t readFolder = 1U << 3;
inline constexpr std::uint64_t removeFolder = 1U << 4;
inline constexpr std::uint64_t removeFile = 1U << 5;
inline constexpr std::uint64_t makeCharacterDevice = 1U << 6;
inline constexpr std::uint64_t makeFolder = 1U << 7;
inline constexpr std::uint64_t makeFile = 1U << 8;
inline constexpr std::uint64_t makeSocket = 1U << 9;
inline constexpr std::uint64_t makeFifo = 1U << 10;
inline constexpr std::uint64_t makeBlockDevice = 1U << 11;
inline constexpr std::uint64_t makeLink = 1U << 12;
inline constexpr std::uint64_t moveBetweenFolders = 1U << 13;  // version 2
inline constexpr std::uint64_t truncate = 1U << 14;            // version 3
inline constexpr std::uint64_t controlDevice = 1U << 15;       // version 5

// Rights over the network (version 4).
inline constexpr std::uint64_t bindTcp = 1U << 0;
inline constexpr std::uint64_t connectTcp = 1U << 1;

// What stays within the sandbox (version 6).
inline constexpr std::uint64_t scopeAbstractSockets = 1U << 0;
inline constexpr std::uint64_t scopeSignals = 1U << 1;

/// All rights over files that a version knows.
constexpr std::uint64_t fileRights(int version) {
    if (version < 1) return 0;
    if (version < 2) return (moveBetweenFolders - 1);
    if (version < 3) return (truncate - 1);
    if (version < 5) return (controlDevice - 1);
    return (controlDevice << 1) - 1;
}

/// Those that a rule for a single file may name.
inline constexpr std::uint64_t rightsOverOneFile =
    execute | writeFile | readFile | truncate | controlDevice;

struct RulesetAttributes {
    std::uint64_t files = 0;
    std::uint64_t network = 0;  // version 4
    std::uint64_t scoped = 0;   // version 6
};

struct [[gnu::packed]] PathRule {
    std::uint64_t allowed = 0;
    std::int32_t folder = -1;
};

/// 0 where the kernel has no Landlock, or doesn't let it be used.
int version() noexcept;
/// A descriptor of a new set of rules; negative with errno.
int createRuleset(const RulesetAttributes& attributes, int version) noexcept;
/// Allows rights on what the descriptor names and all below it.
int addPath(int ruleset, int descriptor, std::uint64_t rights) noexcept;
/// For this thread and all that it starts, for good; needs no_new_privs.
int restrictSelf(int ruleset) noexcept;

}  // namespace marlet::Landlock
