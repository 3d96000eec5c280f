#pragma once

// The templates of async.h; include that one.

#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

#include "foundation/errors.h"

namespace marlet::Async {
namespace detail {

/// What a piece of work came to: a value or a failure.
template <typename T>
struct Outcome {
    std::optional<T> value;
    std::exception_ptr failure;

    void keep(const std::function<T()>& work) {
        try {
            value.emplace(work());
        } catch (...) {
            failure = std::current_exception();
        }
    }
    T take() {
        if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
        return std::move(*value);
    }
};

template <>
struct Outcome<void> {
    std::exception_ptr failure;

    void keep(const std::function<void()>& work) {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    }
    void take() {
        if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
    }
};

/// Runs `job` (which throws nothing) on the pool.
Task<> runOnWorker(std::function<void()> job);

/// A nested event loop that ends when the gate opens; false when the application quit first.
bool runLoopUntil(Gate gate);

template <typename T>
Task<> watch(Task<T> task, std::shared_ptr<Outcome<T>> outcome, Gate ended) {
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
        } else {
            T value = co_await task;
            outcome->value.emplace(std::move(value));
        }
    } catch (...) {
        outcome->failure = std::current_exception();
    }
    ended.open();
}

}  // namespace detail

template <typename R>
Task<R> onWorker(std::function<R()> work) {
    auto outcome = std::make_shared<detail::Outcome<R>>();
    // The function moves along, so that what it captures is let go on the worker.
    std::function<void()> job = [outcome, work = std::move(work)] { outcome->keep(work); };
    Task<> running = detail::runOnWorker(std::move(job));
    co_await running;
    if constexpr (std::is_void_v<R>) {
        outcome->take();
    } else {
        R value = outcome->take();
        co_return value;
    }
}

template <typename T>
T wait(Task<T> task) {
    auto outcome = std::make_shared<detail::Outcome<T>>();
    Gate ended;
    detail::watch<T>(std::move(task), outcome, ended);
    if (!detail::runLoopUntil(ended)) throw CancelError();
    return outcome->take();
}

}  // namespace marlet::Async
