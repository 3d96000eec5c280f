#include <algorithm>
#include <system_error>

#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "write/guards.h"

namespace marlet::WriteGuard {

namespace fs = std::filesystem;

namespace {

/// Without symbolic links, as far as the path exists.
fs::path resolved(const fs::path& path) {
    std::error_code failed;
    const fs::path real = fs::weakly_canonical(path, failed);
    return Paths::standardised(failed ? path : real);
}

bool isInMediaLibrary(const fs::path& path) {
    // Whole components: "Media Library Copy" is another folder.
    return std::ranges::any_of(resolved(path),
                               [](const fs::path& part) { return part == "Media Library"; });
}

}  // namespace

void check(const fs::path& path) {
    if (!isInMediaLibrary(path)) return;
    // No setting lets a script change a library.
    const bool isAllowed = !RunMode::automated() &&
                           Preferences::current().boolean("allowLibraryWrites").value_or(false);
    if (!isAllowed)
        throw MFError(
            "This file is in your Media Library and “Allow changes to my Media Library” is off in "
            "Settings");
}

}  // namespace marlet::WriteGuard
