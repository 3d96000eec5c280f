#pragma once

#include <filesystem>

namespace marlet {

/// Records once per process and path that a media tool is run: in the system log and "tools.log".
namespace ToolLog {
void noteOnce(const std::filesystem::path& tool);
}

}  // namespace marlet
