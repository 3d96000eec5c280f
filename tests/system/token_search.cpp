#include "system/token_search.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// proc(5): "pid (name) state ppid ..."; the name may hold anything, a bracket too.
pid_t parentOf(const fs::path& folder) {
    const std::string stat = contentOf(folder / "stat");
    const auto bracket = stat.rfind(')');
    if (bracket == std::string::npos || bracket + 4 > stat.size()) return 0;
    return std::atoi(stat.c_str() + bracket + 4);
}

}  // namespace

fs::path homeFolder() {
    return std::getenv("HOME");
}

std::vector<std::string> filesHolding(const fs::path& folder, const std::string& text) {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const bool named = entry.path().string().find(text) != std::string::npos;
        const bool holds = entry.is_regular_file() && !entry.is_symlink() &&
                           contentOf(entry.path()).find(text) != std::string::npos;
        if (named || holds) found.push_back(entry.path().string());
    }
    return found;
}

std::vector<pid_t> descendantsOf(pid_t process) {
    std::multimap<pid_t, pid_t> children;
    std::error_code gone;
    for (const auto& entry : fs::directory_iterator("/proc", gone)) {
        const pid_t each = std::atoi(entry.path().filename().c_str());
        if (each > 0) children.emplace(parentOf(entry.path()), each);
    }
    std::vector<pid_t> found;
    std::vector<pid_t> open = {process};
    while (!open.empty()) {
        const auto [from, to] = children.equal_range(open.back());
        open.pop_back();
        for (auto child = from; child != to; ++child) {
            found.push_back(child->second);
            open.push_back(child->second);
        }
    }
    return found;
}

std::string publicFaceOf(pid_t process) {
    const fs::path folder = fs::path("/proc") / std::to_string(process);
    return contentOf(folder / "cmdline") + '\n' + contentOf(folder / "environ");
}

}  // namespace marlet::test
