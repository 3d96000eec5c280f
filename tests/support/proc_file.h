#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace marlet::test {

/// What the kernel tells of a process in one of its files ("cmdline", "status"); empty when there
/// is no such process, or no longer.
std::string procFile(pid_t process, const std::string& name);
/// Its arguments, each followed by a blank.
std::string commandLineOf(pid_t process);
std::vector<pid_t> allProcesses();

}  // namespace marlet::test
