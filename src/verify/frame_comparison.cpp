#include <algorithm>
#include <cmath>
#include <numeric>

#include "verify/conversion_frames.h"

namespace marlet::ConvertVerify {

namespace {

using Order = std::vector<std::uint32_t>;

/// Positions by their times, in the order that they came where these are the same.
Order byTime(const std::vector<std::int64_t>& times) {
    Order order(times.size());
    std::iota(order.begin(), order.end(), 0U);
    if (!std::ranges::is_sorted(times))
        std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return times[i]; });
    return order;
}

std::int64_t rounded(double value) {
    constexpr double most = 9e18;
    return std::llround(std::clamp(value, -most, most));
}

std::vector<std::int64_t> presentationTimes(const Track& track) {
    std::vector<std::int64_t> times;
    times.reserve(track.sizes.size());
    std::int64_t time = 0;
    for (std::size_t i = 0; i < track.sizes.size(); i++) {
        times.push_back(time + (i < track.ctts.size() ? track.ctts[i] : 0));
        time += i < track.durations.size() ? track.durations[i] : 0;
    }
    return times;
}

std::int64_t nsToMs(std::int64_t ns) {
    constexpr double perMs = 1e6;
    return rounded(static_cast<double>(ns) / perMs);
}

std::int64_t unitsToMs(std::int64_t units, std::uint32_t timescale) {
    constexpr double perSecond = 1000;
    return rounded(static_cast<double>(units) * perSecond / timescale);
}

bool isSameTime(std::int64_t a, std::int64_t b) {
    constexpr double tolerance = 2;  // ms: both sides round
    return std::abs(static_cast<double>(a) - static_cast<double>(b)) <= tolerance;
}

struct Found {
    std::size_t differing = 0;
    std::size_t first = 0;  ///< position of the first that differs
    std::size_t misplaced = 0;
};

void tell(const Found& found, std::size_t total, const std::string& label, Report& into) {
    if (found.differing > 0)
        into.reasons.push_back(
            label + ": " + std::to_string(found.differing) + " of " + std::to_string(total) +
            " frames differ from the original (first at " + std::to_string(found.first) + ")");
    if (found.misplaced > 0)
        into.reasons.push_back(label + ": " + std::to_string(found.misplaced) +
                               " frames have different times");
    if (found.differing == 0 && found.misplaced == 0)
        into.notes.push_back(label + ": " + std::to_string(total) +
                             " frames identical to the original");
}

}  // namespace

void judgeFrames(const SourceFrames& source, const BuiltFrames& built, const std::string& label,
                 RunControl& control, Report& into) {
    const std::size_t total = built.track->sizes.size();
    if (source.count != total) {
        into.reasons.push_back(label + ": " + std::to_string(total) + " frames, the original has " +
                               std::to_string(source.count));
        return;
    }
    const std::vector<std::int64_t> builtTimes = presentationTimes(*built.track);
    const Order sourceOrder = byTime(source.when);
    const Order builtOrder = byTime(builtTimes);
    Found found;
    for (std::size_t i = 0; i < total; i++) {
        constexpr std::size_t between = 500;
        if (i % between == 0) control.checkpoint();
        const std::uint32_t a = sourceOrder[i];
        const std::uint32_t b = builtOrder[i];
        if (b >= built.keys.size()) {
            into.reasons.push_back(label + ": frame " + std::to_string(i) + " can't be read");
            return;
        }
        if (source.keys[a] != built.keys[b] && found.differing++ == 0) found.first = i;
        const std::int64_t sourceMs =
            nsToMs(source.when[a]) - nsToMs(source.when[sourceOrder.front()]);
        const std::int64_t builtMs =
            unitsToMs(builtTimes[b], built.track->timescale) -
            unitsToMs(builtTimes[builtOrder.front()], built.track->timescale);
        if (!isSameTime(sourceMs, builtMs)) found.misplaced++;
    }
    tell(found, total, label, into);
}

}  // namespace marlet::ConvertVerify
