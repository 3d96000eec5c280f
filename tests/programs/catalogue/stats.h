#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

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
    void reset();

private:
    mutable std::mutex lock_;  ///< guards all below
    std::map<std::string, int> paths_;
    std::map<std::string, int> targets_;
    int total_ = 0;
    int withToken_ = 0;
    int now_ = 0;
    int mostAtOnce_ = 0;
};

}  // namespace marlet::catalogue
