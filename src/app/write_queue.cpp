#include "app/write_queue.h"

#include <algorithm>
#include <mutex>
#include <set>

#include "app/history.h"
#include "app/worker.h"
#include "foundation/work_area.h"
#include "identify/asking.h"

namespace marlet {

namespace {

using State = WriteQueue::Job::State;

State stateOf(WriteOutcome::Status status) {
    switch (status) {
        case WriteOutcome::Status::done:
            return State::done;
        case WriteOutcome::Status::skipped:
            return State::skipped;
        case WriteOutcome::Status::cancelled:
            return State::cancelled;
        case WriteOutcome::Status::failed:
        case WriteOutcome::Status::stopped:
            break;
    }
    return State::failed;
}

HistoryEntry entryOf(const WriteQueue::Job& job, const WriteOutcome& outcome,
                     const std::string& batch) {
    HistoryEntry entry;
    entry.id = newUUID();
    entry.date = Dates::now();
    entry.path = outcome.output.value_or(job.request.file).string();
    entry.title = job.title;
    entry.show = job.show;
    entry.season = job.season;
    entry.episode = job.episode;
    entry.isMovie = job.isMovie;
    entry.result = name(outcome.status);
    entry.before = outcome.before;
    entry.after = outcome.after;
    entry.changes = outcome.changes;
    entry.message = outcome.message;
    entry.size = outcome.size;
    entry.batchID = batch;
    if (job.request.isRestore()) entry.isRestore = true;
    entry.posterPath = job.posterPath;
    entry.year = job.year;
    entry.how = job.how;
    entry.summary = job.summary;
    return entry;
}

/// What was written is not written again, and thousands of covers weigh.
void dropAtoms(WriteRequest& request) {
    if (auto* details = std::get_if<WriteRequest::WriteDetails>(&request.mode)) details->atoms = {};
    if (auto* convert = std::get_if<ConvertRequest>(&request.mode)) convert->atoms = {};
}

}  // namespace

std::string name(WriteQueue::Job::State state) {
    switch (state) {
        case State::waiting:
            return "waiting";
        case State::running:
            return "running";
        case State::done:
            return "done";
        case State::failed:
            return "failed";
        case State::skipped:
            return "skipped";
        case State::cancelled:
            break;
    }
    return "cancelled";
}

WriteQueue::WriteQueue(HistoryStore& history, Worker worker)
    : history_(history), worker_(worker ? std::move(worker) : Worker(runJob)), batch_(newUUID()) {}

WriteQueue::~WriteQueue() {
    onChanged = onJobs = nullptr;
    if (control_ && !RunControl::criticalActive()) control_->cancel();
    life_.cancel();
}

void WriteQueue::changed() {
    if (onChanged) onChanged();
}

void WriteQueue::jobsChanged() {
    changed();
    if (onJobs) onJobs();
}

int WriteQueue::count(State state) const {
    return static_cast<int>(std::count_if(jobs_.begin(), jobs_.end(),
                                          [&](const Job& job) { return job.state == state; }));
}

int WriteQueue::waitingCount() const {
    return count(State::waiting);
}
int WriteQueue::doneCount() const {
    return count(State::done);
}
int WriteQueue::skippedCount() const {
    return count(State::skipped);
}

std::vector<const WriteQueue::Job*> WriteQueue::failedJobs() const {
    std::vector<const Job*> failed;
    for (const Job& job : jobs_)
        if (job.state == State::failed || job.state == State::cancelled) failed.push_back(&job);
    return failed;
}

const WriteQueue::Job* WriteQueue::current() const {
    for (const Job& job : jobs_)
        if (job.state == State::running) return &job;
    return nullptr;
}

std::vector<std::filesystem::path> WriteQueue::outputs() const {
    std::vector<std::filesystem::path> outputs;
    for (const Job& job : jobs_)
        if (job.state == State::done && job.outcome && job.outcome->output)
            outputs.push_back(*job.outcome->output);
    return outputs;
}

double WriteQueue::totalBytes() const {
    double total = 0;
    for (const Job& job : jobs_) total += static_cast<double>(job.size);
    return std::max(total, 1.0);
}

double WriteQueue::doneBytes() const {
    double done = 0;
    for (const Job& job : jobs_) {
        if (job.state == State::waiting) continue;
        const double share = job.state == State::running ? job.fraction : 1.0;
        done += share * static_cast<double>(job.size);
    }
    return done;
}

double WriteQueue::speed() const {
    const std::chrono::duration<double> passed = clock() - startedAt_;
    return passed.count() > 2.0 ? doneBytes() / passed.count() : 0.0;
}

void WriteQueue::add(std::vector<Job> jobs) {
    if (active_) return;
    if (finished_) dismiss();
    std::set<std::filesystem::path> waiting;
    for (const Job& job : jobs_)
        if (job.state == State::waiting) waiting.insert(job.request.file);
    for (Job& job : jobs)
        if (waiting.insert(job.request.file).second) jobs_.push_back(std::move(job));
    jobsChanged();
}

void WriteQueue::start() {
    if (active_ || waitingCount() == 0) return;
    batch_ = newUUID();
    active_ = true;
    paused_ = finished_ = cancelled_ = false;
    startedAt_ = clock();
    changed();
    run();
}

void WriteQueue::remove(const std::string& id) {
    if (active_) return;
    const auto found = std::find_if(jobs_.begin(), jobs_.end(), [&](const Job& job) {
        return job.id == id && job.state == State::waiting;
    });
    if (found == jobs_.end()) return;
    const std::filesystem::path file = found->request.file;
    jobs_.erase(found);
    jobsChanged();
    if (onRemoved) onRemoved({file});
}

void WriteQueue::dismiss() {
    if (active_) return;
    std::vector<std::filesystem::path> unfinished;
    for (const Job& job : jobs_)
        if (job.state != State::done && !job.request.isRestore())
            unfinished.push_back(job.request.file);
    jobs_.clear();
    finished_ = false;
    jobsChanged();
    if (onRemoved && !unfinished.empty()) onRemoved(unfinished);
}

void WriteQueue::clear() {
    if (active_) return;
    jobs_.clear();
    jobsChanged();
}

void WriteQueue::retryFailed() {
    if (active_) return;
    for (Job& job : jobs_) {
        if (job.state != State::failed && job.state != State::cancelled) continue;
        job.state = State::waiting;
        job.step.clear();
        job.fraction = 0;
        job.outcome.reset();
    }
    finished_ = false;
    start();
}

void WriteQueue::pause() {
    if (RunControl::criticalActive()) return;
    paused_ = true;
    if (control_) control_->pause();
    changed();
}

void WriteQueue::resume() {
    paused_ = false;
    if (control_) control_->resume();
    changed();
}

void WriteQueue::cancel() {
    if (RunControl::criticalActive()) return;
    cancelled_ = true;
    if (control_) {
        control_->cancel();
        control_->resume();
    }
    changed();
}

Task<> WriteQueue::run() {
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < jobs_.size(); i++)
        if (jobs_[i].state == State::waiting) indices.push_back(i);

    for (const std::size_t index : indices) {
        if (cancelled_) {
            jobs_[index].state = State::cancelled;
            jobs_[index].outcome = WriteOutcome{.status = WriteOutcome::Status::cancelled,
                                                .message = "cancelled before it started"};
            jobsChanged();
            continue;
        }
        auto working = work(index);
        WriteOutcome outcome = co_await working;
        auto finishing = finish(index, std::move(outcome));
        co_await finishing;
    }
    active_ = paused_ = false;
    finished_ = true;
    jobsChanged();
}

Task<WriteOutcome> WriteQueue::work(std::size_t index) {
    jobs_[index].state = State::running;
    // A pause in force holds only the job that was running when it was made.
    control_ = std::make_shared<RunControl>();
    control_->expectRecord();
    jobsChanged();
    const std::shared_ptr<RunControl> control = control_;
    const auto request = std::make_shared<const WriteRequest>(jobs_[index].request);
    const StepProgress progress = progressOf(index, jobs_[index].id);
    const Worker worker = worker_;
    std::function<WriteOutcome()> job = [=] {
        try {
            return worker(*request, *control, progress);
        } catch (const std::exception& failure) {
            return WriteOutcome{.message = failure.what()};
        }
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(job)), life_);
    WriteOutcome outcome = co_await working;
    co_return outcome;
}

namespace {

/// The latest report of a job on its way to the main context: a worker may report for every block,
/// and only what it said last counts.
struct LatestReport {
    std::mutex lock;
    std::string step;
    double fraction = 0;
    bool onItsWay = false;
};

}  // namespace

StepProgress WriteQueue::progressOf(std::size_t index, std::string id) {
    const std::weak_ptr<WriteQueue*> alive = self_;
    const auto latest = std::make_shared<LatestReport>();
    return [alive, latest, index, id](const std::string& step, double fraction) {
        const std::lock_guard guard(latest->lock);
        latest->step = step;
        latest->fraction = fraction;
        if (std::exchange(latest->onItsWay, true)) return;
        Async::post([alive, latest, index, id] {
            std::unique_lock reading(latest->lock);
            const std::string newest = latest->step;
            const double share = latest->fraction;
            latest->onItsWay = false;
            reading.unlock();
            if (const auto queue = alive.lock()) (*queue)->take(newest, share, index, id);
        });
    };
}

void WriteQueue::take(const std::string& step, double fraction, std::size_t index,
                      const std::string& id) {
    // Never late: a report that arrives when its job has ended is dropped.
    if (index >= jobs_.size() || jobs_[index].id != id) return;
    if (jobs_[index].state != State::running) return;
    jobs_[index].fraction = fraction;
    jobs_[index].step = step;
    changed();
}

Task<> WriteQueue::finish(std::size_t index, WriteOutcome outcome) {
    const std::shared_ptr<RunControl> control = std::exchange(control_, nullptr);
    // The list is closed while a run is on.
    Job& job = jobs_[index];
    job.fraction = 1;
    job.state = stateOf(outcome.status);
    job.outcome = outcome;
    if (outcome.status == WriteOutcome::Status::stopped) cancelled_ = true;
    std::optional<HistoryEntry> entry;
    if (outcome.status != WriteOutcome::Status::cancelled) entry = entryOf(job, outcome, batch_);
    auto recording = record(std::move(entry));
    if (control) control->settle();
    // All at once, or whoever ends the program meanwhile would keep a film that is done.
    if (job.state == State::done) dropAtoms(job.request);
    jobsChanged();
    if (job.state == State::done && !job.request.isRestore() && onDone) onDone(job.request.file);
    // The next job begins when the record of this one is on the disk.
    co_await recording;
}

/// Hands it over before it returns.
Task<> WriteQueue::record(std::optional<HistoryEntry> entry) {
    if (!entry) co_return;
    const CancelToken life = life_;
    try {
        auto appending = history_.appendSoon(*std::move(entry));
        co_await appending;
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // History never holds up a run.
    }
    life.check();
}

}  // namespace marlet
