#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "sources/source_cache.h"

namespace marlet {

/// What was learnt about shows, by their ids. It counts for as long as a saved answer does.
template <typename What>
class ShowMemory {
public:
    std::optional<What> find(const std::string& show) const {
        const auto held = entries_.find(show);
        if (held == entries_.end() || !SourceCache::isGood(held->second.at)) return std::nullopt;
        return held->second.what;
    }
    void keep(const std::string& show, What what) {
        entries_[show] = {std::move(what), std::chrono::system_clock::now()};
    }

private:
    struct Entry {
        What what;
        SourceCache::Instant at;
    };
    std::map<std::string, Entry> entries_;
};

}  // namespace marlet
