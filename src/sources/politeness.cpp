#include "sources/politeness.h"

#include <algorithm>

#include "foundation/errors.h"

namespace marlet {
namespace {

Task<> sleepQuietly(std::chrono::milliseconds time, CancelToken cancel) {
    try {
        Task<> sleeping = Clock::sleep(time, cancel);
        co_await sleeping;
    } catch (const CancelError&) {
        // The request behind this wait finds the cancel itself.
    }
}

}  // namespace

Task<> Politeness::wait(CancelToken cancel) {
    const Clock::Steady now = Clock::steady();
    const Clock::Steady next = std::max({blockedUntil_, last_ + gap_, now});
    // Set before sleeping: the next caller queues up behind this one.
    last_ = next;
    return sleepQuietly(next - now, std::move(cancel));
}

void Politeness::failed(Failure failure) {
    constexpr std::chrono::seconds longestBlock{600};
    const std::chrono::seconds base(failure == Failure::Hard ? 60 : 15);
    failures_++;
    const int doublings = std::min(failures_, 6) - 1;
    blockedUntil_ = Clock::steady() + std::min(longestBlock, base * (1 << doublings));
}

}  // namespace marlet
