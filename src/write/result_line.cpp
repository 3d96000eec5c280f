#include "write/result_line.h"

#include <optional>

#include "foundation/text.h"

namespace marlet {

namespace {

std::string seconds(const std::optional<double>& value) {
    return value ? Text::fixed(*value, 2) : "-";
}

}  // namespace

std::string resultLine(const std::string& state, const std::string& label,
                       const WriteOutcome& outcome) {
    std::string line = "RESULT " + state + ": " + label + " | " + outcome.message +
                       " | layout before " + seconds(outcome.before) + " after " +
                       seconds(outcome.after);
    if (!outcome.changes.empty()) line += " | " + Text::join(outcome.changes, "; ");
    // Titles may hold line ends, and a script reads line by line.
    for (char& each : line)
        if (each == '\n' || each == '\r') each = ' ';
    return line;
}

}  // namespace marlet
