#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/run_control.h"
#include "sources/async.h"
#include "write/write_request.h"

namespace marlet {

class HistoryStore;
struct HistoryEntry;

/// Runs the committed jobs one at a time, in order, off the main context. Knows nothing of how a
/// file is written. Main context only.
class WriteQueue {
public:
    struct Job {
        enum class State { waiting, running, done, failed, skipped, cancelled };

        std::string id;  ///< UUID
        WriteRequest request;
        std::string label;
        std::string title;
        std::optional<std::string> show;
        std::optional<int> season;
        std::optional<int> episode;
        bool isMovie = false;
        std::uint64_t size = 0;  ///< bytes: the job's weight in the totals
        std::string how;
        std::optional<std::string> posterPath;
        std::optional<int> year;
        std::string summary;
        State state = State::waiting;
        std::string step;
        double fraction = 0;
        std::optional<WriteOutcome> outcome;
    };
    using Worker =
        std::function<WriteOutcome(const WriteRequest&, RunControl&, const StepProgress&)>;

    /// The worker defaults to the choice by mode: TagWriter or a converter.
    explicit WriteQueue(HistoryStore& history, Worker worker = {});
    /// A job that still runs is told to end, and its outcome is dropped.
    ~WriteQueue();
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    const std::vector<Job>& jobs() const { return jobs_; }
    bool active() const { return active_; }
    bool paused() const { return paused_; }
    bool finished() const { return finished_; }
    const std::string& batch() const { return batch_; }

    int waitingCount() const;
    int doneCount() const;
    int skippedCount() const;
    /// Valid until the list changes.
    std::vector<const Job*> failedJobs() const;
    const Job* current() const;
    std::vector<std::filesystem::path> outputs() const;
    double totalBytes() const;
    double doneBytes() const;
    /// Bytes a second; 0 in the first two seconds of a run.
    double speed() const;

    void add(std::vector<Job> jobs);
    void start();
    void remove(const std::string& id);
    /// Ignored while a run is on, as every change of the list is.
    void dismiss();
    void clear();
    void retryFailed();
    void pause();
    void resume();
    void cancel();

    /// Tells how long a run lasts; pictures and tests have one of their own.
    std::function<std::chrono::steady_clock::time_point()> clock = &std::chrono::steady_clock::now;
    std::function<void(const std::filesystem::path&)> onDone;
    std::function<void(const std::vector<std::filesystem::path>&)> onRemoved;
    /// Told after each change that a screen would show.
    std::function<void()> onChanged;
    /// Told when jobs have come, gone, begun or ended, and when a run has.
    std::function<void()> onJobs;

private:
    Task<> run();
    Task<WriteOutcome> work(std::size_t index);
    Task<> finish(std::size_t index, WriteOutcome outcome);
    Task<> record(std::optional<HistoryEntry> entry);
    StepProgress progressOf(std::size_t index, std::string id);
    void take(const std::string& step, double fraction, std::size_t index, const std::string& id);
    int count(Job::State state) const;
    void changed();
    void jobsChanged();

    HistoryStore& history_;
    Worker worker_;
    std::vector<Job> jobs_;
    bool active_ = false;
    bool paused_ = false;
    bool finished_ = false;
    bool cancelled_ = false;
    std::chrono::steady_clock::time_point startedAt_ = std::chrono::steady_clock::now();
    std::shared_ptr<RunControl> control_;
    std::string batch_;
    CancelToken life_;
    /// Reports from a worker reach the queue only while it lives.
    std::shared_ptr<WriteQueue*> self_ = std::make_shared<WriteQueue*>(this);
};

std::string name(WriteQueue::Job::State state);

/// A job's technical message in two sentences for people.
namespace PlainText {
struct Explanation {
    std::string happened;
    std::string next;
    bool operator==(const Explanation&) const = default;
};
Explanation explain(const std::string& text);
/// True for the messages after which the person's file may not be as it was.
bool tellsOfDamage(const std::string& text);
}  // namespace PlainText

}  // namespace marlet
