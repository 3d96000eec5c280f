// Original details come back as jobs like any other.

#include "app/app_model.h"
#include "foundation/file_ops.h"
#include "foundation/work_area.h"
#include "write/restore_points.h"

namespace marlet {

namespace {
using Job = WriteQueue::Job;
}

Job AppModel::restoreJob(const Path& file, const std::string& name) const {
    Job job;
    job.id = newUUID();
    job.request.file = file;
    job.request.mode = WriteRequest::RestoreOriginal{};
    job.label = "Restore original details · " + name;
    job.title = name;
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
    Job job = restoreJob(file, file.stem().string());
    if (const FileDraft* draft = drafts_.find(file)) {
        job.label = "Restore original details · " + label(draft->details, file);
        if (!draft->details.title.empty()) job.title = draft->details.title;
        job.isMovie = draft->details.kind == MediaKind::movie;
        if (!job.isMovie) job.show = draft->details.show;
        job.season = draft->details.season;
        job.episode = draft->details.episode;
    }
    std::vector<Job> jobs;
    jobs.push_back(std::move(job));
    queueRestores(std::move(jobs));
}

void AppModel::restoreBatch(const std::vector<HistoryEntry>& entries) {
    if (queue_.active()) return;
    std::set<std::string> seen;
    std::vector<Job> jobs;
    for (const HistoryEntry& entry : entries) {
        if (entry.result != "done" || entry.isRestore.value_or(false)) continue;
        if (seen.contains(entry.path)) continue;
        std::error_code none;
        if (!RestorePoints::exists(entry.path) || !std::filesystem::exists(entry.path, none))
            continue;
        seen.insert(entry.path);
        Details details;
        details.kind = entry.isMovie ? MediaKind::movie : MediaKind::tv;
        details.title = entry.title;
        details.show = entry.show.value_or("");
        details.season = entry.season;
        details.episode = entry.episode;
        Job job = restoreJob(entry.path, label(details, entry.path));
        job.title = entry.title;
        job.show = entry.show;
        job.season = entry.season;
        job.episode = entry.episode;
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
