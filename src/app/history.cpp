#include "app/history.h"

#include <utility>

#include "foundation/paths.h"
#include "identify/asking.h"

namespace marlet {

namespace {

/// The program doesn't end for longer than another copy may hold us up, and the file is read.
constexpr std::chrono::seconds patienceAtQuit(10);

}  // namespace

HistoryStore& HistoryStore::shared() {
    static HistoryStore store;
    return store;
}

std::filesystem::path HistoryStore::file() {
    return Paths::historyFile();
}

HistoryStore::~HistoryStore() {
    life_.cancel();
}

void HistoryStore::take(HistoryFile::Content content) const {
    isLoaded_ = true;
    // Workers may come back in another order than they were at the file.
    if (content.revision <= revision_) return;
    revision_ = content.revision;
    entries_ = std::move(content.entries);
}

void HistoryStore::tell() const {
    if (onChanged) onChanged();
}

const HistoryList& HistoryStore::entries() const {
    if (!isLoaded_) take(file_->read());
    return entries_;
}

Task<> HistoryStore::load() {
    if (isLoaded_) co_return;
    std::function<HistoryFile::Content()> work = [file = file_] { return file->read(); };
    auto reading = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    HistoryFile::Content content = co_await reading;
    take(std::move(content));
    tell();
}

void HistoryStore::append(HistoryEntry entry) {
    file_->put(std::move(entry));
    take(file_->write());
    tell();
}

void HistoryStore::clear() {
    file_->putClear();
    take(file_->write());
    tell();
}

Task<> HistoryStore::appendSoon(HistoryEntry entry) {
    file_->put(std::move(entry));
    return writeSoon();
}

Task<> HistoryStore::clearSoon() {
    file_->putClear();
    return writeSoon();
}

Task<> HistoryStore::writeSoon() {
    std::function<HistoryFile::Content()> work = [file = file_] { return file->write(); };
    auto writing = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    HistoryFile::Content content = co_await writing;
    take(std::move(content));
    tell();
}

void HistoryStore::keepNow() {
    if (auto content = file_->writeAtQuit(patienceAtQuit)) take(std::move(*content));
}

}  // namespace marlet
