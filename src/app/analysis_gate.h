#pragma once

#include <coroutine>
#include <deque>

namespace marlet {

/// At most two at a time: each reads a whole film. Whoever leaves hands its place to the first in
/// line. Main context only.
class AnalysisGate {
public:
    /// co_await gate.enter();
    auto enter() {
        struct Awaiter {
            AnalysisGate& gate;
            bool await_ready() const {
                if (gate.free_ < 1) return false;
                gate.free_--;
                return true;
            }
            void await_suspend(std::coroutine_handle<> caller) { gate.waiting_.push_back(caller); }
            void await_resume() const {}
        };
        return Awaiter{*this};
    }
    void leave() {
        if (waiting_.empty()) {
            free_++;
            return;
        }
        const std::coroutine_handle<> next = waiting_.front();
        waiting_.pop_front();
        next.resume();
    }
    int free() const { return free_; }

private:
    int free_ = 2;
    std::deque<std::coroutine_handle<>> waiting_;
};

}  // namespace marlet
