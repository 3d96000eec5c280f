#pragma once

#include <set>

#include "foundation/bytes.h"
#include "helpers/movie_map.h"

// What an index says of tracks that are left out.
namespace marlet::RemovedTracks {

/// The IDs of the tracks that go.
std::set<std::uint32_t> ids(ByteView moov, const MovieMap& map);

/// A `tref` box without those IDs (ISO/IEC 14496-12, 8.3.3). A kind of reference that names nobody
/// any more goes too, and so does the whole box: then the result is empty.
Bytes withoutReferences(ByteView moov, const RawBox& tref, const std::set<std::uint32_t>& gone);

/// Shortens the movie's duration in `mvhd` (at `mvhdAt` of `out`) to that of the longest track that
/// stays, when a track that goes was longer: a player would show a film that goes on after its
/// end. It is never made longer.
void shortenMovie(ByteView moov, const MovieMap& map, Bytes& out, std::size_t mvhdAt);

}  // namespace marlet::RemovedTracks
