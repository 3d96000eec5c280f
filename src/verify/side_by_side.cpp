#include "verify/side_by_side.h"

#include <algorithm>
#include <chrono>
#include <future>

namespace marlet {

namespace {

/// Ends the work on one file when the other one has failed.
struct Abandoned {};

}  // namespace

ReadShare::ReadShare(std::uint64_t total, double start, double length, const StepProgress& progress)
    : total_(std::max<std::uint64_t>(total, 1)),
      start_(start),
      length_(length),
      progress_(progress) {}

void ReadShare::tell() const {
    const double done = static_cast<double>(bytes_.load()) / static_cast<double>(total_);
    if (progress_) progress_("Verifying", start_ + length_ * std::min(done, 1.0));
}

void sideBySide(const Reading& onThread, const Reading& here, ReadShare& share) {
    std::atomic<bool> hasFailed = false;
    auto other = std::async(std::launch::async, [&] {
        try {
            onThread([&](std::uint64_t bytes) {
                share.add(bytes);
                if (hasFailed) throw Abandoned();
            });
        } catch (...) {
            hasFailed = true;
            throw;
        }
    });
    try {
        here([&](std::uint64_t bytes) {
            share.add(bytes);
            share.tell();
            if (hasFailed) throw Abandoned();
        });
        constexpr std::chrono::milliseconds betweenReports{200};
        while (other.wait_for(betweenReports) != std::future_status::ready) share.tell();
    } catch (const Abandoned&) {
        other.get();  // throws what went wrong
    } catch (...) {
        hasFailed = true;  // the future waits for its thread
        throw;
    }
    other.get();
}

}  // namespace marlet
