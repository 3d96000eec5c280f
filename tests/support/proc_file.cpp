#include "support/proc_file.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace marlet::test {

namespace fs = std::filesystem;

std::string procFile(pid_t process, const std::string& name) {
    const std::ifstream file("/proc/" + std::to_string(process) + "/" + name);
    std::ostringstream text;
    // A process that ends meanwhile gives a failing read, which ends the text.
    text << file.rdbuf();
    return text.str();
}

std::string commandLineOf(pid_t process) {
    std::string line = procFile(process, "cmdline");
    std::ranges::replace(line, '\0', ' ');
    return line;
}

std::vector<pid_t> allProcesses() {
    std::vector<pid_t> processes;
    std::error_code failed;
    for (fs::directory_iterator each("/proc", failed), end; !failed && each != end;
         each.increment(failed)) {
        const pid_t process = std::atoi(each->path().filename().c_str());
        if (process > 0) processes.push_back(process);
    }
    return processes;
}

}  // namespace marlet::test
