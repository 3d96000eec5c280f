#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "foundation/errors.h"
#include "sources/async.h"

namespace marlet {

/// Waits for catalogues and workers that end with the scan: neither takes a cancel token, so the
/// wait is let go instead and the call ends on its own.
namespace Asking {
namespace detail {

template <typename T>
struct Outcome {
    std::optional<T> value;
    std::exception_ptr failure;
};

/// `keep` holds what the call works with, for as long as it runs.
template <typename T>
Task<> watch(Task<T> call, std::shared_ptr<Outcome<T>> outcome, Gate ended,
             [[maybe_unused]] std::shared_ptr<const void> keep) {
    try {
        T value = co_await call;
        outcome->value.emplace(std::move(value));
    } catch (...) {
        outcome->failure = std::current_exception();
    }
    ended.open();
}

}  // namespace detail

/// What the call gives or throws; CancelError as soon as the token is cancelled.
template <typename T>
Task<T> orCancelled(Task<T> call, CancelToken cancel, std::shared_ptr<const void> keep = {}) {
    auto outcome = std::make_shared<detail::Outcome<T>>();
    Gate ended;
    const auto registration = cancel.onCancel([ended] { ended.open(); });
    detail::watch<T>(std::move(call), outcome, ended, std::move(keep));
    co_await ended;
    cancel.check();
    if (outcome->failure) std::rethrow_exception(std::exchange(outcome->failure, nullptr));
    T value = std::move(*outcome->value);
    co_return value;
}

/// What the call gives, nothing when it failed; CancelError as soon as the token is cancelled.
template <typename T>
Task<std::optional<T>> answer(Task<T> call, CancelToken cancel,
                              std::shared_ptr<const void> keep = {}) {
    std::optional<T> result;
    try {
        auto waiting = orCancelled<T>(std::move(call), cancel, std::move(keep));
        T value = co_await waiting;
        result.emplace(std::move(value));
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // A source that fails is a source that knows nothing; the verdict tells it.
    }
    co_return result;
}

}  // namespace Asking
}  // namespace marlet
