// The last run of History, taken back from a shell.

#include <algorithm>
#include <chrono>

#include "app/headless.h"

namespace marlet::Headless {

using namespace std::chrono_literals;

namespace {

/// The entries of the newest run that is no restore; none without such a run.
HistoryList lastRun(const HistoryList& entries) {
    const auto newest = std::ranges::find_if(entries, [](const HistoryEntry& entry) {
        return !entry.isRestore.value_or(false) && !entry.batchID.value_or("").empty();
    });
    if (newest == entries.end()) return {};
    HistoryList run;
    for (const HistoryList::Shared& entry : entries.shared())
        if (entry->batchID == newest->batchID) run.add(entry);
    return run;
}

}  // namespace

Task<> waitForQueue(AppModel& model) {
    while (model.queue().active() || !model.queue().finished()) {
        auto waiting = Async::sleep(20ms);
        co_await waiting;
    }
}

RunEnd endOf(const WriteQueue& queue) {
    const bool isDone = std::ranges::all_of(queue.jobs(), [](const WriteQueue::Job& job) {
        return job.state == WriteQueue::Job::State::done;
    });
    return isDone ? RunEnd::done : RunEnd::failed;
}

Task<RunEnd> restoreLastBatch(AppModel& model, Options options) {
    const std::unique_ptr<RunLines> lines = runLines(options);
    auto loading = model.history().load();
    co_await loading;
    const HistoryList run = lastRun(model.history().known());
    if (run.empty()) {
        lines->problem("no run in History");
        co_return RunEnd::failed;
    }
    auto restoring = model.restoreBatch(run);
    co_await restoring;
    if (model.queue().jobs().empty()) {
        lines->notice(model.notice.value_or(""));
        co_return RunEnd::failed;
    }
    auto working = waitForQueue(model);
    co_await working;
    for (const WriteQueue::Job& job : model.queue().jobs()) lines->restored(job);
    co_return endOf(model.queue());
}

}  // namespace marlet::Headless
