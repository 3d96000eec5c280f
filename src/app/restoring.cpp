// Original details come back as jobs like any other.

#include "app/app_model.h"
#include "foundation/file_ops.h"
#include "foundation/work_area.h"
#include "write/restore_points.h"

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

Details detailsOf(const HistoryEntry& entry) {
    Details details;
    details.kind = entry.isMovie ? MediaKind::movie : MediaKind::tv;
    details.title = entry.title;
    details.show = entry.show.value_or("");
    details.season = entry.season;
    details.episode = entry.episode;
    return details;
}

bool canBeRestored(const HistoryEntry& entry) {
    std::error_code none;
    return entry.result == "done" && !entry.isRestore.value_or(false) &&
           RestorePoints::exists(entry.path) && std::filesystem::exists(entry.path, none);
}

}  // namespace

Job AppModel::restoreJob(const Path& file, const Details& details) const {
    Job job;
    job.id = newUUID();
    job.request.file = file;
    job.request.mode = WriteRequest::RestoreOriginal{};
    job.label = "Restore original details · " + label(details, file);
    job.title = details.title.empty() ? file.stem().string() : details.title;
    job.isMovie = details.kind == MediaKind::movie;
    if (!job.isMovie && !details.show.empty()) job.show = details.show;
    job.season = details.season;
    job.episode = details.episode;
    job.how = "In place";
    job.size = FileOps::size(file);
    return job;
}

void AppModel::queueRestores(std::vector<Job> jobs) {
    if (queue_.finished()) queue_.dismiss();
    const bool wasIdle = queue_.waitingCount() == 0;
    queue_.add(std::move(jobs));
    if (wasIdle) queue_.start();
}

void AppModel::restoreOriginal(const Path& file) {
    if (queue_.active()) return;
    Details details;
    if (const FileDraft* draft = drafts_.find(file))
        details = draft->details;
    else if (const ResolvedFile* known = review_.find(file); known != nullptr && known->match)
        details = detailsOf(*known->match);
    std::vector<Job> jobs;
    jobs.push_back(restoreJob(file, details));
    if (const ResolvedFile* known = review_.find(file); known != nullptr && known->match)
        jobs.back().year = known->match->year;
    queueRestores(std::move(jobs));
}

void AppModel::restoreBatch(const HistoryList& entries) {
    if (queue_.active()) return;
    std::set<std::string> seen;
    std::vector<Job> jobs;
    for (const HistoryEntry& entry : entries) {
        if (!canBeRestored(entry) || !seen.insert(entry.path).second) continue;
        Job job = restoreJob(entry.path, detailsOf(entry));
        job.title = entry.title;
        job.show = entry.show;
        job.isMovie = entry.isMovie;
        job.year = entry.year;
        jobs.push_back(std::move(job));
    }
    if (jobs.empty()) {
        notice = "Nothing to restore: no saved originals for those files.";
        changed();
        return;
    }
    queueRestores(std::move(jobs));
}

}  // namespace marlet
