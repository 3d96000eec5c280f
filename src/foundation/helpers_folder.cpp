// Where the media tools stand.
#include <unistd.h>

#include <mutex>
#include <system_error>

#include "foundation/paths.h"
#include "foundation/tool_log.h"
#include "foundation/tool_runner.h"

namespace marlet::MP4BoxLocator {

namespace fs = std::filesystem;

namespace {

std::mutex folderLock;

std::optional<fs::path>& otherFolder() {  // guarded by folderLock
    static std::optional<fs::path> folder;
    return folder;
}

bool isExecutableFile(const fs::path& path) {
    std::error_code failed;
    return fs::is_regular_file(path, failed) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

fs::path helpersDir() {
    const std::lock_guard guard(folderLock);
    return otherFolder().value_or(Paths::applicationDir() / "Contents" / "Helpers");
}

std::optional<fs::path> find(const std::string&) {
    const fs::path candidate = helpersDir() / "MP4Box";
    if (!isExecutableFile(candidate)) return std::nullopt;
    ToolLog::noteOnce(candidate);
    return candidate;
}

HelpersAt::HelpersAt(const fs::path& folder) {
    const std::lock_guard guard(folderLock);
    otherFolder() = folder;
}

HelpersAt::~HelpersAt() {
    const std::lock_guard guard(folderLock);
    otherFolder().reset();
}

bool HelpersAt::isActive() {
    const std::lock_guard guard(folderLock);
    return otherFolder().has_value();
}

}  // namespace marlet::MP4BoxLocator
