#pragma once

#include <filesystem>
#include <string>

#include "foundation/syscalls.h"

namespace marlet {

/// Makes a folder that a person chose for new files, with its parents, and as open to others as the
/// person's own folders are. Fails with the phrase and the system's words.
void makeFoldersFor(const std::filesystem::path& folder, const std::string& phrase);

/// Moves a finished file to its name, durably. False when something has that name already: what
/// is there is never replaced. Throws MFError for every other failure, and the name is free then.
bool moveIfFree(const std::filesystem::path& from, const std::filesystem::path& to);

/// True for a file, a folder or a link, even one that leads nowhere.
bool isTaken(const std::filesystem::path& path);

/// A place in an output folder for a file that isn't finished: ".marlet-XXXXXXXX.part". What is
/// there at the end is removed. The folder of the job names it, so that the clean-up after a crash
/// finds it; what other runs left that died goes at the start.
///
/// A living run shares a lock (flock) on the folder for as long as it has a place there. So when
/// the folder can be locked by one alone, nobody is at work in it, and every such file is left
/// over. No lock on the part itself could tell that: the copy comes to be under another name.
class PartFile {
public:
    PartFile(const std::filesystem::path& folder, const std::filesystem::path& jobFolder);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    FileHandle folder_;  ///< holds the lock; not open where folders can't be locked
    std::filesystem::path path_;
};

}  // namespace marlet
