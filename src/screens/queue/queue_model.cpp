#include "screens/queue/queue_model.h"

#include <algorithm>
#include <chrono>
#include <numeric>

#include "app/app_model.h"
#include "foundation/run_control.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"
#include "screens/queue/run_words.h"

namespace marlet {

namespace {

using namespace std::chrono_literals;
using State = WriteQueue::Job::State;

/// Numbers that change more often can't be read.
constexpr auto numbersStay = 500ms;
/// Nobody tells when a file begins to be changed.
constexpr auto lookForLock = 100ms;

}  // namespace

QueueModel::QueueModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), model_(model), lines_(this) {
    pace_.setSingleShot(true);
    pace_.setInterval(numbersStay);
    poll_.setInterval(lookForLock);
    connect(&pace_, &QTimer::timeout, this, [this] { look(); });
    connect(&poll_, &QTimer::timeout, this, [this] {
        // The time left changes also while no job reports.
        const bool numbersChanged = !pace_.isActive() && takeNumbers();
        if (takeLocked() || numbersChanged) Q_EMIT changed();
    });
}

void QueueModel::refresh() {
    const bool active = model_.queue().active();
    if (!active) {
        poll_.stop();
        cancelAsked_ = false;
    } else if (!poll_.isActive()) {
        poll_.start();
    }
    look();
}

void QueueModel::look() {
    // A change of a row's state brings its numbers along; a mere change of numbers waits.
    const bool jobsChanged = takeJobs();
    const bool headChanged = take(head_, headNow());
    const bool lockChanged = takeLocked();
    bool numbersChanged = false;
    if (jobsChanged || headChanged || !pace_.isActive()) numbersChanged = takeNumbers();
    if (headChanged || lockChanged || numbersChanged) Q_EMIT changed();
}

bool QueueModel::takeNumbers() {
    updateRunning();
    if (!take(numbers_, numbersNow())) return false;
    pace_.start();
    return true;
}

void QueueModel::updateRunning() {
    const WriteQueue::Job* job = model_.queue().current();
    if (job == nullptr || head_.runningRow < 0) return;
    lines_.update(head_.runningRow, lineOf(*job));
}

bool QueueModel::takeLocked() {
    return take(locked_, model_.queue().active() && RunControl::criticalActive());
}

bool QueueModel::takeJobs() {
    const WriteQueue& queue = model_.queue();
    const auto isSeen = [](const WriteQueue::Job& job, const Seen& seen) {
        return job.state == seen.state && job.id == seen.id;
    };
    const bool sameRun = batch_ == queue.batch() && sorted_ == queue.finished();
    if (sameRun && std::ranges::equal(queue.jobs(), seen_, isSeen)) return false;

    std::vector<Seen> seen;
    seen.reserve(queue.jobs().size());
    for (const auto& job : queue.jobs()) seen.push_back({job.id, job.state});
    const bool sameJobs = std::ranges::equal(seen, seen_, {}, &Seen::id, &Seen::id);
    std::swap(seen, seen_);
    if (!sameRun || !sameJobs || sorted_) {
        batch_ = queue.batch();
        sorted_ = queue.finished();
        makeLines();
        return true;
    }
    for (std::size_t i = 0; i < seen.size(); ++i)
        if (seen[i].state != seen_[i].state)
            lines_.update(static_cast<int>(i), lineOf(queue.jobs()[i]));
    return true;
}

/// In the order of the queue, and when it has finished, what failed first.
void QueueModel::makeLines() {
    const auto& jobs = model_.queue().jobs();
    std::vector<std::size_t> order(jobs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto rank = [&](std::size_t index) { return rankOfEnded(jobs[index]); };
    if (sorted_) std::ranges::stable_sort(order, {}, rank);

    const bool severalKinds =
        sorted_ && std::ranges::adjacent_find(jobs, std::ranges::not_equal_to{},
                                              &WriteQueue::Job::state) != jobs.end();
    std::vector<JobLine> lines;
    lines.reserve(jobs.size());
    for (const std::size_t index : order) {
        lines.push_back(lineOf(jobs[index]));
        if (severalKinds) lines.back().group = lines.back().word;
    }
    lines_.set(std::move(lines));
}

JobLine QueueModel::lineOf(const WriteQueue::Job& job) const {
    JobLine line = JobLine::of(job);
    line.open = !line.technical.isEmpty() && open_.contains(line.key);
    return line;
}

QueueModel::Head QueueModel::headNow() const {
    const WriteQueue& queue = model_.queue();
    Head head;
    if (queue.active()) {
        head.stage = QStringLiteral("running");
        head.paused = queue.paused();
        head.cancelling = cancelAsked_;
        head.title = cancelAsked_ ? tr("Cancelling…") : RunWords::running(queue);
        head.detail = tr("%1 files").arg(queue.jobs().size());
        const auto running =
            std::ranges::find(queue.jobs(), State::running, &WriteQueue::Job::state);
        if (running != queue.jobs().end())
            head.runningRow = static_cast<int>(running - queue.jobs().begin());
    } else if (queue.finished()) {
        head.stage = QStringLiteral("finished");
        head.title = RunWords::finished(queue);
        head.detail = RunWords::counts(queue);
        head.canRetry = !queue.failedJobs().empty();
        head.failures = std::ranges::any_of(
            queue.jobs(), [](const auto& job) { return job.state == State::failed; });
        head.canShow = std::ranges::any_of(queue.jobs(), [](const auto& job) {
            return job.state == State::done && job.outcome && job.outcome->output;
        });
    } else if (!queue.jobs().empty()) {
        head.stage = QStringLiteral("waiting");
        head.title = tr("%1 waiting").arg(queue.waitingCount());
        head.detail = RunWords::whereTo(queue);
    }
    return head;
}

QueueModel::Numbers QueueModel::numbersNow() const {
    const WriteQueue& queue = model_.queue();
    if (!queue.active()) return {};
    return {queue.doneBytes() / queue.totalBytes(),
            queue.paused() ? QString() : RunWords::timeLeft(queue), RunWords::now(queue)};
}

QString QueueModel::detail() const {
    return numbers_.timeLeft.isEmpty() ? head_.detail
                                       : head_.detail + QStringLiteral(" · ") + numbers_.timeLeft;
}

void QueueModel::start() {
    model_.queue().start();
}

// A file may have begun to be changed since the last look: then the queue refuses, and the lock
// shows at once.
void QueueModel::pause() {
    model_.queue().pause();
    if (takeLocked()) Q_EMIT changed();
}

void QueueModel::resume() {
    model_.queue().resume();
}

void QueueModel::cancel() {
    cancelAsked_ = model_.queue().active() && !RunControl::criticalActive();
    model_.queue().cancel();
    look();
}

void QueueModel::removeAll() {
    model_.queue().dismiss();
}

void QueueModel::remove(const QString& key) {
    model_.queue().remove(fromQt(key));
}

void QueueModel::toggle(const QString& key) {
    const int at = lines_.indexOf(key);
    if (at < 0 || lines_.at(at).technical.isEmpty()) return;
    if (!open_.remove(key)) open_.insert(key);
    JobLine line = lines_.at(at);
    line.open = !line.open;
    lines_.update(at, std::move(line));
}

void QueueModel::retryFailed() {
    model_.queue().retryFailed();
}

void QueueModel::clearResults() {
    model_.queue().dismiss();
}

QList<QUrl> QueueModel::outputs() const {
    QList<QUrl> files;
    for (const auto& path : model_.queue().outputs()) files << FileAddress::of(path);
    return files;
}

QList<QUrl> QueueModel::filesOf(const QString& key) const {
    const std::string id = fromQt(key);
    for (const auto& job : model_.queue().jobs())
        if (job.id == id) {
            const bool wrote = job.outcome && job.outcome->output;
            return {FileAddress::of(wrote ? *job.outcome->output : job.request.file)};
        }
    return {};
}

}  // namespace marlet
