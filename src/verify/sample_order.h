#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <queue>
#include <vector>

#include "mp4/summary.h"

namespace marlet {

/// Bytes of one track that lie together.
struct SampleStretch {
    std::size_t track = 0;  ///< position among the summary's tracks
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

/// The chunks of a track in sample order, neighbours in the file joined.
class TrackStretches {
public:
    TrackStretches(const Track& track, std::size_t position) : track_(&track), position_(position) {
        advance();
    }
    bool atEnd() const { return current_.bytes == 0; }
    const SampleStretch& current() const { return current_; }
    void advance();

private:
    const Track* track_;
    std::size_t position_;
    std::size_t chunk_ = 0;
    SampleStretch current_;
};

/// The chunks of several tracks by their place in the file. Made for tracks that each run forward,
/// so that one sweep over the file sees every track in sample order.
class SweepStretches {
public:
    /// `positions` among `tracks`.
    SweepStretches(const std::vector<Track>& tracks, const std::vector<std::size_t>& positions);
    /// Nothing at the end.
    std::optional<SampleStretch> next();

private:
    struct Later {
        bool operator()(const TrackStretches& a, const TrackStretches& b) const {
            return a.current().offset > b.current().offset;
        }
    };
    std::priority_queue<TrackStretches, std::vector<TrackStretches>, Later> waiting_;
};

/// The sum of the chunk's sample sizes.
std::uint64_t chunkBytes(const Track& track, const Chunk& chunk);
/// Whether no chunk with bytes lies ahead of an earlier one.
bool runsForward(const Track& track);

}  // namespace marlet
