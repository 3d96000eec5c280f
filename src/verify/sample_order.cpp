#include "verify/sample_order.h"

#include <algorithm>
#include <numeric>

namespace marlet {

std::uint64_t chunkBytes(const Track& track, const Chunk& chunk) {
    const std::size_t end =
        std::min<std::size_t>(std::size_t{chunk.first} + chunk.count, track.sizes.size());
    if (chunk.first >= end) return 0;
    return std::accumulate(track.sizes.begin() + chunk.first,
                           track.sizes.begin() + static_cast<std::ptrdiff_t>(end),
                           std::uint64_t{0});
}

bool runsForward(const Track& track) {
    std::uint64_t last = 0;
    for (const Chunk& chunk : track.chunks) {
        if (chunkBytes(track, chunk) == 0) continue;
        if (chunk.offset < last) return false;
        last = chunk.offset;
    }
    return true;
}

void TrackStretches::advance() {
    current_ = {position_, 0, 0};
    for (; chunk_ < track_->chunks.size(); chunk_++) {
        const Chunk& chunk = track_->chunks[chunk_];
        const std::uint64_t bytes = chunkBytes(*track_, chunk);
        if (bytes == 0) continue;
        if (current_.bytes == 0)
            current_.offset = chunk.offset;
        else if (current_.offset + current_.bytes != chunk.offset)
            return;
        current_.bytes += bytes;
    }
}

SweepStretches::SweepStretches(const std::vector<Track>& tracks,
                               const std::vector<std::size_t>& positions) {
    for (const std::size_t position : positions) {
        const TrackStretches stretches(tracks[position], position);
        if (!stretches.atEnd()) waiting_.push(stretches);
    }
}

std::optional<SampleStretch> SweepStretches::next() {
    if (waiting_.empty()) return std::nullopt;
    TrackStretches first = waiting_.top();
    waiting_.pop();
    const SampleStretch stretch = first.current();
    first.advance();
    if (!first.atEnd()) waiting_.push(first);
    return stretch;
}

}  // namespace marlet
