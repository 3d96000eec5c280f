#pragma once

#include <coroutine>
#include <deque>

namespace marlet {

/// At most two at a time: each reads a whole film. Whoever leaves hands its place to the first in
/// line. Main context only.
class AnalysisGate {
public:
    AnalysisGate() = default;
    AnalysisGate(const AnalysisGate&) = delete;
    AnalysisGate& operator=(const AnalysisGate&) = delete;

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
        free_++;
        // One who is let in may leave at once, in here: a long line of those is walked, not
        // nested.
        if (handingOver_) return;
        handingOver_ = true;
        while (free_ > 0 && !waiting_.empty()) {
            const std::coroutine_handle<> next = waiting_.front();
            waiting_.pop_front();
            free_--;
            next.resume();
        }
        handingOver_ = false;
    }
    int free() const { return free_; }

    /// Leaves on every way out of whoever has entered.
    class Place {
    public:
        explicit Place(AnalysisGate& gate) : gate_(gate) {}
        ~Place() { gate_.leave(); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

    private:
        AnalysisGate& gate_;
    };

private:
    int free_ = 2;
    bool handingOver_ = false;
    std::deque<std::coroutine_handle<>> waiting_;
};

}  // namespace marlet
