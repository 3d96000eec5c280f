#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/raw_box.h"
#include "helpers/track_tables.h"

namespace marlet {

/// A track that is to be laid out anew.
struct MappedTrack {
    RawBox trak;
    std::uint32_t id = 0;
    bool isSound = false;
    std::uint32_t timescale = 1;
    /// Time at which its first sample is presented, by its edit list, in its own units.
    std::int64_t start = 0;
    /// Nothing for a track without a `stbl`: it has no media and is kept as it is.
    std::optional<RawBox> stbl;
    TrackTables tables;
};

/// An index (`moov`) as the layout needs it. It points into the array it was made from.
struct MovieMap {
    RawBox root;
    std::vector<MappedTrack> tracks;    ///< those that stay, in file order
    std::vector<RawBox> removedTracks;  ///< the `trak` boxes that go
};

namespace MovieMaps {

/// Reads the whole `moov` box. `removed` are IDs of tracks to leave out; one that the file lacks
/// is a failure. Refuses with a sentence what can't be laid out anew: fragments, encrypted
/// samples, media in other files, a compressed index, offsets besides the chunk tables.
MovieMap read(ByteView moov, const std::set<std::uint32_t>& removed);

}  // namespace MovieMaps
}  // namespace marlet
