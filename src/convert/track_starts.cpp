#include "convert/track_starts.h"

#include <algorithm>

#include "matroska/run_in.h"

namespace marlet {

namespace {

constexpr std::int64_t nsPerMs = 1'000'000;
constexpr std::int64_t nsPerSecond = 1'000'000'000;
constexpr int blocksPerCheckpoint = 400;
/// Frames are stored in the order of decoding, pictures of the first group out of order.
constexpr std::int64_t disorder = 2 * nsPerSecond;

std::int64_t nearestMs(std::int64_t ns) {
    return (ns + nsPerMs / 2) / nsPerMs;
}

}  // namespace

TrackStarts::TrackStarts(const MKVFile& mkv, const std::set<int>& tracks, RunControl& control) {
    std::int64_t allBegun = 0;
    int blocks = 0;
    mkv.forEachBlock(tracks, {}, [&](const MKVBlock& block) {
        if (++blocks % blocksPerCheckpoint == 0) control.checkpoint();
        if (block.frames.empty()) return true;  // a broken lace: nothing to show or hear
        const bool wasComplete = first_.size() == tracks.size();
        if (wasComplete && block.timeNs > allBegun + disorder) return false;
        const auto [found, isNew] = first_.try_emplace(block.track, block.timeNs);
        found->second = std::min(found->second, block.timeNs);
        if (isNew) allBegun = std::max(allBegun, block.timeNs);
        return true;
    });
    for (auto& [number, time] : first_)
        if (const MKVTrack* const track = mkv.track(number)) time = RunIn::of(*track, time).heardNs;
}

std::int64_t TrackStarts::delayMs(int track) const {
    const auto found = first_.find(track);
    if (found == first_.end()) return 0;
    const auto earliest =
        std::ranges::min_element(first_, {}, [](const auto& each) { return each.second; });
    const std::int64_t delay = found->second - earliest->second;
    return delay < nsPerMs ? 0 : nearestMs(delay);
}

std::int64_t TrackStarts::beginMs() const {
    const auto earliest =
        std::ranges::min_element(first_, {}, [](const auto& each) { return each.second; });
    return earliest == first_.end() ? 0 : nearestMs(std::max<std::int64_t>(earliest->second, 0));
}

}  // namespace marlet
