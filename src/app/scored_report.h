#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "app/app_model.h"

namespace marlet {
namespace Headless {

/// How one file of a known library came out: "RIGHT_NO_ASK", "RIGHT_BUT_ASKED", "WRONG_CERTAIN",
/// "ASKED_WRONG_GUESS", "ASKED_NO_MATCH".
std::string scoredClass(const ResolvedFile& file, bool right);

using Counts = std::map<std::string, int>;
/// "TOTAL N", a line "LABEL N" for each, an empty line, the rows. Without a line feed at the end.
std::string scoredText(std::size_t total, const std::vector<std::pair<std::string, int>>& labels,
                       const std::vector<std::string>& rows);

/// What the library's own order says against what was found, file by file.
std::string scoredReport(const AppModel& model);
/// Prints it and writes it; false when it couldn't be written.
bool writeScoredReport(const std::filesystem::path& to, const AppModel& model);

}  // namespace Headless
}  // namespace marlet
