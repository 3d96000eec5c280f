#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace marlet::catalogue {

/// Counts what was asked. Any thread may use it.
class Stats {
public:
    /// One request from its arrival until its answer is ready.
    class Visit {
    public:
        Visit(Stats& stats, const std::string& path, const std::string& target, bool hasToken);
        ~Visit();
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

    private:
        Stats& stats_;
    };

    /// {"total", "withToken", "mostAtOnce", "paths": {path: count}, "targets": {target: count}}; a
    /// target is the path with its query as it came.
    std::string json() const;
    /// [{"ms", "target", "token"}] in the order of arrival; ms counts up from some moment, token is
    /// whether the request had an Authorization header.
    std::string log() const;
    void reset();

private:
    struct Arrival {
        std::chrono::steady_clock::time_point at;
        std::string target;
        bool hasToken = false;
    };

    mutable std::mutex lock_;  ///< guards all below
    std::vector<Arrival> arrivals_;
    std::map<std::string, int> paths_;
    std::map<std::string, int> targets_;
    int total_ = 0;
    int withToken_ = 0;
    int now_ = 0;
    int mostAtOnce_ = 0;
};

}  // namespace marlet::catalogue
