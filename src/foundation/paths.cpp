#include "foundation/paths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <system_error>
#include <vector>

namespace marlet::Paths {

namespace fs = std::filesystem;

namespace {

/// A folder named by the environment. The XDG base directory specification has relative values
/// ignored, and an empty one counts as unset.
std::optional<fs::path> absoluteFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    if (value == nullptr) return std::nullopt;
    fs::path folder(value);
    if (!folder.is_absolute()) return std::nullopt;
    return folder;
}

fs::path baseDir(const char* variable, const char* belowHome) {
    if (const auto folder = absoluteFromEnvironment(variable)) return *folder;
    return homeDir() / belowHome;
}

}  // namespace

std::string applicationID() {
    return MARLET_APP_ID;
}

std::string folderName() {
    return folderName(MARLET_APP_ID);
}

std::string folderName(const std::string& applicationID) {
    if (applicationID.ends_with(".dev")) return "Marlet Dev";
    if (applicationID.ends_with(".fresh")) return "Marlet Fresh";
    return "Marlet";
}

fs::path cachesDir() {
    return baseDir("XDG_CACHE_HOME", ".cache") / folderName();
}
fs::path workDir() {
    return cachesDir() / "work";
}
fs::path documentsDir() {
    return documentsDir(MARLET_APP_ID);
}

fs::path documentsDir(const std::string& applicationID) {
    return baseDir("XDG_DATA_HOME", ".local/share") / folderName(applicationID);
}

fs::path logsDir() {
    return documentsDir() / "logs";
}
fs::path journalFile() {
    return documentsDir() / "pending-write.json";
}
fs::path restoreDir() {
    return documentsDir() / "restore";
}
fs::path historyFile() {
    return documentsDir() / "history.json";
}
fs::path historyPostersDir() {
    return documentsDir() / "history-posters";
}
fs::path cleanupLog() {
    return documentsDir() / "cleanup.log";
}
fs::path tmdbCacheDir() {
    return cachesDir() / "tmdb";
}
fs::path sourceCacheDir() {
    return cachesDir() / "sources";
}

fs::path preferencesFile() {
    const std::string name = folderName();
    return baseDir("XDG_CONFIG_HOME", ".config") / name / (name + ".conf");
}

fs::path homeDir() {
    if (const auto home = absoluteFromEnvironment("HOME")) return *home;
    std::vector<char> buffer(std::size_t{16} * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && fs::path(found->pw_dir).is_absolute())
        return found->pw_dir;
    return "/";
}

fs::path applicationDir() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

fs::path standardised(const fs::path& path) {
    std::error_code failed;
    fs::path absolute = fs::absolute(path, failed);
    if (failed) absolute = path;
    fs::path normal = absolute.lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path()) normal = normal.parent_path();
    return normal;
}

}  // namespace marlet::Paths
