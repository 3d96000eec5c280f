#include "sources/async.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "foundation/errors.h"

namespace marlet {

struct CancelToken::State {
    bool cancelled = false;
    std::vector<std::weak_ptr<std::function<void()>>> calls;
    std::size_t pruneAt = 16;
};

CancelToken::CancelToken() : state_(std::make_shared<State>()) {}

void CancelToken::cancel() const {
    // A call-back may drop the last copy of this token.
    const std::shared_ptr<State> state = state_;
    if (std::exchange(state->cancelled, true)) return;
    const auto calls = std::exchange(state->calls, {});
    for (const auto& weak : calls) {
        if (const auto call = weak.lock()) (*call)();
    }
}

bool CancelToken::isCancelled() const {
    return state_->cancelled;
}

void CancelToken::check() const {
    if (state_->cancelled) throw CancelError();
}

CancelToken::Registration CancelToken::onCancel(std::function<void()> call) const {
    if (state_->cancelled) {
        call();
        return {};
    }
    auto& calls = state_->calls;
    if (calls.size() >= state_->pruneAt) {
        std::erase_if(calls, [](const auto& weak) { return weak.expired(); });
        state_->pruneAt = std::max<std::size_t>(16, calls.size() * 2);
    }
    auto kept = std::make_shared<std::function<void()>>(std::move(call));
    calls.push_back(kept);
    return Registration(std::move(kept));
}

struct Gate::State {
    bool open = false;
    std::vector<std::coroutine_handle<>> waiters;
};

Gate::Gate() : state_(std::make_shared<State>()) {}

void Gate::open() const {
    const std::shared_ptr<State> state = state_;
    if (std::exchange(state->open, true)) return;
    const auto waiters = std::exchange(state->waiters, {});
    for (auto waiter : waiters) waiter.resume();
}

bool Gate::isOpen() const {
    return state_->open;
}

void Gate::await_suspend(std::coroutine_handle<> waiter) const {
    state_->waiters.push_back(waiter);
}

namespace Async {
namespace {

/// Takes what is posted to the main context. Never destroyed: a worker may end later than the
/// application object.
QObject* mainContext() {
    static auto* context = new QObject;
    return context;
}

/// Most workers wait for a disk, so there are more of them than processors.
QThreadPool& pool() {
    // Never destroyed, but no worker outlives the application object.
    static auto* workers = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(std::max(8, QThread::idealThreadCount()));
        qAddPostRoutine([] { pool().waitForDone(); });
        return made;
    }();
    return *workers;
}

int busyWorkers = 0;  // main context only

struct Lanes {
    std::size_t count;
    std::function<Task<>(std::size_t)> start;
    std::size_t next = 0;
    std::exception_ptr failure;
};

Task<> runLane(std::shared_ptr<Lanes> lanes) {
    while (!lanes->failure && lanes->next < lanes->count) {
        const std::size_t index = lanes->next++;
        try {
            Task<> task = lanes->start(index);
            co_await task;
        } catch (...) {
            if (!lanes->failure) lanes->failure = std::current_exception();
        }
    }
}

/// Outlives its loop when the application quits first.
Task<> quitAt(Gate gate, std::shared_ptr<QEventLoop*> loop) {
    co_await gate;
    if (*loop != nullptr) (*loop)->quit();
}

}  // namespace

void post(std::function<void()> call) {
    QMetaObject::invokeMethod(mainContext(), std::move(call), Qt::QueuedConnection);
}

Task<> sleep(std::chrono::milliseconds time, CancelToken cancel) {
    cancel.check();
    if (time.count() <= 0) co_return;
    Gate gate;
    const auto registration = cancel.onCancel([gate] { gate.open(); });
    // Not deleted by its own signal, which is what resumes us.
    const std::unique_ptr<QTimer, void (*)(QTimer*)> timer(new QTimer, [](QTimer* ended) {
        ended->stop();
        ended->deleteLater();
    });
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [gate] { gate.open(); });
    timer->start(time);
    co_await gate;
    cancel.check();
}

Task<> forEach(std::size_t count, std::size_t width, std::function<Task<>(std::size_t)> start) {
    auto lanes = std::make_shared<Lanes>(Lanes{count, std::move(start), 0, nullptr});
    std::vector<Task<>> running;
    const std::size_t atOnce = std::min(std::max<std::size_t>(width, 1), count);
    for (std::size_t i = 0; i < atOnce; i++) running.push_back(runLane(lanes));
    for (Task<>& lane : running) co_await lane;
    if (lanes->failure) std::rethrow_exception(lanes->failure);
}

bool settle(std::chrono::milliseconds atMost) {
    QElapsedTimer clock;
    clock.start();
    while (busyWorkers > 0) {
        if (clock.elapsed() > atMost.count()) return false;
        // No event loop of its own: one that starts after a quit ends at once.
        QCoreApplication::processEvents();
        if (busyWorkers > 0) QThread::msleep(2);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return true;
}

namespace detail {

Task<> runOnWorker(std::function<void()> job) {
    Gate gate;
    mainContext();  // made here, on the main context, and not by the worker
    busyWorkers++;
    // Shared, because the pool copies what it runs; emptied before the answer goes back, so that
    // nothing of the job outlives the wait for it.
    auto work = std::make_shared<std::function<void()>>(std::move(job));
    pool().start([work, gate] {
        (*work)();
        *work = nullptr;
        post([gate] {
            busyWorkers--;
            gate.open();
        });
    });
    co_await gate;
}

bool runLoopUntil(Gate gate) {
    if (gate.isOpen()) return true;
    QEventLoop loop;
    const auto target = std::make_shared<QEventLoop*>(&loop);
    quitAt(gate, target);
    loop.exec();
    *target = nullptr;
    return gate.isOpen();
}

}  // namespace detail
}  // namespace Async
}  // namespace marlet
