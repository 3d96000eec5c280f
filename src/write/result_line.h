#pragma once

#include <string>

#include "write/write_request.h"

namespace marlet {

/// One line for scripts, without its line feed:
/// "RESULT done: Alien | Details written | layout before 0.50 after 0.50 | title: A → B; ...".
/// The last field is there only when something changed.
std::string resultLine(const std::string& state, const std::string& label,
                       const WriteOutcome& outcome);

}  // namespace marlet
