#include "catalogue/stats.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace marlet::catalogue {

Stats::Visit::Visit(Stats& stats, const std::string& path, const std::string& target, bool hasToken)
    : stats_(stats) {
    const std::lock_guard hold(stats.lock_);
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

void Stats::reset() {
    const std::lock_guard hold(lock_);
    paths_.clear();
    targets_.clear();
    total_ = withToken_ = mostAtOnce_ = 0;
}

}  // namespace marlet::catalogue
