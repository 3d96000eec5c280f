#pragma once

#include <string>
#include <vector>

namespace marlet {

/// The command line as the process got it, and whether nobody sits at the keyboard.
namespace RunMode {

/// Called once at the start of main with the arguments behind the program's name.
void setArguments(std::vector<std::string> arguments);
const std::vector<std::string>& arguments();
/// Whether an option of that name was given, whatever its value: the name ends at the first "=".
bool hasArgument(const std::string& name);

/// True when MARLET_NO_KEYCHAIN is "1" or any argument starts with "--".
/// Computed once on first use; setArguments makes it be computed anew.
bool automated();

}  // namespace RunMode
}  // namespace marlet
