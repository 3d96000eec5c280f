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
    keepWithin(pause);
    std::function<UnfinishedWork()> look = [shelf = shelf_] { return shelf->look(); };
    {
        const Ending ended(isLooking_);
        auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
        offered_ = co_await looking;
    }
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

void UnfinishedStore::noteTouched(const Path& file) {
    if (isTouched_.insert(file.native()).second) touched_.push_back(file);
}

void UnfinishedStore::touch(const Path& file) {
    noteTouched(file);
    hasChanges_ = true;
    keepWithin(pause);
}

void UnfinishedStore::queueChanged(bool isRunning) {
    hasChanges_ = true;
    if (!isRunning) urgent_ = Clock::now() + soon;
    keepWithin(isRunning ? runPause : soon);
}

void UnfinishedStore::keepWithin(std::chrono::milliseconds time) {
    if (!hasChanges_) return;
    const Clock::time_point until = Clock::now() + time;
    const bool isSooner = until < due_ || urgent_ < Clock::time_point::max();
    due_ = std::min(due_, until);
    if (!isOpen_) return;
    if (!isKeeping_) {
        isKeeping_ = true;
        keep();
    } else if (isSooner) {
        // Soon and not now: the caller is in the middle of a change.
        Async::post([hurry = hurry_] { hurry.cancel(); });
    }
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
        auto pausing = untilDue();
        co_await pausing;
        shelf_->put(changes());
        const auto began = Clock::now();
        auto writing = Asking::orCancelled(write(shelf_), life);
        co_await writing;
        const auto ended = Clock::now();
        restsUntil_ = ended + std::max<Clock::duration>((ended - began) * restForWork, leastRest);
    }
}

Task<> UnfinishedStore::untilDue() {
    const CancelToken life = life_;
    // At least once, since whoever tells of a change is in the middle of it.
    for (auto least = soon;; least = std::chrono::milliseconds(0)) {
        const auto until = std::min(std::max(due_, restsUntil_), urgent_);
        const auto left =
            std::max(std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), least);
        if (left.count() <= 0) co_return;
        hurry_ = CancelToken();
        try {
            auto pausing = Async::sleep(left, hurry_);
            co_await pausing;
        } catch (const CancelError&) {
            // Something that is due earlier.
        }
        life.check();
    }
}

UnfinishedShelf::Delta UnfinishedStore::changes() {
    UnfinishedShelf::Delta delta;
    delta.queue = teller_.queue();
    std::unordered_set<std::string> queue;
    queue.reserve(delta.queue.size());
    for (const Path& file : delta.queue)
        if (queue.insert(file.native()).second && !queue_.contains(file.native()))
            noteTouched(file);
    for (const std::string& file : queue_) {
        if (queue.contains(file)) continue;
        noteTouched(file);
        // Its job has ended, and may have given it other bytes.
        delta.touched.emplace_back(file);
    }
    queue_ = std::move(queue);
    for (const Path& file : touched_) {
        if (auto record = teller_.file(file))
            delta.changed.push_back(*std::move(record));
        else if (isLooking_)
            unclear_.push_back(file);
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
    isTouched_.clear();
    hasChanges_ = false;
    due_ = urgent_ = Clock::time_point::max();
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
    for (const Path& file : files) expected_.erase(file.native());
    dropOffered(files);
}

void UnfinishedStore::keepNow() {
    if (!isOpen_) return;
    if (hasChanges_) shelf_->put(changes());
    // Also what a worker was handed and hasn't got round to.
    shelf_->writeAtQuit();
}

Task<UnfinishedWork> UnfinishedStore::take(LookAtRestores look) {
    std::vector<Path> files;
    for (const UnfinishedFile& file : offered_.files) files.push_back(file.resolved.file.url);
    std::vector<Path> toLookAt = files;
    for (const UnfinishedRestore& restore : offered_.restores) toLookAt.push_back(restore.file);
    using Looked = UnfinishedShelf::Looked;
    std::function<Looked()> work = [shelf = shelf_, toLookAt, look = std::move(look),
                                    restores = offered_.restores] {
        if (look) look(restores);
        return shelf->lookAt(toLookAt);
    };
    offer_.reset();
    Looked looked;
    try {
        isTaking_ = true;
        const Ending taking(isTaking_);
        auto looking = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
        looked = co_await looking;
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // The offer stands.
        makeOffer();
        throw;
    }
    co_return handOver(files, looked);
}

UnfinishedWork UnfinishedStore::handOver(const std::vector<Path>& files,
                                         const UnfinishedShelf::Looked& looked) {
    offer_.reset();
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
    return work;
}

void UnfinishedStore::handBack(UnfinishedWork work) {
    for (UnfinishedFile& file : work.files) {
        offeredAt_.insert(file.resolved.file.url.native());
        offered_.files.push_back(std::move(file));
    }
    for (UnfinishedRestore& restore : work.restores)
        offered_.restores.push_back(std::move(restore));
    makeOffer();
    queueChanged(false);
}

void UnfinishedStore::discard() {
    offeredAt_.clear();
    for (const UnfinishedFile& file : std::exchange(offered_, {}).files)
        touch(file.resolved.file.url);
    offer_.reset();
    queueChanged(false);
}

void UnfinishedStore::expect(const UnfinishedFile& file) {
    const Path& url = file.resolved.file.url;
    expected_.insert_or_assign(url.native(), file);
    touch(url);
}

const UnfinishedFile* UnfinishedStore::expected(const Path& file) const {
    const auto found = expected_.find(file.native());
    return found == expected_.end() ? nullptr : &found->second;
}

}  // namespace marlet
