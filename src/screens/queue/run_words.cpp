#include "screens/queue/run_words.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>
#include <set>

#include "screens/base/qt_text.h"
#include "screens/queue/job_line.h"
#include "screens/queue/time_left.h"

namespace marlet::RunWords {

namespace {

using Job = WriteQueue::Job;
using State = Job::State;

QString translated(const char* text) {
    return QCoreApplication::translate("RunWords", text);
}

bool makesNewFile(const Job& job) {
    return job.request.isConvert() || !job.request.dropTracks.empty();
}

/// What lays the sound out anew, or may.
bool rebuilds(const Job& job) {
    return !job.request.isRestore() && (makesNewFile(job) || job.request.fixLayout);
}

std::filesystem::path folderOf(const Job& job) {
    if (const auto* convert = std::get_if<ConvertRequest>(&job.request.mode))
        return convert->outputDir;
    const auto own = job.request.file.parent_path();
    return makesNewFile(job) ? job.request.outputDir.value_or(own) : own;
}

/// "the folder of the original" where each goes beside its own, the name of the one folder, or
/// nothing.
QString folderWords(const std::vector<const Job*>& jobs) {
    std::set<std::filesystem::path> folders;
    bool allOwn = true;
    for (const Job* job : jobs) {
        folders.insert(folderOf(*job));
        allOwn = allOwn && folderOf(*job) == job->request.file.parent_path();
    }
    if (allOwn) return translated("the folder of the original");
    return folders.size() == 1 ? toQt(folders.begin()->filename()) : QString();
}

int count(const WriteQueue& queue, State state) {
    return static_cast<int>(std::ranges::count(queue.jobs(), state, &Job::state));
}

}  // namespace

QString running(const WriteQueue& queue) {
    const auto& jobs = queue.jobs();
    if (std::ranges::any_of(jobs, rebuilds)) return translated("Making files Apple TV ready");
    const auto restores = [](const Job& job) { return job.request.isRestore(); };
    return std::ranges::all_of(jobs, restores) ? translated("Putting original details back")
                                               : translated("Writing details");
}

QString timeLeft(const WriteQueue& queue) {
    const double speed = queue.speed();
    if (speed <= 0) return {};
    const QString words = timeLeftWords((queue.totalBytes() - queue.doneBytes()) / speed);
    return words.isEmpty() ? QString() : translated("about %1 left").arg(words);
}

QString now(const WriteQueue& queue) {
    const Job* job = queue.current();
    if (job == nullptr) return {};
    const QString label = toQt(job->label);
    return job->step.empty() ? label : translated("%1: %2").arg(label, toQt(job->step));
}

QString whereTo(const WriteQueue& queue) {
    std::vector<const Job*> waiting;
    std::vector<const Job*> newFiles;
    for (const Job& job : queue.jobs()) {
        if (job.state != State::waiting) continue;
        waiting.push_back(&job);
        if (makesNewFile(job)) newFiles.push_back(&job);
    }
    if (waiting.empty()) return {};
    if (newFiles.empty()) return translated("Files are changed in %1").arg(folderWords(waiting));
    const QString folder = folderWords(newFiles);
    return folder.isEmpty() ? translated("New files go to several folders")
                            : translated("New files go to %1").arg(folder);
}

QString finished(const WriteQueue& queue) {
    const int failed = count(queue, State::failed);
    if (failed > 0) return translated("Finished, %1 failed").arg(failed);
    const int cancelled = count(queue, State::cancelled);
    return cancelled > 0 ? translated("Finished, %1 cancelled").arg(cancelled)
                         : translated("All done");
}

QString counts(const WriteQueue& queue) {
    QStringList pieces{translated("%1 done").arg(queue.doneCount())};
    if (const int failed = count(queue, State::failed); failed > 0)
        // Said only while it is true.
        pieces << (std::ranges::any_of(queue.jobs(), mayBeDamaged)
                       ? translated("%1 failed")
                       : translated("%1 failed (the originals are untouched)"))
                      .arg(failed);
    if (const int cancelled = count(queue, State::cancelled); cancelled > 0)
        pieces << translated("%1 cancelled").arg(cancelled);
    if (queue.skippedCount() > 0) pieces << translated("%1 skipped").arg(queue.skippedCount());
    return pieces.join(QStringLiteral(", "));
}

}  // namespace marlet::RunWords
