#pragma once

#include <filesystem>
#include <string>

namespace marlet {

/// Appends a line to a log file, whose folder is made if needed. Never fails: a log that can't be
/// written must not stop the work that it tells of.
void appendToLog(const std::filesystem::path& file, const std::string& line) noexcept;

}  // namespace marlet
