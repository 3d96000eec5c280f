#include "catalogue/stats.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace marlet::catalogue {

Stats::Visit::Visit(Stats& stats, const std::string& path, const std::string& target, bool hasToken)
    : stats_(stats) {
    const std::lock_guard hold(stats.lock_);
    stats.arrivals_.push_back({std::chrono::steady_clock::now(), target, hasToken});
    stats.paths_[path]++;
    stats.targets_[target]++;
    stats.total_++;
    stats.withToken_ += hasToken ? 1 : 0;
    stats.mostAtOnce_ = std::max(stats.mostAtOnce_, ++stats.now_);
}

Stats::Visit::~Visit() {
    const std::lock_guard hold(stats_.lock_);
    stats_.now_--;
}

std::string Stats::json() const {
    const std::lock_guard hold(lock_);
    const nlohmann::json out = {{"total", total_},
                                {"withToken", withToken_},
                                {"mostAtOnce", mostAtOnce_},
                                {"paths", paths_},
                                {"targets", targets_}};
    return out.dump(2);
}

std::string Stats::log() const {
    const std::lock_guard hold(lock_);
    nlohmann::json out = nlohmann::json::array();
    for (const Arrival& arrival : arrivals_) {
        const auto since =
            std::chrono::duration_cast<std::chrono::milliseconds>(arrival.at.time_since_epoch());
        out.push_back(
            {{"ms", since.count()}, {"target", arrival.target}, {"token", arrival.hasToken}});
    }
    return out.dump();
}

void Stats::reset() {
    const std::lock_guard hold(lock_);
    arrivals_.clear();
    paths_.clear();
    targets_.clear();
    total_ = withToken_ = mostAtOnce_ = 0;
}

}  // namespace marlet::catalogue
