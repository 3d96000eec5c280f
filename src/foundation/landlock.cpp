#include "foundation/landlock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace marlet::Landlock {

namespace {

constexpr std::uint32_t askForVersion = 1U << 0;
constexpr int pathBeneath = 1;

/// An older kernel takes the head of the record that it knows.
std::size_t sizeFor(int version) {
    if (version < 4) return offsetof(RulesetAttributes, network);
    if (version < 6) return offsetof(RulesetAttributes, scoped);
    return sizeof(RulesetAttributes);
}

}  // namespace

int version() noexcept {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, askForVersion);
    return version > 0 ? static_cast<int>(version) : 0;
}

int createRuleset(const RulesetAttributes& attributes, int version) noexcept {
    return static_cast<int>(
        ::syscall(SYS_landlock_create_ruleset, &attributes, sizeFor(version), 0));
}

int addPath(int ruleset, int descriptor, std::uint64_t rights) noexcept {
    const PathRule rule{rights, descriptor};
    return static_cast<int>(::syscall(SYS_landlock_add_rule, ruleset, pathBeneath, &rule, 0));
}

int restrictSelf(int ruleset) noexcept {
    return static_cast<int>(::syscall(SYS_landlock_restrict_self, ruleset, 0));
}

}  // namespace marlet::Landlock
