#pragma once

#include <chrono>

#include "sources/async.h"
#include "sources/clock.h"

namespace marlet {

/// Manners towards a service without published rules: a gap between requests, and a growing
/// pause after failures. One per source; main context only, so that calls never race.
class Politeness {
public:
    enum class Failure { Soft, Hard };

    static constexpr std::chrono::milliseconds appleTVGap{350};
    static constexpr std::chrono::milliseconds itunesGap{1000};

    explicit Politeness(std::chrono::milliseconds gap) : gap_(gap) {}

    /// Ends when it is this caller's turn; callers queue up in the order of their calls. A
    /// cancelled sleep just ends the wait.
    Task<> wait(CancelToken cancel = {});
    /// Leaves the service alone: hard ones (refused) for 60 s, soft ones for 15 s, doubling with
    /// each failure in a row, 600 s at most.
    void failed(Failure failure);
    void succeeded() { failures_ = 0; }

    int failures() const { return failures_; }
    Clock::Steady blockedUntil() const { return blockedUntil_; }

private:
    std::chrono::milliseconds gap_;
    Clock::Steady last_ = distantPast;
    Clock::Steady blockedUntil_ = distantPast;
    int failures_ = 0;

    static constexpr Clock::Steady distantPast = std::chrono::hours(-24 * 365 * 100);
};

}  // namespace marlet
