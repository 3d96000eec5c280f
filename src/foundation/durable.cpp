#include "foundation/durable.h"

#include <fcntl.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "foundation/uuid.h"

namespace marlet::Durable {

namespace fs = std::filesystem;

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY;
constexpr const char* newFilePhrase = "cannot write file";

/// The folder that holds the name; "." for a name alone.
fs::path folderOf(const fs::path& path) {
    const fs::path parent = path.parent_path();
    return parent.empty() ? fs::path(".") : parent;
}

/// Some file systems (network and FUSE ones) can't flush a folder and say so: there is nothing
/// more to be done for them.
bool cannotFlushFolders(int error) {
    return error == EINVAL || error == ENOTSUP || error == ENOSYS || error == EBADF;
}

void flushOpenFolder(const FileHandle& folder, const std::string& phrase) {
    if (Sys::fsync(folder.get()) != 0 && !cannotFlushFolders(errno)) failWithErrno(phrase);
}

constexpr std::string_view temporaryEnd = ".tmp";

/// Hidden, and never the same twice. The name is cut to stay below the limit of 255 bytes.
fs::path temporaryBeside(const fs::path& file) {
    const std::string name = file.filename().string().substr(0, 200);
    return file.parent_path() / ("." + name + "." + newUUID() + std::string(temporaryEnd));
}

bool isTemporary(const std::string& name) {
    constexpr std::size_t uuidSize = 36;
    if (!name.starts_with('.') || !name.ends_with(temporaryEnd)) return false;
    if (name.size() < 1 + 1 + 1 + uuidSize + temporaryEnd.size()) return false;
    const std::size_t uuidAt = name.size() - temporaryEnd.size() - uuidSize;
    return name[uuidAt - 1] == '.' && isUUID(name.substr(uuidAt, uuidSize));
}

}  // namespace

void makeFolders(const fs::path& folder) {
    static const std::string phrase = "cannot create folder";
    std::vector<fs::path> missing;
    fs::path place = folder.has_filename() ? folder : folder.parent_path();
    while (!place.empty()) {
        if (const auto found = Sys::stat(place)) {
            if (!found->isFolder) failWith(phrase, ENOTDIR);
            break;
        }
        if (errno != ENOENT) failWithErrno(phrase);
        missing.push_back(place);
        if (place == place.parent_path()) break;
        place = place.parent_path();
    }
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (Sys::mkdir(*next, 0700) != 0) {
            const int error = errno;
            // Another job may have made it in the meantime.
            const auto found = Sys::stat(*next);
            if (error != EEXIST || !found || !found->isFolder) failWith(phrase, error);
        }
        flushFolder(folderOf(*next));
    }
}

NewFile::NewFile(fs::path file)
    : file_(std::move(file)),
      temporary_(temporaryBeside(file_)),
      handle_(FileHandle::open(temporary_, O_WRONLY | O_CREAT | O_EXCL, newFilePhrase, 0644)) {}

NewFile::~NewFile() {
    if (!isNamed_) Sys::unlink(temporary_);
}

void NewFile::reserve(std::uint64_t size) {
    // Not posix_fallocate, which writes all of it where the file system can't.
    ::fallocate(handle_.get(), 0, 0, static_cast<off_t>(size));
}

Sys::FileStat NewFile::commit() {
    if (Sys::fsync(handle_.get()) != 0) failWithErrno(newFilePhrase);
    const auto found = Sys::fstat(handle_.get());
    if (!found) failWithErrno(newFilePhrase);
    handle_.close();
    rename(temporary_, file_, newFilePhrase);
    isNamed_ = true;
    return *found;
}

void writeFile(const fs::path& file, ByteView content) {
    NewFile next(file);
    FileOps::writeAll(next.fd(), content, 0);
    next.commit();
}

void removeLeftovers(const fs::path& folder, FileTime changedBefore) {
    std::error_code failed;
    for (fs::directory_iterator each(folder, failed), end; !failed && each != end;
         each.increment(failed)) {
        if (!isTemporary(each->path().filename().string())) continue;
        const auto found = Sys::lstat(each->path());
        if (found && found->isRegular && found->mtime < changedBefore) Sys::unlink(each->path());
    }
}

void flushFile(const fs::path& file) {
    static const std::string phrase = "cannot flush file";
    const FileHandle handle = FileHandle::open(file, O_RDONLY, phrase);
    if (Sys::fsync(handle.get()) != 0) failWithErrno(phrase);
}

void flushFolder(const fs::path& folder) {
    static const std::string phrase = "cannot flush folder";
    flushOpenFolder(FileHandle::open(folder, folderFlags, phrase), phrase);
}

void rename(const fs::path& from, const fs::path& to) {
    rename(from, to, "cannot rename file");
}

void rename(const fs::path& from, const fs::path& to, const std::string& phrase) {
    // Opened first: a folder that can't be flushed is found out before anything has changed.
    const fs::path source = folderOf(from);
    const fs::path target = folderOf(to);
    const FileHandle targetFolder = FileHandle::open(target, folderFlags, phrase);
    FileHandle sourceFolder;
    if (source != target) sourceFolder = FileHandle::open(source, folderFlags, phrase);
    if (Sys::rename(from, to) != 0) failWithErrno(phrase);
    flushOpenFolder(targetFolder, phrase);
    if (sourceFolder.isOpen()) flushOpenFolder(sourceFolder, phrase);
}

void remove(const fs::path& file) {
    static const std::string phrase = "cannot remove file";
    if (Sys::unlink(file) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return;
        failWithErrno(phrase);
    }
    flushFolder(folderOf(file));
}

}  // namespace marlet::Durable
