#include "app/build_info.h"

#include "foundation/syscalls.h"

namespace marlet::BuildInfo {

std::string version() {
    return MARLET_VERSION;
}

std::string build() {
    return MARLET_BUILD;
}

std::string versionLine() {
    return "Version " + version() + " (build " + build() + ")";
}

std::optional<Moment> builtDate(const std::filesystem::path& program) {
    const auto found = Sys::stat(program);
    if (!found) return std::nullopt;
    return std::chrono::floor<std::chrono::seconds>(found->mtime);
}

std::string builtLine(const std::filesystem::path& program) {
    const auto date = builtDate(program);
    return date ? "Built " + Dates::local(*date, "MMMM d, yyyy") : "Build date unknown";
}

}  // namespace marlet::BuildInfo
