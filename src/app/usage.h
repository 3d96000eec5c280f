#pragma once

#include <optional>
#include <string>
#include <vector>

namespace marlet {

/// What the program tells of itself.
namespace Usage {

struct Line {
    std::string option;   ///< "--scan"; empty: the line is a heading
    std::string value;    ///< "PATH"; empty for a flag. A leading "=" is part of the option.
    std::string meaning;  ///< or the heading's words
};
/// Every option for people, under headings.
const std::vector<Line>& lines();
/// The answer to "--help".
std::string help();
/// The answer to "--version".
std::string version();
/// What "--help" or "--version" among the arguments asks for, which nothing else may precede: no
/// event loop, no folder, no stored setting.
std::optional<std::string> answerAtOnce(const std::vector<std::string>& arguments);

}  // namespace Usage
}  // namespace marlet
