#pragma once

#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet::test {

/// What a film plays and what it stores where a proof promises it, line by line, read by the naive
/// reader alone: two films are alike when their lines are. Says "unreadable" of what it can't read.
std::vector<std::string> playedFilm(ByteView file);

/// Where a byte of a file lies: the box it belongs to ("moov/trak/mdia/mdhd") and its place in the
/// payload; negative in the header of the box.
struct BytePlace {
    std::string box;
    std::int64_t at = 0;
    int track = -1;  ///< from 0; -1 outside of tracks
};
BytePlace placeOf(ByteView file, std::size_t at);

}  // namespace marlet::test
