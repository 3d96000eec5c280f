// What a person has begun outlives the program: what is kept of it, and how it comes back.

#include <string>
#include <unordered_map>

#include "app/app_model.h"
#include "app/label_details.h"
#include "app/restore_jobs.h"
#include "foundation/errors.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"

namespace marlet {

namespace {

using State = WriteQueue::Job::State;

constexpr const char* resumeLater = "The queue is running. Resume when it's finished.";

bool hasEnded(const WriteQueue::Job& job) {
    return job.state != State::waiting && job.state != State::running;
}

/// By location.
using SizesOfSaved = std::unordered_map<std::string, std::uint64_t>;

void lookUp(const std::vector<UnfinishedRestore>& restores, SizesOfSaved& sizes) {
    for (const UnfinishedRestore& restore : restores)
        if (const auto size = RestoreJobs::sizeIfSaved(restore.file))
            sizes.insert_or_assign(restore.file.native(), *size);
}

}  // namespace

UnfinishedStore::Teller AppModel::unfinishedTeller() {
    drafts_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    plans_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    tracks_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    queue_.onJobs = [this] { unfinished_.queueChanged(queue_.active()); };
    return {.file = [this](const Path& file) { return unfinishedOf(file); },
            .queue =
                [this] {
                    std::vector<Path> files;
                    for (const WriteQueue::Job& job : queue_.jobs())
                        if (!hasEnded(job) && !job.request.isRestore())
                            files.push_back(job.request.file);
                    return files;
                },
            .restores =
                [this] {
                    std::vector<UnfinishedRestore> restores;
                    for (const WriteQueue::Job& job : queue_.jobs())
                        if (!hasEnded(job) && job.request.isRestore())
                            restores.push_back({job.request.file, labelDetails(job), job.year});
                    return restores;
                }};
}

std::optional<UnfinishedFile> AppModel::unfinishedOf(const Path& file) const {
    const UnfinishedFile* expected = unfinished_.expected(file);
    const ResolvedFile* resolved = review_.find(file);
    const auto queued = queuedFiles_.find(file);
    if (resolved == nullptr && queued != queuedFiles_.end()) resolved = &queued->second;
    // On its way through a scan.
    if (resolved == nullptr) return expected == nullptr ? std::nullopt : std::optional(*expected);

    UnfinishedFile kept;
    kept.resolved = *resolved;
    kept.isQueued = expected != nullptr && expected->isQueued;
    kept.isAccepted = review_.isAccepted(file);
    kept.draft = drafts_.corrections(file);
    kept.dropped = tracks_.dropped(file);
    kept.ticks = plans_.ticks(file);
    const bool isWanted = kept.isCorrected() || kept.isQueued || unfinished_.isQueued(file);
    return isWanted ? std::optional(std::move(kept)) : std::nullopt;
}

Task<> AppModel::openUnfinished() {
    if (RunMode::automated()) co_return;
    auto opening = unfinished_.open();
    co_await opening;
    changed();
}

void AppModel::keepUnfinished() {
    unfinished_.keepNow();
}

void AppModel::keepNow() {
    keepUnfinished();
    history_.keepNow();
    Preferences::current().flush();
}

Task<> AppModel::resumeUnfinished() {
    if (!unfinishedOffer()) co_return;
    if (queue_.active()) {
        say(resumeLater);
        co_return;
    }
    // Looked up along with the films: what was taken is kept nowhere until its jobs are there.
    const auto sizes = std::make_shared<SizesOfSaved>();
    auto taking = unfinished_.take([sizes](const auto& restores) { lookUp(restores, *sizes); });
    UnfinishedWork work;
    try {
        work = co_await taking;
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // It is offered again.
        changed();
        co_return;
    }
    // It may have been started while the films were looked at.
    if (queue_.active()) {
        unfinished_.handBack(std::move(work));
        say(resumeLater);
        changed();
        co_return;
    }
    LibraryItem toQueue;
    std::vector<Path> toScan;
    std::vector<ResolvedFile> toReview;
    for (const UnfinishedFile& file : work.files) {
        const Path& url = file.resolved.file.url;
        // What the person has done with it since is newer.
        if (queuedFiles_.contains(url) || unfinishedOf(url)) continue;
        unfinished_.expect(file);
        drafts_.forget(url);
        drafts_.wish(url, file.draft);
        tracks_.wish(url, file.dropped);
        plans_.wish(url, file.ticks);
        if (!file.resolved.match) {
            if (review_.find(url) == nullptr) toScan.push_back(url);
            continue;
        }
        toReview.push_back(file.resolved);
        if (file.isAccepted) review_.confirm(url);
        if (file.isQueued) toQueue.files.push_back(file.resolved);
    }
    review_.replace(toReview);  // of what was added again meanwhile
    review_.add(toReview);
    std::vector<WriteQueue::Job> restores;
    for (const UnfinishedRestore& restore : work.restores)
        if (const auto found = sizes->find(restore.file.native()); found != sizes->end())
            restores.push_back(RestoreJobs::of(restore, found->second));
    if (!restores.empty()) queue_.add(std::move(restores));
    changed();
    analyseAll();
    const CancelToken life = life_;
    if (!toQueue.files.empty()) {
        std::vector<LibraryItem> items{std::move(toQueue)};
        auto adding = addToQueueNow(std::move(items));
        co_await adding;
    }
    if (toScan.empty()) co_return;
    // A scan of its own would end one that is under way.
    while (isWorking()) {
        auto waiting = Async::sleep(std::chrono::milliseconds(50), life);
        co_await waiting;
    }
    add(std::move(toScan));
}

void AppModel::discardUnfinished() {
    unfinished_.discard();
    changed();
}

}  // namespace marlet
