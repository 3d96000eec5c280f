#include "sources/clock.h"

#include <utility>

namespace marlet::Clock {
namespace {

struct Installed {
    std::function<Moment()> now;
    std::function<Steady()> steady;
    std::function<Task<>(std::chrono::milliseconds, CancelToken)> sleep;
};

Installed& installed() {
    static Installed hooks;
    return hooks;
}

}  // namespace

Moment now() {
    return installed().now ? installed().now() : Dates::now();
}

Steady steady() {
    if (installed().steady) return installed().steady();
    return std::chrono::duration_cast<Steady>(std::chrono::steady_clock::now().time_since_epoch());
}

Task<> sleep(std::chrono::milliseconds time, CancelToken cancel) {
    if (installed().sleep) return installed().sleep(time, std::move(cancel));
    return Async::sleep(time, std::move(cancel));
}

Hooks::Hooks(std::function<Moment()> now, std::function<Steady()> steady,
             std::function<Task<>(std::chrono::milliseconds, CancelToken)> sleep) {
    installed() = {std::move(now), std::move(steady), std::move(sleep)};
}

Hooks::~Hooks() {
    installed() = {};
}

}  // namespace marlet::Clock
