#include "app/history_file.h"

#include <fcntl.h>

#include <cerrno>
#include <new>
#include <set>
#include <thread>
#include <utility>

#include "app/history_json.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t maxFileSize = std::uint64_t{1} << 30U;

bool isSame(const Sys::FileStat& a, const Sys::FileStat& b) {
    return a.device == b.device && a.inode == b.inode && a.size == b.size && a.mtime == b.mtime;
}

/// A name beside the file that nothing has yet.
fs::path asideName(const fs::path& file) {
    const std::string day = Dates::local(Dates::now(), "yyyy-MM-dd HH-mm-ss");
    fs::path name = file.string() + ".damaged " + day;
    for (int n = 2; fs::symlink_status(name).type() != fs::file_type::not_found; n++)
        name = file.string() + ".damaged " + day + " " + std::to_string(n);
    return name;
}

/// It says nothing about the file: the program or the machine is short of something, or a disk or
/// a server doesn't answer just now.
bool isTransient(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO;
}

/// The blocks of a replaced file are given back when it is closed, which for a long one takes half
/// as long as writing the new one: nobody has to wait for that.
void closeApart(FileHandle old, std::uint64_t size) {
    constexpr std::uint64_t longFile = std::uint64_t{4} << 20U;
    if (!old.isOpen() || size < longFile) return;
    try {
        std::thread([handle = std::move(old)]() mutable { handle.close(); }).detach();
    } catch (const std::exception&) {
        // Closed here then.
    }
}

void makeFolder() {
    try {
        Durable::makeFolders(Paths::documentsDir());
    } catch (const MFError&) {
        // The writing tells.
    }
}

}  // namespace

void HistoryFile::setPatience(HistoryPatience patience) {
    const std::lock_guard guard(writing_);
    patience_ = std::move(patience);
}

void HistoryFile::put(HistoryEntry entry) {
    const std::lock_guard guard(handing_);
    handed_.push_back(std::make_shared<const HistoryEntry>(std::move(entry)));
}

void HistoryFile::putClear() {
    const std::lock_guard guard(handing_);
    handed_.push_back(nullptr);
}

std::deque<HistoryFile::Change> HistoryFile::takeHanded() {
    const std::lock_guard guard(handing_);
    return std::exchange(handed_, {});
}

bool HistoryFile::hasHanded() {
    const std::lock_guard guard(handing_);
    return !handed_.empty();
}

HistoryFile::Content HistoryFile::content() {
    return {entries_, ++revision_};
}

HistoryFile::Content HistoryFile::read() {
    const std::lock_guard guard(writing_);
    if (!std::exchange(isLoaded_, true)) look();
    return content();
}

HistoryFile::Content HistoryFile::write() {
    const std::lock_guard guard(writing_);
    return writeHanded();
}

std::optional<HistoryFile::Content> HistoryFile::writeAtQuit(std::chrono::milliseconds patience) {
    const std::unique_lock guard(writing_, patience);
    if (!guard.owns_lock() || !(hasHanded() || isUnsaved_)) return std::nullopt;
    return writeHanded();
}

HistoryFile::Content HistoryFile::writeHanded() {
    const std::deque<Change> changes = takeHanded();
    if (changes.empty() && !isUnsaved_) return content();
    isLoaded_ = isUnsaved_ = true;
    makeFolder();
    const HistoryTurn turn(patience_);
    FileHandle old = look();
    apply(changes);
    save(old);
    closeApart(std::move(old), known_ ? known_->size : 0);
    return content();
}

void HistoryFile::apply(const std::deque<Change>& changes) {
    for (const Change& change : changes) {
        if (change) {
            entries_.addInFront(change);
            unsaved_++;
        } else {
            unreadable_ = false;  // what could not be read this time is to go, too
            entries_.clear();
            unsaved_ = 0;
        }
    }
}

FileHandle HistoryFile::look() {
    // Without waiting: a pipe of that name has no writer, and is not meant anyway.
    FileHandle handle(Sys::open(Paths::historyFile(), O_RDONLY | O_NONBLOCK));
    unreadable_ = false;
    if (!handle.isOpen() && isTransient(errno)) {
        unreadable_ = true;
        return handle;
    }
    if (!handle.isOpen()) {
        damaged_ = errno != ENOENT && errno != ENOTDIR;
        known_.reset();
        return handle;
    }
    const auto found = Sys::fstat(handle.get());
    if (!found) {
        unreadable_ = true;
        return handle;
    }
    if (known_ && isSame(*found, *known_)) return handle;
    known_ = found;
    take(handle, *found);
    if (unreadable_) {
        damaged_ = false;
        known_.reset();
    }
    return handle;
}

void HistoryFile::take(const FileHandle& handle, const Sys::FileStat& found) {
    damaged_ = true;
    if (!found.isRegular || found.size > maxFileSize) return;
    std::optional<HistoryList> decoded;
    try {
        Bytes text(static_cast<std::size_t>(found.size));
        try {
            if (FileOps::readFull(handle.get(), text, 0) < text.size()) return;
        } catch (const MFError&) {
            unreadable_ = true;
            return;
        }
        decoded = HistoryJson::decode(text);
        if (decoded) entriesAt_ = HistoryJson::firstEntryAt(text);
    } catch (const std::bad_alloc&) {
        unreadable_ = true;
        return;
    } catch (const std::exception&) {
        return;
    }
    if (!decoded) return;
    damaged_ = false;
    // What is in the file holds, others may also have cleared it; what never got there is kept.
    std::set<std::string> there;
    if (unsaved_ > 0)
        for (const HistoryEntry& entry : *decoded) there.insert(entry.id);
    const HistoryList mine = std::move(entries_);
    entries_ = std::move(*decoded);
    std::size_t kept = 0;
    for (std::size_t i = unsaved_; i-- > 0;)
        if (!there.contains(mine[i].id)) {
            entries_.addInFront(mine.shared()[i]);
            kept++;
        }
    unsaved_ = kept;
}

bool HistoryFile::addToFile(const FileHandle& old) try {
    if (!old.isOpen() || !known_ || entries_.size() <= unsaved_) return false;
    std::string head = "[\n";
    for (std::size_t i = 0; i < unsaved_; i++) head += HistoryJson::encode(entries_[i]) + ",\n";
    const std::uint64_t kept = known_->size - entriesAt_;
    Durable::NewFile next(Paths::historyFile());
    next.reserve(head.size() + kept);
    FileOps::writeAll(next.fd(), viewOf(head), 0);
    FileOps::copyRange(old.get(), entriesAt_, kept, next.fd(), head.size());
    known_ = next.commit();
    return true;
} catch (const MFError&) {
    return false;
}

void HistoryFile::replaceFile() {
    Durable::NewFile next(Paths::historyFile());
    FileOps::writeAll(next.fd(), viewOf(HistoryJson::encode(entries_)), 0);
    known_ = next.commit();
}

void HistoryFile::save(const FileHandle& old) {
    // In memory until the file can be read: another one must not take its place.
    if (unreadable_) return;
    try {
        if (damaged_) {
            Durable::rename(Paths::historyFile(), asideName(Paths::historyFile()));
            damaged_ = false;
            known_.reset();
        }
        if (!addToFile(old)) replaceFile();
        entriesAt_ = 2;
        unsaved_ = 0;
        isUnsaved_ = false;
    } catch (const std::exception&) {
        // History never fails a job; what is in memory is written again at the next append.
    }
}

}  // namespace marlet
