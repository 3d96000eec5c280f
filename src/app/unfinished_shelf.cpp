#include "app/unfinished_shelf.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "app/unfinished_json.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"

namespace marlet {

namespace {

/// Beyond so many copies at once a further one keeps nothing.
constexpr int mostCopies = 16;

std::optional<FilmMark> markOf(const std::filesystem::path& file) {
    const auto found = Sys::stat(file);
    if (!found || !found->isRegular) return std::nullopt;
    return FilmMark::of(*found);
}

}  // namespace

FilmMark FilmMark::of(const Sys::FileStat& found) {
    return {found.size, found.inode, found.mtime.time_since_epoch().count()};
}

UnfinishedShelf::Path UnfinishedShelf::fileOf(int number) {
    const std::string name = number == 1 ? "unfinished" : "unfinished " + std::to_string(number);
    return Paths::documentsDir() / (name + ".json");
}

/// Beside the file, since that one is replaced by every write; never removed, since another copy
/// may be about to lock it.
FileHandle UnfinishedShelf::lockOf(int number) {
    const Path name = fileOf(number).replace_extension(".lock");
    FileHandle lock(Sys::open(name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600));
    if (lock.isOpen() && Sys::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) lock.close();
    return lock;
}

UnfinishedWork UnfinishedShelf::open() {
    const std::lock_guard guard(writing_);
    try {
        Durable::makeFolders(Paths::documentsDir());
    } catch (const MFError&) {
        return {};
    }
    std::vector<Path> toRead;
    for (int number = 1; number <= mostCopies; number++) {
        const Path file = fileOf(number);
        const bool isThere = Sys::lstat(file).has_value();
        if (lock_.isOpen() && !isThere) continue;
        FileHandle lock = lockOf(number);
        if (!lock.isOpen()) continue;
        if (isThere) toRead.push_back(file);
        if (!lock_.isOpen()) {
            lock_ = std::move(lock);
            file_ = file;
        } else {
            left_.push_back({file, std::move(lock)});
        }
    }

    // What can't be read is not removed, but replaced as soon as there is something to keep.
    written_ = std::string();
    UnfinishedWork work;
    std::vector<UnfinishedFile> inReview;
    for (const Path& file : toRead) {
        const auto bytes = FileOps::readSmall(file, maxFileSize);
        auto content = bytes ? UnfinishedJson::decode(*bytes) : std::nullopt;
        if (!content) continue;
        if (file == file_) written_.reset();
        for (UnfinishedJson::Marked& each : content->files) {
            const Path& url = each.file.resolved.file.url;
            if (markOf(url) != each.mark) continue;
            Record record{UnfinishedJson::encode(each.file), each.mark, each.file.isQueued};
            if (!records_.emplace(url.native(), std::move(record)).second) continue;
            (each.file.isQueued ? work.files : inReview).push_back(std::move(each.file));
        }
        for (UnfinishedRestore& restore : content->restores)
            if (Sys::stat(restore.file)) work.restores.push_back(std::move(restore));
    }
    for (UnfinishedFile& file : inReview) work.files.push_back(std::move(file));
    for (const UnfinishedFile& file : work.files)
        if (file.isQueued) queue_.push_back(file.resolved.file.url);
    restores_ = work.restores;
    return work;
}

void UnfinishedShelf::put(Delta delta) {
    const std::lock_guard guard(handing_);
    handed_.push_back(std::move(delta));
}

void UnfinishedShelf::write() {
    const std::lock_guard guard(writing_);
    std::deque<Delta> handed;
    {
        const std::lock_guard handing(handing_);
        handed.swap(handed_);
    }
    for (const Delta& delta : handed) take(delta);
    if (!file_.empty()) keep(text());
}

void UnfinishedShelf::take(const Delta& delta) {
    for (const UnfinishedFile& file : delta.changed) {
        Record& record = records_[file.resolved.file.url.native()];
        record.text = UnfinishedJson::encode(file);
        record.isQueued = file.isQueued;
    }
    for (const Path& file : delta.touched) {
        const auto found = records_.find(file.native());
        if (found != records_.end()) found->second.mark.reset();
    }
    for (const Path& file : delta.gone) records_.erase(file.native());
    queue_ = delta.queue;
    restores_ = delta.restores;
}

void UnfinishedShelf::addLine(std::vector<std::string>& lines, std::size_t& size, const Path& file,
                              bool isQueued) {
    const auto found = records_.find(file.native());
    if (found == records_.end()) return;
    Record& record = found->second;
    if (!record.mark) record.mark = markOf(file);
    if (!record.mark) return;
    std::string line = UnfinishedJson::line(record.text, *record.mark, isQueued);
    constexpr std::size_t frame = 64;
    // What would make the file too big to be read again is left out.
    if (size + line.size() + frame > maxFileSize) return;
    size += line.size() + 2;
    lines.push_back(std::move(line));
}

/// Empty when nothing is to be kept.
std::string UnfinishedShelf::text() {
    std::vector<std::string> lines;
    std::size_t size = 0;
    for (const UnfinishedRestore& restore : restores_) {
        lines.push_back(UnfinishedJson::line(restore));
        size += lines.back().size() + 2;
    }
    std::set<std::string> inQueue;
    for (const Path& file : queue_)
        if (inQueue.insert(file.native()).second) addLine(lines, size, file, true);
    for (const auto& [file, record] : records_)
        if (!inQueue.contains(file)) addLine(lines, size, file, record.isQueued);
    return lines.empty() ? std::string() : UnfinishedJson::document(lines);
}

void UnfinishedShelf::keep(const std::string& text) {
    if (written_ == text && left_.empty()) return;
    try {
        if (text.empty()) {
            Durable::remove(file_);
        } else {
            Durable::NewFile next(file_);
            // It tells which films somebody has.
            if (::fchmod(next.fd(), 0600) != 0) failWithErrno("cannot keep unfinished work");
            FileOps::writeAll(next.fd(), viewOf(text), 0);
            next.commit();
        }
        written_ = text;
        for (const Left& left : left_) Durable::remove(left.file);
        left_.clear();
    } catch (const MFError&) {
        // A person's work on the films goes on without.
    }
}

std::set<UnfinishedShelf::Path> UnfinishedShelf::unchanged(const std::vector<Path>& files) const {
    const std::lock_guard guard(writing_);
    std::set<Path> same;
    for (const Path& file : files) {
        const auto found = records_.find(file.native());
        if (found != records_.end() && markOf(file) == found->second.mark) same.insert(file);
    }
    return same;
}

}  // namespace marlet
