#include "app/restore_jobs.h"

#include <set>

#include "app/app_model.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "foundation/uuid.h"
#include "write/restore_points.h"

namespace marlet::RestoreJobs {

std::vector<Restorable> among(const HistoryList& entries) {
    std::set<std::string> seen;
    std::vector<Restorable> found;
    for (const HistoryList::Shared& entry : entries.shared()) {
        if (entry->result != "done" || entry->isRestore.value_or(false)) continue;
        if (seen.contains(entry->path) || !RestorePoints::exists(entry->path)) continue;
        const auto file = Sys::stat(entry->path);
        if (!file) continue;
        seen.insert(entry->path);
        found.push_back({entry, file->size});
    }
    return found;
}

std::optional<std::uint64_t> sizeIfSaved(const std::filesystem::path& file) {
    if (!RestorePoints::exists(file)) return std::nullopt;
    return FileOps::size(file);
}

WriteQueue::Job of(const UnfinishedRestore& wanted, std::uint64_t size) {
    const Details& details = wanted.details;
    WriteQueue::Job job;
    job.id = newUUID();
    job.request.file = wanted.file;
    job.request.mode = WriteRequest::RestoreOriginal{};
    job.label = "Restore original details · " + AppModel::label(details, wanted.file);
    job.title = details.title.empty() ? wanted.file.stem().string() : details.title;
    job.isMovie = details.kind == MediaKind::movie;
    if (!job.isMovie && !details.show.empty()) job.show = details.show;
    job.season = details.season;
    job.episode = details.episode;
    job.year = wanted.year;
    job.how = "In place";
    job.size = size;
    return job;
}

}  // namespace marlet::RestoreJobs
