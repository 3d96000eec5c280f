#pragma once

#include <filesystem>
#include <string>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"

namespace marlet {

/// Steps that last through a loss of power: what is named here is on the medium when the call
/// returns. Failures are MFError "phrase: system text".
namespace Durable {

/// Creates the folder with its missing parents (mode 0700) and flushes each parent that got a
/// new name.
void makeFolders(const std::filesystem::path& folder);
/// Temporary name beside it, write, flush, rename, flush the folder.
void writeFile(const std::filesystem::path& file, ByteView content);
/// The same for a content that comes in pieces: it is written under a hidden name, which goes away
/// again on every way out but `commit`.
class NewFile {
public:
    explicit NewFile(std::filesystem::path file);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int fd() const { return handle_.get(); }
    /// Sets blocks aside for a content of so many bytes, so that they lie together and needn't be
    /// found while it is written. Where the file system can't, nothing happens.
    void reserve(std::uint64_t size);
    /// Flush, rename, flush the folder; tells what the file then is. Once at most.
    Sys::FileStat commit();

private:
    std::filesystem::path file_;
    std::filesystem::path temporary_;
    FileHandle handle_;
    bool isNamed_ = false;
};
/// Removes what a process that died in the middle of writeFile or a NewFile left in the folder:
/// files of such a hidden name, and only those last changed before that time, since a living one
/// may be at the others. Never fails.
void removeLeftovers(const std::filesystem::path& folder, FileTime changedBefore);
void flushFile(const std::filesystem::path& file);
void flushFolder(const std::filesystem::path& folder);
/// Renames and flushes the folder(s).
void rename(const std::filesystem::path& from, const std::filesystem::path& to);
/// The same with the caller's own phrase for every failure.
void rename(const std::filesystem::path& from, const std::filesystem::path& to,
            const std::string& phrase);
/// Removes the file and flushes its folder. A file that is not there is no failure.
void remove(const std::filesystem::path& file);

}  // namespace Durable
}  // namespace marlet
