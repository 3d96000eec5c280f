#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "app/write_queue.h"
#include "foundation/errors.h"
#include "foundation/run_control.h"

namespace marlet::test {

/// Takes the writer's place: a job whose file has a name in `held` does what it is told, step by
/// step; any other ends at once, well or as `outcomes` says.
class StagedWorker {
public:
    using Step = std::function<std::optional<WriteOutcome>(RunControl&, const StepProgress&)>;

    /// What the queue calls; it shares this worker, which outlives the calls.
    static WriteQueue::Worker of(std::shared_ptr<StagedWorker> worker) {
        return [worker](const auto& request, auto& control, const auto& progress) {
            return worker->run(request, control, progress);
        };
    }
    /// Waits until a held job is there and has done the step.
    void tell(Step step) {
        std::unique_lock lock(mutex_);
        steps_.push_back(std::move(step));
        changed_.notify_all();
        const std::size_t mine = ++told_;
        changed_.wait(lock, [&] { return done_ >= mine; });
    }
    void report(const std::string& step, double fraction) {
        tell([=](RunControl&, const StepProgress& progress) {
            progress(step, fraction);
            return std::nullopt;
        });
    }
    void setCritical(bool on) {
        tell([=, this](RunControl& control, const StepProgress&) {
            if (std::exchange(critical_, on) != on) control.setCritical(on);
            return std::nullopt;
        });
    }
    void end(WriteOutcome outcome = {.status = WriteOutcome::Status::done}) {
        tell([=](RunControl&, const StepProgress&) { return outcome; });
    }
    /// Ends as a job does at its next checkpoint.
    void endCancelled() {
        tell([](RunControl& control, const StepProgress&) -> std::optional<WriteOutcome> {
            if (!control.isCancelled()) return std::nullopt;
            return WriteOutcome{.status = WriteOutcome::Status::cancelled,
                                .message = "cancelled; the file was left untouched"};
        });
    }

    /// No job is held any more, and one that is ends.
    void letGo() {
        const std::lock_guard lock(mutex_);
        held.clear();
        changed_.notify_all();
    }

    std::set<std::string> held;
    std::map<std::string, WriteOutcome> outcomes;

private:
    WriteOutcome run(const WriteRequest& request, RunControl& control,
                     const StepProgress& progress) {
        const std::string name = request.file.filename().string();
        std::unique_lock lock(mutex_);
        while (held.contains(name)) {
            changed_.wait(lock, [&] { return !steps_.empty() || !held.contains(name); });
            if (steps_.empty()) break;
            const Step step = std::move(steps_.front());
            steps_.pop_front();
            const auto outcome = step(control, progress);
            ++done_;
            changed_.notify_all();
            if (outcome) return *outcome;
        }
        if (std::exchange(critical_, false)) control.setCritical(false);
        const auto told = outcomes.find(name);
        if (told != outcomes.end()) return told->second;
        WriteOutcome outcome{.status = WriteOutcome::Status::done, .message = "Details written"};
        outcome.output = request.file;
        return outcome;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Step> steps_;
    bool critical_ = false;
    std::size_t told_ = 0;
    std::size_t done_ = 0;
};

/// A job that writes details into /films/<name>.
inline WriteQueue::Job stagedJob(const std::string& name, std::uint64_t size = 100) {
    WriteQueue::Job job;
    job.id = "job of " + name;
    job.request.file = "/films/" + name;
    job.request.mode = WriteRequest::WriteDetails{};
    job.label = "Film " + name;
    job.title = job.label;
    job.isMovie = true;
    job.size = size;
    job.how = "Changed in place";
    job.summary = "details and cover art";
    return job;
}

}  // namespace marlet::test
