#include "app/unfinished_store.h"

#include <algorithm>
#include <utility>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "identify/asking.h"

namespace marlet {

namespace {

/// Thousands of corrections take their time to write: so many times longer nothing is written then.
constexpr int restForWork = 20;

/// What is urgent waits no longer than for the caller to have finished its change.
constexpr std::chrono::milliseconds soon(1);

Task<bool> write(std::shared_ptr<UnfinishedShelf> shelf) {
    std::function<bool()> work = [shelf] {
        shelf->write();
        return true;
    };
    return Async::onWorker(std::move(work));
}

std::string nameOf(const std::filesystem::path& file) {
    return Text::repairUtf8(viewOf(file.filename().native()));
}

}  // namespace

UnfinishedStore::~UnfinishedStore() {
    life_.cancel();
    hurry_.cancel();
}

Task<> UnfinishedStore::open() {
    std::function<UnfinishedWork()> work = [shelf = shelf_] { return shelf->open(); };
    auto opening = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    offered_ = co_await opening;
    for (const UnfinishedFile& file : offered_.files)
        offeredAt_.insert(file.resolved.file.url.native());
    isOpen_ = true;
    makeOffer();
    if (hasChanges_) wake();
}

void UnfinishedStore::makeOffer() {
    offer_.reset();
    if (offered_.empty() || isTaking_) return;
    const auto waited = std::ranges::count(offered_.files, true, &UnfinishedFile::isQueued);
    const auto queued = static_cast<int>(waited) + static_cast<int>(offered_.restores.size());
    const auto corrected = static_cast<int>(offered_.files.size()) - static_cast<int>(waited);
    offer_ = UnfinishedOffer::of(queued, corrected);
    for (const UnfinishedRestore& restore : offered_.restores)
        offer_->names.push_back(nameOf(restore.file));
    for (const UnfinishedFile& file : offered_.files)
        offer_->names.push_back(nameOf(file.resolved.file.url));
}

void UnfinishedStore::touch(const Path& file) {
    touched_.insert(file);
    hasChanges_ = true;
    wake();
}

void UnfinishedStore::queueChanged() {
    hasChanges_ = isUrgent_ = true;
    wake();
    // Soon and not now: the caller is in the middle of a change.
    Async::post([hurry = hurry_] { hurry.cancel(); });
}

void UnfinishedStore::wake() {
    if (!isOpen_ || isKeeping_) return;
    isKeeping_ = true;
    keep();
}

Task<> UnfinishedStore::keep() {
    const CancelToken life = life_;
    while (hasChanges_) {
        hurry_ = CancelToken();
        try {
            auto pausing = Async::sleep(isUrgent_ ? soon : pause, hurry_);
            co_await pausing;
        } catch (const CancelError&) {
            // Something that doesn't wait.
        }
        life.check();
        shelf_->put(changes());
        const auto began = std::chrono::steady_clock::now();
        auto writing = Asking::orCancelled(write(shelf_), life);
        co_await writing;
        const auto took = std::chrono::steady_clock::now() - began;
        auto resting = Async::sleep(
            std::chrono::duration_cast<std::chrono::milliseconds>(took * restForWork), life);
        co_await resting;
    }
    isKeeping_ = false;
}

UnfinishedShelf::Delta UnfinishedStore::changes() {
    UnfinishedShelf::Delta delta;
    delta.queue = teller_.queue();
    const std::set<Path> queue(delta.queue.begin(), delta.queue.end());
    for (const Path& file : queue)
        if (!queue_.contains(file)) touched_.insert(file);
    for (const Path& file : queue_) {
        if (queue.contains(file)) continue;
        touched_.insert(file);
        // Its job has ended, and may have given it other bytes.
        delta.touched.push_back(file);
    }
    queue_ = queue;
    for (const Path& file : touched_) {
        if (auto record = teller_.file(file))
            delta.changed.push_back(*std::move(record));
        else if (!isOffered(file))
            delta.gone.push_back(file);
    }
    delta.restores = teller_.restores();
    // What is offered holds until the person has done something else with the file.
    for (const UnfinishedFile& file : delta.changed) dropOffered(file.resolved.file.url);
    for (const UnfinishedFile& file : offered_.files)
        if (file.isQueued) delta.queue.push_back(file.resolved.file.url);
    delta.restores.insert(delta.restores.end(), offered_.restores.begin(), offered_.restores.end());
    touched_.clear();
    hasChanges_ = isUrgent_ = false;
    return delta;
}

bool UnfinishedStore::isOffered(const Path& file) const {
    return offeredAt_.contains(file.native());
}

void UnfinishedStore::dropOffered(const Path& file) {
    if (offeredAt_.erase(file.native()) == 0) return;
    std::erase_if(offered_.files, [&](const UnfinishedFile& each) {
        return each.resolved.file.url.native() == file.native();
    });
    makeOffer();
}

void UnfinishedStore::forget(const Path& file) {
    expected_.erase(file);
    dropOffered(file);
}

void UnfinishedStore::keepNow() {
    if (!isOpen_) return;
    if (hasChanges_) shelf_->put(changes());
    // Also what a worker was handed and hasn't got round to.
    shelf_->write();
}

Task<UnfinishedWork> UnfinishedStore::take() {
    offer_.reset();
    isTaking_ = true;
    std::vector<Path> files;
    for (const UnfinishedFile& file : offered_.files) files.push_back(file.resolved.file.url);
    std::function<std::set<Path>()> look = [shelf = shelf_, files] {
        return shelf->unchanged(files);
    };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
    const std::set<Path> same = co_await looking;
    isTaking_ = false;
    UnfinishedWork work = std::exchange(offered_, {});
    offeredAt_.clear();
    for (const Path& file : files) touch(file);
    std::erase_if(work.files, [&](const UnfinishedFile& file) {
        return !same.contains(file.resolved.file.url);
    });
    co_return work;
}

void UnfinishedStore::discard() {
    offeredAt_.clear();
    for (const UnfinishedFile& file : std::exchange(offered_, {}).files)
        touch(file.resolved.file.url);
    offer_.reset();
    queueChanged();
}

void UnfinishedStore::expect(const UnfinishedFile& file) {
    const Path& url = file.resolved.file.url;
    expected_.insert_or_assign(url, file);
    touch(url);
}

const UnfinishedFile* UnfinishedStore::expected(const Path& file) const {
    const auto found = expected_.find(file);
    return found == expected_.end() ? nullptr : &found->second;
}

}  // namespace marlet
