#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <vector>

#include "helpers/movie_map.h"
#include "helpers/slice_cursor.h"

namespace marlet {

/// A piece with its place in the result.
struct PlacedPiece {
    Piece piece;
    std::size_t track = 0;  ///< position in MovieMap::tracks
    std::uint64_t at = 0;   ///< in the new media data, counted from its first byte
    std::uint32_t gap = 0;  ///< bytes that belong to nobody, ahead of `at`
};

/// Gives all pieces in the order of the result: slice by slice, in each the tracks in the order of
/// the index. It keeps a cursor a track and no list, and gives the same again when made anew.
///
/// Where a sound track's next slice would follow its last one with nothing between, because
/// nothing else is to be played meanwhile (a long still picture, sound without picture), a gap of
/// a small empty box is left. Each slice stays where a player looks for it and is a stretch of its
/// own; the measure of the sound layout, which is meant to find sound that lies far from its
/// picture, would otherwise add up slices that are where they should be. Bytes that no table
/// points at are lawful in media data (ISO/IEC 14496-12, 8.1.1).
class Interleave {
public:
    static constexpr std::uint32_t gapBytes = 8;

    Interleave(const MovieMap& map, std::uint32_t sliceMilliseconds);
    std::optional<PlacedPiece> next();
    /// Bytes of media data up to here.
    std::uint64_t size() const { return at_; }

private:
    struct Turn {
        std::int64_t slice = 0;
        std::size_t track = 0;
        bool operator>(const Turn& other) const {
            return slice != other.slice ? slice > other.slice : track > other.track;
        }
    };
    struct State {
        SliceCursor cursor;
        std::optional<Piece> piece;  // the next one
        std::int64_t lastSlice = 0;
        std::uint64_t end = 0;  // of its last chunk
        bool begun = false;
    };

    std::uint32_t gapAhead(std::size_t track, const Piece& piece) const;

    const MovieMap* map_;
    std::vector<State> states_;
    std::priority_queue<Turn, std::vector<Turn>, std::greater<>> turns_;
    std::uint64_t at_ = 0;
};

}  // namespace marlet
