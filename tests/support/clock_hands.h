#pragma once

#include <chrono>
#include <vector>

#include "sources/clock.h"

namespace marlet::test {

/// Stands in for the sources' clock: sleeping takes no time but moves the hands and is remembered.
class ClockHands {
public:
    std::vector<std::chrono::milliseconds> slept;
    std::chrono::milliseconds elapsed{0};
    Moment start = Dates::now();

    std::chrono::milliseconds total() const {
        std::chrono::milliseconds sum{0};
        for (const auto time : slept) sum += time;
        return sum;
    }

private:
    Task<> sleepNow(std::chrono::milliseconds time, CancelToken cancel) {
        cancel.check();
        slept.push_back(time);
        elapsed += time;
        co_return;
    }

    Clock::Hooks hooks_{
        [this] { return start + std::chrono::duration_cast<std::chrono::seconds>(elapsed); },
        [this] { return elapsed; },
        [this](std::chrono::milliseconds time, CancelToken cancel) {
            return sleepNow(time, std::move(cancel));
        }};
};

}  // namespace marlet::test
