#pragma once

#include <filesystem>
#include <string>

namespace marlet {

/// The fixed places on disk. All are worked out from the environment at each call (XDG base
/// directories; a relative value counts as unset), none is created here.
namespace Paths {

/// What the desktop knows the program by: its desktop entry has this name and ".desktop".
std::string applicationID();
/// "Marlet", or "Marlet Dev" / "Marlet Fresh" for an application identifier that ends in
/// ".dev" / ".fresh", so that a test build never touches a real History.
std::string folderName();
std::string folderName(const std::string& applicationID);

/// Caches: may be emptied by the person at any time.
std::filesystem::path cachesDir();
/// One folder per job, below the caches.
std::filesystem::path workDir();
/// What must survive: history, restore points, the journal.
std::filesystem::path documentsDir();
std::filesystem::path documentsDir(const std::string& applicationID);
std::filesystem::path logsDir();
std::filesystem::path journalFile();
std::filesystem::path restoreDir();
std::filesystem::path historyFile();
std::filesystem::path historyPostersDir();
std::filesystem::path cleanupLog();
std::filesystem::path tmdbCacheDir();
std::filesystem::path sourceCacheDir();
/// The preferences file.
std::filesystem::path preferencesFile();
std::filesystem::path homeDir();
/// The folder of the running executable (/proc/self/exe).
std::filesystem::path applicationDir();

/// Absolute and lexically normal, without a trailing slash; symbolic links stay.
std::filesystem::path standardised(const std::filesystem::path& path);

}  // namespace Paths
}  // namespace marlet
