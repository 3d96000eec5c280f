#pragma once

#include <chrono>
#include <functional>

#include "foundation/dates.h"
#include "sources/async.h"

namespace marlet {

/// Time as the sources see it, in one place so that a test can turn the hands instead of waiting.
/// Main context only.
namespace Clock {

/// Counts up evenly, whatever happens to the calendar.
using Steady = std::chrono::milliseconds;

/// The calendar, for what is compared with dates.
Moment now();
/// For distances between requests.
Steady steady();
/// Throws CancelError as soon as the token is cancelled.
Task<> sleep(std::chrono::milliseconds time, CancelToken cancel);

/// Stands in for the real clock for as long as it lives; an empty function means the real one.
class Hooks {
public:
    Hooks(std::function<Moment()> now, std::function<Steady()> steady,
          std::function<Task<>(std::chrono::milliseconds, CancelToken)> sleep);
    ~Hooks();
    Hooks(const Hooks&) = delete;
    Hooks& operator=(const Hooks&) = delete;
};

}  // namespace Clock
}  // namespace marlet
