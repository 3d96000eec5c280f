// Original details come back as jobs like any other.

#include "app/app_model.h"
#include "app/label_details.h"
#include "app/restore_jobs.h"
#include "foundation/file_ops.h"
#include "identify/asking.h"

namespace marlet {

using Job = WriteQueue::Job;

namespace {

Details detailsOf(const Match& match) {
    Details details;
    details.kind = match.kind;
    details.title = match.title;
    if (match.kind == MediaKind::tv) {
        details.show = match.title;
        details.title = match.episodeTitle.value_or("");
        details.season = match.season;
        details.episode = match.episode;
        details.episodeEnd = match.episodeEnd;
    }
    return details;
}

}  // namespace

bool AppModel::queueRestores(std::vector<Job> jobs) {
    // It may have been started while the files were looked at.
    if (queue_.active()) return false;
    if (queue_.finished()) queue_.dismiss();
    const bool wasIdle = queue_.waitingCount() == 0;
    queue_.add(std::move(jobs));
    if (wasIdle) queue_.start();
    return true;
}

Task<> AppModel::restoreOriginal(Path file) {
    if (queue_.active()) co_return;
    std::function<std::uint64_t()> look = [file] { return FileOps::size(file); };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
    const std::uint64_t size = co_await looking;
    UnfinishedRestore wanted{.file = file, .details = {}, .year = {}};
    const ResolvedFile* known = review_.find(file);
    const bool isMatched = known != nullptr && known->match;
    if (const FileDraft* draft = drafts_.find(file))
        wanted.details = draft->details;
    else if (isMatched)
        wanted.details = detailsOf(*known->match);
    if (isMatched) wanted.year = known->match->year;
    queueRestores({RestoreJobs::of(wanted, size)});
}

Task<bool> AppModel::restoreBatch(HistoryList entries) {
    if (queue_.active()) co_return false;
    using Found = std::vector<RestoreJobs::Restorable>;
    std::function<Found()> look = [entries] { return RestoreJobs::among(entries); };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), life_);
    const Found found = co_await looking;
    std::vector<Job> jobs;
    for (const auto& [entry, size] : found) {
        Job job = RestoreJobs::of({entry->path, labelDetails(*entry), entry->year}, size);
        job.title = entry->title;
        job.show = entry->show;
        job.isMovie = entry->isMovie;
        jobs.push_back(std::move(job));
    }
    if (jobs.empty()) {
        notice = "Nothing to restore: no saved originals for those files.";
        changed();
        co_return false;
    }
    co_return queueRestores(std::move(jobs));
}

}  // namespace marlet
