#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "foundation/dates.h"

namespace marlet {

/// Which build of the program this is.
namespace BuildInfo {

std::string version();      ///< "0.1.0"
std::string build();        ///< a number that grows from build to build, "0" when none is known
std::string versionLine();  ///< "Version 0.1.0 (build 612)"

/// When the program's file was made, which is what a package keeps; nothing without that file.
std::optional<Moment> builtDate(const std::filesystem::path& program = "/proc/self/exe");
/// "Built November 21, 2026", or "Build date unknown".
std::string builtLine(const std::filesystem::path& program = "/proc/self/exe");

}  // namespace BuildInfo
}  // namespace marlet
