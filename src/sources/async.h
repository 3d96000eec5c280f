#pragma once

// The one place that knows QCoro. Everything asynchronous in the program is a Task on the main
// context (the thread of the Qt event loop); blocking work goes to a worker and comes back.
//
// Rules for coroutines here (g++ 12 gets the others wrong): parameters by value, no capturing
// lambda is itself a coroutine, no co_await inside a conditional expression or an argument list,
// and a call with arguments is named before it is awaited (auto task = f(x); co_await task;): a
// temporary inside the awaited expression may be destroyed twice.
//
// A Task starts at once and runs up to its first wait. Dropping it doesn't stop it: whoever wants
// an end keeps a CancelToken, whose cancel() resumes every wait on it before it returns, so an
// owner that cancels in its destructor is not touched afterwards.

#include <QCoroTask>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace marlet {

template <typename T = void>
using Task = QCoro::Task<T>;

/// Shared by all who work on one thing; whoever holds a copy may cancel it. Main context only.
class CancelToken {
public:
    CancelToken();

    /// Calls what was registered, once, in the order of registration.
    void cancel() const;
    bool isCancelled() const;
    /// Throws CancelError when cancelled.
    void check() const;

    /// Keeps a call-back registered for as long as it lives.
    class Registration {
    public:
        Registration() = default;
        explicit Registration(std::shared_ptr<std::function<void()>> call)
            : call_(std::move(call)) {}

    private:
        std::shared_ptr<std::function<void()>> call_;
    };
    /// Called once when cancelled (before this returns if it is already).
    [[nodiscard]] Registration onCancel(std::function<void()> call) const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

/// A one-shot gate: coroutines wait at it until somebody opens it. Copies are the same gate.
/// Main context only.
class Gate {
public:
    Gate();

    /// Resumes those who wait before it returns; later waits pass through.
    void open() const;
    bool isOpen() const;

    bool await_ready() const noexcept { return isOpen(); }
    void await_suspend(std::coroutine_handle<> waiter) const;
    void await_resume() const noexcept {}

private:
    struct State;
    std::shared_ptr<State> state_;
};

namespace Async {

/// Throws CancelError as soon as the token is cancelled.
Task<> sleep(std::chrono::milliseconds time, CancelToken cancel = {});
/// Runs on the worker pool and comes back to the main context; carries over what it throws.
template <typename R>
Task<R> onWorker(std::function<R()> work);
/// Starts start(0), start(1), ... in order, at most `width` at a time, each next one as one ends.
/// Ends when all have ended. After the first failure nothing more is started and that failure is
/// thrown once those under way have ended.
Task<> forEach(std::size_t count, std::size_t width, std::function<Task<>(std::size_t)> start);
/// Blocks in a nested event loop: for the ends of main and for tests. Throws what the task throws,
/// and CancelError when the application quits before the task has ended.
template <typename T>
T wait(Task<T> task);
/// Runs a function once on the main context, soon. May be called from any thread.
void post(std::function<void()> call);
/// Runs the event loop until no worker is busy, at most so long: the last thing before an
/// application object goes, so that no coroutine stays behind. False when the time ran out.
bool settle(std::chrono::milliseconds atMost);

}  // namespace Async
}  // namespace marlet

#include "sources/async_impl.h"
