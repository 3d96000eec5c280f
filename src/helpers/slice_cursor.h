#pragma once

#include <cstdint>
#include <optional>

#include "helpers/movie_map.h"

namespace marlet {

/// Samples of one track that lie together in the source and stay together in the result.
struct Piece {
    std::int64_t slice = 0;    ///< number of the slice of time
    std::uint64_t offset = 0;  ///< in the source
    std::uint64_t bytes = 0;
    std::uint32_t samples = 0;
    std::uint32_t description = 0;  ///< index into `stsd`, from 1
    bool beginsChunk = false;       ///< a new chunk of the result starts here
};

/// Divides a track into slices of time by when its samples are presented, edit list included:
/// players read the tracks in step of the presentation, and a track may start late or be cut at
/// its head. Within a track the order of decoding stays. A chunk of the result holds a slice's
/// samples of one description.
class SliceCursor {
public:
    SliceCursor(const MappedTrack& track, std::uint32_t sliceMilliseconds);
    std::optional<Piece> next();

private:
    void enterSlice();

    ChunkCursor chunks_;
    TimeCursor times_;
    const TrackTables* tables_;
    std::int64_t scale_;         // time units of the track in 1000 slices
    std::int64_t time_;          // of the next sample, in the track's units
    std::int64_t slice_ = 0;     // of the next sample
    std::int64_t sliceEnd_ = 0;  // first time that belongs to a later slice
    std::optional<StoredChunk> chunk_;
    std::uint32_t taken_ = 0;  // samples of chunk_ that were given
    std::uint64_t bytesTaken_ = 0;
    std::int64_t lastSlice_ = 0;
    std::uint32_t lastDescription_ = 0;
    bool begun_ = false;
};

}  // namespace marlet
