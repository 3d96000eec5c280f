// What a person has begun outlives the program: what is kept of it, and how it comes back.

#include <algorithm>

#include "app/app_model.h"
#include "app/label_details.h"
#include "foundation/run_mode.h"
#include "write/restore_points.h"

namespace marlet {

namespace {

using State = WriteQueue::Job::State;

constexpr const char* resumeLater = "The queue is running. Resume when it's finished.";

bool hasEnded(const WriteQueue::Job& job) {
    return job.state != State::waiting && job.state != State::running;
}

}  // namespace

UnfinishedStore::Teller AppModel::unfinishedTeller() {
    drafts_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    plans_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    tracks_.onTouched = [this](const Path& file) { unfinished_.touch(file); };
    queue_.onJobs = [this] { unfinished_.queueChanged(); };
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

Task<> AppModel::resumeUnfinished() {
    if (!unfinishedOffer()) co_return;
    if (queue_.active()) {
        say(resumeLater);
        co_return;
    }
    auto taking = unfinished_.take();
    UnfinishedWork work = co_await taking;
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
    resumeRestores(work.restores);
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

void AppModel::resumeRestores(const std::vector<UnfinishedRestore>& restores) {
    std::vector<WriteQueue::Job> jobs;
    for (const UnfinishedRestore& restore : restores) {
        if (!RestorePoints::exists(restore.file)) continue;
        jobs.push_back(restoreJob(restore.file, restore.details));
        jobs.back().year = restore.year;
    }
    if (!jobs.empty()) queue_.add(std::move(jobs));
}

void AppModel::discardUnfinished() {
    unfinished_.discard();
    changed();
}

}  // namespace marlet
