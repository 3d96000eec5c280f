#pragma once

#include <cstdint>
#include <vector>

#include "helpers/movie_map.h"

namespace marlet {

/// A row of `stsc` (ISO/IEC 14496-12, 8.7.4).
struct ChunkRow {
    std::uint32_t firstChunk = 1;
    std::uint32_t samples = 0;
    std::uint32_t description = 1;
    bool operator==(const ChunkRow&) const = default;
};

/// The chunks that a track gets.
struct PlannedTrack {
    std::uint32_t chunks = 0;
    std::uint64_t lastAt = 0;    ///< of the last chunk, from the first byte of media data
    std::vector<ChunkRow> rows;  ///< equal neighbours are one row
    bool operator==(const PlannedTrack&) const = default;
};

/// What the interleaving will come to, so that the index can be written ahead of the media.
struct LayoutPlan {
    std::vector<PlannedTrack> tracks;  ///< in the order of MovieMap::tracks
    std::uint64_t mediaBytes = 0;      ///< gaps included
    bool operator==(const LayoutPlan&) const = default;
};

namespace LayoutPlans {

/// Goes through the interleaving once. Fails with a sentence when the slices would make so many
/// chunks that their tables would dwarf the old index: samples minutes apart, by the hundred
/// thousand, are no film.
LayoutPlan make(const MovieMap& map, std::uint32_t sliceMilliseconds, std::size_t indexBytes);

}  // namespace LayoutPlans
}  // namespace marlet
