#pragma once

#include <cstdint>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/layout_plan.h"
#include "helpers/movie_map.h"

namespace marlet {

/// The new index, its chunk offsets still zero.
struct NewIndex {
    struct Offsets {
        std::size_t at = 0;  ///< of the first row
        bool wide = false;   ///< co64
    };
    Bytes moov;
    std::vector<Offsets> offsets;  ///< in the order of MovieMap::tracks
};

namespace IndexWriter {

/// Copies the index byte for byte, with new chunk tables in the places of the old ones and the
/// sizes of the boxes around them. `wide[t]` makes the offsets of track t 64 bits long. Without
/// the tracks that go: their boxes, what other tracks say of them (`tref`), and, when one of them
/// was the longest, the rest of the movie's duration.
NewIndex write(ByteView moov, const MovieMap& map, const LayoutPlan& plan,
               const std::vector<bool>& wide);

/// Writes every chunk's offset; `base` is the place of the first byte of media data.
void fillOffsets(NewIndex& index, const MovieMap& map, std::uint32_t sliceMilliseconds,
                 std::uint64_t base);

}  // namespace IndexWriter
}  // namespace marlet
