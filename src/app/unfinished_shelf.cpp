#include "app/unfinished_shelf.h"

#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <unordered_set>
#include <utility>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"

namespace marlet {

namespace {

/// Beyond so many copies at once a further one keeps nothing.
constexpr int mostCopies = 16;

}  // namespace

FilmMark FilmMark::of(const Sys::FileStat& found) {
    return {found.size, found.mtime.time_since_epoch().count()};
}

bool FilmMark::fits(const Sys::FileStat& found) const {
    const FilmMark now = of(found);
    return found.isRegular && (!size || size == now.size) &&
           (!modified || modified == now.modified);
}

UnfinishedShelf::Path UnfinishedShelf::fileOf(int number) {
    const std::string name = number == 1 ? "unfinished" : "unfinished " + std::to_string(number);
    return Paths::documentsDir() / (name + ".json");
}

void UnfinishedShelf::open() {
    const std::lock_guard guard(writing_);
    try {
        Durable::makeFolders(Paths::documentsDir());
    } catch (const MFError&) {
        return;
    }
    // What can't be read is not removed, but replaced as soon as there is something to keep.
    written_ = std::string();
    for (int number = 1; number <= mostCopies; number++) {
        const Path file = fileOf(number);
        const bool isThere = Sys::lstat(file).has_value();
        if (!file_.empty() && !isThere) continue;
        CopyLock lock(file);
        if (!lock.isOpen()) continue;
        const CopyLock::Holder holder = lock.take();
        if (holder == CopyLock::Holder::Others) continue;
        if (holder == CopyLock::Holder::Nobody) {
            // Without locks nobody can tell what belongs to a copy that has ended.
            if (number > 1) continue;
            number = mostCopies;
        }
        const bool wasRead = isThere && read(file);
        if (file_.empty()) {
            lock_ = std::move(lock);
            file_ = file;
            if (wasRead) written_.reset();
        } else if (wasRead) {
            left_.push_back({file, std::move(lock)});
        }
    }
}

bool UnfinishedShelf::read(const Path& file) {
    const auto bytes = FileOps::readSmall(file, maxFileSize);
    auto content = bytes ? UnfinishedJson::decode(*bytes) : std::nullopt;
    if (!content) return false;
    for (UnfinishedJson::Marked& each : content->files) {
        const std::string& url = each.file.resolved.file.url.native();
        Record record{.text = UnfinishedJson::encode(each.file),
                      .mark = each.mark,
                      .isQueued = each.file.isQueued,
                      .isLeft = true,
                      .since = each.since};
        if (!records_.emplace(url, std::move(record)).second) continue;
        if (each.file.isQueued) leftQueue_.push_back(url);
        leftFiles_.push_back(std::move(each));
    }
    for (UnfinishedRestore& restore : content->restores)
        leftRestores_.push_back(std::move(restore));
    return true;
}

UnfinishedWork UnfinishedShelf::look() {
    std::vector<UnfinishedJson::Marked> files;
    std::vector<UnfinishedRestore> restores;
    {
        const std::lock_guard guard(writing_);
        files.swap(leftFiles_);
        restores = leftRestores_;
    }
    std::vector<std::optional<Sys::FileStat>> found;
    for (const UnfinishedJson::Marked& each : files)
        found.push_back(Sys::stat(each.file.resolved.file.url));
    std::vector<UnfinishedRestore> awayRestores;
    UnfinishedWork work;
    for (UnfinishedRestore& restore : restores) {
        const bool isThere = Sys::stat(restore.file).has_value();
        (isThere ? work.restores : awayRestores).push_back(std::move(restore));
    }
    if (awayRestores.size() > mostAway) awayRestores.resize(mostAway);

    const std::lock_guard guard(writing_);
    std::vector<UnfinishedFile> inReview;
    std::vector<std::map<std::string, Record>::iterator> away;
    for (std::size_t i = 0; i < files.size(); i++) {
        UnfinishedFile& file = files[i].file;
        const auto record = records_.find(file.resolved.file.url.native());
        if (record == records_.end() || !record->second.isLeft) continue;
        if (!found[i]) {
            away.push_back(record);
        } else if (!record->second.mark.fits(*found[i])) {
            records_.erase(record);
        } else {
            record->second.mark = FilmMark::of(*found[i]);
            (file.isQueued ? work.files : inReview).push_back(std::move(file));
        }
    }
    std::ranges::stable_sort(away, std::ranges::greater(),
                             [](const auto& place) { return place->second.since; });
    for (std::size_t i = mostAway; i < away.size(); i++) records_.erase(away[i]);
    for (UnfinishedFile& file : inReview) work.files.push_back(std::move(file));
    leftRestores_ = work.restores;
    awayRestores_ = std::move(awayRestores);
    return work;
}

void UnfinishedShelf::put(Delta delta) {
    const std::lock_guard guard(handing_);
    handed_.push_back(std::move(delta));
}

void UnfinishedShelf::write() {
    std::vector<std::pair<std::string, std::uint64_t>> due;
    {
        const std::lock_guard guard(writing_);
        takeHanded();
        if (file_.empty()) return;
        keep(text());
        for (const auto& [file, record] : records_)
            if (record.due != 0) due.emplace_back(file, record.due);
    }
    if (due.empty()) return;
    std::vector<std::optional<Sys::FileStat>> found;
    for (const auto& [file, number] : due) found.push_back(Sys::stat(file));

    const std::lock_guard guard(writing_);
    for (std::size_t i = 0; i < due.size(); i++) {
        const auto record = records_.find(due[i].first);
        if (record == records_.end() || record->second.due != due[i].second) continue;
        record->second.due = 0;
        // Of a film that can't be looked at we go by what we know.
        if (found[i] && found[i]->isRegular) record->second.mark = FilmMark::of(*found[i]);
    }
    keep(text());
}

void UnfinishedShelf::writeAtQuit(std::chrono::milliseconds patience) {
    const std::unique_lock guard(writing_, patience);
    if (!guard.owns_lock()) return;
    takeHanded();
    if (!file_.empty()) keep(text());
}

void UnfinishedShelf::takeHanded() {
    std::deque<Delta> handed;
    {
        const std::lock_guard handing(handing_);
        handed.swap(handed_);
    }
    for (const Delta& delta : handed) take(delta);
}

void UnfinishedShelf::take(const Delta& delta) {
    for (const UnfinishedFile& file : delta.changed) {
        const ScannedFile& film = file.resolved.file;
        const auto [place, isNew] = records_.try_emplace(film.url.native());
        Record& record = place->second;
        std::string text = UnfinishedJson::encode(file);
        // Until its film is looked at, what the scan saw of it tells it from others.
        if (isNew && film.size >= 0) record.mark.size = static_cast<std::uint64_t>(film.size);
        // What the person did last is meant for the film as it is now.
        if (isNew || record.text != text) {
            record.due = ++looks_;
            record.since = newSince();
        }
        record.text = std::move(text);
        record.isQueued = file.isQueued;
        record.isLeft = false;
    }
    for (const Path& file : delta.touched) {
        const auto found = records_.find(file.native());
        if (found == records_.end()) continue;
        found->second.mark = {};
        found->second.due = ++looks_;
    }
    for (const Path& file : delta.gone) records_.erase(file.native());
    queue_ = delta.queue;
    restores_ = delta.restores;
    if (delta.tellsLeft) leftRestores_.clear();
}

/// A clock that was set back is no reason for another order.
std::int64_t UnfinishedShelf::newSince() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    newest_ = std::max<std::int64_t>(newest_ + 1, time);
    return newest_;
}

std::vector<const UnfinishedShelf::Place*> UnfinishedShelf::withRoom(
    const std::vector<const Place*>& places, std::size_t room) const {
    // What it takes beside the record's text.
    constexpr std::size_t frame = 192;
    std::vector<const Place*> newestFirst = places;
    std::ranges::stable_sort(newestFirst, std::ranges::greater(),
                             [](const Place* place) { return place->second.since; });
    std::unordered_set<const Place*> fitting;
    for (const Place* place : newestFirst) {
        const std::size_t size = place->second.text.size() + frame;
        if (size > room) break;
        room -= size;
        fitting.insert(place);
    }
    std::vector<const Place*> kept;
    for (const Place* place : places)
        if (fitting.contains(place)) kept.push_back(place);
    return kept;
}

/// Empty when nothing is to be kept.
std::string UnfinishedShelf::text() {
    std::vector<std::string> lines;
    std::size_t size = 0;
    for (const auto* restores : {&restores_, &leftRestores_, &awayRestores_})
        for (const UnfinishedRestore& restore : *restores) {
            lines.push_back(UnfinishedJson::line(restore));
            size += lines.back().size() + 2;
        }
    std::unordered_set<std::string> inQueue;
    std::vector<const Place*> places;
    const auto addQueued = [&](const std::string& file, bool isLeft) {
        const auto found = records_.find(file);
        if (found == records_.end() || (isLeft && !found->second.isQueued)) return;
        if (inQueue.insert(file).second) places.push_back(&*found);
    };
    for (const Path& file : queue_) addQueued(file.native(), false);
    for (const std::string& file : leftQueue_) addQueued(file, true);
    const std::size_t queued = places.size();
    for (const Place& place : records_)
        if (!inQueue.contains(place.first)) places.push_back(&place);
    std::stable_sort(
        places.begin() + static_cast<std::ptrdiff_t>(queued), places.end(),
        [](const Place* a, const Place* b) { return a->second.since < b->second.since; });
    constexpr std::size_t frame = 64;
    const std::size_t room = mostBytes - std::min(size + frame, mostBytes);
    for (const Place* place : withRoom(places, room)) {
        const Record& record = place->second;
        const bool isQueued = record.isQueued || inQueue.contains(place->first);
        lines.push_back(UnfinishedJson::line(record.text, record.mark, isQueued, record.since));
    }
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

UnfinishedShelf::Looked UnfinishedShelf::lookAt(const std::vector<Path>& files) const {
    std::map<Path, FilmMark> marks;
    {
        const std::lock_guard guard(writing_);
        for (const Path& file : files) {
            const auto found = records_.find(file.native());
            if (found != records_.end()) marks.emplace(file, found->second.mark);
        }
    }
    Looked looked;
    for (const Path& file : files) {
        const auto found = Sys::stat(file);
        const auto mark = marks.find(file);
        if (!found)
            looked.away.insert(file);
        else if (mark != marks.end() && mark->second.fits(*found))
            looked.same.insert(file);
    }
    return looked;
}

}  // namespace marlet
