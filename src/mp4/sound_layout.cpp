#include "mp4/sound_layout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

#include "mp4/box.h"

namespace marlet {

namespace {

constexpr std::uint64_t noOffset = std::numeric_limits<std::uint64_t>::max();

/// A table of so many different durations is not a film's, and is counted by sorting, which needs
/// less memory than a node a value.
constexpr std::size_t mostDistinct = 65'536;

/// The most frequent of equal neighbours, zeros left out; of equally frequent values the smallest.
std::uint32_t mostFrequentSorted(std::vector<std::uint32_t> values) {
    std::sort(values.begin(), values.end());
    std::uint32_t usual = 0;
    std::ptrdiff_t most = 0;
    for (auto run = std::upper_bound(values.begin(), values.end(), 0U); run != values.end();) {
        const auto end = std::upper_bound(run, values.end(), *run);
        if (end - run > most) {
            most = end - run;
            usual = *run;
        }
        run = end;
    }
    return usual;
}

/// The most frequent non-zero value, the smallest of equally frequent ones; 0 when there is none.
std::uint32_t mostFrequent(const std::vector<std::uint32_t>& values) {
    std::unordered_map<std::uint32_t, std::ptrdiff_t> counts;
    // Tables are runs of equal values, so that one look-up counts a whole run.
    for (auto run = values.begin(); run != values.end();) {
        const auto end = std::find_if(
            run, values.end(), [value = *run](std::uint32_t other) { return other != value; });
        if (*run != 0) counts[*run] += end - run;
        if (counts.size() > mostDistinct) return mostFrequentSorted(values);
        run = end;
    }
    std::uint32_t usual = 0;
    std::ptrdiff_t most = 0;
    for (const auto& [value, count] : counts) {
        if (count > most || (count == most && value < usual)) {
            most = count;
            usual = value;
        }
    }
    return usual;
}

/// A chunk as it lies in the file.
struct Run {
    std::uint64_t off = 0;
    std::uint64_t size = 0;  ///< bytes
    double dur = 0;          ///< the seconds that it counts for
};

/// Sums over consecutive stretches of a table. The chunks of a track follow each other through its
/// samples, so that going on from the last position reads every sample once, with no table of
/// sums beside the table itself.
class Sums {
public:
    Sums(const std::vector<std::uint32_t>& durations, std::uint64_t cap)
        : durations_(durations), cap_(cap) {}

    struct Stretch {
        std::uint64_t before = 0;  ///< of all durations ahead of the stretch
        std::uint64_t whole = 0;
        std::uint64_t capped = 0;
    };
    Stretch stretch(std::size_t from, std::size_t to) {
        if (from < at_) at_ = 0, before_ = 0;
        for (; at_ < from; at_++) before_ += durations_[at_];
        Stretch sums{before_, 0, 0};
        for (; at_ < to; at_++) {
            sums.whole += durations_[at_];
            sums.capped += std::min<std::uint64_t>(durations_[at_], cap_);
        }
        before_ += sums.whole;
        return sums;
    }

private:
    const std::vector<std::uint32_t>& durations_;
    std::uint64_t cap_;
    std::size_t at_ = 0;
    std::uint64_t before_ = 0;  ///< sum of the durations ahead of at_
};

double countedSeconds(const Track& track, const Sums::Stretch& sums,
                      const std::optional<double>& videoEnd) {
    const double scale = track.timescale;
    const double capped = static_cast<double>(sums.capped) / scale;
    if (!videoEnd) return capped;
    // Sound that plays after the picture has ended stalls nobody.
    const double start = track.presOffset + static_cast<double>(sums.before) / scale;
    const double end = start + static_cast<double>(sums.whole) / scale;
    const double visible = std::max(0.0, std::min(*videoEnd, end) - start);
    return std::min(visible, capped);
}

Run runOf(const Track& track, const Chunk& chunk, Sums& sums,
          const std::optional<double>& videoEnd) {
    const std::uint64_t past = std::uint64_t{chunk.first} + chunk.count;
    const auto endIn = [&](const std::vector<std::uint32_t>& table) {
        return static_cast<std::size_t>(std::min<std::uint64_t>(past, table.size()));
    };
    Run run{chunk.offset, 0, 0};
    for (std::size_t i = chunk.first; i < endIn(track.sizes); i++) run.size += track.sizes[i];
    const std::size_t end = endIn(track.durations);
    if (end > chunk.first)
        run.dur = countedSeconds(track, sums.stretch(chunk.first, end), videoEnd);
    return run;
}

/// Joins runs that come in the order of the file.
class Joiner {
public:
    void add(const Run& run) {
        together_ = run.off == next_ ? together_ + run.dur : run.dur;
        longest_ = std::max(longest_, together_);
        next_ = run.off + run.size;
    }
    double longest() const { return longest_; }

private:
    std::uint64_t next_ = noOffset;
    double together_ = 0;
    double longest_ = 0;
};

double longestStretch(const Track& track, const std::optional<double>& videoEnd) {
    Sums sums(track.durations, gapCap(track.durations));
    Joiner joiner;
    // Nearly every writer stores chunks in order; then no list of runs is needed.
    const auto byOffset = [](const Chunk& a, const Chunk& b) { return a.offset < b.offset; };
    if (std::is_sorted(track.chunks.begin(), track.chunks.end(), byOffset)) {
        for (const Chunk& chunk : track.chunks) joiner.add(runOf(track, chunk, sums, videoEnd));
        return joiner.longest();
    }
    std::vector<Run> runs;
    runs.reserve(track.chunks.size());
    for (const Chunk& chunk : track.chunks) runs.push_back(runOf(track, chunk, sums, videoEnd));
    std::stable_sort(runs.begin(), runs.end(),
                     [](const Run& a, const Run& b) { return a.off < b.off; });
    for (const Run& run : runs) joiner.add(run);
    return joiner.longest();
}

}  // namespace

std::uint64_t gapCap(const std::vector<std::uint32_t>& durations) {
    const std::uint32_t usual = mostFrequent(durations);
    return usual == 0 ? std::numeric_limits<std::uint64_t>::max() : std::uint64_t{usual} * 4;
}

double measure(const MP4Summary& summary) {
    double longest = 0;
    for (const Track& track : summary.tracks)
        longest = std::max(longest, longestStretch(track, summary.videoEnd));
    return std::round(longest * 100) / 100;
}

double measureInterleave(const std::filesystem::path& file) {
    const Bytes moov = loadMoov(file);
    return measure(parseSummary(moov, file, Detail::No));
}

}  // namespace marlet
