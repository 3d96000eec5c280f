#include "verify/block_times.h"

#include <algorithm>
#include <cmath>

namespace marlet::ConvertVerify {

namespace {

/// Some 146 years: beyond any film, and sums of two stay within what the type holds.
constexpr std::int64_t farthest = std::int64_t{1} << 62;

std::int64_t held(std::int64_t time) {
    return std::clamp(time, -farthest, farthest);
}

double distance(std::int64_t from, std::int64_t to) {
    return static_cast<double>(to) - static_cast<double>(from);
}

}  // namespace

void BlockTimes::add(const MKVBlock& block, std::vector<std::int64_t>* times) {
    if (block.frames.empty()) return;
    const std::int64_t time = held(block.timeNs);
    if (start_) {
        if (times != nullptr && !frameLength_ && time > lastTime_)
            spread(*times, distance(lastTime_, time) / static_cast<double>(lastCount_));
        framesBefore_ += lastCount_;
    } else {
        firstTime_ = time;
    }
    start_ = start_ ? std::min(*start_, time) : time;
    lastTime_ = time;
    lastCount_ = block.frames.size();
    lastDuration_ = block.durationNs;
    if (times == nullptr) return;
    times->insert(times->end(), lastCount_, time);
    if (frameLength_) spread(*times, static_cast<double>(*frameLength_));
}

void BlockTimes::finish(std::vector<std::int64_t>* times) {
    if (times != nullptr && start_ && !frameLength_) spread(*times, frameLength());
}

void BlockTimes::spread(std::vector<std::int64_t>& times, double step) const {
    const std::size_t from = times.size() - lastCount_;
    for (std::size_t i = 1; i < lastCount_; i++) {
        const double later = std::min(static_cast<double>(i) * step, static_cast<double>(farthest));
        times[from + i] = held(lastTime_ + std::llround(later));
    }
}

/// Of a frame of the last block, ns.
double BlockTimes::frameLength() const {
    if (lastDuration_) return static_cast<double>(*lastDuration_) / static_cast<double>(lastCount_);
    if (frameLength_) return static_cast<double>(*frameLength_);
    if (framesBefore_ == 0) return 0;
    return std::max(distance(firstTime_, lastTime_), 0.0) / static_cast<double>(framesBefore_);
}

double BlockTimes::spanSeconds() const {
    if (!start_) return 0;
    constexpr double second = 1e9;
    return (distance(firstTime_, lastTime_) + frameLength() * static_cast<double>(lastCount_)) /
           second;
}

}  // namespace marlet::ConvertVerify
