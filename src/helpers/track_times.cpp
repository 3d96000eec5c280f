#include "helpers/track_times.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

#include "foundation/errors.h"

namespace marlet {

namespace {

__extension__ using Wide = __int128;

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t longest = std::int64_t{1000} * 3600 * second;
/// What decoding offsets and durations can hold, as readers that take them for signed see it.
constexpr std::int64_t mostUnits = 0x7FFFFFFF;

std::int64_t unitsOf(std::int64_t ns, std::uint32_t timescale) {
    const Wide scaled = Wide{ns} * timescale;
    const Wide half = scaled < 0 ? -second / 2 : second / 2;
    return static_cast<std::int64_t>((scaled + half) / second);
}

std::uint32_t held(std::int64_t units) {
    if (units < 0 || units > mostUnits)
        throw MFError("the times of a track's frames lie too far apart");
    return static_cast<std::uint32_t>(units);
}

/// `frame` units of `timescale` a picture.
struct Rate {
    std::uint32_t timescale = 90'000;
    std::uint32_t frame = 3600;
};

/// Each rate that films have, its double, and what cameras of old had.
constexpr std::array<Rate, 16> steadyRates = {{{24'000, 1001},
                                               {24'000, 1000},
                                               {25'000, 1000},
                                               {30'000, 1001},
                                               {30'000, 1000},
                                               {48'000, 1001},
                                               {48'000, 1000},
                                               {50'000, 1000},
                                               {60'000, 1001},
                                               {60'000, 1000},
                                               {120'000, 1001},
                                               {120'000, 1000},
                                               {15'000, 1001},
                                               {15'000, 1000},
                                               {12'000, 1001},
                                               {12'000, 1000}}};

using Order = std::vector<std::uint32_t>;

/// Frame numbers by presentation.
Order byTime(const std::vector<std::int64_t>& presentedNs) {
    Order order(presentedNs.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return presentedNs[a] < presentedNs[b];
    });
    return order;
}

bool isSteady(const std::vector<std::int64_t>& presentedNs, const Order& order, const Rate& rate) {
    // Both ends of a distance are rounded to the source's milliseconds.
    constexpr std::int64_t rounding = 1'050'000;
    const std::int64_t base = presentedNs[order.front()];
    for (std::size_t i = 0; i < order.size(); i++) {
        const auto exact = static_cast<std::int64_t>(Wide{second} * rate.frame *
                                                     static_cast<std::int64_t>(i) / rate.timescale);
        if (std::abs(presentedNs[order[i]] - base - exact) > rounding) return false;
    }
    return true;
}

std::optional<Rate> steadyRate(const std::vector<std::int64_t>& presentedNs, const Order& order) {
    // Of two frames any rate could be said.
    constexpr std::size_t fewest = 4;
    if (order.size() < fewest) return std::nullopt;
    for (const Rate& rate : steadyRates)
        if (isSteady(presentedNs, order, rate)) return rate;
    return std::nullopt;
}

/// Presentation times in units, by presentation; no two are the same, as those of decoding.
std::vector<std::int64_t> unitTimes(const std::vector<std::int64_t>& presentedNs,
                                    const Order& order, const std::optional<Rate>& steady) {
    std::vector<std::int64_t> units(order.size());
    const std::int64_t base = presentedNs[order.front()];
    for (std::size_t i = 0; i < order.size(); i++) {
        units[i] = steady ? static_cast<std::int64_t>(i) * steady->frame
                          : unitsOf(presentedNs[order[i]] - base, Rate().timescale);
        if (!steady && i > 0) units[i] = std::max(units[i], units[i - 1] + 1);
    }
    return units;
}

std::uint32_t lastDuration(const std::vector<std::int64_t>& units, const Rate& rate,
                           std::optional<std::uint64_t> frameNs) {
    if (frameNs && *frameNs > 0 && *frameNs <= std::uint64_t{10} * second)
        return std::max(held(unitsOf(static_cast<std::int64_t>(*frameNs), rate.timescale)), 1U);
    return units.size() < 2 ? rate.frame : held(units.back() - units[units.size() - 2]);
}

/// Times by which a track's first and last frame are more than 1000 hours apart are no film's, and
/// sums of them could wrap.
void checkSpan(std::int64_t first, std::int64_t last) {
    if (Wide{last} - first > longest)
        throw MFError("the times of a track's frames lie too far apart");
}

}  // namespace

namespace VideoTimes {

TrackTimes make(const std::vector<std::int64_t>& presentedNs,
                std::optional<std::uint64_t> frameNs) {
    TrackTimes times;
    const Rate plain;
    times.timescale = plain.timescale;
    if (presentedNs.empty()) return times;
    const Order order = byTime(presentedNs);
    checkSpan(presentedNs[order.front()], presentedNs[order.back()]);
    const auto steady = steadyRate(presentedNs, order);
    const Rate rate = steady.value_or(plain);
    times.timescale = rate.timescale;

    // The frames are decoded at the times at which frames are presented, moved by as much as the
    // one that is decoded too late for its own needs.
    const std::vector<std::int64_t> decoded = unitTimes(presentedNs, order, steady);
    std::vector<std::int64_t> presented(decoded.size());
    for (std::size_t i = 0; i < order.size(); i++) presented[order[i]] = decoded[i];
    std::int64_t delay = 0;
    for (std::size_t i = 0; i < decoded.size(); i++)
        delay = std::max(delay, decoded[i] - presented[i]);

    const std::uint32_t last = steady ? rate.frame : lastDuration(decoded, rate, frameNs);
    for (std::size_t i = 0; i < decoded.size(); i++) {
        const bool isLast = i + 1 == decoded.size();
        times.durations.push_back(isLast ? last : held(decoded[i + 1] - decoded[i]));
        if (delay > 0) times.offsets.push_back(held(presented[i] - decoded[i] + delay));
    }
    times.mediaStart = static_cast<std::uint64_t>(delay);
    times.length = static_cast<std::uint64_t>(decoded.back()) + last;
    return times;
}

}  // namespace VideoTimes

namespace SoundTimes {

TrackTimes make(const std::vector<FrameTime>& startsNs, std::uint32_t rate,
                std::uint32_t frameLength) {
    // Half a millisecond of rounding at the first frame and at this one, and a little.
    const std::int64_t rounding = std::int64_t{rate} * 11 / 10'000;
    TrackTimes times;
    times.timescale = rate;
    std::optional<std::int64_t> firstNs;
    std::int64_t start = 0;  // of the frame before
    std::int64_t next = 0;   // where this one follows it without a gap
    for (const FrameTime& told : startsNs) {
        std::int64_t at = next;
        if (told) {
            if (!firstNs) firstNs = told;
            checkSpan(std::min(*told, *firstNs), std::max(*told, *firstNs));
            const std::int64_t asTold = unitsOf(*told - *firstNs, rate);
            if (std::abs(asTold - next) > rounding) at = std::max(asTold, start + 1);
        }
        if (!times.durations.empty()) times.durations.back() = held(at - start);
        times.durations.push_back(frameLength);
        start = at;
        next = at + frameLength;
    }
    times.length = static_cast<std::uint64_t>(next);
    return times;
}

}  // namespace SoundTimes
}  // namespace marlet
