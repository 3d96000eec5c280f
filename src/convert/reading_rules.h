#pragma once

#include <string>

/// Mends what the engine is known to mistake, letter for letter. Words come out as they went in
/// but for letters of the same shape; none is added.
namespace marlet::ReadingRules {

/// One line as read, for a recognition language ("en-US").
std::string mend(const std::string& line, const std::string& language);

}  // namespace marlet::ReadingRules
