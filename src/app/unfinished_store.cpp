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

/// Says that something is no longer on its way, on every way out.
class Ending {
public:
    explicit Ending(bool& flag) : flag_(flag) {}
    ~Ending() { flag_ = false; }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

private:
    bool& flag_;
};

}  // namespace

UnfinishedStore::~UnfinishedStore() {
    life_.cancel();
    hurry_.cancel();
}

Task<> UnfinishedStore::open() {
    std::function<bool()> work = [shelf = shelf_] {
        shelf->open();
        return true;
    };
    auto opening = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    co_await opening;
    isOpen_ = isLooking_ = true;
    if (hasChanges_) wake();
    std::function<UnfinishedWork()> look = [shelf = shelf_] { return shelf->look(); };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
    offered_ = co_await looking;
    isLooking_ = false;
    std::vector<Path> newer;
    for (const UnfinishedFile& file : offered_.files) {
        const Path& url = file.resolved.file.url;
        offeredAt_.insert(url.native());
        if (teller_.file(url)) newer.push_back(url);
    }
    dropOffered(newer);
    makeOffer();
    for (const Path& file : std::exchange(unclear_, {})) touch(file);
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
    const Ending keeping(isKeeping_);
    try {
        auto writing = keepChanges();
        co_await writing;
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // A person's work on the films goes on without; the next change tries again.
    }
}

Task<> UnfinishedStore::keepChanges() {
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
        else if (isLooking_)
            unclear_.insert(file);
        else if (!isOffered(file))
            delta.gone.push_back(file);
    }
    delta.restores = teller_.restores();
    // What is offered holds until the person has done something else with the file.
    std::vector<Path> newer;
    for (const UnfinishedFile& file : delta.changed) newer.push_back(file.resolved.file.url);
    dropOffered(newer);
    for (const UnfinishedFile& file : offered_.files)
        if (file.isQueued) delta.queue.push_back(file.resolved.file.url);
    delta.restores.insert(delta.restores.end(), offered_.restores.begin(), offered_.restores.end());
    delta.restores.insert(delta.restores.end(), away_.begin(), away_.end());
    delta.tellsLeft = !isLooking_;
    touched_.clear();
    hasChanges_ = isUrgent_ = false;
    return delta;
}

bool UnfinishedStore::isOffered(const Path& file) const {
    return offeredAt_.contains(file.native());
}

void UnfinishedStore::dropOffered(const std::vector<Path>& files) {
    const std::size_t before = offeredAt_.size();
    for (const Path& file : files) offeredAt_.erase(file.native());
    if (offeredAt_.size() == before) return;
    std::erase_if(offered_.files,
                  [&](const UnfinishedFile& each) { return !isOffered(each.resolved.file.url); });
    makeOffer();
}

void UnfinishedStore::forget(const std::vector<Path>& files) {
    for (const Path& file : files) expected_.erase(file);
    dropOffered(files);
}

void UnfinishedStore::keepNow() {
    if (!isOpen_) return;
    if (hasChanges_) shelf_->put(changes());
    // Also what a worker was handed and hasn't got round to.
    shelf_->writeAtQuit();
}

Task<UnfinishedWork> UnfinishedStore::take() {
    offer_.reset();
    isTaking_ = true;
    std::vector<Path> files;
    for (const UnfinishedFile& file : offered_.files) files.push_back(file.resolved.file.url);
    std::vector<Path> toLookAt = files;
    for (const UnfinishedRestore& restore : offered_.restores) toLookAt.push_back(restore.file);
    using Looked = UnfinishedShelf::Looked;
    std::function<Looked()> look = [shelf = shelf_, toLookAt] { return shelf->lookAt(toLookAt); };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
    const Looked looked = co_await looking;
    isTaking_ = false;
    UnfinishedWork work = std::exchange(offered_, {});
    offeredAt_.clear();
    // What can't be looked at stays on the shelf as it is, for a later start.
    for (const Path& file : files)
        if (!looked.away.contains(file)) touch(file);
    std::erase_if(work.files, [&](const UnfinishedFile& file) {
        return !looked.same.contains(file.resolved.file.url);
    });
    std::erase_if(work.restores, [&](const UnfinishedRestore& restore) {
        const bool isAway = looked.away.contains(restore.file);
        if (isAway) away_.push_back(restore);
        return isAway;
    });
    co_return work;
}

void UnfinishedStore::handBack(UnfinishedWork work) {
    for (UnfinishedFile& file : work.files) {
        offeredAt_.insert(file.resolved.file.url.native());
        offered_.files.push_back(std::move(file));
    }
    for (UnfinishedRestore& restore : work.restores)
        offered_.restores.push_back(std::move(restore));
    makeOffer();
    queueChanged();
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
